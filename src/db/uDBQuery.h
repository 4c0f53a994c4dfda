#pragma once

#include "uDBConnection.h"
#include "uDBField.h"
#include "uDBRow.h"
#include "uDBStatement.h"

#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>
#include <vector>

// A statement composed as text, run on a connection: execSQL() for statements that change data,
// open() + next() for reading a SELECT forward, one row at a time, through fields:
//
//   TDBQuery q(connection);
//   q.setSQL(u"SELECT Metal, SUM(WeightG * Qty) AS TotalWeightG::REAL FROM tblCoins GROUP BY Metal"_s);
//   q.open();
//   for (; !q.eof(); q.next())
//       total[q.fieldByName(u"Metal"_s).asInteger()] = q.fieldByName(u"TotalWeightG"_s).asFloat();
//
// Text values go in as bound parameters (":Name" or "?"); numbers and ID lists may be literals.
// A column alias "Name::REAL" gives field Name the type of the hint (REAL, VARCHAR, BIGINT, ...).
// While a query is open it holds a read on the file: close it (or read to eof) when done.
class TDBQuery : public QObject, public TDBFieldOwner, public TDBConnectionClient
{
    Q_OBJECT
public:
    explicit TDBQuery(TDBConnection* connection = nullptr, QObject* parent = nullptr);
    ~TDBQuery() override;

    void setConnection(TDBConnection* connection);
    TDBConnection* connection() const { return m_connection; }
    void setSQL(const QString& sql);
    QString sql() const { return m_sql; }

    void bindValue(const QString& name, const QVariant& value);
    void addBindValue(const QVariant& value);
    void clearBindings();

    // Runs every statement of the text; returns the rows changed by the last one.
    int execSQL();
    // Runs a SELECT and stands on its first row (eof() at once when there is none).
    void open();
    void close();
    bool active() const { return !m_stmt.isNull(); }
    bool eof() const { return m_eof; }
    void next();
    int rowsAffected() const { return m_rowsAffected; }
    qint64 lastInsertId() const;

    int fieldCount() const { return int(m_fields.size()); }
    TDBField& field(int index) const { return *m_fields.at(std::size_t(index)); }
    TDBField* findField(const QString& name) const;
    TDBField& fieldByName(const QString& name) const;

    // TDBFieldOwner
    QVariant fieldValue(const TDBField& field) const override;
    void setFieldValue(TDBField& field, const QVariant& value) override;

    // TDBConnectionClient
    void connectionClosing() override;
    void connectionDestroyed() override;

private:
    void readRow();

    TDBConnection* m_connection = nullptr;
    QString m_sql;
    TDBBindings m_bindings;
    TDBStatement m_stmt;
    std::vector<std::unique_ptr<TDBField>> m_fields;
    TDBRowBuilder m_builder;
    TDBRowData m_row;
    bool m_eof = true;
    int m_rowsAffected = 0;
};
