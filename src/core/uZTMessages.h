#pragma once

#include <QFlags>
#include <QList>
#include <QPair>
#include <QString>

// The message box that all parts of the program use, behind a presenter that the user interface
// installs (tests install their own and answer without a screen).

enum TMsgDlgType
{
    mtWarning,
    mtError,
    mtInformation,
    mtConfirmation,
    mtCustom
};

// The buttons, in the order their texts are applied.
enum TMsgDlgBtn
{
    mbYes = 0x0001,
    mbNo = 0x0002,
    mbOK = 0x0004,
    mbCancel = 0x0008,
    mbAbort = 0x0010,
    mbRetry = 0x0020,
    mbIgnore = 0x0040,
    mbAll = 0x0080,
    mbNoToAll = 0x0100,
    mbYesToAll = 0x0200,
    mbHelp = 0x0400,
    mbClose = 0x0800
};
Q_DECLARE_FLAGS(TMsgDlgButtons, TMsgDlgBtn)
Q_DECLARE_OPERATORS_FOR_FLAGS(TMsgDlgButtons)

// The result of a box: the pressed button's number.
enum TModalResult : int
{
    mrNone = 0,
    mrOk = 1,
    mrCancel = 2,
    mrAbort = 3,
    mrRetry = 4,
    mrIgnore = 5,
    mrYes = 6,
    mrNo = 7,
    mrClose = 8,
    mrHelp = 9,
    mrAll = 12,
    mrNoToAll = 13,
    mrYesToAll = 14
};

// All buttons in the order of TMsgDlgBtn, with their language keys and results.
struct TMsgDlgButtonInfo
{
    TMsgDlgBtn Button;
    const char16_t* TextKey;
    TModalResult Result;
};
extern const TMsgDlgButtonInfo MsgDlgButtonInfo[12];

TModalResult ModalResultOf(TMsgDlgBtn button);

// One box to show. Caption is empty when the box keeps its own (no caption given, or mtCustom).
// ButtonTexts holds the language's text for each button of the box that has one, in button order;
// a button without an entry keeps the platform's word.
struct TMessageBoxRequest
{
    QString Text;
    QString Caption;
    TMsgDlgType Type = mtInformation;
    TMsgDlgButtons Buttons;
    TMsgDlgBtn DefaultButton = mbOK;
    QList<QPair<TMsgDlgBtn, QString>> ButtonTexts;
};

// Shows a box modally and returns the TModalResult of the pressed button.
class TMessagePresenter
{
public:
    virtual ~TMessagePresenter() = default;
    virtual int Present(const TMessageBoxRequest& request) = 0;
};

// Installs the presenter (not owned); nullptr removes it. Returns the one it replaces. Without a
// presenter every box answers with its default button.
TMessagePresenter* SetMessagePresenter(TMessagePresenter* presenter);

// The full form: logs the call, sets the caption unless it is empty or type is mtCustom, and the
// button texts cSbtnYes .. cSbtnClose of the language where it has them.
int MessageDlgZT(const QString& text, const QString& caption, TMsgDlgType type, TMsgDlgButtons buttons,
                 TMsgDlgBtn defaultButton);
// The caption by type: SMsgDlgWarning, SMsgDlgError, SMsgDlgInformation, SMsgDlgConfirm; none for
// mtCustom.
int MessageDlgZT(const QString& text, TMsgDlgType type, TMsgDlgButtons buttons, TMsgDlgBtn defaultButton);
