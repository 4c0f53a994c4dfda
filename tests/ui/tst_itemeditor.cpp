// The item editor and the mints windows on the screen (offscreen) over a real collection file: the
// labels, the custom-field tab, number entry, the mint logo without a post, pictures in and out,
// the close query, and the mints window's commands. With ORV_SCREENSHOT_DIR set it also leaves
// pictures of every tab and window there, light and dark and right-to-left.

#include "dmImages.h"
#include "dmInternalData.h"
#include "dmStyles.h"
#include "frmEdit.h"
#include "frmEditMint.h"
#include "frmMints.h"
#include "support_common.h"
#include "support_datarow.h"
#include "uDatasetTableModel.h"
#include "uEditDataController.h"
#include "uFieldBinder.h"
#include "uGrid.h"
#include "uGridColumn.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uGridTableView.h"
#include "uNumberEdit.h"
#include "uPictureEdit.h"
#include "uPropertyGrid.h"
#include "uRibbon.h"
#include "uTemplate.h"
#include "uWidgetTexts.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray Png(int width, int height, QColor colour = Qt::darkYellow)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

class TRecordingHost : public TRibbonDBEditHost
{
public:
    void LoadRecord() override {}
    void CloseWithResult(TEditCloseResult) override {}
};

} // namespace

class TestItemEditor : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<TDataModuleImages> m_images;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    std::unique_ptr<TDatasetDataController> m_dc;
    TRecordingPresenter m_presenter;
    QStringList m_editorErrors;

    TDBDataset& Items() { return *m_data->qDS_Items; }
    int FileValue(const QString& sql) { return m_data->ADConnection->selectValue(sql).toInt(); }
    std::unique_ptr<TORVEditForm> Editor()
    {
        auto form = std::make_unique<TORVEditForm>(*m_data);
        form->SetDataController(m_dc.get());
        form->Prepare();
        form->LoadRecord();
        return form;
    }
    void Shoot(QWidget& widget, const QString& name)
    {
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (!dir.isEmpty()) {
            QVERIFY(widget.grab().save(dir + u'/' + name + u".png"_s));
        }
    }

private slots:
    void initTestCase()
    {
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
        SetMessagePresenter(&m_presenter);
        SetEditorErrorHandler([this](QWidget*, const QString& message) { m_editorErrors << message; });
        TDM_Styles::ApplyTheme(3, 0);
        m_images = std::make_unique<TDataModuleImages>();
        m_images->TranslateRepository();
    }
    void cleanupTestCase()
    {
        m_images.reset();
        SetEditorErrorHandler({});
        SetMessagePresenter(nullptr);
        m_home.reset();
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        const QString path = m_dir->filePath(u"c.db"_s);
        WriteFile(path, NewBlankDatabaseBytes());
        m_data = std::make_unique<TDM_InternalData>();
        QVERIFY(m_data->ConnectDatabase(path));
        m_data->TranslateFieldLabels();
        m_data->ADConnection->execSQL(
            u"INSERT INTO tblCoins (Name, Metal, WeightG, MintID, Qty, Diameter) VALUES "
            "('Maple Leaf', 0, 31.1035, NULL, 2, 30), ('Krugerrand', 0, 33.93, 3, 1, 32.6)"_s);
        m_data->RefreshItems();
        Items().first();
        m_dc = std::make_unique<TDatasetDataController>(Items());
        m_presenter = TRecordingPresenter();
        m_editorErrors.clear();
        CustomFieldsEnabled = false;
        ORVCustomFields = TORVCustomFields();
    }
    void cleanup()
    {
        m_dc.reset();
        m_data.reset();
        m_dir.reset();
    }

    // Labels come from the fields' display labels, never from the design's names.
    void labels_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("key");
        AddRow("quantity", u"Qty"_s, u"cSF_Qty"_s);
        AddRow("diameter", u"Diameter"_s, u"cSF_Diameter"_s);
        AddRow("weight in grams", u"WeightGram"_s, u"cSF_WeightGram"_s);
        AddRow("mint", u"MintID"_s, u"cSF_Mint"_s);
        AddRow("purchase date", u"PurchaseDate"_s, u"cSF_PurchaseDate"_s);
    }
    void labels()
    {
        QFETCH(QString, field);
        QFETCH(QString, key);
        auto form = Editor();
        QLabel* label = form->Binder().Label(field);
        QVERIFY(label);
        QCOMPARE(label->text(), Items().fieldByName(field).displayLabel());
        if (!GetText(key).isEmpty()) {
            QCOMPARE(label->text(), GetText(key));
        }
        // Another language reaches the labels too.
        Items().fieldByName(field).setDisplayLabel(u"Label of "_s + field);
        form->TranslateForm();
        QCOMPARE(label->text(), u"Label of "_s + field);
    }

    // The custom tab shows only with the master switch on and at least one enabled field.
    void customFieldsTab_data()
    {
        QTest::addColumn<bool>("master");
        QTest::addColumn<int>("enabledFields");
        QTest::addColumn<bool>("visible");
        AddRow("off, none", false, 0, false);
        AddRow("off, however many", false, 10, false);
        AddRow("on, none", true, 0, false);
        AddRow("on, two", true, 2, true);
    }
    void customFieldsTab()
    {
        QFETCH(bool, master);
        QFETCH(int, enabledFields);
        CustomFieldsEnabled = master;
        for (int n = 0; n < enabledFields; ++n) {
            ORVCustomFields[n].Enabled = true;
            ORVCustomFields[n].DisplayName = u"Extra %1"_s.arg(n);
            ORVCustomFields[n].DataType = n % 5;
        }
        auto form = Editor();
        QTabWidget* tabs = form->lgTabs();
        QTEST(tabs->isTabVisible(tabs->indexOf(form->findChild<QWidget*>(u"tsCustomFields"_s))), "visible");
        QCOMPARE(tabs->currentWidget()->objectName(), u"tsGeneralInfo"_s);
        if (enabledFields) {
            QCOMPARE(form->vgCustomFields()->rowCaption(u"vgCustomFieldsCustom1"_s), u"Extra 0"_s);
            QVERIFY(form->vgCustomFields()->isRowVisible(u"vgCustomFieldsCustom%1"_s.arg(enabledFields)));
        }
        if (enabledFields < 10) {
            QVERIFY(
                !form->vgCustomFields()->isRowVisible(u"vgCustomFieldsCustom%1"_s.arg(enabledFields + 1)));
        }
    }

    // Number boxes keep only digits and the decimal separator; an entry with none is refused.
    void numberEntry_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("refused");
        QTest::addColumn<double>("value");
        AddRow("12 mm", u"seDiameter"_s, u"Diameter"_s, u"12 mm"_s, false, 12.0);
        AddRow("mm alone", u"seDiameter"_s, u"Diameter"_s, u"mm"_s, true, 30.0);
        AddRow("40.5 g", u"seWeightG"_s, u"WeightGram"_s, u"40.5 g"_s, false, 40.5);
        AddRow("grams alone", u"seWeightG"_s, u"WeightGram"_s, u"g"_s, true, 31.1035);
        AddRow("ounces", u"seWeight"_s, u"WeightOz"_s, u"2 oz"_s, false, 2.0);
    }
    void numberEntry()
    {
        QFETCH(QString, box);
        QFETCH(QString, field);
        QFETCH(QString, typed);
        QFETCH(bool, refused);
        auto form = Editor();
        auto* edit = form->findChild<TNumberEdit*>(box);
        QVERIFY(edit);
        edit->lineEdit()->setText(typed);
        QCOMPARE(form->Binder().Commit(edit), !refused);
        QCOMPARE(m_editorErrors.size(), refused ? 1 : 0);
        QFETCH(double, value);
        QVERIFY2(qAbs(Items().fieldByName(field).asFloat() - value) < 1e-6,
                 qPrintable(Items().fieldByName(field).asString()));
        QCOMPARE(Items().state(), refused ? TDatasetState::Browse : TDatasetState::Edit);
        if (field == u"WeightOz"_s) {
            // The ounces write the grams, and the grams box shows them.
            QVERIFY(qAbs(Items().fieldByName(u"WeightG"_s).asFloat() - 2 * 31.1035) < 1e-6);
            QVERIFY(form->findChild<TNumberEdit*>(u"seWeightG"_s)->text().startsWith(u"62.2"_s));
        }
    }

    // Choosing a mint shows its logo at once; nothing is posted.
    void mintLogoFollowsTheBox()
    {
        auto form = Editor();
        QVERIFY(form->imgMint()->pixmap().isNull()); // the first coin has no mint
        QWidget* box = form->Binder().Editor(u"MintID"_s);
        // A pick in the box: its value set as the list does, then written.
        auto* combo = qobject_cast<QComboBox*>(box);
        QVERIFY(combo);
        const int index = combo->findText(u"Perth Mint"_s);
        QVERIFY(index >= 0);
        combo->setCurrentIndex(index);
        form->Binder().Commit(box);
        QCOMPARE(Items().state(), TDatasetState::Edit);
        QVERIFY(!form->imgMint()->pixmap().isNull());
        QCOMPARE(FileValue(u"SELECT COUNT(*) FROM tblCoins WHERE MintID IS NOT NULL"_s), 1);
        Items().next(); // the Krugerrand has mint 3: the move posts
        form->LoadRecord();
        QCOMPARE(FileValue(u"SELECT COUNT(*) FROM tblCoins WHERE MintID IS NOT NULL"_s), 2);
        Shoot(*form, u"editor-general-light"_s);
    }

    // A picture loaded gives its thumbnail on save; a file that is no picture changes nothing; a
    // deleted one leaves the blank thumbnail.
    void pictures()
    {
        // The post rule gives a record without photos its blank thumbnails.
        Items().edit();
        Items().post();
        const QByteArray blank = Items().fieldByName(u"ThumbFront"_s).asBytes();
        QVERIFY(!blank.isEmpty());
        auto form = Editor();
        auto* front = form->findChild<TPictureEdit*>(u"imgObverse"_s);
        QVERIFY(front);
        const QString notAPicture = m_dir->filePath(u"notes.png"_s);
        WriteFile(notAPicture, "just text");
        QVERIFY(!front->loadFile(notAPicture));
        QCOMPARE(m_editorErrors.size(), 1);
        QVERIFY(!m_editorErrors.constFirst().isEmpty());
        QCOMPARE(Items().state(), TDatasetState::Browse);

        const QString picture = m_dir->filePath(u"obverse.png"_s);
        WriteFile(picture, Png(100, 50));
        QVERIFY(front->loadFile(picture));
        QCOMPARE(Items().state(), TDatasetState::Edit);
        QVERIFY(form->Controller().Execute(TEditCommand::SaveAndClose));
        const QByteArray thumb = Items().fieldByName(u"ThumbFront"_s).asBytes();
        QVERIFY(thumb != blank);
        QCOMPARE(QImage::fromData(thumb).size(), QSize(400, 200));

        auto again = Editor();
        auto* shown = again->findChild<TPictureEdit*>(u"imgObverse"_s);
        QCOMPARE(shown->image().size(), QSize(100, 50));
        QVERIFY(shown->clear());
        QVERIFY(again->Controller().Execute(TEditCommand::SaveAndClose));
        QVERIFY(Items().fieldByName(u"PhotoFront"_s).isNull());
        QCOMPARE(Items().fieldByName(u"ThumbFront"_s).asBytes(), blank);
    }

    // The picture's menu commands: what reaches the field, the clipboard and the file.
    void pictureMenu_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("clipboardPicture");
        QTest::addColumn<bool>("photoAfter");
        QTest::addColumn<bool>("edited");
        AddRow("paste a picture", u"paste"_s, true, true, true);
        AddRow("paste text refused", u"paste"_s, false, false, false);
        AddRow("cut", u"cut"_s, false, false, true);
        AddRow("copy", u"copy"_s, false, true, false);
        AddRow("save", u"save"_s, false, true, false);
    }
    void pictureMenu()
    {
        QFETCH(QString, command);
        QFETCH(bool, clipboardPicture);
        const QByteArray photo = Png(30, 60, Qt::darkRed);
        if (command != u"paste"_s) {
            Items().edit();
            Items().fieldByName(u"PhotoBack"_s).setAsBytes(photo);
            Items().post();
        }
        if (clipboardPicture) {
            QImage pixels(20, 10, QImage::Format_RGB32);
            pixels.fill(Qt::blue);
            QGuiApplication::clipboard()->setImage(pixels);
        } else {
            QGuiApplication::clipboard()->setText(u"not a picture"_s);
        }
        auto form = Editor();
        auto* back = form->findChild<TPictureEdit*>(u"imgReverse"_s);
        const QString file = m_dir->filePath(u"saved.png"_s);
        if (command == u"paste"_s) {
            QCOMPARE(back->paste(), clipboardPicture);
        } else if (command == u"cut"_s) {
            QVERIFY(back->cut());
        } else if (command == u"copy"_s) {
            QVERIFY(back->copy());
        } else {
            QVERIFY(back->saveFile(file));
            QCOMPARE(ReadFile(file), photo);
        }
        QTEST(!Items().fieldByName(u"PhotoBack"_s).isNull(), "photoAfter");
        QTEST(Items().state() == TDatasetState::Edit, "edited");
        if (command == u"cut"_s || command == u"copy"_s) {
            QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(30, 60));
        }
        if (clipboardPicture) {
            QCOMPARE(QImage::fromData(Items().fieldByName(u"PhotoBack"_s).asBytes()).size(), QSize(20, 10));
        }
    }

    // Walking a grid grouped by metal: Next visits every record once in the grid's order, passing
    // the group rows; Prior on the first record stays enabled and does nothing.
    void walkGroupedGrid()
    {
        m_data->ADConnection->execSQL(u"INSERT INTO tblCoins (Name, Metal, WeightG) VALUES "
                                      "('Eagle', 1, 31.1), ('Panda', 2, 30), ('Philharmonic', 1, 31.1)"_s);
        m_data->RefreshItems();
        TDatasetTableModel model(&Items());
        TGrid grid;
        grid.setSourceModel(&model);
        TGridTableView* view = grid.addTableView(u"GridTableView"_s);
        view->addColumn(u"GridTableViewName"_s, u"Name"_s);
        view->addColumn(u"GridTableViewMetal"_s, u"Metal"_s)->setGroupIndex(0);
        view->expandAll();
        const TGridModel& shown = *view->model();
        QCOMPARE(shown.displayRowCount(), 5 + 3); // three metals
        TGridRowList rows(shown);
        TDatasetDataController data(Items(), &rows);
        TRecordingHost host;
        TRibbonDBEditController editor(&host);
        editor.SetDataController(&data);

        data.SetFocusedRowIndex(data.FirstRecordRow());
        QCOMPARE(data.FocusedRowIndex(), 1);
        QVERIFY(editor.CommandEnabled(TEditCommand::Prev).value());
        const QString first = Items().fieldByName(u"Name"_s).asString();
        QVERIFY(editor.Execute(TEditCommand::Prev));
        QCOMPARE(Items().fieldByName(u"Name"_s).asString(), first);
        QCOMPARE(data.FocusedRowIndex(), 1);

        QStringList visited{first};
        while (editor.CommandEnabled(TEditCommand::Next).value()) {
            QVERIFY(editor.Execute(TEditCommand::Next));
            visited << Items().fieldByName(u"Name"_s).asString();
        }
        QStringList expected;
        for (int row = 0; row < shown.displayRowCount(); ++row) {
            const TGridRow r = shown.displayRow(row);
            if (r.Kind == TGridRowKind::Data) {
                expected << Items().valueAt(r.SourceRow, Items().fieldByName(u"Name"_s).index()).toString();
            }
        }
        QCOMPARE(visited, expected);
        QVERIFY(editor.Execute(TEditCommand::First));
        QCOMPARE(Items().fieldByName(u"Name"_s).asString(), first);
    }

    void expectedPremiumPrompt()
    {
        auto form = Editor();
        auto* premium = form->findChild<TNumberEdit*>(u"edtExpectedPremium"_s);
        QVERIFY(premium);
        QCOMPARE(premium->lineEdit()->placeholderText(), u"Best guess (can be negative amount)"_s);
    }

    // Escape with a pending change asks; Cancel keeps the window and the change.
    void closeQuery_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("open");
        QTest::addColumn<int>("saved");
        AddRow("cancel stays", int(mrCancel), true, 0);
        AddRow("yes saves", int(mrYes), false, 1);
        AddRow("no drops", int(mrNo), false, 0);
    }
    void closeQuery()
    {
        QFETCH(int, answer);
        auto form = Editor();
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        auto* name = form->findChild<QLineEdit*>(u"edtName"_s);
        name->setFocus();
        name->setText(u"Changed"_s);
        m_presenter.Answer = answer;
        QTest::keyClick(form.get(), Qt::Key_Escape);
        QTEST(form->isVisible(), "open");
        QCOMPARE(m_presenter.Requests.size(), 1);
        QTEST(FileValue(u"SELECT COUNT(*) FROM tblCoins WHERE Name = 'Changed'"_s), "saved");
        form->UpdateActions();
        QCOMPARE(form->Action(TEditCommand::SaveAndClose)->isEnabled(), answer == mrCancel);
    }

    // Every tab of the editor, light, dark and right-to-left, for the eye.
    void screenshots()
    {
        if (qEnvironmentVariableIsEmpty("ORV_SCREENSHOT_DIR")) {
            QSKIP("ORV_SCREENSHOT_DIR not set");
        }
        CustomFieldsEnabled = true;
        ORVCustomFields[0] = {u"Certificate"_s, 0, true};
        ORVCustomFields[1] = {u"Box number"_s, 1, true};
        Items().last();
        for (const auto& [theme, suffix, rtl] :
             {std::tuple{3, "light", false}, {2, "dark", false}, {3, "rtl", true}}) {
            TDM_Styles::ApplyTheme(theme, 0);
            QApplication::setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            auto form = Editor();
            form->setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            form->show();
            QVERIFY(QTest::qWaitForWindowExposed(form.get()));
            for (int tab = 0; tab < form->lgTabs()->count(); ++tab) {
                form->lgTabs()->setCurrentIndex(tab);
                Shoot(*form, u"editor-%1-%2"_s.arg(tab).arg(QString::fromLatin1(suffix)));
            }
            form->hide();
            TMintsForm mints(*m_data);
            mints.setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            mints.show();
            QVERIFY(QTest::qWaitForWindowExposed(&mints));
            Shoot(mints, u"mints-%1"_s.arg(QString::fromLatin1(suffix)));
            TDatasetDataController mintData(*m_data->tblMints);
            TEditMintForm mint(*m_data);
            mint.SetDataController(&mintData);
            mint.setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            mint.show();
            QVERIFY(QTest::qWaitForWindowExposed(&mint));
            Shoot(mint, u"editmint-%1"_s.arg(QString::fromLatin1(suffix)));
            mint.hide();
            mints.hide();
        }
        QApplication::setLayoutDirection(Qt::LeftToRight);
        TDM_Styles::ApplyTheme(3, 0);
    }

    // ---- Mints -------------------------------------------------------------------------------------

    // Remove needs a selection; the grid lists the mints by name.
    void mintsWindow()
    {
        TMintsForm form(*m_data);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        form.UpdateActions();
        QVERIFY(!form.Action(u"actRemove"_s)->isEnabled());
        QVERIFY(form.Action(u"actAdd"_s)->isEnabled());
        TGridTableView* view = form.GridDBTableViewMints();
        QCOMPARE(view->model()->visibleRowCount(), 67);
        // Sorted by name in the grid, the dataset keeps its own order by ID.
        QString previous;
        for (int i = 0; i < 67; ++i) {
            const QString name =
                m_data->tblMints
                    ->valueAt(view->model()->sourceRowAt(i), m_data->tblMints->fieldByName(u"Name"_s).index())
                    .toString();
            QVERIFY2(QString::localeAwareCompare(previous.toLower(), name.toLower()) <= 0, qPrintable(name));
            previous = name;
        }
        m_data->tblMints->first();
        QCOMPARE(m_data->tblMints->fieldByName(u"ID"_s).asInteger(), 1);
        view->selectAll();
        form.UpdateActions();
        QVERIFY(form.Action(u"actRemove"_s)->isEnabled());
        m_presenter.Answer = mrNo;
        form.Action(u"actRemove"_s)->trigger();
        QCOMPARE(FileValue(u"SELECT COUNT(*) FROM tblMints"_s), 67);
        QCOMPARE(m_presenter.Requests.size(), 1);
    }

    // The record panel writes to the file at once.
    void recordPanelPostsAtOnce()
    {
        TMintsForm form(*m_data);
        m_data->tblMints->locate(u"ID"_s, 4);
        TPropertyGrid* vg = form.VG();
        vg->setCurrentRow(m_data->tblMints->recNo() - 1);
        QVERIFY(vg->setRowValue(u"VGName"_s, u"Renamed mint"_s));
        emit vg->rowValueChanged(u"VGName"_s, u"Renamed mint"_s);
        QCOMPARE(FileValue(u"SELECT COUNT(*) FROM tblMints WHERE ID = 4 AND Name = 'Renamed mint'"_s), 1);
        QCOMPARE(m_data->tblMints->state(), TDatasetState::Browse);
    }

    // The mint dialog: the document name follows the name as typed; a logo that is no picture is
    // refused and the record keeps its logo.
    void mintDialog()
    {
        m_data->tblMints->locate(u"ID"_s, 2);
        const QByteArray logo = m_data->tblMints->fieldByName(u"Logo"_s).asBytes();
        TDatasetDataController data(*m_data->tblMints);
        TEditMintForm form(*m_data);
        form.SetDataController(&data);
        form.Prepare();
        form.LoadRecord();
        QCOMPARE(form.Ribbon()->documentName(), m_data->tblMints->fieldByName(u"Name"_s).asString());
        form.edtMintName()->setText(u"Typed name"_s);
        QCOMPARE(form.Ribbon()->documentName(), u"Typed name"_s);
        QVERIFY(form.Binder().Commit(form.edtMintName()));
        QCOMPARE(form.imgLogo()->size(), QSize(200, 200));

        QVERIFY(!form.imgLogo()->takePicture("<html>no picture</html>"));
        QCOMPARE(m_editorErrors.size(), 1);
        QCOMPARE(m_data->tblMints->fieldByName(u"Logo"_s).asBytes(), logo);
        QVERIFY(form.imgLogo()->takePicture(Png(64, 64)));
        QCOMPARE(m_data->tblMints->state(), TDatasetState::Edit);
        QVERIFY(m_data->tblMints->fieldByName(u"Logo"_s).asBytes() != logo);
        form.PostEditorValues();
        QVERIFY(form.Controller().Execute(TEditCommand::SaveAndClose));
        QCOMPARE(FileValue(u"SELECT COUNT(*) FROM tblMints WHERE ID = 2 AND Name = 'Typed name'"_s), 1);
    }
};

QTEST_MAIN(TestItemEditor)
#include "tst_itemeditor.moc"
