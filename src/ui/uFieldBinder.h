#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

class QLabel;
class QWidget;
class TDBDataset;
class TEditorItem;

// Binds editor widgets to the fields of a dataset's current record: each editor shows its field,
// and a finished entry (leaving the box, Enter, a pick from a list, the clear key) goes into the
// field at once, putting the dataset into edit state first. Nothing is posted here. An entry the
// editor item refuses is reported (ReportEditorError) and the field keeps its value.
//
// The editors are made by editor items and shown and read through them, so a field looks as it does
// in the views. Labels bound with an editor take their field's display label on TranslateLabels().
class TFieldBinder : public QObject
{
    Q_OBJECT

public:
    explicit TFieldBinder(TDBDataset& dataset, QObject* parent = nullptr);

    TDBDataset& Dataset() const { return m_dataset; }

    // Makes the editor of item (owned by parent) for a field and binds it. nullptr for an item that
    // makes no editor.
    QWidget* Bind(const TEditorItem* item, const QString& fieldName, QWidget* parent,
                  QLabel* label = nullptr);
    // Binds an editor made elsewhere.
    void BindEditor(QWidget* editor, const TEditorItem* item, const QString& fieldName,
                    QLabel* label = nullptr);

    QWidget* Editor(const QString& fieldName) const;
    QLabel* Label(const QString& fieldName) const;
    QStringList FieldNames() const;

    // Shows the current record in every editor.
    void Load();
    // Writes a pending entry of every editor into its field (before a post or a move).
    void CommitAll();
    // Writes one editor's entry into its field. False when the entry was refused.
    bool Commit(QWidget* editor);
    // Each bound label := its field's display label.
    void TranslateLabels();

signals:
    // A field took a new value from its editor.
    void FieldEdited(const QString& fieldName, const QVariant& value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct TBinding
    {
        QPointer<QWidget> Editor;
        const TEditorItem* Item = nullptr;
        QString FieldName;
        QPointer<QLabel> Label;
    };
    const TBinding* BindingOf(const QObject* object) const;
    void Show(const TBinding& binding);
    bool Write(const TBinding& binding, bool focusMoving = false);

    TDBDataset& m_dataset;
    QList<TBinding> m_bindings;
    bool m_loading = false;
};
