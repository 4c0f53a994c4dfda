#include "frmAbstractLayoutForm.h"

#include "uZTStrings.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPalette>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

// The reading direction of the current language, from its BiDiMode.
bool LanguageRightToLeft()
{
    return LanguageIsRightToLeft();
}

} // namespace

TAbstractLayoutForm::TAbstractLayoutForm(QWidget* owner)
    : QDialog(owner), m_lgContainer(new QWidget(this)), m_containerLayout(new QVBoxLayout(m_lgContainer)),
      m_lgBottomButtons(new QWidget(this)), m_btnOK(new QPushButton(m_lgBottomButtons)),
      m_btnCancel(new QPushButton(m_lgBottomButtons))
{
    m_lgContainer->setObjectName(u"lgContainer"_s);
    m_lgBottomButtons->setObjectName(u"lgBottomButtons"_s);
    m_btnOK->setObjectName(u"btnOK"_s);
    m_btnCancel->setObjectName(u"btnCancel"_s);
    m_containerLayout->setContentsMargins(0, 0, 0, 0);

    auto* buttons = new QHBoxLayout(m_lgBottomButtons);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->addStretch(1);
    buttons->addWidget(m_btnOK);
    buttons->addWidget(m_btnCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_lgContainer, 1);
    layout->addWidget(m_lgBottomButtons);

    m_btnOK->setDefault(true);
    m_btnOK->setAutoDefault(true);
    m_btnCancel->setAutoDefault(false);
    connect(m_btnOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_btnCancel, &QPushButton::clicked, this, &QDialog::reject);

    resize(500, 350);
    TAbstractLayoutForm::ApplyStyle();
    TAbstractLayoutForm::ApplyTexts();
}

void TAbstractLayoutForm::ApplyTexts()
{
    setLayoutDirection(LanguageRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    m_btnOK->setText(TextOr(u"cSbtnOK"_s, u"&OK"_s));
    m_btnCancel->setText(TextOr(u"cSbtnCancel"_s, u"&Cancel"_s));
}

void TAbstractLayoutForm::ApplyStyle()
{
    setBackgroundRole(QPalette::Window);
    setAutoFillBackground(true);
}

void TAbstractLayoutForm::setVisible(bool visible)
{
    if (visible && !m_prepared) {
        // The constructor cannot reach the descendant's overrides; they run here, before the
        // first show.
        m_prepared = true;
        ApplyStyle();
        ApplyTexts();
    }
    QDialog::setVisible(visible);
}
