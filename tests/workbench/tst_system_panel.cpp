#include "workbench/app/system_panel.h"

#include "tests/workbench/small_system.h"
#include "workbench/app/system_model.h"
#include "workbench/app/system_search.h"
#include "workbench/app/system_view.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <algorithm>

using workbench::SystemModel;
using workbench::SystemPanel;
using workbench::SystemView;

namespace
{

const QString LeftModule = QStringLiteral("/left/3:0:0:-1/4:0:1000:-1/5:0:4:-1");
const QString LeftChannel = LeftModule + QStringLiteral("/6:0:4:1");
const QString RightModule = QStringLiteral("/right/3:0:0:-1/4:0:1000:-1/5:0:4:-1");

/// The panel of a small system, shown.
struct Bench
{
    Bench() : model(system.mainData), panel(model)
    {
        panel.resize(700, 900);
        panel.show();
        panel.activateWindow();
    }

    SystemView &view() { return panel.view(); }
    int statesRead() const
    {
        const QVector<RecordedCall> calls = system.backend.callsOf(QStringLiteral("readItem"));
        return static_cast<int>(std::count_if(calls.begin(), calls.end(), [](const RecordedCall &call) {
            return call.arguments.constFirst().contains(QStringLiteral(".runningState"));
        }));
    }
    QString result() const
    {
        const auto *label = panel.findChild<QLabel *>(QStringLiteral("systemSearchResult"));
        return label->isVisible() ? label->text() : QString();
    }

    /// Names of the rows that the tree shows, from top to bottom.
    QStringList shownNames()
    {
        QStringList names;
        for (QModelIndex row = model.index(0, 0); row.isValid(); row = view().indexBelow(row)) {
            if (!view().isRowHidden(row.row(), row.parent()))
                names << row.data().toString();
        }
        return names;
    }

    SmallSystem system;
    SystemModel model;
    SystemPanel panel;
};

} // namespace

class TestSystemPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void narrowsTheTree()
    {
        Bench bench;
        bench.panel.searchLine().setText(QStringLiteral("channel 1"));
        // Both halls have one, in module 4.
        const QStringList branch = {QStringLiteral("Line 0"), QStringLiteral("Crate 1000"),
                                    QStringLiteral("Module 4"), QStringLiteral("Channel 1")};
        QCOMPARE(bench.shownNames(),
                 QStringList(QStringLiteral("Left hall")) + branch + QStringList(QStringLiteral("Right hall"))
                     + branch);
        QCOMPARE(bench.result(), QStringLiteral("2 found"));
    }

    void keepsWhatIsBelowAHit()
    {
        Bench bench;
        bench.panel.searchLine().setText(QStringLiteral("module 7"));
        const QModelIndex module = bench.model.indexOf(QStringLiteral("/left/3:1:0:-1/5:1:7:-1"));
        QVERIFY(module.isValid());
        QVERIFY(!bench.view().isRowHidden(0, module));
        QVERIFY(bench.view().isRowHidden(bench.model.indexOf(LeftModule).row(),
                                         bench.model.indexOf(LeftModule).parent()));
    }

    void saysThatNothingIsThere()
    {
        Bench bench;
        bench.panel.searchLine().setText(QStringLiteral("module 99"));
        QCOMPARE(bench.result(), QStringLiteral("Nothing found"));
        QVERIFY(bench.view().isRowHidden(0, {}));
        QVERIFY(bench.view().isRowHidden(1, {}));
    }

    void comesBackAsItWas()
    {
        Bench bench;
        bench.view().collapse(bench.model.indexOf(RightModule).parent());
        bench.view().collapse(bench.model.indexOf(QStringLiteral("/left")));
        const QStringList before = bench.shownNames();
        bench.panel.searchLine().setText(QStringLiteral("channel"));
        QVERIFY(bench.shownNames() != before);
        bench.panel.searchLine().clear();
        QCOMPARE(bench.shownNames(), before);
        QCOMPARE(bench.result(), QString());
    }

    void keepsInSightWhatWasFound()
    {
        Bench bench;
        bench.view().collapseAll();
        bench.panel.searchLine().setText(QStringLiteral("0.4.1"));
        const QModelIndex found = bench.model.indexOf(LeftChannel);
        bench.view().setCurrentIndex(found);
        bench.panel.searchLine().clear();
        QVERIFY(bench.view().visibleRows().contains(found));
        QVERIFY(!bench.view().isExpanded(bench.model.indexOf(RightModule)));
    }

    void findsStatesThatNobodyHasSeen()
    {
        Bench bench;
        bench.view().collapseAll();
        bench.system.setItem(QStringLiteral("1.7.0.Status.runningState"), QStringLiteral("error"));
        bench.system.setItem(QStringLiteral("1.7.0.Status.currentTrip"), QStringLiteral("true"));
        bench.panel.searchLine().setText(QStringLiteral("tripped"));
        QTRY_COMPARE(bench.result(), QStringLiteral("2 found"));
        QVERIFY(bench.shownNames().contains(QStringLiteral("Module 7")));
        QVERIFY(!bench.shownNames().contains(QStringLiteral("Module 4")));
    }

    void followsStatesThatChange()
    {
        Bench bench;
        bench.panel.searchLine().setText(QStringLiteral("emergency"));
        QTRY_COMPARE(bench.result(), QStringLiteral("Nothing found"));
        bench.system.setItem(QStringLiteral("0.4.1.Status.runningState"), QStringLiteral("error"));
        bench.system.setItem(QStringLiteral("0.4.1.Status.emergency"), QStringLiteral("true"));
        QTRY_COMPARE(bench.result(), QStringLiteral("2 found"));
        bench.system.setItem(QStringLiteral("0.4.1.Status.runningState"), QStringLiteral("off"));
        QTRY_COMPARE(bench.result(), QStringLiteral("Nothing found"));
    }

    void readsNoStatesForAName()
    {
        Bench bench;
        bench.view().collapseAll();
        QTRY_VERIFY(!bench.system.backend.callsOf(QStringLiteral("readItem")).isEmpty());
        bench.system.backend.clearCalls();
        bench.panel.searchLine().setText(QStringLiteral("channel 0 0.4."));
        bench.panel.hide();
        const QVector<RecordedCall> calls = bench.system.backend.callsOf(QStringLiteral("readItem"));
        QVERIFY2(
            calls.isEmpty(),
            qPrintable(calls.isEmpty() ? QString() : calls.constFirst().arguments.join(QLatin1Char(' '))));
    }

    void readsNothingWhileItIsHidden()
    {
        Bench bench;
        bench.panel.searchLine().setText(QStringLiteral("tripped"));
        QTRY_COMPARE(bench.result(), QStringLiteral("Nothing found"));
        bench.panel.hide();
        bench.system.backend.clearCalls();
        QTimer probe;
        probe.setSingleShot(true);
        QSignalSpy elapsed(&probe, &QTimer::timeout);
        probe.start(3 * workbench::SystemSearch::Interval);
        QTRY_COMPARE(elapsed.size(), 1);
        QCOMPARE(bench.statesRead(), 0);
        bench.panel.show();
        QTRY_VERIFY(bench.statesRead() > 0);
    }

    void survivesAChangeOfStructure()
    {
        Bench bench;
        bench.panel.searchLine().setText(QStringLiteral("module 7"));
        QCOMPARE(bench.result(), QStringLiteral("2 found"));
        bench.system.setControllers(1);
        QTRY_COMPARE(bench.result(), QStringLiteral("1 found"));
        QVERIFY(!bench.shownNames().contains(QStringLiteral("Module 4")));
        bench.system.setControllers(2);
        QTRY_COMPARE(bench.result(), QStringLiteral("2 found"));
        bench.panel.searchLine().clear();
        QVERIFY(bench.shownNames().contains(QStringLiteral("Module 4")));
    }

    void isReachedAndLeftByKeys()
    {
        Bench bench;
        QVERIFY(QTest::qWaitForWindowActive(&bench.panel));
        bench.view().setFocus();
        QTest::keyClick(&bench.view(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(bench.panel.searchLine().hasFocus());
        QTest::keyClicks(&bench.panel.searchLine(), QStringLiteral("module 7"));
        QTest::keyClick(&bench.panel.searchLine(), Qt::Key_Return);
        QVERIFY(bench.view().hasFocus());
        QTest::keyClick(&bench.view(), Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(bench.panel.searchLine().selectedText(), QStringLiteral("module 7"));
        QTest::keyClick(&bench.panel.searchLine(), Qt::Key_Escape);
        QVERIFY(bench.view().hasFocus());
        QVERIFY(bench.panel.searchLine().text().isEmpty());
    }
};

QTEST_MAIN(TestSystemPanel)

#include "tst_system_panel.moc"
