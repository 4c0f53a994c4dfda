// Custom fields: the editor rule by data type, the stored text form of the values, and the rules
// that show rows, columns and the group in the main window and in the item editor.

#include "support_datarow.h"
#include "uCustomFields.h"

#include <QLocale>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {

// A grid or a view that records what it is told, with rows (columns) for the given fields only.
class TFakeGrid : public TCustomFieldRows, public TCustomFieldColumns
{
public:
    explicit TFakeGrid(QStringList fields) : m_fields(std::move(fields)) {}

    QHash<QString, bool> shown; // row visible, or column offered
    QHash<QString, QString> caption;
    QHash<QString, QString> editor;
    std::optional<bool> group;
    int depth = 0;
    bool touchedOutsideUpdate = false;
    QStringList askedMissing;

    void BeginUpdate() override { ++depth; }
    void EndUpdate() override { --depth; }
    bool HasRow(const QString& f) const override { return m_fields.contains(f); }
    bool HasColumn(const QString& f) const override { return m_fields.contains(f); }
    void SetRowVisible(const QString& f, bool v) override { Note(f, shown, v); }
    void SetColumnOffered(const QString& f, bool o) override { Note(f, shown, o); }
    void SetRowCaption(const QString& f, const QString& c) override { Note(f, caption, c); }
    void SetColumnCaption(const QString& f, const QString& c) override { Note(f, caption, c); }
    void SetRowEditor(const QString& f, const QString& e) override { Note(f, editor, e); }
    void SetColumnEditor(const QString& f, const QString& e) override { Note(f, editor, e); }
    void SetGroupVisible(bool v) override
    {
        touchedOutsideUpdate = touchedOutsideUpdate || depth == 0;
        group = v;
    }

    int ShownCount() const { return int(std::count(shown.cbegin(), shown.cend(), true)); }
    // Everything happened inside one update bracket, on fields that exist.
    bool Clean() const { return !touchedOutsideUpdate && depth == 0 && askedMissing.isEmpty(); }

private:
    template <typename T> void Note(const QString& f, QHash<QString, T>& into, const T& value)
    {
        touchedOutsideUpdate = touchedOutsideUpdate || depth == 0;
        if (!m_fields.contains(f))
            askedMissing << f;
        into[f] = value;
    }

    QStringList m_fields;
};

QStringList AllColumns()
{
    QStringList columns;
    for (int n = 0; n < cCustomFieldCount; ++n)
        columns << QString("Custom%1").arg(n + 1);
    return columns;
}

// Fields enabled by a bit mask (bit n = definition n), data type n % 6.
TORVCustomFields EnabledBy(int mask)
{
    TORVCustomFields fields;
    for (int n = 0; n < cCustomFieldCount; ++n)
        fields[std::size_t(n)] =
            TORVCustomField{QString("CustomField%1").arg(n), n % 6, bool((mask >> n) & 1)};
    return fields;
}

} // namespace

class TestCustomFields : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void editorsAndColumnNames()
    {
        QCOMPARE(CustomFieldEditor(3), "edUsersCurrency");
        for (int type : {5, -1, 1000})
            QCOMPARE(CustomFieldEditor(type), QString());
        QCOMPARE(CustomFieldDataTypeTexts().size(), 5);
        QCOMPARE(CustomFieldColumn(9), "Custom10");
        QCOMPARE(CustomFieldIndex("Custom10"), 9);
        for (const char* other : {"Custom0", "Custom11", "Custom01", "custom1", "Custom"})
            QCOMPARE(CustomFieldIndex(other), -1);
    }

    // CustomField0 describes Custom1, CustomField9 describes Custom10.
    void firstDefinitionDescribesCustom1()
    {
        QCOMPARE(ORVCustomFields[0].DisplayName, "CustomField0");
        TORVCustomFields fields = EnabledBy(0x201);
        fields[0].DataType = 4;
        fields[9].DisplayName = "Last";
        TFakeGrid details(AllColumns());
        TFakeGrid view(AllColumns());
        ApplyCustomFields(details, {&view}, true, fields);
        QCOMPARE(details.caption.value("Custom1"), "CustomField0");
        QCOMPARE(details.editor.value("Custom1"), "cbNotNull");
        QVERIFY(details.shown.value("Custom1") && !details.shown.value("Custom2"));
        QCOMPARE(details.caption.value("Custom10"), "Last");
        QVERIFY(details.shown.value("Custom10"));
        QCOMPARE(view.caption.value("Custom10"), "Last");
    }

    // The main window: rows and columns by the master switch and each definition's flag.
    void mainWindow_data()
    {
        QTest::addColumn<bool>("master");
        QTest::addColumn<int>("mask");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<int>("visibleRows");
        QTest::addColumn<bool>("category");
        AddRow("off, all enabled", false, 0x3FF, AllColumns(), 0, false);
        AddRow("on, none enabled", true, 0, AllColumns(), 0, false);
        AddRow("on, two enabled", true, 0x201, AllColumns(), 2, true);
        // The only enabled field has no row: no visible child, so no category.
        AddRow("on, enabled row missing", true, 0x004, QStringList{"Custom1", "Custom2"}, 0, false);
        AddRow("on, no rows at all", true, 0x3FF, QStringList{}, 0, false);
    }
    void mainWindow()
    {
        QFETCH(bool, master);
        QFETCH(int, mask);
        QFETCH(QStringList, rows);
        QFETCH(int, visibleRows);
        QFETCH(bool, category);
        const TORVCustomFields fields = EnabledBy(mask);
        TFakeGrid details(rows);
        TFakeGrid gridView(AllColumns());
        TFakeGrid cardView({"Custom3"});
        ApplyCustomFields(details, {&gridView, nullptr, &cardView}, master, fields);

        QCOMPARE(details.ShownCount(), visibleRows);
        QCOMPARE(details.group, std::optional<bool>(category));
        QVERIFY(details.Clean() && gridView.Clean() && cardView.Clean());
        for (int n = 0; n < cCustomFieldCount; ++n) {
            const TORVCustomField& field = fields[std::size_t(n)];
            const QString column = CustomFieldColumn(n);
            for (const TFakeGrid* grid : {&details, &gridView}) {
                if (!rows.contains(column) && grid == &details)
                    continue;
                QCOMPARE(grid->shown.value(column), master && field.Enabled);
                QCOMPARE(grid->caption.value(column), field.DisplayName);
                QCOMPARE(grid->editor.value(column), CustomFieldEditor(field.DataType));
            }
        }
        QCOMPARE(cardView.shown.size(), 1);
    }

    // The item editor: the master switch hides only the tab.
    void itemEditor_data()
    {
        QTest::addColumn<bool>("master");
        QTest::addColumn<int>("mask");
        QTest::addColumn<int>("visibleRows");
        QTest::addColumn<bool>("tab");
        AddRow("off, all enabled", false, 0x3FF, 10, false);
        AddRow("on, none enabled", true, 0, 0, false);
        AddRow("on, one enabled", true, 0x100, 1, true);
    }
    void itemEditor()
    {
        QFETCH(bool, master);
        QFETCH(int, mask);
        QFETCH(int, visibleRows);
        QFETCH(bool, tab);
        TFakeGrid grid(AllColumns());
        ApplyCustomFieldsToEditor(grid, master, EnabledBy(mask));
        QCOMPARE(grid.ShownCount(), visibleRows);
        QCOMPARE(grid.group, std::optional<bool>(tab));
        QCOMPARE(grid.caption.value("Custom1"), "CustomField0");
        QCOMPARE(grid.editor.value("Custom6"), QString()); // data type 5: none
        QVERIFY(grid.Clean());
    }

    // value -> stored text -> value, and the exact stored text.
    void roundTrip_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("stored");
        AddRow("text", 0, QVariant(" as typed, 1,5 "), " as typed, 1,5 ");
        AddRow("text empty", 0, QVariant(QString("")), "");
        AddRow("number", 1, QVariant(qlonglong(-42)), "-42");
        AddRow("number min", 1, QVariant(std::numeric_limits<qlonglong>::min()), "-9223372036854775808");
        AddRow("float tenth", 2, QVariant(0.1), "0.1");
        AddRow("float third", 2, QVariant(1.0 / 3.0), "0.3333333333333333");
        AddRow("float huge", 2, QVariant(1e21), "1e+21");
        AddRow("float denormal", 2, QVariant(std::numeric_limits<double>::denorm_min()), "5e-324");
        AddRow("boolean true", 4, QVariant(true), "1");
        AddRow("boolean false", 4, QVariant(false), "0");
    }
    void roundTrip()
    {
        QFETCH(int, dataType);
        QFETCH(QVariant, value);
        QFETCH(QString, stored);
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); // no say in the stored form
        const QString text = CustomValueToText(value, dataType);
        QCOMPARE(text, stored);
        const QVariant back = CustomValueFromText(text, dataType);
        QCOMPARE(back, value);
        QCOMPARE(back.metaType(), value.metaType());
    }

    // Stored forms read back with surrounding blanks and other spellings of the same value; texts
    // that are not in the form of their type read as no value.
    void fromText_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariant>("value");
        AddRow("number blanks, plus", 1, " +7 ", QVariant(qlonglong(7)));
        AddRow("float exponent", 2, "1e3", QVariant(1000.0));
        AddRow("currency blanks", 3, " 2.50 ", QVariant(2.5));
        AddRow("boolean blanks", 4, " 1", QVariant(true));
        AddRow("text kept with blanks", 0, " x ", QVariant(" x "));
        AddRow("unknown type is text", 9, "12", QVariant("12"));
        AddRow("number: fraction", 1, "12.5", QVariant());
        AddRow("number: blank", 1, "   ", QVariant());
        AddRow("number: overflow", 1, "9223372036854775808", QVariant());
        AddRow("float: comma decimal", 2, "1,5", QVariant());
        AddRow("float: nan", 2, "nan", QVariant());
        AddRow("currency: symbol", 3, "$12.00", QVariant());
        AddRow("boolean: word", 4, "true", QVariant());
        AddRow("text: null", 0, QString(), QVariant());
    }
    void fromText()
    {
        QFETCH(int, dataType);
        QFETCH(QString, text);
        QFETCH(QVariant, value);
        QCOMPARE(CustomValueFromText(text, dataType), value);
    }

    // What editors hand in, and what cannot be stored (a null text).
    void toText_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("stored");
        AddRow("null value", 2, QVariant(), QString());
        AddRow("number from text", 1, QVariant(" 12 "), "12");
        AddRow("number from bad text", 1, QVariant("twelve"), QString());
        AddRow("number from double rounds", 1, QVariant(2.6), "3");
        AddRow("float infinite", 2, QVariant(std::numeric_limits<double>::infinity()), QString());
        AddRow("float nan", 3, QVariant(std::nan("")), QString());
        AddRow("float from C text", 2, QVariant("0.5"), "0.5");
        AddRow("boolean from int", 4, QVariant(3), "1");
        AddRow("boolean from word", 4, QVariant("yes"), QString());
        AddRow("unknown type", 7, QVariant("as is"), "as is");
    }
    void toText()
    {
        QFETCH(int, dataType);
        QFETCH(QVariant, value);
        QFETCH(QString, stored);
        QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
        const QString text = CustomValueToText(value, dataType);
        QCOMPARE(text, stored);
        QCOMPARE(text.isNull(), stored.isNull());
    }

    // Many doubles: the shortest text reads back to the very same double.
    void floatsRoundTripExactly()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        double x = 0.000123456789;
        for (int i = 0; i < 2000; ++i) {
            x = x * 1.7320508 + 0.1;
            if (x > 1e200)
                x = 1.0 / x;
            for (double value : {x, -x, 1.0 / x}) {
                const QString text = CustomValueToText(value, cftFloat);
                QVERIFY(!text.contains(','));
                QVERIFY2(CustomValueFromText(text, cftFloat).toDouble() == value, qPrintable(text));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestCustomFields)
#include "tst_customfields.moc"
