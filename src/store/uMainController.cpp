#include "uMainController.h"

#include "dmInternalData.h"
#include "uSpot.h"
#include "uValuation.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

// Enables the dataset's controls again however the block between is left.
class TControlsDisabled
{
public:
    explicit TControlsDisabled(TDBDataset& dataset) : m_dataset(dataset) { m_dataset.disableControls(); }
    ~TControlsDisabled() { m_dataset.enableControls(); }
    TControlsDisabled(const TControlsDisabled&) = delete;
    TControlsDisabled& operator=(const TControlsDisabled&) = delete;

private:
    TDBDataset& m_dataset;
};

bool IsEditing(const TDBDataset& dataset)
{
    const TDatasetState state = dataset.state();
    return state == TDatasetState::Edit || state == TDatasetState::Insert;
}

} // namespace

// ---- File dialogs -----------------------------------------------------------------------------------

TFileDialogRequest DatabaseDialogRequest()
{
    TFileDialogRequest request;
    request.Filter = QString::fromUtf16(cDatabaseDialogFilter);
    request.DefaultExt = QString::fromUtf16(cDatabaseDefaultExt);
    request.InitialDir = ReadDefaultDBFolder();
    return request;
}

QString DialogFilterToQt(const QString& filter)
{
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype n = 0; n + 1 < parts.size(); n += 2) {
        const QString description = parts.at(n).trimmed();
        QStringList patterns = parts.at(n + 1).split(u';', Qt::SkipEmptyParts);
        for (QString& pattern : patterns) {
            pattern = pattern.trimmed();
        }
        const QString patternText = patterns.join(u' ');
        if (description.endsWith(u'(' + patternText + u')')) {
            filters << description;
        } else {
            filters << description + u" ("_s + patternText + u')';
        }
    }
    return filters.join(u";;"_s);
}

QString ApplyDefaultExt(const QString& fileName, const QString& ext)
{
    if (fileName.isEmpty() || ext.isEmpty()) {
        return fileName;
    }
    const QString name = QFileInfo(fileName).fileName();
    if (name.contains(u'.')) {
        return fileName;
    }
    return fileName + u'.' + ext;
}

// ---- Commands ---------------------------------------------------------------------------------------

bool MainCommandEnabled(TMainCommand command, bool connected)
{
    switch (command) {
    case TMainCommand::DBProperties:
        return connected;
    case TMainCommand::DBNew:
    case TMainCommand::DBOpen:
    case TMainCommand::DBSaveAs:
    case TMainCommand::Exit:
        return true;
    }
    return true;
}

// ---- Spot prices ------------------------------------------------------------------------------------

TSpotGlyph SpotGlyphFor(double changeAbs)
{
    return changeAbs < 0.0 ? TSpotGlyph::Fall : TSpotGlyph::Rise;
}

QString MetalDisplayName(int metal)
{
    const QString code = MetalIndexToCode(metal); // "XAU" -> key "cS_AU"
    if (code.size() < 2) {
        return {};
    }
    return GetText(u"cS_"_s + code.mid(1));
}

std::optional<TSpotButtonText> SpotButtonTextFor(const TSpotPrices& prices, int metal,
                                                 const QString& currency)
{
    const TSpotPrice* spot = prices.FindSpot(metal);
    if (!spot) {
        return std::nullopt;
    }
    TSpotButtonText text;
    text.Caption =
        FormatText(u"%s: %s"_s, {MetalDisplayName(metal), FormatUsersCurrency(spot->Price, currency)});
    text.Hint = FormatText(GetText(u"cSMainSpotPriceHintFmt"_s), {spot->DateC});
    text.Glyph = SpotGlyphFor(spot->ChangeAbs);
    return text;
}

// ---- The controller ---------------------------------------------------------------------------------

TMainController::TMainController(TDM_InternalData* data, TFileDialogSeam* dialogs, QObject* parent)
    : QObject(parent), m_data(data), m_dialogs(dialogs)
{}

bool TMainController::Connected() const
{
    return m_data && m_data->Connected();
}

void TMainController::ShowDocumentName()
{
    const QString name =
        m_data->DatabasePath.isEmpty() ? QString() : QFileInfo(m_data->DatabasePath).fileName();
    if (name != m_documentName) {
        m_documentName = name;
        emit DocumentNameChanged(m_documentName);
    }
}

void TMainController::DBNew()
{
    const QString fileName = ApplyDefaultExt(m_dialogs->ExecuteSaveDialog(DatabaseDialogRequest()),
                                             QString::fromUtf16(cDatabaseDefaultExt));
    if (fileName.isEmpty()) {
        return;
    }
    m_data->CreateBlankDatabase(fileName);
    m_data->ConnectDatabase(fileName);
    ShowDocumentName();
    emit DatabaseChanged();
}

void TMainController::DBOpen()
{
    const QString fileName = ApplyDefaultExt(m_dialogs->ExecuteOpenDialog(DatabaseDialogRequest()),
                                             QString::fromUtf16(cDatabaseDefaultExt));
    if (fileName.isEmpty()) {
        return;
    }
    m_data->ConnectDatabase(fileName);
    ShowDocumentName();
    emit DatabaseChanged();
}

void TMainController::DBSaveAs()
{
    const QString fileName = ApplyDefaultExt(m_dialogs->ExecuteSaveDialog(DatabaseDialogRequest()),
                                             QString::fromUtf16(cDatabaseDefaultExt));
    if (fileName.isEmpty()) {
        return;
    }
    m_data->SaveDatabaseAs(fileName);
    m_data->ConnectDatabase(fileName);
    ShowDocumentName();
    emit DatabaseChanged();
}

bool TMainController::ConnectLastDatabase(TRowFetch items)
{
    if (DBPath.isEmpty() || !QFileInfo(DBPath).isFile()) {
        return false;
    }
    if (!m_data->ConnectDatabase(DBPath, items)) {
        return false;
    }
    const QString name = QFileInfo(DBPath).fileName();
    if (name != m_documentName) {
        m_documentName = name;
        emit DocumentNameChanged(m_documentName);
    }
    emit DatabaseChanged();
    return true;
}

bool TMainController::FetchPendingItems()
{
    if (!m_data->qDS_Items->rowsPending()) {
        return false;
    }
    m_data->FetchPendingItems();
    emit DatabaseChanged();
    return true;
}

void TMainController::StartFirstSpotRefresh()
{
    // Runs in the background; the list's OnLoaded handler updates the buttons and the values.
    SpotPrices().Refresh();
}

void TMainController::CloseQuery()
{
    m_data->PostPendingEdits({m_data->tblMints, m_data->qDS_Items});
}

bool TMainController::RefreshItemsForNewPrices()
{
    if (!Connected()) {
        return false;
    }
    TDBDataset& items = *m_data->qDS_Items;
    if (!items.active() || IsEditing(items) || items.rowsPending()) {
        return false;
    }
    const TControlsDisabled bracket(items);
    m_data->RevalueItems();
    return true;
}

bool TMainController::ItemsPending() const
{
    return Connected() && m_data->qDS_Items->rowsPending();
}

int TMainController::ItemCount() const
{
    if (!Connected() || !m_data->qDS_Items->active()) {
        return -1;
    }
    return m_data->qDS_Items->recordCount();
}
