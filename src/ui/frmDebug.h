#pragma once

#include <QWidget>

class QPlainTextEdit;

// The debug log window: a read-only memo docked under its owner, the main window (same left and
// width, top at the owner's bottom edge), placed again whenever the owner moves, resizes or shows.
// Ctrl+L in the memo empties it.
class TDebugForm : public QWidget
{
    Q_OBJECT

public:
    explicit TDebugForm(QWidget* owner);

    QPlainTextEdit* memDebug() const { return m_memDebug; }

    void AppendLine(const QString& line);
    // Places the window under its owner.
    void Dock();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* m_owner;
    QPlainTextEdit* m_memDebug;
};
