#include "frmEditSimpleDictionary.h"

#include <QApplication>
#include <QBoxLayout>
#include <QFont>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

TEditSimpleDictionaryForm::TEditSimpleDictionaryForm(QWidget* owner)
    : TAbstractLayoutForm(owner), m_liDesc(new QLabel(lgContainer())), m_liField(new QLabel(lgContainer())),
      m_memo(new QPlainTextEdit(lgContainer())), m_btnResetToDefault(new QPushButton(lgBottomButtons()))
{
    m_liDesc->setObjectName(u"liDesc"_s);
    m_liField->setObjectName(u"liField"_s);
    m_memo->setObjectName(u"Memo"_s);
    m_btnResetToDefault->setObjectName(u"btnResetToDefault"_s);

    m_liDesc->setWordWrap(true);
    QFont bold = m_liField->font();
    bold.setBold(true);
    m_liField->setFont(bold);
    m_memo->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_memo->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_memo->setTabChangesFocus(true);

    ContainerLayout()->addWidget(m_liDesc);
    ContainerLayout()->addWidget(m_liField);
    ContainerLayout()->addWidget(m_memo, 1);
    if (auto* buttons = qobject_cast<QBoxLayout*>(lgBottomButtons()->layout())) {
        buttons->insertWidget(0, m_btnResetToDefault);
    }
    m_btnResetToDefault->setAutoDefault(false);
    connect(m_btnResetToDefault, &QPushButton::clicked, this,
            &TEditSimpleDictionaryForm::ResetToDefaultClicked);

    TEditSimpleDictionaryForm::ApplyTexts();
}

void TEditSimpleDictionaryForm::SetDictionary(const TDict& dict)
{
    m_controller.SetDictionary(dict);
    ShowLines();
}

void TEditSimpleDictionaryForm::SetFieldName(const QString& name)
{
    m_controller.SetFieldName(name);
    m_liField->setText(name);
}

void TEditSimpleDictionaryForm::SetController(const TEditDictionaryController& controller)
{
    m_controller = controller;
    m_liField->setText(m_controller.FieldName());
    ShowLines();
}

TEditDictionaryController TEditSimpleDictionaryForm::Controller() const
{
    return m_controller;
}

void TEditSimpleDictionaryForm::ApplyTexts()
{
    TAbstractLayoutForm::ApplyTexts();
    setWindowTitle(TEditDictionaryController::CaptionText());
    m_btnResetToDefault->setText(TEditDictionaryController::ResetToDefaultsText());
    m_liDesc->setText(TEditDictionaryController::DescText());
}

void TEditSimpleDictionaryForm::accept()
{
    TakeMemo();
    m_controller.Ok();
    ShowLines();
    TAbstractLayoutForm::accept();
}

void TEditSimpleDictionaryForm::reject()
{
    m_controller.Cancel();
    TAbstractLayoutForm::reject();
}

void TEditSimpleDictionaryForm::ResetToDefaultClicked()
{
    TakeMemo();
    if (m_controller.ResetToDefault()) {
        ShowLines();
    }
}

void TEditSimpleDictionaryForm::ShowLines()
{
    m_memo->setPlainText(m_controller.MemoLines().join(u'\n'));
}

void TEditSimpleDictionaryForm::TakeMemo()
{
    m_controller.SetMemoText(m_memo->toPlainText());
}

int TWidgetEditDictionaryDialogRunner::Run(TEditDictionaryController& controller)
{
    TEditSimpleDictionaryForm form(QApplication::activeWindow());
    form.SetController(controller);
    const int result = form.exec() == QDialog::Accepted ? mrOk : mrCancel;
    controller = form.Controller();
    return result;
}
