#pragma once

#include <QPointer>
#include <QWidget>

#include <vector>

class QToolButton;
class TRibbonButton;
class TRibbonGroup;

// The page of one ribbon tab: its groups side by side. When the page is narrower than its groups,
// groups collapse, the last first, each to a single button that opens the whole group in a popup;
// when even that is too wide, the page scrolls with arrow buttons at its edges (and the wheel).
class TRibbonPage : public QWidget
{
    Q_OBJECT
public:
    TRibbonPage(const QString& name, const QString& caption, QWidget* parent = nullptr);

    QString name() const { return objectName(); }
    QString caption() const { return m_caption; }
    void setCaption(const QString& caption);

    TRibbonGroup* addGroup(const QString& name, const QString& caption);
    TRibbonGroup* group(const QString& name) const;
    QList<TRibbonGroup*> groups() const;
    // Hides or shows a whole group (contextual groups).
    void setGroupVisible(const QString& name, bool visible);
    bool isGroupVisible(const QString& name) const;

    bool isCollapsed(const TRibbonGroup* group) const;
    // The button that stands for a collapsed group (made on first collapse), or nullptr.
    TRibbonButton* collapsedButton(const TRibbonGroup* group) const;
    // Opens a collapsed group's popup.
    void showGroupPopup(TRibbonGroup* group);
    bool isScrollable() const { return m_scrollMax > 0; }
    int scrollOffset() const { return m_offset; }
    void scrollBy(int pixels);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void captionChanged(const QString& caption);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Slot
    {
        TRibbonGroup* group = nullptr;
        TRibbonButton* collapsedButton = nullptr;
        QAction* collapsedAction = nullptr;
        bool collapsed = false;
        bool hidden = false;
        QWidget* popup = nullptr;
    };
    Slot* slotOf(const TRibbonGroup* group);
    const Slot* slotOf(const TRibbonGroup* group) const;
    void relayout();
    TRibbonButton* ensureCollapsedButton(Slot& slot);
    void returnFromPopup(Slot& slot);

    QString m_caption;
    std::vector<Slot> m_slots;
    QToolButton* m_scrollStart;
    QToolButton* m_scrollEnd;
    int m_offset = 0;
    int m_scrollMax = 0;
    bool m_relayouting = false;
};
