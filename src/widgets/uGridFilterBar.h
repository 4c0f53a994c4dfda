#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QToolButton;

// The bar under a view while it has a filter of its own: the filter as a sentence, a button that
// clears it and one that opens the filter builder.
class TGridFilterBar : public QWidget
{
    Q_OBJECT
public:
    explicit TGridFilterBar(QWidget* parent = nullptr);

    void setText(const QString& text);
    QString text() const { return m_text; }
    void retranslate();

signals:
    void clearRequested();
    void customizeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void updateLabel();

    QString m_text;
    QToolButton* m_clear;
    QLabel* m_label;
    QPushButton* m_customize;
};
