#pragma once

// Shared by the widget tests of the ribbon, property grid, editor items and image slider.

#include "uWidgetTexts.h"

#include <QCoreApplication>
#include <QStandardItemModel>
#include <QStringList>

#include <stdexcept>

// Collects every refusal an editor reports instead of showing a box; restores the previous
// handler when it goes.
class TEditorErrorRecorder
{
public:
    TEditorErrorRecorder()
    {
        m_previous = SetEditorErrorHandler([this](QWidget*, const QString& message) { Messages << message; });
    }
    ~TEditorErrorRecorder() { SetEditorErrorHandler(m_previous); }
    // Reports made "later" arrive on the next turn of the event loop.
    QStringList settled()
    {
        QCoreApplication::processEvents();
        return Messages;
    }
    QStringList Messages;

private:
    TEditorErrorHandler m_previous;
};

// A table of named fields as the program's dataset model offers them: the header names each
// column under FieldNameRole (Qt::UserRole + 3). Counts writes; can be told to refuse or to throw.
class TFieldModel : public QStandardItemModel
{
public:
    static constexpr int FieldNameRole = Qt::UserRole + 3;

    TFieldModel(const QStringList& fields, int rows)
    {
        setColumnCount(int(fields.size()));
        setRowCount(rows);
        for (int c = 0; c < fields.size(); ++c) {
            setHeaderData(c, Qt::Horizontal, fields[c], Qt::DisplayRole);
            setHeaderData(c, Qt::Horizontal, fields[c], FieldNameRole);
        }
    }
    int column(const QString& field) const
    {
        for (int c = 0; c < columnCount(); ++c)
            if (headerData(c, Qt::Horizontal, FieldNameRole).toString() == field)
                return c;
        return -1;
    }
    QVariant valueAt(int row, const QString& field) const
    {
        return index(row, column(field)).data(Qt::EditRole);
    }
    void setValueAt(int row, const QString& field, const QVariant& value)
    {
        QStandardItemModel::setData(index(row, column(field)), value, Qt::EditRole);
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override
    {
        ++Writes;
        if (ThrowText.size())
            throw std::runtime_error(ThrowText.toStdString());
        if (Refuse)
            return false;
        return QStandardItemModel::setData(index, value, role);
    }

    int Writes = 0;
    bool Refuse = false;
    QString ThrowText;
};
