#include "frmOptions.h"

#include "dmImages.h"
#include "uChoiceEditorItems.h"
#include "uCustomFields.h"
#include "uDictionaries.h"
#include "uNumberEditorItems.h"
#include "uPropertyGrid.h"
#include "uRatingEditorItem.h"
#include "uThemes.h"
#include "uZTStrings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

std::function<int(TOptionsForm&)>& ExecHook()
{
    static std::function<int(TOptionsForm&)> hook;
    return hook;
}

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

// The rows of vgDefaultValues: row name, label key, English label, repository item.
struct TDefaultValueRow
{
    const char16_t* Name;
    const char16_t* LabelKey;
    const char16_t* Label;
    const char16_t* Editor;
};

constexpr TDefaultValueRow cDefaultValueRows[] = {
    {u"vgDefaultValuesRowQty", u"cSF_Qty", u"Quantity", u"seQty"},
    {u"vgDefaultValuesRowCondition", u"cSF_Condition", u"Condition", u"cbCondition"},
    {u"vgDefaultValuesRowStatus", u"cSF_Status", u"Status", u"cbStatus"},
    {u"vgDefaultValuesRowPackaging", u"cSF_Packaging", u"Packaging", u"cbPackaging"},
    {u"vgDefaultValuesRowLocation", u"cSF_Location", u"Location", u"cbLocation"},
    {u"vgDefaultValuesRowOwner", u"cSF_Owner", u"Owner", u"cbOwner"},
    {u"vgDefaultValuesRowStore", u"cSF_Store", u"Store", u"cbStore"},
    {u"vgDefaultValuesRowRating", u"cSF_Rating", u"Rating", u"RatingControl"},
    {u"vgDefaultValuesRowGrade", u"cSF_Grade", u"Grade", u"cbGrade"},
    {u"vgDefaultValuesRowGradeService", u"cSF_GradeService", u"Grade service", u"cbGradeService"},
};

QString RowName(int i)
{
    return QString::fromUtf16(cDefaultValueRows[i].Name);
}

constexpr int cDefaultValueRowCount = int(std::size(cDefaultValueRows));

// The current lines of a dictionary combo.
QStringList DictionaryLines(const QString& comboEditor)
{
    if (DataModuleImages()) {
        return DataModuleImages()->ComboItems(comboEditor);
    }
    const TDictInfo* info = FindDict(comboEditor);
    if (!info) {
        return {};
    }
    return (ORVDicts.*(info->Field)).Value.split(u"\r\n"_s, Qt::SkipEmptyParts);
}

// A square of the accent's colour for its entry.
QIcon AccentIcon(const QColor& colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(colour.darker(130));
    painter.setBrush(colour);
    painter.drawRect(1, 1, 13, 13);
    return QIcon(pixmap);
}

QLabel* BuddyLabel(QWidget* buddy, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setBuddy(buddy);
    return label;
}

} // namespace

TOptionsForm::TOptionsForm(QWidget* mainWindow, QWidget* owner)
    : TAbstractLayoutForm(owner), m_controller(std::make_unique<TOptionsController>(mainWindow)),
      m_pcOptions(new QTabWidget(lgContainer()))
{
    setObjectName(u"OptionsForm"_s);
    m_pcOptions->setObjectName(u"pcOptions"_s);
    ContainerLayout()->addWidget(m_pcOptions);
    m_pcOptions->addTab(CreateGeneralPage(), QString());
    m_pcOptions->addTab(CreateCustomFieldsPage(), QString());
    m_pcOptions->addTab(CreateDefaultValuesPage(), QString());
    m_pcOptions->addTab(CreateConnectionPage(), QString());
    m_pcOptions->setCurrentIndex(0);
    resize(600, 480);

    ShowValues();
    ApplyTexts();
    connect(m_controller.get(), &TOptionsController::EnablementChanged, this, &TOptionsForm::ShowEnablement);
    connect(m_controller.get(), &TOptionsController::LanguageSwitched, this, &TOptionsForm::ApplyTexts);
}

TOptionsForm::~TOptionsForm()
{
    // The pages go first: the grid's rows refer to the editor items and the controls to the controller.
    delete m_pcOptions;
}

bool TOptionsForm::Execute(QWidget* mainWindow, TOptionsPage page)
{
    TOptionsForm form(mainWindow, mainWindow);
    form.SetActivePage(page);
    const int result = ExecHook() ? ExecHook()(form) : form.exec();
    return result == QDialog::Accepted;
}

void TOptionsForm::SetExecHook(std::function<int(TOptionsForm&)> hook)
{
    ExecHook() = std::move(hook);
}

void TOptionsForm::SetActivePage(TOptionsPage page)
{
    m_pcOptions->setCurrentIndex(int(page));
}

TOptionsPage TOptionsForm::ActivePage() const
{
    return TOptionsPage(m_pcOptions->currentIndex());
}

// ---- Pages --------------------------------------------------------------------------------------------

QWidget* TOptionsForm::CreateGeneralPage()
{
    auto* page = new QWidget(m_pcOptions);
    page->setObjectName(u"tsGeneral"_s);
    auto* form = new QFormLayout(page);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    m_cbLang = new QComboBox(page);
    m_cbLang->setObjectName(u"cbLang"_s);
    m_cbCurrency = new QComboBox(page);
    m_cbCurrency->setObjectName(u"cbCurrency"_s);
    m_cbCurrency->setMaxVisibleItems(20);
    for (const QString& currency : OptionsCurrencies()) {
        m_cbCurrency->addItem(currency);
    }
    m_cbTheme = new QComboBox(page);
    m_cbTheme->setObjectName(u"cbTheme"_s);
    for (const TThemeRow& row : Themes()) {
        m_cbTheme->addItem(row.Text);
    }
    m_cbColorSchemeAccent = new QComboBox(page);
    m_cbColorSchemeAccent->setObjectName(u"cbColorSchemeAccent"_s);
    for (const TAccent& accent : Accents()) {
        m_cbColorSchemeAccent->addItem(AccentIcon(accent.Colour), accent.Text);
    }

    m_lblLanguage = BuddyLabel(m_cbLang, page);
    m_lblCurrency = BuddyLabel(m_cbCurrency, page);
    m_lblTheme = BuddyLabel(m_cbTheme, page);
    m_lblThemeColor = BuddyLabel(m_cbColorSchemeAccent, page);
    form->addRow(m_lblLanguage, m_cbLang);
    form->addRow(m_lblCurrency, m_cbCurrency);
    auto* separator = new QFrame(page);
    separator->setObjectName(u"sepTheme"_s);
    separator->setFrameShape(QFrame::HLine);
    separator->setFrameShadow(QFrame::Sunken);
    form->addRow(separator);
    form->addRow(m_lblTheme, m_cbTheme);
    form->addRow(m_lblThemeColor, m_cbColorSchemeAccent);

    connect(m_cbLang, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (m_showing || index < 0) {
            return;
        }
        if (!m_controller->SetLanguage(m_cbLang->itemData(index).toString())) {
            FillLanguages(); // back to the language in use
        }
    });
    connect(m_cbCurrency, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!m_showing && index >= 0) {
            m_controller->SetCurrency(m_cbCurrency->itemText(index));
        }
    });
    connect(m_cbTheme, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!m_showing) {
            m_controller->SetThemeIndex(index);
        }
    });
    connect(m_cbColorSchemeAccent, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!m_showing) {
            m_controller->SetAccentIndex(index);
        }
    });
    return page;
}

QWidget* TOptionsForm::CreateCustomFieldsPage()
{
    auto* page = new QWidget(m_pcOptions);
    page->setObjectName(u"tsCustomFields"_s);
    auto* layout = new QVBoxLayout(page);
    m_cbEnableCustomFields = new QCheckBox(page);
    m_cbEnableCustomFields->setObjectName(u"cbEnableCustomFields"_s);
    layout->addWidget(m_cbEnableCustomFields);

    m_TLCustomFields = new QTreeWidget(page);
    m_TLCustomFields->setObjectName(u"TLCustomFields"_s);
    m_TLCustomFields->setColumnCount(2);
    m_TLCustomFields->setRootIsDecorated(false);
    m_TLCustomFields->setSortingEnabled(false);
    m_TLCustomFields->setUniformRowHeights(true);
    m_TLCustomFields->setEditTriggers(QAbstractItemView::AllEditTriggers);
    m_TLCustomFields->header()->setSectionsMovable(false);
    m_TLCustomFields->header()->setStretchLastSection(false);
    m_TLCustomFields->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_TLCustomFields->header()->setSectionResizeMode(1, QHeaderView::Fixed);
    m_TLCustomFields->header()->resizeSection(1, 170);
    layout->addWidget(m_TLCustomFields, 1);

    for (int n = 0; n < cCustomFieldCount; ++n) {
        auto* item = new QTreeWidgetItem(m_TLCustomFields);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable |
                       Qt::ItemIsUserCheckable);
        QComboBox* typeBox = nullptr;
        if (DataModuleImages()) {
            typeBox =
                qobject_cast<QComboBox*>(DataModuleImages()->CreateEditor(u"cbCustomFields"_s, nullptr));
        }
        if (!typeBox) {
            typeBox = new QComboBox;
            typeBox->setObjectName(u"cbCustomFields"_s);
            const QStringList texts = CustomFieldDataTypeTexts();
            for (int code = 0; code < texts.size(); ++code) {
                typeBox->addItem(texts.at(code), code);
            }
        }
        m_TLCustomFields->setItemWidget(item, 1, typeBox);
        connect(typeBox, &QComboBox::currentIndexChanged, this, [this, n, typeBox](int index) {
            if (!m_showing && index >= 0) {
                m_controller->SetCustomFieldDataType(n, typeBox->itemData(index).toInt());
            }
        });
    }
    connect(m_TLCustomFields, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (m_showing || column != 0) {
            return;
        }
        const int n = m_TLCustomFields->indexOfTopLevelItem(item);
        m_controller->SetCustomFieldEnabled(n, item->checkState(0) == Qt::Checked);
        m_controller->SetCustomFieldDisplayName(n, item->text(0));
    });
    connect(m_cbEnableCustomFields, &QCheckBox::toggled, this, [this](bool on) {
        if (!m_showing) {
            m_controller->SetCustomFieldsEnabled(on);
        }
    });
    return page;
}

void TOptionsForm::CreateDefaultValueEditors()
{
    // The edit repository's items when it exists (the program); items of the form's own otherwise.
    for (int i = 0; i < cDefaultValueRowCount; ++i) {
        const QString editor = QString::fromUtf16(cDefaultValueRows[i].Editor);
        if (DataModuleImages()) {
            if (const TEditorItem* shared = DataModuleImages()->Item(editor)) {
                m_rowItems.push_back(shared);
                continue;
            }
        }
        std::unique_ptr<TEditorItem> item;
        if (editor == u"seQty"_s) {
            auto number = std::make_unique<TIntegerEditorItem>();
            number->setRange(0, 1000000000);
            item = std::move(number);
        } else if (editor == u"RatingControl"_s) {
            auto rating = std::make_unique<TRatingEditorItem>();
            rating->setStep(0.5);
            item = std::move(rating);
        } else {
            auto combo = std::make_unique<TComboEditorItem>();
            combo->setItemsProvider([editor] { return DictionaryLines(editor); });
            item = std::move(combo);
        }
        m_rowItems.push_back(item.get());
        m_editorItems.push_back(std::move(item));
    }
}

QWidget* TOptionsForm::CreateDefaultValuesPage()
{
    auto* page = new QWidget(m_pcOptions);
    page->setObjectName(u"tsDefaultValues"_s);
    auto* layout = new QVBoxLayout(page);
    m_lblDefaultValuesDesc = new QLabel(page);
    m_lblDefaultValuesDesc->setObjectName(u"lblDefaultValuesDesc"_s);
    m_lblDefaultValuesDesc->setWordWrap(true);
    layout->addWidget(m_lblDefaultValuesDesc);

    CreateDefaultValueEditors();
    m_vgDefaultValues = new TPropertyGrid(page);
    m_vgDefaultValues->setObjectName(u"vgDefaultValues"_s);
    m_vgDefaultValues->setCaptionWidth(170);
    for (int i = 0; i < cDefaultValueRowCount; ++i) {
        m_vgDefaultValues->addRow(RowName(i), QString::fromUtf16(cDefaultValueRows[i].Label), QString(),
                                  m_rowItems[std::size_t(i)]);
    }
    layout->addWidget(m_vgDefaultValues, 1);
    connect(m_vgDefaultValues, &TPropertyGrid::rowValueChanged, this, [this] {
        if (!m_showing) {
            m_controller->SetDefaultValues(DefaultValuesShown());
        }
    });
    return page;
}

QWidget* TOptionsForm::CreateConnectionPage()
{
    auto* page = new QWidget(m_pcOptions);
    page->setObjectName(u"tsProxySettings"_s);
    auto* layout = new QVBoxLayout(page);
    m_rbDirect = new QRadioButton(page);
    m_rbDirect->setObjectName(u"rbDirect"_s);
    m_rbProxy = new QRadioButton(page);
    m_rbProxy->setObjectName(u"rbProxy"_s);
    layout->addWidget(m_rbDirect);
    layout->addWidget(m_rbProxy);

    m_lgProxy = new QGroupBox(page);
    m_lgProxy->setObjectName(u"lgProxy"_s);
    auto* form = new QFormLayout(m_lgProxy);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_edtProxyHost = new QLineEdit(m_lgProxy);
    m_edtProxyHost->setObjectName(u"edtProxyHost"_s);
    m_seProxyPort = new QSpinBox(m_lgProxy);
    m_seProxyPort->setObjectName(u"seProxyPort"_s);
    m_seProxyPort->setRange(0, 65535);
    m_seProxyPort->setValue(8080);
    m_seProxyPort->setMinimumWidth(100);
    m_cbProxyAuth = new QCheckBox(m_lgProxy);
    m_cbProxyAuth->setObjectName(u"cbProxyAuth"_s);
    m_edtProxyUsername = new QLineEdit(m_lgProxy);
    m_edtProxyUsername->setObjectName(u"edtProxyUsername"_s);
    m_edtProxyPassword = new QLineEdit(m_lgProxy);
    m_edtProxyPassword->setObjectName(u"edtProxyPassword"_s);
    m_edtProxyPassword->setEchoMode(QLineEdit::Password);
    m_lblProxyHost = BuddyLabel(m_edtProxyHost, m_lgProxy);
    m_lblProxyPort = BuddyLabel(m_seProxyPort, m_lgProxy);
    m_lblProxyUsername = BuddyLabel(m_edtProxyUsername, m_lgProxy);
    m_lblProxyUsername->setObjectName(u"liProxyUsername"_s);
    m_lblProxyPassword = BuddyLabel(m_edtProxyPassword, m_lgProxy);
    m_lblProxyPassword->setObjectName(u"liProxyPassword"_s);
    form->addRow(m_lblProxyHost, m_edtProxyHost);
    auto* portRow = new QHBoxLayout;
    portRow->addWidget(m_seProxyPort);
    portRow->addStretch(1);
    form->addRow(m_lblProxyPort, portRow);
    form->addRow(m_cbProxyAuth);
    form->addRow(m_lblProxyUsername, m_edtProxyUsername);
    form->addRow(m_lblProxyPassword, m_edtProxyPassword);
    layout->addWidget(m_lgProxy);
    layout->addStretch(1);

    connect(m_rbProxy, &QRadioButton::toggled, this, [this](bool on) {
        if (!m_showing) {
            m_controller->SetProxy(on);
        }
    });
    connect(m_cbProxyAuth, &QCheckBox::toggled, this, [this](bool on) {
        if (!m_showing) {
            m_controller->SetProxyAuth(on);
        }
    });
    connect(m_edtProxyHost, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_controller->SetProxyHost(text); });
    connect(m_seProxyPort, &QSpinBox::valueChanged, this, [this](int value) {
        if (!m_showing) {
            m_controller->SetProxyPort(value);
        }
    });
    connect(m_edtProxyUsername, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_controller->SetProxyUsername(text); });
    connect(m_edtProxyPassword, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_controller->SetProxyPassword(text); });
    return page;
}

// ---- Values ---------------------------------------------------------------------------------------------

QComboBox* TOptionsForm::CustomFieldTypeBox(int n) const
{
    QTreeWidgetItem* item = m_TLCustomFields->topLevelItem(n);
    return item ? qobject_cast<QComboBox*>(m_TLCustomFields->itemWidget(item, 1)) : nullptr;
}

void TOptionsForm::FillLanguages()
{
    const bool showing = m_showing;
    m_showing = true;
    m_cbLang->clear();
    for (const TLang& language : m_controller->Languages()) {
        m_cbLang->addItem(QIcon(QPixmap::fromImage(language.FlagPicture())), language.Name,
                          language.FileName);
    }
    m_cbLang->setCurrentIndex(m_controller->LanguageIndex(m_controller->Values().Language));
    m_showing = showing;
}

void TOptionsForm::ShowValues()
{
    m_showing = true;
    const TOptionsValues& v = m_controller->Values();
    FillLanguages();
    m_cbCurrency->setCurrentIndex(TOptionsController::CurrencyIndex(v.Currency));
    m_cbTheme->setCurrentIndex(v.ThemeIndex >= 0 && v.ThemeIndex < m_cbTheme->count() ? v.ThemeIndex : -1);
    m_cbColorSchemeAccent->setCurrentIndex(
        v.AccentIndex >= 0 && v.AccentIndex < m_cbColorSchemeAccent->count() ? v.AccentIndex : -1);

    m_cbEnableCustomFields->setChecked(v.CustomFieldsEnabled);
    for (int n = 0; n < cCustomFieldCount; ++n) {
        const TORVCustomField& field = v.CustomFields[std::size_t(n)];
        QTreeWidgetItem* item = m_TLCustomFields->topLevelItem(n);
        item->setText(0, field.DisplayName);
        item->setCheckState(0, field.Enabled ? Qt::Checked : Qt::Unchecked);
        QComboBox* box = CustomFieldTypeBox(n);
        box->setCurrentIndex(box->findData(field.DataType));
    }

    const TORVDefaultValues& d = v.DefaultValues;
    const QVariant values[cDefaultValueRowCount] = {qlonglong(d.Qty), d.Condition,   d.Status, d.Packaging,
                                                    d.Location,       d.Owner,       d.Store,  d.Rating,
                                                    d.Grade,          d.GradeService};
    for (int i = 0; i < cDefaultValueRowCount; ++i) {
        m_vgDefaultValues->setRowValue(RowName(i), values[i]);
    }

    m_rbDirect->setChecked(!v.Proxy);
    m_rbProxy->setChecked(v.Proxy);
    m_edtProxyHost->setText(v.ProxyHost);
    m_seProxyPort->setValue(v.ProxyPort);
    m_cbProxyAuth->setChecked(v.ProxyAuth);
    m_edtProxyUsername->setText(v.ProxyUsername);
    m_edtProxyPassword->setText(v.ProxyPassword);
    m_showing = false;
    ShowEnablement(m_controller->Enablement());
}

void TOptionsForm::ShowEnablement(const TOptionsEnablement& enablement)
{
    m_lgProxy->setEnabled(enablement.ProxySettings);
    m_lblProxyUsername->setEnabled(enablement.ProxyCredentials);
    m_edtProxyUsername->setEnabled(enablement.ProxyCredentials);
    m_lblProxyPassword->setEnabled(enablement.ProxyCredentials);
    m_edtProxyPassword->setEnabled(enablement.ProxyCredentials);
    m_TLCustomFields->setEnabled(enablement.CustomFieldList);
}

TORVDefaultValues TOptionsForm::DefaultValuesShown() const
{
    const auto text = [this](int i) { return m_vgDefaultValues->rowValue(RowName(i)).toString(); };
    TORVDefaultValues d = m_controller->Values().DefaultValues;
    const QVariant qty = m_vgDefaultValues->rowValue(RowName(0));
    d.Qty = qty.isValid() && !qty.isNull() ? qty.toInt() : 0;
    d.Condition = text(1);
    d.Status = text(2);
    d.Packaging = text(3);
    d.Location = text(4);
    d.Owner = text(5);
    d.Store = text(6);
    const QVariant rating = m_vgDefaultValues->rowValue(RowName(7));
    d.Rating = rating.isValid() && !rating.isNull() ? rating.toDouble() : 0.0;
    d.Grade = text(8);
    d.GradeService = text(9);
    return d;
}

void TOptionsForm::accept()
{
    // An open editor in the grid is written first; a refused entry keeps the dialog open.
    if (!m_vgDefaultValues->finishEditing()) {
        return;
    }
    m_controller->SetDefaultValues(DefaultValuesShown());
    m_controller->StoreAndSave();
    TAbstractLayoutForm::accept();
}

void TOptionsForm::ApplyTexts()
{
    TAbstractLayoutForm::ApplyTexts();
    setWindowTitle(TextOr(u"cSMainactOptions"_s, u"Options"_s));
    m_pcOptions->setTabText(0, TextOr(u"cSOptionsTSGeneral"_s, u"General"_s));
    m_pcOptions->setTabText(1, TextOr(u"cSOptionsTSCustomFields"_s, u"Custom fields"_s));
    m_pcOptions->setTabText(2, TextOr(u"cSOptionsTSDefaultValues"_s, u"Default values"_s));
    m_pcOptions->setTabText(3, TextOr(u"cSOptionsTSConnectionSettings"_s, u"Connection settings"_s));

    m_lblLanguage->setText(TextOr(u"cSOptionsLanguage"_s, u"Language"_s));
    m_lblCurrency->setText(TextOr(u"cSOptionsCurrency"_s, u"Currency"_s));
    m_lblTheme->setText(TextOr(u"cSOptionsTheme"_s, u"Theme"_s));
    m_lblThemeColor->setText(TextOr(u"cSOptionsThemeColor"_s, u"Theme color"_s));

    m_cbEnableCustomFields->setText(TextOr(u"cSOptionsEnableCustom"_s, u"Enable custom fields"_s));
    m_TLCustomFields->setHeaderLabels({TextOr(u"cSOptionsDisplayName"_s, u"Display name"_s),
                                       TextOr(u"cSOptionsDataType"_s, u"Data type"_s)});
    // Header texts start where the cells start, in either reading direction.
    const Qt::Alignment headerAlignment =
        (LanguageIsRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute | Qt::AlignVCenter;
    for (int c = 0; c < m_TLCustomFields->columnCount(); ++c) {
        m_TLCustomFields->headerItem()->setTextAlignment(c, headerAlignment);
    }

    m_lblDefaultValuesDesc->setText(GetText(u"cSOptionsDefaultValuesDesc"_s));
    for (int i = 0; i < cDefaultValueRowCount; ++i) {
        m_vgDefaultValues->setRowCaption(RowName(i), TextOr(QString::fromUtf16(cDefaultValueRows[i].LabelKey),
                                                            QString::fromUtf16(cDefaultValueRows[i].Label)));
    }

    m_rbDirect->setText(TextOr(u"cSOptionsProxyDirect"_s, u"Direct connection to the internet"_s));
    m_rbProxy->setText(TextOr(u"cSOptionsProxyProxy"_s, u"Proxy"_s));
    m_lgProxy->setTitle(TextOr(u"cSOptionsProxySettings"_s, u"Proxy settings"_s));
    m_lblProxyHost->setText(TextOr(u"cSOptionsProxyHost"_s, u"Host"_s));
    m_lblProxyPort->setText(TextOr(u"cSOptionsProxyPort"_s, u"Port"_s));
    m_cbProxyAuth->setText(TextOr(u"cSOptionsProxyAuth"_s, u"Authentication"_s));
    m_lblProxyUsername->setText(TextOr(u"cSOptionsProxyUsername"_s, u"Username"_s));
    m_lblProxyPassword->setText(TextOr(u"cSOptionsProxyPassword"_s, u"Password"_s));
}
