#pragma once

#include "uBasicEditorItem.h"

#include <QByteArray>
#include <QImage>
#include <QWidget>

// A picture control bound to a blob field: the encoded bytes as they are stored, drawn to fit
// (proportionally, never enlarged), with a prompt when empty. Its menu cuts, copies, pastes,
// deletes, loads, saves and shows it full size; a double-click asks for the full size too.
// Bytes that do not decode as a picture are refused and the control keeps what it had.
class TPictureBox : public QWidget
{
    Q_OBJECT

public:
    explicit TPictureBox(QWidget* parent = nullptr);

    QByteArray PictureBytes() const { return m_bytes; }
    // Shows bytes from the record; null or empty bytes clear it. Nothing is reported.
    void ShowBytes(const QByteArray& bytes);
    // The user's new picture: false (and nothing changes) when the bytes are no picture.
    bool SetPictureBytes(const QByteArray& bytes);
    void Clear();
    bool IsEmpty() const { return m_bytes.isEmpty(); }
    const QImage& Image() const { return m_image; }

    void SetPrompt(const QString& text);
    bool IsReadOnly() const { return m_readOnly; }
    void SetReadOnly(bool readOnly) { m_readOnly = readOnly; }
    // Loads a file through SetPictureBytes; a file that cannot be read or is no picture reports
    // cSImgEditNotAPicture-style text through ReportEditorError and changes nothing.
    bool LoadFile(const QString& path);
    // The picture at its true size in a modal window of picture width + 25 by picture height +
    // status bar + 35 (not limited to the screen), with format, size and bytes in its status bar.
    void ShowFullSize();
    void CopyToClipboard() const;
    void CutToClipboard();
    // A picture on the clipboard, stored as PNG; false (and nothing changes) without one.
    bool PasteFromClipboard();
    // Writes the bytes as they are stored; false without a picture or when the file fails.
    bool SaveToFile(const QString& path) const;

    QSize sizeHint() const override { return {200, 200}; }
    QSize minimumSizeHint() const override { return {60, 60}; }

signals:
    // The user changed the picture (loaded, deleted).
    void pictureEdited();
    void fullSizeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QByteArray m_bytes;
    QImage m_image;
    QString m_prompt;
    bool m_readOnly = false;
};

// The editor item of picture fields in record windows: a TPictureBox whose value is the bytes.
class TPictureBoxItem : public TBasicEditorItem
{
public:
    QString displayText(const QVariant&) const override { return {}; }
    bool isPicture() const override { return true; }
    void setEditorValue(QWidget* editor, const QVariant& value) const override;
    QVariant editorValue(QWidget* editor) const override;
    void setPrompt(const QString& text) { m_prompt = text; }

protected:
    QWidget* makeEditor(QWidget* parent) const override;
    QMetaObject::Connection connectChosen(QWidget* editor, std::function<void()> slot) const override;
    void clearEditor(QWidget* editor) const override;

private:
    QString m_prompt;
};
