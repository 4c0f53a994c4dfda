// Loaded into the installed program by tst_install (LD_PRELOAD): at the first paint of the main
// window it prints "shown", then the text of each action named in ORV_PROBE_ACTIONS (comma
// separated) as "<name>=<text>", and closes the window so that the program ends as it always does.

#include <QAction>
#include <QCoreApplication>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace {

class TInstallProbe : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (m_done || event->type() != QEvent::Paint || !watched->isWidgetType())
            return false;
        QWidget* window = static_cast<QWidget*>(watched)->window();
        if (window->objectName() != QStringLiteral("ORVMainForm"))
            return false;
        m_done = true;
        std::printf("shown\n");
        const QStringList names = qEnvironmentVariable("ORV_PROBE_ACTIONS").split(u',', Qt::SkipEmptyParts);
        for (const QString& name : names) {
            const auto* action = window->findChild<QAction*>(name);
            std::printf("%s=%s\n", qPrintable(name), action ? qPrintable(action->text()) : "");
        }
        std::fflush(stdout);
        QTimer::singleShot(0, window, [window] { window->close(); });
        return false;
    }

private:
    bool m_done = false;
};

void InstallProbe()
{
    auto* probe = new TInstallProbe;
    probe->setParent(QCoreApplication::instance());
    QCoreApplication::instance()->installEventFilter(probe);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(InstallProbe)
