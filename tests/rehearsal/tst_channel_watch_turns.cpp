#include "workbench/rehearsal/channel_watch.h"

#include "tests/rehearsal/example_recording.h"

#include <QTest>

using rehearsal::ChannelWatch;
using rehearsal::Finding;
using rehearsal::Ramp;

/// Ramps that are given another target on their way, as the journal tells it.
class TestChannelWatchTurns : public QObject
{
    Q_OBJECT

private:
    /// A channel that is only heard of.
    struct Bench
    {
        rehearsal::Recording recording;
        ChannelWatch watch{recording,
                           {},
                           [](const QString &, const simulator::ObjectAddress &,
                              simulator::ChannelSnapshot &) { return true; },
                           [](const Finding &) {}};

        void waypoint(double time, double voltage, bool isRamping, double target)
        {
            simulator::JournalEntry entry;
            entry.kind = simulator::JournalEntry::Waypoint;
            entry.time = time;
            entry.controller = QStringLiteral("local");
            entry.object = channelAddress(0, 2, 1);
            entry.voltageBefore = voltage;
            entry.voltage = voltage;
            entry.isRamping = isRamping;
            entry.voltageSet = target;
            watch.addWaypoint(entry);
        }
        const std::vector<Ramp> &ramps() const { return recording.channels.at(0).ramps; }
    };

private Q_SLOTS:
    void measuresARampThatIsTurnedRound()
    {
        Bench bench;
        bench.waypoint(1, 0, true, 1000);
        bench.waypoint(1.5, 500, true, 0); // switched off half way
        bench.waypoint(2, 0, false, 0);
        QCOMPARE(bench.ramps().size(), std::size_t{2});
        QCOMPARE(bench.ramps().at(0).begin, 1.0);
        QCOMPARE(bench.ramps().at(0).end, 1.5);
        QCOMPARE(bench.ramps().at(0).from, 0.0);
        QCOMPARE(bench.ramps().at(0).to, 500.0);
        QCOMPARE(bench.ramps().at(1).begin, 1.5);
        QCOMPARE(bench.ramps().at(1).end, 2.0);
        QCOMPARE(bench.ramps().at(1).from, 500.0);
        QCOMPARE(bench.ramps().at(1).to, 0.0);
    }

    // Another speed, or the load, turns the course and not the ramp.
    void aRampToTheSameTargetIsOne()
    {
        Bench bench;
        bench.waypoint(1, 0, true, 1000);
        bench.waypoint(1.5, 500, true, 1000);
        bench.waypoint(2, 1000, false, 1000);
        QCOMPARE(bench.ramps().size(), std::size_t{1});
        QCOMPARE(bench.ramps().at(0).end, 2.0);
    }

    // Switched on, and told where to, by one request.
    void noRampTakesNoTime()
    {
        Bench bench;
        bench.waypoint(1.5, 0, true, 500);
        bench.waypoint(1.5, 0, true, 1000);
        bench.waypoint(2, 500, true, 1000);
        bench.waypoint(2.5, 1000, false, 1000);
        QCOMPARE(bench.ramps().size(), std::size_t{1});
        QCOMPARE(bench.ramps().at(0).begin, 1.5);
        QCOMPARE(bench.ramps().at(0).end, 2.5);
        QCOMPARE(bench.ramps().at(0).to, 1000.0);
    }
};

QTEST_GUILESS_MAIN(TestChannelWatchTurns)
#include "tst_channel_watch_turns.moc"
