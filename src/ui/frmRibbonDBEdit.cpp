#include "frmRibbonDBEdit.h"

#include "dmStyles.h"
#include "uEditDataController.h"
#include "uRibbon.h"
#include "uRibbonButton.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uRibbonQuickAccessBar.h"
#include "uRibbonStyle.h"
#include "uThemes.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QShowEvent>
#include <QStatusBar>
#include <QStyle>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const char16_t* key, const char16_t* fallback)
{
    const QString text = key ? GetText(QString::fromUtf16(key)) : QString();
    return text.isEmpty() ? QString::fromUtf16(fallback) : text;
}

QStyle::StandardPixmap GlyphOf(TEditCommand command)
{
    switch (command) {
    case TEditCommand::SaveAndClose:
        return QStyle::SP_DialogSaveButton;
    case TEditCommand::Cancel:
    case TEditCommand::CancelQuiet:
        return QStyle::SP_DialogCancelButton;
    case TEditCommand::New:
        return QStyle::SP_FileIcon;
    case TEditCommand::Del:
        return QStyle::SP_TrashIcon;
    case TEditCommand::First:
        return QStyle::SP_MediaSkipBackward;
    case TEditCommand::Prev:
        return QStyle::SP_MediaSeekBackward;
    case TEditCommand::Next:
        return QStyle::SP_MediaSeekForward;
    case TEditCommand::Last:
        return QStyle::SP_MediaSkipForward;
    }
    return QStyle::SP_FileIcon;
}

} // namespace

TAbstractRibbonDBEditForm::TAbstractRibbonDBEditForm(QWidget* owner)
    : QDialog(owner), m_controller(std::make_unique<TRibbonDBEditController>(this))
{
    setObjectName(u"RibbonDBEditForm"_s);
    setModal(true);
    setSizeGripEnabled(true);
    CreateActions();
    CreateRibbon();

    m_container = new QWidget(this);
    m_container->setObjectName(u"lgContainer"_s);

    m_statusBar = new QStatusBar(this);
    m_statusBar->setObjectName(u"StatusBar"_s);
    m_statusBar->setSizeGripEnabled(false);
    m_statusText = new QLabel(m_statusBar);
    m_statusText->setObjectName(u"StatusBarText"_s);
    m_keyboardState = new QLabel(m_statusBar);
    m_keyboardState->setObjectName(u"StatusBarKeyboardState"_s);
    m_statusBar->addWidget(m_statusText, 1);
    m_statusBar->addPermanentWidget(m_keyboardState);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_ribbon);
    layout->addWidget(m_container, 1);
    layout->addWidget(m_statusBar);

    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance(thread())) {
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
                &TAbstractRibbonDBEditForm::UpdateActions);
    }
    resize(760, 560);
}

TAbstractRibbonDBEditForm::~TAbstractRibbonDBEditForm() = default;

void TAbstractRibbonDBEditForm::SetController(std::unique_ptr<TRibbonDBEditController> controller)
{
    TEditDataController* data = m_controller->DataController();
    m_controller = std::move(controller);
    m_controller->SetHost(this);
    m_controller->SetDataController(data);
}

TEditDataController* TAbstractRibbonDBEditForm::DataController() const
{
    return m_controller->DataController();
}

void TAbstractRibbonDBEditForm::SetDataController(TEditDataController* controller)
{
    m_controller->SetDataController(controller);
    UpdateActions();
}

void TAbstractRibbonDBEditForm::CreateActions()
{
    for (const TEditCommandInfo& info : EditCommands()) {
        auto* action = new QAction(this);
        action->setObjectName(QString::fromUtf16(info.Name));
        action->setShortcut(EditCommandShortcut(info.Command));
        action->setShortcutContext(Qt::WindowShortcut);
        action->setIcon(style()->standardIcon(GlyphOf(info.Command)));
        action->setText(QString::fromUtf16(info.English));
        const TEditCommand command = info.Command;
        connect(action, &QAction::triggered, this, [this, command] {
            PostEditorValues();
            m_controller->Execute(command);
            UpdateActions();
        });
        addAction(action);
        m_actions.insert(int(command), action);
    }
}

void TAbstractRibbonDBEditForm::CreateRibbon()
{
    m_ribbon = new TRibbon(this);
    m_ribbon->setObjectName(u"Ribbon"_s);
    m_ribbon->setApplicationButtonVisible(false);
    m_ribbon->setUpdatesWindowTitle(true);
    TRibbonPage* general = m_ribbon->addTab(u"rtGeneral"_s, u"General"_s);
    TRibbonGroup* actions = general->addGroup(u"BarActions"_s, u"Actions"_s);
    actions->addButton(Action(TEditCommand::SaveAndClose))->setObjectName(u"btnSaveAndClose"_s);
    actions->addButton(Action(TEditCommand::Cancel))->setObjectName(u"btnCancel"_s);
    actions->addButton(Action(TEditCommand::New))->setObjectName(u"btnNew"_s);
    actions->addButton(Action(TEditCommand::Del))->setObjectName(u"btnDelete"_s);
    TRibbonGroup* nav = general->addGroup(u"BarNextPrev"_s, u"Navigation"_s);
    nav->addButton(Action(TEditCommand::First))->setObjectName(u"btnFirst"_s);
    nav->addButton(Action(TEditCommand::Prev))->setObjectName(u"btnPrior"_s);
    nav->addButton(Action(TEditCommand::Next))->setObjectName(u"btnNext"_s);
    nav->addButton(Action(TEditCommand::Last))->setObjectName(u"btnLast"_s);
    TRibbonQuickAccessBar* quick = m_ribbon->quickAccessBar();
    quick->setObjectName(u"BarMainMenu"_s);
    for (TEditCommand command : {TEditCommand::SaveAndClose, TEditCommand::First, TEditCommand::Prev,
                                 TEditCommand::Next, TEditCommand::Last}) {
        quick->addAction(Action(command));
    }
    m_ribbon->setCurrentTab(u"rtGeneral"_s);
}

QAction* TAbstractRibbonDBEditForm::Action(TEditCommand command) const
{
    return m_actions.value(int(command));
}

QAction* TAbstractRibbonDBEditForm::Action(const QString& name) const
{
    for (QAction* action : m_actions) {
        if (action->objectName() == name) {
            return action;
        }
    }
    return nullptr;
}

void TAbstractRibbonDBEditForm::UpdateActions()
{
    for (const TEditCommandInfo& info : EditCommands()) {
        if (const std::optional<bool> enabled = m_controller->CommandEnabled(info.Command)) {
            Action(info.Command)->setEnabled(*enabled);
        }
    }
}

void TAbstractRibbonDBEditForm::TranslateForm()
{
    setLayoutDirection(LanguageIsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    for (const TEditCommandInfo& info : EditCommands()) {
        if (info.TextKey) {
            QAction* action = Action(info.Command);
            action->setText(TextOr(info.TextKey, info.English));
            QString tip = action->text();
            if (!action->shortcut().isEmpty()) {
                tip += u" ("_s + action->shortcut().toString(QKeySequence::NativeText) + u')';
            }
            action->setToolTip(tip);
        }
    }
    const QString caption = TextOr(u"cSRibbonEditDlgCaption", u"Edit");
    m_ribbon->setApplicationName(caption);
    m_ribbon->setTabCaption(u"rtGeneral"_s, TextOr(u"cSRibbonEditDlgTabGeneral", u"General"));
    if (TRibbonPage* page = m_ribbon->tab(u"rtGeneral"_s)) {
        if (TRibbonGroup* group = page->group(u"BarActions"_s)) {
            group->setCaption(TextOr(u"cSRibbonEditDlgBarActions", u"Actions"));
        }
        if (TRibbonGroup* group = page->group(u"BarNextPrev"_s)) {
            group->setCaption(TextOr(u"cSRibbonEditDlgBarNav", u"Navigation"));
        }
    }
}

void TAbstractRibbonDBEditForm::ApplyFormTheme()
{
    const TThemeLook& look = TDM_Styles::Current();
    m_ribbon->setRibbonStyle(RibbonStyleFromNumber(look.RibbonStyle));
    m_ribbon->setColoredTabRow(look.Row.Scheme == TColorScheme::Colorful);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, look.WindowBackground);
    setPalette(palette);
}

void TAbstractRibbonDBEditForm::Prepare()
{
    if (m_prepared) {
        return;
    }
    m_prepared = true;
    SetupForm();
    ApplyFormTheme();
    TranslateForm();
    UpdateActions();
}

void TAbstractRibbonDBEditForm::SetDocumentName(const QString& name)
{
    m_ribbon->setDocumentName(name);
}

void TAbstractRibbonDBEditForm::setVisible(bool visible)
{
    if (visible) {
        Prepare();
    }
    QDialog::setVisible(visible);
}

void TAbstractRibbonDBEditForm::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous()) {
        m_closing = false;
        LoadRecord();
        UpdateActions();
        UpdateKeyboardState();
    }
}

bool TAbstractRibbonDBEditForm::event(QEvent* event)
{
    if (event->type() == QEvent::KeyRelease || event->type() == QEvent::WindowActivate) {
        UpdateKeyboardState();
    }
    return QDialog::event(event);
}

void TAbstractRibbonDBEditForm::UpdateKeyboardState()
{
    const Qt::KeyboardModifiers modifiers = QGuiApplication::queryKeyboardModifiers();
    QStringList held;
    if (modifiers & Qt::ShiftModifier) {
        held << u"SHIFT"_s;
    }
    if (modifiers & Qt::ControlModifier) {
        held << u"CTRL"_s;
    }
    if (modifiers & Qt::AltModifier) {
        held << u"ALT"_s;
    }
    m_keyboardState->setText(held.join(u' '));
}

void TAbstractRibbonDBEditForm::CloseWithResult(TEditCloseResult result)
{
    m_closing = true;
    done(result == TEditCloseResult::Ok ? QDialog::Accepted : QDialog::Rejected);
}

void TAbstractRibbonDBEditForm::reject()
{
    if (m_closing) {
        QDialog::reject();
        return;
    }
    PostEditorValues();
    const std::optional<TEditCloseResult> result = m_controller->CloseQuery();
    if (result) {
        CloseWithResult(*result);
    }
}
