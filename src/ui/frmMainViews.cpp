// The main window's collection views: the centre, the quick filter, the view commands, the
// status-bar totals and the texts of the views and the toolkit.

#include "frmMain.h"

#include "dmInternalData.h"
#include "uCollectionPane.h"
#include "uToolkitTexts.h"
#include "uZTStrings.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QMenu>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

QString ViewText(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() || text == key ? fallback : text;
}

} // namespace

void TORVMainForm::CreateViews()
{
    m_views = new TCollectionPane(m_data, this);
    m_views->SetContextMenu(m_pmGrid);
    m_views->SetHorScrollAction(Action(u"actTableViewShowHorScroll"_s));
    setCentralWidget(m_views);

    m_barTotalOz = new QToolBar(this);
    m_barTotalOz->setObjectName(u"BarTotalOz"_s);
    m_barTotalOz->setToolButtonStyle(Qt::ToolButtonTextOnly);
    for (int metal = 0; metal < 3; ++metal) {
        auto* button = new QToolButton(m_barTotalOz);
        button->setObjectName(StatusBarTotalButton(metal));
        button->setAutoRaise(true);
        button->hide();
        m_totalButtons[std::size_t(metal)] = button;
        // The statistics open preset to the button's metal.
        connect(button, &QToolButton::clicked, this, [this, metal] { m_controller->OpenStatistics(metal); });
        m_barTotalOz->addWidget(button)->setVisible(false);
    }
}

QToolButton* TORVMainForm::TotalButton(int metal) const
{
    return metal >= 0 && metal < 3 ? m_totalButtons[std::size_t(metal)] : nullptr;
}

void TORVMainForm::ConnectViews()
{
    // Beside the spot prices, before the spacer that pushes the view buttons to the far end.
    statusBar()->insertWidget(1, m_barTotalOz);
    // The five view buttons always show whole; the spacer gives way first.
    m_barViews->setMinimumWidth(m_barViews->sizeHint().width());
    m_views->RestoreLayouts();
    m_views->ApplyCustomFields();

    auto on = [this](const char16_t* name, auto&& slot) {
        connect(Action(QString::fromUtf16(name)), &QAction::triggered, this, slot);
    };
    on(u"actQuickSearch", [this] { m_views->ToggleFindPanel(); });
    on(u"actAdvSearch", [this] { m_views->ShowFilterBuilder(); });
    on(u"actSortData", [this] { m_views->SortData(); });
    on(u"actExpandAll", [this] { m_views->ExpandAll(); });
    on(u"actCollapseAll", [this] { m_views->CollapseAll(); });
    on(u"actCustomizeColumns", [this] { m_views->ShowColumnChooser(); });
    for (const QString& name : QuickFilterActions()) {
        connect(Action(name), &QAction::triggered, this, &TORVMainForm::BuildQuickFilter);
    }
    for (qsizetype index = 0; index < m_thumbSizeItems.size(); ++index) {
        connect(m_thumbSizeItems.at(index), &QAction::triggered, this,
                [this, index] { m_views->ApplyThumbSize(int(index)); });
    }

    connect(m_controller, &TMainController::ActiveViewChanged, this, [this](TGridView view) {
        m_views->SetActiveView(TCollectionView(int(view)));
        UpdateStatusBarTotals();
    });
    connect(m_controller, &TMainController::PictureBindingsChanged, this,
            [this](const TPictureBindings& bindings) {
                m_views->SetPictureFields(bindings.ThumbsFront, bindings.ThumbsBack, bindings.CardsFront,
                                          bindings.CardsBack, bindings.ShelvePhoto);
            });
    connect(m_controller, &TMainController::DatabaseChanged, this, [this] {
        m_views->DatabaseChanged();
        UpdateStatusBarTotals();
    });
    connect(m_views, &TCollectionPane::EditRequested, this, [this] {
        QAction* edit = Action(u"actEdit"_s);
        if (edit->isEnabled()) {
            edit->trigger();
        }
    });
    connect(m_views, &TCollectionPane::SelectionChanged, this, &TORVMainForm::UpdateSelection);
    connect(m_views, &TCollectionPane::FindPanelVisibilityChanged, this, [this] {
        m_controller->SetFindPanelVisible(m_views->FindPanelVisible());
        m_controller->SetColumnAutoWidth(m_views->ColumnAutoWidth());
    });

    // The totals follow the data; many changes in one turn of the event loop count once.
    auto totalsLater = [this] {
        if (!m_totalsPending) {
            m_totalsPending = true;
            QTimer::singleShot(0, this, [this] {
                m_totalsPending = false;
                UpdateStatusBarTotals();
            });
        }
    };
    connect(m_data.ADConnection, &TDBConnection::afterConnect, this, [this] { m_views->DatabaseChanged(); });
    connect(m_data.qDS_Items, &TDBDataset::afterReset, this, totalsLater);
    connect(m_data.qDS_Items, &TDBDataset::afterInsertRow, this, totalsLater);
    connect(m_data.qDS_Items, &TDBDataset::afterRemoveRow, this, totalsLater);
    connect(m_data.qDS_Items, &TDBDataset::rowChanged, this, totalsLater);

    m_views->SetActiveView(TCollectionView(int(m_controller->ActiveView())));
}

void TORVMainForm::BuildQuickFilter()
{
    const TQuickFilterChecks checks =
        QuickFilterChecks([this](const QString& name) { return Action(name)->isChecked(); });
    // The totals cover the whole collection: a filter leaves them as they are.
    const bool pending = m_totalsPending;
    m_totalsPending = true;
    ApplyQuickFilter(*m_data.qDS_Items, ::BuildQuickFilter(checks));
    m_totalsPending = pending;
}

void TORVMainForm::UpdateStatusBarTotals()
{
    const std::optional<TStatusBarTotals> totals = ::UpdateStatusBarTotals(m_data);
    if (!totals) {
        return;
    }
    const QString hint = ViewText(u"cSMainStatusBarStatsHint"_s, u"Click for more detailed statistics"_s);
    const QList<QAction*> actions = m_barTotalOz->actions();
    for (int metal = 0; metal < 3; ++metal) {
        const std::optional<QString>& caption = (*totals)[std::size_t(metal)];
        QToolButton* button = m_totalButtons[std::size_t(metal)];
        if (caption) {
            button->setText(*caption);
            button->setToolTip(hint);
        }
        actions.at(metal)->setVisible(caption.has_value());
    }
}

void TORVMainForm::TranslateViews()
{
    TranslateToolkitTexts();
    m_views->Retranslate();
    UpdateStatusBarTotals();
}
