#include "uZTMessages.h"

#include "uZTLog.h"
#include "uZTStrings.h"

using namespace Qt::StringLiterals;

const TMsgDlgButtonInfo MsgDlgButtonInfo[12] = {
    {mbYes, u"cSbtnYes", mrYes},
    {mbNo, u"cSbtnNo", mrNo},
    {mbOK, u"cSbtnOK", mrOk},
    {mbCancel, u"cSbtnCancel", mrCancel},
    {mbAbort, u"cSbtnAbort", mrAbort},
    {mbRetry, u"cSbtnRetry", mrRetry},
    {mbIgnore, u"cSbtnIgnore", mrIgnore},
    {mbAll, u"cSbtnAll", mrAll},
    {mbNoToAll, u"cSbtnNoToAll", mrNoToAll},
    {mbYesToAll, u"cSbtnYesToAll", mrYesToAll},
    {mbHelp, u"cSbtnHelp", mrHelp},
    {mbClose, u"cSbtnClose", mrClose},
};

namespace {

TMessagePresenter* g_presenter = nullptr;

} // namespace

TModalResult ModalResultOf(TMsgDlgBtn button)
{
    for (const TMsgDlgButtonInfo& info : MsgDlgButtonInfo) {
        if (info.Button == button) {
            return info.Result;
        }
    }
    return mrNone;
}

TMessagePresenter* SetMessagePresenter(TMessagePresenter* presenter)
{
    TMessagePresenter* previous = g_presenter;
    g_presenter = presenter;
    return previous;
}

int MessageDlgZT(const QString& text, const QString& caption, TMsgDlgType type, TMsgDlgButtons buttons,
                 TMsgDlgBtn defaultButton)
{
    LogFormat(u"MessageDlgZT(\"%s\", \"%s\")"_s, {text, caption});

    TMessageBoxRequest request;
    request.Text = text;
    request.Type = type;
    request.Buttons = buttons;
    request.DefaultButton = defaultButton;
    if (!caption.isEmpty() && type != mtCustom) {
        request.Caption = caption;
    }
    for (const TMsgDlgButtonInfo& info : MsgDlgButtonInfo) {
        if (buttons.testFlag(info.Button)) {
            const QString buttonText = GetText(QString::fromUtf16(info.TextKey));
            if (!buttonText.isEmpty()) {
                request.ButtonTexts.append({info.Button, buttonText});
            }
        }
    }
    if (g_presenter == nullptr) {
        return ModalResultOf(defaultButton);
    }
    return g_presenter->Present(request);
}

int MessageDlgZT(const QString& text, TMsgDlgType type, TMsgDlgButtons buttons, TMsgDlgBtn defaultButton)
{
    QString caption;
    switch (type) {
    case mtWarning:
        caption = GetText(u"SMsgDlgWarning"_s);
        break;
    case mtError:
        caption = GetText(u"SMsgDlgError"_s);
        break;
    case mtInformation:
        caption = GetText(u"SMsgDlgInformation"_s);
        break;
    case mtConfirmation:
        caption = GetText(u"SMsgDlgConfirm"_s);
        break;
    case mtCustom:
        break;
    }
    return MessageDlgZT(text, caption, type, buttons, defaultButton);
}
