#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

// The about dialog: the product, its maker and version, the two links of the branding record and a
// quotation on gold. Modal, made for one use.
class TAboutForm : public QDialog
{
    Q_OBJECT

public:
    // random in [0, 1) picks the quotation; a negative value draws one.
    explicit TAboutForm(QWidget* parent = nullptr, double random = -1.0);

    QLabel* lVisitHomepage() const { return m_lVisitHomepage; }
    QLabel* lTechSupport() const { return m_lTechSupport; }
    QLabel* lQuotation() const { return m_lQuotation; }
    int QuotationShown() const { return m_quotation; }

private:
    QLabel* m_lVisitHomepage = nullptr;
    QLabel* m_lTechSupport = nullptr;
    QLabel* m_lQuotation = nullptr;
    int m_quotation = 0;
};
