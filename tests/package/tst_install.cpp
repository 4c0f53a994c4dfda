// The program as a user gets it: the build installed into a temporary root under /usr, checked
// with the desktop's own validators, then started from there.

#include "uZTRegistrySettings.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString cAppId = u"com.brenmoor.Orvane"_s;

struct TRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

TRun Run(const QString& program, const QStringList& args,
         const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(program, args);
    TRun run;
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        run.err = u"timed out"_s;
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace

class TInstallTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void installedFiles_data();
    void installedFiles();
    void validators_data();
    void validators();
    void startsInItsLanguage_data();
    void startsInItsLanguage();

private:
    QTemporaryDir m_root;
    QString m_prefix;
};

void TInstallTest::initTestCase()
{
    QVERIFY(m_root.isValid());
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"DESTDIR"_s, m_root.path());
    const TRun install =
        Run(QStringLiteral(ORV_CMAKE),
            {u"--install"_s, qEnvironmentVariable("ORV_BUILD_DIR"), u"--prefix"_s, u"/usr"_s}, env);
    QVERIFY2(install.exitCode == 0, qPrintable(install.out + install.err));
    m_prefix = m_root.path() + u"/usr"_s;
}

void TInstallTest::installedFiles_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("program") << u"bin/orvane"_s;
    QTest::newRow("english") << u"share/orvane/Lang/English.xml"_s;
    QTest::newRow("german") << u"share/orvane/Lang/German.xml"_s;
    QTest::newRow("menu entry") << u"share/applications/%1.desktop"_s.arg(cAppId);
    QTest::newRow("metainfo") << u"share/metainfo/%1.metainfo.xml"_s.arg(cAppId);
    QTest::newRow("scalable icon") << u"share/icons/hicolor/scalable/apps/%1.svg"_s.arg(cAppId);
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
        QTest::newRow(qPrintable(u"icon %1"_s.arg(size)))
            << u"share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size).arg(cAppId);
}

void TInstallTest::installedFiles()
{
    QFETCH(QString, path);
    const QFileInfo file(m_prefix + u'/' + path);
    QVERIFY2(file.isFile() && file.size() > 0, qPrintable(file.filePath()));
    if (path.endsWith(u".png"_s)) {
        const int size = path.section(u'/', 3, 3).section(u'x', 0, 0).toInt();
        QImage icon(file.filePath());
        QCOMPARE(icon.size(), QSize(size, size));
        QVERIFY(icon.hasAlphaChannel());
    }
}

void TInstallTest::validators_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QStringList>("args");
    QTest::newRow("desktop-file-validate")
        << u"desktop-file-validate"_s << QStringList{u"share/applications/%1.desktop"_s.arg(cAppId)};
    QTest::newRow("appstreamcli") << u"appstreamcli"_s
                                  << QStringList{u"validate"_s, u"--no-net"_s, u"--pedantic"_s,
                                                 u"share/metainfo/%1.metainfo.xml"_s.arg(cAppId)};
}

void TInstallTest::validators()
{
    QFETCH(QString, tool);
    QFETCH(QStringList, args);
    const QString program = QStandardPaths::findExecutable(tool);
    QVERIFY2(!program.isEmpty(), qPrintable(tool + u" is not installed (scripts/deps.sh installs it)"_s));
    for (QString& arg : args)
        if (arg.startsWith(u"share/"_s))
            arg = m_prefix + u'/' + arg;
    const TRun run = Run(program, args);
    QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
    // desktop-file-validate says nothing about a sound file; its hints are faults to fix too.
    if (tool == u"desktop-file-validate"_s)
        QVERIFY2(run.out.trimmed().isEmpty(), qPrintable(run.out));
}

void TInstallTest::startsInItsLanguage_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("optionsText");
    QTest::newRow("built-in English") << QString() << u"Options"_s;
    QTest::newRow("German from the installed files") << u"German"_s << u"Optionen"_s;
}

void TInstallTest::startsInItsLanguage()
{
    QFETCH(QString, language);
    QFETCH(QString, optionsText);
    QTemporaryDir home;
    QVERIFY(home.isValid());
    const QString runtime = home.filePath(u"runtime"_s);
    QVERIFY(QDir().mkpath(runtime));
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"HOME"_s, home.path());
    env.insert(u"XDG_CONFIG_HOME"_s, home.filePath(u"config"_s));
    env.insert(u"XDG_RUNTIME_DIR"_s, runtime);
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    env.insert(u"LD_PRELOAD"_s, QStringLiteral(ORV_INSTALL_PROBE));
    env.insert(u"ORV_PROBE_ACTIONS"_s, u"actOptions"_s);
    if (!language.isEmpty()) {
        const QByteArray savedHome = qgetenv("HOME");
        const QByteArray savedConfig = qgetenv("XDG_CONFIG_HOME");
        qputenv("HOME", home.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home.filePath(u"config"_s).toLocal8Bit());
        {
            TZTRegistrySettings store(cHKEY_CURRENT_USER, u"Software\\Brenmoor\\Orvane"_s);
            store.SetStringValue(u"Language"_s, QString(), language);
        }
        qputenv("HOME", savedHome);
        qputenv("XDG_CONFIG_HOME", savedConfig);
    }

    const TRun run = Run(m_prefix + u"/bin/orvane"_s, {}, env);
    QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
    QVERIFY2(run.out.contains(u"shown\n"_s), qPrintable(run.out + run.err));
    QVERIFY2(run.out.contains(u"actOptions=%1\n"_s.arg(optionsText)), qPrintable(run.out));
}

QTEST_GUILESS_MAIN(TInstallTest)
#include "tst_install.moc"
