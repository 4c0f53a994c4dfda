// The add dialog on the screen (offscreen) against the real catalogue server: cards in tabs, the
// right pane, the advanced options, card sizing, tabs and closing. With ORV_SCREENSHOT_DIR set it also leaves
// pictures of the dialog there.

#include "dmInternalData.h"
#include "dmStyles.h"
#include "frmAdd.h"
#include "support_common.h"
#include "support_serverprocess.h"
#include "uCheckComboBox.h"
#include "uGrid.h"
#include "uGridCardView.h"
#include "uGridColumn.h"
#include "uGridColumns.h"
#include "uGridModel.h"
#include "uImageSlider.h"
#include "uNumberEdit.h"
#include "uPropertyGrid.h"
#include "uSearchBox.h"
#include "uTemplate.h"
#include "uZTSettings.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTabBar>
#include <QtTest>

using namespace Qt::StringLiterals;

class TestAddForm : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TTempSettingsHome> m_home;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TDM_InternalData> m_data;
    std::unique_ptr<TAddForm> m_form;
    TServerProcess m_server;

    void Shoot(const QString& name)
    {
        const QString dir = qEnvironmentVariable("ORV_SCREENSHOT_DIR");
        if (dir.isEmpty())
            return;
        QTest::qWait(100);
        m_form->grab().save(dir + u'/' + name + ".png");
    }
    void Search(const QString& keywords)
    {
        m_form->SearchBox()->setText(keywords);
        QVERIFY(m_form->Action("actSearch")->isEnabled());
        QTest::keyClick(m_form->SearchBox(), Qt::Key_Return);
        // Running: no second search until every thumbnail is in.
        QVERIFY(!m_form->Controller().Idle());
        m_form->UpdateActions();
        QVERIFY(!m_form->Action("actSearch")->isEnabled());
        QVERIFY(m_form->Action("actStop")->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(m_form->Controller().Idle(), 20000);
        QCoreApplication::sendPostedEvents();
        m_form->UpdateActions();
    }
    TGridCardView* ActiveView() const { return m_form->TabView(m_form->Controller().ActiveTab()); }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(ServerExecutable()), qPrintable(ServerExecutable()));
        m_home = std::make_unique<TTempSettingsHome>();
        LoadEnglish();
        QVERIFY2(m_server.Start({}), qPrintable(m_server.Failure()));
        SettingsStore().SetStringValue("CatalogueServer", QString(), m_server.BaseUrl());
    }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        const QString path = m_dir->filePath("vault.db");
        WriteFile(path, NewBlankDatabaseBytes());
        m_data = std::make_unique<TDM_InternalData>();
        QVERIFY(m_data->ConnectDatabase(path));
        m_form = std::make_unique<TAddForm>(m_data.get());
        m_form->resize(1180, 760);
        m_form->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
    }
    void cleanup()
    {
        m_form.reset();
        m_data.reset();
        m_dir.reset();
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }
    void cleanupTestCase()
    {
        m_server.Stop();
        m_home.reset();
    }

    void opensWithOneEmptyTab()
    {
        QTRY_VERIFY(m_form->SearchBox()->hasFocus());
        QCOMPARE(m_form->TabControl()->count(), 1);
        QCOMPARE(m_form->TabControl()->tabText(0), u"Tab #1"_s);
        QVERIFY(!m_form->Action("actSearch")->isEnabled()); // nothing typed
        QVERIFY(!m_form->Action("actSaveAndContinue")->isEnabled());
        QCOMPARE(m_form->SearchGrid()->activeView(), m_form->TabView(0));
        QCOMPARE(m_form->TemplateView()->cardWidth(), 325);
        // The template's sort: relevance, year, weight, all descending.
        const auto sorted = m_form->TabView(0)->columns()->sortColumns();
        QCOMPARE(sorted.size(), qsizetype(3));
        QCOMPARE(sorted[0]->fieldName(), u"Relevance"_s);
        QCOMPARE(sorted[1]->fieldName(), u"Year"_s);
        QCOMPARE(sorted[2]->fieldName(), u"WeightG"_s);
    }

    void searchFillsCardsAndPane()
    {
        Search(u"maple"_s);
        TGridCardView* view = ActiveView();
        QCOMPARE(m_form->TabControl()->tabText(0), u"Keyword search: maple"_s);
        QCOMPARE(view->caption(), u"Keyword search: maple"_s);
        QVERIFY(view->model()->rowCount() > 0);
        // The first card (highest relevance) has the focus and its pictures are at the right.
        const TAddTab& tab = m_form->Controller().Tab(0);
        QCOMPARE(view->currentSourceRow(), tab.Focused);
        QVERIFY(m_form->ImageSlider()->hasImage(0));
        QCOMPARE(m_form->PicType()->text(), u"Obverse"_s);
        QVERIFY(m_form->Data()->isRowVisible(u"vgDataEditorRowName"_s));
        QVERIFY(m_form->StatusText()->text().startsWith(u" Download complete. Found "_s));
        QVERIFY(!m_form->ProgressBar()->isVisible());
        // The slider stops at the ends.
        TImageSlider* slider = m_form->ImageSlider();
        while (slider->next()) {
        }
        const int last = slider->currentIndex();
        QVERIFY(!slider->next());
        QCOMPARE(slider->currentIndex(), last);
        Shoot(u"add-results-light"_s);

        // Selecting in the view reaches the commands.
        view->selectAll();
        QTRY_VERIFY(m_form->Action("actSaveAndContinue")->isEnabled());
        const int count = view->model()->rowCount();
        m_form->Action("actSaveAndContinue")->trigger();
        QCOMPARE(int(m_form->Controller().Assets.size()), count);
        QCOMPARE(view->model()->rowCount(), 0);
    }

    void themesAndDirections_data()
    {
        QTest::addColumn<int>("theme");
        QTest::addColumn<bool>("rightToLeft");
        QTest::newRow("dark") << 0 << false;
        QTest::newRow("light, right to left") << 4 << true;
    }
    void themesAndDirections()
    {
        QFETCH(int, theme);
        QFETCH(bool, rightToLeft);
        TDM_Styles::ApplyTheme(theme, 0, m_form->Ribbon());
        if (rightToLeft)
            m_form->setLayoutDirection(Qt::RightToLeft);
        Search(u"eagle"_s);
        QVERIFY(ActiveView()->model()->rowCount() > 0);
        Shoot(QStringLiteral("add-results-%1").arg(QTest::currentDataTag()).replace(u' ', u'-').remove(u','));
        m_form->ShowAdvancedOptions();
        QTRY_VERIFY(m_form->AdvancedOptions()->isVisible());
        QVERIFY(m_form->AdvancedOptions()->width() >= 587);
        if (!qEnvironmentVariable("ORV_SCREENSHOT_DIR").isEmpty()) {
            QTest::qWait(100);
            m_form->AdvancedOptions()->grab().save(qEnvironmentVariable("ORV_SCREENSHOT_DIR") +
                                                   "/add-options-" + QString::number(theme) + ".png");
        }
        m_form->AdvancedOptions()->hide();
        TDM_Styles::ApplyTheme(4, 0, m_form->Ribbon());
    }

    void progressWhileRunning()
    {
        m_form->SearchBox()->setText(u"silver"_s);
        m_form->Action("actSearch")->trigger();
        QTRY_VERIFY(m_form->ProgressBar()->isVisible() || m_form->Controller().Idle());
        Shoot(u"add-progress"_s);
        QTRY_VERIFY_WITH_TIMEOUT(m_form->Controller().Idle(), 20000);
        QCoreApplication::sendPostedEvents();
        QVERIFY(!m_form->ProgressBar()->isVisible());
    }

    void advancedOptions_data()
    {
        QTest::addColumn<int>("unit");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("troy ounces to grams") << 1 << "g";
        QTest::newRow("stays in ounces") << 0 << "oz";
    }
    void advancedOptions()
    {
        QFETCH(int, unit);
        QFETCH(QString, suffix);
        m_form->ShowAdvancedOptions();
        QWidget* options = m_form->AdvancedOptions();
        auto* from = options->findChild<TNumberEdit*>(u"seWeightFrom"_s);
        auto* to = options->findChild<TNumberEdit*>(u"seWeightTo"_s);
        auto* units = options->findChild<QComboBox*>(u"cbWeightUnit"_s);
        auto* metals = options->findChild<TCheckComboBox*>(u"cbMetals"_s);
        auto* yearFrom = options->findChild<TNumberEdit*>(u"seYearFrom"_s);
        QCOMPARE(units->currentIndex(), 0);
        from->setValue(1.5);
        to->setValue(10.0);
        metals->setChecked(1, true);
        yearFrom->setValue(2000);
        units->setCurrentIndex(unit);
        // The numbers stay as typed; only the unit shown changes.
        QCOMPARE(from->value().toDouble(), 1.5);
        QCOMPARE(to->value().toDouble(), 10.0);
        QVERIFY2(from->text().endsWith(suffix), qPrintable(from->text()));
        m_form->ReadFilters();
        const TSearchFilters& f = m_form->Controller().Filters;
        QCOMPARE(f.WeightFrom, 1.5);
        QCOMPARE(f.WeightUnit, unit);
        QCOMPARE(f.Metals, u"010000"_s);
        QCOMPARE(f.YearFrom, 2000);
        // Clear: every option null again, the unit kept.
        QTest::mouseClick(options->findChild<QPushButton*>(u"btnAdvClear"_s), Qt::LeftButton);
        QVERIFY(from->value().isNull() && to->value().isNull() && yearFrom->value().isNull());
        QCOMPARE(metals->summaryText(), u"Any"_s);
        m_form->ReadFilters();
        QCOMPARE(f.WeightFrom, 0.0);
        QCOMPARE(f.Metals, u"000000"_s);
        QCOMPARE(units->currentIndex(), unit);
    }

    void ctrlWheelSizesCards_data()
    {
        QTest::addColumn<int>("delta");
        QTest::addColumn<int>("width");
        QTest::newRow("wheel up") << 120 << 341;    // 325 x 1.05, rounded
        QTest::newRow("wheel down") << -120 << 309; // 325 x 0.95, rounded
    }
    void ctrlWheelSizesCards()
    {
        QFETCH(int, delta);
        QFETCH(int, width);
        Search(u"maple"_s);
        TGridCardView* view = ActiveView();
        QWidget* viewport = view->cardsViewport();
        const QPoint at = view->cardRect(m_form->Controller().Tab(0).Focused).center();
        QWheelEvent wheel(at, viewport->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton,
                          Qt::ControlModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport, &wheel);
        QCOMPARE(view->cardWidth(), width);
        const int lines = view->columns()->byField(u"Thumb"_s)->lines();
        const int lineHeight = view->fontMetrics().lineSpacing();
        QVERIFY2(std::abs(lines * lineHeight - TAddForm::ThumbHeightFor(width)) <= lineHeight,
                 qPrintable(QString::number(lines)));
        QCOMPARE(m_form->TemplateView()->cardWidth(), 325); // other views keep theirs
    }

    void tabsStayInStep()
    {
        m_form->Action("actNewTab")->trigger();
        QCOMPARE(m_form->TabControl()->count(), 2);
        QCOMPARE(m_form->TabControl()->currentIndex(), 1);
        QCOMPARE(m_form->SearchGrid()->activeView(), m_form->TabView(1));
        QCOMPARE(m_form->TabControl()->tabText(1), u"Tab #2"_s);
        m_form->TabControl()->setCurrentIndex(0);
        QCOMPARE(m_form->Controller().ActiveTab(), 0);
        QCOMPARE(m_form->SearchGrid()->activeView(), m_form->TabView(0));
        m_form->Controller().SetActiveTab(1);
        QCOMPARE(m_form->TabControl()->currentIndex(), 1);
        m_form->Controller().QuickSearch(smGoldBars, 3);
        QTRY_VERIFY_WITH_TIMEOUT(m_form->Controller().Idle(), 20000);
        QVERIFY(m_form->TabControl()->tabText(1).startsWith(u"Gold bars: "_s));
        QCOMPARE(m_form->TabControl()->tabText(0), u"Tab #1"_s);
    }

    void closingTheOnlyTabClosesTheDialog()
    {
        m_form->hide();
        m_form->open();
        QVERIFY(m_form->isVisible());
        m_form->Action("actCloseTab")->trigger();
        QTRY_VERIFY(!m_form->isVisible());
        QCOMPARE(m_form->result(), int(QDialog::Accepted));
    }
};

QTEST_MAIN(TestAddForm)
#include "tst_addform.moc"
