#pragma once

#include "uBasicEditorItem.h"
#include "uNumberFormat.h"

#include <functional>
#include <limits>

// A number shown through a format mask (TNumberFormat: "0.## g", ",0", ",0.##;(,0.##)",
// ",0.00%;-,0.00%") or a function of the program, and edited in a TNumberEdit with the
// number-entry rule: only digits and the locale's decimal separator of a typed text are read, an
// entry that does not read is refused with a TEditorError and the value stays, the clear key
// empties the value. A value that is no number (a text in a free column) is shown as it is.
class TNumberEditorItem : public TBasicEditorItem
{
public:
    QString displayFormat() const { return m_displayFormat.mask(); }
    void setDisplayFormat(const QString& mask) { m_displayFormat = TNumberFormat(mask); }
    // The text while typing; empty gives the plain number. Set it to the display format to keep a
    // unit in the box ("0.# mm").
    QString editFormat() const { return m_editFormat.mask(); }
    void setEditFormat(const QString& mask) { m_editFormat = TNumberFormat(mask); }
    // Shown in place of the display format when set.
    void setDisplayFunction(std::function<QString(double)> function)
    {
        m_displayFunction = std::move(function);
    }

    double minimum() const { return m_minimum; }
    double maximum() const { return m_maximum; }
    void setRange(double minimum, double maximum);
    double step() const { return m_step; }
    void setStep(double step) { m_step = step; }
    double largeStep() const { return m_largeStep; }
    void setLargeStep(double step) { m_largeStep = step; }

    QString displayText(const QVariant& value) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    explicit TNumberEditorItem(bool wholeNumbers) : m_whole(wholeNumbers) {}
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    bool m_whole;
    TNumberFormat m_displayFormat;
    TNumberFormat m_editFormat;
    std::function<QString(double)> m_displayFunction;
    double m_minimum = -std::numeric_limits<double>::max();
    double m_maximum = std::numeric_limits<double>::max();
    double m_step = 1.0;
    double m_largeStep = 10.0;
};

// Whole numbers: values are qlonglong, an entry with decimals is refused.
class TIntegerEditorItem : public TNumberEditorItem
{
public:
    TIntegerEditorItem() : TNumberEditorItem(true) {}
};

// Floats, money and percentages (the format decides how they read).
class TFloatEditorItem : public TNumberEditorItem
{
public:
    TFloatEditorItem() : TNumberEditorItem(false) {}
};
