#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <limits>

// The edit repository as data: every shared editor definition with its kind, formats, null text and
// steps, and which of them edits each field of the collection. The widgets that make the editors
// (TDataModuleImages) read these tables; nothing here knows a widget.

enum class TRepositoryItemKind
{
    Picture,     // encoded image bytes, shown to fit
    PictureEdit, // the same with the picture control and its menu
    List,        // one value of a fixed list of (value, text, picture)
    CheckList,   // several entries checked at once, stored as a state string
    Lookup,      // a key of a model row (the mints)
    Combo,       // free text offering the lines of a dictionary, with an edit button
    Integer,     // whole number spin
    Float,       // floating spin, money, percent
    Rating,      // stars
    Check,       // check box
    Text,        // single-line text
    Memo,        // text over lines
    HyperLink,   // a link that can be edited
    Label,       // a read-only caption
    Date         // a date without time
};

struct TRepositoryItemDef
{
    QString Name;
    TRepositoryItemKind Kind = TRepositoryItemKind::Text;
    // The display format: the language key that holds it (cSFmtMM), or the format itself when it
    // is no language text; empty for none.
    QString FormatKey;
    QString Format;
    bool FormatWhileEditing = false; // the display format applies inside the editor as well
    QString NullTextKey;             // language key of the text shown for null (cSNA)
    double Step = 1.0;
    double LargeStep = 10.0;
    double Minimum = std::numeric_limits<double>::lowest();
    double Maximum = std::numeric_limits<double>::max();
    bool AlignLeft = true;
    bool PostsAtOnce = false; // a change goes to the record at once
    bool ReadOnly = false;
    bool HasMenu = false; // pictures: cut, copy, paste, delete, load, save, show full size
    bool UsersCurrency = false;
};

// Every repository item, in the order of its table.
const QList<TRepositoryItemDef>& RepositoryItemDefs();
// The definition of name, or nullptr.
const TRepositoryItemDef* FindRepositoryItem(const QString& name);

// One field of tblCoins, of the item dataset or of tblMints and the repository item that shows and
// edits it everywhere; ReadOnly for fields that are shown only (WeightG, computed fields).
struct TFieldEditorDef
{
    QString Field;
    QString Item;
    bool ReadOnly = false;
};

const QList<TFieldEditorDef>& FieldEditorDefs();
// The repository item of a field (the name as the database spells it, without regard to case);
// Custom1 .. Custom10 by the data type of their definition in the settings; an empty text for a
// field without one (ID).
QString FieldEditorName(const QString& fieldName);
// Whether the field is shown only.
bool FieldIsDisplayOnly(const QString& fieldName);

// The texts of the multi-check list of weights, fixed.
QStringList WeightCheckListTexts();
// The metal short forms of ccbMetals before the language replaces them.
QStringList MetalShortTexts();
