#pragma once

#include <QComboBox>
#include <QStringList>

class QStandardItemModel;

// A drop-down list of check boxes. The box shows the checked texts joined by ", ", or the empty
// text when none is checked. The list stays open while boxes are clicked.
class TCheckComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit TCheckComboBox(QWidget* parent = nullptr);

    void setItems(const QStringList& texts);
    QStringList items() const;
    QString emptyText() const { return m_emptyText; }
    void setEmptyText(const QString& text);

    bool isChecked(int index) const;
    void setChecked(int index, bool checked);
    QList<bool> checkedStates() const;
    void setCheckedStates(const QList<bool>& states);
    QString summaryText() const;

    void hidePopup() override;

signals:
    // A box was clicked.
    void checksChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QStandardItemModel* m_model;
    QString m_emptyText;
    bool m_keepOpen = false;
};
