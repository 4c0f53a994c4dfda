#include "support_store.h"

#include "support_common.h"
#include "uDBConnection.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>

void InitStoreTestEnvironment()
{
    static TTempSettingsHome home(false);
    LoadEnglish();
}

QByteArray TestPicture(int width, int height, const char* format, bool noisy)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkYellow);
    if (noisy) {
        QRandomGenerator rng(42);
        for (int y = 0; y < height; ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < width; ++x)
                line[x] = rng.generate() | 0xFF000000u;
        }
    } else {
        QPainter p(&image);
        p.setBrush(Qt::yellow);
        p.drawEllipse(QRect(width / 8, height / 8, width * 3 / 4, height * 3 / 4));
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

void ExecOnFile(const QString& path, const QString& sql)
{
    TDBConnection connection;
    connection.setParam("Database", path);
    connection.setParam("OpenMode", "ReadWrite");
    connection.open();
    connection.execSQL(sql);
    connection.close();
}

QVariant SelectOnFile(const QString& path, const QString& sql)
{
    TDBConnection connection;
    connection.setParam("Database", path);
    connection.setParam("OpenMode", "ReadOnly");
    connection.open();
    const QVariant value = connection.selectValue(sql);
    connection.close();
    return value;
}
