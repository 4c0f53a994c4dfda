#include "galleryPages.h"

#include <QApplication>
#include <QTabWidget>

using namespace Qt::StringLiterals;

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setStyle(u"Fusion"_s);
    QTabWidget window;
    window.setWindowTitle(u"Orvane widgets gallery"_s);
    window.addTab(makeRibbonPage(&window), u"Ribbon"_s);
    window.addTab(makeGridPage(&window), u"Table"_s);
    window.addTab(makeCardPage(&window), u"Cards"_s);
    window.addTab(makePropertyGridPage(&window), u"Property grid"_s);
    window.addTab(makeImageSliderPage(&window), u"Image slider"_s);
    window.resize(1200, 800);
    window.show();
    return app.exec();
}
