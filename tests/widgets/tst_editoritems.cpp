// The generic editor items: number formats, the number-entry rule, the clear key, and how each
// kind of item shows, matches and reads its values.

#include "support_editors.h"
#include "uButtonComboBox.h"
#include "uCheckComboBox.h"
#include "uChoiceEditorItems.h"
#include "uNumberEdit.h"
#include "uNumberEditorItems.h"
#include "uPictureEditorItem.h"
#include "uRatingEditorItem.h"
#include "uTextEditorItems.h"

#include <QBuffer>
#include <QCheckBox>
#include <QDateEdit>
#include <QImage>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStyleOptionViewItem>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {
const QLocale cEnglish(QLocale::English, QLocale::UnitedStates);
const QLocale cGerman(QLocale::German, QLocale::Germany);

QLocale localeNamed(const QString& name)
{
    return name == u"de"_s ? cGerman : cEnglish;
}

QStyleOptionViewItem cellOption(const QWidget& widget, const QRect& rect)
{
    QStyleOptionViewItem option;
    option.initFrom(&widget);
    option.rect = rect;
    return option;
}
} // namespace

class TestEditorItems : public QObject
{
    Q_OBJECT

private slots:
    void numberFormat_data();
    void numberFormat();
    void numberEntryRule_data();
    void numberEntryRule();
    void numberEditorKeepsValueOnBadEntry_data();
    void numberEditorKeepsValueOnBadEntry();
    void numberEditorStepsAndRange_data();
    void numberEditorStepsAndRange();
    void clearKeyEmptiesValue_data();
    void clearKeyEmptiesValue();
    void listItemMatchesValues_data();
    void listItemMatchesValues();
    void lookupItemFollowsModel();
    void comboItemRereadsListAfterButton();
    void checkListFlagText_data();
    void checkListFlagText();
    void checkItemToggles_data();
    void checkItemToggles();
    void ratingPicksHalfStars_data();
    void ratingPicksHalfStars();
    void textDateAndMemoValues();
    void pictureItemDecodes();
};

// ---- formats

void TestEditorItems::numberFormat_data()
{
    QTest::addColumn<QString>("mask");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("expected");
    QTest::newRow("grams") << u"0.## g"_s << 31.1035 << u"en"_s << u"31.1 g"_s;
    QTest::newRow("grams, optional digits dropped") << u"0.## g"_s << 12.0 << u"en"_s << u"12 g"_s;
    QTest::newRow("millimetres") << u"0.# mm"_s << 38.61 << u"en"_s << u"38.6 mm"_s;
    QTest::newRow("ounces of zero") << u"0.## oz"_s << 0.0 << u"en"_s << u"0 oz"_s;
    QTest::newRow("rounds half away from zero") << u"0.##"_s << 2.675 << u"en"_s << u"2.68"_s;
    QTest::newRow("grouping") << u",0"_s << 1234567.0 << u"en"_s << u"1,234,567"_s;
    QTest::newRow("grouping, German") << u",0.##"_s << 1234.5 << u"de"_s << u"1.234,5"_s;
    QTest::newRow("money negative in parentheses")
        << u",0.##;(,0.##)"_s << -1234.5 << u"en"_s << u"(1,234.5)"_s;
    QTest::newRow("money positive") << u",0.##;(,0.##)"_s << 1234.567 << u"en"_s << u"1,234.57"_s;
    QTest::newRow("percent not multiplied") << u",0.00%;-,0.00%"_s << -3.14159 << u"en"_s << u"-3.14%"_s;
    QTest::newRow("negative through first section") << u"0.0"_s << -2.25 << u"en"_s << u"-2.3"_s;
    QTest::newRow("tiny negative rounds to zero, no sign") << u"0.0;(0.0)"_s << -0.01 << u"en"_s << u"0.0"_s;
    QTest::newRow("zero section") << u"0.00;-0.00;'none'"_s << 0.0 << u"en"_s << u"none"_s;
    QTest::newRow("quoted prefix") << u"'EUR' ,0.00"_s << 5.0 << u"en"_s << u"EUR 5.00"_s;
    QTest::newRow("semicolon inside quotes") << u"0 'a;b'"_s << 7.0 << u"en"_s << u"7 a;b"_s;
    QTest::newRow("no integer digit") << u"#.##"_s << 0.5 << u"en"_s << u".5"_s;
    QTest::newRow("empty mask: shortest") << QString() << 0.1 << u"en"_s << u"0.1"_s;
    QTest::newRow("empty mask, whole") << QString() << 1234567.0 << u"de"_s << u"1234567"_s;
}

void TestEditorItems::numberFormat()
{
    QFETCH(QString, mask);
    QFETCH(double, value);
    QFETCH(QString, locale);
    QFETCH(QString, expected);
    QCOMPARE(TNumberFormat(mask).format(value, localeNamed(locale)), expected);
}

// ---- the number-entry rule

void TestEditorItems::numberEntryRule_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("allowNegative");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("31.1 g") << u"31.1 g"_s << u"en"_s << false << true << QVariant(31.1);
    QTest::newRow("12 mm") << u"12 mm"_s << u"en"_s << false << true << QVariant(12.0);
    QTest::newRow("mm") << u"mm"_s << u"en"_s << false << false << QVariant();
    QTest::newRow("1,5 under German") << u"1,5"_s << u"de"_s << false << true << QVariant(1.5);
    QTest::newRow("1,5 under English: a separator dropped")
        << u"1,5"_s << u"en"_s << false << true << QVariant(15.0);
    QTest::newRow("empty") << QString() << u"en"_s << false << true << QVariant();
    QTest::newRow("blanks") << u"   "_s << u"en"_s << false << true << QVariant();
    QTest::newRow("two separators") << u"1.2.3"_s << u"en"_s << false << false << QVariant();
    QTest::newRow("grouped") << u"1,234.5 oz"_s << u"en"_s << false << true << QVariant(1234.5);
    QTest::newRow("minus dropped without negatives")
        << u"-3.5"_s << u"en"_s << false << true << QVariant(3.5);
    QTest::newRow("minus kept with negatives") << u"-3.5"_s << u"en"_s << true << true << QVariant(-3.5);
    QTest::newRow("leading separator") << u".75"_s << u"en"_s << false << true << QVariant(0.75);
}

void TestEditorItems::numberEntryRule()
{
    QFETCH(QString, typed);
    QFETCH(QString, locale);
    QFETCH(bool, allowNegative);
    QFETCH(bool, ok);
    QFETCH(QVariant, expected);
    bool read = !ok;
    const QVariant value = ParseNumberEntry(typed, localeNamed(locale), allowNegative, &read);
    QCOMPARE(read, ok);
    QCOMPARE(value.isNull(), expected.isNull());
    if (!expected.isNull())
        QCOMPARE(value.toDouble(), expected.toDouble());
}

// The rule through an item's editor: a refused entry throws a clear text and the box shows the
// old value again.
void TestEditorItems::numberEditorKeepsValueOnBadEntry_data()
{
    QTest::addColumn<bool>("whole");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QVariant>("expected"); // invalid: refused
    QTest::newRow("weight in grams") << false << u"en"_s << u"31.1 g"_s << QVariant(31.1);
    QTest::newRow("unit letters alone") << false << u"en"_s << u"mm"_s << QVariant();
    QTest::newRow("German comma") << false << u"de"_s << u"1,5"_s << QVariant(1.5);
    QTest::newRow("cleared") << false << u"en"_s << QString() << QVariant(QMetaType(QMetaType::Double));
    QTest::newRow("whole number") << true << u"en"_s << u"1,250 pcs"_s << QVariant(1250LL);
    QTest::newRow("decimals in a whole number") << true << u"en"_s << u"12.5"_s << QVariant();
}

void TestEditorItems::numberEditorKeepsValueOnBadEntry()
{
    QFETCH(bool, whole);
    QFETCH(QString, locale);
    QFETCH(QString, typed);
    QFETCH(QVariant, expected);
    std::unique_ptr<TNumberEditorItem> item;
    if (whole)
        item = std::make_unique<TIntegerEditorItem>();
    else
        item = std::make_unique<TFloatEditorItem>();
    item->setDisplayFormat(whole ? u",0"_s : u"0.## g"_s);
    item->setLocale(localeNamed(locale));
    QWidget parent;
    std::unique_ptr<QWidget> editor(item->createEditor(&parent));
    auto* edit = qobject_cast<TNumberEdit*>(editor.get());
    QVERIFY(edit);
    item->setEditorValue(edit, 7);
    edit->lineEdit()->setText(typed);
    if (!expected.isValid()) {
        try {
            item->editorValue(edit);
            QFAIL("the entry was taken");
        } catch (const TEditorError& error) {
            QVERIFY2(error.text().contains(typed), qPrintable(error.text()));
        }
        QCOMPARE(edit->value().toDouble(), 7.0);
        QCOMPARE(edit->lineEdit()->text(), whole ? u"7"_s : u"7 g"_s);
        return;
    }
    const QVariant value = item->editorValue(edit);
    QCOMPARE(value.isNull(), expected.isNull());
    if (!expected.isNull()) {
        QCOMPARE(value.toDouble(), expected.toDouble());
        QCOMPARE(value.typeId(), whole ? int(QMetaType::LongLong) : int(QMetaType::Double));
    }
}

void TestEditorItems::numberEditorStepsAndRange_data()
{
    QTest::addColumn<QVariant>("start");
    QTest::addColumn<int>("key");
    QTest::addColumn<double>("expected");
    // Range 0 .. 10, step 0.5, large step 5.
    QTest::newRow("up") << QVariant(1.0) << int(Qt::Key_Up) << 1.5;
    QTest::newRow("down at the minimum") << QVariant(0.0) << int(Qt::Key_Down) << 0.0;
    QTest::newRow("page up") << QVariant(1.0) << int(Qt::Key_PageUp) << 6.0;
    QTest::newRow("page up past the maximum") << QVariant(8.0) << int(Qt::Key_PageUp) << 10.0;
    QTest::newRow("up from null starts at zero") << QVariant() << int(Qt::Key_Up) << 0.0;
}

void TestEditorItems::numberEditorStepsAndRange()
{
    QFETCH(QVariant, start);
    QFETCH(int, key);
    QFETCH(double, expected);
    TFloatEditorItem item;
    item.setRange(0, 10);
    item.setStep(0.5);
    item.setLargeStep(5);
    QWidget parent;
    auto* edit = qobject_cast<TNumberEdit*>(item.createEditor(&parent));
    QVERIFY(edit);
    item.setEditorValue(edit, start);
    int chosen = 0;
    item.onValueChosen(edit, [&chosen]() { ++chosen; });
    QTest::keyClick(edit, Qt::Key(key));
    QCOMPARE(edit->value().toDouble(), expected);
    QVERIFY(!edit->value().isNull());
    // A step that cannot move (down at the minimum) is no pick.
    QCOMPARE(chosen, start.isNull() || start.toDouble() != expected ? 1 : 0);
    // Values given from outside are kept in range too.
    item.setEditorValue(edit, 99);
    QCOMPARE(item.editorValue(edit).toDouble(), 10.0);
}

// ---- the clear key

void TestEditorItems::clearKeyEmptiesValue_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QVariant>("start");
    QTest::newRow("float") << u"float"_s << QVariant(31.1);
    QTest::newRow("text") << u"text"_s << QVariant(u"Maple"_s);
    QTest::newRow("date") << u"date"_s << QVariant(QDate(2020, 5, 1));
    QTest::newRow("rating") << u"rating"_s << QVariant(3.5);
    QTest::newRow("lookup") << u"combo"_s << QVariant(u"Proof"_s);
}

void TestEditorItems::clearKeyEmptiesValue()
{
    QFETCH(QString, kind);
    QFETCH(QVariant, start);
    std::unique_ptr<TBasicEditorItem> item;
    if (kind == u"float"_s)
        item = std::make_unique<TFloatEditorItem>();
    else if (kind == u"text"_s)
        item = std::make_unique<TTextEditorItem>();
    else if (kind == u"date"_s)
        item = std::make_unique<TDateEditorItem>();
    else if (kind == u"rating"_s)
        item = std::make_unique<TRatingEditorItem>();
    else
        item = std::make_unique<TComboEditorItem>();
    QWidget window;
    QWidget* editor = item->createEditor(&window);
    QVERIFY(editor);
    window.show();
    editor->show();
    editor->setFocus();
    item->setEditorValue(editor, start);
    QVERIFY(!item->editorValue(editor).isNull());
    int chosen = 0;
    item->onValueChosen(editor, [&chosen]() { ++chosen; });
    QWidget* target = editor->focusProxy() ? editor->focusProxy() : editor;
    if (auto* line = editor->findChild<QLineEdit*>())
        target = line;
    QTest::keyClick(target, Qt::Key_Backspace, Qt::ControlModifier);
    QVERIFY2(item->editorValue(editor).isNull(), qPrintable(item->editorValue(editor).toString()));
    QCOMPARE(chosen, 1);

    // With the key turned off the same keys do not empty the value.
    item->setClearKey({});
    std::unique_ptr<QWidget> plain(item->createEditor(&window));
    item->setEditorValue(plain.get(), start);
    QVERIFY(plain->findChild<TClearKeyFilter*>() == nullptr);
}

// ---- lists

void TestEditorItems::listItemMatchesValues_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("defaultText");
    QTest::addColumn<QString>("expected");
    QTest::newRow("int") << QVariant(1) << QString() << u"Silver"_s;
    QTest::newRow("long long") << QVariant(2LL) << QString() << u"Platinum"_s;
    QTest::newRow("double") << QVariant(0.0) << QString() << u"Gold"_s;
    QTest::newRow("text of a number") << QVariant(u"1"_s) << QString() << u"Silver"_s;
    QTest::newRow("unknown, no default") << QVariant(9) << QString() << u"9"_s;
    QTest::newRow("unknown, default") << QVariant(9) << u"N/A"_s << u"N/A"_s;
    QTest::newRow("null, no default") << QVariant() << QString() << u"(none)"_s;
    QTest::newRow("null, default") << QVariant() << u"N/A"_s << u"N/A"_s;
}

void TestEditorItems::listItemMatchesValues()
{
    QFETCH(QVariant, value);
    QFETCH(QString, defaultText);
    QFETCH(QString, expected);
    TListEditorItem item;
    item.setNullText(u"(none)"_s);
    item.setDefaultText(defaultText);
    item.setEntries({{0, u"Gold"_s, {}}, {1, u"Silver"_s, {}}, {2, u"Platinum"_s, {}}});
    QCOMPARE(item.displayText(value), expected);

    // The editor offers the entries sorted by text and gives back the stored value.
    item.setSorted(true);
    QWidget parent;
    auto* combo = qobject_cast<QComboBox*>(item.createEditor(&parent));
    QVERIFY(combo);
    QCOMPARE(combo->itemText(0), u"Gold"_s);
    QCOMPARE(combo->itemText(1), u"Platinum"_s);
    item.setEditorValue(combo, value);
    const int entry = item.entryIndex(value);
    if (entry < 0)
        QVERIFY(item.editorValue(combo).isNull());
    else
        QCOMPARE(item.editorValue(combo).toInt(), entry);
}

void TestEditorItems::lookupItemFollowsModel()
{
    QStandardItemModel mints;
    for (const auto& [id, name] :
         {std::pair{3, u"Perth Mint"_s}, {1, u"Royal Mint"_s}, {2, u"Austrian Mint"_s}})
        mints.appendRow({new QStandardItem(QString::number(id)), new QStandardItem(name)});
    for (int row = 0; row < mints.rowCount(); ++row)
        mints.item(row, 0)->setData(mints.item(row, 0)->text().toInt(), Qt::EditRole);
    TLookupEditorItem item;
    item.setModel(&mints, 0, 1);
    QCOMPARE(item.displayText(1), u"Royal Mint"_s);
    QCOMPARE(item.displayText(u"3"_s), u"Perth Mint"_s);
    QCOMPARE(item.displayText(7), QString());

    // A renamed and an added mint show without telling the item.
    mints.item(0, 1)->setText(u"The Perth Mint"_s);
    mints.appendRow({new QStandardItem(u"7"_s), new QStandardItem(u"Valcambi"_s)});
    mints.item(3, 0)->setData(7, Qt::EditRole);
    QCOMPARE(item.displayText(3), u"The Perth Mint"_s);
    QCOMPARE(item.displayText(7), u"Valcambi"_s);

    // The editor lists names sorted, reads a typed name back as its key, refuses an unknown one.
    QWidget parent;
    auto* combo = qobject_cast<QComboBox*>(item.createEditor(&parent));
    QVERIFY(combo);
    QCOMPARE(combo->itemText(0), u"Austrian Mint"_s);
    item.setEditorValue(combo, 1);
    QCOMPARE(combo->currentText(), u"Royal Mint"_s);
    combo->setEditText(u"valcambi"_s);
    QCOMPARE(item.editorValue(combo).toInt(), 7);
    combo->setEditText(u"Nowhere Mint"_s);
    QVERIFY_THROWS_EXCEPTION(TEditorError, item.editorValue(combo));
    combo->setEditText(QString());
    QVERIFY(item.editorValue(combo).isNull());
}

void TestEditorItems::comboItemRereadsListAfterButton()
{
    QStringList purities{u"999"_s, u"9999"_s};
    TComboEditorItem item;
    item.setItemsProvider([&purities]() { return purities; });
    int clicks = 0;
    item.setButton([&](QWidget* editor) {
        ++clicks;
        QVERIFY(qobject_cast<TButtonComboBox*>(editor));
        purities << u"925"_s;
    });
    QWidget parent;
    auto* combo = qobject_cast<TButtonComboBox*>(item.createEditor(&parent));
    QVERIFY(combo && combo->buttonAction());
    QCOMPARE(combo->count(), 2);
    item.setEditorValue(combo, u"typed by hand"_s);
    combo->buttonAction()->trigger();
    QCOMPARE(clicks, 1);
    QCOMPARE(combo->count(), 3);
    QCOMPARE(combo->itemText(2), u"925"_s);
    // Typed text survives the new list and is never added to it.
    QCOMPARE(item.editorValue(combo).toString(), u"typed by hand"_s);
    QCOMPARE(combo->findText(u"typed by hand"_s), -1);
}

void TestEditorItems::checkListFlagText_data()
{
    QTest::addColumn<bool>("indexList");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("stored");
    QTest::newRow("flags") << false << QVariant(u"101000"_s) << u"Au, Pt"_s << u"101000"_s;
    QTest::newRow("short flags") << false << QVariant(u"01"_s) << u"Ag"_s << u"010000"_s;
    QTest::newRow("none") << false << QVariant(u"000000"_s) << u"Any"_s << u"000000"_s;
    QTest::newRow("null") << false << QVariant() << u"Any"_s << u"000000"_s;
    QTest::newRow("indexes") << true << QVariant(u"0, 5"_s) << u"Au, Cu"_s << u"0,5"_s;
    QTest::newRow("indexes out of range") << true << QVariant(u"1,9,x"_s) << u"Ag"_s << u"1"_s;
}

void TestEditorItems::checkListFlagText()
{
    QFETCH(bool, indexList);
    QFETCH(QVariant, value);
    QFETCH(QString, shown);
    QFETCH(QString, stored);
    TCheckListEditorItem item;
    item.setItems({u"Au"_s, u"Ag"_s, u"Pt"_s, u"Pd"_s, u"Rh"_s, u"Cu"_s});
    item.setIndexList(indexList);
    QCOMPARE(item.displayText(value), shown);
    QWidget parent;
    auto* combo = qobject_cast<TCheckComboBox*>(item.createEditor(&parent));
    QVERIFY(combo);
    item.setEditorValue(combo, value);
    QCOMPARE(combo->summaryText(), shown);
    QCOMPARE(item.editorValue(combo).toString(), stored);
}

void TestEditorItems::checkItemToggles_data()
{
    QTest::addColumn<QVariant>("current");
    QTest::addColumn<QVariant>("afterClick");
    QTest::newRow("null reads unchecked") << QVariant() << QVariant(u"Y"_s);
    QTest::newRow("unchecked") << QVariant(u"N"_s) << QVariant(u"Y"_s);
    QTest::newRow("checked") << QVariant(u"Y"_s) << QVariant(u"N"_s);
    QTest::newRow("a bool true") << QVariant(true) << QVariant(u"N"_s);
}

void TestEditorItems::checkItemToggles()
{
    QFETCH(QVariant, current);
    QFETCH(QVariant, afterClick);
    TCheckEditorItem item;
    item.setValues(u"Y"_s, u"N"_s);
    QWidget widget;
    const QStyleOptionViewItem option = cellOption(widget, QRect(0, 0, 100, 20));
    QVariant result;
    QVERIFY(item.valueFromClick(option, QPoint(50, 10), current, &result));
    QCOMPARE(result, afterClick);
    QVERIFY(!item.valueFromClick(option, QPoint(150, 10), current, &result));
    item.setReadOnly(true);
    QVERIFY(!item.valueFromClick(option, QPoint(50, 10), current, &result));
    QVERIFY(item.createEditor(&widget) == nullptr);
}

void TestEditorItems::ratingPicksHalfStars_data()
{
    QTest::addColumn<int>("star");     // 0-based star clicked
    QTest::addColumn<double>("share"); // where in the star, 0..1 from its start edge
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<double>("expected");
    QTest::newRow("left half of the first") << 0 << 0.25 << false << 0.5;
    QTest::newRow("right half of the first") << 0 << 0.75 << false << 1.0;
    QTest::newRow("left half of the fourth") << 3 << 0.3 << false << 3.5;
    QTest::newRow("last star full") << 4 << 0.9 << false << 5.0;
    QTest::newRow("right-to-left, start half of the second") << 1 << 0.3 << true << 1.5;
}

void TestEditorItems::ratingPicksHalfStars()
{
    QFETCH(int, star);
    QFETCH(double, share);
    QFETCH(bool, rightToLeft);
    QFETCH(double, expected);
    TRatingEditorItem item;
    QWidget widget;
    QStyleOptionViewItem option = cellOption(widget, QRect(0, 0, 200, 22));
    option.direction = rightToLeft ? Qt::RightToLeft : Qt::LeftToRight;
    // Stars stand 4 pixels in from the start edge, star size + 2 apart.
    const int size = std::min(option.fontMetrics.height() + 2, option.rect.height() - 2);
    const int offset = 4 + star * (size + 2) + int(share * size);
    const int x = rightToLeft ? option.rect.right() - offset : offset;
    QVariant result;
    QVERIFY(item.valueFromClick(option, QPoint(x, 10), QVariant(), &result));
    QCOMPARE(result.toDouble(), expected);
    QCOMPARE(item.displayText(result), QLocale().toString(expected));
}

void TestEditorItems::textDateAndMemoValues()
{
    QWidget parent;
    TTextEditorItem text;
    text.setMaxLength(5);
    auto* line = qobject_cast<QLineEdit*>(text.createEditor(&parent));
    QVERIFY(line);
    QCOMPARE(line->maxLength(), 5);
    text.setEditorValue(line, u"Panda"_s);
    QCOMPARE(text.editorValue(line).toString(), u"Panda"_s);
    line->clear();
    QVERIFY(text.editorValue(line).isNull());
    text.setEmptyIsNull(false);
    QCOMPARE(text.editorValue(line), QVariant(QString()));

    TDateEditorItem date;
    date.setNullText(u"N/A"_s);
    date.setDisplayFormat(u"yyyy-MM-dd"_s);
    QCOMPARE(date.displayText(u"2019-07-04"_s), u"2019-07-04"_s);
    QCOMPARE(date.displayText(QDateTime(QDate(2019, 7, 4), QTime(13, 0))), u"2019-07-04"_s);
    QCOMPARE(date.displayText(QVariant()), u"N/A"_s);
    QCOMPARE(date.displayText(u"not a date"_s), u"not a date"_s);
    auto* box = qobject_cast<QDateEdit*>(date.createEditor(&parent));
    QVERIFY(box);
    date.setEditorValue(box, u"2019-07-04"_s);
    QCOMPARE(date.editorValue(box).toDate(), QDate(2019, 7, 4));
    date.setEditorValue(box, QVariant());
    QVERIFY(date.editorValue(box).isNull());

    TMemoEditorItem memo;
    QCOMPARE(memo.displayText(u"two\r\nlines\nhere"_s), u"two lines here"_s);
    auto* edit = qobject_cast<QPlainTextEdit*>(memo.createEditor(&parent));
    QVERIFY(edit);
    memo.setEditorValue(edit, u"a\nb"_s);
    QCOMPARE(memo.editorValue(edit).toString(), u"a\nb"_s);
    QVERIFY(edit->minimumHeight() >= edit->fontMetrics().lineSpacing() * memo.editorLines());
}

void TestEditorItems::pictureItemDecodes()
{
    QImage image(40, 20, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    QCOMPARE(TPictureEditorItem::decode(png).size(), QSize(40, 20));
    QVERIFY(TPictureEditorItem::decode(QByteArray("not a picture")).isNull());
    QVERIFY(TPictureEditorItem::decode(QVariant()).isNull());
    // Fitted in proportion, never enlarged unless asked.
    QCOMPARE(TPictureEditorItem::scaled(png, QSize(10, 10), false, 1.0).size(), QSize(10, 5));
    QCOMPARE(TPictureEditorItem::scaled(png, QSize(100, 100), false, 1.0).size(), QSize(40, 20));
    QCOMPARE(TPictureEditorItem::scaled(png, QSize(100, 100), true, 1.0).size(), QSize(100, 50));
    TPictureEditorItem item;
    QVERIFY(item.isPicture());
    QWidget parent;
    QVERIFY(item.createEditor(&parent) == nullptr);
}

QTEST_MAIN(TestEditorItems)
#include "tst_editoritems.moc"
