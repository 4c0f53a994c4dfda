#pragma once

#include "frmAbstractLayoutForm.h"

class QGroupBox;
class QLabel;
class QPushButton;
class TDM_InternalData;

// The database properties dialog: the path and the size of the open collection file, and a button
// that compacts the file and shows the new size at once. Only OK closes it.
class TDBPropertiesForm : public TAbstractLayoutForm
{
    Q_OBJECT

public:
    TDBPropertiesForm(TDM_InternalData& data, QWidget* owner = nullptr);

    QLabel* lDBFile() const { return m_lDBFile; }
    QLabel* lDBFileSize() const { return m_lDBFileSize; }
    QPushButton* btnVacuum() const { return m_btnVacuum; }

    void ApplyTexts() override;
    // Fills lDBFile and lDBFileSize from the open file.
    void FillLabels();

private:
    void VacuumClick();

    TDM_InternalData& m_data;
    QGroupBox* m_group;
    QLabel* m_lDBFile;
    QLabel* m_lDBFileSize;
    QPushButton* m_btnVacuum;
};
