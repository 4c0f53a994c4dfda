#include "frmEditMint.h"

#include "dmInternalData.h"
#include "uFieldBinder.h"
#include "uPictureEdit.h"
#include "uRecordEditItems.h"
#include "uRibbon.h"
#include "uRibbonGroup.h"
#include "uRibbonPage.h"
#include "uZTStrings.h"

#include <QDesktopServices>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

} // namespace

TEditMintForm::TEditMintForm(TDM_InternalData& data, QWidget* owner)
    : TAbstractRibbonDBEditForm(owner), m_data(data), m_items(std::make_unique<TRecordEditItems>()),
      m_binder(new TFieldBinder(*data.tblMints, this))
{
    setObjectName(u"EditMintForm"_s);
    QWidget* page = lgContainer();
    auto* grid = new QGridLayout(page);
    grid->setColumnStretch(2, 1);

    auto* logoLabel = new QLabel(page);
    m_logo = qobject_cast<TPictureEdit*>(
        m_binder->Bind(m_items->Item(u"ImageMint"_s), u"Logo"_s, page, logoLabel));
    m_logo->setObjectName(u"imgLogo"_s);
    m_logo->setFixedSize(200, 200);

    auto* nameLabel = new QLabel(page);
    m_name = qobject_cast<QLineEdit*>(m_binder->Bind(m_items->Item(u"edText"_s), u"Name"_s, page, nameLabel));
    m_name->setObjectName(u"edtMintName"_s);
    connect(m_name, &QLineEdit::textChanged, this, &TEditMintForm::SetDocumentName);

    auto* countryLabel = new QLabel(page);
    QWidget* country =
        m_binder->Bind(m_items->Item(u"ImageComboBoxItemCountries"_s), u"Country"_s, page, countryLabel);
    country->setObjectName(u"cbCountry"_s);

    auto* urlLabel = new QLabel(page);
    QWidget* url = m_binder->Bind(m_items->Item(u"HyperLink"_s), u"URL"_s, page, urlLabel);
    url->setObjectName(u"edtURL"_s);
    auto* open = new QToolButton(page);
    open->setObjectName(u"btnOpenURL"_s);
    open->setText(u"\u2197"_s);
    open->setAutoRaise(true);
    connect(open, &QToolButton::clicked, this, [this] {
        PostEditorValues();
        OpenHomepage();
    });

    auto* privateLabel = new QLabel(page);
    QWidget* isPrivate = m_binder->Bind(m_items->Item(u"cbNotNull"_s), u"IsPrivate"_s, page, privateLabel);
    isPrivate->setObjectName(u"cbIsPrivate"_s);

    auto* descriptionLabel = new QLabel(page);
    QWidget* description = m_binder->Bind(m_items->Item(u"Memo"_s), u"Description"_s, page, descriptionLabel);
    description->setObjectName(u"memDescription"_s);

    grid->addWidget(m_logo, 0, 0, 5, 1, Qt::AlignTop);
    int row = 0;
    for (auto [label, editor] : {std::pair<QLabel*, QWidget*>{nameLabel, m_name},
                                 {countryLabel, country},
                                 {urlLabel, url},
                                 {privateLabel, isPrivate}}) {
        grid->addWidget(label, row, 1);
        grid->addWidget(editor, row, 2, 1, editor == url ? 1 : 2);
        ++row;
    }
    grid->addWidget(open, 2, 3);
    logoLabel->hide();
    grid->addWidget(descriptionLabel, 5, 0, 1, 4);
    grid->addWidget(description, 6, 0, 1, 4);
    grid->setRowStretch(4, 1);
    grid->setRowStretch(6, 2);
    resize(640, 560);
}

TEditMintForm::~TEditMintForm()
{
    TearDownForm();
}

void TEditMintForm::LoadRecord()
{
    m_binder->Load();
    SetDocumentName(m_name->text());
}

void TEditMintForm::PostEditorValues()
{
    m_binder->CommitAll();
}

bool TEditMintForm::OpenHomepage() const
{
    const TDBDataset& mints = *m_data.tblMints;
    if (!mints.active() || mints.isEmpty()) {
        return false;
    }
    const QString text = mints.fieldByName(u"URL"_s).asString().trimmed();
    if (text.isEmpty()) {
        return false;
    }
    return QDesktopServices::openUrl(QUrl::fromUserInput(text));
}

void TEditMintForm::TranslateForm()
{
    TAbstractRibbonDBEditForm::TranslateForm();
    m_binder->TranslateLabels();
    const QString caption = TextOr(u"cSMainactEditMints"_s, u"Edit Mints"_s);
    setWindowTitle(caption);
    Ribbon()->setApplicationName(caption);
    if (TRibbonPage* page = Ribbon()->tab(u"rtGeneral"_s)) {
        if (TRibbonGroup* group = page->group(u"BarActions"_s)) {
            group->setCaption(caption);
        }
    }
    if (auto* open = findChild<QToolButton*>(u"btnOpenURL"_s)) {
        open->setToolTip(TextOr(u"cSF_URL"_s, u"Homepage"_s));
    }
}
