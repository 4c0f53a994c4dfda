// MessageDlgZT shown by the widget presenter: buttons, texts, default and results.

#include "uWidgetMessagePresenter.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

namespace {

// Runs check on the message box once it is up, then clicks the button with the given text (or
// closes the box when there is none). The box is closed even when a check fails.
void AnswerBox(const QString& click, std::function<void(QMessageBox*)> check)
{
    QTimer::singleShot(0, [click, check] {
        QWidget* modal = QApplication::activeModalWidget();
        auto* box = qobject_cast<QMessageBox*>(modal);
        if (box == nullptr) {
            QFAIL("no message box is up");
        }
        check(box);
        for (QAbstractButton* button : box->buttons()) {
            if (button->text() == click) {
                button->click();
                return;
            }
        }
        box->close();
    });
}

QStringList ButtonTexts(QMessageBox* box)
{
    QStringList texts;
    for (QAbstractButton* button : box->buttons()) {
        texts << button->text();
    }
    texts.sort();
    return texts;
}

} // namespace

class TestMessageBox : public QObject
{
    Q_OBJECT

private:
    TWidgetMessagePresenter m_presenter;

private slots:
    void initTestCase() { SetMessagePresenter(&m_presenter); }
    void cleanupTestCase() { SetMessagePresenter(nullptr); }

    void buttonResults_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("result");
        QTest::newRow("yes") << int(mbYes) << "Ja" << int(mrYes);
        QTest::newRow("cancel") << int(mbCancel) << "Abbrechen" << int(mrCancel);
        QTest::newRow("yes to all") << int(mbYesToAll) << "Ja, alle" << int(mrYesToAll);
        QTest::newRow("close") << int(mbClose) << "Schließen" << int(mrClose);
    }

    void buttonResults()
    {
        QFETCH(int, button);
        QFETCH(QString, text);
        QFETCH(int, result);
        TMessageBoxRequest request;
        request.Text = "Proceed?";
        request.Type = mtConfirmation;
        request.Buttons = TMsgDlgButtons(button) | mbOK;
        request.DefaultButton = mbOK;
        request.ButtonTexts = {{TMsgDlgBtn(button), text}};
        AnswerBox(text, [&](QMessageBox* box) {
            QCOMPARE(box->buttons().size(), 2);
            QCOMPARE(box->defaultButton()->text(), box->button(QMessageBox::Ok)->text());
        });
        QCOMPARE(m_presenter.Present(request), result);
    }

    void platformWordsStayWithoutLanguageText()
    {
        TMessageBoxRequest request;
        request.Text = "Delete the item?";
        request.Type = mtConfirmation;
        request.Buttons = mbYes | mbNo;
        request.DefaultButton = mbNo;
        request.ButtonTexts = {{mbNo, "&Nein"}};
        QString yesText;
        AnswerBox("&Nein", [&](QMessageBox* box) {
            yesText = box->button(QMessageBox::Yes)->text();
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
            QCOMPARE(box->windowTitle(), "Confirm");
            QCOMPARE(box->icon(), QMessageBox::Question);
            QCOMPARE(box->text(), "Delete the item?");
        });
        QCOMPARE(m_presenter.Present(request), int(mrNo));
        QVERIFY(!yesText.isEmpty());
        QVERIFY(yesText != "&Nein");
    }

    void captionAndClosingWithoutAButton()
    {
        TMessageBoxRequest request;
        request.Text = "Saved";
        request.Caption = "Orvane";
        request.Type = mtInformation;
        request.Buttons = mbOK;
        request.DefaultButton = mbOK;
        AnswerBox(QString(), [](QMessageBox* box) { QCOMPARE(box->windowTitle(), "Orvane"); });
        // Closed without a click: the box's only button answers, as the platform's box does.
        QCOMPARE(m_presenter.Present(request), int(mrOk));
    }

    void throughMessageDlgZT()
    {
        AnswerBox("&Yes", [](QMessageBox* box) {
            QCOMPARE(box->icon(), QMessageBox::Warning);
            QCOMPARE(ButtonTexts(box), QStringList({"&No", "&Yes"}));
        });
        QCOMPARE(MessageDlgZT("Overwrite?", mtWarning, mbYes | mbNo, mbNo), int(mrYes));
    }
};

QTEST_MAIN(TestMessageBox)
#include "tst_messagebox.moc"
