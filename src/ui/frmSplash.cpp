#include "frmSplash.h"

#include "uSplashText.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QApplication>
#include <QFont>
#include <QGuiApplication>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QScreen>

#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

namespace {

constexpr int cSplashWidth = 450;
constexpr int cSplashHeight = 250;
constexpr int cPictureWidth = 190;

QLabel* MakeLabel(QWidget* parent, const QString& name, int pointSize, bool bold, const QColor& colour)
{
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    QFont font = label->font();
    if (pointSize > 0) {
        font.setPointSize(pointSize);
    }
    font.setBold(bold);
    label->setFont(font);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    label->setPalette(palette);
    return label;
}

void DrawBar(QPainter& painter, const QRectF& front, qreal depth)
{
    // The top face, then the front face of a cast bar.
    const QPointF shift(depth, -depth * 0.6);
    QPainterPath top;
    top.moveTo(front.topLeft());
    top.lineTo(front.topLeft() + shift);
    top.lineTo(front.topRight() + shift);
    top.lineTo(front.topRight());
    top.closeSubpath();
    QLinearGradient topGradient(front.topLeft(), front.topLeft() + shift);
    topGradient.setColorAt(0.0, QColor(0xF6, 0xE2, 0x8C));
    topGradient.setColorAt(1.0, QColor(0xD9, 0xB0, 0x3C));
    painter.setPen(QPen(QColor(0x8A, 0x65, 0x12), 1.2));
    painter.setBrush(topGradient);
    painter.drawPath(top);

    QPainterPath side;
    side.moveTo(front.topRight());
    side.lineTo(front.topRight() + shift);
    side.lineTo(front.bottomRight() + shift);
    side.lineTo(front.bottomRight());
    side.closeSubpath();
    painter.setBrush(QColor(0xB0, 0x86, 0x1E));
    painter.drawPath(side);

    QLinearGradient frontGradient(front.topLeft(), front.bottomLeft());
    frontGradient.setColorAt(0.0, QColor(0xF0, 0xCC, 0x5A));
    frontGradient.setColorAt(0.5, QColor(0xD4, 0xA5, 0x2C));
    frontGradient.setColorAt(1.0, QColor(0xA8, 0x7C, 0x18));
    painter.setBrush(frontGradient);
    painter.drawRect(front);

    // The stamp on the face.
    painter.setPen(QPen(QColor(0x8A, 0x65, 0x12, 160), 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(front.adjusted(front.width() * 0.18, front.height() * 0.22, -front.width() * 0.18,
                                    -front.height() * 0.22));
}

void DrawCoin(QPainter& painter, const QPointF& centre, qreal radius)
{
    QRadialGradient body(centre - QPointF(radius * 0.35, radius * 0.35), radius * 1.4);
    body.setColorAt(0.0, QColor(0xFF, 0xF1, 0xA8));
    body.setColorAt(0.45, QColor(0xE8, 0xBE, 0x3E));
    body.setColorAt(1.0, QColor(0x9C, 0x70, 0x10));
    painter.setPen(QPen(QColor(0x7A, 0x55, 0x0C), 1.5));
    painter.setBrush(body);
    painter.drawEllipse(centre, radius, radius);

    // The raised rim and the reeded edge.
    painter.setPen(QPen(QColor(0xA8, 0x7C, 0x18), radius * 0.08));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(centre, radius * 0.86, radius * 0.86);

    // A five-pointed star in the field.
    QPainterPath star;
    for (int n = 0; n < 10; ++n) {
        const qreal angle = -std::numbers::pi / 2 + n * std::numbers::pi / 5;
        const qreal r = (n % 2 == 0) ? radius * 0.5 : radius * 0.21;
        const QPointF point(centre.x() + r * std::cos(angle), centre.y() + r * std::sin(angle));
        if (n == 0) {
            star.moveTo(point);
        } else {
            star.lineTo(point);
        }
    }
    star.closeSubpath();
    painter.setPen(QPen(QColor(0x8A, 0x65, 0x12), 1.0));
    painter.setBrush(QColor(0xF4, 0xD6, 0x6A));
    painter.drawPath(star);

    // The shine.
    QRadialGradient shine(centre - QPointF(radius * 0.4, radius * 0.45), radius * 0.5);
    shine.setColorAt(0.0, QColor(255, 255, 255, 150));
    shine.setColorAt(1.0, QColor(255, 255, 255, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(shine);
    painter.drawEllipse(centre - QPointF(radius * 0.4, radius * 0.45), radius * 0.5, radius * 0.5);
}

} // namespace

QPixmap TSplashForm::DrawSplashPicture(const QSize& size)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);

    const qreal w = size.width();
    const qreal h = size.height();
    // A soft shadow on the ground.
    QRadialGradient shadow(QPointF(w * 0.5, h * 0.86), w * 0.45);
    shadow.setColorAt(0.0, QColor(0, 0, 0, 90));
    shadow.setColorAt(1.0, QColor(0, 0, 0, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(shadow);
    painter.drawEllipse(QPointF(w * 0.5, h * 0.86), w * 0.45, h * 0.08);

    DrawBar(painter, QRectF(w * 0.08, h * 0.58, w * 0.62, h * 0.24), w * 0.14);
    DrawCoin(painter, QPointF(w * 0.66, h * 0.46), qMin(w, h) * 0.27);
    return pixmap;
}

TSplashForm::TSplashForm(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint), m_splashImage(new QLabel(this)),
      m_lProd(MakeLabel(this, u"lProd"_s, 22, true, QColor(0xF4, 0xD6, 0x6A))),
      m_lCompany(MakeLabel(this, u"lCompany"_s, 10, false, QColor(0xE0, 0xE0, 0xE0))),
      m_lVersion(MakeLabel(this, u"lVersion"_s, 9, false, QColor(0xC0, 0xC0, 0xC0))),
      m_lText(MakeLabel(this, u"lText"_s, 9, false, QColor(0xFF, 0xFF, 0xFF)))
{
    setObjectName(u"SplashForm"_s);
    setFixedSize(cSplashWidth, cSplashHeight);
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    QLinearGradient background(0, 0, 0, cSplashHeight);
    background.setColorAt(0.0, QColor(0x1E, 0x2A, 0x3A));
    background.setColorAt(1.0, QColor(0x0B, 0x11, 0x1A));
    palette.setBrush(QPalette::Window, background);
    setPalette(palette);

    m_splashImage->setObjectName(u"SplashImage"_s);
    m_splashImage->setGeometry(10, 20, cPictureWidth, 180);
    m_splashImage->setPixmap(DrawSplashPicture(m_splashImage->size()));

    const int textLeft = cPictureWidth + 30;
    const int textWidth = cSplashWidth - textLeft - 15;
    m_lProd->setGeometry(textLeft, 50, textWidth, 44);
    m_lCompany->setGeometry(textLeft, 96, textWidth, 22);
    m_lVersion->setGeometry(textLeft, 120, textWidth, 20);
    m_lText->setGeometry(15, cSplashHeight - 34, cSplashWidth - 30, 22);

    m_lProd->setText(OEMInfo.Product);
    m_lCompany->setText(OEMInfo.Company);
    m_lVersion->setText(u"v "_s + GetFileVersionText());
    // The design's progress line, unless the language has a text of its own for it.
    const QString loading = GetText(u"cSSplashProgramLoading"_s);
    m_lText->setText(loading.isEmpty() ? u"Program is loading..."_s : loading);

    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.center() - QPoint(cSplashWidth / 2, cSplashHeight / 2));
    }

    SetSplashTextHandler([this](const QString& text) { ShowText(text); });
}

TSplashForm::~TSplashForm()
{
    SetSplashTextHandler({});
}

void TSplashForm::ShowText(const QString& text)
{
    if (!isVisible()) {
        return;
    }
    QApplication::processEvents();
    m_lText->setText(text);
    QApplication::processEvents();
}
