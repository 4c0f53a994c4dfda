#include "uRatingEditorItem.h"

#include "uNumberFormat.h"
#include "uRatingWidget.h"

#include <QPainter>
#include <QStyleOptionViewItem>

namespace {
QRect starsArea(const QStyleOptionViewItem& option)
{
    return option.rect.adjusted(4, 0, -4, 0);
}
} // namespace

QString TRatingEditorItem::displayText(const QVariant& value) const
{
    if (value.isNull() || !value.isValid())
        return nullText();
    return PlainNumberText(value.toDouble(), locale());
}

bool TRatingEditorItem::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QVariant& value) const
{
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QColor fill = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Highlight);
    QColor outline = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    outline.setAlphaF(0.45f);
    const int size = std::min(TRatingWidget::starSize(option.fontMetrics), option.rect.height() - 2);
    TRatingWidget::paintStars(painter, starsArea(option), option.direction, m_stars, size,
                              value.isNull() ? 0.0 : value.toDouble(), fill, outline);
    return true;
}

QSize TRatingEditorItem::sizeHint(const QStyleOptionViewItem& option, const QVariant& value) const
{
    Q_UNUSED(value);
    const int size = TRatingWidget::starSize(option.fontMetrics);
    return {m_stars * (size + 2) + 8, size + 4};
}

bool TRatingEditorItem::valueFromClick(const QStyleOptionViewItem& option, const QPoint& pos,
                                       const QVariant& current, QVariant* result) const
{
    Q_UNUSED(current);
    if (isReadOnly())
        return false;
    const QRect area = starsArea(option);
    const int size = std::min(TRatingWidget::starSize(option.fontMetrics), option.rect.height() - 2);
    const int width = m_stars * (size + 2);
    const int offset =
        option.direction == Qt::RightToLeft ? area.right() + 1 - pos.x() : pos.x() - area.left();
    if (offset < 0 || offset > width || !option.rect.contains(pos))
        return false;
    *result = TRatingWidget::valueAt(area, option.direction, m_stars, size, pos.x(), m_step);
    return true;
}

QWidget* TRatingEditorItem::makeEditor(QWidget* parent) const
{
    auto* editor = new TRatingWidget(parent);
    editor->setStarCount(m_stars);
    editor->setStep(m_step);
    return editor;
}

void TRatingEditorItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* widget = qobject_cast<TRatingWidget*>(editor))
        widget->setValue(value);
}

QVariant TRatingEditorItem::editorValue(QWidget* editor) const
{
    auto* widget = qobject_cast<TRatingWidget*>(editor);
    return widget ? widget->value() : QVariant();
}

QMetaObject::Connection TRatingEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* widget = qobject_cast<TRatingWidget*>(editor);
    return widget ? QObject::connect(widget, &TRatingWidget::valueChosen, widget, std::move(slot))
                  : QMetaObject::Connection();
}
