#include "galleryPages.h"

#include <QLabel>

using namespace Qt::StringLiterals;

QWidget* makePropertyGridPage(QWidget* parent)
{
    return new QLabel(u"Not built yet"_s, parent);
}
