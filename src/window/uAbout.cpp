#include "uAbout.h"

#include <QtGlobal>

#include <cmath>

using namespace Qt::StringLiterals;

const QList<TQuotation>& AboutQuotations()
{
    static const QList<TQuotation> quotations = {
        {u"Gold is money. Everything else is credit."_s, u"J. P. Morgan"_s},
        {u"Gold is the money of kings, silver is the money of gentlemen, barter is the money of peasants, "
         u"but debt is the money of slaves."_s,
         u"Norm Franz"_s},
        {u"Paper money eventually returns to its intrinsic value: zero."_s, u"Voltaire"_s},
        {u"Gold still represents the ultimate form of payment in the world."_s, u"Alan Greenspan"_s},
    };
    return quotations;
}

int QuotationIndex(double random)
{
    const int index = int(std::lround(random * 3.0));
    return qBound(0, index, int(AboutQuotations().size()) - 1);
}

QString AboutVersionText()
{
    return u"v "_s + QStringLiteral(ORV_VERSION_TEXT);
}
