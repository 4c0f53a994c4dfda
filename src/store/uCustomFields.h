#pragma once

#include "uZTSettings.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

// Custom fields: the ten spare columns Custom1 .. Custom10 of tblCoins, named and typed by the
// user's settings (ORVCustomFields, CustomFieldsEnabled). Definition n (CustomField<n>.*) describes
// the column Custom<n+1>.
//
// Stored form of the values. The columns have no affinity and the item dataset reads them as text,
// so every value is written as text, one form for each data type, independent of the user's locale:
//
//   0 Text      the text as typed, unchanged.
//   1 Number    a whole number in decimal digits in the "C" locale: "-42". No group separators,
//               no exponent, no fraction.
//   2 Float     the "C" locale with '.' as the decimal point, in the shortest form that reads back
//               to the same double: "0.1", "31.1035", "1e+21". Not finite values are not stored.
//   3 Currency  a float as in 2; the currency symbol and grouping are shown by the editor only.
//   4 Boolean   "1" for checked, "0" for unchecked; null (no text) reads as unchecked.
//
// CustomValueToText gives that form for an editor's value, CustomValueFromText reads it back. Text
// that is not in the form of its type (say old text left after a change from text to number) reads
// as an invalid QVariant: it stays in the column as it is and shows as it is, and the typed editor
// refuses it only when the user edits it. Leading and trailing blanks are allowed when reading.

enum TCustomFieldDataType : int
{
    cftText = 0,
    cftNumber = 1,
    cftFloat = 2,
    cftCurrency = 3,
    cftBoolean = 4
};

// "Custom1" .. "Custom10" for n = 0 .. 9.
QString CustomFieldColumn(int n);
// The definition index of a column name "Custom1" .. "Custom10"; -1 for any other name.
int CustomFieldIndex(const QString& column);

// The editor rule of a data type: repCustomTextEdit, repCustomNumberEdit, repCustomFloatEdit,
// edUsersCurrency, cbNotNull; an empty text (no editor rule) for any other code.
QString CustomFieldEditor(int dataType);

// The English texts of the data types, codes 0 .. 4, as the cbCustomFields editor lists them.
QStringList CustomFieldDataTypeTexts();

// The stored text of an editor's value for a data type, in the form above. A null or invalid value
// gives a null text (the column becomes NULL), and so does a value that does not convert to the
// type (a float that is not finite, a text that is no number for a number type). For an unknown
// data type the value's own text is stored.
QString CustomValueToText(const QVariant& value, int dataType);

// The value of a stored text for a data type: QString for text (and unknown types), qlonglong for
// a number, double for a float or currency, bool for a boolean. A null text gives an invalid
// QVariant for every type; for the typed ones so do an empty or blank text and a text that does
// not parse in the form of its type.
QVariant CustomValueFromText(const QString& text, int dataType);

// The rows of one vertical grid that shows the custom fields: the main window's details panel or
// the item editor's custom-field grid. Rows are found by their field name, Custom1 .. Custom10.
class TCustomFieldRows
{
public:
    virtual ~TCustomFieldRows() = default;

    // Hold back and resume the grid's updates around a change.
    virtual void BeginUpdate() {}
    virtual void EndUpdate() {}

    virtual bool HasRow(const QString& fieldName) const = 0;
    virtual void SetRowVisible(const QString& fieldName, bool visible) = 0;
    virtual void SetRowCaption(const QString& fieldName, const QString& caption) = 0;
    // editor is the name of an edit repository item; empty for none.
    virtual void SetRowEditor(const QString& fieldName, const QString& editor) = 0;
    // The category row of the details panel, or the editor's tab.
    virtual void SetGroupVisible(bool visible) = 0;
};

// The columns of one view over the items, found by their field name.
class TCustomFieldColumns
{
public:
    virtual ~TCustomFieldColumns() = default;

    virtual void BeginUpdate() {}
    virtual void EndUpdate() {}

    virtual bool HasColumn(const QString& fieldName) const = 0;
    virtual void SetColumnCaption(const QString& fieldName, const QString& caption) = 0;
    // Whether the column chooser offers the column. The column's own visibility is the user's.
    virtual void SetColumnOffered(const QString& fieldName, bool offered) = 0;
    virtual void SetColumnEditor(const QString& fieldName, const QString& editor) = 0;
};

// The main window's rule. For each definition n whose row Custom<n+1> exists: visible :=
// enabled && Enabled, caption := DisplayName, editor by DataType. In each view, the column of that
// field if it exists: caption, offered := enabled && Enabled, editor; its visibility stays. The
// category row is visible iff enabled and at least one custom row is visible. Updates are held
// back on the details and on every view while this runs.
void ApplyCustomFields(TCustomFieldRows& details, const QList<TCustomFieldColumns*>& views,
                       bool enabled = CustomFieldsEnabled, const TORVCustomFields& fields = ORVCustomFields);

// The item editor's rule, on opening. Each existing row: visible := Enabled (the master switch
// does not enter), caption and editor as above. The tab is visible iff enabled and at least one
// row is visible.
void ApplyCustomFieldsToEditor(TCustomFieldRows& grid, bool enabled = CustomFieldsEnabled,
                               const TORVCustomFields& fields = ORVCustomFields);
