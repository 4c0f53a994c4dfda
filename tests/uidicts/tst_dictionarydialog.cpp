// The dictionary dialog over its controller, and the edit repository's dictionary combos: the
// buttons run the dialog, and every combo follows a changed list without losing what it shows.

#include "dmImages.h"
#include "frmEditSimpleDictionary.h"
#include "support_common.h"
#include "uSplashText.h"
#include "uZTSettings.h"
#include "uZTStrings.h"
#include "uZTUserHive.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <functional>

namespace {

// Types into the controller and presses OK, as the dialog would.
class TTypingRunner : public TEditDictionaryDialogRunner
{
public:
    QString typed;
    int runs = 0;

    int Run(TEditDictionaryController& controller) override
    {
        ++runs;
        controller.SetMemoText(typed);
        controller.Ok();
        return mrOk;
    }
};

// Plays with the modal dialog once it is up.
void WhenDialogShows(std::function<void(TEditSimpleDictionaryForm*)> play)
{
    QTimer::singleShot(0, [play] {
        auto* form = qobject_cast<TEditSimpleDictionaryForm*>(QApplication::activeModalWidget());
        QVERIFY(form);
        play(form);
    });
}

QStringList Items(const QComboBox* combo)
{
    QStringList items;
    for (int i = 0; i < combo->count(); ++i) {
        items << combo->itemText(i);
    }
    return items;
}

} // namespace

class TestDictionaryDialog : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    TRecordingPresenter m_presenter;

private slots:
    void initTestCase() { LoadEnglish(); }

    void init()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        ORVDicts = DefaultDicts();
        ORVDefaultValues = TORVDefaultValues();
        m_presenter.Requests.clear();
        m_presenter.Answer = mrNo;
        SetMessagePresenter(&m_presenter);
    }

    void cleanup()
    {
        SetEditDictionaryDialogRunner(nullptr);
        SetMessagePresenter(nullptr);
        m_home.reset();
    }

    // btnOK drops blank lines and keeps the rest exactly; the memo shows what is kept.
    void okDropsBlankLines()
    {
        TEditSimpleDictionaryForm form;
        form.SetDictionary(TDict{"a\r\nb\r\n", "d\r\n"});
        QCOMPARE(form.Memo()->toPlainText(), "a\nb");
        form.show();
        form.Memo()->setPlainText("  \nVault\n\t\n Bank  box \n\n");
        QTest::mouseClick(form.btnOK(), Qt::LeftButton);
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(form.Controller().Result(), mrOk);
        QCOMPARE(form.Controller().MemoText(), "Vault\r\n Bank  box \r\n");
        QCOMPARE(form.Memo()->toPlainText(), "Vault\n Bank  box ");
    }

    // The whole way through the real dialog: reset, then Cancel, keeps the old list.
    void resetThenCancelKeepsOldList()
    {
        TWidgetEditDictionaryDialogRunner runner;
        SetEditDictionaryDialogRunner(&runner);
        ORVDicts.Locations.Value = "Safe\r\n";
        m_presenter.Answer = mrYes;
        QString memoAfterReset;
        WhenDialogShows([&memoAfterReset](TEditSimpleDictionaryForm* form) {
            QTest::mouseClick(form->btnResetToDefault(), Qt::LeftButton);
            memoAfterReset = form->Memo()->toPlainText();
            QTest::mouseClick(form->btnCancel(), Qt::LeftButton);
        });
        QStringList combo{"Safe"};
        QVERIFY(!EditDictionary(ORVDicts.Locations, "Locations", combo));
        QCOMPARE(m_presenter.Requests.size(), 1);
        QCOMPARE(memoAfterReset, "Vault\nSecret location #1\nSecret location #2");
        QCOMPARE(ORVDicts.Locations.Value, "Safe\r\n");
        QCOMPARE(combo, QStringList{"Safe"});
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
    }

    // Reset answered No leaves what was typed; OK then stores the typed list.
    void resetRefusedThenOkStoresTyped()
    {
        TWidgetEditDictionaryDialogRunner runner;
        SetEditDictionaryDialogRunner(&runner);
        m_presenter.Answer = mrNo;
        WhenDialogShows([](TEditSimpleDictionaryForm* form) {
            QCOMPARE(form->liField()->text(), "Owners");
            QCOMPARE(form->Memo()->toPlainText(), "Me");
            form->Memo()->setPlainText("Me\n\nMy heir\n");
            QTest::mouseClick(form->btnResetToDefault(), Qt::LeftButton);
            QTest::mouseClick(form->btnOK(), Qt::LeftButton);
        });
        QStringList combo;
        QVERIFY(EditDictionary(ORVDicts.Owners, "Owners", combo));
        QCOMPARE(ORVDicts.Owners.Value, "Me\r\nMy heir\r\n");
        QCOMPARE(combo, QStringList({"Me", "My heir"}));
        QCOMPARE(UserStore().GetStringValue("Dict.Owners", QString()), "Me\r\nMy heir\r\n");
    }

    void moduleInstanceAndSplash()
    {
        QStringList splash;
        SetSplashTextHandler([&splash](const QString& text) { splash << text; });
        {
            TDataModuleImages module;
            QCOMPARE(DataModuleImages(), &module);
            QCOMPARE(splash, QStringList{"Loading images..."});
            QVERIFY(dynamic_cast<TWidgetEditDictionaryDialogRunner*>(EditDictionaryDialogRunner()));
            QVERIFY_THROWS_EXCEPTION(std::logic_error, TDataModuleImages());
            QCOMPARE(DataModuleImages(), &module);
        }
        SetSplashTextHandler({});
        QCOMPARE(DataModuleImages(), nullptr);
        QCOMPARE(EditDictionaryDialogRunner(), nullptr);
    }

    void repositoryEditors()
    {
        TDataModuleImages module;
        QWidget parent;
        for (const QString& name : module.RepositoryItems()) {
            QWidget* editor = module.CreateEditor(name, &parent);
            QVERIFY2(editor, qPrintable(name));
            QCOMPARE(editor->objectName(), name);
            QCOMPARE(editor->parent(), &parent);
        }
        QCOMPARE(module.CreateEditor("cbNoSuchEditor", &parent), nullptr);
        for (const TDictInfo& info : DictTable()) {
            auto* combo = qobject_cast<QComboBox*>(module.CreateEditor(info.comboEditor(), &parent));
            QVERIFY(combo);
            QVERIFY(combo->isEditable());
            QCOMPARE(Items(combo), DictLines(DictOf(ORVDicts, info).Value));
            QCOMPARE(combo->currentText(), QString());
            QAction* action = module.Action(info.editAction());
            QVERIFY(action);
            QVERIFY(combo->lineEdit()->actions().contains(action));
            // Attaching again adds no second button.
            TDataModuleImages::AttachEditButton(combo, action);
            QCOMPARE(combo->lineEdit()->actions().count(action), 1);
        }
        auto* mints = qobject_cast<QComboBox*>(module.CreateEditor("lcbMints", &parent));
        QVERIFY(mints);
        QVERIFY(mints->lineEdit()->actions().contains(module.actEditMints()));
        QVERIFY(!module.BlankPicture(0, 0, true).isNull());
    }

    // Typed text is the field's value and never enters the shared list.
    void typedTextIsNotAddedToTheList()
    {
        TDataModuleImages module;
        QWidget parent;
        auto* combo = qobject_cast<QComboBox*>(module.CreateEditor("cbStore", &parent));
        const int count = combo->count();
        parent.show();
        combo->setFocus();
        QTest::keyClicks(combo->lineEdit(), "Corner shop");
        QTest::keyClick(combo->lineEdit(), Qt::Key_Return);
        QCOMPARE(combo->count(), count);
        QCOMPARE(combo->currentText(), "Corner shop");
        QCOMPARE(module.ComboItems("cbStore").size(), count);
    }

    // The button on the combo runs the dialog; afterwards every combo shows the new list, open
    // ones keep their text, and nothing else changes.
    void editButtonUpdatesEveryCombo()
    {
        TDataModuleImages module;
        TTypingRunner runner;
        runner.typed = "Safe\n\nVault 2\n";
        SetEditDictionaryDialogRunner(&runner);
        QSignalSpy changed(&module, &TDataModuleImages::DictionaryChanged);

        QWidget window;
        auto* open = qobject_cast<QComboBox*>(module.CreateEditor("cbLocation", &window));
        auto* other = qobject_cast<QComboBox*>(module.CreateEditor("cbOwner", &window));
        open->setEditText("Vault");
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy textSpy(open, &QComboBox::currentTextChanged);
        QSignalSpy indexSpy(open, &QComboBox::currentIndexChanged);

        QToolButton* button = nullptr;
        for (QToolButton* candidate : open->lineEdit()->findChildren<QToolButton*>()) {
            if (candidate->defaultAction() == module.Action("actEditLocation")) {
                button = candidate;
            }
        }
        QVERIFY(button);
        QTest::mouseClick(button, Qt::LeftButton);

        QCOMPARE(runner.runs, 1);
        const QStringList expected{"Safe", "Vault 2"};
        QCOMPARE(Items(open), expected);
        QCOMPARE(open->currentText(), "Vault");
        QCOMPARE(textSpy.count(), 0);
        QCOMPARE(indexSpy.count(), 0);
        QCOMPARE(Items(other), QStringList{"Me"});
        auto* later = qobject_cast<QComboBox*>(module.CreateEditor("cbLocation", &window));
        QCOMPARE(Items(later), expected);
        QCOMPARE(module.ComboItems("cbLocation"), expected);
        QCOMPARE(ORVDicts.Locations.Value, "Safe\r\nVault 2\r\n");
        QCOMPARE(ORVDefaultValues.Location, "Vault");
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toString(), "cbLocation");

        // A combo that is gone is no trouble for the next edit.
        delete later;
        runner.typed = "Only\n";
        module.Action("actEditLocation")->trigger();
        QCOMPARE(Items(open), QStringList{"Only"});
    }

    void bindDictionariesFollowsSettings()
    {
        TDataModuleImages module;
        QWidget parent;
        auto* combo = qobject_cast<QComboBox*>(module.CreateEditor("cbGrade", &parent));
        ORVDicts.Grades.Value = "A\r\nB\r\n";
        module.BindDictionaries();
        QCOMPARE(Items(combo), QStringList({"A", "B"}));
    }
};

QTEST_MAIN(TestDictionaryDialog)
#include "tst_dictionarydialog.moc"
