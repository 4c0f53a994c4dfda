#pragma once

#include "uZTSettings.h"

#include <QString>
#include <QStringList>

#include <array>

// The simple dictionaries: ten suggestion lists that belong to the user, not to a collection.
// Each feeds the combo editor of one item field; the item keeps its text as typed, so editing a
// dictionary never touches an item.
//
// A dictionary text holds one entry per line, every line ended by CR LF, the last one too.

// One row of the dictionary table.
struct TDictInfo
{
    TDict TORVDicts::*Field;     // the list in TORVDicts
    const char16_t* SettingsKey; // Dict.Purities ...
    const char16_t* ComboEditor; // cbPurity ... (edit repository item)
    const char16_t* EditAction;  // actEditPurity ...
    const char16_t* DialogName;  // "Purities" ...: fixed English, not a language text
    const char16_t* ItemField;   // Purity ...: the column of tblCoins the combo edits

    QString settingsKey() const { return QString::fromUtf16(SettingsKey); }
    QString comboEditor() const { return QString::fromUtf16(ComboEditor); }
    QString editAction() const { return QString::fromUtf16(EditAction); }
    QString dialogName() const { return QString::fromUtf16(DialogName); }
    QString itemField() const { return QString::fromUtf16(ItemField); }
};

inline constexpr int cDictCount = 10;

// The ten dictionaries in their fixed order: Purities, Edges, Conditions, Statuses, Packagings,
// Locations, Owners, Stores, Grades, GradeServices.
const std::array<TDictInfo, cDictCount>& DictTable();

// The row whose combo editor, edit action, settings key or item field is name (exact case);
// nullptr when none is.
const TDictInfo* FindDict(const QString& name);

// The list of a row in dicts.
TDict& DictOf(TORVDicts& dicts, const TDictInfo& info);
const TDict& DictOf(const TORVDicts& dicts, const TDictInfo& info);

// The lines of a list text, as a combo offers them. CR LF, LF and CR all end a line; a line end at
// the very end opens no further entry, so "a\r\nb\r\n" gives two entries. Empty lines inside the
// text are entries of their own. An empty text gives no entries.
QStringList DictLines(const QString& text);

// The list text of lines: each line followed by CR LF, the last one too; no lines give "".
QString DictText(const QStringList& lines);

// Any list text with CR LF after every entry, whatever line ends it came with.
QString NormalizeDictText(const QString& text);
