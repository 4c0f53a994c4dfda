#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <QVector>

// Generated rows in the shape of a collection list: texts, numbers with nulls, dates and a
// thumbnail column whose value is PNG bytes. Roles follow the program's dataset model:
// DisplayRole a text, EditRole and ValueRole the typed value, KeyRole the row's key, and the
// header gives captions and, under FieldNameRole, field names.
class TGalleryData : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role
    {
        ValueRole = Qt::UserRole + 1,
        KeyRole,
        FieldNameRole
    };

    explicit TGalleryData(int rows, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    int columnOf(const QString& fieldName) const;

private:
    struct Row
    {
        int id = 0;
        QString name;
        int metal = 0;
        int coinType = 0;
        int year = 0;
        double weightG = 0;
        double price = 0;
        bool priceNull = false;
        int qty = 1;
        QString country;
        QString series;
        int mint = 0;
        int picture = 0;
    };
    QVariant value(const Row& row, int column) const;
    static QByteArray pictureBytes(int picture);

    QVector<Row> m_rows;
};
