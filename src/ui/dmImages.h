#pragma once

#include "frmEditSimpleDictionary.h"
#include "uDictionaries.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPixmap>
#include <QPointer>
#include <QStringList>

#include <array>
#include <map>
#include <memory>

class QAbstractItemModel;
class TEditorItem;
class QAction;
class QComboBox;
class QWidget;

// The shared pictures and the edit repository: one place that defines how a field is edited, so
// the views, the details pane and the item editor all make the same editor for it.
//
// Created once at start-up, after the settings are loaded. Its edit commands (actEditPurity ..
// actEditGradeService, actEditMints) belong to it. The ten dictionary combos (cbPurity ..
// cbGradeService) take their lists from ORVDicts and carry a button that runs their edit command;
// after a dictionary is edited every combo made here shows the new list, open ones included.
class TDataModuleImages : public QObject
{
    Q_OBJECT

public:
    // Shows the splash line cSSplashLoadingImages, binds the dictionaries and installs the
    // dictionary dialog. Only one may exist at a time.
    explicit TDataModuleImages(QObject* parent = nullptr);
    ~TDataModuleImages() override;

    // The names of the repository items CreateEditor knows.
    QStringList RepositoryItems() const;

    // The shared editor items, one per name of RepositoryItemDefs() (seWeightG, lcbMints,
    // ImageComboBoxItemCountries, RatingControl, cbPurity, ...), owned here and alive as long as
    // this module: grid columns, card rows and property rows take them as they are. nullptr for an
    // unknown name.
    TEditorItem* Item(const QString& name) const;
    // The item that shows and edits a field, by its column name (Metal, WeightGram, Custom3, ...:
    // FieldEditorName); nullptr for a field without one.
    TEditorItem* FieldItem(const QString& fieldName) const;
    // A new editor widget for a field, owned by parent, made by its item (so the item's
    // setEditorValue / editorValue / onValueChosen work on it); objectName is the field name.
    // nullptr for a field without an editor or a display-only one.
    QWidget* CreateFieldEditor(const QString& fieldName, QWidget* parent) const;
    // Whether a change in an item's editor goes to the record at once (lcbMints, seWeightG, ...).
    static bool PostsAtOnce(const QString& itemName);

    // The language step of the repository: list texts of metals and coin types, the check lists'
    // texts and empty texts, display and edit formats, null texts, the picture control's texts.
    void TranslateRepository();

    // A new editor widget for a repository item, owned by parent; nullptr for an unknown name.
    //   cbPurity .. cbGradeService  editable QComboBox offering the dictionary's lines, typed text
    //                               kept as it is (never added to the list), with the edit button
    //                               of its dictionary at the trailing end of the text box
    //   lcbMints                    editable QComboBox over the mints model (SetMintsModel), names
    //                               completed as typed, with the button of actEditMints
    //   repCustomTextEdit           QLineEdit
    //   repCustomNumberEdit         QSpinBox
    //   repCustomFloatEdit          QDoubleSpinBox, step 0.1
    //   edUsersCurrency             QDoubleSpinBox in the user's currency, left-aligned
    //   cbNotNull                   QCheckBox (null reads as unchecked)
    //   cbCustomFields              QComboBox of the custom field data types, item data = code
    //   any other item of Item()    the item's own editor (nullptr for read-only items)
    // Every editor's objectName is the item's name.
    QWidget* CreateEditor(const QString& name, QWidget* parent) const;

    // The current list of a dictionary combo (cbPurity ..); empty for another name.
    QStringList ComboItems(const QString& comboEditor) const;

    // The edit command of a name (actEditPurity .. actEditGradeService, actEditMints).
    QAction* Action(const QString& actionName) const;
    QAction* actEditMints() const { return m_actEditMints; }

    // Sets every dictionary combo's list from ORVDicts (at creation, and after the settings were
    // read again); the combos made so far follow.
    void BindDictionaries();

    // The source of lcbMints: the rows of model, names shown from nameColumn, the key (ID) read
    // from keyColumn (-1: the column whose header names the field ID, else 0). Combos made before
    // follow the new model.
    void SetMintsModel(QAbstractItemModel* model, int nameColumn, int keyColumn = -1);

    // The blank picture for an item without a photograph (see BlankPictureName), decoded once.
    QPixmap BlankPicture(int metal, int coinType, bool isObverse) const;

    // Adds an edit button that runs action to an editable combo, at the trailing end of its text
    // box beside the drop-down button; the combo's first free button is re-used.
    static void AttachEditButton(QComboBox* combo, QAction* action);

signals:
    // A dictionary's list changed through its edit command.
    void DictionaryChanged(const QString& comboEditor);

private:
    void CreateRepositoryItems();
    void EditDictionaryAt(int index);
    void RefreshCombos(int index);

    std::array<QStringList, cDictCount> m_items;
    std::array<QAction*, cDictCount> m_actions{};
    QAction* m_actEditMints;
    mutable std::array<QList<QPointer<QComboBox>>, cDictCount> m_combos;
    mutable QList<QPointer<QComboBox>> m_mintCombos;
    QPointer<QAbstractItemModel> m_mintsModel;
    int m_mintsNameColumn = 0;
    mutable QHash<QString, QPixmap> m_blankPictures;
    std::map<QString, std::unique_ptr<TEditorItem>> m_repository;
    TWidgetEditDictionaryDialogRunner m_dialogRunner;
    TEditDictionaryDialogRunner* m_previousRunner = nullptr;
};

// The one instance; nullptr before it is created and after it is gone.
TDataModuleImages* DataModuleImages();
