#pragma once

#include "workbench/rehearsal/recording.h"
#include "workbench/simulator/channel_snapshot.h"
#include "workbench/simulator/plant_journal.h"

#include <QHash>

#include <functional>

namespace rehearsal
{

/// Follows the touched channels: their courses, peaks and ramps, and the limits that they cross. The plant is reached
/// through a function, so that a test can be one.
class ChannelWatch
{
public:
    static constexpr int MostPoints = 2000; ///< of a channel; fewer when many channels are touched
    static constexpr int MostRamps = 1000; ///< of a channel
    static constexpr int MostMarks = 500; ///< of a channel
    static constexpr int MostMarksButErrors = 450;
    static constexpr int MostCommandsAndEvents = 400; ///< so that many of them leave room for what went wrong

    /// How a channel is now; false when there is no such channel.
    using Look = std::function<bool(const QString &controller, const simulator::ObjectAddress &channel,
                                    simulator::ChannelSnapshot &snapshot)>;

    /// `recording`, of which the limits are complete, is kept and outlives the watch. `fail` gets what fails.
    /// `displayTexts` are those of the controllers, by connection name.
    ChannelWatch(Recording &recording, QHash<QString, QString> displayTexts, Look look,
                 std::function<void(const Finding &)> fail);

    /// From now on the channel is followed. Its index in the recording; -1 when there is no such channel.
    int touch(const QString &controller, const simulator::ObjectAddress &address);

    /// A channel takes another course; touches it.
    void addWaypoint(const simulator::JournalEntry &entry);
    void mark(int index, const Mark &mark);
    /// A protection switched a channel off; `why` in words.
    void trip(int index, double time, const QString &why);
    /// A channel reports an error, by its item's name, and was not switched off by it. Each item fails once.
    void error(int index, double time, const QString &item);

    /// Looks at every channel that changes, and now and then at the others; or at all of them. What the journal tells
    /// afterwards was before the look or after it, by its time; takeIn() follows when it has told all.
    void look(bool atAll);
    void takeIn();

    /// Whether any channel's voltage ramps, or may do so since the last look.
    bool isRamping() const;

    /// Completes what was said of each crossed limit when that happened: how often, and how far.
    void finish();

private:
    /// What is needed of a channel from one look to the next.
    struct State
    {
        TracePoint last;
        bool hasPoint = false; ///< the last one is one
        simulator::ChannelSnapshot seen; ///< at the last look
        bool isSeen = false; ///< and not taken in yet
        double voltageSet = 0; ///< V, as it is drawn
        bool isRamping = false;
        bool isRampListed = false; ///< the one that it is on
        double rampTarget = 0; ///< V, of that one, without a sign
        bool hasWaypoint = false; ///< since the last look
        int restingLooks = 0; ///< that found nothing new
        int looksLeftOut = 0;
        std::vector<bool> isBeyond; ///< for each of its limits
        QStringList errors; ///< that were told
    };

    void takeIn(std::size_t index);
    void add(std::size_t index, const TracePoint &point);
    void checkLimits(std::size_t index, const TracePoint &point);
    void cross(std::size_t index, int limit, double time);
    /// `before` in V, just before that point.
    void followRamp(std::size_t index, const TracePoint &point, double before, bool isRamping);
    /// A ramp is over where it gets another target, and the next one begins.
    void turnRamp(std::size_t index, const simulator::JournalEntry &entry);
    void endRamp(std::size_t index, double time, double voltage);

    Recording &recording;
    const QHash<QString, QString> displayTexts;
    const Look lookAt;
    const std::function<void(const Finding &)> report;
    QHash<QString, int> indices; ///< by the channel's name
    std::vector<State> states;
};

} // namespace rehearsal
