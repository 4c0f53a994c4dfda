#include "frmDebug.h"

#include <QEvent>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

TDebugForm::TDebugForm(QWidget* owner)
    : QWidget(owner, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_owner(owner),
      m_memDebug(new QPlainTextEdit(this))
{
    setObjectName(u"DebugForm"_s);
    setWindowTitle(u"Debug"_s);
    m_memDebug->setObjectName(u"memDebug"_s);
    m_memDebug->setReadOnly(true);
    m_memDebug->setLineWrapMode(QPlainTextEdit::NoWrap);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_memDebug);
    auto* clear = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_L), m_memDebug);
    clear->setContext(Qt::WidgetShortcut);
    connect(clear, &QShortcut::activated, m_memDebug, &QPlainTextEdit::clear);
    resize(owner != nullptr ? owner->frameGeometry().width() : 600, 200);
    if (owner != nullptr) {
        owner->installEventFilter(this);
    }
}

void TDebugForm::AppendLine(const QString& line)
{
    m_memDebug->appendPlainText(line);
}

void TDebugForm::Dock()
{
    if (m_owner == nullptr) {
        return;
    }
    const QRect frame = m_owner->frameGeometry();
    const int frameExtra = frameGeometry().width() - width();
    move(frame.left(), frame.bottom() + 1);
    resize(qMax(100, frame.width() - frameExtra), height());
}

bool TDebugForm::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_owner && isVisible()) {
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
            Dock();
            break;
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TDebugForm::showEvent(QShowEvent* event)
{
    Dock();
    QWidget::showEvent(event);
}
