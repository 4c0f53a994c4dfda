// The dictionary dialog over its controller, and the edit repository's dictionary combos: the
// buttons run the dialog, and every combo follows a changed list without losing what it shows.

#include "dmImages.h"
#include "frmEditSimpleDictionary.h"
#include "uSplashText.h"
#include "uZTRegistrySettings.h"
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
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <functional>

namespace {

const QString cRoot = QStringLiteral("Software\\Brenmoor\\Orvane");

class TFakePresenter : public TMessagePresenter
{
public:
    int answer = mrNo;
    int asked = 0;

    int Present(const TMessageBoxRequest&) override
    {
        ++asked;
        return answer;
    }
};

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
    std::unique_ptr<QTemporaryDir> m_home;
    TFakePresenter m_presenter;

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        LoadBuiltInLanguage(QStringLiteral("ENGLISHLANG"), QStringLiteral("English"));
    }

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        qputenv("HOME", m_home->path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (m_home->path() + QStringLiteral("/config")).toLocal8Bit());
        QVERIFY(TZTUserHive::FileName().startsWith(m_home->path()));
        SetSettingsStore(std::make_unique<TZTRegistrySettings>(cHKEY_CURRENT_USER, cRoot));
        ORVDicts = DefaultDicts();
        ORVDefaultValues = TORVDefaultValues();
        m_presenter = TFakePresenter();
        SetMessagePresenter(&m_presenter);
    }

    void cleanup()
    {
        SetEditDictionaryDialogRunner(nullptr);
        SetMessagePresenter(nullptr);
        SetSettingsStore(nullptr);
    }

    // btnOK drops blank lines and keeps the rest exactly; the memo shows what is kept.
    void okDropsBlankLines()
    {
        TEditSimpleDictionaryForm form;
        form.SetDictionary(TDict{QStringLiteral("a\r\nb\r\n"), QStringLiteral("d\r\n")});
        QCOMPARE(form.Memo()->toPlainText(), QStringLiteral("a\nb"));
        form.show();
        form.Memo()->setPlainText(QStringLiteral("  \nVault\n\t\n Bank  box \n\n"));
        QTest::mouseClick(form.btnOK(), Qt::LeftButton);
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(form.Controller().Result(), mrOk);
        QCOMPARE(form.Controller().MemoText(), QStringLiteral("Vault\r\n Bank  box \r\n"));
        QCOMPARE(form.Memo()->toPlainText(), QStringLiteral("Vault\n Bank  box "));
    }

    // The whole way through the real dialog: reset, then Cancel, keeps the old list.
    void resetThenCancelKeepsOldList()
    {
        TWidgetEditDictionaryDialogRunner runner;
        SetEditDictionaryDialogRunner(&runner);
        ORVDicts.Locations.Value = QStringLiteral("Safe\r\n");
        m_presenter.answer = mrYes;
        QString memoAfterReset;
        WhenDialogShows([&memoAfterReset](TEditSimpleDictionaryForm* form) {
            QTest::mouseClick(form->btnResetToDefault(), Qt::LeftButton);
            memoAfterReset = form->Memo()->toPlainText();
            QTest::mouseClick(form->btnCancel(), Qt::LeftButton);
        });
        QStringList combo{QStringLiteral("Safe")};
        QVERIFY(!EditDictionary(ORVDicts.Locations, QStringLiteral("Locations"), combo));
        QCOMPARE(m_presenter.asked, 1);
        QCOMPARE(memoAfterReset, QStringLiteral("Vault\nSecret location #1\nSecret location #2"));
        QCOMPARE(ORVDicts.Locations.Value, QStringLiteral("Safe\r\n"));
        QCOMPARE(combo, QStringList{QStringLiteral("Safe")});
        QVERIFY(!QFile::exists(TZTUserHive::FileName()));
    }

    // Reset answered No leaves what was typed; OK then stores the typed list.
    void resetRefusedThenOkStoresTyped()
    {
        TWidgetEditDictionaryDialogRunner runner;
        SetEditDictionaryDialogRunner(&runner);
        m_presenter.answer = mrNo;
        WhenDialogShows([](TEditSimpleDictionaryForm* form) {
            QCOMPARE(form->liField()->text(), QStringLiteral("Owners"));
            QCOMPARE(form->Memo()->toPlainText(), QStringLiteral("Me"));
            form->Memo()->setPlainText(QStringLiteral("Me\n\nMy heir\n"));
            QTest::mouseClick(form->btnResetToDefault(), Qt::LeftButton);
            QTest::mouseClick(form->btnOK(), Qt::LeftButton);
        });
        QStringList combo;
        QVERIFY(EditDictionary(ORVDicts.Owners, QStringLiteral("Owners"), combo));
        QCOMPARE(ORVDicts.Owners.Value, QStringLiteral("Me\r\nMy heir\r\n"));
        QCOMPARE(combo, QStringList({"Me", "My heir"}));
        TZTRegistrySettings store(cHKEY_CURRENT_USER, cRoot);
        QCOMPARE(store.GetStringValue(QStringLiteral("Dict.Owners"), QString()),
                 QStringLiteral("Me\r\nMy heir\r\n"));
    }

    void moduleInstanceAndSplash()
    {
        QStringList splash;
        SetSplashTextHandler([&splash](const QString& text) { splash << text; });
        {
            TDataModuleImages module;
            QCOMPARE(DataModuleImages(), &module);
            QCOMPARE(splash, QStringList{QStringLiteral("Loading images...")});
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
        QCOMPARE(module.CreateEditor(QStringLiteral("cbNoSuchEditor"), &parent), nullptr);
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
        auto* mints = qobject_cast<QComboBox*>(module.CreateEditor(QStringLiteral("lcbMints"), &parent));
        QVERIFY(mints);
        QVERIFY(mints->lineEdit()->actions().contains(module.actEditMints()));
        QVERIFY(!module.BlankPicture(0, 0, true).isNull());
    }

    // Typed text is the field's value and never enters the shared list.
    void typedTextIsNotAddedToTheList()
    {
        TDataModuleImages module;
        QWidget parent;
        auto* combo = qobject_cast<QComboBox*>(module.CreateEditor(QStringLiteral("cbStore"), &parent));
        const int count = combo->count();
        parent.show();
        combo->setFocus();
        QTest::keyClicks(combo->lineEdit(), QStringLiteral("Corner shop"));
        QTest::keyClick(combo->lineEdit(), Qt::Key_Return);
        QCOMPARE(combo->count(), count);
        QCOMPARE(combo->currentText(), QStringLiteral("Corner shop"));
        QCOMPARE(module.ComboItems(QStringLiteral("cbStore")).size(), count);
    }

    // The button on the combo runs the dialog; afterwards every combo shows the new list, open
    // ones keep their text, and nothing else changes.
    void editButtonUpdatesEveryCombo()
    {
        TDataModuleImages module;
        TTypingRunner runner;
        runner.typed = QStringLiteral("Safe\n\nVault 2\n");
        SetEditDictionaryDialogRunner(&runner);
        QSignalSpy changed(&module, &TDataModuleImages::DictionaryChanged);

        QWidget window;
        auto* open = qobject_cast<QComboBox*>(module.CreateEditor(QStringLiteral("cbLocation"), &window));
        auto* other = qobject_cast<QComboBox*>(module.CreateEditor(QStringLiteral("cbOwner"), &window));
        open->setEditText(QStringLiteral("Vault"));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy textSpy(open, &QComboBox::currentTextChanged);
        QSignalSpy indexSpy(open, &QComboBox::currentIndexChanged);

        QToolButton* button = nullptr;
        for (QToolButton* candidate : open->lineEdit()->findChildren<QToolButton*>()) {
            if (candidate->defaultAction() == module.Action(QStringLiteral("actEditLocation"))) {
                button = candidate;
            }
        }
        QVERIFY(button);
        QTest::mouseClick(button, Qt::LeftButton);

        QCOMPARE(runner.runs, 1);
        const QStringList expected{QStringLiteral("Safe"), QStringLiteral("Vault 2")};
        QCOMPARE(Items(open), expected);
        QCOMPARE(open->currentText(), QStringLiteral("Vault"));
        QCOMPARE(textSpy.count(), 0);
        QCOMPARE(indexSpy.count(), 0);
        QCOMPARE(Items(other), QStringList{QStringLiteral("Me")});
        auto* later = qobject_cast<QComboBox*>(module.CreateEditor(QStringLiteral("cbLocation"), &window));
        QCOMPARE(Items(later), expected);
        QCOMPARE(module.ComboItems(QStringLiteral("cbLocation")), expected);
        QCOMPARE(ORVDicts.Locations.Value, QStringLiteral("Safe\r\nVault 2\r\n"));
        QCOMPARE(ORVDefaultValues.Location, QStringLiteral("Vault"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toString(), QStringLiteral("cbLocation"));

        // A combo that is gone is no trouble for the next edit.
        delete later;
        runner.typed = QStringLiteral("Only\n");
        module.Action(QStringLiteral("actEditLocation"))->trigger();
        QCOMPARE(Items(open), QStringList{QStringLiteral("Only")});
    }

    void bindDictionariesFollowsSettings()
    {
        TDataModuleImages module;
        QWidget parent;
        auto* combo = qobject_cast<QComboBox*>(module.CreateEditor(QStringLiteral("cbGrade"), &parent));
        ORVDicts.Grades.Value = QStringLiteral("A\r\nB\r\n");
        module.BindDictionaries();
        QCOMPARE(Items(combo), QStringList({"A", "B"}));
    }
};

QTEST_MAIN(TestDictionaryDialog)
#include "tst_dictionarydialog.moc"
