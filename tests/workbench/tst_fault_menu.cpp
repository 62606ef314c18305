#include "workbench/app/fault_menu.h"

#include "tests/workbench/plant_bench.h"
#include "workbench/app/fault_switch.h"

#include <QAction>
#include <QApplication>
#include <QInputDialog>
#include <QSignalSpy>
#include <QTest>

using simulator::ChannelSnapshot;
using simulator::Fault;
using simulator::FaultKind;
using workbench::FaultMenu;
using workbench::FaultSwitch;

namespace
{

/// The menu over a plant; what is chosen in it is done at once.
struct Bench : PlantBench
{
    Bench() : messages(&faults, &FaultSwitch::message) { }

    QAction *entry(const char *name)
    {
        Q_EMIT menu.aboutToShow();
        for (QAction *action : menu.actions()) {
            if (action->objectName() == QLatin1String(name))
                return action;
        }
        return nullptr;
    }

    QStringList endings()
    {
        Q_EMIT menu.aboutToShow();
        QStringList texts;
        for (const QAction *action : menu.findChild<QMenu *>(QStringLiteral("endFaults"))->actions()) {
            if (!action->isSeparator())
                texts << action->text();
        }
        return texts;
    }

    QString lastMessage() const
    {
        return messages.isEmpty() ? QString() : messages.constLast().at(0).toString();
    }

    ChannelSnapshot snapshot(qint32 number)
    {
        ChannelSnapshot result;
        service.channelSnapshot(QStringLiteral("local"), address(number), result);
        return result;
    }

    FaultSwitch faults{service};
    QWidget window;
    FaultMenu menu{faults, &window};
    QSignalSpy messages;
};

OrbItemId object(OrbItemId::Type level, quint32 address)
{
    OrbItemId id(level);
    id.connectionName = QStringLiteral("local");
    id.address = address;
    return id;
}

} // namespace

class TestFaultMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offersWhatCanGoWrongThere_data()
    {
        QTest::addColumn<OrbItemId>("id");
        QTest::addColumn<QString>("names");
        QTest::newRow("channel") << PlantBench::channel(1)
                                 << QStringLiteral("spark short openLoad leak externalInhibit");
        QTest::newRow("module") << object(OrbItemId::Module, 0)
                                << QStringLiteral("safetyLoopOpen supplyFailure overheating needService");
        QTest::newRow("crate") << object(OrbItemId::Crate, 1000)
                               << QStringLiteral(
                                      "mainsFailure crateSupplyFailure batteryFailure crateOverheating");
        QTest::newRow("controller") << object(
            OrbItemId::System,
            0) << QStringLiteral("disconnect slowAnswers dropAnswers duplicateAnswers reorderAnswers");
    }

    void offersWhatCanGoWrongThere()
    {
        QFETCH(OrbItemId, id);
        QFETCH(QString, names);
        Bench bench;
        bench.menu.setTargets({id});
        Q_EMIT bench.menu.aboutToShow();
        QStringList found;
        QStringList mnemonics;
        for (const QAction *action : bench.menu.actions()) {
            if (!action->objectName().isEmpty())
                found << action->objectName();
            const int at = action->text().indexOf(QLatin1Char('&'));
            if (at >= 0)
                mnemonics << action->text().mid(at + 1, 1).toLower();
        }
        QCOMPARE(found.join(QLatin1Char(' ')), names);
        QCOMPARE(mnemonics.removeDuplicates(), 0);
    }

    void offersNothingForALine()
    {
        Bench bench;
        bench.menu.setTargets({object(OrbItemId::Line, 0)});
        Q_EMIT bench.menu.aboutToShow();
        QVERIFY(!bench.menu.actions().constFirst()->isEnabled());
    }

    void shortsAndMends()
    {
        Bench bench;
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.step(5);
        bench.menu.setTargets({PlantBench::channel(1)});
        QVERIFY(!bench.entry("short")->isChecked());
        bench.entry("short")->trigger();
        QVERIFY(bench.lastMessage().contains(QStringLiteral("short at local 0.0.1")));
        bench.step(0.05);
        QVERIFY(bench.snapshot(1).voltage < 10);
        QVERIFY(bench.entry("short")->isChecked());
        QCOMPARE(bench.endings(),
                 QStringList({QStringLiteral("local 0.0.1: Short"), QStringLiteral("&All of Them")}));

        bench.entry("short")->trigger();
        QVERIFY(bench.lastMessage().contains(QStringLiteral("ended")));
        QVERIFY(!bench.entry("short")->isChecked());
    }

    void knowsAControllerByTheConnectionOfAScript()
    {
        Bench bench;
        QCOMPARE(
            bench.service.openConnection(QStringLiteral("scan"), QStringLiteral("ws://nowhere:8080"), {}, {}),
            TarnResult::Success);
        OrbItemId id = PlantBench::channel(1);
        id.connectionName = QStringLiteral("scan");
        bench.menu.setTargets({id});
        bench.entry("short")->trigger();
        QVERIFY2(bench.lastMessage().contains(QStringLiteral("short at local 0.0.1")),
                 qPrintable(bench.lastMessage()));
        QVERIFY(bench.entry("short")->isChecked());
        bench.menu.setTargets({PlantBench::channel(1)});
        QVERIFY2(bench.entry("short")->isChecked(), "by its own name too");
        bench.menu.setTargets({id});
        bench.entry("short")->trigger();
        QVERIFY(bench.faults.active().isEmpty());
    }

    void sparksOnce()
    {
        Bench bench;
        bench.menu.setTargets({PlantBench::channel(1)});
        QVERIFY(!bench.entry("spark")->isCheckable());
        bench.entry("spark")->trigger();
        QVERIFY(bench.lastMessage().contains(QStringLiteral("spark at local 0.0.1")));
        QVERIFY(bench.faults.active().isEmpty());
    }

    void inhibitsSeveralAtOnce()
    {
        Bench bench;
        bench.menu.setTargets({PlantBench::channel(1), PlantBench::channel(2), PlantBench::channel(3)});
        bench.entry("externalInhibit")->trigger();
        QVERIFY(bench.lastMessage().contains(QStringLiteral("and 2 more")));
        QCOMPARE(bench.faults.active().size(), 3);
        QVERIFY(bench.entry("externalInhibit")->isChecked());
        bench.menu.setTargets({PlantBench::channel(1), PlantBench::channel(4)});
        QVERIFY2(!bench.entry("externalInhibit")->isChecked(), "only the one of them");
    }

    void knowsFaultsOfOthers()
    {
        Bench bench;
        bench.menu.setTargets({PlantBench::channel(1)});
        Fault fault = FaultSwitch::faultAt(FaultKind::ExternalInhibit, PlantBench::channel(1));
        fault.duration = 2;
        QCOMPARE(bench.service.cause(fault), TarnResult::Success);
        QVERIFY(bench.entry("externalInhibit")->isChecked());
        bench.step(3); // over by itself
        QVERIFY(!bench.entry("externalInhibit")->isChecked());
    }

    void asksHowMuch()
    {
        Bench bench;
        bench.window.show();
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.step(5);
        const double before = bench.snapshot(1).current;
        bench.menu.setTargets({PlantBench::channel(1)});
        bench.entry("leak")->trigger();
        auto *dialog = bench.window.findChild<QInputDialog *>(QStringLiteral("faultAmount"));
        QVERIFY(dialog && dialog->isVisible());
        QVERIFY2(bench.messages.isEmpty(), "nothing is caused before it is said how much");
        dialog->setDoubleValue(250);
        bench.menu.setTargets({PlantBench::channel(7)}); // what is selected meanwhile does not matter
        dialog->accept();
        QVERIFY(bench.lastMessage().contains(QStringLiteral("leak at local 0.0.1")));
        bench.step(0.1);
        QVERIFY(qAbs(bench.snapshot(1).current - before - 250e-6) < 1e-6);
    }

    void causesNothingWhenTheQuestionIsCancelled()
    {
        Bench bench;
        bench.window.show();
        bench.menu.setTargets({object(OrbItemId::System, 0)});
        bench.entry("slowAnswers")->trigger();
        bench.window.findChild<QInputDialog *>(QStringLiteral("faultAmount"))->reject();
        QVERIFY(bench.messages.isEmpty());
        QVERIFY(bench.faults.active().isEmpty());
    }

    void bringsAControllerBack()
    {
        Bench bench;
        bench.menu.setTargets({object(OrbItemId::System, 0)});
        bench.entry("disconnect")->trigger();
        QVERIFY(!bench.service.isControllerAvailable(QStringLiteral("local")));
        bench.menu.setTargets({}); // it is no longer in the tree
        QCOMPARE(bench.endings().constFirst(), QStringLiteral("local: Disconnected"));
        bench.menu.findChild<QMenu *>(QStringLiteral("endFaults"))->actions().constFirst()->trigger();
        QVERIFY(bench.service.isControllerAvailable(QStringLiteral("local")));
        QVERIFY(!bench.menu.findChild<QMenu *>(QStringLiteral("endFaults"))->isEmpty());
        QCOMPARE(bench.endings(), QStringList(QStringLiteral("&All of Them")));
        QVERIFY(!bench.menu.findChild<QMenu *>(QStringLiteral("endFaults"))->menuAction()->isEnabled());
    }

    void endsAllAtOnce()
    {
        Bench bench;
        bench.menu.setTargets({PlantBench::channel(1)});
        bench.entry("short")->trigger();
        bench.entry("externalInhibit")->trigger();
        bench.menu.setTargets({object(OrbItemId::System, 0)});
        bench.entry("disconnect")->trigger();
        QCOMPARE(bench.faults.active().size(), 3);
        QCOMPARE(bench.endings().size(), 4);
        bench.menu.findChild<QMenu *>(QStringLiteral("endFaults"))->actions().constLast()->trigger();
        QVERIFY(bench.faults.active().isEmpty());
    }

    void saysThatItWasRefused()
    {
        Bench bench;
        bench.menu.setTargets({PlantBench::channel(99)});
        bench.entry("short")->trigger();
        QVERIFY(bench.lastMessage().contains(QStringLiteral("refused")));
        QVERIFY(bench.lastMessage().contains(QStringLiteral("0.0.99")));
        QVERIFY(!bench.faults.end({FaultSwitch::faultAt(FaultKind::Short, PlantBench::channel(1))}));
        QVERIFY(bench.lastMessage().contains(QStringLiteral("over already")));
    }
};

QTEST_MAIN(TestFaultMenu)

#include "tst_fault_menu.moc"
