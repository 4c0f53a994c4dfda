#pragma once

#include "uDBConnection.h"
#include "uDBDataset.h"
#include "uDBField.h"
#include "uDBQuery.h"
#include "uItemTexts.h"
#include "uZTTypes.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <array>

class TMetalAsset;

// The collection data module: the one connection to the open collection file, the mints table,
// the item dataset with its calculated fields and rules, and the operations on the file as a
// whole (new, open, save as, vacuum). Main thread only.
class TDM_InternalData : public QObject
{
    Q_OBJECT
public:
    // Shows the splash text "Loading data...", clears DatabasePath and connects to nothing.
    explicit TDM_InternalData(QObject* parent = nullptr);
    ~TDM_InternalData() override;

    TDBConnection* ADConnection = nullptr; // children of this module
    TDBDataset* tblMints = nullptr;
    TDBDataset* qDS_Items = nullptr;
    TDBQuery* qRunQuery = nullptr;     // general statements on the connection
    TDBDataset* qBasicStats = nullptr; // per-metal totals over vCoinsStats; opened by its users
    QString DatabasePath;              // full path of the open file; empty until a connect succeeded

    // The connection is open and the item dataset active.
    bool Connected() const;

    // Opens a file as the collection. A missing file gives false and changes nothing. A file that
    // is no collection raises the database layer's error and leaves nothing connected, while
    // DatabasePath and DBPath keep the previous path. With TRowFetch::Deferred the item rows are
    // read only by FetchPendingItems(): the collection is open (and checked) at once, and listed
    // when they arrive.
    bool ConnectDatabase(const QString& path, TRowFetch items = TRowFetch::Now);
    // Reads the item rows of a deferred connect; nothing when none are pending.
    void FetchPendingItems();
    // After new spot prices: the money fields of every item (SpotValue ... ROIPercent) worked out
    // again in memory by the rules of qDS_ItemsCalcFields, without reading the file; observers get
    // one reset. Nothing when the items are not open.
    void RevalueItems();
    // Writes the blank collection file to path, replacing any file of that name.
    void CreateBlankDatabase(const QString& path);
    // Copies the open file to path (after committing a running transaction). Nothing happens when
    // not connected or when path names the open file.
    void SaveDatabaseAs(const QString& path);
    // Compacts the open file.
    void VacuumDatabase();
    // Posts each dataset of the list that is in edit or insert state.
    void PostPendingEdits(const QList<TDBDataset*>& datasets);
    // With controls disabled: posts a pending edit of qDS_Items and reads it again.
    void RefreshItems();

    // ID of the mint with exactly this name, -1 when there is none.
    int MintIDByName(const QString& name);
    // Logo of the mint with this ID: its bytes, or null.
    QVariant MintLogoByID(int id);
    // Display labels of the fields of tblMints and qDS_Items from the language.
    void TranslateFieldLabels();
    // Appends a catalogue result as a new item and posts it.
    void AppendCatalogueItem(const TMetalAsset& item);

    // Event handlers of qDS_Items. The module also takes its BeforeOpen, BeforeRefresh and
    // BeforeCancel events (to take the caption texts from the language once per read).
    void qDS_ItemsAfterInsert(TDBDataset& dataset);
    void qDS_ItemsBeforePost(TDBDataset& dataset);
    void qDS_ItemsCalcFields(TDBDataset& dataset);
    void qDS_ItemsReadRecord(TDBDataset& dataset);
    void qDS_ItemsWeightGramChange(TDBField& field);
    void qDS_ItemsWeightOzChange(TDBField& field);
    void qDS_ItemsPhotoFrontChange(TDBField& field);
    void qDS_ItemsPhotoBackChange(TDBField& field);

    // The statement of qDS_Items.
    static QString ItemsSQL();
    // The statement of qBasicStats.
    static QString BasicStatsSQL();

private:
    void CreateMintFields();
    // The money fields of the record that read and write stand for (its field objects, or a record
    // being recalculated): Float(field), Integer(field) and Set(field, value).
    template <typename TReader, typename TWriter>
    void ValueRecord(const TReader& read, const TWriter& write) const;
    // Caption and money fields of the record, as qDS_ItemsCalcFields sets them.
    template <typename TValues> void CalcRecord(const TValues& read, const TValues& write);
    void CreateItemFields();
    QByteArray BlankThumbnail(int metal, int coinType, bool isObverse);
    // Takes the metal and type names of the current language for the captions.
    void LoadCaptionTexts();

    // Fields of qDS_Items used per record.
    TDBField* m_fName = nullptr;
    TDBField* m_fMetal = nullptr;
    TDBField* m_fYear = nullptr;
    TDBField* m_fWeightG = nullptr;
    TDBField* m_fCoinType = nullptr;
    TDBField* m_fQty = nullptr;
    TDBField* m_fPrice = nullptr;
    TDBField* m_fExpectedPremium = nullptr;
    TDBField* m_fTotalPrice = nullptr;
    TDBField* m_fThumbFront = nullptr;
    TDBField* m_fThumbBack = nullptr;
    TDBField* m_fPhotoFront = nullptr;
    TDBField* m_fPhotoBack = nullptr;
    TDBField* m_fCaption = nullptr;
    TDBField* m_fWeightOz = nullptr;
    TDBField* m_fWeightGram = nullptr;
    TDBField* m_fSpotValue = nullptr;
    TDBField* m_fLiquidationValue = nullptr;
    TDBField* m_fROI = nullptr;
    TDBField* m_fSpotValuexQty = nullptr;
    TDBField* m_fLiquidationValuexQty = nullptr;
    TDBField* m_fROIxQty = nullptr;
    TDBField* m_fROIPercent = nullptr;

    // Display key of each labelled field, by dataset.
    QList<std::pair<TDBField*, QString>> m_mintLabels;
    QList<std::pair<TDBField*, QString>> m_itemLabels;

    // Metal and type names of the captions, by code: taken from the language before each read of
    // records (open, refresh, post, cancel), so that a caption never asks the language per row.
    std::array<QString, MetalCount> m_metalTexts;
    std::array<QString, CoinTypeCount> m_coinTypeTexts;

    // Thumbnails of the blank pictures, by picture name: they never change during a run.
    QHash<QString, QByteArray> m_blankThumbnails;
};

// The data module of this run (set by its constructor, cleared by its destructor); nullptr when none.
TDM_InternalData* DM_InternalData();
