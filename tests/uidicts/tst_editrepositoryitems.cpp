// The edit repository's items as the views, the details pane and the editors take them: formats,
// null texts, the number-entry rule, the clear key, the country list, the mint lookup, ratings, the
// language step, and the picture control that refuses what is no picture.

#include "dmImages.h"
#include "dmInternalData.h"
#include "dmStyles.h"
#include "frmEditSimpleDictionary.h"
#include "frmPic.h"
#include "support_common.h"
#include "uButtonComboBox.h"
#include "uChoiceEditorItems.h"
#include "uDBDataset.h"
#include "uDBField.h"
#include "uNumberEdit.h"
#include "uPictureControlItem.h"
#include "uPictureEdit.h"
#include "uPictures.h"
#include "uRatingEditorItem.h"
#include "uWidgetTexts.h"
#include "uZTSettings.h"
#include "uZTStrings.h"

#include <QAbstractItemView>
#include <QAction>
#include <QBuffer>
#include <QClipboard>
#include <QGridLayout>
#include <QImageWriter>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollArea>
#include <QSignalSpy>
#include <QSlider>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QByteArray Png(int w, int h)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// A picture with something to see in it: a coin-like disc with a mark at its top.
QByteArray ShotPicture()
{
    QImage image(480, 360, QImage::Format_RGB32);
    image.fill(QColor(0x2a, 0x4d, 0x69));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(0xd4, 0xaf, 0x37));
    painter.setPen(QPen(QColor(0x8a, 0x6d, 0x1a), 6));
    painter.drawEllipse(QPoint(240, 180), 150, 150);
    painter.setPen(QPen(Qt::black, 4));
    painter.drawText(QRect(90, 60, 300, 60), Qt::AlignCenter, u"TOP"_s);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG");
    return bytes;
}

// Types text into a number editor and leaves it, as a user would.
QVariant TypeInto(const TEditorItem* item, QWidget* editor, const QString& text)
{
    auto* number = qobject_cast<TNumberEdit*>(editor);
    if (number) {
        number->lineEdit()->setText(text);
    }
    return item->editorValue(editor);
}

// Types into the dictionary dialog's controller and presses OK.
class TOkRunner : public TEditDictionaryDialogRunner
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

class TErrors
{
public:
    TErrors()
    {
        m_previous = SetEditorErrorHandler([this](QWidget*, const QString& message) { Messages << message; });
    }
    ~TErrors() { SetEditorErrorHandler(m_previous); }
    QStringList Messages;

private:
    TEditorErrorHandler m_previous;
};

} // namespace

class TstEditRepositoryItems : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<TDataModuleImages> m_module;

private slots:
    void init()
    {
        LoadEnglish();
        m_home = std::make_unique<TTempSettingsHome>();
        ORVDicts = DefaultDicts();
        Currency = u"USD"_s;
        m_module = std::make_unique<TDataModuleImages>();
    }

    void cleanup()
    {
        m_module.reset();
        m_home.reset();
    }

    void displayTexts_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("metal") << u"Metal"_s << QVariant(1) << u"Silver"_s;
        QTest::newRow("type") << u"CoinType"_s << QVariant(3) << u"Bar"_s;
        QTest::newRow("country") << u"Country"_s << QVariant(u"DE"_s) << u"Germany"_s;
        QTest::newRow("no country") << u"Country"_s << QVariant() << u"N/A"_s;
        QTest::newRow("unknown country") << u"Country"_s << QVariant(u"QQ"_s) << u"N/A"_s;
        QTest::newRow("grams") << u"WeightGram"_s << QVariant(31.1035) << u"31.1 g"_s;
        QTest::newRow("grams null") << u"WeightGram"_s << QVariant() << u"N/A"_s;
        QTest::newRow("ounces") << u"WeightOz"_s << QVariant(0.5) << u"0.5 oz"_s;
        QTest::newRow("mm") << u"Diameter"_s << QVariant(38.61) << u"38.6 mm"_s;
        QTest::newRow("mintage") << u"Mintage"_s << QVariant(1500000) << u"1,500,000"_s;
        QTest::newRow("mintage null") << u"Mintage"_s << QVariant() << u"N/A"_s;
        QTest::newRow("qty") << u"Qty"_s << QVariant(12000) << u"12,000"_s;
        QTest::newRow("year null") << u"Year"_s << QVariant() << u"N/A"_s;
        QTest::newRow("face value negative") << u"FaceValue"_s << QVariant(-5.0) << u"(5)"_s;
        QTest::newRow("percent") << u"ROIPercent"_s << QVariant(12.5) << u"12.50%"_s;
        QTest::newRow("price in dollars") << u"Price"_s << QVariant(1234.5) << u"$1,234.50"_s;
    }

    void displayTexts()
    {
        QFETCH(QString, field);
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        TEditorItem* item = m_module->FieldItem(field);
        QVERIFY(item);
        QCOMPARE(item->displayText(value), text);
    }

    // Only digits and the locale's decimal separator are read; a bad entry is an error and the value
    // stays.
    void numberEntry_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QVariant>("expected"); // invalid: refused
        QTest::newRow("31.1 g") << u"WeightGram"_s << u"en_US"_s << u"31.1 g"_s << QVariant(31.1);
        QTest::newRow("12 mm") << u"Diameter"_s << u"en_US"_s << u"12 mm"_s << QVariant(12.0);
        QTest::newRow("mm alone") << u"Diameter"_s << u"en_US"_s << u"mm"_s << QVariant();
        QTest::newRow("1,5 German") << u"WeightOz"_s << u"de_DE"_s << u"1,5"_s << QVariant(1.5);
        QTest::newRow("empty is null")
            << u"WeightGram"_s << u"en_US"_s << u""_s << QVariant(QMetaType(QMetaType::Double));
    }

    void numberEntry()
    {
        QFETCH(QString, field);
        QFETCH(QString, locale);
        QFETCH(QString, typed);
        QFETCH(QVariant, expected);
        QLocale::setDefault(QLocale(locale));
        TEditorItem* item = m_module->FieldItem(field);
        QWidget parent;
        QWidget* editor = item->createEditor(&parent);
        QVERIFY(editor);
        item->setEditorValue(editor, 7.0);
        if (!expected.isValid()) {
            QVERIFY_THROWS_EXCEPTION(TEditorError, TypeInto(item, editor, typed));
        } else if (expected.isNull()) {
            QVERIFY(TypeInto(item, editor, typed).isNull());
        } else {
            QCOMPARE(TypeInto(item, editor, typed).toDouble(), expected.toDouble());
        }
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    // Ctrl+Backspace empties every editor that has a value to empty.
    void clearKeyEmpties_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("grams") << u"WeightGram"_s << QVariant(5.0);
        QTest::newRow("year") << u"Year"_s << QVariant(2001);
        QTest::newRow("purity") << u"Purity"_s << QVariant(u".999"_s);
        QTest::newRow("country") << u"Country"_s << QVariant(u"FR"_s);
        QTest::newRow("rating") << u"Rating"_s << QVariant(3.5);
        QTest::newRow("series") << u"Series"_s << QVariant(u"Lunar"_s);
    }

    void clearKeyEmpties()
    {
        QFETCH(QString, field);
        QFETCH(QVariant, value);
        TEditorItem* item = m_module->FieldItem(field);
        QWidget parent;
        QWidget* editor = m_module->CreateFieldEditor(field, &parent);
        QVERIFY(editor);
        QCOMPARE(editor->objectName(), field);
        item->setEditorValue(editor, value);
        QVERIFY(!item->editorValue(editor).isNull());
        QWidget* target = editor;
        if (auto* number = qobject_cast<TNumberEdit*>(editor))
            target = number->lineEdit();
        else if (auto* combo = qobject_cast<QComboBox*>(editor); combo && combo->lineEdit())
            target = combo->lineEdit();
        QTest::keyClick(target, Qt::Key_Backspace, Qt::ControlModifier);
        const QVariant after = item->editorValue(editor);
        QVERIFY2(after.isNull() || after.toString().isEmpty(), qPrintable(after.toString()));
    }

    void countriesSortedWithFlagsAndEmptyFirst()
    {
        auto* countries = dynamic_cast<TListEditorItem*>(m_module->Item(u"ImageComboBoxItemCountries"_s));
        QVERIFY(countries);
        const QList<TListEntry> entries = countries->entries();
        QVERIFY(entries.size() > 240);
        QCOMPARE(entries.first().text, u"Empty"_s);
        QVERIFY(entries.first().value.toString().isEmpty());
        QCOMPARE(entries.at(1).text, u"Afghanistan"_s);
        QVERIFY(!entries.at(1).icon.isNull());
        QVERIFY(!entries.at(1).icon.pixmap(16, 11).isNull());
        QWidget parent;
        auto* combo = qobject_cast<QComboBox*>(countries->createEditor(&parent));
        QVERIFY(combo);
        QCOMPARE(combo->count(), entries.size());
        countries->setEditorValue(combo, u"CH"_s);
        QCOMPARE(combo->currentText(), u"Switzerland"_s);
        QCOMPARE(countries->editorValue(combo).toString(), u"CH"_s);
    }

    void mintLookupFollowsTheModelAndItsButtonRunsTheCommand()
    {
        QStandardItemModel mints(2, 2);
        mints.setHeaderData(0, Qt::Horizontal, u"Name"_s, Qt::UserRole + 3);
        mints.setHeaderData(1, Qt::Horizontal, u"ID"_s, Qt::UserRole + 3);
        mints.setData(mints.index(0, 0), u"Royal Mint"_s);
        mints.setData(mints.index(0, 1), 7);
        mints.setData(mints.index(1, 0), u"Perth Mint"_s);
        mints.setData(mints.index(1, 1), 9);
        m_module->SetMintsModel(&mints, 0);
        TEditorItem* item = m_module->FieldItem(u"MintID"_s);
        QCOMPARE(item->displayText(9), u"Perth Mint"_s);
        QCOMPARE(item->displayText(7), u"Royal Mint"_s);
        QVERIFY(TDataModuleImages::PostsAtOnce(u"lcbMints"_s));
        QVERIFY(!TDataModuleImages::PostsAtOnce(u"seMM"_s));

        QSignalSpy ran(m_module->actEditMints(), &QAction::triggered);
        QWidget parent;
        auto* combo = qobject_cast<TButtonComboBox*>(item->createEditor(&parent));
        QVERIFY(combo);
        QVERIFY(combo->buttonAction());
        combo->buttonAction()->trigger();
        QCOMPARE(ran.size(), 1);
    }

    void dictionaryComboOffersItsListAndRunsItsCommand()
    {
        ORVDicts.Purities.Value = u".999\r\n.9999\r\n"_s;
        m_module->BindDictionaries();
        TEditorItem* item = m_module->FieldItem(u"Purity"_s);
        QWidget parent;
        auto* combo = qobject_cast<TButtonComboBox*>(item->createEditor(&parent));
        QVERIFY(combo);
        combo->refreshItems();
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->itemText(1), u".9999"_s);
        // The button runs the dictionary's command; the edited list shows in the open combo.
        TOkRunner runner;
        runner.typed = u".999\r\n.9995\r\n.585\r\n"_s;
        TEditDictionaryDialogRunner* previous = SetEditDictionaryDialogRunner(&runner);
        QSignalSpy ran(m_module->Action(u"actEditPurity"_s), &QAction::triggered);
        combo->setEditText(u"typed"_s);
        combo->buttonAction()->trigger();
        SetEditDictionaryDialogRunner(previous);
        QCOMPARE(ran.size(), 1);
        QCOMPARE(runner.runs, 1);
        QCOMPARE(combo->count(), 3);
        QCOMPARE(combo->itemText(2), u".585"_s);
        QCOMPARE(combo->currentText(), u"typed"_s);
        QCOMPARE(ORVDicts.Purities.Value, u".999\r\n.9995\r\n.585\r\n"_s);
    }

    void ratingHalfStars()
    {
        auto* rating = dynamic_cast<TRatingEditorItem*>(m_module->FieldItem(u"Rating"_s));
        QVERIFY(rating);
        QCOMPARE(rating->step(), 0.5);
        QCOMPARE(rating->starCount(), 5);
    }

    // The language step: list texts, formats and null texts follow the language.
    void translateRepository()
    {
        XMLLanguage().SetLanguageFolder(qEnvironmentVariable("ORV_SOURCE_DIR") + u"/data/lang"_s);
        QVERIFY(LoadLanguage(u"German"_s));
        m_module->TranslateRepository();
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QCOMPARE(m_module->FieldItem(u"Metal"_s)->displayText(0), GetText(u"cS_AU"_s));
        QCOMPARE(m_module->FieldItem(u"Year"_s)->displayText(QVariant()), GetText(u"cSNA"_s));
        QCOMPARE(m_module->FieldItem(u"Country"_s)->displayText(QVariant()), GetText(u"cSNA"_s));
        auto* metals = dynamic_cast<TCheckListEditorItem*>(m_module->Item(u"ccbMetals"_s));
        QCOMPARE(metals->displayText(QVariant()), GetText(u"cSAny"_s));
        QCOMPARE(metals->displayText(u"0,1"_s), GetText(u"cS_AU"_s) + u", "_s + GetText(u"cS_AG"_s));
        auto* pictures = dynamic_cast<TPictureControlItem*>(m_module->Item(u"ImageCoinEdit"_s));
        QCOMPARE(pictures->emptyText(), GetText(u"cSImgEditCaption"_s));
        QCOMPARE(pictures->showFullSizeText(), GetText(u"cSImgEditShowFullSize"_s));
        LoadEnglish();
        m_module->TranslateRepository();
        QCOMPARE(m_module->FieldItem(u"Metal"_s)->displayText(0), u"Gold"_s);
    }

    // A photo loaded through the picture control enters as its bytes; a file that is no picture is
    // refused with a clear message and nothing changes; delete empties it.
    void pictureControlLoadsRefusesAndDeletes_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("taken");
        QTest::newRow("png") << Png(60, 30) << true;
        QTest::newRow("text") << QByteArray("name;metal\n") << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("damaged png") << Png(60, 30).left(50) << false;
    }

    void pictureControlLoadsRefusesAndDeletes()
    {
        QFETCH(QByteArray, file);
        QFETCH(bool, taken);
        TErrors errors;
        QTemporaryDir dir;
        const QString path = dir.filePath(u"picture.png"_s);
        WriteFile(path, file);
        TEditorItem* item = m_module->FieldItem(u"PhotoFront"_s);
        QWidget parent;
        auto* edit = qobject_cast<TPictureEdit*>(item->createEditor(&parent));
        QVERIFY(edit);
        const QByteArray before = Png(10, 10);
        item->setEditorValue(edit, before);
        int chosen = 0;
        item->onValueChosen(edit, [&chosen] { ++chosen; });
        TPictureEdit::setFileNameRunner(
            [path](QWidget*, bool, const QString&, const QString&) { return path; });
        QCOMPARE(edit->load(), taken);
        TPictureEdit::setFileNameRunner({});
        QCOMPARE(item->editorValue(edit).toByteArray(), taken ? file : before);
        QCOMPARE(chosen, taken ? 1 : 0);
        QCOMPARE(errors.Messages.size(), taken ? 0 : 1);
        QVERIFY(edit->clear());
        QVERIFY(item->editorValue(edit).isNull());
        QCOMPARE(chosen, taken ? 2 : 1);
    }

    void pictureMenuHasItsItemsInOrder()
    {
        QByteArray shown;
        auto* pictures = dynamic_cast<TPictureControlItem*>(m_module->Item(u"ImageCoinEdit"_s));
        pictures->setShowFullSize([&shown](const QByteArray& bytes, QWidget*) { shown = bytes; });
        QWidget parent;
        auto* edit = qobject_cast<TPictureEdit*>(pictures->createEditor(&parent));
        std::unique_ptr<QMenu> empty(edit->createMenu(nullptr));
        QStringList texts;
        QStringList enabled;
        for (QAction* action : empty->actions()) {
            texts << action->text();
            if (action->isEnabled() && !action->isSeparator())
                enabled << action->text();
        }
        QCOMPARE(texts, QStringList({u"Cu&t"_s, u"&Copy"_s, u"&Paste"_s, u"&Delete"_s, QString(),
                                     u"&Load..."_s, u"&Save as..."_s, QString(), u"Show full size"_s}));
        QVERIFY(!enabled.contains(u"Cu&t"_s));
        QVERIFY(!enabled.contains(u"Show full size"_s));
        QVERIFY(enabled.contains(u"&Load..."_s));

        const QByteArray png = Png(20, 20);
        pictures->setEditorValue(edit, png);
        std::unique_ptr<QMenu> full(edit->createMenu(nullptr));
        QAction* show = full->actions().last();
        QVERIFY(show->isEnabled());
        show->trigger();
        QCOMPARE(shown, png);
        pictures->setShowFullSize({});
    }

    // Copy, then paste into an empty control, gives the same picture; cut empties the source.
    void pictureClipboardRoundTrip()
    {
        TEditorItem* item = m_module->FieldItem(u"PhotoBack"_s);
        QWidget parent;
        auto* from = qobject_cast<TPictureEdit*>(item->createEditor(&parent));
        auto* to = qobject_cast<TPictureEdit*>(item->createEditor(&parent));
        const QByteArray png = Png(33, 21);
        from->setPicture(png);
        QVERIFY(from->cut());
        QVERIFY(!from->hasPicture());
        QVERIFY(to->paste());
        QCOMPARE(to->image().size(), QSize(33, 21));
    }

    // Through the picture control into the item: a loaded photo gives its thumbnail, a removed one
    // the blank again, a file that is no picture is refused and the record keeps its photo.
    void photoThroughTheControlGivesItsThumbnail()
    {
        TErrors errors;
        QTemporaryDir dir;
        TDM_InternalData data;
        const QString path = dir.filePath(u"c.orv"_s);
        data.CreateBlankDatabase(path);
        QVERIFY(data.ConnectDatabase(path));
        TDBDataset& items = *data.qDS_Items;
        items.append();
        items.fieldByName(u"Name"_s).setAsString(u"Kangaroo"_s);
        items.fieldByName(u"Metal"_s).setAsInteger(1);
        items.fieldByName(u"CoinType"_s).setAsInteger(0);
        items.fieldByName(u"WeightGram"_s).setAsFloat(31.1035);
        items.post();
        const QByteArray blank = items.fieldByName(u"ThumbFront"_s).asBytes();
        QVERIFY(!blank.isEmpty());

        TEditorItem* item = m_module->FieldItem(u"PhotoFront"_s);
        QWidget parent;
        auto* edit = qobject_cast<TPictureEdit*>(m_module->CreateFieldEditor(u"PhotoFront"_s, &parent));
        QVERIFY(edit);
        item->onValueChosen(edit, [&items, item, edit] {
            items.edit();
            items.fieldByName(u"PhotoFront"_s).setValue(item->editorValue(edit));
            items.post();
        });
        const QByteArray photo = Png(300, 150);
        WriteFile(dir.filePath(u"photo.png"_s), photo);
        WriteFile(dir.filePath(u"notes.txt"_s), "no picture");
        QVERIFY(edit->loadFile(dir.filePath(u"photo.png"_s)));
        QCOMPARE(items.fieldByName(u"PhotoFront"_s).asBytes(), photo);
        QCOMPARE(QImage::fromData(items.fieldByName(u"ThumbFront"_s).asBytes()).size(), QSize(400, 200));
        QVERIFY(!edit->loadFile(dir.filePath(u"notes.txt"_s)));
        QCOMPARE(errors.Messages.size(), 1);
        QCOMPARE(items.fieldByName(u"PhotoFront"_s).asBytes(), photo);
        QVERIFY(edit->clear());
        QVERIFY(items.fieldByName(u"PhotoFront"_s).isNull());
        QCOMPARE(items.fieldByName(u"ThumbFront"_s).asBytes(), blank);
    }

    // The viewer shows the picture upright at 100%, zooms with the wheel and fits, and saves the
    // bytes as they are; bytes that are no picture open no window.
    void viewer()
    {
        const QByteArray jpeg = ShotPicture();
        TShowPictureForm form(jpeg, TPictureViewerSource::ItemEditor);
        QCOMPARE(form.windowTitle(), u"Picture"_s);
        QVERIFY2(form.StatusText().startsWith(u"JPEG: 480px x 360px. "_s), qPrintable(form.StatusText()));
        QCOMPARE(form.findChild<QLabel*>(u"StatusPanel"_s)->text(), form.StatusText());
        QCOMPARE(form.Zoom(), 1.0);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        QWheelEvent wheel(QPointF(20, 20), form.ImageArea()->viewport()->mapToGlobal(QPointF(20, 20)),
                          QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(form.ImageArea()->viewport(), &wheel);
        QCOMPARE(form.Zoom(), 1.25);
        QCOMPARE(form.findChild<QSlider*>(u"ZoomSlider"_s)->value(), 125);
        form.resize(200, 150);
        form.actFit()->trigger();
        QVERIFY(form.Zoom() < 0.5);
        form.actActualSize()->trigger();
        QCOMPARE(form.Zoom(), 1.0);

        QTemporaryDir dir;
        TShowPictureForm::SetSaveFileNameRunner(
            [&dir](QWidget*, const QString& suffix) { return dir.filePath(u"saved."_s + suffix); });
        QVERIFY(form.SaveAs());
        TShowPictureForm::SetSaveFileNameRunner({});
        QCOMPARE(ReadFile(dir.filePath(u"saved.jpg"_s)), jpeg);
        form.CopyToClipboard();
        QCOMPARE(qvariant_cast<QImage>(QApplication::clipboard()->mimeData()->imageData()).size(),
                 QSize(480, 360));

        QVERIFY_THROWS_EXCEPTION(
            EPictureError, TShowPictureForm(QByteArray("no picture"), TPictureViewerSource::DetailsPane));
    }

    // Pictures for a person to look at, made only when ORV_SCREENSHOT_DIR names a folder: the
    // picture control and its menu, the country list with flags, the rating, the viewer, each in a
    // light and a dark theme.
    void screenshots()
    {
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (dir.isEmpty())
            QSKIP("ORV_SCREENSHOT_DIR is not set");
        for (const auto& [theme, name] :
             {std::pair{cDefaultThemeIndex, u"light"_s}, std::pair{0, u"dark"_s}}) {
            TDM_Styles::ApplyTheme(theme, 1);
            QWidget window;
            window.setWindowTitle(u"Repository"_s);
            auto* layout = new QGridLayout(&window);
            auto* pictures = dynamic_cast<TPictureControlItem*>(m_module->Item(u"ImageCoinEdit"_s));
            auto* full = qobject_cast<TPictureEdit*>(pictures->createEditor(&window));
            pictures->setEditorValue(full, ShotPicture());
            auto* empty = qobject_cast<TPictureEdit*>(pictures->createEditor(&window));
            layout->addWidget(full, 0, 0);
            layout->addWidget(empty, 0, 1);
            QWidget* country = m_module->CreateFieldEditor(u"Country"_s, &window);
            m_module->FieldItem(u"Country"_s)->setEditorValue(country, u"DE"_s);
            layout->addWidget(country, 1, 0);
            QWidget* rating = m_module->CreateFieldEditor(u"Rating"_s, &window);
            m_module->FieldItem(u"Rating"_s)->setEditorValue(rating, 3.5);
            layout->addWidget(rating, 1, 1);
            QWidget* weight = m_module->CreateFieldEditor(u"WeightGram"_s, &window);
            m_module->FieldItem(u"WeightGram"_s)->setEditorValue(weight, 31.1035);
            layout->addWidget(weight, 2, 0);
            QWidget* purity = m_module->CreateFieldEditor(u"Purity"_s, &window);
            layout->addWidget(purity, 2, 1);
            window.resize(520, 420);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.grab().save(dir + u"/repository-"_s + name + u".png"_s);

            std::unique_ptr<QMenu> menu(full->createMenu(nullptr));
            menu->popup(QPoint(10, 10));
            QTest::qWait(50);
            menu->grab().save(dir + u"/picture-menu-"_s + name + u".png"_s);
            menu->hide();

            auto* combo = qobject_cast<QComboBox*>(country);
            combo->showPopup();
            QTest::qWait(50);
            combo->view()->window()->grab().save(dir + u"/countries-"_s + name + u".png"_s);
            combo->hidePopup();

            TShowPictureForm viewer(ShotPicture(), TPictureViewerSource::ItemEditor);
            viewer.show();
            QVERIFY(QTest::qWaitForWindowExposed(&viewer));
            viewer.grab().save(dir + u"/viewer-"_s + name + u".png"_s);
            viewer.resize(300, 220);
            viewer.FitToWindow();
            QTest::qWait(20);
            viewer.grab().save(dir + u"/viewer-fit-"_s + name + u".png"_s);
        }
        TDM_Styles::ApplyTheme(cDefaultThemeIndex, 0);
    }
};

QTEST_MAIN(TstEditRepositoryItems)
#include "tst_editrepositoryitems.moc"
