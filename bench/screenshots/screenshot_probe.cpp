// Loaded into the real program (LD_PRELOAD) by scripts/screenshots.sh. Once the main window has
// painted, it walks the steps of ORV_SHOT_STEPS, separated by ';', one after another:
//
//   size:W:H          resize the main window
//   act:NAME          trigger the action NAME of the active window (queued, so a dialog it opens
//                     does not stop the walk)
//   wait:MS           wait
//   set:NAME:TEXT     put TEXT into the line edit NAME of the active window
//   key:NAME:Return   press Return (or Escape, Tab) in the widget NAME of the active window
//   selectall:NAME    select every row of the item view NAME of the active window
//   shot:FILE         save a picture of the active window (a dialog, else the main window)
//   close             close the active dialog
//   quit              close the main window, which ends the program as it always ends
//
// Pictures go to ORV_SHOT_DIR. Each step's outcome is printed; a step that finds nothing to act on
// ends the program with exit code 3.

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <QWidget>

#include <cstdio>

#include <unistd.h>

namespace {

class TShotProbe : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (m_started || event->type() != QEvent::Paint || !watched->isWidgetType())
            return false;
        QWidget* window = static_cast<QWidget*>(watched)->window();
        if (window->objectName() != QStringLiteral("ORVMainForm"))
            return false;
        m_started = true;
        m_main = window;
        m_steps = qEnvironmentVariable("ORV_SHOT_STEPS").split(u';', Qt::SkipEmptyParts);
        QTimer::singleShot(500, this, [this] { Next(); });
        return false;
    }

private:
    QWidget* Active() const
    {
        if (QWidget* modal = QApplication::activeModalWidget())
            return modal;
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top != m_main && top->isVisible() && top->isWindow() && qobject_cast<QDialog*>(top))
                return top;
        return m_main;
    }

    template <class T> T* Find(const QString& name) const
    {
        QWidget* active = Active();
        if (auto* found = active->findChild<T*>(name))
            return found;
        return active == m_main ? nullptr : m_main->findChild<T*>(name);
    }

    void Fail(const QString& step)
    {
        std::printf("failed %s\n", qPrintable(step));
        std::fflush(stdout);
        QCoreApplication::exit(3);
        ::_exit(3);
    }

    void Next()
    {
        if (m_steps.isEmpty())
            return;
        const QString step = m_steps.takeFirst().trimmed();
        const QStringList part = step.split(u':');
        const QString what = part.value(0);
        int delay = 200;
        if (what == u"size") {
            m_main->resize(part.value(1).toInt(), part.value(2).toInt());
        } else if (what == u"act") {
            QAction* action = Find<QAction>(part.value(1));
            if (!action || !action->isEnabled())
                return Fail(step);
            QTimer::singleShot(0, action, &QAction::trigger);
            delay = 800;
        } else if (what == u"wait") {
            delay = part.value(1).toInt();
        } else if (what == u"set") {
            auto* edit = Find<QLineEdit>(part.value(1));
            if (!edit)
                return Fail(step);
            edit->setFocus();
            edit->setText(part.mid(2).join(u':'));
        } else if (what == u"key") {
            QWidget* target = Find<QWidget>(part.value(1));
            if (!target)
                return Fail(step);
            const QString name = part.value(2);
            const int key = name == u"Escape" ? Qt::Key_Escape
                            : name == u"Tab"  ? Qt::Key_Tab
                                              : Qt::Key_Return;
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
            QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
            QApplication::sendEvent(target, &press);
            QApplication::sendEvent(target, &release);
        } else if (what == u"selectall") {
            auto* view = Find<QAbstractItemView>(part.value(1));
            if (!view)
                return Fail(step);
            view->selectAll();
        } else if (what == u"shot") {
            QWidget* window = Active();
            const QString file =
                QDir(qEnvironmentVariable("ORV_SHOT_DIR")).filePath(part.value(1) + QStringLiteral(".png"));
            if (!window->grab().save(file))
                return Fail(step);
        } else if (what == u"close") {
            QWidget* window = Active();
            if (window == m_main)
                return Fail(step);
            if (auto* dialog = qobject_cast<QDialog*>(window))
                dialog->reject();
            else
                window->close();
        } else if (what == u"quit") {
            m_main->close();
            return;
        } else {
            return Fail(step);
        }
        std::printf("done %s\n", qPrintable(step));
        std::fflush(stdout);
        QTimer::singleShot(delay, this, [this] { Next(); });
    }

    bool m_started = false;
    QWidget* m_main = nullptr;
    QStringList m_steps;
};

void InstallProbe()
{
    auto* probe = new TShotProbe;
    probe->setParent(QCoreApplication::instance());
    QCoreApplication::instance()->installEventFilter(probe);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(InstallProbe)
