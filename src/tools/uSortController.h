#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class TGridColumn;
class TGridColumns;

// The sort dialog's logic: a multi-level sort order of a grid view as a list of levels, each naming a
// column by its caption and a direction by its text, read from a view and written back to one or
// several views.

// One column of a view as the sort dialog sees it.
struct TSortViewColumn
{
    QString Caption;
    bool Visible = true;
    bool Picture = false; // shown through a picture editor: no sort order
};

// What the dialog needs of a view. Columns are numbered in the view's column order.
class TSortableView
{
public:
    virtual ~TSortableView() = default;
    virtual int ColumnCount() const = 0;
    virtual TSortViewColumn Column(int column) const = 0;
    // The sorted columns by priority, with their direction.
    struct TSortedColumn
    {
        int Column = -1;
        bool Descending = false;
    };
    virtual QList<TSortedColumn> SortedColumns() const = 0;
    // Changes of the sort between these are applied once; EndSortUpdate also runs on failure.
    virtual void BeginSortUpdate() = 0;
    virtual void EndSortUpdate() = 0;
    virtual void ClearSort() = 0;
    virtual void SetColumnSort(int column, int sortIndex, bool descending) = 0;
};

// The toolkit's column set as a sortable view. Captions and pictures are asked of the functions when
// given (a view's shown caption, its editor's picture flag), else read from the columns.
class TGridColumnsSortView : public TSortableView
{
public:
    using TCaptionFunction = std::function<QString(const TGridColumn*)>;
    using TPictureFunction = std::function<bool(const TGridColumn*)>;

    explicit TGridColumnsSortView(TGridColumns& columns, TCaptionFunction caption = {},
                                  TPictureFunction picture = {});

    int ColumnCount() const override;
    TSortViewColumn Column(int column) const override;
    QList<TSortedColumn> SortedColumns() const override;
    void BeginSortUpdate() override;
    void EndSortUpdate() override;
    void ClearSort() override;
    void SetColumnSort(int column, int sortIndex, bool descending) override;

private:
    TGridColumns& m_columns;
    QList<TGridColumn*> m_ordered;
    TCaptionFunction m_caption;
    TPictureFunction m_picture;
};

// A level of the list TLSort.
struct TSortLevel
{
    QString Column; // TLSortColumn: a column's caption
    QString Order;  // TLSortOrder: the text of cSSortDlgAsc or cSSortDlgDesc
    friend bool operator==(const TSortLevel&, const TSortLevel&) = default;
};

// The commands of the dialog.
struct TSortCommandDef
{
    QString Name;        // actAddLevel ...
    QString TextKey;     // caption, or the hint for the move commands
    QString DefaultText; // English
    QString Shortcut;    // portable key sequence text
};
const QList<TSortCommandDef>& SortCommands();

class TSortController : public QObject
{
    Q_OBJECT

public:
    explicit TSortController(QObject* parent = nullptr);

    // The texts of TLSortColumn's list (captions) and of TLSortOrder's ("Ascending", "Descending").
    QStringList ColumnList() const { return m_columnList; }
    QStringList OrderList() const;
    const QList<TSortLevel>& Levels() const { return m_levels; }

    // Fills the list of columns and the levels from a view's current sort.
    void LoadFromView(const TSortableView& view);
    // Writes the levels to a view: its sort cleared, then each level's first column of that caption
    // at the level's position; a level whose column the view lacks is skipped and its position kept.
    void ApplySort(TSortableView& view) const;

    // The focused level (-1 for none) and the selected ones.
    int Focused() const { return m_focused; }
    QList<int> Selected() const { return m_selected; }
    void SetFocused(int level);
    void SetSelected(const QList<int>& levels);

    void SetLevelColumn(int level, const QString& caption);
    void SetLevelOrder(int level, const QString& order);

    // The commands and their enablement.
    void AddLevel();
    void DeleteLevels();
    void MoveUp();
    void MoveDown();
    bool CanDeleteLevels() const { return !m_selected.isEmpty(); }
    bool CanMoveUp() const { return m_focused > 0 && m_focused < m_levels.size(); }
    bool CanMoveDown() const { return m_focused >= 0 && m_focused < m_levels.size() - 1; }
    bool CommandEnabled(const QString& name) const;

    // The check at OK: no column named twice. A refusal shows cSSortDlgDuplicateColumns as a warning
    // and changes nothing.
    bool CheckLevels() const;

signals:
    // The levels, the focus or the selection changed.
    void LevelsChanged();

private:
    void SetLevels(const QList<TSortLevel>& levels, int focused);

    QStringList m_columnList;
    QList<TSortLevel> m_levels;
    int m_focused = -1;
    QList<int> m_selected;
};
