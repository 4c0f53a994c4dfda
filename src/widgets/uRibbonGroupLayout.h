#pragma once

#include "uRibbonButton.h"

#include <QLayout>

#include <vector>

// The layout of a ribbon group's items: a large item takes a column of its own and the group's
// full height; medium and small items stack in columns of up to three rows, a column's width that
// of its widest item. A separator closes the column and leaves room for a line; a column break
// closes it without a line. Hidden items take no room. Honours right-to-left by mirroring.
class TRibbonGroupLayout : public QLayout
{
    Q_OBJECT
public:
    explicit TRibbonGroupLayout(QWidget* parent = nullptr);
    ~TRibbonGroupLayout() override;

    void addItemWidget(QWidget* widget, TRibbonItemSize size);
    void addSeparator();
    void addColumnBreak();
    // The x of each separator line after the last setGeometry, in the parent's coordinates.
    QList<int> separatorLines() const { return m_separatorLines; }

    // Rows per column of medium and small items (3).
    int rowsPerColumn() const { return m_rows; }
    void setRowsPerColumn(int rows);

    void addItem(QLayoutItem* item) override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    int count() const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    void invalidate() override;

private:
    enum class Kind
    {
        Large,
        Row,
        Separator,
        Break,
    };
    struct Entry
    {
        QLayoutItem* item = nullptr;
        Kind kind = Kind::Row;
    };
    struct Column
    {
        std::vector<int> entries;
        int width = 0;
        bool separator = false;
        bool large = false;
    };
    std::vector<Column> columns() const;
    int separatorWidth() const;
    int spacingWidth() const;

    std::vector<Entry> m_entries;
    QList<int> m_separatorLines;
    int m_rows = 3;
    mutable QSize m_cachedHint;
};
