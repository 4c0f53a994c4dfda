// The built-in blank collection file, checked from the outside with the sqlite3 command line.

#include "support_datarow.h"
#include "uTemplate.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

class TestTemplate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QProcess probe;
        probe.start("sqlite3", {"-version"});
        if (!probe.waitForFinished(10000))
            QSKIP("the sqlite3 command line tool is not installed");

        m_bytes = NewBlankDatabaseBytes();
        QVERIFY(m_bytes.size() > 100 * 1024);
        m_file = m_dir.filePath("blank.db");
        QFile out(m_file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QCOMPARE(out.write(m_bytes), m_bytes.size());
        out.close();
        const QJsonArray check = query("PRAGMA integrity_check");
        QCOMPARE(check.size(), 1);
        QCOMPARE(check.at(0)["integrity_check"].toString(), QString("ok"));
        // The page count in the header matches the size of the file.
        QCOMPARE(qint64(qFromBigEndian<quint32>(m_bytes.constData() + 28)) * 4096, qint64(m_bytes.size()));
    }
    void pragmas_data()
    {
        QTest::addColumn<QString>("pragma");
        QTest::addColumn<QString>("expected");
        AddRow("page_size", "page_size", "4096");
        AddRow("journal_mode", "journal_mode", "delete");
        AddRow("encoding", "encoding", "UTF-8");
        AddRow("user_version", "user_version", "0");
        AddRow("application_id", "application_id", "0");
        AddRow("auto_vacuum", "auto_vacuum", "0");
        AddRow("freelist_count", "freelist_count", "0");
    }
    void pragmas()
    {
        QFETCH(QString, pragma);
        QFETCH(QString, expected);
        const QJsonArray rows = query("PRAGMA " + pragma);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.at(0)[pragma].toVariant().toString(), expected);
    }
    // Every CREATE statement stored in the file is the text of the DDL source, in the same order.
    void schemaMatchesSource()
    {
        QFile source(qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/template/schema.sql");
        QVERIFY2(source.open(QIODevice::ReadOnly), "ORV_SOURCE_DIR/data/template/schema.sql not found");
        QStringList expected;
        for (QString statement : QString::fromUtf8(source.readAll()).split(';')) {
            // Drop the comment lines in front of a statement; SQLite keeps only the statement itself.
            statement.remove(QRegularExpression("^\\s*(--[^\\n]*\\n\\s*)*"));
            statement = statement.trimmed();
            if (!statement.isEmpty())
                expected << statement;
        }
        QCOMPARE(expected.size(), 4);

        QStringList stored;
        QStringList names;
        for (const QJsonValue row :
             query("SELECT name, sql FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' ORDER BY rowid")) {
            names << row["name"].toString();
            stored << row["sql"].toString();
        }
        QCOMPARE(names, QStringList({"tblCoins", "tblMints", "tblVer", "vCoinsStats"}));
        QCOMPARE(stored, expected);
        // Nothing else: no index, no trigger beyond what the DDL makes (the UNIQUE index of tblCoins.ID).
        const QJsonArray others =
            query("SELECT type, name FROM sqlite_master WHERE type IN ('index', 'trigger')");
        QCOMPARE(others.size(), 1);
        QCOMPARE(others.at(0)["name"].toString(), QString("sqlite_autoindex_tblCoins_1"));
    }
    void contentsAndSequences()
    {
        const auto text = [this](const char* sql) {
            QStringList rows;
            for (const QJsonValue row : query(sql))
                rows << row["v"].toVariant().toString();
            return rows.join('|');
        };
        QCOMPARE(text("SELECT COUNT(*) AS v FROM tblCoins"), "0");
        QCOMPARE(text("SELECT COUNT(DISTINCT ID) || ',' || MIN(ID) || ',' || MAX(ID) AS v FROM tblMints"),
                 "67,1,67");
        QCOMPARE(text("SELECT Version || ':' || typeof(Version) AS v FROM tblVer"), "101:text");
        QCOMPARE(text("SELECT name || '=' || seq AS v FROM sqlite_sequence ORDER BY name"),
                 "tblCoins=264|tblMints=67");
    }

    // The file carries exactly the rows of the readable source, text for text.
    void mintsMatchSource()
    {
        QFile source(qEnvironmentVariable("ORV_SOURCE_DIR") + "/data/template/mints.tsv");
        QVERIFY(source.open(QIODevice::ReadOnly));
        QStringList lines = QString::fromUtf8(source.readAll()).split('\n', Qt::SkipEmptyParts);
        lines.removeFirst();
        const QJsonArray rows =
            query("SELECT ID, Name, Country, IsPrivate, URL, Description FROM tblMints ORDER BY ID");
        QCOMPARE(rows.size(), lines.size());
        for (int i = 0; i < rows.size(); ++i) {
            const QStringList cells = lines.at(i).split('\t');
            const QJsonValue row = rows.at(i);
            QCOMPARE(QString::number(row["ID"].toInt()), cells.at(0));
            QCOMPARE(row["Name"].toString(), cells.at(1));
            QCOMPARE(row["Country"].toString(), cells.at(2));
            QCOMPARE(row["IsPrivate"].isNull() ? QString() : QString::number(row["IsPrivate"].toInt()),
                     cells.at(3));
            QCOMPARE(row["URL"].toString(), cells.at(4));
            QCOMPARE(row["Description"].toString(), cells.at(5));
            QVERIFY(cells.at(4).startsWith("http") && !cells.at(5).isEmpty());
        }
    }
    void logos()
    {
        const QJsonArray missing = query("SELECT ID FROM tblMints WHERE Logo IS NULL ORDER BY ID");
        QList<int> ids;
        for (const QJsonValue row : missing)
            ids << row["ID"].toInt();
        QCOMPARE(ids, QList<int>({35, 44, 58, 60, 65}));

        const QJsonArray logos = query("SELECT ID, hex(Logo) AS png FROM tblMints WHERE Logo IS NOT NULL");
        QCOMPARE(logos.size(), 62);
        for (const QJsonValue row : logos) {
            const QImage logo =
                QImage::fromData(QByteArray::fromHex(row["png"].toString().toLatin1()), "PNG");
            QVERIFY2(!logo.isNull(), qPrintable(QString("logo of mint %1").arg(row["ID"].toInt())));
            QCOMPARE(logo.size(), QSize(200, 200));
            QVERIFY(logo.hasAlphaChannel());
            // Transparent outside the badge, opaque in the middle.
            QCOMPARE(qAlpha(logo.pixel(0, 0)), 0);
            QCOMPARE(qAlpha(logo.pixel(100, 100)), 255);
        }
    }
    // Numbering goes on from the template's start values, although tblCoins is empty.
    void firstNumbersAfterInsert()
    {
        const QString copy = m_dir.filePath("insert.db");
        QVERIFY(QFile::copy(m_file, copy));
        const QJsonArray item = query("INSERT INTO tblCoins (Name, Metal, WeightG, PurchaseDate, Qty) "
                                      "VALUES ('Test', 1, 31.1035, '2024-03-05', 2) RETURNING ID",
                                      copy);
        QCOMPARE(item.size(), 1);
        QCOMPARE(item.at(0)["ID"].toInt(), 265);
        const QJsonArray mint = query("INSERT INTO tblMints (Name) VALUES ('New mint') RETURNING ID", copy);
        QCOMPARE(mint.size(), 1);
        QCOMPARE(mint.at(0)["ID"].toInt(), 68);

        // The defaults of the table and the columns of the view.
        const QJsonArray stats = query(
            "SELECT CoinType, MintMark, WeightOZ, PurchaseYear, PurchaseYearMonth FROM vCoinsStats", copy);
        QCOMPARE(stats.size(), 1);
        QCOMPARE(stats.at(0)["CoinType"].toInt(), 0);
        QCOMPARE(stats.at(0)["MintMark"].toInt(), 0);
        QCOMPARE(stats.at(0)["WeightOZ"].toDouble(), 1.0);
        QCOMPARE(stats.at(0)["PurchaseYear"].toString(), QString("2024"));
        QCOMPARE(stats.at(0)["PurchaseYearMonth"].toString(), QString("2024-03"));

        // Required columns have no defaults: a row without a name or a weight is refused.
        QProcess proc;
        proc.start("sqlite3", {copy, "INSERT INTO tblCoins (Metal, WeightG) VALUES (0, 1.0)"});
        QVERIFY(proc.waitForFinished(30000));
        QVERIFY(proc.exitCode() != 0);
        QVERIFY(proc.readAllStandardError().contains("NOT NULL"));
    }
    void freshCopyEachCall()
    {
        QByteArray first = NewBlankDatabaseBytes();
        first[100] = char(first[100] ^ 0xFF);
        QCOMPARE(NewBlankDatabaseBytes(), m_bytes);
    }

private:
    QJsonArray query(const QString& sql, const QString& file = {})
    {
        QProcess proc;
        proc.start("sqlite3", {"-json", file.isEmpty() ? m_file : file, sql});
        if (!proc.waitForFinished(30000) || proc.exitCode() != 0) {
            qWarning() << proc.readAllStandardError();
            return {};
        }
        const QByteArray out = proc.readAllStandardOutput().trimmed();
        if (out.isEmpty())
            return {};
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(out, &error);
        if (error.error != QJsonParseError::NoError)
            qWarning() << "sqlite3 output is no JSON:" << error.errorString();
        return doc.array();
    }
    QString m_file;
    QByteArray m_bytes;
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestTemplate)
#include "tst_template.moc"
