#include "uStartup.h"

#include "dmImages.h"
#include "dmInternalData.h"
#include "frmMain.h"
#include "frmSplash.h"
#include "uSpot.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QApplication>

void StartupPhaseA()
{
    XMLLanguage();        // 1. the language object, nothing loaded yet
    InitializeSettings(); // 2-4. branding record, settings store, LoadSettings (with the language)
    SpotPrices();         // 5. the empty spot list
}

TOrvaneStartup::TOrvaneStartup(TStartupOptions options) : m_options(options) {}

TOrvaneStartup::~TOrvaneStartup()
{
    DestroyForms();
    if (m_presenterInstalled) {
        SetMessagePresenter(nullptr);
    }
}

void TOrvaneStartup::CreateForms()
{
    // 1-2. The splash, painted once before the long steps.
    m_splash = std::make_unique<TSplashForm>();
    m_splash->show();
    QApplication::processEvents();

    // 3. The application object's own set-up: the message boxes and the loop's error box.
    if (m_options.InstallMessagePresenter) {
        SetMessagePresenter(&m_presenter);
        m_presenterInstalled = true;
    }
    QApplication::setQuitOnLastWindowClosed(false);

    // 4. The image data module: blank pictures and the shared editors with their dictionaries.
    m_images = std::make_unique<TDataModuleImages>();

    // 5. The data module, connected to nothing yet.
    m_data = std::make_unique<TDM_InternalData>();

    // 6. The main window (its creation runs the steps of window creation).
    m_mainForm = std::make_unique<TORVMainForm>(*m_data);
    connect(m_mainForm.get(), &TORVMainForm::SplashReleaseRequested, this, &TOrvaneStartup::ReleaseSplash);
    connect(m_mainForm.get(), &TORVMainForm::Closed, this, [] { QCoreApplication::exit(0); });
}

int TOrvaneStartup::Exec()
{
    // The loop shows the main window; its first show connects the last collection.
    QMetaObject::invokeMethod(
        m_mainForm.get(), [form = m_mainForm.get()] { form->show(); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

void TOrvaneStartup::ReleaseSplash()
{
    m_splash.reset();
}

void TOrvaneStartup::DestroyForms()
{
    m_mainForm.reset();
    m_data.reset();
    m_images.reset();
    m_splash.reset();
}

void TOrvaneStartup::Shutdown()
{
    if (m_shutDown) {
        return;
    }
    m_shutDown = true;
    DestroyForms();
    FinalizeSettings();
}

int RunOrvane()
{
    StartupPhaseA();
    TOrvaneStartup startup;
    startup.CreateForms();
    const int result = startup.Exec();
    startup.Shutdown();
    return result;
}
