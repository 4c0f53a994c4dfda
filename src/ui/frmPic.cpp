#include "frmPic.h"

#include "uPictureEdit.h"
#include "uPictures.h"
#include "uZTStrings.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <cmath>

using namespace Qt::StringLiterals;

// The picture at the current zoom, painted scaled; its size is the scaled size.
class TPictureCanvas : public QWidget
{
public:
    explicit TPictureCanvas(QWidget* parent) : QWidget(parent) {}

    void setPicture(const QImage& image, double zoom)
    {
        m_image = image;
        m_zoom = zoom;
        const QSize size(std::max(1, int(std::lround(image.width() * zoom))),
                         std::max(1, int(std::lround(image.height() * zoom))));
        setFixedSize(size);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, m_zoom < 1.0);
        painter.drawImage(rect(), m_image);
    }

private:
    QImage m_image;
    double m_zoom = 1.0;
};

namespace {

std::function<QString(QWidget*, const QString&)>& saveRunner()
{
    static std::function<QString(QWidget*, const QString&)> runner;
    return runner;
}

QString Text(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

} // namespace

TShowPictureForm::TShowPictureForm(const QByteArray& bytes, TPictureViewerSource source, QWidget* owner)
    : QDialog(owner), m_bytes(bytes), m_image(DecodeUpright(bytes)), m_source(source)
{
    if (m_image.isNull()) {
        throw EPictureError(u"The picture cannot be read."_s);
    }
    setObjectName(u"frmPic"_s);
    setMinimumSize(50, 50);
    setSizeGripEnabled(false);

    m_area = new QScrollArea(this);
    m_area->setObjectName(u"ImageArea"_s);
    m_area->setAlignment(Qt::AlignCenter);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setBackgroundRole(QPalette::Dark);
    m_canvas = new TPictureCanvas(m_area);
    m_area->setWidget(m_canvas);
    m_area->viewport()->installEventFilter(this);
    m_area->setContextMenuPolicy(Qt::DefaultContextMenu);

    m_actCopy = new QAction(this);
    m_actCopy->setShortcut(QKeySequence::Copy);
    m_actSaveAs = new QAction(this);
    m_actSaveAs->setShortcut(QKeySequence::Save);
    m_actFit = new QAction(this);
    m_actFit->setShortcut(Qt::Key_F);
    m_actActualSize = new QAction(this);
    m_actActualSize->setShortcut(Qt::Key_1);
    addActions({m_actCopy, m_actSaveAs, m_actFit, m_actActualSize});
    connect(m_actCopy, &QAction::triggered, this, [this] { CopyToClipboard(); });
    connect(m_actSaveAs, &QAction::triggered, this, [this] { SaveAs(); });
    connect(m_actFit, &QAction::triggered, this, [this] { FitToWindow(); });
    connect(m_actActualSize, &QAction::triggered, this, [this] { ActualSize(); });

    m_statusBar = new QStatusBar(this);
    m_statusBar->setSizeGripEnabled(true);
    m_status = new QLabel(m_statusBar);
    m_status->setObjectName(u"StatusPanel"_s);
    m_statusBar->addWidget(m_status, 1);
    m_btnFit = new QToolButton(m_statusBar);
    m_btnFit->setDefaultAction(m_actFit);
    m_btnFit->setAutoRaise(true);
    m_btnActual = new QToolButton(m_statusBar);
    m_btnActual->setDefaultAction(m_actActualSize);
    m_btnActual->setAutoRaise(true);
    m_slider = new QSlider(Qt::Horizontal, m_statusBar);
    m_slider->setObjectName(u"ZoomSlider"_s);
    m_slider->setRange(ZoomToPercent(MinPictureZoom), 400);
    m_slider->setFixedWidth(fontMetrics().horizontalAdvance(u'M') * 7);
    m_status->setMinimumWidth(0);
    m_statusBar->addPermanentWidget(m_btnFit);
    m_statusBar->addPermanentWidget(m_btnActual);
    m_statusBar->addPermanentWidget(m_slider);
    connect(m_slider, &QSlider::valueChanged, this, [this](int percent) {
        if (percent != ZoomToPercent(m_zoom)) {
            SetZoom(PercentToZoom(percent));
        }
    });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_area, 1);
    layout->addWidget(m_statusBar);

    TranslateForm();
    m_status->setText(StatusText());
    SetZoom(1.0);
    resize(InitialSize());
}

void TShowPictureForm::ShowPicture(const QByteArray& bytes, TPictureViewerSource source, QWidget* owner)
{
    TShowPictureForm form(bytes, source, owner);
    if (owner) {
        const QRect frame = owner->window()->frameGeometry();
        QRect rect(QPoint(), form.size());
        rect.moveCenter(frame.center());
        form.move(rect.topLeft());
    }
    form.exec();
}

QSize TShowPictureForm::InitialSize() const
{
    QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
    const QSize available = screen ? screen->availableSize() : QSize();
    return PictureViewerWindowSize(m_source, m_image.size(), m_statusBar->sizeHint().height(), available);
}

QString TShowPictureForm::StatusText() const
{
    return PictureStatusText(m_bytes);
}

void TShowPictureForm::SetZoom(double zoom)
{
    m_zoom = std::clamp(zoom, MinPictureZoom, MaxPictureZoom);
    UpdateCanvas();
}

void TShowPictureForm::FitToWindow()
{
    SetZoom(FitPictureZoom(m_image.size(), m_area->viewport()->size()));
}

void TShowPictureForm::ActualSize()
{
    SetZoom(1.0);
}

void TShowPictureForm::WheelZoom(int steps, QPoint pos)
{
    QScrollBar* h = m_area->horizontalScrollBar();
    QScrollBar* v = m_area->verticalScrollBar();
    // The picture point under the mouse, in picture pixels.
    const QPointF canvasPos = m_canvas->mapFrom(m_area->viewport(), pos);
    const QPointF picturePoint = canvasPos / m_zoom;
    SetZoom(WheelPictureZoom(m_zoom, steps));
    const QPointF after = picturePoint * m_zoom;
    h->setValue(int(std::lround(after.x() - pos.x())));
    v->setValue(int(std::lround(after.y() - pos.y())));
}

void TShowPictureForm::CopyToClipboard() const
{
    auto* data = new QMimeData;
    data->setImageData(m_image);
    QApplication::clipboard()->setMimeData(data);
}

bool TShowPictureForm::SaveAs()
{
    const QString suffix = PictureSuffix(m_bytes);
    QString path = saveRunner() ? saveRunner()(this, suffix)
                                : QFileDialog::getSaveFileName(this, QString(), QString(),
                                                               u"*."_s + suffix + u";;* (*)"_s);
    if (path.isEmpty()) {
        return false;
    }
    if (!suffix.isEmpty() && !path.contains(u'.')) {
        path += u'.' + suffix;
    }
    if (!SaveToFile(path)) {
        throw EPictureError(u"The file '%1' cannot be written."_s.arg(path));
    }
    return true;
}

bool TShowPictureForm::SaveToFile(const QString& path) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    return file.write(m_bytes) == m_bytes.size() && file.flush();
}

void TShowPictureForm::SetSaveFileNameRunner(std::function<QString(QWidget*, const QString&)> runner)
{
    saveRunner() = std::move(runner);
}

bool TShowPictureForm::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_area->viewport()) {
        if (event->type() == QEvent::Wheel) {
            auto* wheel = static_cast<QWheelEvent*>(event);
            const int delta = wheel->angleDelta().y();
            if (delta != 0) {
                WheelZoom(delta > 0 ? 1 : -1, wheel->position().toPoint());
            }
            return true;
        }
        if (event->type() == QEvent::ContextMenu) {
            auto* menuEvent = static_cast<QContextMenuEvent*>(event);
            QMenu menu(this);
            menu.addAction(m_actCopy);
            menu.addAction(m_actSaveAs);
            menu.addSeparator();
            menu.addAction(m_actFit);
            menu.addAction(m_actActualSize);
            menu.exec(menuEvent->globalPos());
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void TShowPictureForm::TranslateForm()
{
    setLayoutDirection(LanguageIsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    setWindowTitle(Text(u"cSPicture"_s, u"Picture"_s));
    m_actCopy->setText(Text(u"cSPicCopy"_s, u"&Copy"_s));
    m_actSaveAs->setText(Text(u"cSPicSaveAs"_s, u"&Save as..."_s));
    m_actFit->setText(Text(u"cSPicFitToWindow"_s, u"Fit to window"_s));
    m_actActualSize->setText(Text(u"cSPicActualSize"_s, u"100%"_s));
    for (QToolButton* button : {m_btnFit, m_btnActual}) {
        button->setMinimumWidth(button->sizeHint().width());
    }
}

void TShowPictureForm::UpdateCanvas()
{
    m_canvas->setPicture(m_image, m_zoom);
    const int percent = ZoomToPercent(m_zoom);
    if (m_slider->value() != percent) {
        const QSignalBlocker blocker(m_slider);
        m_slider->setValue(std::min(percent, m_slider->maximum()));
    }
    m_slider->setToolTip(Text(u"cSPicZoom"_s, u"Zoom"_s) + u": "_s + QString::number(percent) + u'%');
}
