#pragma once

#include "uWidgetMessagePresenter.h"

#include <QObject>

#include <memory>

class TDM_InternalData;
class TDataModuleImages;
class TORVMainForm;
class TSplashForm;

// The road from the first instruction to the listed collection and back. The application object
// (TOrvaneApplication) exists before any of it.
//
//   A  StartupPhaseA(): language object, branding record, settings store with all values (the
//      language of the Language setting among them), the empty spot list.
//   B  TOrvaneStartup::CreateForms(): splash, image data module, DM_InternalData, main window (its
//      creation is phase C).
//   D  TOrvaneStartup::Exec(): the event loop shows the main window (its first show is phase D) and
//      runs until the window has closed.
//      TOrvaneStartup::Shutdown(): windows and data modules destroyed, then FinalizeSettings()
//      writes every setting.

// Phase A. Safe to run again in the same process: the values are read anew.
void StartupPhaseA();

struct TStartupOptions
{
    // Shows MessageDlgZT boxes as widgets. Off when the caller has its own presenter installed.
    bool InstallMessagePresenter = true;
};

class TOrvaneStartup : public QObject
{
    Q_OBJECT

public:
    explicit TOrvaneStartup(TStartupOptions options = {});
    ~TOrvaneStartup() override;

    // Phase B, steps 1 to 6.
    void CreateForms();
    // Phase B, step 7: the event loop, until the main window has closed. Returns its exit code.
    int Exec();
    // Frees the windows and the data modules, then writes the settings. Runs once.
    void Shutdown();

    TSplashForm* SplashForm() const { return m_splash.get(); }
    TDM_InternalData* DataModule() const { return m_data.get(); }
    TORVMainForm* MainForm() const { return m_mainForm.get(); }

private:
    void ReleaseSplash();
    void DestroyForms();

    TStartupOptions m_options;
    TWidgetMessagePresenter m_presenter;
    bool m_presenterInstalled = false;
    bool m_shutDown = false;
    std::unique_ptr<TSplashForm> m_splash;
    std::unique_ptr<TDataModuleImages> m_images;
    std::unique_ptr<TDM_InternalData> m_data;
    std::unique_ptr<TORVMainForm> m_mainForm;
};

// Phases A to D, the event loop and the shutdown: the whole program once the application object
// exists. Returns the exit code of the event loop.
int RunOrvane();
