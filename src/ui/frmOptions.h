#pragma once

#include "frmAbstractLayoutForm.h"
#include "uOptionsController.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSpinBox;
class QTabWidget;
class QTreeWidget;
class QWidget;
class TEditorItem;
class TPropertyGrid;

// The options dialog: language, currency, theme and accent, the custom fields, the default values of
// a new item and the internet connection, on four pages. Its rules live in TOptionsController; OK
// stores through it.
class TOptionsForm : public TAbstractLayoutForm
{
    Q_OBJECT

public:
    // The previews go to mainWindow.
    explicit TOptionsForm(QWidget* mainWindow, QWidget* owner = nullptr);
    ~TOptionsForm() override;

    // Shows the dialog modally on a page; true when it ended with OK (the values are then stored and
    // saved).
    static bool Execute(QWidget* mainWindow, TOptionsPage page = TOptionsPage::General);
    // Replaces exec() in Execute, so that tests can answer the dialog; an empty function restores it.
    static void SetExecHook(std::function<int(TOptionsForm&)> hook);

    TOptionsController& Controller() const { return *m_controller; }
    void SetActivePage(TOptionsPage page);
    TOptionsPage ActivePage() const;

    QTabWidget* pcOptions() const { return m_pcOptions; }
    QComboBox* cbLang() const { return m_cbLang; }
    QComboBox* cbCurrency() const { return m_cbCurrency; }
    QComboBox* cbTheme() const { return m_cbTheme; }
    QComboBox* cbColorSchemeAccent() const { return m_cbColorSchemeAccent; }
    QCheckBox* cbEnableCustomFields() const { return m_cbEnableCustomFields; }
    QTreeWidget* TLCustomFields() const { return m_TLCustomFields; }
    // The data type box of a custom field row.
    QComboBox* CustomFieldTypeBox(int n) const;
    TPropertyGrid* vgDefaultValues() const { return m_vgDefaultValues; }
    QRadioButton* rbDirect() const { return m_rbDirect; }
    QRadioButton* rbProxy() const { return m_rbProxy; }
    QGroupBox* lgProxy() const { return m_lgProxy; }
    QLineEdit* edtProxyHost() const { return m_edtProxyHost; }
    QSpinBox* seProxyPort() const { return m_seProxyPort; }
    QCheckBox* cbProxyAuth() const { return m_cbProxyAuth; }
    QLineEdit* edtProxyUsername() const { return m_edtProxyUsername; }
    QLineEdit* edtProxyPassword() const { return m_edtProxyPassword; }

    void ApplyTexts() override;
    void accept() override;

private:
    QWidget* CreateGeneralPage();
    QWidget* CreateCustomFieldsPage();
    QWidget* CreateDefaultValuesPage();
    QWidget* CreateConnectionPage();
    void CreateDefaultValueEditors();
    // Every control from the controller's values.
    void ShowValues();
    void ShowEnablement(const TOptionsEnablement& enablement);
    void FillLanguages();
    TORVDefaultValues DefaultValuesShown() const;

    std::unique_ptr<TOptionsController> m_controller;
    std::vector<std::unique_ptr<TEditorItem>> m_editorItems; // the form's own, without a repository
    std::vector<const TEditorItem*> m_rowItems;              // the item of each default value row
    bool m_showing = false; // controls are being filled: their signals change nothing

    QTabWidget* m_pcOptions;
    QLabel* m_lblLanguage = nullptr;
    QLabel* m_lblCurrency = nullptr;
    QLabel* m_lblTheme = nullptr;
    QLabel* m_lblThemeColor = nullptr;
    QComboBox* m_cbLang = nullptr;
    QComboBox* m_cbCurrency = nullptr;
    QComboBox* m_cbTheme = nullptr;
    QComboBox* m_cbColorSchemeAccent = nullptr;
    QCheckBox* m_cbEnableCustomFields = nullptr;
    QTreeWidget* m_TLCustomFields = nullptr;
    QLabel* m_lblDefaultValuesDesc = nullptr;
    TPropertyGrid* m_vgDefaultValues = nullptr;
    QRadioButton* m_rbDirect = nullptr;
    QRadioButton* m_rbProxy = nullptr;
    QGroupBox* m_lgProxy = nullptr;
    QLabel* m_lblProxyHost = nullptr;
    QLabel* m_lblProxyPort = nullptr;
    QLabel* m_lblProxyUsername = nullptr;
    QLabel* m_lblProxyPassword = nullptr;
    QLineEdit* m_edtProxyHost = nullptr;
    QSpinBox* m_seProxyPort = nullptr;
    QCheckBox* m_cbProxyAuth = nullptr;
    QLineEdit* m_edtProxyUsername = nullptr;
    QLineEdit* m_edtProxyPassword = nullptr;
};
