#include "uBackstagePage.h"

#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

TBackstagePage::TBackstagePage(const QString& name, const QString& title, QWidget* parent)
    : QWidget(parent), m_title(new QLabel(title, this)), m_content(new QVBoxLayout)
{
    setObjectName(name);
    m_title->setObjectName(name + u"Title");
    auto* layout = new QVBoxLayout(this);
    const int margin = fontMetrics().height() * 3 / 2;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(fontMetrics().height());
    layout->addWidget(m_title);
    layout->addLayout(m_content, 1);
    m_content->setContentsMargins(0, 0, 0, 0);
    updateTitleFont();
}

QString TBackstagePage::title() const
{
    return m_title->text();
}

void TBackstagePage::setTitle(const QString& title)
{
    m_title->setText(title);
    emit titleChanged(title);
}

void TBackstagePage::updateTitleFont()
{
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() > 0 ? big.pointSizeF() * 1.9 : 18);
    big.setWeight(QFont::Light);
    m_title->setFont(big);
}

void TBackstagePage::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateTitleFont();
}
