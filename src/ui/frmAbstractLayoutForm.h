#pragma once

#include <QDialog>

class QPushButton;
class QVBoxLayout;

// The base of the fixed dialogs: the content goes into lgContainer, and the bottom group
// lgBottomButtons holds btnOK (default button, accepts) and btnCancel (rejects). Default size
// 500 by 350, centred on its owner.
//
// ApplyStyle() and then ApplyTexts() run when the form is created and again, with the overrides of
// the descendant, right before it is first shown. Descendants override ApplyTexts() and call the
// inherited one first.
class TAbstractLayoutForm : public QDialog
{
    Q_OBJECT

public:
    explicit TAbstractLayoutForm(QWidget* owner = nullptr);

    QWidget* lgContainer() const { return m_lgContainer; }
    QVBoxLayout* ContainerLayout() const { return m_containerLayout; }
    QWidget* lgBottomButtons() const { return m_lgBottomButtons; }
    QPushButton* btnOK() const { return m_btnOK; }
    QPushButton* btnCancel() const { return m_btnCancel; }

    // Layout direction by the language, btnOK and btnCancel from cSbtnOK and cSbtnCancel.
    virtual void ApplyTexts();
    // The background in the theme's panel colour.
    virtual void ApplyStyle();

    void setVisible(bool visible) override;

private:
    QWidget* m_lgContainer;
    QVBoxLayout* m_containerLayout;
    QWidget* m_lgBottomButtons;
    QPushButton* m_btnOK;
    QPushButton* m_btnCancel;
    bool m_prepared = false;
};
