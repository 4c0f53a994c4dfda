#include "uPictureBox.h"

#include "uWidgetTexts.h"
#include "uZTStrings.h"
#include "uZTTypes.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QContextMenuEvent>
#include <QDialog>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QScrollArea>
#include <QStatusBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString TextOr(const QString& key, const QString& fallback)
{
    const QString text = GetText(key);
    return text.isEmpty() ? fallback : text;
}

QImage Decode(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    return reader.read();
}

// The viewer's name of a picture's format, found from its bytes.
QString FormatName(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray format = QImageReader::imageFormat(&buffer).toLower();
    static const QList<std::pair<QByteArray, QString>> names = {
        {"bmp", u"BMP"_s},   {"jpeg", u"JPEG"_s}, {"jpg", u"JPEG"_s}, {"png", u"PNG"_s},
        {"tiff", u"TIFF"_s}, {"tif", u"TIFF"_s},  {"gif", u"GIF"_s},  {"ico", u"Icon"_s}};
    for (const auto& [code, name] : names) {
        if (format == code) {
            return name;
        }
    }
    return u"Unknown"_s;
}

} // namespace

TPictureBox::TPictureBox(QWidget* parent) : QWidget(parent)
{
    setFocusPolicy(Qt::ClickFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_prompt = TextOr(u"cSImgEditCaption"_s, u"Right-click on picture for options"_s);
}

void TPictureBox::SetPrompt(const QString& text)
{
    m_prompt = text;
    update();
}

void TPictureBox::ShowBytes(const QByteArray& bytes)
{
    m_bytes = bytes;
    m_image = bytes.isEmpty() ? QImage() : Decode(bytes);
    update();
}

bool TPictureBox::SetPictureBytes(const QByteArray& bytes)
{
    const QImage image = Decode(bytes);
    if (image.isNull()) {
        return false;
    }
    m_bytes = bytes;
    m_image = image;
    update();
    emit pictureEdited();
    return true;
}

void TPictureBox::Clear()
{
    if (m_bytes.isEmpty()) {
        return;
    }
    m_bytes.clear();
    m_image = QImage();
    update();
    emit pictureEdited();
}

bool TPictureBox::LoadFile(const QString& path)
{
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly)) {
        bytes = file.readAll();
    }
    if (!SetPictureBytes(bytes)) {
        ReportEditorError(this, FormatText(TextOr(u"cSImgEditNotAPicture"_s,
                                                  u"'%s' is not a picture this program can read."_s),
                                           {QFileInfo(path).fileName()}));
        return false;
    }
    return true;
}

void TPictureBox::ShowFullSize()
{
    if (m_image.isNull()) {
        return;
    }
    QDialog viewer(window());
    viewer.setObjectName(u"frmPic"_s);
    viewer.setWindowTitle(TextOr(u"cSPicture"_s, u"Picture"_s));
    viewer.setMinimumSize(50, 50);
    viewer.setLayoutDirection(LanguageIsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    auto* area = new QScrollArea(&viewer);
    auto* picture = new QLabel(area);
    picture->setPixmap(QPixmap::fromImage(m_image));
    area->setWidget(picture);
    area->setAlignment(Qt::AlignCenter);
    auto* status = new QStatusBar(&viewer);
    status->showMessage(u"%1: %2px x %3px. %4"_s.arg(FormatName(m_bytes))
                            .arg(m_image.width())
                            .arg(m_image.height())
                            .arg(FormatSize(m_bytes.size())));
    auto* layout = new QVBoxLayout(&viewer);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area, 1);
    layout->addWidget(status);
    viewer.resize(m_image.width() + 25, m_image.height() + status->sizeHint().height() + 35);
    viewer.exec();
}

void TPictureBox::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area = rect().adjusted(2, 2, -2, -2);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (m_image.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, m_bytes.isEmpty() ? m_prompt : QString());
        return;
    }
    QSize size = m_image.size();
    if (size.width() > area.width() || size.height() > area.height()) {
        size.scale(area.size(), Qt::KeepAspectRatio);
    }
    const QRect target(area.x() + (area.width() - size.width()) / 2,
                       area.y() + (area.height() - size.height()) / 2, size.width(), size.height());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, m_image);
}

void TPictureBox::mouseDoubleClickEvent(QMouseEvent*)
{
    if (!m_image.isNull()) {
        emit fullSizeRequested();
    }
}

void TPictureBox::CopyToClipboard() const
{
    if (!m_image.isNull()) {
        QGuiApplication::clipboard()->setImage(m_image);
    }
}

void TPictureBox::CutToClipboard()
{
    if (m_readOnly || m_image.isNull()) {
        return;
    }
    CopyToClipboard();
    Clear();
}

bool TPictureBox::PasteFromClipboard()
{
    const QImage image = m_readOnly ? QImage() : QGuiApplication::clipboard()->image();
    if (image.isNull()) {
        return false;
    }
    // The clipboard holds pixels, not a file: they are stored as PNG, which loses nothing.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return SetPictureBytes(bytes);
}

bool TPictureBox::SaveToFile(const QString& path) const
{
    if (m_bytes.isEmpty()) {
        return false;
    }
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(m_bytes) == m_bytes.size();
}

void TPictureBox::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    QAction* cut = menu.addAction(TextOr(u"cSImgEditCut"_s, u"Cut"_s));
    QAction* copy = menu.addAction(TextOr(u"cSImgEditCopy"_s, u"Copy"_s));
    QAction* paste = menu.addAction(TextOr(u"cSImgEditPaste"_s, u"Paste"_s));
    QAction* remove = menu.addAction(TextOr(u"cSImgEditDelete"_s, u"Delete"_s));
    menu.addSeparator();
    QAction* load = menu.addAction(TextOr(u"cSImgEditLoad"_s, u"Load..."_s));
    QAction* save = menu.addAction(TextOr(u"cSImgEditSave"_s, u"Save as..."_s));
    menu.addSeparator();
    QAction* full = menu.addAction(TextOr(u"cSImgEditShowFullSize"_s, u"Show full size"_s));
    const bool hasPicture = !m_image.isNull();
    cut->setEnabled(!m_readOnly && hasPicture);
    copy->setEnabled(hasPicture);
    paste->setEnabled(!m_readOnly && QGuiApplication::clipboard()->mimeData() &&
                      QGuiApplication::clipboard()->mimeData()->hasImage());
    remove->setEnabled(!m_readOnly && !m_bytes.isEmpty());
    load->setEnabled(!m_readOnly);
    save->setEnabled(!m_bytes.isEmpty());
    full->setEnabled(hasPicture);
    QAction* chosen = menu.exec(event->globalPos());
    if (chosen == cut) {
        CutToClipboard();
    } else if (chosen == copy) {
        CopyToClipboard();
    } else if (chosen == paste) {
        PasteFromClipboard();
    } else if (chosen == remove) {
        Clear();
    } else if (chosen == load) {
        const QString path = QFileDialog::getOpenFileName(
            this, QString(), QString(),
            u"Pictures (*.jpg *.jpeg *.png *.bmp *.gif *.tif *.tiff *.ico);;All files (*)"_s);
        if (!path.isEmpty()) {
            LoadFile(path);
        }
    } else if (chosen == save) {
        const QString suffix = FormatName(m_bytes).toLower();
        const QString path = QFileDialog::getSaveFileName(this, QString(), QString(),
                                                          u"*.%1;;All files (*)"_s.arg(suffix));
        if (!path.isEmpty()) {
            SaveToFile(path);
        }
    } else if (chosen == full) {
        emit fullSizeRequested();
    }
}

// ---- The editor item ---------------------------------------------------------------------------------

QWidget* TPictureBoxItem::makeEditor(QWidget* parent) const
{
    auto* box = new TPictureBox(parent);
    if (!m_prompt.isEmpty()) {
        box->SetPrompt(m_prompt);
    }
    return box;
}

void TPictureBoxItem::setEditorValue(QWidget* editor, const QVariant& value) const
{
    if (auto* box = qobject_cast<TPictureBox*>(editor)) {
        box->ShowBytes(value.isNull() ? QByteArray() : value.toByteArray());
    }
}

QVariant TPictureBoxItem::editorValue(QWidget* editor) const
{
    auto* box = qobject_cast<TPictureBox*>(editor);
    if (!box || box->IsEmpty()) {
        return {};
    }
    return box->PictureBytes();
}

QMetaObject::Connection TPictureBoxItem::connectChosen(QWidget* editor, std::function<void()> slot) const
{
    auto* box = qobject_cast<TPictureBox*>(editor);
    return box ? QObject::connect(box, &TPictureBox::pictureEdited, box, std::move(slot))
               : QMetaObject::Connection();
}

void TPictureBoxItem::clearEditor(QWidget* editor) const
{
    if (auto* box = qobject_cast<TPictureBox*>(editor)) {
        box->Clear();
    }
}
