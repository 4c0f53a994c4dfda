#include "uBasicEditorItem.h"

#include <QKeyEvent>
#include <QWidget>

void TBasicEditorItem::setLocale(const QLocale& locale)
{
    m_locale = locale;
    m_hasLocale = true;
}

QWidget* TBasicEditorItem::createEditor(QWidget* parent) const
{
    if (m_readOnly)
        return nullptr;
    QWidget* editor = makeEditor(parent);
    if (editor == nullptr)
        return nullptr;
    if (m_hasLocale)
        editor->setLocale(m_locale);
    if (!m_clearKey.isEmpty())
        new TClearKeyFilter(editor, m_clearKey, [this, editor]() { clearEditor(editor); });
    return editor;
}

QMetaObject::Connection TBasicEditorItem::onValueChosen(QWidget* editor, std::function<void()> slot) const
{
    if (auto* filter = editor->findChild<TClearKeyFilter*>(QString(), Qt::FindDirectChildrenOnly))
        QObject::connect(filter, &TClearKeyFilter::cleared, editor, slot);
    return connectChosen(editor, std::move(slot));
}

QMetaObject::Connection TBasicEditorItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    Q_UNUSED(editor);
    Q_UNUSED(slot);
    return {};
}

TClearKeyFilter::TClearKeyFilter(QWidget* editor, const QKeySequence& key, std::function<void()> clear)
    : QObject(editor), m_key(key), m_clear(std::move(clear))
{
    editor->installEventFilter(this);
    // Keys reach the focused child (the line edit of a spin box or combo), so watch those too.
    for (QWidget* child : editor->findChildren<QWidget*>())
        child->installEventFilter(this);
}

bool TClearKeyFilter::eventFilter(QObject* watched, QEvent* event)
{
    Q_UNUSED(watched);
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return false;
    auto* key = static_cast<QKeyEvent*>(event);
    if (QKeySequence(key->keyCombination()) != m_key)
        return false;
    if (event->type() == QEvent::ShortcutOverride) {
        // Keep the key from a shortcut of the window; the press follows.
        event->accept();
        return true;
    }
    m_clear();
    emit cleared();
    return true;
}
