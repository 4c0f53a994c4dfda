#pragma once

#include "uPictureViewer.h"

#include <QByteArray>
#include <QDialog>
#include <QImage>

#include <functional>

class QLabel;
class QScrollArea;
class QSlider;
class QToolButton;
class QStatusBar;
class QAction;
class TPictureCanvas;

// The full-size viewer: the picture upright at its true size in a scrolling area, a zoom slider,
// "Fit to window" and "100%", the wheel zooms (about the point under the mouse), and a menu with
// copy and save as. The status bar reads "<format>: <w>px x <h>px. <size>".
class TShowPictureForm : public QDialog
{
    Q_OBJECT
public:
    // Bytes that do not decode raise EPictureError, before any window is made.
    TShowPictureForm(const QByteArray& bytes, TPictureViewerSource source, QWidget* owner = nullptr);

    // Opens the viewer modally, sized for the picture and centred on owner.
    static void ShowPicture(const QByteArray& bytes, TPictureViewerSource source, QWidget* owner);

    double Zoom() const { return m_zoom; }
    void SetZoom(double zoom);
    void FitToWindow();
    void ActualSize();
    // Zooms by wheel steps keeping the picture point under pos (viewport coordinates) in place.
    void WheelZoom(int steps, QPoint pos);
    void CopyToClipboard() const;
    bool SaveAs();
    bool SaveToFile(const QString& path) const;

    QSize InitialSize() const;
    QString StatusText() const;
    QImage Picture() const { return m_image; }
    QScrollArea* ImageArea() const { return m_area; }
    QAction* actCopy() const { return m_actCopy; }
    QAction* actSaveAs() const { return m_actSaveAs; }
    QAction* actFit() const { return m_actFit; }
    QAction* actActualSize() const { return m_actActualSize; }

    // The file dialog of "Save as"; tests answer it. Empty: the platform's dialog.
    static void SetSaveFileNameRunner(std::function<QString(QWidget*, const QString& suffix)> runner);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void TranslateForm();
    void UpdateCanvas();

    QByteArray m_bytes;
    QImage m_image;
    TPictureViewerSource m_source;
    double m_zoom = 1.0;
    bool m_fitted = false;
    QScrollArea* m_area;
    TPictureCanvas* m_canvas;
    QSlider* m_slider;
    QToolButton* m_btnFit;
    QToolButton* m_btnActual;
    QStatusBar* m_statusBar;
    QLabel* m_status;
    QAction* m_actCopy;
    QAction* m_actSaveAs;
    QAction* m_actFit;
    QAction* m_actActualSize;
};
