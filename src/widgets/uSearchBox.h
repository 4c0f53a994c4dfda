#pragma once

#include <QLineEdit>

// A search box: a magnifier at its start, the empty-text (placeholder) while nothing is typed, and
// its own small clear button at its end. Enter asks for a search with the text as typed.
class TSearchBox : public QLineEdit
{
    Q_OBJECT
public:
    explicit TSearchBox(QWidget* parent = nullptr);

    QString emptyText() const { return placeholderText(); }
    void setEmptyText(const QString& text) { setPlaceholderText(text); }

signals:
    void searchRequested(const QString& text);

protected:
    void changeEvent(QEvent* event) override;

private:
    void updateGlyph();
    QAction* m_glyph;
};
