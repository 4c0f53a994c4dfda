#pragma once

#include "uRibbonButton.h"

#include <QIcon>
#include <QPointer>
#include <QWidget>

class QActionGroup;
class QMenu;
class TGalleryView;
class TRibbonComboItem;
class TRibbonGroupLayout;

// A group of a ribbon tab: items laid out by TRibbonGroupLayout above a caption, and an optional
// caption button (bound to an action, e.g. a dialog of the group's settings) at the caption's end.
// Every item is driven by a QAction, so the program's one enablement rule sets them all. A group
// that does not fit its tab collapses to one button that opens the group in a popup (see
// TRibbonPage); icon() is that button's picture.
class TRibbonGroup : public QWidget
{
    Q_OBJECT
public:
    TRibbonGroup(const QString& name, const QString& caption, QWidget* parent = nullptr);

    QString name() const { return objectName(); }
    QString caption() const { return m_caption; }
    void setCaption(const QString& caption);
    QIcon icon() const;
    void setIcon(const QIcon& icon);

    // A button for action (a checkable action gives a toggle button).
    TRibbonButton* addButton(QAction* action, TRibbonItemSize size = TRibbonItemSize::Large);
    // A button with a menu: from the whole button, or with split from its arrow while the rest
    // runs the action.
    TRibbonButton* addDropDownButton(QAction* action, QMenu* menu,
                                     TRibbonItemSize size = TRibbonItemSize::Large, bool split = false);
    // A check box for a checkable action.
    TRibbonButton* addCheckItem(QAction* action);
    // One item per action of an exclusive group: toggle buttons, or radio indicators with
    // indicators on.
    QList<TRibbonButton*> addRadioGroup(QActionGroup* group, TRibbonItemSize size = TRibbonItemSize::Large,
                                        bool indicators = false);
    TRibbonComboItem* addComboItem(QAction* action, const QStringList& items = {});
    // A drop-down button that opens a gallery; a click on one of its items closes it.
    TRibbonButton* addGalleryButton(QAction* action, TGalleryView* gallery,
                                    TRibbonItemSize size = TRibbonItemSize::Large);
    // Any other widget, as a row item or a large item.
    void addWidget(QWidget* widget, TRibbonItemSize size = TRibbonItemSize::Medium);
    void addSeparator();
    void addColumnBreak();

    void setCaptionAction(QAction* action);
    QAction* captionAction() const { return m_captionAction; }
    QToolButton* captionButton() const { return m_captionButton; }

    // The item with that object name, or nullptr.
    QWidget* item(const QString& objectName) const;
    QList<QWidget*> items() const { return m_items; }
    TRibbonGroupLayout* itemLayout() const { return m_layout; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void placeCaptionButton();
    void adopt(QWidget* widget, TRibbonItemSize size);

    QString m_caption;
    QIcon m_icon;
    TRibbonGroupLayout* m_layout;
    QList<QWidget*> m_items;
    QPointer<QAction> m_captionAction;
    QToolButton* m_captionButton = nullptr;
};
