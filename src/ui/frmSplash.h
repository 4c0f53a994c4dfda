#pragma once

#include <QWidget>

class QLabel;

// The start-up splash: a borderless 450 by 250 window in the centre of the screen with a picture,
// the product, the company, the program's version and a progress line. While it exists it serves
// ShowSplashText: when visible, the event loop runs once, lText takes the text, and the loop runs
// again, so the splash repaints during the long steps of the start.
class TSplashForm : public QWidget
{
    Q_OBJECT

public:
    explicit TSplashForm(QWidget* parent = nullptr);
    ~TSplashForm() override;

    QLabel* SplashImage() const { return m_splashImage; }
    QLabel* lProd() const { return m_lProd; }
    QLabel* lCompany() const { return m_lCompany; }
    QLabel* lVersion() const { return m_lVersion; }
    QLabel* lText() const { return m_lText; }

    // The progress line, as ShowSplashText sets it.
    void ShowText(const QString& text);

    // The splash picture: a gold coin leaning on a bar, drawn at the given size.
    static QPixmap DrawSplashPicture(const QSize& size);

private:
    QLabel* m_splashImage;
    QLabel* m_lProd;
    QLabel* m_lCompany;
    QLabel* m_lVersion;
    QLabel* m_lText;
};
