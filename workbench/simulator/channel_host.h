#pragma once

#include "workbench/simulator/output.h"
#include "workbench/simulator/plant_journal.h"
#include "workbench/simulator/plant_layout.h"
#include "workbench/simulator/plant_run.h"
#include "workbench/simulator/running_summary.h"

namespace simulator
{

class Channel;

/// What a channel has in common with the others of its module.
struct ChannelEnvironment
{
    OutputRating rating; ///< V and A
    double voltageLimit = 0; ///< V
    double currentLimit = 0; ///< A
    double voltageRampspeed = 0; ///< percent of the nominal voltage per second
    double currentRampspeed = 0; ///< percent of the nominal current per second
    MeasurementLayout measurement;
    double sampleRate = 500; ///< 1/s
    double filterSteps = 64;
    quint32 eventMask = ~quint32(0); ///< events that count at the module; bits of ChannelCondition
    quint64 chanceKey = 0; ///< of the module
    bool isNegative = false;
    bool isPowered = true;
    bool mayBeOn = true; ///< the module lets its channels be switched on
    bool kill = false;
};

/// Why channels are switched off by something else than a write to them. Plain data.
struct SwitchOffCause
{
    QString item; ///< that says it: "Error.currentTrip"; or was written by somebody: "Control.power"
    ObjectAddress object; ///< whose item that is
};

/// The module, as its channels see it.
class ChannelHost
{
public:
    virtual const ChannelEnvironment &channelEnvironment() const = 0;
    virtual PlantRun &plantRun() = 0;
    virtual quint32 indexOf(const Channel &channel) const = 0;

    /// An entry with the time and the channel's place.
    virtual JournalEntry entryFor(const Channel &channel, double now) const = 0;
    /// All channels off, without a ramp. Comes back to the channel that asks.
    virtual void shutDown(const SwitchOffCause &cause, double now) = 0;
    virtual RunningSummary &summaryOfChannels() = 0;
    /// What the channel's output gives has changed for good.
    virtual void heatChanged(double now) = 0;

protected:
    ChannelHost() = default;
    ~ChannelHost() = default;
    ChannelHost(const ChannelHost &) = default;
    ChannelHost &operator=(const ChannelHost &) = default;
};

} // namespace simulator
