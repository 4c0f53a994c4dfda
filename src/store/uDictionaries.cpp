#include "uDictionaries.h"

using namespace Qt::StringLiterals;

const std::array<TDictInfo, cDictCount>& DictTable()
{
    static const std::array<TDictInfo, cDictCount> table = {{
        {&TORVDicts::Purities, u"Dict.Purities", u"cbPurity", u"actEditPurity", u"Purities", u"Purity"},
        {&TORVDicts::Edges, u"Dict.Edges", u"cbEdge", u"actEditEdge", u"Edges", u"Edge"},
        {&TORVDicts::Conditions, u"Dict.Conditions", u"cbCondition", u"actEditCondition", u"Conditions",
         u"Condition"},
        {&TORVDicts::Statuses, u"Dict.Statuses", u"cbStatus", u"actEditStatus", u"Statuses", u"Status"},
        {&TORVDicts::Packagings, u"Dict.Packagings", u"cbPackaging", u"actEditPackaging", u"Packaging",
         u"Packaging"},
        {&TORVDicts::Locations, u"Dict.Locations", u"cbLocation", u"actEditLocation", u"Locations",
         u"Location"},
        {&TORVDicts::Owners, u"Dict.Owners", u"cbOwner", u"actEditOwner", u"Owners", u"Owner"},
        {&TORVDicts::Stores, u"Dict.Stores", u"cbStore", u"actEditStore", u"Stores", u"Store"},
        {&TORVDicts::Grades, u"Dict.Grades", u"cbGrade", u"actEditGrade", u"Grades", u"Grade"},
        {&TORVDicts::GradeServices, u"Dict.GradeServices", u"cbGradeService", u"actEditGradeService",
         u"Grade services", u"GradeService"},
    }};
    return table;
}

const TDictInfo* FindDict(const QString& name)
{
    for (const TDictInfo& info : DictTable()) {
        if (name == info.comboEditor() || name == info.editAction() || name == info.settingsKey() ||
            name == info.itemField()) {
            return &info;
        }
    }
    return nullptr;
}

TDict& DictOf(TORVDicts& dicts, const TDictInfo& info)
{
    return dicts.*(info.Field);
}

const TDict& DictOf(const TORVDicts& dicts, const TDictInfo& info)
{
    return dicts.*(info.Field);
}

QStringList DictLines(const QString& text)
{
    QStringList lines;
    QString line;
    const qsizetype length = text.size();
    for (qsizetype i = 0; i < length; ++i) {
        const QChar c = text.at(i);
        if (c == u'\r' || c == u'\n') {
            lines.append(line);
            line.clear();
            if (c == u'\r' && i + 1 < length && text.at(i + 1) == u'\n') {
                ++i;
            }
        } else {
            line.append(c);
        }
    }
    if (!line.isEmpty()) {
        lines.append(line);
    }
    return lines;
}

QString DictText(const QStringList& lines)
{
    QString text;
    for (const QString& line : lines) {
        text += line + u"\r\n"_s;
    }
    return text;
}

QString NormalizeDictText(const QString& text)
{
    return DictText(DictLines(text));
}
