#pragma once

#include <QList>
#include <QString>

// What the about dialog shows besides the branding record: the version line and the quotation.

struct TQuotation
{
    QString Words;
    QString Author;
};

// The four quotations in order.
const QList<TQuotation>& AboutQuotations();
// The index for a random number in [0, 1): round(random * 3), so the first and the last turn up
// half as often as the two in the middle.
int QuotationIndex(double random);
// "v " and the version of the program.
QString AboutVersionText();
