#include "uMainCommands.h"

using namespace Qt::StringLiterals;

QString GridViewName(TGridView view)
{
    switch (view) {
    case TGridView::Thumbs:
        return u"GridThumbsView"_s;
    case TGridView::Cards:
        return u"GridCardsView"_s;
    case TGridView::Table:
        return u"GridTableView"_s;
    case TGridView::Shelve:
        return u"GridShelveView"_s;
    case TGridView::TableROI:
        return u"GridTableViewROI"_s;
    case TGridView::None:
        break;
    }
    return {};
}

TGridView GridViewFromSetting(int value)
{
    if (value < int(TGridView::Thumbs) || value > int(TGridView::TableROI)) {
        return TGridView::Cards;
    }
    return TGridView(value);
}

bool IsTableView(TGridView view)
{
    return view == TGridView::Table || view == TGridView::TableROI;
}

namespace {

using R = TEnableRule;
using C = TCheckRule;

TMainCommandDef Cmd(const char16_t* name, const char16_t* key, const char16_t* text,
                    const char16_t* shortcut = u"", TEnableRule enabled = R::Always,
                    TCheckRule checked = C::None)
{
    TMainCommandDef def;
    def.Name = QString::fromUtf16(name);
    def.TextKey = QString::fromUtf16(key);
    def.DefaultText = QString::fromUtf16(text);
    def.Shortcut = QString::fromUtf16(shortcut);
    def.Enabled = enabled;
    def.Checked = checked;
    return def;
}

TMainCommandDef ViewCmd(const char16_t* name, const char16_t* key, const char16_t* text, TGridView view)
{
    TMainCommandDef def = Cmd(name, key, text, u"", R::Always, C::ActiveView);
    def.View = view;
    return def;
}

TMainCommandDef CheckCmd(const char16_t* name, const char16_t* key, const char16_t* text)
{
    TMainCommandDef def = Cmd(name, key, text, u"", R::Always, C::User);
    def.InitiallyChecked = true;
    return def;
}

QList<TMainCommandDef> MakeCommands()
{
    return {
        Cmd(u"actAdd", u"cSMainactAdd", u"Add", u"Ins", R::Connected),
        Cmd(u"actAddManually", u"cSMainactAddManually", u"Add manually", u"Ctrl+Shift+Ins", R::Connected),
        Cmd(u"actEdit", u"cSMainactEdit", u"Edit focused item", u"F2", R::ConnectedAndSelection),
        Cmd(u"actMultiEdit", u"cSMainactMultiEdit", u"Multi-edit selected items", u"Ctrl+F2",
            R::ConnectedAndSelection),
        Cmd(u"actRemoveSelected", u"cSMainactRemoveSelected", u"Remove selected", u"Ctrl+Del", R::Selection),
        Cmd(u"actRefresh", u"cSMainactRefresh", u"Refresh", u"F5", R::Connected),
        Cmd(u"actRefreshSpot", u"cSMainactRefresh", u"Refresh"),
        Cmd(u"actStats", u"cSMainactStats", u"Statistics", u"", R::Connected),
        Cmd(u"actOptions", u"cSMainactOptions", u"Options"),
        Cmd(u"actEditMints", u"cSMainactEditMints", u"Edit Mints", u"", R::Connected),
        Cmd(u"actAbout", u"", u"About"),
        Cmd(u"actExit", u"cSMainactExit", u"Quit application", u"Ctrl+Alt+X"),
        ViewCmd(u"actViewThumbs", u"cSMainactViewThumbs", u"Thumbs view", TGridView::Thumbs),
        ViewCmd(u"actViewCards", u"cSMainactViewCards", u"Cards view", TGridView::Cards),
        ViewCmd(u"actViewTable", u"cSMainactViewTable", u"Table view", TGridView::Table),
        ViewCmd(u"actViewShelve", u"cSMainactViewShelve", u"Shelve view", TGridView::Shelve),
        ViewCmd(u"actViewROI", u"cSMainactViewROI", u"Quick stats view", TGridView::TableROI),
        Cmd(u"actThumbSize", u"cSMainactThumbSize", u"Thumb size", u"", R::ShelveView),
        Cmd(u"actCustomizeColumns", u"cSMainactCustomizeColumns", u"Customize columns", u"F9",
            R::NotShelveView),
        Cmd(u"actApplyBestFit", u"cSMainactApplyBestFit", u"Apply best fit"),
        Cmd(u"actTableViewShowHorScroll", u"cSMainactColumnsAutoWidth", u"Columns auto-width", u"", R::Always,
            C::TableAutoWidth),
        Cmd(u"actExpandAll", u"cSMainactExpandAll", u"Expand all", u"Ctrl+Alt+Right", R::TableView),
        Cmd(u"actCollapseAll", u"cSMainactCollapseAll", u"Collapse all", u"Ctrl+Alt+Left", R::TableView),
        CheckCmd(u"actFilterGold", u"cS_AU", u"Gold"),
        CheckCmd(u"actFilterSilver", u"cS_AG", u"Silver"),
        CheckCmd(u"actFilterPlatinum", u"cS_PT", u"Platinum"),
        CheckCmd(u"actFilterPalladium", u"cS_PD", u"Palladium"),
        CheckCmd(u"actFilterRhodium", u"cS_RH", u"Rhodium"),
        CheckCmd(u"actFilterCopper", u"cS_CU", u"Copper"),
        CheckCmd(u"actFilterCoins", u"cSMainactFilterCoins", u"Coins"),
        CheckCmd(u"actFilterBars", u"cSMainactFilterBars", u"Bars"),
        Cmd(u"actQuickSearch", u"cSMainactQuickSearch", u"Quick search", u"Ctrl+F", R::Always, C::FindPanel),
        Cmd(u"actAdvSearch", u"cSMainactAdvSearch", u"Advanced search", u"Ctrl+Alt+F"),
        Cmd(u"actSortAsc", u"cSSortDlgAsc", u"Ascending"),
        Cmd(u"actSortDesc", u"cSSortDlgDesc", u"Descending"),
        Cmd(u"actSortData", u"cSAddDlgSortData", u"Sort data", u"F8"),
        Cmd(u"actSelectAll", u"cSAddDlgSelectAll", u"Select all", u"Ctrl+A"),
        Cmd(u"actClearSelection", u"cSAddDlgClearSelection", u"Clear selection"),
        Cmd(u"actCopyToClipboard", u"cSMainactCopyToClipboard", u"Copy to clipboard"),
        Cmd(u"actFlipACoin", u"cSMainactFlipACoin", u"Flip a coin"),
        Cmd(u"actRegenerateThumbs", u"cSMainactRegenerateThumbs", u"Regenerate thumbs", u"", R::Connected),
        Cmd(u"actDBNew", u"cSMainactDBNew", u"New database"),
        Cmd(u"actDBOpen", u"cSMainactDBOpen", u"Open database"),
        Cmd(u"actDBSaveAs", u"cSMainactDBSaveAs", u"Save as..."),
        Cmd(u"actDBProperties", u"cSMainactDBProperties", u"Database properties", u"", R::Connected),
        Cmd(u"actFindDuplicates", u"cSDuplicatesDlgCaption", u"Find duplicates"),
        Cmd(u"actSplitMerge", u"cSSMCMDlgCaption", u"Copy / move data between databases"),
        Cmd(u"actPrintPreview", u"cSMainactPrintPreview", u"Print preview", u"Ctrl+P"),
        Cmd(u"actPrint", u"cSMainactPrint", u"Print", u"Ctrl+Alt+P"),
        Cmd(u"actPrintQuick", u"cSMainactPrintQuick", u"Quick print"),
        Cmd(u"actExportHTML", u"cSMainactExportHTML", u"HTML"),
        Cmd(u"actExportExcel", u"cSMainactExportExcel", u"Excel"),
        Cmd(u"actExportPDF", u"cSMainactExportPDF", u"PDF"),
        Cmd(u"actExportTxt", u"cSMainactExportTxt", u"Text"),
        Cmd(u"actExportXML", u"cSMainactExportXML", u"XML"),
        Cmd(u"actExportCSV", u"cSMainactExportCSV", u"CSV"),
    };
}

} // namespace

const QList<TMainCommandDef>& MainCommands()
{
    static const QList<TMainCommandDef> commands = MakeCommands();
    return commands;
}

const TMainCommandDef* FindMainCommand(const QString& name)
{
    static const QHash<QString, qsizetype> index = [] {
        QHash<QString, qsizetype> result;
        const QList<TMainCommandDef>& commands = MainCommands();
        for (qsizetype n = 0; n < commands.size(); ++n) {
            result.insert(commands.at(n).Name, n);
        }
        return result;
    }();
    const auto it = index.constFind(name);
    return it == index.constEnd() ? nullptr : &MainCommands().at(*it);
}

bool EvaluateEnabled(TEnableRule rule, const TMainState& state)
{
    const int selected = state.ActiveView == TGridView::None ? 0 : state.SelectedRecordCount;
    switch (rule) {
    case TEnableRule::Always:
        return true;
    case TEnableRule::Connected:
        return state.Connected;
    case TEnableRule::ConnectedAndSelection:
        return state.Connected && selected >= 1;
    case TEnableRule::Selection:
        return selected >= 1;
    case TEnableRule::ShelveView:
        return state.ActiveView == TGridView::Shelve;
    case TEnableRule::NotShelveView:
        return state.ActiveView != TGridView::Shelve;
    case TEnableRule::TableView:
        return IsTableView(state.ActiveView);
    }
    return true;
}

bool EvaluateChecked(const TMainCommandDef& command, const TMainState& state, bool current)
{
    switch (command.Checked) {
    case TCheckRule::None:
        return false;
    case TCheckRule::User:
        return current;
    case TCheckRule::ActiveView:
        return state.ActiveView == command.View;
    case TCheckRule::FindPanel:
        return state.FindPanelVisible;
    case TCheckRule::TableAutoWidth:
        return IsTableView(state.ActiveView) && state.ColumnAutoWidth;
    }
    return false;
}
