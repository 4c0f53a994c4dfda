// Custom fields: the editor rule by data type, the stored text form of the values, and the rules
// that show rows, columns and the group in the main window and in the item editor.

#include "uCustomFields.h"

#include <QLocale>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {

// A grid that records what it is told, with rows for the given columns only.
class TFakeRows : public TCustomFieldRows
{
public:
    explicit TFakeRows(QStringList rows) : m_rows(std::move(rows)) {}

    QHash<QString, bool> visible;
    QHash<QString, QString> caption;
    QHash<QString, QString> editor;
    std::optional<bool> group;
    int depth = 0;
    int maxDepth = 0;
    bool touchedOutsideUpdate = false;
    QStringList askedMissing;

    void BeginUpdate() override { maxDepth = std::max(maxDepth, ++depth); }
    void EndUpdate() override { --depth; }
    bool HasRow(const QString& f) const override { return m_rows.contains(f); }
    void SetRowVisible(const QString& f, bool v) override
    {
        Note(f);
        visible[f] = v;
    }
    void SetRowCaption(const QString& f, const QString& c) override
    {
        Note(f);
        caption[f] = c;
    }
    void SetRowEditor(const QString& f, const QString& e) override
    {
        Note(f);
        editor[f] = e;
    }
    void SetGroupVisible(bool v) override
    {
        touchedOutsideUpdate = touchedOutsideUpdate || depth == 0;
        group = v;
    }

    int VisibleCount() const
    {
        int count = 0;
        for (bool v : visible) {
            count += v ? 1 : 0;
        }
        return count;
    }

private:
    void Note(const QString& f)
    {
        touchedOutsideUpdate = touchedOutsideUpdate || depth == 0;
        if (!m_rows.contains(f)) {
            askedMissing << f;
        }
    }

    QStringList m_rows;
};

class TFakeColumns : public TCustomFieldColumns
{
public:
    explicit TFakeColumns(QStringList columns) : m_columns(std::move(columns)) {}

    QHash<QString, QString> caption;
    QHash<QString, bool> offered;
    QHash<QString, QString> editor;
    int depth = 0;
    bool touchedOutsideUpdate = false;
    QStringList askedMissing;

    void BeginUpdate() override { ++depth; }
    void EndUpdate() override { --depth; }
    bool HasColumn(const QString& f) const override { return m_columns.contains(f); }
    void SetColumnCaption(const QString& f, const QString& c) override
    {
        Note(f);
        caption[f] = c;
    }
    void SetColumnOffered(const QString& f, bool o) override
    {
        Note(f);
        offered[f] = o;
    }
    void SetColumnEditor(const QString& f, const QString& e) override
    {
        Note(f);
        editor[f] = e;
    }

private:
    void Note(const QString& f)
    {
        touchedOutsideUpdate = touchedOutsideUpdate || depth == 0;
        if (!m_columns.contains(f)) {
            askedMissing << f;
        }
    }

    QStringList m_columns;
};

QStringList AllColumns()
{
    QStringList columns;
    for (int n = 0; n < cCustomFieldCount; ++n) {
        columns << QStringLiteral("Custom%1").arg(n + 1);
    }
    return columns;
}

TORVCustomFields DefaultFields()
{
    TORVCustomFields fields;
    for (int n = 0; n < cCustomFieldCount; ++n) {
        fields[static_cast<std::size_t>(n)].DisplayName = QStringLiteral("CustomField%1").arg(n);
    }
    return fields;
}

// Fields enabled by a bit mask (bit n = definition n).
TORVCustomFields EnabledBy(int mask)
{
    TORVCustomFields fields = DefaultFields();
    for (int n = 0; n < cCustomFieldCount; ++n) {
        fields[static_cast<std::size_t>(n)].Enabled = (mask >> n) & 1;
        fields[static_cast<std::size_t>(n)].DataType = n % 6;
    }
    return fields;
}

} // namespace

class TestCustomFields : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void editorByDataType_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QString>("editor");
        QTest::newRow("text") << 0 << "repCustomTextEdit";
        QTest::newRow("number") << 1 << "repCustomNumberEdit";
        QTest::newRow("float") << 2 << "repCustomFloatEdit";
        QTest::newRow("currency") << 3 << "edUsersCurrency";
        QTest::newRow("boolean") << 4 << "cbNotNull";
        QTest::newRow("5") << 5 << "";
        QTest::newRow("-1") << -1 << "";
        QTest::newRow("large") << 1000 << "";
    }

    void editorByDataType()
    {
        QFETCH(int, dataType);
        QFETCH(QString, editor);
        QCOMPARE(CustomFieldEditor(dataType), editor);
    }

    void dataTypeTexts()
    {
        QCOMPARE(CustomFieldDataTypeTexts(),
                 QStringList({"Text (string)", "Number (integer)", "Floating number (float)",
                              "Currency (float)", "Boolean"}));
    }

    void columnNames_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<int>("index");
        QTest::newRow("Custom1") << "Custom1" << 0;
        QTest::newRow("Custom2") << "Custom2" << 1;
        QTest::newRow("Custom10") << "Custom10" << 9;
        QTest::newRow("Custom0") << "Custom0" << -1;
        QTest::newRow("Custom11") << "Custom11" << -1;
        QTest::newRow("Custom01") << "Custom01" << -1;
        QTest::newRow("lower case") << "custom1" << -1;
        QTest::newRow("bare") << "Custom" << -1;
    }

    void columnNames()
    {
        QFETCH(QString, column);
        QFETCH(int, index);
        QCOMPARE(CustomFieldIndex(column), index);
        if (index >= 0) {
            QCOMPARE(CustomFieldColumn(index), column);
        }
    }

    // CustomField0 describes Custom1, CustomField9 describes Custom10.
    void firstDefinitionDescribesCustom1()
    {
        QCOMPARE(ORVCustomFields[0].DisplayName, QStringLiteral("CustomField0"));
        TORVCustomFields fields = DefaultFields();
        fields[0].Enabled = true;
        fields[0].DataType = 4;
        fields[9].Enabled = true;
        fields[9].DisplayName = QStringLiteral("Last");
        TFakeRows details(AllColumns());
        TFakeColumns view(AllColumns());
        ApplyCustomFields(details, {&view}, true, fields);
        QCOMPARE(details.caption.value(QStringLiteral("Custom1")), QStringLiteral("CustomField0"));
        QCOMPARE(details.editor.value(QStringLiteral("Custom1")), QStringLiteral("cbNotNull"));
        QVERIFY(details.visible.value(QStringLiteral("Custom1")));
        QVERIFY(!details.visible.value(QStringLiteral("Custom2")));
        QCOMPARE(details.caption.value(QStringLiteral("Custom10")), QStringLiteral("Last"));
        QVERIFY(details.visible.value(QStringLiteral("Custom10")));
        QCOMPARE(view.caption.value(QStringLiteral("Custom10")), QStringLiteral("Last"));
    }

    // The main window: rows and columns by the master switch and each definition's flag.
    void mainWindow_data()
    {
        QTest::addColumn<bool>("master");
        QTest::addColumn<int>("mask");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<int>("visibleRows");
        QTest::addColumn<bool>("category");
        QTest::newRow("off, all enabled") << false << 0x3FF << AllColumns() << 0 << false;
        QTest::newRow("off, one enabled") << false << 0x001 << AllColumns() << 0 << false;
        QTest::newRow("off, none") << false << 0 << AllColumns() << 0 << false;
        QTest::newRow("on, none enabled") << true << 0 << AllColumns() << 0 << false;
        QTest::newRow("on, all enabled") << true << 0x3FF << AllColumns() << 10 << true;
        QTest::newRow("on, two enabled") << true << 0x201 << AllColumns() << 2 << true;
        // The only enabled field has no row: no visible child, so no category.
        QTest::newRow("on, enabled row missing")
            << true << 0x004 << QStringList{"Custom1", "Custom2"} << 0 << false;
        QTest::newRow("on, no rows at all") << true << 0x3FF << QStringList{} << 0 << false;
    }

    void mainWindow()
    {
        QFETCH(bool, master);
        QFETCH(int, mask);
        QFETCH(QStringList, rows);
        QFETCH(int, visibleRows);
        QFETCH(bool, category);
        const TORVCustomFields fields = EnabledBy(mask);
        TFakeRows details(rows);
        TFakeColumns gridView(AllColumns());
        TFakeColumns cardView({QStringLiteral("Custom3")});
        ApplyCustomFields(details, {&gridView, nullptr, &cardView}, master, fields);

        QCOMPARE(details.VisibleCount(), visibleRows);
        QCOMPARE(details.group, std::optional<bool>(category));
        QVERIFY(details.askedMissing.isEmpty());
        QVERIFY(gridView.askedMissing.isEmpty());
        QVERIFY(cardView.askedMissing.isEmpty());
        QVERIFY(!details.touchedOutsideUpdate);
        QVERIFY(!gridView.touchedOutsideUpdate);
        QCOMPARE(details.depth, 0);
        QCOMPARE(gridView.depth, 0);
        QCOMPARE(cardView.depth, 0);
        for (int n = 0; n < cCustomFieldCount; ++n) {
            const TORVCustomField& field = fields[static_cast<std::size_t>(n)];
            const QString column = CustomFieldColumn(n);
            const bool shown = master && field.Enabled;
            if (rows.contains(column)) {
                QCOMPARE(details.visible.value(column), shown);
                QCOMPARE(details.caption.value(column), field.DisplayName);
                QCOMPARE(details.editor.value(column), CustomFieldEditor(field.DataType));
            }
            QCOMPARE(gridView.offered.value(column), shown);
            QCOMPARE(gridView.caption.value(column), field.DisplayName);
            QCOMPARE(gridView.editor.value(column), CustomFieldEditor(field.DataType));
        }
        QCOMPARE(cardView.offered.size(), 1);
    }

    // The item editor: the master switch hides only the tab.
    void itemEditor_data()
    {
        QTest::addColumn<bool>("master");
        QTest::addColumn<int>("mask");
        QTest::addColumn<int>("visibleRows");
        QTest::addColumn<bool>("tab");
        QTest::newRow("off, all enabled") << false << 0x3FF << 10 << false;
        QTest::newRow("off, none") << false << 0 << 0 << false;
        QTest::newRow("on, none enabled") << true << 0 << 0 << false;
        QTest::newRow("on, one enabled") << true << 0x100 << 1 << true;
        QTest::newRow("on, all enabled") << true << 0x3FF << 10 << true;
    }

    void itemEditor()
    {
        QFETCH(bool, master);
        QFETCH(int, mask);
        QFETCH(int, visibleRows);
        QFETCH(bool, tab);
        TFakeRows grid(AllColumns());
        ApplyCustomFieldsToEditor(grid, master, EnabledBy(mask));
        QCOMPARE(grid.VisibleCount(), visibleRows);
        QCOMPARE(grid.group, std::optional<bool>(tab));
        QCOMPARE(grid.caption.value(QStringLiteral("Custom1")), QStringLiteral("CustomField0"));
        QCOMPARE(grid.editor.value(QStringLiteral("Custom6")), QString()); // data type 5: none
        QVERIFY(!grid.touchedOutsideUpdate);
        QCOMPARE(grid.depth, 0);
    }

    // With the master switch off nothing custom shows anywhere, whatever the single flags say.
    void masterOffHidesEverything()
    {
        for (int mask = 0; mask < (1 << cCustomFieldCount); mask += 37) {
            TFakeRows details(AllColumns());
            TFakeColumns view(AllColumns());
            ApplyCustomFields(details, {&view}, false, EnabledBy(mask));
            QCOMPARE(details.VisibleCount(), 0);
            QCOMPARE(details.group, std::optional<bool>(false));
            for (bool offered : std::as_const(view.offered)) {
                QVERIFY(!offered);
            }
            TFakeRows grid(AllColumns());
            ApplyCustomFieldsToEditor(grid, false, EnabledBy(mask));
            QCOMPARE(grid.group, std::optional<bool>(false));
        }
    }

    // value -> stored text -> value, and the exact stored text.
    void roundTrip_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("stored");
        QTest::newRow("text") << 0 << QVariant(QStringLiteral(" as typed, 1,5 ")) << " as typed, 1,5 ";
        QTest::newRow("text empty") << 0 << QVariant(QString(QLatin1String(""))) << "";
        QTest::newRow("number") << 1 << QVariant(qlonglong(-42)) << "-42";
        QTest::newRow("number zero") << 1 << QVariant(qlonglong(0)) << "0";
        QTest::newRow("number large") << 1 << QVariant(qlonglong(1234567890123)) << "1234567890123";
        QTest::newRow("number min") << 1 << QVariant(std::numeric_limits<qlonglong>::min())
                                    << "-9223372036854775808";
        QTest::newRow("float tenth") << 2 << QVariant(0.1) << "0.1";
        QTest::newRow("float troy ounce") << 2 << QVariant(31.1035) << "31.1035";
        QTest::newRow("float third") << 2 << QVariant(1.0 / 3.0) << "0.3333333333333333";
        QTest::newRow("float whole") << 2 << QVariant(100.0) << "100";
        QTest::newRow("float negative") << 2 << QVariant(-2.5) << "-2.5";
        QTest::newRow("float tiny") << 2 << QVariant(1e-7) << "1e-07";
        QTest::newRow("float huge") << 2 << QVariant(1e21) << "1e+21";
        QTest::newRow("float max") << 2 << QVariant(std::numeric_limits<double>::max())
                                   << "1.7976931348623157e+308";
        QTest::newRow("float denormal")
            << 2 << QVariant(std::numeric_limits<double>::denorm_min()) << "5e-324";
        QTest::newRow("currency") << 3 << QVariant(1234.56) << "1234.56";
        QTest::newRow("currency cents") << 3 << QVariant(0.07) << "0.07";
        QTest::newRow("boolean true") << 4 << QVariant(true) << "1";
        QTest::newRow("boolean false") << 4 << QVariant(false) << "0";
    }

    void roundTrip()
    {
        QFETCH(int, dataType);
        QFETCH(QVariant, value);
        QFETCH(QString, stored);
        // The user's locale has no say in the stored form.
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const QString text = CustomValueToText(value, dataType);
        QCOMPARE(text, stored);
        const QVariant back = CustomValueFromText(text, dataType);
        QVERIFY(back.isValid());
        QCOMPARE(back, value);
        if (dataType == cftFloat || dataType == cftCurrency) {
            QCOMPARE(back.metaType().id(), QMetaType::Double);
            // Bit for bit the same double.
            QVERIFY(back.toDouble() == value.toDouble());
        }
    }

    // Texts that are not in the form of their type read as no value.
    void textThatDoesNotParse_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QString>("text");
        QTest::newRow("number: word") << 1 << "abc";
        QTest::newRow("number: fraction") << 1 << "12.5";
        QTest::newRow("number: grouped") << 1 << "1,000";
        QTest::newRow("number: exponent") << 1 << "1e3";
        QTest::newRow("number: empty") << 1 << "";
        QTest::newRow("number: blank") << 1 << "   ";
        QTest::newRow("number: overflow") << 1 << "9223372036854775808";
        QTest::newRow("number: trailing word") << 1 << "12 coins";
        QTest::newRow("float: word") << 2 << "about five";
        QTest::newRow("float: comma decimal") << 2 << "1,5";
        QTest::newRow("float: grouped") << 2 << "1,000.5";
        QTest::newRow("float: nan") << 2 << "nan";
        QTest::newRow("float: inf") << 2 << "inf";
        QTest::newRow("float: empty") << 2 << "";
        QTest::newRow("float: two points") << 2 << "1.2.3";
        QTest::newRow("currency: symbol") << 3 << "$12.00";
        QTest::newRow("currency: comma") << 3 << "12,50";
        QTest::newRow("boolean: word") << 4 << "true";
        QTest::newRow("boolean: two") << 4 << "2";
        QTest::newRow("boolean: empty") << 4 << "";
        QTest::newRow("text: null") << 0 << QString();
    }

    void textThatDoesNotParse()
    {
        QFETCH(int, dataType);
        QFETCH(QString, text);
        QVERIFY(!CustomValueFromText(text, dataType).isValid());
    }

    // Stored forms read back with surrounding blanks and other spellings of the same value.
    void lenientReading_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("number blanks") << 1 << " 7 " << QVariant(qlonglong(7));
        QTest::newRow("number plus") << 1 << "+7" << QVariant(qlonglong(7));
        QTest::newRow("float exponent") << 2 << "1e3" << QVariant(1000.0);
        QTest::newRow("float whole") << 2 << "3" << QVariant(3.0);
        QTest::newRow("float blanks") << 3 << " 2.50 " << QVariant(2.5);
        QTest::newRow("boolean blanks") << 4 << " 1" << QVariant(true);
        QTest::newRow("text kept with blanks") << 0 << " x " << QVariant(QStringLiteral(" x "));
        QTest::newRow("unknown type is text") << 9 << "12" << QVariant(QStringLiteral("12"));
    }

    void lenientReading()
    {
        QFETCH(int, dataType);
        QFETCH(QString, text);
        QFETCH(QVariant, value);
        QCOMPARE(CustomValueFromText(text, dataType), value);
    }

    // What editors hand in, and what cannot be stored.
    void toText_data()
    {
        QTest::addColumn<int>("dataType");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("isNull");
        QTest::newRow("null value") << 2 << QVariant() << QString() << true;
        QTest::newRow("number from int") << 1 << QVariant(5) << "5" << false;
        QTest::newRow("number from text") << 1 << QVariant(QStringLiteral(" 12 ")) << "12" << false;
        QTest::newRow("number from bad text") << 1 << QVariant(QStringLiteral("twelve")) << QString() << true;
        QTest::newRow("number from double rounds") << 1 << QVariant(2.6) << "3" << false;
        QTest::newRow("float from int") << 2 << QVariant(4) << "4" << false;
        QTest::newRow("float infinite")
            << 2 << QVariant(std::numeric_limits<double>::infinity()) << QString() << true;
        QTest::newRow("float nan") << 3 << QVariant(std::nan("")) << QString() << true;
        QTest::newRow("float from C text") << 2 << QVariant(QStringLiteral("0.5")) << "0.5" << false;
        QTest::newRow("boolean from int") << 4 << QVariant(3) << "1" << false;
        QTest::newRow("boolean from zero") << 4 << QVariant(0) << "0" << false;
        QTest::newRow("boolean from word") << 4 << QVariant(QStringLiteral("yes")) << QString() << true;
        QTest::newRow("text from double") << 0 << QVariant(0.1) << "0.1" << false;
        QTest::newRow("unknown type") << 7 << QVariant(QStringLiteral("as is")) << "as is" << false;
    }

    void toText()
    {
        QFETCH(int, dataType);
        QFETCH(QVariant, value);
        QFETCH(QString, stored);
        QFETCH(bool, isNull);
        QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
        const QString text = CustomValueToText(value, dataType);
        QCOMPARE(text, stored);
        QCOMPARE(text.isNull(), isNull);
    }

    // Many doubles: the shortest text reads back to the very same double.
    void floatsRoundTripExactly()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        double x = 0.000123456789;
        for (int i = 0; i < 2000; ++i) {
            x = x * 1.7320508 + 0.1;
            if (x > 1e200) {
                x = 1.0 / x;
            }
            for (double value : {x, -x, 1.0 / x}) {
                const QString text = CustomValueToText(value, cftFloat);
                QVERIFY(!text.contains(u','));
                QVERIFY2(CustomValueFromText(text, cftFloat).toDouble() == value, qPrintable(text));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestCustomFields)
#include "tst_customfields.moc"
