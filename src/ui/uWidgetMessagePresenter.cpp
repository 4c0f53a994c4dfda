#include "uWidgetMessagePresenter.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHash>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

QMessageBox::Icon IconOf(TMsgDlgType type)
{
    switch (type) {
    case mtWarning:
        return QMessageBox::Warning;
    case mtError:
        return QMessageBox::Critical;
    case mtInformation:
        return QMessageBox::Information;
    case mtConfirmation:
        return QMessageBox::Question;
    case mtCustom:
        break;
    }
    return QMessageBox::NoIcon;
}

// The platform's caption of a box whose caller gave none.
QString DefaultCaption(TMsgDlgType type)
{
    switch (type) {
    case mtWarning:
        return u"Warning"_s;
    case mtError:
        return u"Error"_s;
    case mtInformation:
        return u"Information"_s;
    case mtConfirmation:
        return u"Confirm"_s;
    case mtCustom:
        break;
    }
    return QGuiApplication::applicationDisplayName();
}

QPushButton* AddButton(QMessageBox& box, TMsgDlgBtn button)
{
    switch (button) {
    case mbYes:
        return box.addButton(QMessageBox::Yes);
    case mbNo:
        return box.addButton(QMessageBox::No);
    case mbOK:
        return box.addButton(QMessageBox::Ok);
    case mbCancel:
        return box.addButton(QMessageBox::Cancel);
    case mbAbort:
        return box.addButton(QMessageBox::Abort);
    case mbRetry:
        return box.addButton(QMessageBox::Retry);
    case mbIgnore:
        return box.addButton(QMessageBox::Ignore);
    case mbAll:
        return box.addButton(u"&All"_s, QMessageBox::YesRole);
    case mbNoToAll:
        return box.addButton(QMessageBox::NoToAll);
    case mbYesToAll:
        return box.addButton(QMessageBox::YesToAll);
    case mbHelp:
        return box.addButton(QMessageBox::Help);
    case mbClose:
        return box.addButton(QMessageBox::Close);
    }
    return nullptr;
}

} // namespace

int TWidgetMessagePresenter::Present(const TMessageBoxRequest& request)
{
    QMessageBox box(QApplication::activeWindow());
    box.setIcon(IconOf(request.Type));
    box.setText(request.Text);
    box.setWindowTitle(request.Caption.isEmpty() ? DefaultCaption(request.Type) : request.Caption);

    QHash<QAbstractButton*, int> results;
    for (const TMsgDlgButtonInfo& info : MsgDlgButtonInfo) {
        if (!request.Buttons.testFlag(info.Button)) {
            continue;
        }
        QPushButton* button = AddButton(box, info.Button);
        if (button == nullptr) {
            continue;
        }
        results.insert(button, info.Result);
        for (const auto& [which, text] : request.ButtonTexts) {
            if (which == info.Button) {
                button->setText(text);
            }
        }
        if (info.Button == request.DefaultButton) {
            box.setDefaultButton(button);
        }
    }
    box.exec();
    // A box closed without a button (its close button, Escape without a cancel button) is a cancel.
    return results.value(box.clickedButton(), mrCancel);
}
