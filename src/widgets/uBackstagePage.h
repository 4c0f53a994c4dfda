#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

// One page of the application menu: a title over the page's own content. The program adds its
// widgets to contentLayout() (a search box, galleries, labels).
class TBackstagePage : public QWidget
{
    Q_OBJECT
public:
    TBackstagePage(const QString& name, const QString& title, QWidget* parent = nullptr);

    QString name() const { return objectName(); }
    QString title() const;
    void setTitle(const QString& title);
    QVBoxLayout* contentLayout() const { return m_content; }

signals:
    void titleChanged(const QString& title);

protected:
    void changeEvent(QEvent* event) override;

private:
    void updateTitleFont();

    QLabel* m_title;
    QVBoxLayout* m_content;
};
