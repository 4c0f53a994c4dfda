#include "uToolkitTexts.h"

#include "uGridTexts.h"
#include "uWidgetTexts.h"
#include "uZTStrings.h"

namespace {

template <typename T> struct TTextKey
{
    const char16_t* Key;
    QString T::*Member;
};

// The language's text of a key, or the toolkit's English text when the language has none.
template <typename T, std::size_t N> void Translate(T& texts, const TTextKey<T> (&keys)[N])
{
    const T english;
    for (const TTextKey<T>& key : keys) {
        const QString name = QString::fromUtf16(key.Key);
        const QString text = GetText(name);
        texts.*key.Member = text.isEmpty() || text == name ? english.*key.Member : text;
    }
}

} // namespace

void TranslateToolkitTexts()
{
    static const TTextKey<TGridTexts> gridKeys[] = {
        {u"cSGridGroupByText", &TGridTexts::GroupByText},
        {u"cSGridEmptyText", &TGridTexts::EmptyText},
        {u"cSGridBlankGroupValue", &TGridTexts::BlankGroupValue},
        {u"cSGridFindButton", &TGridTexts::FindButton},
        {u"cSGridFindClear", &TGridTexts::FindClear},
        {u"cSGridFindPlaceholder", &TGridTexts::FindPlaceholder},
        {u"cSGridFindClose", &TGridTexts::FindClose},
        {u"cSGridFilterBuilderCaption", &TGridTexts::FilterBuilderCaption},
        {u"cSGridFilterRoot", &TGridTexts::FilterRoot},
        {u"cSGridFilterAddCondition", &TGridTexts::FilterAddCondition},
        {u"cSGridFilterAddGroup", &TGridTexts::FilterAddGroup},
        {u"cSGridFilterRemove", &TGridTexts::FilterRemove},
        {u"cSGridFilterValuePlaceholder", &TGridTexts::FilterValuePlaceholder},
        {u"cSGridFilterEmpty", &TGridTexts::FilterEmpty},
        {u"cSGridFilterCustomize", &TGridTexts::FilterCustomize},
        {u"cSGridFilterClear", &TGridTexts::FilterClear},
        {u"cSGridFilterOk", &TGridTexts::FilterOk},
        {u"cSGridFilterCancel", &TGridTexts::FilterCancel},
        {u"cSGridFilterApply", &TGridTexts::FilterApply},
        {u"cSGridFilterBadValue", &TGridTexts::FilterBadValue},
        {u"cSGridGroupAnd", &TGridTexts::GroupAnd},
        {u"cSGridGroupOr", &TGridTexts::GroupOr},
        {u"cSGridGroupNotAnd", &TGridTexts::GroupNotAnd},
        {u"cSGridGroupNotOr", &TGridTexts::GroupNotOr},
        {u"cSGridGroupAndTitle", &TGridTexts::GroupAndTitle},
        {u"cSGridGroupOrTitle", &TGridTexts::GroupOrTitle},
        {u"cSGridGroupNotAndTitle", &TGridTexts::GroupNotAndTitle},
        {u"cSGridGroupNotOrTitle", &TGridTexts::GroupNotOrTitle},
        {u"cSGridNot", &TGridTexts::Not},
        {u"cSGridOpEqual", &TGridTexts::OpEqual},
        {u"cSGridOpNotEqual", &TGridTexts::OpNotEqual},
        {u"cSGridOpLess", &TGridTexts::OpLess},
        {u"cSGridOpLessOrEqual", &TGridTexts::OpLessOrEqual},
        {u"cSGridOpGreater", &TGridTexts::OpGreater},
        {u"cSGridOpGreaterOrEqual", &TGridTexts::OpGreaterOrEqual},
        {u"cSGridOpBetween", &TGridTexts::OpBetween},
        {u"cSGridOpNotBetween", &TGridTexts::OpNotBetween},
        {u"cSGridOpContains", &TGridTexts::OpContains},
        {u"cSGridOpNotContains", &TGridTexts::OpNotContains},
        {u"cSGridOpBeginsWith", &TGridTexts::OpBeginsWith},
        {u"cSGridOpEndsWith", &TGridTexts::OpEndsWith},
        {u"cSGridOpIsBlank", &TGridTexts::OpIsBlank},
        {u"cSGridOpIsNotBlank", &TGridTexts::OpIsNotBlank},
        {u"cSGridOpInList", &TGridTexts::OpInList},
        {u"cSGridOpNotInList", &TGridTexts::OpNotInList},
        {u"cSGridChooserCaption", &TGridTexts::ChooserCaption},
        {u"cSGridChooserColumns", &TGridTexts::ChooserColumns},
        {u"cSGridChooserRows", &TGridTexts::ChooserRows},
        {u"cSGridChooserMoveUp", &TGridTexts::ChooserMoveUp},
        {u"cSGridChooserMoveDown", &TGridTexts::ChooserMoveDown},
        {u"cSGridMenuSortAscending", &TGridTexts::MenuSortAscending},
        {u"cSGridMenuSortDescending", &TGridTexts::MenuSortDescending},
        {u"cSGridMenuClearSorting", &TGridTexts::MenuClearSorting},
        {u"cSGridMenuGroupByColumn", &TGridTexts::MenuGroupByColumn},
        {u"cSGridMenuUngroup", &TGridTexts::MenuUngroup},
        {u"cSGridMenuClearGrouping", &TGridTexts::MenuClearGrouping},
        {u"cSGridMenuHideColumn", &TGridTexts::MenuHideColumn},
        {u"cSGridMenuHideRow", &TGridTexts::MenuHideRow},
        {u"cSGridMenuBestFit", &TGridTexts::MenuBestFit},
        {u"cSGridMenuBestFitAll", &TGridTexts::MenuBestFitAll},
        {u"cSGridMenuColumnChooser", &TGridTexts::MenuColumnChooser},
        {u"cSGridMenuExpandAll", &TGridTexts::MenuExpandAll},
        {u"cSGridMenuCollapseAll", &TGridTexts::MenuCollapseAll},
        {u"cSGridMenuFindPanel", &TGridTexts::MenuFindPanel},
        {u"cSGridMenuFilterBuilder", &TGridTexts::MenuFilterBuilder},
    };
    static const TTextKey<TWidgetTexts> widgetKeys[] = {
        {u"cSWidgetApplicationButton", &TWidgetTexts::applicationButton},
        {u"cSWidgetBackstageBack", &TWidgetTexts::backstageBack},
        {u"cSWidgetMinimizeRibbon", &TWidgetTexts::minimizeRibbon},
        {u"cSWidgetExpandRibbon", &TWidgetTexts::expandRibbon},
        {u"cSWidgetScrollLeft", &TWidgetTexts::scrollLeft},
        {u"cSWidgetScrollRight", &TWidgetTexts::scrollRight},
        {u"cSWidgetPreviousImage", &TWidgetTexts::previousImage},
        {u"cSWidgetNextImage", &TWidgetTexts::nextImage},
        {u"cSWidgetNoImage", &TWidgetTexts::noImage},
        {u"cSWidgetClearSearch", &TWidgetTexts::clearSearch},
        {u"cSWidgetEditButton", &TWidgetTexts::editButton},
        {u"cSWidgetEmptySelection", &TWidgetTexts::emptySelection},
        {u"cSWidgetInvalidNumber", &TWidgetTexts::invalidNumber},
        {u"cSWidgetInvalidWholeNumber", &TWidgetTexts::invalidWholeNumber},
        {u"cSWidgetInvalidDate", &TWidgetTexts::invalidDate},
        {u"cSWidgetNotInList", &TWidgetTexts::notInList},
        {u"cSWidgetValueRefused", &TWidgetTexts::valueRefused},
    };
    TGridTexts grid = GridTexts();
    Translate(grid, gridKeys);
    SetGridTexts(grid);
    Translate(WidgetTexts(), widgetKeys);
}
