#include "workbench/rehearsal/channel_watch.h"

#include "tests/rehearsal/example_recording.h"
#include "workbench/simulator/channel_items.h"

#include <QTest>

#include <cmath>
#include <memory>

using rehearsal::ChannelRecord;
using rehearsal::ChannelWatch;
using rehearsal::Finding;
using rehearsal::Recording;
using simulator::ChannelCondition;
using simulator::JournalEntry;

namespace
{

constexpr quint32 bit(ChannelCondition condition)
{
    return quint32{1} << static_cast<unsigned>(condition);
}

constexpr quint32 On = bit(ChannelCondition::On);
constexpr quint32 Ramping = On | bit(ChannelCondition::VoltageRamping);

} // namespace

/// Against a channel that the test moves.
class TestChannelWatch : public QObject
{
    Q_OBJECT

private:
    Recording recording;
    QVector<Finding> failures;
    simulator::ChannelSnapshot now;
    bool exists = true;
    int looks = 0;
    std::unique_ptr<ChannelWatch> watch;

    void limit(const char *text)
    {
        rehearsal::Limit made;
        QString error;
        if (!rehearsal::parseLimit(QString::fromLatin1(text), made, error))
            qFatal("%s", qPrintable(error));
        recording.limits.append(made);
    }

    int touch() { return watch->touch(QStringLiteral("local"), channelAddress(0, 2, 1)); }
    const ChannelRecord &channel() const { return recording.channels.at(0); }

    void at(double time, double voltage, quint32 status)
    {
        now.time = time;
        now.voltage = voltage;
        now.current = voltage / 1e6;
        now.status = status;
        watch->look(false);
        watch->takeIn();
    }

    void waypoint(double time, double before, double voltage, bool isRamping = false)
    {
        JournalEntry entry;
        entry.kind = JournalEntry::Waypoint;
        entry.time = time;
        entry.controller = QStringLiteral("local");
        entry.object = channelAddress(0, 2, 1);
        entry.voltageBefore = before;
        entry.currentBefore = before / 1e6;
        entry.voltage = voltage;
        entry.current = voltage / 1e6;
        entry.isRamping = isRamping;
        entry.voltageSet = 1000;
        watch->addWaypoint(entry);
    }

private Q_SLOTS:
    void init()
    {
        recording = {};
        failures.clear();
        exists = true;
        looks = 0;
        now = {};
        now.voltageNominal = 2000;
        now.currentNominal = 0.004;
        now.voltageLimit = 1800;
        now.currentLimit = 0.003;
        now.voltageSet = 1000;
        watch = std::make_unique<ChannelWatch>(
            recording,
            QHash<QString, QString>{{QStringLiteral("local"), QStringLiteral("Rehearsal controller")}},
            [this](const QString &, const simulator::ObjectAddress &, simulator::ChannelSnapshot &snapshot) {
                ++looks;
                snapshot = now;
                return exists;
            },
            [this](const Finding &finding) {
                failures.append(finding);
                recording.failures.push_back(finding);
            });
    }

    void followsWhatIsTouched()
    {
        QCOMPARE(touch(), 0);
        QCOMPARE(touch(), 0);
        QCOMPARE(watch->touch(QStringLiteral("local"), channelAddress(0, 2, 2)), 1);
        QCOMPARE(recording.channels.size(), std::size_t{2});
        QCOMPARE(channel().name(), QStringLiteral("local/0.2.1"));
        QCOMPARE(channel().controllerText, QStringLiteral("Rehearsal controller"));
        QCOMPARE(channel().voltageNominal, 2000.0);
        QCOMPARE(channel().voltageLimit, 1800.0);
        QCOMPARE(channel().currentLimit, 0.003);
    }

    void followsChannelsOnly()
    {
        simulator::ObjectAddress module = channelAddress(0, 2, -1);
        module.level = OrbItemId::Module;
        QCOMPARE(watch->touch(QStringLiteral("local"), module), -1);
        exists = false;
        QCOMPARE(touch(), -1);
        QVERIFY(recording.channels.empty());
    }

    void findsThePeaks()
    {
        touch();
        at(1, 500, On);
        at(2, 900, On);
        at(3, 100, On);
        QCOMPARE(channel().voltage.value, 900.0);
        QCOMPARE(channel().voltage.time, 2.0);
        QCOMPARE(channel().current.value, 900e-6);
    }

    void aFlatCoursePeaksWhereItBegins()
    {
        touch();
        at(3, 0, 0);
        at(4, 0, 0);
        QCOMPARE(channel().voltage.time, 3.0);
        QCOMPARE(channel().current.time, 3.0);
    }

    void findsANegativePeak()
    {
        touch();
        at(1, -500, On);
        at(2, 100, On);
        QCOMPARE(channel().voltage.value, -500.0);
    }

    // Between two looks the channel was higher than at either.
    void findsThePeakBetweenTwoLooks()
    {
        touch();
        at(1, 500, On);
        waypoint(1.01, 1200, 0);
        at(1.05, 0, 0);
        QCOMPARE(channel().voltage.value, 1200.0);
        QCOMPARE(channel().voltage.time, 1.01);
    }

    void tellsACrossedLimitOnce()
    {
        limit("0.2.1.voltage<=800 V");
        limit("0.2.9.voltage<=1 V");
        limit("*.current<=2 mA");
        touch();
        at(1, 700, Ramping);
        at(2, 800, Ramping);
        QCOMPARE(failures.size(), 0);
        at(3, 900, Ramping);
        at(4, 950, Ramping);
        QCOMPARE(failures.size(), 1);
        const Finding &failure = failures.constFirst();
        QCOMPARE(failure.kind, Finding::LimitCrossed);
        QCOMPARE(failure.channel, QStringLiteral("local/0.2.1"));
        QCOMPARE(failure.text,
                 QStringLiteral("The voltage of channel local/0.2.1 crosses the limit "
                                "\"0.2.1.voltage<=800 V\"."));
        QVERIFY(channel().crossed);
        QCOMPARE(channel().limits, (QVector<int>{0, 2}));
        QCOMPARE(channel().marks.size(), std::size_t{1});
        QCOMPARE(channel().marks.at(0).kind, rehearsal::Mark::LimitCrossed);
        watch->finish();
        QCOMPARE(recording.failures.at(0).text,
                 QStringLiteral("The voltage of channel local/0.2.1 crosses the limit "
                                "\"0.2.1.voltage<=800 V\" at 2.000 s, and comes to 950 V."));
    }

    // Back within the limit, it can be crossed again: one failure, and a mark for each.
    void countsTheCrossingsOfALimit()
    {
        limit("*.voltage<=800 V");
        touch();
        at(1, 700, Ramping);
        at(2, 900, Ramping);
        at(3, 801, Ramping);
        at(4, -700, Ramping);
        at(5, -1000, Ramping);
        at(6, 800, Ramping);
        at(7, 850, Ramping);
        QCOMPARE(failures.size(), 1);
        QCOMPARE(channel().crossings.size(), std::size_t{1});
        QCOMPARE(channel().crossings.at(0).limit, 0);
        QCOMPARE(channel().crossings.at(0).count, 3);
        QCOMPARE(channel().crossings.at(0).first, 1.5);
        QCOMPARE(channel().crossings.at(0).highest, -1000.0);
        QVector<double> times;
        for (const rehearsal::Mark &mark : channel().marks)
            times.append(mark.time);
        QCOMPARE(times.size(), 3);
        QCOMPARE(times.at(0), 1.5);
        QVERIFY(times.at(1) > 4 && times.at(1) < 5);
        QCOMPARE(times.at(2), 6.0);
        watch->finish();
        QVERIFY2(recording.failures.at(0).text.endsWith(
                     QStringLiteral(" 3 times, first at 1.500 s, and comes to -1000 V.")),
                 qPrintable(recording.failures.at(0).text));
    }

    void followsAnyNumberOfLimits()
    {
        for (int i = 1; i <= 40; ++i)
            limit(qPrintable(QStringLiteral("*.voltage<=%1 V").arg(10 * i)));
        touch();
        at(1, 0, Ramping);
        at(2, 1000, Ramping);
        QCOMPARE(failures.size(), 40);
    }

    void tellsWhenALimitWasCrossed()
    {
        limit("*.voltage<=800 V");
        touch();
        at(1, 700, Ramping);
        at(2, 900, Ramping);
        QCOMPARE(failures.constFirst().time, 1.5);
    }

    void tellsALimitThatWasCrossedBetweenTwoLooks()
    {
        limit("*.voltage<=800 V");
        touch();
        at(1, 700, Ramping);
        waypoint(1.02, 850, 0);
        at(1.05, 0, 0);
        QCOMPARE(failures.size(), 1);
        QVERIFY(failures.constFirst().time > 1 && failures.constFirst().time < 1.02);
    }

    void measuresARamp()
    {
        touch();
        at(1, 0, 0);
        waypoint(1.02, 0, 0, true); // switched on
        at(1.05, 30, Ramping);
        QVERIFY(watch->isRamping());
        at(1.5, 480, Ramping);
        waypoint(2.02, 1000, 1000); // there
        at(2.05, 1000, On);
        QVERIFY(!watch->isRamping());
        QCOMPARE(channel().ramps.size(), std::size_t{1});
        QCOMPARE(channel().ramps.at(0).begin, 1.02);
        QCOMPARE(channel().ramps.at(0).end, 2.02);
        QCOMPARE(channel().ramps.at(0).from, 0.0);
        QCOMPARE(channel().ramps.at(0).to, 1000.0);
        QCOMPARE(channel().endState, QStringLiteral("on"));
    }

    void measuresARampThatIsCutOff()
    {
        touch();
        at(1, 0, 0);
        waypoint(1.02, 0, 0, true);
        at(1.5, 480, Ramping);
        waypoint(1.52, 500, 0); // off without a ramp
        at(1.55, 0, 0);
        QCOMPARE(channel().ramps.size(), std::size_t{1});
        QCOMPARE(channel().ramps.at(0).end, 1.52);
        QCOMPARE(channel().ramps.at(0).to, 500.0);
    }

    // The first that is heard of a channel is that it was switched on, when it ramps already.
    void measuresTheRampOfWhatIsTouchedByIt()
    {
        now.voltage = 20;
        now.status = Ramping;
        touch();
        waypoint(1.02, 0, 0, true);
        at(1.05, 30, Ramping);
        at(2, 1000, On);
        QCOMPARE(channel().ramps.size(), std::size_t{1});
        QCOMPARE(channel().ramps.at(0).begin, 1.02);
        QCOMPARE(channel().ramps.at(0).from, 0.0);
        QCOMPARE(channel().trace.points().front().time, 1.02);
    }

    void tellsALimitThatIsCrossedFromTheBeginning()
    {
        limit("*.voltage<=800 V");
        touch();
        at(5, 900, On);
        QCOMPARE(failures.size(), 1);
        QCOMPARE(failures.constFirst().time, 5.0);
    }

    void measuresARampFromLooksAlone()
    {
        touch();
        at(1, 0, 0);
        at(1.05, 30, Ramping);
        at(2, 1000, On);
        QCOMPARE(channel().ramps.size(), std::size_t{1});
        QCOMPARE(channel().ramps.at(0).begin, 1.05);
        QCOMPARE(channel().ramps.at(0).end, 2.0);
    }

    // The journal is read after the look, and tells what was after it too.
    void aWaypointMayBeAfterTheLook()
    {
        touch();
        at(1, 0, 0);
        now.time = 1.05;
        watch->look(false);
        waypoint(1.06, 0, 0, true);
        watch->takeIn();
        QVERIFY(watch->isRamping());
        at(1.1, 40, Ramping);
        at(2, 940, Ramping);
        now.time = 2.05;
        now.voltage = 990;
        watch->look(false);
        waypoint(2.06, 1000, 1000);
        watch->takeIn();
        at(2.1, 1000, On);
        QVERIFY(!watch->isRamping());
        QCOMPARE(channel().ramps.size(), std::size_t{1});
        QCOMPARE(channel().ramps.at(0).begin, 1.06);
        QCOMPARE(channel().ramps.at(0).end, 2.06);
    }

    void measuresRampsBetweenTwoLooks()
    {
        touch();
        at(1, 0, 0);
        waypoint(1.01, 0, 0, true);
        waypoint(1.02, 20, 20);
        waypoint(1.03, 20, 20, true);
        waypoint(1.04, 10, 10);
        at(1.05, 10, On);
        at(1.1, 10, On);
        QCOMPARE(channel().ramps.size(), std::size_t{2});
        QCOMPARE(channel().ramps.at(0).begin, 1.01);
        QCOMPARE(channel().ramps.at(0).end, 1.02);
        QCOMPARE(channel().ramps.at(0).to, 20.0);
        QCOMPARE(channel().ramps.at(1).begin, 1.03);
        QCOMPARE(channel().ramps.at(1).end, 1.04);
        QCOMPARE(channel().ramps.at(1).from, 20.0);
        QCOMPARE(channel().ramps.at(1).to, 10.0);
    }

    void rampsAreBounded()
    {
        touch();
        for (int i = 1; i <= ChannelWatch::MostRamps + 2; ++i) {
            waypoint(i, 0, 0, true);
            waypoint(i + 0.5, 20, 20);
        }
        QCOMPARE(channel().ramps.size(), static_cast<std::size_t>(ChannelWatch::MostRamps));
        QCOMPARE(channel().ramps.back().end, ChannelWatch::MostRamps + 0.5);
        QCOMPARE(channel().rampsLeftOut, 2);
    }

    // A load that breaks down for a moment is no ramp.
    void aBreakdownIsNoRamp()
    {
        touch();
        at(1, 500, On);
        waypoint(1.01, 500, 0);
        waypoint(1.03, 0, 500);
        at(1.05, 500, On);
        QVERIFY(channel().ramps.empty());
    }

    void whatIsTouchedMayRamp()
    {
        QVERIFY(!watch->isRamping());
        touch();
        QVERIFY(watch->isRamping());
        at(1, 0, 0);
        QVERIFY(!watch->isRamping());
    }

    void aRampMayNotBeOver()
    {
        touch();
        at(1, 0, Ramping);
        now.voltage = 300;
        now.time = 1.3;
        watch->look(true);
        watch->takeIn();
        QVERIFY(std::isnan(channel().ramps.at(0).end));
        QCOMPARE(channel().ramps.at(0).to, 300.0);
        QCOMPARE(channel().endState, QStringLiteral("ramping"));
    }

    void drawsTheSetVoltageOnTheSideOfTheOutput()
    {
        touch();
        at(1, -500, On);
        QCOMPARE(channel().trace.points().back().voltageSet, -1000.0);
        at(2, 0, 0);
        QCOMPARE(channel().trace.points().back().voltageSet, 0.0);
    }

    // A thousand channels that nothing happens to must not cost a look each, twenty times a second.
    void looksSeldomAtWhatRests()
    {
        touch();
        for (int i = 0; i < 1000; ++i)
            at(i, 0, 0);
        QVERIFY2(looks < 100, qPrintable(QString::number(looks)));
        const int before = looks;
        touch();
        at(1001, 0, 0);
        QVERIFY(looks > before);
    }

    void tellsATrip()
    {
        const int index = touch();
        watch->trip(index, 1.5, QStringLiteral("its protection: current trip"));
        QVERIFY(channel().tripped);
        QVERIFY(!channel().reportedError);
        QCOMPARE(failures.size(), 1);
        QCOMPARE(failures.constFirst().kind, Finding::Trip);
        QCOMPARE(failures.constFirst().time, 1.5);
        QCOMPARE(failures.constFirst().text,
                 QStringLiteral("Channel local/0.2.1 was switched off by its protection: current trip."));
    }

    void tellsAnErrorOnce()
    {
        const int index = touch();
        watch->error(index, 1.5, QStringLiteral("Error.currentTrip"));
        watch->error(index, 2.5, QStringLiteral("Error.currentTrip"));
        watch->error(index, 3.5, QStringLiteral("Error.arc"));
        QVERIFY(!channel().tripped);
        QVERIFY(channel().reportedError);
        QCOMPARE(failures.size(), 2);
        QCOMPARE(failures.constFirst().kind, Finding::Error);
        QCOMPARE(failures.constFirst().time, 1.5);
        QCOMPARE(failures.constFirst().channel, QStringLiteral("local/0.2.1"));
        QVERIFY(failures.constFirst().text.contains(QStringLiteral("\"Error.currentTrip\"")));
        QVERIFY(failures.constLast().text.contains(QStringLiteral("\"Error.arc\"")));
    }

    void marksAreBounded()
    {
        const int index = touch();
        const auto add = [&](rehearsal::Mark::Kind kind, int count) {
            for (int i = 0; i < count; ++i)
                watch->mark(index, {kind, double(i), -1, QString()});
        };
        add(rehearsal::Mark::Event, ChannelWatch::MostCommandsAndEvents + 2);
        QCOMPARE(channel().marks.size(), static_cast<std::size_t>(ChannelWatch::MostCommandsAndEvents));
        QCOMPARE(channel().marksLeftOut, 2);
        // What went wrong is not lost among them.
        add(rehearsal::Mark::LimitCrossed, ChannelWatch::MostMarks);
        QCOMPARE(channel().marks.size(), static_cast<std::size_t>(ChannelWatch::MostMarksButErrors));
        add(rehearsal::Mark::Error, 1);
        QCOMPARE(channel().marks.back().kind, rehearsal::Mark::Error);
        add(rehearsal::Mark::Error, ChannelWatch::MostMarks);
        QCOMPARE(channel().marks.size(), static_cast<std::size_t>(ChannelWatch::MostMarks));
    }
};

QTEST_GUILESS_MAIN(TestChannelWatch)
#include "tst_channel_watch.moc"
