#include "uPictureEdit.h"

#include "uEditorItem.h"
#include "uWidgetTexts.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileDialog>
#include <QImageReader>
#include <QImageWriter>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QStyle>

#include <exception>

using namespace Qt::StringLiterals;

namespace {

TPictureEdit::TFileNameRunner& fileNameRunner()
{
    static TPictureEdit::TFileNameRunner runner;
    return runner;
}

QString& loadPatterns()
{
    static QString patterns;
    return patterns;
}

QImage decodeUpright(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    return reader.read();
}

QString defaultPatterns()
{
    QStringList patterns;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        patterns << u"*."_s + QString::fromLatin1(format);
    return patterns.join(u' ');
}

} // namespace

QString PictureSuffix(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray format = QImageReader::imageFormat(&buffer);
    if (format == "jpeg")
        return u"jpg"_s;
    if (format == "tiff")
        return u"tif"_s;
    return QString::fromLatin1(format);
}

TPictureEdit::TPictureEdit(QWidget* parent)
    : QFrame(parent), m_cut(new QAction(this)), m_copy(new QAction(this)), m_paste(new QAction(this)),
      m_delete(new QAction(this)), m_load(new QAction(this)), m_save(new QAction(this))
{
    setFrameShape(QFrame::NoFrame);
    setContentsMargins(1, 1, 1, 1);
    setFocusPolicy(Qt::StrongFocus);
    // An input field: the base colour inside a frame, in light and dark palettes alike.
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    m_cut->setObjectName(u"actPictureCut"_s);
    m_copy->setObjectName(u"actPictureCopy"_s);
    m_paste->setObjectName(u"actPicturePaste"_s);
    m_delete->setObjectName(u"actPictureDelete"_s);
    m_load->setObjectName(u"actPictureLoad"_s);
    m_save->setObjectName(u"actPictureSave"_s);
    connect(m_cut, &QAction::triggered, this, [this] { cut(); });
    connect(m_copy, &QAction::triggered, this, [this] { copy(); });
    connect(m_paste, &QAction::triggered, this, [this] { paste(); });
    connect(m_delete, &QAction::triggered, this, [this] { clear(); });
    connect(m_load, &QAction::triggered, this, [this] { load(); });
    connect(m_save, &QAction::triggered, this, [this] { save(); });
    retranslate();
    updateActions();
}

void TPictureEdit::setPicture(const QByteArray& bytes)
{
    m_bytes = bytes;
    m_image = decodeUpright(bytes);
    updateActions();
    update();
}

void TPictureEdit::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    updateActions();
}

void TPictureEdit::setEmptyText(const QString& text)
{
    m_emptyText = text;
    update();
}

void TPictureEdit::addMenuAction(QAction* action)
{
    if (action && !m_extra.contains(action))
        m_extra.append(action);
}

QMenu* TPictureEdit::createMenu(QWidget* parent)
{
    retranslate();
    updateActions();
    auto* menu = new QMenu(parent);
    menu->setObjectName(u"PictureMenu"_s);
    menu->addAction(m_cut);
    menu->addAction(m_copy);
    menu->addAction(m_paste);
    menu->addAction(m_delete);
    menu->addSeparator();
    menu->addAction(m_load);
    menu->addAction(m_save);
    bool separated = false;
    for (const QPointer<QAction>& action : std::as_const(m_extra)) {
        if (action.isNull())
            continue;
        if (!separated) {
            menu->addSeparator();
            separated = true;
        }
        menu->addAction(action);
    }
    return menu;
}

bool TPictureEdit::cut()
{
    if (m_readOnly || !hasPicture())
        return false;
    copy();
    return clear();
}

bool TPictureEdit::copy() const
{
    if (!hasPicture())
        return false;
    auto* data = new QMimeData;
    data->setImageData(m_image);
    // The encoded bytes as they are, for programs that take them.
    const QString suffix = PictureSuffix(m_bytes);
    if (suffix == u"png"_s)
        data->setData(u"image/png"_s, m_bytes);
    else if (suffix == u"jpg"_s)
        data->setData(u"image/jpeg"_s, m_bytes);
    QApplication::clipboard()->setMimeData(data);
    return true;
}

bool TPictureEdit::paste()
{
    if (m_readOnly)
        return false;
    const QMimeData* data = QApplication::clipboard()->mimeData();
    QByteArray bytes;
    if (data) {
        for (const QString& type : {u"image/png"_s, u"image/jpeg"_s}) {
            if (data->hasFormat(type)) {
                bytes = data->data(type);
                break;
            }
        }
        if (bytes.isEmpty() && data->hasImage()) {
            const QImage image = qvariant_cast<QImage>(data->imageData());
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            if (!image.isNull())
                image.save(&buffer, "PNG");
        }
        if (bytes.isEmpty() && data->hasUrls() && !data->urls().isEmpty() &&
            data->urls().first().isLocalFile())
            return loadFile(data->urls().first().toLocalFile());
    }
    if (bytes.isEmpty()) {
        report(WidgetTexts().clipboardNoPicture);
        return false;
    }
    return takePicture(bytes);
}

bool TPictureEdit::clear()
{
    if (m_readOnly || !hasPicture())
        return false;
    setPicture({});
    emit pictureChanged();
    return true;
}

bool TPictureEdit::load()
{
    if (m_readOnly)
        return false;
    const QString patterns = loadPatterns().isEmpty() ? defaultPatterns() : loadPatterns();
    const QString filter =
        WidgetTexts().pictureFiles + u" ("_s + patterns + u");;"_s + WidgetTexts().allFiles + u" (*)"_s;
    const QString path = fileNameRunner() ? fileNameRunner()(this, false, filter, {})
                                          : QFileDialog::getOpenFileName(this, QString(), QString(), filter);
    if (path.isEmpty())
        return false;
    return loadFile(path);
}

bool TPictureEdit::loadFile(const QString& path)
{
    if (m_readOnly)
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        report(WidgetTexts().pictureNotReadable.arg(path));
        return false;
    }
    return takePicture(file.readAll());
}

bool TPictureEdit::save()
{
    if (!hasPicture())
        return false;
    const QString suffix = PictureSuffix(m_bytes);
    const QString filter = u"*."_s + suffix + u";;"_s + WidgetTexts().allFiles + u" (*)"_s;
    QString path = fileNameRunner() ? fileNameRunner()(this, true, filter, suffix)
                                    : QFileDialog::getSaveFileName(this, QString(), QString(), filter);
    if (path.isEmpty())
        return false;
    if (!suffix.isEmpty() && !path.contains(u'.'))
        path += u'.' + suffix;
    if (!saveFile(path)) {
        report(WidgetTexts().pictureNotWritten.arg(path));
        return false;
    }
    return true;
}

bool TPictureEdit::saveFile(const QString& path) const
{
    if (!hasPicture())
        return false;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(m_bytes) == m_bytes.size() && file.flush();
}

bool TPictureEdit::takePicture(const QByteArray& bytes)
{
    if (m_readOnly)
        return false;
    try {
        if (m_validator)
            m_validator(bytes);
        else if (decodeUpright(bytes).isNull())
            throw TEditorError(WidgetTexts().valueRefused);
    } catch (const TEditorError& error) {
        report(error.text());
        return false;
    } catch (const std::exception& error) {
        report(QString::fromUtf8(error.what()));
        return false;
    }
    setPicture(bytes);
    emit pictureChanged();
    return true;
}

void TPictureEdit::setFileNameRunner(TFileNameRunner runner)
{
    fileNameRunner() = std::move(runner);
}

void TPictureEdit::setLoadPatterns(const QString& patterns)
{
    loadPatterns() = patterns;
}

QSize TPictureEdit::sizeHint() const
{
    const int line = fontMetrics().height();
    return {line * 12, line * 12};
}

QSize TPictureEdit::minimumSizeHint() const
{
    const int line = fontMetrics().height();
    return {line * 3, line * 3};
}

void TPictureEdit::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    // The styled frame is faint or missing in some dark palettes: draw the border from the palette.
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    Q_UNUSED(event);
    const QRect area = contentsRect().adjusted(2, 2, -2, -2);
    if (!m_image.isNull()) {
        const qreal ratio = devicePixelRatioF();
        const QSize target = m_image.size().scaled(area.size() * ratio, Qt::KeepAspectRatio);
        QImage scaled = m_image.scaled(target, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        scaled.setDevicePixelRatio(ratio);
        const QSize shown = scaled.size() / ratio;
        const QPoint at(area.x() + (area.width() - shown.width()) / 2,
                        area.y() + (area.height() - shown.height()) / 2);
        painter.drawImage(at, scaled);
    } else if (!m_emptyText.isEmpty() || hasPicture()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap,
                         hasPicture() ? WidgetTexts().valueRefused : m_emptyText);
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
        painter.drawRect(contentsRect().adjusted(0, 0, -1, -1));
    }
}

void TPictureEdit::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = createMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void TPictureEdit::mouseDoubleClickEvent(QMouseEvent* event)
{
    QFrame::mouseDoubleClickEvent(event);
    if (hasPicture())
        emit showFullSizeRequested();
}

void TPictureEdit::keyPressEvent(QKeyEvent* event)
{
    if (event == QKeySequence::Copy)
        copy();
    else if (event == QKeySequence::Cut)
        cut();
    else if (event == QKeySequence::Paste)
        paste();
    else if (event == QKeySequence::Delete)
        clear();
    else {
        QFrame::keyPressEvent(event);
        return;
    }
    event->accept();
}

void TPictureEdit::updateActions()
{
    const bool has = hasPicture();
    m_cut->setEnabled(has && !m_readOnly);
    m_copy->setEnabled(has);
    const QMimeData* data = QApplication::clipboard() ? QApplication::clipboard()->mimeData() : nullptr;
    m_paste->setEnabled(!m_readOnly && data &&
                        (data->hasImage() || data->hasFormat(u"image/png"_s) ||
                         data->hasFormat(u"image/jpeg"_s) || data->hasUrls()));
    m_delete->setEnabled(has && !m_readOnly);
    m_load->setEnabled(!m_readOnly);
    m_save->setEnabled(has);
}

void TPictureEdit::retranslate()
{
    const TWidgetTexts& texts = WidgetTexts();
    m_cut->setText(texts.pictureCut);
    m_copy->setText(texts.pictureCopy);
    m_paste->setText(texts.picturePaste);
    m_delete->setText(texts.pictureDelete);
    m_load->setText(texts.pictureLoad);
    m_save->setText(texts.pictureSave);
}

void TPictureEdit::report(const QString& message)
{
    ReportEditorError(this, message);
}
