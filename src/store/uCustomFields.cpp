#include "uCustomFields.h"

#include <QLocale>

#include <cmath>
#include <memory>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QString cColumnPrefix = u"Custom"_s;

// The "C" locale that reads plain numbers only: no group separators.
const QLocale& PlainNumbers()
{
    static const QLocale locale = [] {
        QLocale c = QLocale::c();
        c.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
        return c;
    }();
    return locale;
}

// Holds back a target's updates for the life of the guard.
template <typename T> class TUpdateGuard
{
public:
    explicit TUpdateGuard(T& target) : m_target(target) { m_target.BeginUpdate(); }
    ~TUpdateGuard() { m_target.EndUpdate(); }
    TUpdateGuard(const TUpdateGuard&) = delete;
    TUpdateGuard& operator=(const TUpdateGuard&) = delete;

private:
    T& m_target;
};

const TORVCustomField& FieldAt(const TORVCustomFields& fields, int n)
{
    return fields[static_cast<std::size_t>(n)];
}

std::optional<qlonglong> ParseWhole(const QString& text)
{
    bool ok = false;
    const qlonglong value = PlainNumbers().toLongLong(text.trimmed(), &ok);
    return ok ? std::optional<qlonglong>(value) : std::nullopt;
}

std::optional<double> ParseFloat(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return std::nullopt;
    }
    bool ok = false;
    const double value = PlainNumbers().toDouble(trimmed, &ok);
    if (!ok || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<bool> ParseBool(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed == u"1"_s) {
        return true;
    }
    if (trimmed == u"0"_s) {
        return false;
    }
    return std::nullopt;
}

bool IsTextual(const QVariant& value)
{
    const int type = value.metaType().id();
    return type == QMetaType::QString || type == QMetaType::QByteArray || type == QMetaType::QChar;
}

bool IsFloating(const QVariant& value)
{
    const int type = value.metaType().id();
    return type == QMetaType::Double || type == QMetaType::Float;
}

std::optional<qlonglong> WholeOf(const QVariant& value)
{
    if (IsTextual(value)) {
        return ParseWhole(value.toString());
    }
    if (IsFloating(value)) {
        const double number = value.toDouble();
        // The integer spin gives whole numbers; anything else is rounded to the nearest one.
        if (!std::isfinite(number) || std::fabs(number) >= 9.2e18) {
            return std::nullopt;
        }
        return static_cast<qlonglong>(std::llround(number));
    }
    bool ok = false;
    const qlonglong number = value.toLongLong(&ok);
    return ok ? std::optional<qlonglong>(number) : std::nullopt;
}

std::optional<double> FloatOf(const QVariant& value)
{
    if (IsTextual(value)) {
        return ParseFloat(value.toString());
    }
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok || !std::isfinite(number)) {
        return std::nullopt;
    }
    return number;
}

std::optional<bool> BoolOf(const QVariant& value)
{
    if (IsTextual(value)) {
        return ParseBool(value.toString());
    }
    if (value.metaType().id() == QMetaType::Bool) {
        return value.toBool();
    }
    if (IsFloating(value)) {
        const double number = value.toDouble();
        return std::isnan(number) ? std::nullopt : std::optional<bool>(number != 0.0);
    }
    bool ok = false;
    const qlonglong number = value.toLongLong(&ok);
    return ok ? std::optional<bool>(number != 0) : std::nullopt;
}

QString FloatText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

} // namespace

QString CustomFieldColumn(int n)
{
    return cColumnPrefix + QString::number(n + 1);
}

int CustomFieldIndex(const QString& column)
{
    if (!column.startsWith(cColumnPrefix)) {
        return -1;
    }
    const QString digits = column.mid(cColumnPrefix.size());
    for (int n = 0; n < cCustomFieldCount; ++n) {
        if (digits == QString::number(n + 1)) {
            return n;
        }
    }
    return -1;
}

QString CustomFieldEditor(int dataType)
{
    switch (dataType) {
    case cftText:
        return u"repCustomTextEdit"_s;
    case cftNumber:
        return u"repCustomNumberEdit"_s;
    case cftFloat:
        return u"repCustomFloatEdit"_s;
    case cftCurrency:
        return u"edUsersCurrency"_s;
    case cftBoolean:
        return u"cbNotNull"_s;
    default:
        return {};
    }
}

QStringList CustomFieldDataTypeTexts()
{
    return {u"Text (string)"_s, u"Number (integer)"_s, u"Floating number (float)"_s, u"Currency (float)"_s,
            u"Boolean"_s};
}

QString CustomValueToText(const QVariant& value, int dataType)
{
    if (!value.isValid() || value.isNull()) {
        return {};
    }
    switch (dataType) {
    case cftNumber:
        if (const auto number = WholeOf(value)) {
            return QString::number(*number);
        }
        return {};
    case cftFloat:
    case cftCurrency:
        if (const auto number = FloatOf(value)) {
            return FloatText(*number);
        }
        return {};
    case cftBoolean:
        if (const auto flag = BoolOf(value)) {
            return *flag ? u"1"_s : u"0"_s;
        }
        return {};
    default:
        if (IsFloating(value)) {
            return FloatText(value.toDouble());
        }
        return value.toString();
    }
}

QVariant CustomValueFromText(const QString& text, int dataType)
{
    if (text.isNull()) {
        return {};
    }
    switch (dataType) {
    case cftNumber:
        if (const auto number = ParseWhole(text)) {
            return QVariant::fromValue<qlonglong>(*number);
        }
        return {};
    case cftFloat:
    case cftCurrency:
        if (const auto number = ParseFloat(text)) {
            return *number;
        }
        return {};
    case cftBoolean:
        if (const auto flag = ParseBool(text)) {
            return *flag;
        }
        return {};
    default:
        return text;
    }
}

void ApplyCustomFields(TCustomFieldRows& details, const QList<TCustomFieldColumns*>& views, bool enabled,
                       const TORVCustomFields& fields)
{
    TUpdateGuard detailsGuard(details);
    std::vector<std::unique_ptr<TUpdateGuard<TCustomFieldColumns>>> viewGuards;
    for (TCustomFieldColumns* view : views) {
        if (view) {
            viewGuards.push_back(std::make_unique<TUpdateGuard<TCustomFieldColumns>>(*view));
        }
    }

    bool anyVisible = false;
    for (int n = 0; n < cCustomFieldCount; ++n) {
        const TORVCustomField& field = FieldAt(fields, n);
        const QString column = CustomFieldColumn(n);
        const bool shown = enabled && field.Enabled;
        const QString editor = CustomFieldEditor(field.DataType);
        if (details.HasRow(column)) {
            details.SetRowVisible(column, shown);
            details.SetRowCaption(column, field.DisplayName);
            details.SetRowEditor(column, editor);
            anyVisible = anyVisible || shown;
        }
        for (TCustomFieldColumns* view : views) {
            if (view && view->HasColumn(column)) {
                view->SetColumnCaption(column, field.DisplayName);
                view->SetColumnOffered(column, shown);
                view->SetColumnEditor(column, editor);
            }
        }
    }
    details.SetGroupVisible(enabled && anyVisible);
}

void ApplyCustomFieldsToEditor(TCustomFieldRows& grid, bool enabled, const TORVCustomFields& fields)
{
    TUpdateGuard guard(grid);
    bool anyVisible = false;
    for (int n = 0; n < cCustomFieldCount; ++n) {
        const TORVCustomField& field = FieldAt(fields, n);
        const QString column = CustomFieldColumn(n);
        if (!grid.HasRow(column)) {
            continue;
        }
        grid.SetRowVisible(column, field.Enabled);
        grid.SetRowCaption(column, field.DisplayName);
        grid.SetRowEditor(column, CustomFieldEditor(field.DataType));
        anyVisible = anyVisible || field.Enabled;
    }
    grid.SetGroupVisible(enabled && anyVisible);
}
