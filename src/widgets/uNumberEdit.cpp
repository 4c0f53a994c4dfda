#include "uNumberEdit.h"

#include "uWidgetTexts.h"

#include <QKeyEvent>
#include <QLineEdit>

#include <cmath>

TNumberEdit::TNumberEdit(QWidget* parent) : QAbstractSpinBox(parent)
{
    setCorrectionMode(QAbstractSpinBox::CorrectToPreviousValue);
    showText();
}

void TNumberEdit::setWholeNumbers(bool whole)
{
    m_whole = whole;
    if (!m_value.isNull())
        m_value = normalised(m_value.toDouble());
    showText();
}

void TNumberEdit::setRange(double minimum, double maximum)
{
    m_minimum = minimum;
    m_maximum = std::max(minimum, maximum);
    if (!m_value.isNull())
        setValue(m_value);
}

void TNumberEdit::setDisplayFormat(const TNumberFormat& format)
{
    m_displayFormat = format;
    showText();
}

void TNumberEdit::setEditFormat(const TNumberFormat& format)
{
    m_editFormat = format;
    showText();
}

void TNumberEdit::setNullText(const QString& text)
{
    m_nullText = text;
    showText();
}

QVariant TNumberEdit::normalised(double value) const
{
    value = std::clamp(value, m_minimum, m_maximum);
    if (m_whole)
        return QVariant(qlonglong(std::llround(value)));
    return QVariant(value);
}

void TNumberEdit::setValue(const QVariant& value)
{
    QVariant next;
    if (!value.isNull() && value.isValid()) {
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (ok && std::isfinite(number))
            next = normalised(number);
    }
    const bool changed = next != m_value || next.isNull() != m_value.isNull();
    m_value = next;
    showText();
    if (changed)
        emit valueChanged(m_value);
}

QString TNumberEdit::textFor(bool editing) const
{
    if (m_value.isNull())
        return editing ? QString() : m_nullText;
    const double number = m_value.toDouble();
    if (editing)
        return m_editFormat.isEmpty() ? PlainNumberText(number, locale())
                                      : m_editFormat.format(number, locale());
    return m_displayFormat.format(number, locale());
}

void TNumberEdit::showText()
{
    const bool editing = hasFocus();
    m_shownText = textFor(editing);
    lineEdit()->setText(m_shownText);
    if (editing)
        lineEdit()->selectAll();
}

bool TNumberEdit::commitText(QString* error)
{
    const QString typed = lineEdit()->text();
    // An untouched text is the value itself; reading a shown format back could lose digits.
    if (typed == m_shownText)
        return true;
    bool ok = false;
    const QVariant read = ParseNumberEntry(typed, locale(), m_minimum < 0, &ok);
    if (ok && m_whole && !read.isNull() && read.toDouble() != std::trunc(read.toDouble()))
        ok = false;
    if (!ok) {
        if (error)
            *error = (m_whole ? WidgetTexts().invalidWholeNumber : WidgetTexts().invalidNumber).arg(typed);
        showText();
        return false;
    }
    setValue(read);
    showText();
    return true;
}

void TNumberEdit::stepBy(int steps)
{
    QString error;
    if (!commitText(&error)) {
        ReportEditorError(this, error);
        return;
    }
    double start = 0.0;
    if (!m_value.isNull())
        start = m_value.toDouble();
    else if (0.0 < m_minimum || 0.0 > m_maximum)
        start = m_minimum;
    setValue(m_value.isNull() ? start : start + m_step * steps);
    emit valueChosen();
}

void TNumberEdit::stepByLarge(int steps)
{
    QString error;
    if (!commitText(&error)) {
        ReportEditorError(this, error);
        return;
    }
    const double start = m_value.isNull() ? 0.0 : m_value.toDouble();
    setValue(start + m_largeStep * steps);
    emit valueChosen();
}

QAbstractSpinBox::StepEnabled TNumberEdit::stepEnabled() const
{
    if (isReadOnly())
        return StepNone;
    if (m_value.isNull())
        return StepUpEnabled | StepDownEnabled;
    StepEnabled enabled = StepNone;
    if (m_value.toDouble() < m_maximum)
        enabled |= StepUpEnabled;
    if (m_value.toDouble() > m_minimum)
        enabled |= StepDownEnabled;
    return enabled;
}

void TNumberEdit::focusInEvent(QFocusEvent* event)
{
    QAbstractSpinBox::focusInEvent(event);
    showText();
}

void TNumberEdit::focusOutEvent(QFocusEvent* event)
{
    QString error;
    if (!commitText(&error))
        ReportEditorErrorLater(this, error);
    QAbstractSpinBox::focusOutEvent(event);
    showText();
}

void TNumberEdit::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        if (!isReadOnly())
            stepByLarge(event->key() == Qt::Key_PageUp ? 1 : -1);
        event->accept();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        QString error;
        if (!commitText(&error))
            ReportEditorError(this, error);
        break;
    }
    default:
        break;
    }
    QAbstractSpinBox::keyPressEvent(event);
}

void TNumberEdit::changeEvent(QEvent* event)
{
    QAbstractSpinBox::changeEvent(event);
    if (event->type() == QEvent::LocaleChange)
        showText();
}
