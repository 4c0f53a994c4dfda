// Renders the program's icon (an SVG) into the PNG sizes of the hicolor icon theme:
//
//   mkicons icon.svg name outDir size...
//
// writes outDir/<size>x<size>/apps/<name>.png for each size.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() < 4) {
        std::fprintf(stderr, "usage: mkicons icon.svg name outDir size...\n");
        return 2;
    }
    QSvgRenderer renderer(args[0]);
    if (!renderer.isValid()) {
        std::fprintf(stderr, "mkicons: %s is no readable SVG\n", qPrintable(args[0]));
        return 1;
    }
    const QString name = args[1];
    for (const QString& sizeText : args.mid(3)) {
        const int size = sizeText.toInt();
        if (size <= 0) {
            std::fprintf(stderr, "mkicons: bad size %s\n", qPrintable(sizeText));
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(args[2]).arg(size);
        QDir().mkpath(folder);
        if (!image.save(folder + u'/' + name + QStringLiteral(".png"))) {
            std::fprintf(stderr, "mkicons: cannot write into %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
