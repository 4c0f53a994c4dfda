#pragma once

#include "uAddController.h"

#include <QDialog>
#include <QHash>

#include <functional>
#include <memory>
#include <vector>

class QAction;
class QComboBox;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;
class QTabBar;
class QToolButton;
class TCheckComboBox;
class TCheckEditorItem;
class TDM_InternalData;
class TFloatEditorItem;
class TGrid;
class TGridCardView;
class TImageSlider;
class TListEditorItem;
class TMemoEditorItem;
class TNumberEdit;
class TPictureEditorItem;
class TPropertyGrid;
class TRibbon;
class TSearchBox;
class TTextEditorItem;

// The add dialog: search the online catalogue in tabs of cards and pick what goes into the
// collection. The logic is TAddController's; this window presents it.
class TAddForm : public QDialog, private TAddFormSeam
{
    Q_OBJECT

public:
    // data gives the local mints and may be null (no collection open).
    explicit TAddForm(TDM_InternalData* data, QWidget* parent = nullptr);
    ~TAddForm() override;

    // Shows the dialog modally for one request and returns the assets the user added, with the
    // pictures that arrived before the dialog went.
    static std::vector<std::unique_ptr<TMetalAsset>> Execute(quint8 mode, qint32 tag,
                                                             const QString& searchText, bool autoSearch,
                                                             TDM_InternalData* data, QWidget* parent);

    // The dialogs of other windows, replaceable until those windows exist and in tests.
    // The sort dialog on a sort; true and the new sort on OK.
    static std::function<bool(QWidget* parent, TAddSort& sort)> SortDialogRunner;
    // The options dialog on its internet page.
    static std::function<void(QWidget* parent)> ProxySettingsRunner;
    // The full-size picture window.
    static std::function<void(QWidget* parent, const QImage& image)> PictureViewer;

    TAddController& Controller() { return *m_controller; }
    QAction* Action(const QString& name) const { return m_actions.value(name); }
    TRibbon* Ribbon() const { return m_ribbon; }
    TGrid* SearchGrid() const { return m_grid; }
    TGridCardView* TemplateView() const { return m_template; }
    TGridCardView* TabView(int tab) const;
    QTabBar* TabControl() const { return m_tabControl; }
    TSearchBox* SearchBox() const { return m_edtSearch; }
    QWidget* AdvancedOptions() const { return m_advanced; }
    TImageSlider* ImageSlider() const { return m_slider; }
    QLabel* PicType() const { return m_lPicType; }
    TPropertyGrid* Data() const { return m_vgData; }
    QProgressBar* ProgressBar() const { return m_progress; }
    QLabel* StatusText() const { return m_status; }
    QMenu* CardMenu() const { return m_pmCard; }
    QMenu* TabMenu() const { return m_pmTabs; }
    QMenu* ClearMenu() const { return m_pmClear; }

    // Opens the advanced options under the search box.
    void ShowAdvancedOptions();
    // Reads the search box and the advanced options into the controller's filters.
    void ReadFilters();
    // Sets the enabled state of every command (the event loop does so each time it goes idle).
    void UpdateActions();
    // The height of the thumbnail row for a card width: 0.4 of it, rounded.
    static int ThumbHeightFor(int cardWidth);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override;

private:
    // TAddFormSeam
    QByteArray PlaceholderPicture(int metal, int coinType, bool front) override;
    int MintIDByName(const QString& name) override;
    QByteArray MintPicture(int mintID) override;
    bool ExecuteSortDialog(TAddSort& sort) override;
    void ExecuteProxySettings() override;
    bool TestConnection() override;

    // Made once by the constructor (frmAddBuild.cpp).
    void CreateEditorItems();
    void CreateActions();
    void CreateRibbon();
    void CreateSearchRow(QWidget* parent);
    void CreateAdvancedOptions();
    void CreateGrid(QWidget* parent);
    void CreateRightPane(QWidget* parent);
    void TranslateForm();
    void ConnectController();

    void TabAdded(int index);
    void TabRemoved(int index);
    void ApplySort();
    void ShowPane();
    void ShowProgress();
    void ViewSelectionChanged(TGridCardView* view);
    void SetThumbHeight(TGridCardView* view, int height);
    void WeightUnitChanged(int unit);
    void ClearAdvanced();

    TDM_InternalData* m_data;
    std::unique_ptr<TAddController> m_controller;
    QHash<QString, QAction*> m_actions;

    TRibbon* m_ribbon = nullptr;
    TSearchBox* m_edtSearch = nullptr;
    QToolButton* m_btnSearchOptions = nullptr;
    QPushButton* m_btnSearch = nullptr;
    QWidget* m_advanced = nullptr;
    TCheckComboBox* m_cbMetals = nullptr;
    TCheckComboBox* m_cbTypes = nullptr;
    QComboBox* m_cbMint = nullptr;
    TNumberEdit* m_seWeightFrom = nullptr;
    TNumberEdit* m_seWeightTo = nullptr;
    QComboBox* m_cbWeightUnit = nullptr;
    TNumberEdit* m_seYearFrom = nullptr;
    TNumberEdit* m_seYearTo = nullptr;

    QTabBar* m_tabControl = nullptr;
    TGrid* m_grid = nullptr;
    TGridCardView* m_template = nullptr;
    std::unique_ptr<TAddResultsModel> m_templateModel;
    QList<TGridCardView*> m_tabViews; // in the order of the controller's tabs
    bool m_syncing = false;

    QLabel* m_lPicType = nullptr;
    TImageSlider* m_slider = nullptr;
    TPropertyGrid* m_vgData = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_status = nullptr;
    QMenu* m_pmCard = nullptr;
    QMenu* m_pmTabs = nullptr;
    QMenu* m_pmClear = nullptr;

    // How cells and pane rows are shown.
    std::unique_ptr<TPictureEditorItem> m_pictureItem;
    std::unique_ptr<TFloatEditorItem> m_weightItem;
    std::unique_ptr<TTextEditorItem> m_textItem;
    std::unique_ptr<TListEditorItem> m_metalItem;
    std::unique_ptr<TListEditorItem> m_typeItem;
    std::unique_ptr<TCheckEditorItem> m_checkItem;
    std::unique_ptr<TMemoEditorItem> m_memoItem;
    std::unique_ptr<TPictureEditorItem> m_mintPictureItem;
};
