// The fixed-dialog base: descendants' text and style overrides, buttons, size and placement.

#include "frmAbstractLayoutForm.h"
#include "uZTStrings.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

namespace {

class TSampleForm : public TAbstractLayoutForm
{
public:
    explicit TSampleForm(QWidget* owner = nullptr)
        : TAbstractLayoutForm(owner), m_label(new QLabel(lgContainer()))
    {
        ContainerLayout()->addWidget(m_label);
    }

    QStringList calls;
    bool visibleAtTexts = true;

    void ApplyTexts() override
    {
        TAbstractLayoutForm::ApplyTexts();
        calls << "texts";
        visibleAtTexts = isVisible();
        m_label->setText("sample");
    }

    void ApplyStyle() override
    {
        TAbstractLayoutForm::ApplyStyle();
        calls << "style";
    }

    QLabel* m_label;
};

} // namespace

class TestLayoutForm : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }

    void overridesRunBeforeFirstShow()
    {
        TSampleForm form;
        form.show();
        QCOMPARE(form.calls, QStringList({"style", "texts"}));
        QVERIFY(!form.visibleAtTexts);
        QCOMPARE(form.m_label->text(), "sample");
        form.hide();
        form.show();
        QCOMPARE(form.calls.size(), 2);
    }

    void overridesRunForExec()
    {
        TSampleForm form;
        QStringList callsAtExec;
        QTimer::singleShot(0, &form, [&] {
            callsAtExec = form.calls;
            form.reject();
        });
        QCOMPARE(form.exec(), int(QDialog::Rejected));
        QCOMPARE(callsAtExec, QStringList({"style", "texts"}));
    }

    void buttons()
    {
        TAbstractLayoutForm form;
        QVERIFY(!form.btnOK()->text().isEmpty());
        QVERIFY(!form.btnCancel()->text().isEmpty());
        QVERIFY(form.btnOK()->isDefault());
        QVERIFY(form.findChild<QWidget*>("lgContainer") == form.lgContainer());
        QVERIFY(form.findChild<QPushButton*>("btnOK") == form.btnOK());

        form.show();
        form.btnOK()->click();
        QCOMPARE(form.result(), int(QDialog::Accepted));

        form.show();
        form.btnCancel()->click();
        QCOMPARE(form.result(), int(QDialog::Rejected));

        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        QTest::keyClick(&form, Qt::Key_Return);
        QCOMPARE(form.result(), int(QDialog::Accepted));
    }

    void sizeAndPlacement()
    {
        QWidget owner;
        owner.setGeometry(80, 60, 640, 480); // inside the offscreen screen of 800 by 600
        owner.show();
        QVERIFY(QTest::qWaitForWindowExposed(&owner));
        TAbstractLayoutForm form(&owner);
        QCOMPARE(form.size(), QSize(500, 350));
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        const QPoint delta = form.frameGeometry().center() - owner.frameGeometry().center();
        QVERIFY2(delta.manhattanLength() < 40, qPrintable(QString("%1,%2").arg(delta.x()).arg(delta.y())));
    }

    void rightToLeftFollowsTheLanguage()
    {
        const QByteArray rtl = R"(<?xml version="1.0" encoding="utf-8"?>
<Language name="Test RTL" BiDiMode="RightToLeft"><String name="cSbtnOK">OK</String></Language>)";
        const QByteArray ltr = R"(<?xml version="1.0" encoding="utf-8"?>
<Language name="Test LTR" BiDiMode="LeftToRight"><String name="cSbtnOK">OK</String></Language>)";
        QVERIFY(XMLLanguage().LoadFromData(rtl, "rtl"));
        TSampleForm form;
        form.show();
        QCOMPARE(form.layoutDirection(), Qt::RightToLeft);
        QVERIFY(XMLLanguage().LoadFromData(ltr, "ltr"));
        form.ApplyTexts();
        QCOMPARE(form.layoutDirection(), Qt::LeftToRight);
    }
};

QTEST_MAIN(TestLayoutForm)
#include "tst_layoutform.moc"
