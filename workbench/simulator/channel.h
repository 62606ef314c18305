#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/channel_host.h"
#include "workbench/simulator/channel_items.h"
#include "workbench/simulator/channel_snapshot.h"
#include "workbench/simulator/event_queue.h"
#include "workbench/simulator/fault.h"
#include "workbench/simulator/item_state.h"
#include "workbench/simulator/output.h"
#include "workbench/simulator/running_summary.h"

namespace simulator
{

/// One output with its settings and its protection. What it does follows from the time that passed; what happens to it
/// by itself stands in the plant's queue, so that a channel at rest costs nothing. `now` is in s on the plant's clock,
/// never before that of an earlier call, and everything that was due before it has happened.
///
/// Chosen for the simulation:
/// - A set value above the limit or below 0 is refused, not cut, and raises "Event.inputError".
/// - The voltage set value of a channel that is on takes effect at once, from the voltage that is there. The current
///   set value takes effect without a ramp. Voltages and currents are without a sign, whatever the polarity.
/// - "Control.voltageRampspeedUp" and "...Down" follow the module's ramp speed until they are written; from then on
///   they are this channel's own, until the module's is written, which holds for all its channels again. Either way
///   the speed stays between "Status.voltageRampspeedMin" and "...Max" (0.001 and 100 % of nominal per second unless
///   written). A ramp that is under way goes on with the new speed. The same goes for the current's.
/// - "Event.endOfRamp" is raised when a ramp has come to its end and the voltage is there, also by the one down to 0. A
///   voltage that waits for the load to discharge the output still counts as ramping.
/// - The trip time runs while a channel that is on is in constant current. When it is over, "Status.currentTrip" is true
///   until the current has left its limit; event and error are raised whatever the action, but for action 4. With
///   "Control.kill" actions 0 and 1 become 2. It takes another time in constant current to trip again.
/// - Limits are compared with what is measured, without its noise; since no set value gets above them, it is an offset of
///   the measurement that exceeds them. With "Control.kill" the channel is then switched off without a ramp.
/// - While an external inhibit is active and its action is not 0, the channel cannot be switched on. Setting another
///   action then carries it out.
/// - A spark takes the voltage to 0 for 5 ms, in which "Status.arc" is true. The fifth since the errors were cleared
///   raises "Error.arc" and "Event.arcError" and switches the channel off without a ramp. Nothing sparks without voltage.
/// - Bounds are compared with what is measured, without its noise, while the channel is on and not ramping.
/// - Emergency off is left by writing false; until then the channel cannot be switched on.
/// - The journal has an entry for each occurrence of an event or an error, pending or not, and one for each channel that
///   is switched off by something else than a write to it.
/// - Clearing takes away what is over. What still is the case stays pending, which is no other occurrence; and when that
///   is an error, or the event of one, the write is refused. Regulation and ramps are events that are no errors: a channel
///   that is on always has some.
/// - "Control.channelEventMask" has a bit for each ChannelCondition; an event whose bit is 0 is raised, but counts only
///   at the channel. Errors always count.
/// - Without power every write is refused and the state is "disabled".
///
/// Not locked; the service does that.
class Channel final : public QueuedEvent
{
public:
    static constexpr double ArcDuration = 0.005; // s
    static constexpr double SparkSpacing = 0.010; // s between the sparks of a fault
    static constexpr int MostArcs = 5;

    /// `channelHost` is not owned and outlives the channel. Only a channel at rest is ever moved.
    Channel(const LoadLayout &load, ChannelHost &channelHost);

    ItemValue read(const ItemDefinition &item, double now) const;

    /// `value` is within the item's own range. Failed when it makes no sense for the channel as it is.
    TarnResult write(const ItemDefinition &item, const ItemValue &value, double now);

    /// Off at once, without a ramp.
    void dropOut(const SwitchOffCause &cause, double now);

    /// A fault of the channel's level begins or ends.
    void applyFault(const Fault &fault, bool begins, double now);

    /// The module was given other settings.
    void followModuleRampspeed(double now);
    void followModuleCurrentRampspeed();
    void followEnvironment(double now);

    /// False when an event of an error stays pending, since its cause lasts.
    bool clearEvents(double now);
    /// The same of the errors.
    bool clearErrors(double now);
    ChannelSnapshot snapshot(double now) const;

    bool isOn() const { return on; }
    double voltage(double now) const { return output.voltage(now); }
    /// What the output gave when it last turned, in parts of its nominal power.
    float heat() const { return powerShare; }

protected:
    void happen(double time) override;

private:
    enum class Due : quint8
    {
        Nothing,
        OutputTurns,
        Trip,
        ArcEnds,
        Spark,
        WatchCrossed,
    };

    /// Something that is looked out for while time passes.
    enum Watch : quint8
    {
        VoltageLimit,
        CurrentLimit,
        UpperVoltageBound,
        LowerVoltageBound,
        UpperCurrentBound,
        LowerCurrentBound,
        SparkingVoltage,
        WatchCount
    };

    /// What is an error while it is the case, as well as an event.
    static constexpr quint32 ErrorConditions = bit(ChannelCondition::VoltageLimitExceeded)
        | bit(ChannelCondition::CurrentLimitExceeded) | bit(ChannelCondition::CurrentTrip)
        | bit(ChannelCondition::ExternalInhibit) | bit(ChannelCondition::VoltageBoundExceeded)
        | bit(ChannelCondition::CurrentBoundExceeded) | bit(ChannelCondition::Emergency);

    struct WatchLevel
    {
        bool applies;
        double level; // V or A
    };

    const ChannelEnvironment &environment() const { return host->channelEnvironment(); }
    double rampspeed(bool up) const; // V/s
    double rampspeedSetting(ChannelQuantity which) const;
    quint32 conditions() const;
    ItemValue quantity(ChannelQuantity which, double now) const;
    double measured(double value, ChannelQuantity which, double now) const;
    double tripTime() const; // s
    int setting(ChannelSetting which, int fallback) const;

    /// Does something to the output and enters what came of it.
    template <class Change>
    void turn(double now, Change change);
    /// Brings everything up to date after something has changed.
    void settle(double now);
    void protect(double now);
    /// Moments.
    void raise(quint32 events, quint32 errors, double now);
    /// What is the case.
    void raiseLive(quint32 live, double now);
    RunningCounts counts() const;
    void contribute();
    void plan(double now);

    WatchLevel watchLevel(Watch watch) const;
    double timeOfWatch(Watch watch, double now) const;
    void updateWatches(double now);
    void followWatch(Watch watch, double now);

    void rampTo(double target, double now);
    void goOnRamping(double now);
    void setCurrent(double amperes, double now);
    void cutOff(double now);
    void switchOff(double now);
    void trip(double now);
    /// Carries out what the protection asks for; `condition` is why.
    void takeDown(int action, ChannelCondition condition, double now);
    void enterSwitchedOff(const SwitchOffCause &cause, double now);
    void spark(double now);
    void drawSpark(double now);
    bool mayBeSwitchedOn() const;
    TarnResult writeQuantity(ChannelQuantity which, const ItemValue &value, double now);
    TarnResult clear(ChannelQuantity which, double now);
    TarnResult writeRampspeed(ChannelQuantity which, double speed, double now);
    TarnResult switchOn(bool turnOn, double now);
    TarnResult refuseInput(double now);

    ChannelHost *host; // not owned
    Output output;
    double voltageSet = 0; // V
    double limitedSince = 0; // s; while `limited`
    double arcEnd = 0; // s; while `arcing`
    double nextSpark = Never; // s; of a fault, or by chance
    ItemState state;
    float powerShare = 0;
    quint32 draws = 0; // of chance
    quint32 entered = 0; // bits of ChannelCondition that are the case and in the journal
    quint16 sparksLeft = 0; // of a fault
    quint8 arcs = 0; // since the errors were cleared
    quint8 crossed = 0; // bits of Watch
    Due dueKind = Due::Nothing;
    quint8 dueDetail = 0; // the turn or the watch
    // What it contributes to the module.
    quint8 countedEvents = 0;
    quint8 countedErrors = 0;
    bool countedRamping : 1;
    bool countedOn : 1;
    bool on : 1;
    bool emergency : 1;
    bool rampEndPending : 1;
    bool limited : 1; // on and in constant current
    bool tripped : 1;
    bool inhibited : 1;
    bool arcing : 1;
};

} // namespace simulator
