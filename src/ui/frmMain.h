#pragma once

#include "uMainController.h"

#include <QEvent>
#include <QIcon>
#include <QMainWindow>

#include <array>
#include <memory>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QToolBar;
class QToolButton;
class TDM_InternalData;

// The main window: the database commands, the language menu, the spot price buttons and, in the
// middle, the size of the open collection. Its logic lives in TMainController; the window shows
// what the controller says and implements the file dialogs for it.
class TORVMainForm : public QMainWindow
{
    Q_OBJECT

public:
    // Posted to the window at the end of its first show; its delivery releases the splash.
    static constexpr QEvent::Type cWMReleaseSplash = QEvent::User;
    // How long the first show waits for the first paint before it reads the items regardless.
    static constexpr int cFirstPaintWaitMs = 500;

    // Window creation: geometry and the maximised flag from the settings, all texts from the
    // language, the handler of the spot list attached.
    explicit TORVMainForm(TDM_InternalData& data, QWidget* parent = nullptr);
    ~TORVMainForm() override;

    TMainController* Controller() const { return m_controller; }
    TDM_InternalData& Data() const { return m_data; }
    // Replaces the platform's file dialogs (nullptr puts them back). Not owned.
    void SetFileDialogs(TFileDialogSeam* dialogs);

    QAction* actDBNew() const { return m_actDBNew; }
    QAction* actDBOpen() const { return m_actDBOpen; }
    QAction* actDBSaveAs() const { return m_actDBSaveAs; }
    QAction* actDBProperties() const { return m_actDBProperties; }
    QAction* actExit() const { return m_actExit; }
    QMenu* mnuLanguage() const { return m_mnuLanguage; }
    // btnSpotGold .. btnSpotCopper by metal code.
    QToolButton* SpotButton(int metal) const;
    QLabel* lItems() const { return m_lItems; }
    QIcon SpotGlyphIcon(TSpotGlyph glyph) const;

    // MainForm.Maximized as read at creation: the state the first show gives the window.
    bool RememberedMaximized() const { return m_maximized; }

    // Sets every text of the window from the language, the reading direction first.
    void TranslateUI();
    // The update rule of the commands; runs whenever the event loop falls idle.
    void UpdateActions();
    // The handler of the spot list's change event.
    void SpotPricesLoaded();
    // Fills the language menu from the language folder.
    void FillLanguageMenu();
    // Loads the language of that file name and, when it loaded, sets all texts anew.
    bool SwitchLanguage(const QString& fileName);

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
    void CreateBars();
    // Phase D up to the connect; the collection's file is open, its items are not read yet.
    void FormShow();
    // The rest of phase D, queued after the first paint: the items read, then the splash released.
    // It does not run when the connect of FormShow failed: the splash then stays.
    void FinishFormShow();
    void QueueFinishFormShow();
    // Captions, hints and glyphs of the spot buttons from the list; metals without an entry stay.
    void ApplySpotButtons();
    void ShowDocumentName(const QString& name);
    void UpdateItemCount();
    void DBPropertiesExecute();

    TDM_InternalData& m_data;
    std::unique_ptr<TFileDialogSeam> m_platformDialogs;
    TMainController* m_controller;

    QAction* m_actDBNew = nullptr;
    QAction* m_actDBOpen = nullptr;
    QAction* m_actDBSaveAs = nullptr;
    QAction* m_actDBProperties = nullptr;
    QAction* m_actExit = nullptr;
    QMenu* m_mnuDatabase = nullptr;
    QMenu* m_mnuLanguage = nullptr;
    QActionGroup* m_languageGroup = nullptr;
    QToolBar* m_barDBMgmt = nullptr;
    QToolBar* m_barSpot = nullptr;
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
