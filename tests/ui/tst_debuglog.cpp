// The debug log window: lines from workers reach it on the main thread, it docks under its owner,
// and Ctrl+L empties it.

#include "frmDebug.h"
#include "uDebugLog.h"
#include "uZTLog.h"

#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextDocument>
#include <QThread>
#include <QtTest>

class TestDebugLog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { DebugMode = false; }

    void linesFromWorkersReachTheWindow()
    {
        QWidget mainWindow;
        mainWindow.setGeometry(50, 60, 800, 500);
        mainWindow.show();
        QVERIFY(QTest::qWaitForWindowExposed(&mainWindow));
        auto* sink = new TDebugLogSink(&mainWindow);
        DebugMode = true;
        LogText("before the workers");
        QVERIFY(sink->Form() == nullptr); // created on the main thread, when the line arrives

        std::vector<std::unique_ptr<QThread>> workers;
        for (int t = 0; t < 3; ++t) {
            workers.emplace_back(QThread::create([t] {
                for (int i = 0; i < 100; ++i) {
                    LogFormat("worker %d line %d", {t, i});
                }
            }));
            workers.back()->start();
        }
        for (const auto& worker : workers) {
            QVERIFY(worker->wait(30000));
        }
        QTRY_VERIFY(sink->Form() != nullptr);
        QPlainTextEdit* memo = sink->Form()->memDebug();
        QTRY_COMPARE(memo->blockCount(), 301);
        QVERIFY(memo->isReadOnly());
        QVERIFY(memo->document()->firstBlock().text().endsWith("] before the workers"));
        QCOMPARE(sink->Form()->parentWidget(), &mainWindow);

        // Docked under the main window, and again after it moves.
        TDebugForm* form = sink->Form();
        QVERIFY(QTest::qWaitForWindowExposed(form));
        QTRY_COMPARE(form->frameGeometry().top(), mainWindow.frameGeometry().bottom() + 1);
        QCOMPARE(form->frameGeometry().left(), mainWindow.frameGeometry().left());
        mainWindow.move(120, 90);
        QTRY_COMPARE(form->frameGeometry().top(), mainWindow.frameGeometry().bottom() + 1);
        QTRY_COMPARE(form->frameGeometry().left(), mainWindow.frameGeometry().left());

        memo->setFocus();
        QTest::keyClick(memo, Qt::Key_L, Qt::ControlModifier);
        QCOMPARE(memo->toPlainText(), QString());

        // After the sink is gone nothing reaches it, and logging goes on without a window.
        delete sink;
        LogText("after");
        QCoreApplication::processEvents();
        QCOMPARE(memo->toPlainText(), QString());
    }
};

QTEST_MAIN(TestDebugLog)
#include "tst_debuglog.moc"
