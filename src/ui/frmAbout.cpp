#include "frmAbout.h"

#include "uAbout.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QUrl>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QLabel* MakeLink(const QString& name, const QString& text, const QString& address, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setText(u"<a href=\"%1\">%2</a>"_s.arg(address.toHtmlEscaped(), text.toHtmlEscaped()));
    label->setTextFormat(Qt::RichText);
    label->setOpenExternalLinks(false);
    label->setEnabled(!address.isEmpty());
    QObject::connect(label, &QLabel::linkActivated, label,
                     [address] { QDesktopServices::openUrl(QUrl::fromUserInput(address)); });
    return label;
}

} // namespace

TAboutForm::TAboutForm(QWidget* parent, double random) : QDialog(parent)
{
    setObjectName(u"AboutForm"_s);
    setWindowTitle(GetText(u"cSAbout"_s));
    if (random < 0.0) {
        random = QRandomGenerator::global()->generateDouble();
    }
    m_quotation = QuotationIndex(random);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 16);
    layout->setSpacing(8);

    auto* product = new QLabel(OEMInfo.Product.isEmpty() ? OEMInfo.Name : OEMInfo.Product, this);
    product->setObjectName(u"lProduct"_s);
    QFont big = product->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    product->setFont(big);
    layout->addWidget(product);

    auto* company = new QLabel(OEMInfo.Company, this);
    company->setObjectName(u"lCompany"_s);
    layout->addWidget(company);
    auto* version = new QLabel(AboutVersionText(), this);
    version->setObjectName(u"lVersion"_s);
    layout->addWidget(version);

    layout->addSpacing(8);
    m_lVisitHomepage =
        MakeLink(u"lVisitHomepage"_s, GetText(u"cSVisitHomepage"_s), OEMInfo.HomepageLink, this);
    m_lTechSupport = MakeLink(u"lTechSupport"_s, GetText(u"cSTechSupport"_s), OEMInfo.SupportLink, this);
    layout->addWidget(m_lVisitHomepage);
    layout->addWidget(m_lTechSupport);

    layout->addSpacing(12);
    const TQuotation& quotation = AboutQuotations().at(m_quotation);
    m_lQuotation = new QLabel(u"\u201C"_s + quotation.Words + u"\u201D\n\u2014 "_s + quotation.Author, this);
    m_lQuotation->setObjectName(u"lQuotation"_s);
    m_lQuotation->setWordWrap(true);
    QFont italic = m_lQuotation->font();
    italic.setItalic(true);
    m_lQuotation->setFont(italic);
    layout->addWidget(m_lQuotation);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(GetText(u"cSbtnOK"_s), QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"btnOK"_s);
    ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
    setMinimumWidth(420);
    setLayoutDirection(QGuiApplication::layoutDirection());
}
