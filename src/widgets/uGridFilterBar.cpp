#include "uGridFilterBar.h"

#include "uGridPaint.h"
#include "uGridTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

TGridFilterBar::TGridFilterBar(QWidget* parent)
    : QWidget(parent), m_clear(new QToolButton(this)), m_label(new QLabel(this)),
      m_customize(new QPushButton(this))
{
    setObjectName(QStringLiteral("filterBar"));
    m_clear->setObjectName(QStringLiteral("filterClear"));
    m_customize->setObjectName(QStringLiteral("filterCustomize"));
    m_clear->setAutoRaise(true);
    m_clear->setText(QStringLiteral("\u2715"));
    m_label->setTextFormat(Qt::PlainText);
    m_label->setMinimumWidth(20);
    m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_customize->setFlat(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(6);
    layout->addWidget(m_clear);
    layout->addWidget(m_label, 1);
    layout->addWidget(m_customize);
    connect(m_clear, &QToolButton::clicked, this, &TGridFilterBar::clearRequested);
    connect(m_customize, &QPushButton::clicked, this, &TGridFilterBar::customizeRequested);
    retranslate();
}

void TGridFilterBar::setText(const QString& text)
{
    m_text = text;
    updateLabel();
}

void TGridFilterBar::retranslate()
{
    m_clear->setToolTip(GridTexts().FilterClear);
    m_customize->setText(GridTexts().FilterCustomize);
}

void TGridFilterBar::updateLabel()
{
    m_label->setText(
        m_label->fontMetrics().elidedText(m_text, Qt::ElideRight, std::max(m_label->width(), 20)));
    m_label->setToolTip(m_text);
}

void TGridFilterBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    updateLabel();
}

void TGridFilterBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setLayoutDirection(layoutDirection());
    painter.fillRect(rect(), GridPaint::panelColor(palette()));
    painter.setPen(GridPaint::lineColor(palette()));
    painter.drawLine(rect().topLeft(), rect().topRight());
}
