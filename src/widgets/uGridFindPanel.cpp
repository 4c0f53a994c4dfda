#include "uGridFindPanel.h"

#include "uGridPaint.h"
#include "uGridTexts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

TGridFindPanel::TGridFindPanel(QWidget* parent)
    : QWidget(parent), m_edit(new QLineEdit(this)), m_close(new QToolButton(this)),
      m_find(new QPushButton(this)), m_clear(new QPushButton(this))
{
    setObjectName(QStringLiteral("findPanel"));
    m_edit->setObjectName(QStringLiteral("findEdit"));
    m_find->setObjectName(QStringLiteral("findButton"));
    m_clear->setObjectName(QStringLiteral("findClear"));
    m_close->setObjectName(QStringLiteral("findClose"));
    m_close->setAutoRaise(true);
    m_close->setText(QStringLiteral("\u2715"));
    m_edit->setClearButtonEnabled(true);
    m_edit->installEventFilter(this);
    m_find->setAutoDefault(false);
    m_clear->setAutoDefault(false);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(4);
    layout->addWidget(m_close);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_find);
    layout->addWidget(m_clear);

    m_timer.setSingleShot(true);
    m_timer.setInterval(150);
    connect(&m_timer, &QTimer::timeout, this, [this] { emit findRequested(m_edit->text()); });
    connect(m_edit, &QLineEdit::textEdited, this, [this] { m_timer.start(); });
    connect(m_edit, &QLineEdit::textChanged, this, [this](const QString& text) {
        // The clear button of the box, or a text set by the program.
        if (text.isEmpty()) {
            m_timer.stop();
            emit findRequested(QString());
        }
    });
    connect(m_edit, &QLineEdit::returnPressed, this, [this] {
        m_timer.stop();
        emit findRequested(m_edit->text());
    });
    connect(m_find, &QPushButton::clicked, this, [this] {
        m_timer.stop();
        emit findRequested(m_edit->text());
    });
    connect(m_clear, &QPushButton::clicked, this, [this] {
        m_edit->clear();
        m_edit->setFocus();
    });
    connect(m_close, &QToolButton::clicked, this, &TGridFindPanel::closeRequested);
    connect(TGridTextsNotifier::instance(), &TGridTextsNotifier::changed, this, &TGridFindPanel::retranslate);
    retranslate();
}

QString TGridFindPanel::text() const
{
    return m_edit->text();
}

void TGridFindPanel::setText(const QString& text)
{
    if (m_edit->text() == text)
        return;
    m_edit->setText(text);
    m_timer.stop();
    emit findRequested(text);
}

void TGridFindPanel::focusEditor()
{
    m_edit->setFocus(Qt::ShortcutFocusReason);
    m_edit->selectAll();
}

void TGridFindPanel::retranslate()
{
    const TGridTexts& texts = GridTexts();
    m_find->setText(texts.FindButton);
    m_clear->setText(texts.FindClear);
    m_edit->setPlaceholderText(texts.FindPlaceholder);
    m_close->setToolTip(texts.FindClose);
}

bool TGridFindPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        if (m_edit->text().isEmpty())
            emit closeRequested();
        else
            m_edit->clear();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void TGridFindPanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setLayoutDirection(layoutDirection());
    painter.fillRect(rect(), GridPaint::panelColor(palette()));
    painter.setPen(GridPaint::lineColor(palette()));
    painter.drawLine(rect().bottomLeft(), rect().bottomRight());
}
