// The property grid over a source model's current row: edits reach the model, refusals keep the
// value, the grid follows the row the program gives, rows hide, re-caption and go read-only.

#include "support_editors.h"
#include "uChoiceEditorItems.h"
#include "uNumberEdit.h"
#include "uNumberEditorItems.h"
#include "uPropertyGrid.h"
#include "uPropertyGridModel.h"
#include "uRatingEditorItem.h"
#include "uTextEditorItems.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// A grid of five bound rows and one unbound row over three records.
struct TGridFixture
{
    TFieldModel model{{u"ID"_s, u"Name"_s, u"Metal"_s, u"WeightG"_s, u"Qty"_s, u"Rare"_s, u"Rating"_s}, 3};
    TTextEditorItem text;
    TListEditorItem metal;
    TFloatEditorItem weight;
    TIntegerEditorItem qty;
    TCheckEditorItem rare;
    TRatingEditorItem rating;
    TLookupEditorItem lookup;
    TTextEditorItem note;
    QWidget window;
    TPropertyGrid* grid = new TPropertyGrid(&window);

    TGridFixture()
    {
        for (int row = 0; row < 3; ++row) {
            model.setValueAt(row, u"ID"_s, row + 1);
            model.setValueAt(row, u"Name"_s, u"Item %1"_s.arg(row + 1));
            model.setValueAt(row, u"Metal"_s, row % 2);
            model.setValueAt(row, u"WeightG"_s, 31.1035);
            model.setValueAt(row, u"Qty"_s, 1);
        }
        model.Writes = 0;
        metal.setEntries({{0, u"Gold"_s, {}}, {1, u"Silver"_s, {}}, {2, u"Platinum"_s, {}}});
        weight.setDisplayFormat(u"0.## g"_s);
        weight.setEditFormat(u"0.## g"_s);
        weight.setLocale(QLocale(QLocale::English));
        qty.setRange(0, 1000);
        grid->setCaptionWidth(120);
        grid->addCategory(u"General"_s, u"General information"_s);
        grid->addRow(u"rowName"_s, u"Name"_s, u"Name"_s, &text, u"General"_s);
        grid->addRow(u"rowMetal"_s, u"Metal"_s, u"Metal"_s, &metal, u"General"_s);
        grid->addRow(u"rowWeight"_s, u"Weight"_s, u"WeightG"_s, &weight, u"General"_s);
        grid->addCategory(u"Purchase"_s, u"Purchase information"_s);
        grid->addRow(u"rowQty"_s, u"Quantity"_s, u"Qty"_s, &qty, u"Purchase"_s);
        grid->addRow(u"rowRare"_s, u"Rare"_s, u"Rare"_s, &rare, u"Purchase"_s);
        grid->addRow(u"rowRating"_s, u"Rating"_s, u"Rating"_s, &rating, u"Purchase"_s);
        grid->addRow(u"rowNote"_s, u"Note"_s, QString(), &note, u"Purchase"_s);
        grid->setSourceModel(&model);
        window.resize(420, 500);
        grid->resize(420, 500);
        window.show();
        grid->setCurrentRow(1);
    }

    QWidget* openEditor() const { return grid->indexWidget(grid->currentIndex()); }
    QLineEdit* openLine() const
    {
        QWidget* editor = openEditor();
        if (auto* line = qobject_cast<QLineEdit*>(editor))
            return line;
        return editor ? editor->findChild<QLineEdit*>() : nullptr;
    }
    void clickValue(const QString& row, qreal share = 0.5)
    {
        const QRect cell = grid->valueRect(row);
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                          QPoint(cell.left() + int(cell.width() * share), cell.center().y()));
    }
};
} // namespace

class TestPropertyGrid : public QObject
{
    Q_OBJECT

private slots:
    void editReachesModel_data();
    void editReachesModel();
    void refusedEditKeepsValue_data();
    void refusedEditKeepsValue();
    void untouchedEditorWritesNothing_data();
    void untouchedEditorWritesNothing();
    void followsCurrentRow();
    void changingRowWritesToOldRow();
    void oneEditorAtATime();
    void hiddenRowsAndCategories();
    void readOnlyRows_data();
    void readOnlyRows();
    void unboundRowKeepsOwnValue();
    void structureRefusesRepeats();
};

void TestPropertyGrid::editReachesModel_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<QString>("how"); // "type:<text>", "pick:<index>", "click:<share>"
    QTest::addColumn<QString>("field");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("text") << u"rowName"_s << u"type:Libertad"_s << u"Name"_s << QVariant(u"Libertad"_s);
    QTest::newRow("float with its unit")
        << u"rowWeight"_s << u"type:15.55 g"_s << u"WeightG"_s << QVariant(15.55);
    QTest::newRow("whole number") << u"rowQty"_s << u"type:12"_s << u"Qty"_s << QVariant(12LL);
    QTest::newRow("emptied text is null") << u"rowName"_s << u"type:"_s << u"Name"_s << QVariant();
    QTest::newRow("list pick, written at once") << u"rowMetal"_s << u"pick:2"_s << u"Metal"_s << QVariant(2);
    QTest::newRow("check box click") << u"rowRare"_s << u"click:0.5"_s << u"Rare"_s << QVariant(1);
}

void TestPropertyGrid::editReachesModel()
{
    QFETCH(QString, row);
    QFETCH(QString, how);
    QFETCH(QString, field);
    QFETCH(QVariant, expected);
    TGridFixture f;
    QSignalSpy written(f.grid, &TPropertyGrid::rowValueChanged);
    const QString verb = how.section(u':', 0, 0);
    const QString argument = how.section(u':', 1);
    if (verb == u"click"_s) {
        f.clickValue(row, argument.toDouble());
    } else {
        QVERIFY(f.grid->editRow(row));
        if (verb == u"type"_s) {
            QLineEdit* line = f.openLine();
            QVERIFY(line);
            line->setText(argument);
            QVERIFY(f.grid->finishEditing());
        } else {
            auto* combo = qobject_cast<QComboBox*>(f.openEditor());
            QVERIFY(combo);
            combo->setCurrentIndex(argument.toInt());
            emit combo->activated(argument.toInt());
            // Written before the editor closes.
            QVERIFY(f.openEditor() != nullptr);
        }
    }
    const QVariant stored = f.model.valueAt(1, field);
    QCOMPARE(stored.isNull(), expected.isNull());
    if (!expected.isNull())
        QCOMPARE(stored.toString(), expected.toString());
    QCOMPARE(f.model.valueAt(0, field),
             field == u"Name"_s ? QVariant(u"Item 1"_s) : f.model.valueAt(0, field));
    QCOMPARE(written.count(), 1);
    QCOMPARE(written.first().at(0).toString(), row);
}

void TestPropertyGrid::refusedEditKeepsValue_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("source"); // "", "refuse", "throw"
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("byClick"); // the editor is left by a click on another row
    const QString notNumber = u"'mm' is not a valid number."_s;
    QTest::newRow("unit letters alone") << u"rowWeight"_s << u"mm"_s << QString() << notNumber << false;
    QTest::newRow("unit letters alone, left by a click")
        << u"rowWeight"_s << u"mm"_s << QString() << notNumber << true;
    QTest::newRow("decimals in a whole number")
        << u"rowQty"_s << u"2.5"_s << QString() << u"'2.5' is not a valid whole number."_s << false;
    QTest::newRow("source refuses") << u"rowName"_s << u"Eagle"_s << u"refuse"_s
                                    << u"The value was not accepted."_s << false;
    QTest::newRow("source throws, left by a click")
        << u"rowName"_s << u"Eagle"_s << u"throw"_s << u"Field 'Name' is read-only"_s << true;
}

void TestPropertyGrid::refusedEditKeepsValue()
{
    QFETCH(QString, row);
    QFETCH(QString, typed);
    QFETCH(QString, source);
    QFETCH(QString, message);
    QFETCH(bool, byClick);
    TEditorErrorRecorder errors;
    TGridFixture f;
    QApplication::setActiveWindow(&f.window);
    f.model.Refuse = source == u"refuse"_s;
    if (source == u"throw"_s)
        f.model.ThrowText = message;
    const QVariant before = f.grid->rowValue(row);
    QSignalSpy failed(f.grid, &TPropertyGrid::editFailed);
    QSignalSpy written(f.grid, &TPropertyGrid::rowValueChanged);
    QVERIFY(f.grid->editRow(row));
    QLineEdit* line = f.openLine();
    QVERIFY(line);
    line->setText(typed);
    if (byClick) {
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        line->setFocus();
        const QRect other = f.grid->visualRect(f.grid->propertyModel()->indexOf(
            f.grid->propertyModel()->node(u"rowQty"_s == row ? u"rowName"_s : u"rowQty"_s), 0));
        QTest::mouseClick(f.grid->viewport(), Qt::LeftButton, {}, other.center());
        QTRY_VERIFY(f.openEditor() == nullptr || f.grid->currentRowName() != row);
    } else {
        QVERIFY(!f.grid->finishEditing());
    }
    QCOMPARE(f.grid->rowValue(row), before);
    QCOMPARE(written.count(), 0);
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().at(0).toString(), row);
    QCOMPARE(failed.first().at(1).toString(), message);
    QCOMPARE(errors.settled(), QStringList{message});
}

// Opening an editor and leaving it alone must not put the record into editing; a format that
// shows fewer digits than the value has must not round the value either.
void TestPropertyGrid::untouchedEditorWritesNothing_data()
{
    QTest::addColumn<QString>("row");
    QTest::newRow("text") << u"rowName"_s;
    QTest::newRow("weight shown rounded") << u"rowWeight"_s;
    QTest::newRow("list") << u"rowMetal"_s;
    QTest::newRow("null rating") << u"rowRating"_s;
}

void TestPropertyGrid::untouchedEditorWritesNothing()
{
    QFETCH(QString, row);
    TGridFixture f;
    QVERIFY(f.grid->editRow(row));
    QVERIFY(f.grid->finishEditing());
    QCOMPARE(f.model.Writes, 0);
    QCOMPARE(f.model.valueAt(1, u"WeightG"_s).toDouble(), 31.1035);
}

void TestPropertyGrid::followsCurrentRow()
{
    TGridFixture f;
    QSignalSpy rowChanges(f.grid, &TPropertyGrid::currentRowChanged);
    QCOMPARE(f.grid->rowText(u"rowName"_s), u"Item 2"_s);
    QCOMPARE(f.grid->rowText(u"rowWeight"_s), u"31.1 g"_s);

    // Rows inserted before it do not change which record shows.
    f.model.insertRow(0);
    QCOMPARE(f.grid->currentRow(), 2);
    QCOMPARE(f.grid->rowText(u"rowName"_s), u"Item 2"_s);

    // A change of the record shows at once; a change of another record does not matter.
    f.model.setValueAt(2, u"Name"_s, u"Renamed"_s);
    f.model.setValueAt(1, u"Name"_s, u"Other"_s);
    QCOMPARE(f.grid->rowText(u"rowName"_s), u"Renamed"_s);

    // The record removed: the grid shows nothing and says so once.
    f.model.removeRow(2);
    QCOMPARE(f.grid->currentRow(), -1);
    QVERIFY(f.grid->rowValue(u"rowName"_s).isNull());
    QCOMPARE(rowChanges.count(), 1);
    QCOMPARE(rowChanges.first().at(0).toInt(), -1);
    QVERIFY(!f.grid->editRow(u"rowName"_s));

    // Out of range is no row at all.
    f.grid->setCurrentRow(99);
    QCOMPARE(f.grid->currentRow(), -1);
    f.grid->setCurrentRow(0);
    QCOMPARE(f.grid->rowText(u"rowName"_s), QString());
    QCOMPARE(f.grid->rowValue(u"rowQty"_s), QVariant());
}

void TestPropertyGrid::changingRowWritesToOldRow()
{
    TGridFixture f;
    QVERIFY(f.grid->editRow(u"rowName"_s));
    f.openLine()->setText(u"Typed on two"_s);
    f.grid->setCurrentRow(2);
    QCOMPARE(f.model.valueAt(1, u"Name"_s).toString(), u"Typed on two"_s);
    QCOMPARE(f.model.valueAt(2, u"Name"_s).toString(), u"Item 3"_s);
    QCOMPARE(f.grid->rowText(u"rowName"_s), u"Item 3"_s);
    QVERIFY(f.openEditor() == nullptr);
}

void TestPropertyGrid::oneEditorAtATime()
{
    TGridFixture f;
    QVERIFY(f.grid->editRow(u"rowName"_s));
    f.openLine()->setText(u"First"_s);
    QVERIFY(f.grid->editRow(u"rowQty"_s));
    // The first was written on the way; only the second editor lives.
    QCOMPARE(f.model.valueAt(1, u"Name"_s).toString(), u"First"_s);
    QCoreApplication::processEvents();
    int live = 0;
    for (QWidget* child : f.grid->viewport()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (child->isVisible())
            ++live;
    QCOMPARE(live, 1);
    QVERIFY(qobject_cast<TNumberEdit*>(f.openEditor()));
}

void TestPropertyGrid::hiddenRowsAndCategories()
{
    TGridFixture f;
    auto* model = f.grid->propertyModel();
    const auto hidden = [&](const QString& name) {
        const QModelIndex index = model->indexOf(model->node(name));
        return f.grid->isRowHidden(index.row(), index.parent());
    };
    f.grid->setRowVisible(u"rowMetal"_s, false);
    QVERIFY(hidden(u"rowMetal"_s));
    QVERIFY(!f.grid->editRow(u"rowMetal"_s));
    QVERIFY(f.grid->isCategoryShown(u"General"_s));
    f.grid->setRowVisible(u"rowName"_s, false);
    f.grid->setRowVisible(u"rowWeight"_s, false);
    QVERIFY(!f.grid->isCategoryShown(u"General"_s));
    QVERIFY(hidden(u"General"_s));
    f.grid->setCategoryAutoHide(false);
    QVERIFY(!hidden(u"General"_s));
    f.grid->setCategoryAutoHide(true);
    f.grid->setRowVisible(u"rowWeight"_s, true);
    QVERIFY(!hidden(u"General"_s));
    QVERIFY(!hidden(u"rowWeight"_s));

    f.grid->setRowCaption(u"rowQty"_s, u"Pieces"_s);
    QCOMPARE(model->indexOf(model->node(u"rowQty"_s), 0).data().toString(), u"Pieces"_s);
    f.grid->setCategoryCaption(u"Purchase"_s, u"Bought"_s);
    QCOMPARE(model->indexOf(model->node(u"Purchase"_s), 0).data().toString(), u"Bought"_s);

    // Hiding the row being edited writes it first.
    QVERIFY(f.grid->editRow(u"rowQty"_s));
    f.openLine()->setText(u"5"_s);
    f.grid->setRowVisible(u"rowQty"_s, false);
    QCOMPARE(f.model.valueAt(1, u"Qty"_s).toLongLong(), 5LL);
}

void TestPropertyGrid::readOnlyRows_data()
{
    QTest::addColumn<bool>("wholeGrid");
    QTest::newRow("one row") << false;
    QTest::newRow("whole grid") << true;
}

void TestPropertyGrid::readOnlyRows()
{
    QFETCH(bool, wholeGrid);
    TGridFixture f;
    if (wholeGrid)
        f.grid->setReadOnly(true);
    else {
        f.grid->setRowReadOnly(u"rowRare"_s, true);
        f.grid->setRowReadOnly(u"rowName"_s, true);
    }
    QVERIFY(!f.grid->editRow(u"rowName"_s));
    f.clickValue(u"rowRare"_s);
    QCOMPARE(f.model.Writes, 0);
    QVERIFY(f.grid->rowValue(u"rowRare"_s).isNull());
    QCOMPARE(f.grid->editRow(u"rowQty"_s), !wholeGrid);
}

void TestPropertyGrid::unboundRowKeepsOwnValue()
{
    TGridFixture f;
    QSignalSpy written(f.grid, &TPropertyGrid::rowValueChanged);
    QVERIFY(f.grid->setRowValue(u"rowNote"_s, u"first"_s));
    QCOMPARE(f.grid->rowText(u"rowNote"_s), u"first"_s);
    QVERIFY(f.grid->editRow(u"rowNote"_s));
    f.openLine()->setText(u"second"_s);
    QVERIFY(f.grid->finishEditing());
    QCOMPARE(f.grid->rowValue(u"rowNote"_s).toString(), u"second"_s);
    QCOMPARE(f.model.Writes, 0);
    QCOMPARE(written.count(), 2);
    // It keeps its value whatever record shows.
    f.grid->setCurrentRow(0);
    QCOMPARE(f.grid->rowValue(u"rowNote"_s).toString(), u"second"_s);
    // Setting a bound row's value writes the record like an edit.
    QVERIFY(f.grid->setRowValue(u"rowQty"_s, 9));
    QCOMPARE(f.model.valueAt(0, u"Qty"_s).toInt(), 9);
}

void TestPropertyGrid::structureRefusesRepeats()
{
    TPropertyGrid grid;
    TTextEditorItem text;
    QVERIFY(grid.addCategory(u"General"_s, u"General"_s));
    QVERIFY(!grid.addCategory(u"General"_s, u"Again"_s));
    QVERIFY(grid.addRow(u"rowName"_s, u"Name"_s, u"Name"_s, &text, u"General"_s));
    QVERIFY(!grid.addRow(u"rowName"_s, u"Name"_s, u"Name"_s, &text));
    QVERIFY(!grid.addRow(u"rowOther"_s, u"Other"_s, u"Other"_s, &text, u"NoSuchCategory"_s));
    QVERIFY(!grid.addRow(u"General"_s, u"Clash"_s, u"Name"_s, &text));
    QCOMPARE(grid.rowNames(), QStringList{u"rowName"_s});
    // A field the source does not have shows nothing and cannot be edited.
    TFieldModel model({u"ID"_s}, 1);
    grid.setSourceModel(&model);
    grid.setCurrentRow(0);
    QVERIFY(grid.rowValue(u"rowName"_s).isNull());
    QVERIFY(!grid.editRow(u"rowName"_s));
}

QTEST_MAIN(TestPropertyGrid)
#include "tst_propertygrid.moc"
