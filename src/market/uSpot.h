#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

// The current market price of one metal, as the last reply named it.
struct TSpotPrice
{
    int Metal = -1;
    double Price = 0.0;   // one troy ounce, in the currency of the request
    QString Currency;     // the Currency setting when the reply was parsed
    QString DateC;        // the server's time stamp, kept as received
    double ChangeAbs = 0; // only its sign is used
    QString ChangePerc;
};

// The application-wide list of spot prices. Main thread only.
class TSpotPrices
{
public:
    using TLoadedEvent = std::function<void(TSpotPrices*)>;

    TSpotPrices();
    ~TSpotPrices();
    TSpotPrices(const TSpotPrices&) = delete;
    TSpotPrices& operator=(const TSpotPrices&) = delete;

    int Count() const { return static_cast<int>(m_items.size()); }
    const TSpotPrice& Item(int index) const { return *m_items.at(index); }
    void Add(const TSpotPrice& price);
    void Clear();

    // Receives a deciphered reply: clears the list first, then appends one entry per
    // element of a JSON array whose code is known, then calls OnLoaded. A root that is
    // not an array leaves the list empty; an empty text is "{}". Text that is not JSON
    // (blanks and line breaks alone included), or a price that is negative, NaN or
    // infinite, or a change that is not finite, raises with the list left empty, and
    // OnLoaded is not called. DateC and ChangePerc keep the text received, also when they
    // come as JSON numbers.
    void LoadFromText(const QString& text, const QString& currency);

    // Fetches the prices in the background: one GET of CatalogueServerURL() +
    // "/orv/spot.php?currency=" + the Currency setting, appended as it stands. Returns at once.
    // While a refresh is under way (Busy) the call is dropped, not queued. The deciphered reply
    // goes to LoadFromText on the main thread with the Currency of that moment. A failed refresh
    // (transport, status, cipher or JSON) says nothing: the list keeps what it had, or is left
    // empty when the parse failed, OnLoaded does not run, and Busy goes back to false.
    void Refresh();

    // First entry whose Metal equals metal, or nullptr.
    const TSpotPrice* FindSpot(int metal) const;
    // Price of FindSpot(metal), 0.0 when none is held.
    double SpotPriceOf(int metal) const;

    TLoadedEvent OnLoaded;
    bool Busy = false;

private:
    // The text event of the refresh worker (main thread).
    void ReceiveText(const QStringList& lines);

    std::vector<std::unique_ptr<TSpotPrice>> m_items;
    // Watched by the handlers of a refresh worker, which may outlive this object.
    std::shared_ptr<TSpotPrices*> m_self;
};

// "XAU" -> 0 ... "XCU" -> 5, case-sensitive; anything else -1.
int MetalCodeToIndex(const QString& code);
// The spot symbol of a metal index, empty when out of range.
QString MetalIndexToCode(int metal);

// The single instance.
TSpotPrices& SpotPrices();
