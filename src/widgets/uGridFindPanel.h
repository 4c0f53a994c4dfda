#pragma once

#include <QTimer>
#include <QWidget>

class QLineEdit;
class QPushButton;
class QToolButton;

// The find panel of a view: a text box whose words every row shown must hold, searched as the user
// types (after a short pause), with Find, Clear and a close button. Escape clears the text, and
// closes the panel when the text is already empty.
class TGridFindPanel : public QWidget
{
    Q_OBJECT
public:
    explicit TGridFindPanel(QWidget* parent = nullptr);

    QString text() const;
    void setText(const QString& text);
    QLineEdit* editor() const { return m_edit; }
    // Pause after a keystroke before the search runs, in milliseconds.
    void setDelay(int milliseconds) { m_timer.setInterval(milliseconds); }
    int delay() const { return m_timer.interval(); }
    void focusEditor();
    void retranslate();

signals:
    void findRequested(const QString& text);
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QLineEdit* m_edit;
    QToolButton* m_close;
    QPushButton* m_find;
    QPushButton* m_clear;
    QTimer m_timer;
};
