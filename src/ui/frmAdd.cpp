#include "frmAdd.h"

#include "dmInternalData.h"
#include "uBlankPictures.h"
#include "uCheckComboBox.h"
#include "uChoiceEditorItems.h"
#include "uDownloader.h"
#include "uGalleryView.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumn.h"
#include "uGridColumns.h"
#include "uImageSlider.h"
#include "uItemTexts.h"
#include "uNumberEdit.h"
#include "uNumberEditorItems.h"
#include "uPictureEditorItem.h"
#include "uPropertyGrid.h"
#include "uQuickSearches.h"
#include "uRibbon.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uSearchBox.h"
#include "uTextEditorItems.h"
#include "uZTStrings.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

using namespace Qt::StringLiterals;

std::function<bool(QWidget*, TAddSort&)> TAddForm::SortDialogRunner = [](QWidget*, TAddSort&) {
    return false;
};
std::function<void(QWidget*)> TAddForm::ProxySettingsRunner = [](QWidget*) {};
std::function<void(QWidget*, const QImage&)> TAddForm::PictureViewer = [](QWidget* parent,
                                                                          const QImage& image) {
    QDialog viewer(parent);
    viewer.setObjectName(u"frmPic"_s);
    auto* layout = new QVBoxLayout(&viewer);
    auto* scroll = new QScrollArea(&viewer);
    auto* label = new QLabel(scroll);
    label->setPixmap(QPixmap::fromImage(image));
    scroll->setWidget(label);
    scroll->setAlignment(Qt::AlignCenter);
    layout->addWidget(scroll);
    const QSize available =
        parent && parent->screen() ? parent->screen()->availableSize() * 0.9 : QSize(1024, 768);
    viewer.resize(image.size().boundedTo(available).expandedTo(QSize(200, 200)) + QSize(40, 40));
    viewer.exec();
};

// ---- Life -------------------------------------------------------------------------------------------

TAddForm::TAddForm(TDM_InternalData* data, QWidget* parent) : QDialog(parent), m_data(data)
{
    setObjectName(u"frmAdd"_s);
    setSizeGripEnabled(true);
    m_controller = std::make_unique<TAddController>(static_cast<TAddFormSeam&>(*this), this);

    CreateEditorItems();

    CreateActions();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    CreateRibbon();
    layout->addWidget(m_ribbon);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"Splitter"_s);
    auto* left = new QWidget(splitter);
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(6, 6, 0, 0);
    CreateSearchRow(left);
    CreateGrid(left);
    auto* right = new QWidget(splitter);
    CreateRightPane(right);
    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    layout->addWidget(splitter, 1);

    auto* statusBar = new QStatusBar(this);
    statusBar->setObjectName(u"StatusBar"_s);
    m_progress = new QProgressBar(statusBar);
    m_progress->setObjectName(u"StatusBarProgress"_s);
    m_progress->setTextVisible(true);
    m_progress->setMinimumWidth(fontMetrics().horizontalAdvance(u"Left: 9999 downloads"_s) + 40);
    m_progress->hide();
    m_status = new QLabel(statusBar);
    m_status->setObjectName(u"StatusBarText"_s);
    statusBar->addWidget(m_progress);
    statusBar->addWidget(m_status, 1);
    layout->addWidget(statusBar);

    CreateAdvancedOptions();
    ConnectController();
    TranslateForm();
    // The one tab that creation made.
    for (int n = 0; n < m_controller->TabCount(); ++n)
        TabAdded(n);
    m_tabControl->setCurrentIndex(m_controller->ActiveTab());
    m_grid->setActiveView(TabView(m_controller->ActiveTab()));
    ApplySort();
    ShowPane();

    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &TAddForm::UpdateActions);
    UpdateActions();
    resize(1180, 760);
}

TAddForm::~TAddForm()
{
    // The controller's last words (the stopped queue's events) find no window to show them.
    m_controller->disconnect(this);
    disconnect(QAbstractEventDispatcher::instance(), nullptr, this, nullptr);
    m_controller->Finish();
    // The views let go of the tabs' results before the controller frees them.
    for (TGridCardView* view : std::as_const(m_tabViews))
        m_grid->removeView(view);
    m_tabViews.clear();
    m_controller.reset();
}

std::vector<std::unique_ptr<TMetalAsset>> TAddForm::Execute(quint8 mode, qint32 tag,
                                                            const QString& searchText, bool autoSearch,
                                                            TDM_InternalData* data, QWidget* parent)
{
    TAddForm form(data, parent);
    TAddController& controller = form.Controller();
    controller.SearchMode = mode;
    controller.SearchTag = tag;
    controller.SearchText = searchText;
    controller.AutoSearch = autoSearch;
    form.exec();
    // Pictures of added assets that are still on their way land before the assets are handed on.
    controller.Finish();
    return std::move(controller.Assets);
}

TGridCardView* TAddForm::TabView(int tab) const
{
    return tab >= 0 && tab < m_tabViews.size() ? m_tabViews[tab] : nullptr;
}

int TAddForm::ThumbHeightFor(int cardWidth)
{
    return int(std::lround(cardWidth * 0.4));
}

void TAddForm::ConnectController()
{
    TAddController& c = *m_controller;
    connect(&c, &TAddController::TabAdded, this, &TAddForm::TabAdded);
    connect(&c, &TAddController::TabRemoved, this, &TAddForm::TabRemoved);
    connect(&c, &TAddController::TabCaptionChanged, this, [this](int index) {
        const QString caption = m_controller->Tab(index).Caption;
        m_tabControl->setTabText(index, caption);
        if (TGridCardView* view = TabView(index))
            view->setCaption(caption);
    });
    connect(&c, &TAddController::ActiveTabChanged, this, [this](int index) {
        m_syncing = true;
        if (index >= 0 && index < m_tabControl->count())
            m_tabControl->setCurrentIndex(index);
        if (TGridCardView* view = TabView(index))
            m_grid->setActiveView(view);
        m_syncing = false;
    });
    connect(&c, &TAddController::FocusChanged, this, [this](int tab, int record) {
        if (TGridCardView* view = TabView(tab)) {
            m_syncing = true;
            view->setCurrentSourceRow(record);
            view->makeCurrentVisible();
            m_syncing = false;
        }
    });
    connect(&c, &TAddController::SelectionChanged, this, [this](int tab) {
        if (TGridCardView* view = TabView(tab)) {
            m_syncing = true;
            view->setSelectedSourceRows(m_controller->Tab(tab).Selection);
            m_syncing = false;
        }
    });
    connect(&c, &TAddController::SortChanged, this, &TAddForm::ApplySort);
    connect(&c, &TAddController::PaneChanged, this, &TAddForm::ShowPane);
    connect(&c, &TAddController::PaneReset, this, [this] { m_slider->showFirst(); });
    connect(&c, &TAddController::ProgressChanged, this, &TAddForm::ShowProgress);
    connect(&c, &TAddController::CloseRequested, this, [this] { done(QDialog::Accepted); });
}

// ---- Tabs ------------------------------------------------------------------------------------------

void TAddForm::TabAdded(int index)
{
    TAddTab& tab = m_controller->Tab(index);
    TGridCardView* view = m_grid->addCardViewLike(m_template, u"SearchGridCardView%1"_s.arg(index + 1),
                                                  tab.Caption, tab.Results.get());
    view->setEmptyText(m_template->emptyText());
    view->setContextMenuPolicy(Qt::PreventContextMenu);
    m_tabViews.insert(index, view);
    m_syncing = true;
    m_tabControl->insertTab(index, tab.Caption);
    m_syncing = false;
    connect(view, &TGridView::selectionChanged, this, [this, view] { ViewSelectionChanged(view); });
    connect(view, &TGridView::contextMenuRequested, this,
            [this](const TGridHitInfo&, const QPoint& pos) { m_pmCard->popup(pos); });
    connect(view, &TGridCardView::cardWidthChanged, this,
            [this, view](int width) { SetThumbHeight(view, ThumbHeightFor(width)); });
    ApplySort();
}

void TAddForm::TabRemoved(int index)
{
    TGridCardView* view = TabView(index);
    if (!view)
        return;
    m_tabViews.removeAt(index);
    m_grid->removeView(view);
    m_syncing = true;
    m_tabControl->removeTab(index);
    m_syncing = false;
}

void TAddForm::ViewSelectionChanged(TGridCardView* view)
{
    if (m_syncing)
        return;
    const int index = int(m_tabViews.indexOf(view));
    if (index != m_controller->ActiveTab())
        return;
    m_controller->SetSelection(view->selectedSourceRows());
    const int current = view->currentSourceRow();
    if (current != m_controller->Tab(index).Focused)
        m_controller->FocusCard(current);
    UpdateActions();
}

void TAddForm::SetThumbHeight(TGridCardView* view, int height)
{
    const int lineHeight = std::max(1, view->fontMetrics().lineSpacing());
    if (TGridColumn* thumb = view->columns()->byField(AddColumnField(acThumb)))
        thumb->setLines(std::max(2, int(std::lround(double(height) / lineHeight))));
}

void TAddForm::ApplySort()
{
    const TAddSort& sort = m_controller->Sort();
    QList<TGridView*> views{m_template};
    for (TGridCardView* view : std::as_const(m_tabViews))
        views << view;
    for (TGridView* view : views) {
        TGridColumns* columns = view->columns();
        columns->beginUpdate();
        columns->clearSort();
        for (qsizetype n = 0; n < sort.size(); ++n)
            if (TGridColumn* column = columns->byField(AddColumnField(sort[n].Column))) {
                column->setSortIndex(int(n));
                column->setSortOrder(sort[n].Order == Qt::AscendingOrder ? TGridSortOrder::Ascending
                                                                         : TGridSortOrder::Descending);
            }
        columns->endUpdate();
    }
}

// ---- The right pane and the status bar --------------------------------------------------------------

void TAddForm::ShowPane()
{
    const TAddPaneData& pane = m_controller->Pane();
    const int shown = m_slider->currentIndex();
    for (int n = 0; n < 4; ++n) {
        if (pane.Images[std::size_t(n)].isEmpty())
            m_slider->clearImage(n);
        else
            m_slider->setImageBytes(n, pane.Images[std::size_t(n)]);
    }
    if (shown < 0 || !m_slider->hasImage(shown))
        m_slider->showFirst();
    else
        m_slider->setCurrentIndex(shown);
    m_lPicType->setText(m_slider->currentIndex() < 0 ? QString()
                                                     : PictureKindText(quint8(m_slider->currentIndex() + 1)));
    const auto& rows = AddPaneRows();
    const QString description = GetText(u"cSF_Description"_s);
    m_vgData->setCategoryCaption(
        u"vgDataCategoryRowDesc"_s,
        pane.Caption.isEmpty() ? (description.isEmpty() ? u"Description"_s : description) : pane.Caption);
    for (int n = 0; n < cPaneRowCount; ++n) {
        const QString& name = rows[std::size_t(n)].Name;
        QVariant value = pane.Values[std::size_t(n)];
        if (n == vgDataEditorRowMint && pane.MintID)
            value = m_controller->FocusedAsset() ? m_controller->FocusedAsset()->MintName : value;
        m_vgData->setRowValue(name, value);
        m_vgData->setRowVisible(name, pane.Visible[std::size_t(n)]);
    }
    m_vgData->setCategoryVisible(u"vgDataCategoryRowDesc"_s, pane.DescriptionVisible());
}

void TAddForm::ShowProgress()
{
    const TAddProgress& progress = m_controller->Progress();
    m_progress->setVisible(progress.Visible);
    m_progress->setMaximum(std::max(progress.Maximum, 1));
    m_progress->setValue(progress.Maximum > 0 ? progress.Position : 0);
    m_progress->setFormat(progress.BarText);
    m_status->setText(progress.StatusText);
}

// ---- Advanced options --------------------------------------------------------------------------------

void TAddForm::ShowAdvancedOptions()
{
    ReadFilters();
    const QPoint below = m_edtSearch->mapToGlobal(QPoint(0, m_edtSearch->height()));
    m_advanced->adjustSize();
    m_advanced->move(layoutDirection() == Qt::RightToLeft
                         ? below + QPoint(m_edtSearch->width() - m_advanced->width(), 0)
                         : below);
    m_advanced->show();
}

void TAddForm::ReadFilters()
{
    TSearchFilters& f = m_controller->Filters;
    f.Keywords = m_edtSearch->text();
    auto flags = [](const QList<bool>& states) {
        QString text;
        for (bool on : states)
            text += on ? u'1' : u'0';
        return text;
    };
    f.Metals = flags(m_cbMetals->checkedStates());
    f.CoinTypes = flags(m_cbTypes->checkedStates());
    const QVariant mint = m_cbMint->currentData();
    f.MintID = mint.isNull() ? std::nullopt : std::optional<qint32>(mint.toInt());
    f.WeightFrom = m_seWeightFrom->value().toDouble();
    f.WeightTo = m_seWeightTo->value().toDouble();
    f.WeightUnit = m_cbWeightUnit->currentIndex() == cWeightUnitGrams ? cWeightUnitGrams : cWeightUnitOunces;
    f.YearFrom = m_seYearFrom->value().toInt();
    f.YearTo = m_seYearTo->value().toInt();
}

void TAddForm::WeightUnitChanged(int unit)
{
    // Only the display changes: the numbers stay as typed.
    const TNumberFormat format(unit == cWeightUnitGrams ? u"0.## g"_s : u"0.## oz"_s);
    for (TNumberEdit* edit : {m_seWeightFrom, m_seWeightTo}) {
        const QVariant value = edit->value();
        edit->setDisplayFormat(format);
        edit->setValue(value);
    }
}

void TAddForm::ClearAdvanced()
{
    for (TNumberEdit* edit : {m_seYearFrom, m_seYearTo, m_seWeightFrom, m_seWeightTo})
        edit->setValue(QVariant());
    m_cbMetals->setCheckedStates(QList<bool>(cMetalFlagPlaces, false));
    m_cbTypes->setCheckedStates(QList<bool>(cCoinTypeFlagPlaces, false));
    m_cbMint->setCurrentIndex(0);
    m_controller->ClearAdvancedOptions();
}

// ---- Enablement, opening and closing ------------------------------------------------------------------

void TAddForm::UpdateActions()
{
    if (!m_controller)
        return;
    for (const TAddCommandInfo& info : AddCommands())
        if (QAction* action = Action(info.Name))
            action->setEnabled(m_controller->Enabled(info.Command) || info.Command == TAddCommand::actHelp);
    m_btnSearch->setEnabled(Action(u"actSearch"_s)->isEnabled());
}

void TAddForm::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        QCoreApplication::postEvent(this, new TPostedMessage(cMsgAddFormShown, QVariant(), nullptr));
}

bool TAddForm::event(QEvent* event)
{
    if (auto* message = dynamic_cast<TPostedMessage*>(event); message && message->Msg() == cMsgAddFormShown) {
        if (m_controller->Opened()) {
            if (TGridCardView* view = TabView(m_controller->ActiveTab()))
                view->setFocus();
        } else {
            m_edtSearch->setFocus();
        }
        return true;
    }
    return QDialog::event(event);
}

void TAddForm::closeEvent(QCloseEvent* event)
{
    m_controller->CloseQuery();
    m_controller->Close();
    QDialog::closeEvent(event);
}

void TAddForm::reject()
{
    m_controller->CloseQuery();
    m_controller->Close();
    QDialog::reject();
}

// ---- What the controller asks of the program ----------------------------------------------------------

QByteArray TAddForm::PlaceholderPicture(int metal, int coinType, bool front)
{
    return BlankPicture(metal, coinType, front);
}

int TAddForm::MintIDByName(const QString& name)
{
    return m_data ? m_data->MintIDByName(name) : -1;
}

QByteArray TAddForm::MintPicture(int mintID)
{
    return m_data ? m_data->MintLogoByID(mintID).toByteArray() : QByteArray();
}

bool TAddForm::ExecuteSortDialog(TAddSort& sort)
{
    return SortDialogRunner && SortDialogRunner(this, sort);
}

void TAddForm::ExecuteProxySettings()
{
    if (ProxySettingsRunner)
        ProxySettingsRunner(this);
}

bool TAddForm::TestConnection()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool online = TestInternetConnection();
    QApplication::restoreOverrideCursor();
    return online;
}
