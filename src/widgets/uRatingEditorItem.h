#pragma once

#include "uBasicEditorItem.h"

// A rating shown as stars (5 by default) in steps of `step` (0.5: half stars). The value is a
// double; null shows no star. A click into the stars picks a value at once; the editor is a
// TRatingWidget. The text form (for search and export) is the number.
class TRatingEditorItem : public TBasicEditorItem
{
public:
    int starCount() const { return m_stars; }
    void setStarCount(int count) { m_stars = std::max(1, count); }
    double step() const { return m_step; }
    void setStep(double step) { m_step = step > 0 ? step : 1.0; }

    QString displayText(const QVariant& value) const override;
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QVariant& value) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QVariant& value) const override;
    bool valueFromClick(const QStyleOptionViewItem& option, const QPoint& pos, const QVariant& current,
                        QVariant* result) const override;
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;

private:
    int m_stars = 5;
    double m_step = 0.5;
};
