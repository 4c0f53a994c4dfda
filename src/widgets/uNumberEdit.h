#pragma once

#include "uNumberFormat.h"

#include <QAbstractSpinBox>
#include <QVariant>

#include <limits>

// A spin box for a whole or float number that may be null. Shows the value through its display
// format (and its null text) while it has no focus and through its edit format while the user
// types. On leaving the box, on Enter and when asked by commitText() the typed text is read by the
// number-entry rule (ParseNumberEntry): a text that does not read keeps the old value and is
// reported as an error. Up/Down and the wheel step by step(), PageUp/PageDown by largeStep();
// stepping from null starts at 0 (or at the minimum when 0 is out of range). Values are kept
// within the range.
class TNumberEdit : public QAbstractSpinBox
{
    Q_OBJECT
public:
    explicit TNumberEdit(QWidget* parent = nullptr);

    bool wholeNumbers() const { return m_whole; }
    void setWholeNumbers(bool whole);
    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }
    void setRange(double minimum, double maximum);
    double step() const { return m_step; }
    void setStep(double step) { m_step = step; }
    double largeStep() const { return m_largeStep; }
    void setLargeStep(double step) { m_largeStep = step; }
    TNumberFormat displayFormat() const { return m_displayFormat; }
    void setDisplayFormat(const TNumberFormat& format);
    // Empty: the plain number, as PlainNumberText gives it.
    TNumberFormat editFormat() const { return m_editFormat; }
    void setEditFormat(const TNumberFormat& format);
    QString nullText() const { return m_nullText; }
    void setNullText(const QString& text);

    // A double (or a qlonglong for whole numbers), or a null QVariant.
    QVariant value() const { return m_value; }
    void setValue(const QVariant& value);
    // Reads the typed text. Returns false and sets *error when it is not a number; the old value
    // and its text are back in the box then.
    bool commitText(QString* error);

    void stepBy(int steps) override;
    // The box's text field, for typing and reading what is typed.
    using QAbstractSpinBox::lineEdit;

signals:
    // Any change of value, typed or stepped.
    void valueChanged(const QVariant& value);
    // The user stepped the value or emptied it with a key: a pick rather than typing.
    void valueChosen();

protected:
    StepEnabled stepEnabled() const override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QVariant normalised(double value) const;
    QString textFor(bool editing) const;
    void showText();
    void stepByLarge(int steps);

    bool m_whole = false;
    double m_minimum = -std::numeric_limits<double>::max();
    double m_maximum = std::numeric_limits<double>::max();
    double m_step = 1.0;
    double m_largeStep = 10.0;
    TNumberFormat m_displayFormat;
    TNumberFormat m_editFormat;
    QString m_nullText;
    QVariant m_value;
    QString m_shownText;
};
