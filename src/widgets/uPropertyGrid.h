#pragma once

#include <QTreeView>

class TEditorItem;
class TPropertyGridModel;
class TPropertyGridDelegate;

// A property grid: captions on the left, values on the right, one row per field of a source
// model's current row, grouped under category rows that are painted across the grid.
//
//   auto* grid = new TPropertyGrid(pane);
//   grid->setCaptionWidth(180);
//   grid->addCategory(u"General"_s, u"General information"_s);
//   grid->addRow(u"rowName"_s, u"Name"_s, u"Name"_s, &textItem, u"General"_s);
//   grid->addRow(u"rowMetal"_s, u"Metal"_s, u"Metal"_s, &metalList, u"General"_s);
//   grid->setSourceModel(model);      // field names from the header's field-name role
//   grid->setCurrentRow(row);         // the program says which row; the grid never moves it
//
// Each row shows and edits its value through a TEditorItem (not owned; it must outlive the grid).
// A click into a value opens the item's editor (a check box or a rating changes at once); only one
// editor is open at a time. A finished edit is written with setData(EditRole) to the source's
// current row; an entry the editor refuses, a source that refuses or throws, all keep the old
// value, emit editFailed and go to ReportEditorError. A row without a field keeps a value of its
// own (setRowValue) and reports edits through rowValueChanged only.
//
// Rows may be hidden, re-captioned, given another editor or made read-only at any time; a
// category shows only while one of its rows shows (categoryAutoHide). The grid follows the source:
// value changes of the current row repaint it, a removed current row empties it, and inserted or
// removed rows before it do not change which record it shows.
class TPropertyGrid : public QTreeView
{
    Q_OBJECT
public:
    // The header role under which the source names its fields.
    static constexpr int cDefaultFieldNameRole = Qt::UserRole + 3;
    // The role read for values; EditRole when the source gives nothing there.
    static constexpr int cDefaultValueRole = Qt::UserRole + 1;

    explicit TPropertyGrid(QWidget* parent = nullptr);
    ~TPropertyGrid() override;

    // Structure. Names are unique across categories and rows; a repeated name, or a category
    // that does not exist, fails (false).
    bool addCategory(const QString& name, const QString& caption);
    bool addRow(const QString& name, const QString& caption, const QString& fieldName,
                const TEditorItem* item, const QString& category = {});
    void clearRows();
    QStringList rowNames() const;
    bool hasRow(const QString& name) const;

    void setRowVisible(const QString& name, bool visible);
    bool isRowVisible(const QString& name) const;
    void setRowCaption(const QString& name, const QString& caption);
    QString rowCaption(const QString& name) const;
    void setRowEditor(const QString& name, const TEditorItem* item);
    const TEditorItem* rowEditor(const QString& name) const;
    void setRowReadOnly(const QString& name, bool readOnly);
    bool isRowReadOnly(const QString& name) const;
    void setRowField(const QString& name, const QString& fieldName);
    // Height of a row in text lines (0: what its editor item asks for, else one line).
    void setRowLines(const QString& name, int lines);
    // The value shown in a row. Setting it writes like an edit (to the source for a bound row)
    // but reports nothing; false when it was not written.
    QVariant rowValue(const QString& name) const;
    bool setRowValue(const QString& name, const QVariant& value);
    // The text a row shows.
    QString rowText(const QString& name) const;

    void setCategoryCaption(const QString& name, const QString& caption);
    void setCategoryVisible(const QString& name, bool visible);
    bool isCategoryShown(const QString& name) const;
    void setCategoryExpanded(const QString& name, bool expanded);
    bool categoryAutoHide() const;
    void setCategoryAutoHide(bool on);

    // The source and its current row.
    void setSourceModel(QAbstractItemModel* model);
    QAbstractItemModel* sourceModel() const;
    void setFieldNameRole(int role);
    void setValueRole(int role);
    // Writes an open editor first, to the row it was opened on.
    void setCurrentRow(int row);
    int currentRow() const;

    int captionWidth() const { return m_captionWidth; }
    void setCaptionWidth(int width);
    bool isReadOnly() const;
    void setReadOnly(bool readOnly);

    // Opens the editor of a row (false when the row cannot be edited).
    bool editRow(const QString& name);
    // Writes and closes the open editor, if any. False when its entry was refused.
    bool finishEditing();
    // The name of the row with the focus, or "".
    QString currentRowName() const;
    // The row at a point of the viewport, or "".
    QString rowAt(const QPoint& pos) const;
    // The rectangle of a row's value in viewport coordinates (empty while hidden).
    QRect valueRect(const QString& name) const;

    TPropertyGridModel* propertyModel() const { return m_model; }

signals:
    // A value was written by the user or by setRowValue.
    void rowValueChanged(const QString& name, const QVariant& value);
    // An edit of the user was refused; the old value stays.
    void editFailed(const QString& name, const QString& message);
    void rowDoubleClicked(const QString& name);
    void currentRowChanged(int row);

protected:
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    friend class TPropertyGridDelegate;
    void applyVisibility();
    void applyCaptionWidth();
    int dividerX() const;
    void reportFailure(const QString& name, const QString& message);
    QWidget* openEditor() const;

    TPropertyGridModel* m_model;
    TPropertyGridDelegate* m_delegate;
    int m_captionWidth = 180;
    bool m_resizing = false;
};
