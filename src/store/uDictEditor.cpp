#include "uDictEditor.h"

#include "uDictionaries.h"
#include "uZTStrings.h"

using namespace Qt::StringLiterals;

namespace {

TEditDictionaryDialogRunner* g_runner = nullptr;

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

} // namespace

void TEditDictionaryController::SetDictionary(const TDict& dict)
{
    m_lines = DictLines(dict.Value);
    m_default = dict.Default;
}

void TEditDictionaryController::SetFieldName(const QString& name)
{
    m_fieldName = name;
}

void TEditDictionaryController::SetMemoText(const QString& text)
{
    m_lines = DictLines(text);
}

QString TEditDictionaryController::MemoText() const
{
    return DictText(m_lines);
}

bool TEditDictionaryController::ResetToDefault()
{
    if (MessageDlgZT(ResetToDefaultsConfText(), mtConfirmation, mbYes | mbNo, mbNo) != mrYes) {
        return false;
    }
    m_lines = DictLines(m_default);
    return true;
}

void TEditDictionaryController::Ok()
{
    for (qsizetype i = m_lines.size() - 1; i >= 0; --i) {
        if (m_lines.at(i).trimmed().isEmpty()) {
            m_lines.removeAt(i);
        }
    }
    m_result = mrOk;
}

void TEditDictionaryController::Cancel()
{
    m_result = mrCancel;
}

QString TEditDictionaryController::CaptionText()
{
    return TextOr(u"cSEditDictDlgCaption"_s, u"Edit dictionary"_s);
}

QString TEditDictionaryController::ResetToDefaultsText()
{
    return TextOr(u"cSEditDictDlgResetToDefaults"_s, u"Reset to defaults"_s);
}

QString TEditDictionaryController::DescText()
{
    return TextOr(
        u"cSEditDictDlgDesc"_s,
        u"In this dialog you can change what will appear in combo-box related to the following field:"_s);
}

QString TEditDictionaryController::ResetToDefaultsConfText()
{
    return TextOr(u"cSEditDictDlgResetToDefaultsConf"_s,
                  u"Are you sure you want to reset this dictionary to its default values?"_s);
}

TEditDictionaryDialogRunner* SetEditDictionaryDialogRunner(TEditDictionaryDialogRunner* runner)
{
    TEditDictionaryDialogRunner* previous = g_runner;
    g_runner = runner;
    return previous;
}

TEditDictionaryDialogRunner* EditDictionaryDialogRunner()
{
    return g_runner;
}

bool EditDictionary(TDict& dict, const QString& fieldName, QStringList& comboItems)
{
    TEditDictionaryController controller;
    controller.SetDictionary(dict);
    controller.SetFieldName(fieldName);
    const int result = g_runner ? g_runner->Run(controller) : mrCancel;
    if (result != mrOk) {
        return false;
    }
    if (controller.Result() != mrOk) {
        // A runner that ends with OK without going through the button still gets its rule.
        controller.Ok();
    }
    const QString text = controller.MemoText();
    comboItems = DictLines(text);
    dict.Value = text;
    SaveSettings();
    return true;
}
