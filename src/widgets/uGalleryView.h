#pragma once

#include <QAbstractScrollArea>
#include <QPixmap>
#include <QPointer>

#include <vector>

class QAction;

// A gallery: pictured items (100 x 100 by default) in captioned groups, flowing across the width
// and scrolling down. Each item has a name, a caption under its picture, a tag (a number the
// program gives it) and an enabled state. A click on an enabled item, or Enter / Space on the
// focused one, emits itemClicked with the group, the item and its tag. An item may instead follow
// a QAction: caption, picture and enabled state come from the action, and a click triggers it
// (and emits itemClicked as well). Arrows move the focus; right-to-left flows from the right.
class TGalleryView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit TGalleryView(QWidget* parent = nullptr);

    void addGroup(const QString& name, const QString& caption);
    void setGroupCaption(const QString& name, const QString& caption);
    void setGroupVisible(const QString& name, bool visible);
    QStringList groupNames() const;

    // Names are unique within the gallery; an unknown group fails (false).
    bool addItem(const QString& group, const QString& name, const QString& caption, const QPixmap& picture,
                 int tag = 0);
    bool addActionItem(const QString& group, QAction* action, int tag = 0, const QString& name = {});
    void setItemCaption(const QString& name, const QString& caption);
    void setItemPicture(const QString& name, const QPixmap& picture);
    void setItemEnabled(const QString& name, bool enabled);
    bool isItemEnabled(const QString& name) const;
    int itemTag(const QString& name) const;
    QString itemGroup(const QString& name) const;
    QString itemCaption(const QString& name) const;
    QStringList itemNames() const;
    void clear();

    QSize pictureSize() const { return m_pictureSize; }
    void setPictureSize(const QSize& size);
    int captionLines() const { return m_captionLines; }
    void setCaptionLines(int lines);
    // The width the size hint asks for, in items.
    int columnsHint() const { return m_columnsHint; }
    void setColumnsHint(int columns);

    // The item at a point of the viewport, or "".
    QString itemAt(const QPoint& pos) const;
    // An item's rectangle in viewport coordinates (empty when hidden).
    QRect itemRect(const QString& name) const;
    // Clicks an item as the user would (nothing for a disabled or unknown one).
    bool clickItem(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void itemClicked(const QString& group, const QString& name, int tag);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;

private:
    struct Item
    {
        QString name;
        QString group;
        QString caption;
        QPixmap picture;
        int tag = 0;
        bool enabled = true;
        QPointer<QAction> action;
        QRect rect; // content coordinates
    };
    struct Group
    {
        QString name;
        QString caption;
        bool visible = true;
        QRect header; // content coordinates
    };
    Item* find(const QString& name);
    const Item* find(const QString& name) const;
    int indexAt(const QPoint& viewportPos) const;
    QSize cellSize() const;
    void relayout();
    void activate(int index);
    bool enabledAt(int index) const;
    QString captionOf(const Item& item) const;
    QPixmap pictureOf(const Item& item) const;
    int headerHeight() const;

    std::vector<Group> m_groups;
    std::vector<Item> m_items;
    QSize m_pictureSize{100, 100};
    int m_captionLines = 2;
    int m_columnsHint = 5;
    int m_contentHeight = 0;
    int m_hover = -1;
    int m_pressed = -1;
    int m_focus = -1;
};
