#pragma once

#include <QToolButton>

class QMenu;

// How much room an item takes in a ribbon group: a large item fills the group's height (big icon,
// text below it on up to two lines), medium and small items stack three to a column (medium: small
// icon and text; small: icon only, the text in the tooltip).
enum class TRibbonItemSize
{
    Large,
    Medium,
    Small,
};

// A ribbon item bound to a QAction: its text, icon, tooltip, enabled, checked and visible state all
// follow the action, and a click triggers it (so a disabled action's item does nothing). A check
// item or a radio item draws a check box or a radio indicator before its text. A drop-down opens a
// menu from the whole button, or, split, from its arrow part while a click on the rest runs the
// action. The size hint is computed once per change of action, font or size, and kept.
class TRibbonButton : public QToolButton
{
    Q_OBJECT
public:
    enum class Kind
    {
        Button,
        Check,
        Radio,
    };

    explicit TRibbonButton(QAction* action, TRibbonItemSize size = TRibbonItemSize::Large,
                           QWidget* parent = nullptr);

    TRibbonItemSize itemSize() const { return m_size; }
    void setItemSize(TRibbonItemSize size);
    Kind kind() const { return m_kind; }
    void setKind(Kind kind);
    // A menu from the whole button (split false) or from the arrow part only (split true).
    void setDropDownMenu(QMenu* menu, bool split);
    bool hasDropDown() const;
    bool isSplit() const;
    // Draws the drop-down arrow for a button that opens something of its own (a collapsed group).
    void setShowsArrow(bool on);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    // The two lines of a large item's text: split at the blank that makes the wider line
    // narrowest, leaving room for the drop-down arrow on the second line.
    static QStringList splitText(const QString& text, const QFontMetrics& metrics, int arrowWidth);
    // The drop-down arrow, a small triangle pointing down, centred in rect.
    static void paintArrow(QPainter* painter, const QRect& rect, const QColor& color, int size);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void actionEvent(QActionEvent* event) override;
    void changeEvent(QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QRect menuPart() const;
    QString shownText() const;
    void invalidateSize();

    TRibbonItemSize m_size;
    Kind m_kind = Kind::Button;
    bool m_menuOpen = false;
    bool m_hoverMenuPart = false;
    bool m_showsArrow = false;
    mutable QSize m_sizeHint;
};
