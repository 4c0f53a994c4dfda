#include "uGridLayout.h"

#include "uGridColumns.h"

#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
QString encode(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "-_.~", " =%"));
}

QString decode(const QString& text)
{
    return QUrl::fromPercentEncoding(text.toLatin1());
}

QMap<QString, QString> pairs(const QStringList& tokens, qsizetype from)
{
    QMap<QString, QString> result;
    for (qsizetype i = from; i < tokens.size(); ++i) {
        const qsizetype eq = tokens[i].indexOf(u'=');
        if (eq > 0)
            result.insert(decode(tokens[i].left(eq)), decode(tokens[i].mid(eq + 1)));
    }
    return result;
}

int number(const QMap<QString, QString>& values, const QString& key, int fallback, bool* present = nullptr)
{
    bool ok = false;
    const int n = values.value(key).toInt(&ok);
    if (present)
        *present = ok;
    return ok ? n : fallback;
}
} // namespace

QString TGridLayout::save(const TGridColumns& columns, const QMap<QString, QString>& viewSettings)
{
    QStringList lines{u"orvgrid "_s + QString::number(Version)};
    if (!viewSettings.isEmpty()) {
        QStringList tokens{u"view"_s};
        for (auto it = viewSettings.constBegin(); it != viewSettings.constEnd(); ++it)
            tokens.append(encode(it.key()) + u'=' + encode(it.value()));
        lines.append(tokens.join(u' '));
    }
    for (const TGridColumn* column : columns.ordered()) {
        lines.append(QStringLiteral("col %1 v=%2 p=%3 w=%4 g=%5 s=%6 o=%7 l=%8")
                         .arg(encode(column->name()))
                         .arg(column->visible() ? 1 : 0)
                         .arg(column->position())
                         .arg(column->width())
                         .arg(column->groupIndex())
                         .arg(column->sortIndex())
                         .arg(int(column->sortOrder()))
                         .arg(column->lines()));
    }
    return lines.join(u'\n');
}

QMap<QString, QString> TGridLayout::restore(TGridColumns& columns, const QString& text, bool* ok)
{
    if (ok)
        *ok = false;
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    if (lines.isEmpty())
        return {};
    const QStringList head = lines.first().simplified().split(u' ');
    bool versionOk = false;
    const int version = head.value(1).toInt(&versionOk);
    if (head.value(0) != u"orvgrid"_s || !versionOk || version < 1)
        return {};

    QMap<QString, QString> settings;
    struct Entry
    {
        TGridColumn* Column;
        int Position;
        int Group;
        int Sort;
        int Order;
    };
    std::vector<Entry> entries;
    columns.beginUpdate();
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QStringList tokens = lines[i].simplified().split(u' ');
        if (tokens.value(0) == u"view"_s) {
            settings.insert(pairs(tokens, 1));
            continue;
        }
        if (tokens.value(0) != u"col"_s || tokens.size() < 2)
            continue;
        TGridColumn* column = columns.byName(decode(tokens[1]));
        if (!column)
            continue; // a column this view does not have
        const QMap<QString, QString> values = pairs(tokens, 2);
        bool has = false;
        const int visible = number(values, u"v"_s, column->visible() ? 1 : 0, &has);
        if (has)
            column->setVisible(visible != 0);
        const int width = number(values, u"w"_s, 0, &has);
        // A hidden column saved at no width keeps the width it has.
        if (has && width > 0)
            column->setWidth(std::clamp(width, MinWidth, MaxWidth));
        const int lineCount = number(values, u"l"_s, -1, &has);
        if (has && lineCount >= 0)
            column->setLines(std::min(lineCount, 100));
        const int order = number(values, u"o"_s, 0);
        entries.push_back({column, number(values, u"p"_s, 1 << 20), number(values, u"g"_s, -1),
                           number(values, u"s"_s, -1), order});
    }

    // Positions: the saved columns in their saved order first, the others after them as they are.
    std::vector<Entry> byPosition = entries;
    std::stable_sort(byPosition.begin(), byPosition.end(),
                     [](const Entry& a, const Entry& b) { return a.Position < b.Position; });
    for (std::size_t i = 0; i < byPosition.size(); ++i)
        byPosition[i].Column->setPosition(int(i));

    const auto orderOf = [](int o) {
        return o == int(TGridSortOrder::Descending) ? TGridSortOrder::Descending : TGridSortOrder::Ascending;
    };
    columns.clearGrouping();
    std::vector<Entry> groups;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(groups),
                 [](const Entry& e) { return e.Group >= 0; });
    std::stable_sort(groups.begin(), groups.end(),
                     [](const Entry& a, const Entry& b) { return a.Group < b.Group; });
    for (std::size_t i = 0; i < groups.size(); ++i)
        groups[i].Column->setGroupIndex(int(i));

    columns.clearSort();
    std::vector<Entry> sorts;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(sorts),
                 [](const Entry& e) { return e.Sort >= 0; });
    std::stable_sort(sorts.begin(), sorts.end(),
                     [](const Entry& a, const Entry& b) { return a.Sort < b.Sort; });
    for (std::size_t i = 0; i < sorts.size(); ++i)
        sorts[i].Column->setSortIndex(int(i));
    for (const Entry& e : entries)
        if (e.Group >= 0 || e.Sort >= 0)
            e.Column->setSortOrder(orderOf(e.Order));
    columns.endUpdate();
    if (ok)
        *ok = true;
    return settings;
}
