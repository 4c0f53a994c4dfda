#include "frmDBProperties.h"

#include "dmInternalData.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

TDBPropertiesForm::TDBPropertiesForm(TDM_InternalData& data, QWidget* owner)
    : TAbstractLayoutForm(owner), m_data(data), m_group(new QGroupBox(lgContainer())),
      m_lDBFile(new QLabel(m_group)), m_lDBFileSize(new QLabel(m_group)),
      m_btnVacuum(new QPushButton(m_group))
{
    setObjectName(u"DBPropertiesForm"_s);
    m_group->setObjectName(u"lgDBProperties"_s);
    m_lDBFile->setObjectName(u"lDBFile"_s);
    m_lDBFileSize->setObjectName(u"lDBFileSize"_s);
    m_btnVacuum->setObjectName(u"btnVacuum"_s);
    m_lDBFile->setWordWrap(true);
    m_lDBFile->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_btnVacuum->setAutoDefault(false);

    auto* layout = new QVBoxLayout(m_group);
    layout->addWidget(m_lDBFile);
    layout->addWidget(m_lDBFileSize);
    layout->addStretch(1);
    layout->addWidget(m_btnVacuum);
    ContainerLayout()->addWidget(m_group);

    btnCancel()->hide();
    connect(m_btnVacuum, &QPushButton::clicked, this, &TDBPropertiesForm::VacuumClick);
    resize(500, 250);
    TDBPropertiesForm::ApplyTexts();
}

void TDBPropertiesForm::ApplyTexts()
{
    TAbstractLayoutForm::ApplyTexts();
    const QString caption = GetText(u"cSDBPropertiesCaption"_s);
    setWindowTitle(caption);
    m_group->setTitle(caption);
    m_btnVacuum->setText(GetText(u"cSDBPropertiesVacuumDBBtn"_s));
    FillLabels();
}

void TDBPropertiesForm::FillLabels()
{
    m_lDBFile->setText(FormatText(GetText(u"cSDBPropertiesFile"_s), {m_data.DatabasePath}));
    m_lDBFileSize->setText(
        FormatText(GetText(u"cSDBPropertiesFileSize"_s), {FormatSize(GetFileSize(m_data.DatabasePath))}));
}

void TDBPropertiesForm::VacuumClick()
{
    m_data.VacuumDatabase();
    FillLabels();
}
