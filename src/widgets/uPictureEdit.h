#pragma once

#include <QByteArray>
#include <QFrame>
#include <QImage>
#include <QList>
#include <QPointer>

#include <functional>

class QAction;
class QMenu;

// A picture held as its encoded bytes, shown fitted to the control with its proportions kept and
// turned upright as the picture's orientation tag says. A right-click opens its menu: cut, copy,
// paste, delete, load, save, then the program's own actions (addMenuAction). An empty control
// shows its empty text. The bytes stay exactly as loaded or pasted; the control never re-encodes a
// loaded file. A double-click on a picture emits showFullSizeRequested.
//
// What may enter is the program's rule: setValidator gets the bytes of a load or paste and throws
// TEditorError (or any std::exception) to refuse them; the refusal goes to ReportEditorError and
// the picture stays as it was. Without a validator any picture that decodes enters.
class TPictureEdit : public QFrame
{
    Q_OBJECT
public:
    // Asks for a file name to open (save false) or to save to (save true); empty: cancelled.
    // suggestedSuffix is the picture's own format ("jpg") when saving.
    using TFileNameRunner = std::function<QString(QWidget* parent, bool save, const QString& filter,
                                                  const QString& suggestedSuffix)>;
    using TValidator = std::function<void(const QByteArray& bytes)>;

    explicit TPictureEdit(QWidget* parent = nullptr);

    QByteArray picture() const { return m_bytes; }
    // Shows bytes (null: empty); no signal.
    void setPicture(const QByteArray& bytes);
    bool hasPicture() const { return !m_bytes.isEmpty(); }
    // The decoded picture, upright; null when empty or not decodable.
    QImage image() const { return m_image; }

    bool isReadOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly);
    QString emptyText() const { return m_emptyText; }
    void setEmptyText(const QString& text);
    void setValidator(TValidator validator) { m_validator = std::move(validator); }

    // Program actions below the standard items (Show full size); not owned.
    void addMenuAction(QAction* action);
    // The menu as a right-click shows it, with each item enabled for the current state; owned by
    // the caller.
    QMenu* createMenu(QWidget* parent);
    QAction* cutAction() const { return m_cut; }
    QAction* copyAction() const { return m_copy; }
    QAction* pasteAction() const { return m_paste; }
    QAction* deleteAction() const { return m_delete; }
    QAction* loadAction() const { return m_load; }
    QAction* saveAction() const { return m_save; }

    // The commands. Each one that changes the picture emits pictureChanged; a refused or cancelled
    // one changes nothing. They return whether the picture changed (save: was written).
    bool cut();
    bool copy() const;
    bool paste();
    bool clear();
    bool load();
    bool loadFile(const QString& path);
    bool save();
    bool saveFile(const QString& path) const;
    // Takes bytes as a load would: validated, refused with a report.
    bool takePicture(const QByteArray& bytes);

    // The file dialogs of load and save; tests answer them. Empty: the platform's dialogs.
    static void setFileNameRunner(TFileNameRunner runner);
    // The name filter of the load dialog, from the readable formats of the image library or set by
    // the program ("*.png *.jpg").
    static void setLoadPatterns(const QString& patterns);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // The user changed the picture (cut, paste, delete, load).
    void pictureChanged();
    void showFullSizeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void updateActions();
    void retranslate();
    void report(const QString& message);

    QByteArray m_bytes;
    QImage m_image;
    bool m_readOnly = false;
    QString m_emptyText;
    TValidator m_validator;
    QAction* m_cut;
    QAction* m_copy;
    QAction* m_paste;
    QAction* m_delete;
    QAction* m_load;
    QAction* m_save;
    QList<QPointer<QAction>> m_extra;
};

// The suffix that suits encoded picture bytes ("png", "jpg", ...), from the bytes; "" when they are
// no picture.
QString PictureSuffix(const QByteArray& bytes);
