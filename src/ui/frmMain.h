#pragma once

#include "uMainController.h"

#include <QEvent>
#include <QHash>
#include <QIcon>
#include <QMainWindow>

#include <array>
#include <memory>

class QAction;
class QActionGroup;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QTableView;
class QToolBar;
class QToolButton;
class TBackstageView;
class TCollectionPane;
class TDM_InternalData;
class TDatasetTableModel;
class TGalleryView;
class TRibbon;
enum class TOptionsPage;

// The main window: the ribbon with the commands of the controller's table, the application menu,
// the collection in the middle and the status bar with the spot prices, the view buttons and the
// totals. Its logic lives in TMainController; the window shows what the controller says and
// implements its seams (dialogs, the view's selection, the clipboard).
class TORVMainForm : public QMainWindow
{
    Q_OBJECT

public:
    // Posted to the window at the end of its first show; its delivery releases the splash.
    static constexpr QEvent::Type cWMReleaseSplash = QEvent::Type(int(TMainEvent::ReleaseSplash));
    // How long the first show waits for the first paint before it reads the items regardless.
    static constexpr int cFirstPaintWaitMs = 500;

    // Window creation: the theme, the ribbon with rtGeneral active, geometry and the maximised flag
    // from the settings, all texts from the language, the handler of the spot list attached.
    explicit TORVMainForm(TDM_InternalData& data, QWidget* parent = nullptr);
    ~TORVMainForm() override;

    TMainController* Controller() const { return m_controller; }
    TDM_InternalData& Data() const { return m_data; }
    // Replaces the platform's file dialogs (nullptr puts them back). Not owned.
    void SetFileDialogs(TFileDialogSeam* dialogs);
    // Replaces the window's own seam (dialogs, clipboard); nullptr puts it back. Not owned.
    void SetWindowSeam(TMainWindowSeam* seam);

    // The command of that name (actAdd ...), or nullptr.
    QAction* Action(const QString& name) const { return m_actions.value(name); }
    QAction* actDBNew() const { return Action(QStringLiteral("actDBNew")); }
    QAction* actDBOpen() const { return Action(QStringLiteral("actDBOpen")); }
    QAction* actDBSaveAs() const { return Action(QStringLiteral("actDBSaveAs")); }
    QAction* actDBProperties() const { return Action(QStringLiteral("actDBProperties")); }
    QAction* actExit() const { return Action(QStringLiteral("actExit")); }
    QMenu* mnuLanguage() const { return m_mnuLanguage; }
    TRibbon* Ribbon() const { return m_ribbon; }
    TBackstageView* Backstage() const { return m_backstage; }
    TGalleryView* BackstageGalleryAdd() const { return m_galleryAdd; }
    QLineEdit* edtBackstageSearch() const { return m_edtBackstageSearch; }
    QMenu* pmGrid() const { return m_pmGrid; }
    // The five collection views and the details pane.
    TCollectionPane* Views() const { return m_views; }
    // btnTotalOzGold, btnTotalOzSilver, btnTotalOzPlatinum by metal code 0 .. 2.
    QToolButton* TotalButton(int metal) const;
    // btnSpotGold .. btnSpotCopper by metal code.
    QToolButton* SpotButton(int metal) const;
    QLabel* lItems() const { return m_lItems; }
    QIcon SpotGlyphIcon(TSpotGlyph glyph) const;

    // MainForm.Maximized as read at creation: the state the first show gives the window.
    bool RememberedMaximized() const { return m_maximized; }

    // Sets every text of the window from the language, the reading direction first.
    void TranslateUI();
    // The update rule of the commands; also runs whenever the event loop falls idle.
    void UpdateActions();
    // Applies a theme and accent to the application and the ribbon.
    void ApplyTheme(int themeIndex, int accentIndex);
    // The handler of the spot list's change event.
    void SpotPricesLoaded();
    // Fills the language menu from the language folder.
    void FillLanguageMenu();
    // Loads the language of that file name and, when it loaded, sets all texts anew.
    bool SwitchLanguage(const QString& fileName);
    // Opens the application menu as the application button does.
    void ShowBackstage();
    // actOptions: the options dialog on a page, then the window follows the settings (texts, theme,
    // custom fields), after OK and after Cancel alike. True after OK.
    bool OptionsExecute(TOptionsPage page);
    // Shows the custom columns the settings switch on.
    void ApplyCustomFields();
    // The status-bar totals per metal from qBasicStats; nothing without a collection.
    void UpdateStatusBarTotals();
    // The quick filter's check items as the filter of qDS_Items.
    void BuildQuickFilter();

signals:
    // The first show is through: the splash may go.
    void SplashReleaseRequested();
    // The window has closed; the event loop is to end.
    void Closed();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void CreateActions();
    void ConnectActions();
    void CreateMenus();
    void CreateRibbon();
    void CreateBackstage();
    void CreateCentre();
    void CreateStatusBar();
    void BackstageAboutToShow();
    // Phase D up to the connect; the collection's file is open, its items are not read yet.
    void FormShow();
    // The rest of phase D, queued after the first paint: the items read, then the splash released.
    void FinishFormShow();
    void QueueFinishFormShow();
    void ApplySpotButtons();
    void ShowDocumentName(const QString& name);
    void UpdateItemCount();
    void UpdateSelection();
    // The views (frmMainViews.cpp).
    void CreateViews();
    void ConnectViews();
    void TranslateViews();
    void DBPropertiesExecute();
    void AboutExecute();
    QAction* MakeAction(const QString& name);

    TDM_InternalData& m_data;
    std::unique_ptr<TFileDialogSeam> m_platformDialogs;
    std::unique_ptr<TMainWindowSeam> m_ownSeam;
    TMainController* m_controller;

    QHash<QString, QAction*> m_actions;
    QActionGroup* m_viewGroup = nullptr;
    QMenu* m_pmAdd = nullptr;
    QMenu* m_pmEditSelected = nullptr;
    QMenu* m_pmFilterQuick = nullptr;
    QMenu* m_pmThumbSize = nullptr;
    QMenu* m_pmGrid = nullptr;
    QMenu* m_mnuLanguage = nullptr;
    QActionGroup* m_languageGroup = nullptr;
    QActionGroup* m_thumbSizeGroup = nullptr;
    QAction* m_btnAddDropDown = nullptr;
    QAction* m_btnEditDropDown = nullptr;
    QAction* m_btnFilterQuick = nullptr;
    QAction* m_btnLanguage = nullptr;
    QAction* m_sepFilterByMetal = nullptr;
    QAction* m_sepFilterByType = nullptr;
    QList<QAction*> m_thumbSizeItems;

    TRibbon* m_ribbon = nullptr;
    TBackstageView* m_backstage = nullptr;
    TGalleryView* m_galleryAdd = nullptr;
    TGalleryView* m_galleryDB = nullptr;
    TGalleryView* m_galleryExport = nullptr;
    QLineEdit* m_edtBackstageSearch = nullptr;
    QPushButton* m_btnBackstageSearch = nullptr;
    QLabel* m_lBackstageSearchTop = nullptr;
    QLabel* m_lBackstageSearchBottom = nullptr;
    QAction* m_btnBackstageStats = nullptr;
    QAction* m_btnBackstageOptions = nullptr;
    QAction* m_btnBackstageQuit = nullptr;

    TCollectionPane* m_views = nullptr;
    std::array<QToolButton*, 3> m_totalButtons{};
    QToolBar* m_barTotalOz = nullptr;
    bool m_totalsPending = false;

    QToolBar* m_barSpot = nullptr;
    QToolBar* m_barViews = nullptr;
    QLabel* m_lSpotPrices = nullptr;
    std::array<QToolButton*, 6> m_spotButtons{};
    std::array<bool, 6> m_spotShown{};
    QLabel* m_lItems = nullptr;
    QIcon m_riseIcon;
    QIcon m_fallIcon;

    bool m_maximized = true;
    bool m_shown = false;
    bool m_painted = false;       // the first paint has been seen
    bool m_finishPending = false; // FormShow is through and FinishFormShow waits for the first paint
};
