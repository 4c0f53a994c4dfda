#include "frmMain.h"

#include "dmInternalData.h"
#include "frmDBProperties.h"
#include "frmDebug.h"
#include "uDebugLog.h"
#include "uSplashText.h"
#include "uSpot.h"
#include "uZTLog.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

const std::array<const char16_t*, MetalCount> cSpotButtonNames = {
    u"btnSpotGold",      u"btnSpotSilver",  u"btnSpotPlatinum",
    u"btnSpotPalladium", u"btnSpotRhodium", u"btnSpotCopper",
};

// The platform's file dialogs for the database commands.
class TWidgetFileDialogs : public TFileDialogSeam
{
public:
    explicit TWidgetFileDialogs(QWidget* owner) : m_owner(owner) {}

    QString ExecuteOpenDialog(const TFileDialogRequest& request) override
    {
        return Execute(request, QFileDialog::AcceptOpen);
    }

    QString ExecuteSaveDialog(const TFileDialogRequest& request) override
    {
        return Execute(request, QFileDialog::AcceptSave);
    }

private:
    QString Execute(const TFileDialogRequest& request, QFileDialog::AcceptMode mode)
    {
        QFileDialog dialog(m_owner);
        dialog.setAcceptMode(mode);
        dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile
                                                           : QFileDialog::AnyFile);
        dialog.setOption(QFileDialog::DontConfirmOverwrite, true);
        dialog.setNameFilters(DialogFilterToQt(request.Filter).split(u";;"_s));
        dialog.setDefaultSuffix(request.DefaultExt);
        if (!request.InitialDir.isEmpty()) {
            dialog.setDirectory(request.InitialDir);
        }
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
            return {};
        }
        return dialog.selectedFiles().constFirst();
    }

    QWidget* m_owner;
};

// A small arrow for the spot buttons: green and pointing up for a rise, red and down for a fall.
QIcon DrawSpotGlyph(TSpotGlyph glyph)
{
    constexpr int size = 16;
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath arrow;
    if (glyph == TSpotGlyph::Rise) {
        arrow.moveTo(8, 2);
        arrow.lineTo(14, 9);
        arrow.lineTo(10.5, 9);
        arrow.lineTo(10.5, 14);
        arrow.lineTo(5.5, 14);
        arrow.lineTo(5.5, 9);
        arrow.lineTo(2, 9);
        painter.setBrush(QColor(0x2E, 0x9E, 0x44));
        painter.setPen(QPen(QColor(0x1B, 0x6B, 0x2C), 1));
    } else {
        arrow.moveTo(8, 14);
        arrow.lineTo(14, 7);
        arrow.lineTo(10.5, 7);
        arrow.lineTo(10.5, 2);
        arrow.lineTo(5.5, 2);
        arrow.lineTo(5.5, 7);
        arrow.lineTo(2, 7);
        painter.setBrush(QColor(0xD2, 0x3A, 0x2E));
        painter.setPen(QPen(QColor(0x8E, 0x22, 0x1A), 1));
    }
    arrow.closeSubpath();
    painter.drawPath(arrow);
    painter.end();
    return QIcon(pixmap);
}

} // namespace

TORVMainForm::TORVMainForm(TDM_InternalData& data, QWidget* parent)
    : QMainWindow(parent), m_data(data), m_platformDialogs(std::make_unique<TWidgetFileDialogs>(this)),
      m_controller(new TMainController(&data, m_platformDialogs.get(), this)),
      m_riseIcon(DrawSpotGlyph(TSpotGlyph::Rise)), m_fallIcon(DrawSpotGlyph(TSpotGlyph::Fall))
{
    setObjectName(u"ORVMainForm"_s);
    CreateActions();
    CreateBars();

    // Settings and layout: the stored geometry; the left and top stay what was read.
    ShowSplashText(GetText(u"cSSplashLoadingSettings"_s));
    move(MainFormLeft, MainFormTop);
    resize(MainFormWidth, MainFormHeight);
    m_maximized = MainFormMaximized;

    TranslateUI();

    SpotPrices().OnLoaded = [this](TSpotPrices*) { SpotPricesLoaded(); };

    connect(m_controller, &TMainController::DocumentNameChanged, this, &TORVMainForm::ShowDocumentName);
    connect(m_controller, &TMainController::DatabaseChanged, this, [this] {
        UpdateItemCount();
        UpdateActions();
    });
    connect(m_data.ADConnection, &TDBConnection::afterConnect, this, &TORVMainForm::UpdateActions);
    connect(m_data.ADConnection, &TDBConnection::afterDisconnect, this, [this] {
        UpdateActions();
        UpdateItemCount();
    });
    connect(m_data.qDS_Items, &TDBDataset::stateChanged, this, [this] {
        UpdateActions();
        UpdateItemCount();
    });
    connect(m_data.qDS_Items, &TDBDataset::afterReset, this, &TORVMainForm::UpdateItemCount);
    connect(m_data.qDS_Items, &TDBDataset::afterInsertRow, this, &TORVMainForm::UpdateItemCount);
    connect(m_data.qDS_Items, &TDBDataset::afterRemoveRow, this, &TORVMainForm::UpdateItemCount);
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &TORVMainForm::UpdateActions);
    }
    UpdateActions();
    UpdateItemCount();
}

TORVMainForm::~TORVMainForm()
{
    SpotPrices().OnLoaded = nullptr;
}

void TORVMainForm::SetFileDialogs(TFileDialogSeam* dialogs)
{
    m_controller->SetFileDialogs(dialogs ? dialogs : m_platformDialogs.get());
}

QToolButton* TORVMainForm::SpotButton(int metal) const
{
    if (metal < 0 || metal >= MetalCount) {
        return nullptr;
    }
    return m_spotButtons[static_cast<std::size_t>(metal)];
}

QIcon TORVMainForm::SpotGlyphIcon(TSpotGlyph glyph) const
{
    return glyph == TSpotGlyph::Fall ? m_fallIcon : m_riseIcon;
}

void TORVMainForm::CreateActions()
{
    auto makeAction = [this](const QString& name) {
        auto* action = new QAction(this);
        action->setObjectName(name);
        return action;
    };
    m_actDBNew = makeAction(u"actDBNew"_s);
    m_actDBOpen = makeAction(u"actDBOpen"_s);
    m_actDBSaveAs = makeAction(u"actDBSaveAs"_s);
    m_actDBProperties = makeAction(u"actDBProperties"_s);
    m_actExit = makeAction(u"actExit"_s);
    m_actExit->setShortcut(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_X));

    const QStyle* appStyle = style();
    m_actDBNew->setIcon(appStyle->standardIcon(QStyle::SP_FileIcon));
    m_actDBOpen->setIcon(appStyle->standardIcon(QStyle::SP_DialogOpenButton));
    m_actDBSaveAs->setIcon(appStyle->standardIcon(QStyle::SP_DialogSaveButton));
    m_actDBProperties->setIcon(appStyle->standardIcon(QStyle::SP_FileDialogInfoView));
    m_actExit->setIcon(appStyle->standardIcon(QStyle::SP_DialogCloseButton));

    connect(m_actDBNew, &QAction::triggered, m_controller, &TMainController::DBNew);
    connect(m_actDBOpen, &QAction::triggered, m_controller, &TMainController::DBOpen);
    connect(m_actDBSaveAs, &QAction::triggered, m_controller, &TMainController::DBSaveAs);
    connect(m_actDBProperties, &QAction::triggered, this, &TORVMainForm::DBPropertiesExecute);
    connect(m_actExit, &QAction::triggered, this, &QWidget::close);
}

void TORVMainForm::CreateBars()
{
    m_mnuDatabase = menuBar()->addMenu(QString());
    m_mnuDatabase->setObjectName(u"mnuDatabase"_s);
    m_mnuDatabase->addAction(m_actDBNew);
    m_mnuDatabase->addAction(m_actDBOpen);
    m_mnuDatabase->addAction(m_actDBSaveAs);
    m_mnuDatabase->addSeparator();
    m_mnuDatabase->addAction(m_actDBProperties);
    m_mnuDatabase->addSeparator();
    m_mnuDatabase->addAction(m_actExit);

    m_mnuLanguage = menuBar()->addMenu(QString());
    m_mnuLanguage->setObjectName(u"mnuLanguage"_s);
    m_languageGroup = new QActionGroup(this);
    m_languageGroup->setExclusive(true);
    connect(m_mnuLanguage, &QMenu::aboutToShow, this, &TORVMainForm::FillLanguageMenu);

    m_barDBMgmt = addToolBar(QString());
    m_barDBMgmt->setObjectName(u"BarDBMgmt"_s);
    m_barDBMgmt->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_barDBMgmt->setMovable(false);
    m_barDBMgmt->addAction(m_actDBNew);
    m_barDBMgmt->addAction(m_actDBOpen);
    m_barDBMgmt->addAction(m_actDBSaveAs);
    m_barDBMgmt->addAction(m_actDBProperties);

    m_barSpot = new QToolBar(this);
    m_barSpot->setObjectName(u"BarSpot"_s);
    m_barSpot->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_barSpot->setIconSize(QSize(16, 16));
    m_lSpotPrices = new QLabel(m_barSpot);
    m_lSpotPrices->setObjectName(u"lSpotPrices"_s);
    m_barSpot->addWidget(m_lSpotPrices);
    for (int metal = 0; metal < MetalCount; ++metal) {
        auto* button = new QToolButton(m_barSpot);
        button->setObjectName(QString::fromUtf16(cSpotButtonNames[static_cast<std::size_t>(metal)]));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setAutoRaise(true);
        m_barSpot->addWidget(button);
        m_spotButtons[static_cast<std::size_t>(metal)] = button;
    }
    statusBar()->addWidget(m_barSpot);

    m_lItems = new QLabel(this);
    m_lItems->setObjectName(u"lItems"_s);
    m_lItems->setAlignment(Qt::AlignCenter);
    QFont font = m_lItems->font();
    font.setPointSize(font.pointSize() + 6);
    m_lItems->setFont(font);
    setCentralWidget(m_lItems);
}

void TORVMainForm::TranslateUI()
{
    ShowSplashText(GetText(u"cSSplashLoadingTexts"_s));
    setUpdatesEnabled(false);

    const Qt::LayoutDirection direction = LanguageIsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    QGuiApplication::setLayoutDirection(direction);
    setLayoutDirection(direction);

    m_data.TranslateFieldLabels();

    m_actDBNew->setText(GetText(u"cSMainactDBNew"_s));
    m_actDBOpen->setText(GetText(u"cSMainactDBOpen"_s));
    m_actDBSaveAs->setText(GetText(u"cSMainactDBSaveAs"_s));
    m_actDBProperties->setText(GetText(u"cSMainactDBProperties"_s));
    m_actExit->setText(GetText(u"cSMainactExit"_s));
    m_mnuDatabase->setTitle(GetText(u"cSMainTSDBMGMT"_s));
    m_barDBMgmt->setWindowTitle(GetText(u"cSMainTSDBMGMT"_s));
    m_mnuLanguage->setTitle(GetText(u"cSOptionsLanguage"_s));
    m_lSpotPrices->setText(GetText(u"cSMainlSpotPrices"_s) + u' ');
    // Buttons that have shown no price yet keep the metal's name; the others follow the list.
    for (int metal = 0; metal < MetalCount; ++metal) {
        if (!m_spotShown[static_cast<std::size_t>(metal)]) {
            m_spotButtons[static_cast<std::size_t>(metal)]->setText(MetalDisplayName(metal));
        }
    }
    ApplySpotButtons();
    FillLanguageMenu();
    UpdateItemCount();
    ShowDocumentName(m_controller->DocumentName());

    setUpdatesEnabled(true);
}

void TORVMainForm::FillLanguageMenu()
{
    m_mnuLanguage->clear();
    const QList<QAction*> old = m_languageGroup->actions();
    for (QAction* action : old) {
        m_languageGroup->removeAction(action);
        action->deleteLater();
    }
    const QString current = CurrentLanguage();
    for (const TLang& language : ListLanguages()) {
        auto* action = new QAction(language.Name, m_languageGroup);
        action->setData(language.FileName);
        action->setCheckable(true);
        action->setChecked(language.FileName.compare(current, Qt::CaseInsensitive) == 0);
        action->setIcon(QIcon(QPixmap::fromImage(language.FlagPicture())));
        const QString fileName = language.FileName;
        connect(action, &QAction::triggered, this, [this, fileName] { SwitchLanguage(fileName); });
        m_mnuLanguage->addAction(action);
    }
}

bool TORVMainForm::SwitchLanguage(const QString& fileName)
{
    if (!LoadLanguage(fileName)) {
        return false;
    }
    TranslateUI();
    return true;
}

void TORVMainForm::UpdateActions()
{
    const bool connected = m_controller->Connected();
    m_actDBNew->setEnabled(MainCommandEnabled(TMainCommand::DBNew, connected));
    m_actDBOpen->setEnabled(MainCommandEnabled(TMainCommand::DBOpen, connected));
    m_actDBSaveAs->setEnabled(MainCommandEnabled(TMainCommand::DBSaveAs, connected));
    m_actDBProperties->setEnabled(MainCommandEnabled(TMainCommand::DBProperties, connected));
    m_actExit->setEnabled(MainCommandEnabled(TMainCommand::Exit, connected));
}

void TORVMainForm::SpotPricesLoaded()
{
    ApplySpotButtons();
    m_controller->RefreshItemsForNewPrices();
}

void TORVMainForm::ApplySpotButtons()
{
    m_barSpot->setUpdatesEnabled(false);
    for (int metal = 0; metal < MetalCount; ++metal) {
        const std::optional<TSpotButtonText> text = SpotButtonTextFor(SpotPrices(), metal, Currency);
        if (!text) {
            continue;
        }
        QToolButton* button = m_spotButtons[static_cast<std::size_t>(metal)];
        button->setText(text->Caption);
        button->setToolTip(text->Hint);
        button->setIcon(SpotGlyphIcon(text->Glyph));
        m_spotShown[static_cast<std::size_t>(metal)] = true;
    }
    m_barSpot->setUpdatesEnabled(true);
}

void TORVMainForm::ShowDocumentName(const QString& name)
{
    const QString product = OEMInfo.Product;
    if (name.isEmpty()) {
        setWindowTitle(product);
    } else if (product.isEmpty()) {
        setWindowTitle(name);
    } else {
        setWindowTitle(name + u" - "_s + product);
    }
}

void TORVMainForm::UpdateItemCount()
{
    // While the rows of the collection are still to come, say so rather than that there are none.
    if (m_controller->ItemsPending()) {
        m_lItems->setText(GetText(u"cSSplashLoadingData"_s));
        return;
    }
    const int count = m_controller->ItemCount();
    m_lItems->setText(count > 0 ? QLocale().toString(count) : GetText(u"cSNoDataToDisplay"_s));
}

void TORVMainForm::DBPropertiesExecute()
{
    TDBPropertiesForm form(m_data, this);
    form.exec();
}

void TORVMainForm::FormShow()
{
    if (DebugMode.load()) {
        auto* sink = new TDebugLogSink(this);
        sink->ShowForm();
    }
    setWindowState(m_maximized ? (windowState() | Qt::WindowMaximized)
                               : (windowState() & ~Qt::WindowMaximized));
    m_controller->StartFirstSpotRefresh();
    // The file is opened and checked now (a damaged one fails here, as it would with its rows); the
    // rows are read once the window has painted. Should no paint come (a window that is never
    // exposed), they are read a moment later all the same.
    m_controller->ConnectLastDatabase(TRowFetch::Deferred);
    m_finishPending = true;
    if (m_painted) {
        QueueFinishFormShow();
    } else {
        QTimer::singleShot(cFirstPaintWaitMs, this, [this] {
            if (m_finishPending) {
                m_finishPending = false;
                FinishFormShow();
            }
        });
    }
}

void TORVMainForm::QueueFinishFormShow()
{
    // Queued: the paint reaches the screen first, and the rows come in order before the splash goes.
    m_finishPending = false;
    QMetaObject::invokeMethod(this, &TORVMainForm::FinishFormShow, Qt::QueuedConnection);
}

void TORVMainForm::FinishFormShow()
{
    // A spot reply that came in before this point found no rows to value; the rows are valued now,
    // at the prices held.
    m_controller->FetchPendingItems();
    QCoreApplication::postEvent(this, new QEvent(cWMReleaseSplash));
}

bool TORVMainForm::event(QEvent* event)
{
    if (event->type() == cWMReleaseSplash) {
        emit SplashReleaseRequested();
        return true;
    }
    const bool result = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && !m_painted && isVisible()) {
        m_painted = true;
        if (m_finishPending) {
            QueueFinishFormShow();
        }
    }
    return result;
}

void TORVMainForm::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (!m_shown && !event->spontaneous()) {
        m_shown = true;
        FormShow();
    }
}

void TORVMainForm::closeEvent(QCloseEvent* event)
{
    // Until the pending edits are posted the window stays; a failing post leaves it open and its
    // error reaches the application's error box.
    event->ignore();
    m_controller->CloseQuery();
    // Grid layouts would be stored here; the window size is already in its settings.
    event->accept();
    emit Closed();
}

void TORVMainForm::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (!isVisible() || !m_shown) {
        return;
    }
    MainFormMaximized = isMaximized();
    if (!isMaximized() && !isMinimized() && !isFullScreen()) {
        MainFormWidth = width();
        MainFormHeight = height();
    }
}

void TORVMainForm::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isVisible() && m_shown && !isMinimized()) {
        MainFormMaximized = isMaximized();
    }
}
