#include "galleryGlyphs.h"
#include "galleryPages.h"
#include "uBackstagePage.h"
#include "uBackstageView.h"
#include "uGalleryView.h"
#include "uRibbon.h"
#include "uRibbonComboItem.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uSearchBox.h"

#include <QAction>
#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// A window-like page: a ribbon of four tabs over a document area and a status bar, with an
// application menu of three pages. "Connected" in the status bar drives the enablement rule.
class TGalleryRibbonWindow : public QWidget
{
public:
    explicit TGalleryRibbonWindow(QWidget* parent) : QWidget(parent)
    {
        makeActions();
        m_ribbon = new TRibbon(this);
        m_ribbon->setUpdatesWindowTitle(false);
        m_ribbon->setApplicationName(u"Orvane"_s);
        m_ribbon->setDocumentName(u"collection.db"_s);
        buildRibbon();
        m_backstage = new TBackstageView(this);
        buildBackstage();
        m_ribbon->setBackstage(m_backstage);

        m_document = new QLabel(this);
        m_document->setAlignment(Qt::AlignCenter);
        m_document->setAutoFillBackground(true);
        m_document->setBackgroundRole(QPalette::Base);
        m_document->setText(u"Run a command of the ribbon or the application menu."_s);

        auto* status = new QStatusBar(this);
        m_connected = new QCheckBox(u"Connected"_s, status);
        m_connected->setObjectName(u"cbConnected"_s);
        m_connected->setChecked(true);
        status->addWidget(m_connected);
        m_statusText = new QLabel(status);
        status->addWidget(m_statusText, 1);
        auto* styles = new QComboBox(status);
        styles->setObjectName(u"cbRibbonStyle"_s);
        styles->addItems({u"2007 look"_s, u"2010 look"_s, u"2013 look"_s, u"2016 look"_s, u"2016 colorful"_s,
                          u"2019 look"_s});
        styles->setCurrentIndex(3);
        status->addPermanentWidget(styles);
        connect(styles, &QComboBox::currentIndexChanged, this, [this](int index) {
            static const int numbers[] = {0, 1, 2, 3, 3, 5};
            m_ribbon->setRibbonStyle(RibbonStyleFromNumber(numbers[index]));
            m_ribbon->setColoredTabRow(index == 4);
        });
        connect(m_connected, &QCheckBox::toggled, this, [this]() { updateActions(); });

        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(m_ribbon);
        layout->addWidget(m_document, 1);
        layout->addWidget(status);
        m_ribbon->setCurrentTab(u"rtGeneral"_s);
        updateActions();
    }

private:
    QAction* act(const QString& name, const QString& text, const QString& glyph, int hue,
                 const QKeySequence& shortcut = {})
    {
        auto* action = new QAction(text, this);
        action->setObjectName(name);
        if (!glyph.isEmpty())
            action->setIcon(GalleryGlyph(glyph, hue));
        if (!shortcut.isEmpty()) {
            action->setShortcut(shortcut);
            action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
            addAction(action);
        }
        connect(action, &QAction::triggered, this, [this, action]() {
            QString text = action->text().remove(u'&');
            if (action->isCheckable())
                text += action->isChecked() ? u" (on)"_s : u" (off)"_s;
            if (action->data().isValid())
                text += u" #"_s + action->data().toString();
            m_statusText->setText(u"Ran "_s + text);
            m_document->setText(u"Last command: "_s + text);
        });
        m_actions.insert(name, action);
        return action;
    }
    QAction* a(const QString& name) const { return m_actions.value(name); }

    void makeActions()
    {
        act(u"actAdd"_s, u"Add"_s, u"+"_s, 120, Qt::Key_Insert);
        act(u"actAddManually"_s, u"Add manually"_s, u"✎"_s, 120);
        act(u"actRemoveSelected"_s, u"Remove selected"_s, u"−"_s, 0);
        act(u"actEdit"_s, u"Edit focused item"_s, u"✎"_s, 210, Qt::Key_F2);
        act(u"actMultiEdit"_s, u"Multi-edit selected items"_s, u"≡"_s, 210);
        act(u"actRefresh"_s, u"Refresh"_s, u"⟳"_s, 180, Qt::Key_F5);
        act(u"actStats"_s, u"Statistics"_s, u"Σ"_s, 280);
        m_views = new QActionGroup(this);
        const QStringList views{u"actViewCards"_s, u"Cards view"_s,      u"actViewThumbs"_s, u"Thumbs view"_s,
                                u"actViewTable"_s, u"Table view"_s,      u"actViewShelve"_s, u"Shelve view"_s,
                                u"actViewROI"_s,   u"Quick stats view"_s};
        const QStringList viewGlyphs{u"▦"_s, u"▣"_s, u"☰"_s, u"▤"_s, u"%"_s};
        for (int i = 0; i < views.size(); i += 2) {
            QAction* view = act(views[i], views[i + 1], viewGlyphs[i / 2], 30 + i * 12);
            view->setCheckable(true);
            m_views->addAction(view);
            connect(view, &QAction::toggled, this, [this]() { updateActions(); });
        }
        a(u"actViewCards"_s)->setChecked(true);
        m_filterMenu = new QMenu(this);
        m_filterMenu->addSection(u"Filter by metal"_s);
        for (const QString& metal :
             {u"Gold"_s, u"Silver"_s, u"Platinum"_s, u"Palladium"_s, u"Rhodium"_s, u"Copper"_s}) {
            QAction* filter = act(u"actFilter"_s + metal, metal, QString(), 0);
            filter->setCheckable(true);
            filter->setChecked(true);
            m_filterMenu->addAction(filter);
        }
        m_filterMenu->addSection(u"Filter by type"_s);
        for (const QString& type : {u"Coins"_s, u"Bars"_s}) {
            QAction* filter = act(u"actFilter"_s + type, type, QString(), 0);
            filter->setCheckable(true);
            filter->setChecked(true);
            m_filterMenu->addAction(filter);
        }
        act(u"actFilterQuick"_s, u"Quick filter"_s, u"⚲"_s, 45);
        act(u"actQuickSearch"_s, u"Quick search"_s, u"?"_s, 45, QKeySequence(Qt::CTRL | Qt::Key_F))
            ->setCheckable(true);
        act(u"actAdvSearch"_s, u"Advanced search"_s, u"⋯"_s, 45);
        act(u"actCustomizeColumns"_s, u"Customize columns"_s, u"▥"_s, 45, Qt::Key_F9);
        act(u"actSortAsc"_s, u"Ascending"_s, u"↑"_s, 330);
        act(u"actSortDesc"_s, u"Descending"_s, u"↓"_s, 330);
        act(u"actSortData"_s, u"Sort data"_s, u"⇅"_s, 330, Qt::Key_F8);
        act(u"actFlipACoin"_s, u"Flip a coin"_s, u"◐"_s, 50);
        act(u"actThumbSize"_s, u"Thumb size"_s, QString(), 0);
        act(u"actTableViewShowHorScroll"_s, u"Columns auto-width"_s, QString(), 0)->setCheckable(true);
        act(u"actEditMints"_s, u"Edit Mints"_s, u"M"_s, 15);
        act(u"actQuickPick"_s, u"Popular items"_s, u"★"_s, 48);
        act(u"actDBNew"_s, u"New database"_s, u"N"_s, 200);
        act(u"actDBOpen"_s, u"Open database"_s, u"O"_s, 200);
        act(u"actDBSaveAs"_s, u"Save as..."_s, u"S"_s, 200);
        act(u"actRegenerateThumbs"_s, u"Regenerate thumbs"_s, u"▣"_s, 160);
        act(u"actSplitMerge"_s, u"Copy / move data between databases"_s, u"⇄"_s, 160);
        act(u"actFindDuplicates"_s, u"Find duplicates"_s, u"="_s, 160);
        act(u"actDBProperties"_s, u"Database properties"_s, u"i"_s, 200);
        act(u"actPrintPreview"_s, u"Print preview"_s, u"◫"_s, 250);
        act(u"actPrint"_s, u"Print"_s, u"P"_s, 250, QKeySequence(Qt::CTRL | Qt::Key_P));
        act(u"actPrintQuick"_s, u"Quick print"_s, u"Q"_s, 260);
        for (const QString& format : {u"HTML"_s, u"CSV"_s, u"Excel"_s, u"PDF"_s, u"Text"_s, u"XML"_s})
            act(u"actExport"_s + format, format, format.left(1), 100 + int(format.size()) * 20);
        act(u"actOptions"_s, u"Options"_s, u"⚙"_s, 0);
        act(u"actAbout"_s, u"About"_s, u"i"_s, 220);
        act(u"actExit"_s, u"Quit application"_s, u"×"_s, 0);

        m_addMenu = new QMenu(this);
        m_addMenu->addAction(a(u"actAdd"_s));
        m_addMenu->addAction(a(u"actAddManually"_s));
        m_editMenu = new QMenu(this);
        m_editMenu->addSeparator();
        m_editMenu->addAction(a(u"actEdit"_s));
        m_editMenu->addSeparator();
        m_editMenu->addAction(a(u"actMultiEdit"_s));
    }

    void buildRibbon()
    {
        using S = TRibbonItemSize;
        TRibbonPage* general = m_ribbon->addTab(u"rtGeneral"_s, u"General"_s);
        TRibbonGroup* actions = general->addGroup(u"BarActions"_s, u"Actions"_s);
        actions->addDropDownButton(a(u"actAdd"_s), m_addMenu, S::Large, true)
            ->setObjectName(u"btnAddDropDown"_s);
        actions->addButton(a(u"actRemoveSelected"_s))->setObjectName(u"btnRemove"_s);
        actions->addDropDownButton(a(u"actEdit"_s), m_editMenu, S::Large, true)
            ->setObjectName(u"btnEditDropDown"_s);
        actions->addButton(a(u"actRefresh"_s));
        actions->addButton(a(u"actStats"_s));
        TRibbonGroup* views = general->addGroup(u"BarCurrentView"_s, u"Current view"_s);
        views->addRadioGroup(m_views, S::Large);
        TRibbonGroup* filter = general->addGroup(u"BarFilterBy"_s, u"Filter"_s);
        filter->addDropDownButton(a(u"actFilterQuick"_s), m_filterMenu, S::Large)
            ->setObjectName(u"btnFilterQuick"_s);
        filter->addButton(a(u"actQuickSearch"_s), S::Medium);
        filter->addButton(a(u"actAdvSearch"_s), S::Medium);
        filter->addButton(a(u"actCustomizeColumns"_s), S::Medium);
        filter->setCaptionAction(a(u"actAdvSearch"_s));
        TRibbonGroup* sorting = general->addGroup(u"BarSorting"_s, u"Sorting"_s);
        sorting->addButton(a(u"actSortAsc"_s), S::Medium);
        sorting->addButton(a(u"actSortDesc"_s), S::Medium);
        sorting->addButton(a(u"actSortData"_s), S::Large);
        sorting->setCaptionAction(a(u"actSortData"_s));

        TRibbonPage* view = m_ribbon->addTab(u"rtView"_s, u"View"_s);
        TRibbonGroup* viewGroup = view->addGroup(u"BarView"_s, u"View"_s);
        viewGroup->addButton(a(u"actFlipACoin"_s));
        viewGroup->addComboItem(a(u"actThumbSize"_s), {u"Small"_s, u"Medium"_s, u"Large"_s})
            ->setCurrentIndex(1);
        viewGroup->addCheckItem(a(u"actTableViewShowHorScroll"_s));
        auto* picks = new TGalleryView;
        picks->setObjectName(u"galQuickPick"_s);
        picks->setPictureSize(QSize(64, 64));
        picks->setColumnsHint(4);
        picks->addGroup(u"gPopular"_s, u"Popular"_s);
        const QStringList popular{u"Maple Leaf"_s, u"Kangaroo"_s, u"Britannia"_s,  u"Philharmonic"_s,
                                  u"Panda"_s,      u"Libertad"_s, u"Krugerrand"_s, u"Eagle"_s};
        for (int i = 0; i < popular.size(); ++i)
            picks->addItem(u"gPopular"_s, u"pick"_s + QString::number(i + 1), popular[i],
                           GalleryPicture(popular[i], i * 40, false), i + 1);
        connect(picks, &TGalleryView::itemClicked, this, [this](const QString&, const QString&, int tag) {
            m_statusText->setText(u"Picked popular item with tag "_s + QString::number(tag));
        });
        viewGroup->addGalleryButton(a(u"actQuickPick"_s), picks);
        TRibbonGroup* dictionaries = view->addGroup(u"BarDictionary"_s, u"Dictionaries"_s);
        dictionaries->addButton(a(u"actEditMints"_s));

        TRibbonPage* database = m_ribbon->addTab(u"rtDBMgmt"_s, u"Database management"_s);
        TRibbonGroup* db = database->addGroup(u"BarDBMgmt"_s, u"Database management"_s);
        for (const QString& name : {u"actDBNew"_s, u"actDBOpen"_s, u"actDBSaveAs"_s, u"actRegenerateThumbs"_s,
                                    u"actSplitMerge"_s, u"actFindDuplicates"_s, u"actDBProperties"_s})
            db->addButton(a(name));

        TRibbonPage* print = m_ribbon->addTab(u"rtPrint"_s, u"Export and printing"_s);
        TRibbonGroup* printing = print->addGroup(u"BarPrint"_s, u"Print"_s);
        printing->addButton(a(u"actPrintPreview"_s));
        printing->addButton(a(u"actPrint"_s));
        printing->addButton(a(u"actPrintQuick"_s));
        TRibbonGroup* exporting = print->addGroup(u"BarExport"_s, u"Export"_s);
        for (const QString& format : {u"HTML"_s, u"CSV"_s, u"Excel"_s, u"PDF"_s, u"Text"_s, u"XML"_s})
            exporting->addButton(a(u"actExport"_s + format), S::Medium);

        m_ribbon->quickAccessBar()->addAction(a(u"actOptions"_s));
        m_ribbon->quickAccessBar()->addAction(a(u"actStats"_s));
        m_ribbon->quickAccessBar()->addAction(a(u"actAbout"_s));
    }

    void buildBackstage()
    {
        TBackstagePage* add = m_backstage->addPage(u"tsAdd"_s, u"Add"_s);
        auto* top = new QLabel(u"Search the online catalogue"_s, add);
        top->setObjectName(u"lBackstageSearchTop"_s);
        auto* line = new QHBoxLayout;
        auto* search = new TSearchBox(add);
        search->setObjectName(u"edtBackstageSearch"_s);
        search->setEmptyText(u"Search keywords (e.g. Maple Leaf 2019 1/10 oz)"_s);
        auto* go = new QPushButton(u"Search"_s, add);
        go->setObjectName(u"btnBackstageSearch"_s);
        line->addWidget(search, 1);
        line->addWidget(go);
        auto* bottom = new QLabel(u"or select one of most popular coins or bars below"_s, add);
        bottom->setObjectName(u"lBackstageSearchBottom"_s);
        auto* gallery = new TGalleryView(add);
        gallery->setObjectName(u"BackstageGalleryAdd"_s);
        const struct
        {
            QString name;
            QString caption;
            bool bar;
            int hue;
            QStringList items;
        } groups[] = {
            {u"gGoldCoins"_s,
             u"Gold coins"_s,
             false,
             45,
             {u"American Eagles"_s, u"Buffalos"_s, u"Maple leafs"_s, u"Kangaroos"_s, u"Britannias"_s,
              u"Philharmonics"_s, u"Pandas"_s}},
            {u"gSilverCoins"_s,
             u"Silver coins"_s,
             false,
             210,
             {u"American Eagles"_s, u"Maple Leafs"_s, u"Kookaburras"_s, u"Libertads"_s, u"Dutch lions"_s}},
            {u"gGoldBars"_s, u"Gold bars"_s, true, 45, {u"Austrian mint"_s, u"PAMP Suisse"_s, u"Valcambi"_s}},
            {u"gSilverBars"_s,
             u"Silver bars"_s,
             true,
             210,
             {u"Asahi"_s, u"Perth Mint"_s, u"Sunshine minting"_s}},
        };
        for (const auto& group : groups) {
            gallery->addGroup(group.name, group.caption);
            for (int i = 0; i < group.items.size(); ++i)
                gallery->addItem(group.name, group.name + QString::number(i + 1), group.items[i],
                                 GalleryPicture(group.items[i], group.hue + i * 9, group.bar), i + 1);
        }
        add->contentLayout()->addWidget(top);
        add->contentLayout()->addLayout(line);
        add->contentLayout()->addWidget(bottom);
        add->contentLayout()->addWidget(gallery, 1);
        const auto runSearch = [this, search]() {
            m_backstage->hideBackstage();
            m_statusText->setText(u"Search for \""_s + search->text() + u'"');
        };
        connect(go, &QPushButton::clicked, this, runSearch);
        connect(search, &TSearchBox::searchRequested, this, runSearch);
        connect(gallery, &TGalleryView::itemClicked, this,
                [this](const QString& group, const QString&, int tag) {
                    if (tag < 1)
                        return;
                    m_backstage->hideBackstage();
                    m_statusText->setText(u"Add from "_s + group + u", tag "_s + QString::number(tag));
                });

        TBackstagePage* database = m_backstage->addPage(u"tsDatabaseManagement"_s, u"Database management"_s);
        auto* dbGallery = new TGalleryView(database);
        dbGallery->setObjectName(u"rgDBMgmtGallery"_s);
        dbGallery->setPictureSize(QSize(48, 48));
        dbGallery->addGroup(u"rgDBMgmt"_s, u"Database management"_s);
        for (const QString& name : {u"actDBNew"_s, u"actDBOpen"_s, u"actDBSaveAs"_s, u"actDBProperties"_s,
                                    u"actSplitMerge"_s, u"actFindDuplicates"_s})
            dbGallery->addActionItem(u"rgDBMgmt"_s, a(name), 0, u"rgDBMgmtItem"_s + name.mid(3));
        connect(dbGallery, &TGalleryView::itemClicked, m_backstage, &TBackstageView::hideBackstage);
        database->contentLayout()->addWidget(dbGallery, 1);

        TBackstagePage* exports = m_backstage->addPage(u"tsExportAndPrinting"_s, u"Export and printing"_s);
        auto* exportGallery = new TGalleryView(exports);
        exportGallery->setObjectName(u"rgExportGallery"_s);
        exportGallery->setPictureSize(QSize(48, 48));
        exportGallery->addGroup(u"rgExport"_s, u"Export"_s);
        exportGallery->addGroup(u"rgPrint"_s, u"Print"_s);
        for (const QString& format : {u"PDF"_s, u"Excel"_s, u"HTML"_s, u"CSV"_s, u"Text"_s, u"XML"_s})
            exportGallery->addActionItem(u"rgExport"_s, a(u"actExport"_s + format), 0,
                                         u"rgExportItem"_s + format);
        exportGallery->addActionItem(u"rgPrint"_s, a(u"actPrintPreview"_s), 0, u"rgPrintItemPreview"_s);
        exportGallery->addActionItem(u"rgPrint"_s, a(u"actPrint"_s), 0, u"rgPrintItemPrint"_s);
        exportGallery->addActionItem(u"rgPrint"_s, a(u"actPrintQuick"_s), 0, u"rgPrintItemQuickPrint"_s);
        exports->contentLayout()->addWidget(exportGallery, 1);

        m_backstage->addButton(a(u"actStats"_s));
        m_backstage->addButton(a(u"actOptions"_s));
        m_backstage->addButton(a(u"actExit"_s));
        connect(m_backstage, &TBackstageView::aboutToShow, this, [this]() {
            const bool connected = m_connected->isChecked();
            m_backstage->setPageEnabled(u"tsAdd"_s, connected);
            m_backstage->setPageEnabled(u"tsExportAndPrinting"_s, connected);
            m_backstage->setActivePage(u"tsAdd"_s);
        });
    }

    // The one enablement rule: every item of the ribbon and the menu follows from here.
    void updateActions()
    {
        if (m_connected == nullptr)
            return;
        const bool connected = m_connected->isChecked();
        for (const QString& name :
             {u"actAdd"_s, u"actAddManually"_s, u"actEdit"_s, u"actMultiEdit"_s, u"actRefresh"_s,
              u"actStats"_s, u"actEditMints"_s, u"actRegenerateThumbs"_s, u"actDBProperties"_s})
            a(name)->setEnabled(connected);
        a(u"actRemoveSelected"_s)->setEnabled(connected);
        const bool shelf = a(u"actViewShelve"_s)->isChecked();
        a(u"actThumbSize"_s)->setEnabled(shelf);
        a(u"actCustomizeColumns"_s)->setEnabled(!shelf);
        const bool table = a(u"actViewTable"_s)->isChecked() || a(u"actViewROI"_s)->isChecked();
        a(u"actTableViewShowHorScroll"_s)->setChecked(table);
    }

    QHash<QString, QAction*> m_actions;
    QActionGroup* m_views = nullptr;
    QMenu* m_filterMenu = nullptr;
    QMenu* m_addMenu = nullptr;
    QMenu* m_editMenu = nullptr;
    TRibbon* m_ribbon = nullptr;
    TBackstageView* m_backstage = nullptr;
    QLabel* m_document = nullptr;
    QLabel* m_statusText = nullptr;
    QCheckBox* m_connected = nullptr;
};
} // namespace

QWidget* makeRibbonPage(QWidget* parent)
{
    auto* page = new TGalleryRibbonWindow(parent);
    page->setObjectName(u"galleryRibbonPage"_s);
    return page;
}
