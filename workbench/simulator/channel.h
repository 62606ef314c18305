#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/channel_items.h"
#include "workbench/simulator/channel_snapshot.h"
#include "workbench/simulator/item_state.h"
#include "workbench/simulator/running_summary.h"
#include "workbench/simulator/voltage_ramp.h"

namespace simulator
{

/// What a channel has in common with the others of its module, and the moment at which it is looked at.
struct ChannelEnvironment
{
    double nominalVoltage; ///< V
    double nominalCurrent; ///< A
    double voltageRampspeed; ///< percent of the nominal voltage per second
    double currentRampspeed; ///< percent of the nominal current per second
    bool isPowered;
    double now; ///< s; never before that of an earlier call
};

/// One output. Its voltage follows from the time that passed since it was last told something, so that a channel
/// nobody looks at costs nothing.
///
/// Chosen for the simulation:
/// - A set value above the limit or below 0 is refused, not cut, and raises "Event.inputError". The limits are the
///   nominal values: "(Module.Vlimit * Channel.Vnominal) / 100 %" with a Vlimit of 100 %.
/// - The voltage set value of a channel that is on takes effect at once, from the voltage that is there. The current
///   set value takes effect without a ramp: the output turns to constant current where the load would draw more.
/// - "Control.voltageRampspeedUp" and "...Down" follow the module's ramp speed until they are written; from then on
///   they are this channel's own, until the module's is written, which holds for all its channels again. Either way
///   the speed stays between "Status.voltageRampspeedMin" and "...Max" (0.001 and 100 % of nominal per second unless
///   written). A ramp that is under way goes on with the new speed. The same goes for the current's.
/// - "Event.endOfRamp" is raised by every ramp that comes to its end, also by the one down to 0.
/// - Emergency off is an error until it is left and the errors are cleared; "Control.on" is refused meanwhile.
/// - Without power every write is refused and the state is "disabled".
///
/// Not locked; the service does that.
class Channel
{
public:
    /// `loadOhm` is above 0, or NoLoad.
    Channel(double loadOhm, double nominalCurrent);

    ItemValue read(const ItemDefinition &item, const ChannelEnvironment &environment);

    /// `value` is within the item's own range. Failed when it makes no sense for the channel as it is.
    TarnResult write(const ItemDefinition &item, const ItemValue &value,
                     const ChannelEnvironment &environment);

    /// Off at once, without a ramp.
    void dropOut(const ChannelEnvironment &environment);

    /// The module was given another ramp speed.
    void followModuleRampspeed(const ChannelEnvironment &environment);
    void followModuleCurrentRampspeed();

    void clearEvents(const ChannelEnvironment &environment);
    void clearErrors(const ChannelEnvironment &environment);
    RunningSummary summary(const ChannelEnvironment &environment);
    ChannelSnapshot snapshot(const ChannelEnvironment &environment);

private:
    double voltage(double now) const;
    double current(double now) const;
    bool isCurrentLimited(double now) const;
    double rampspeed(bool up, const ChannelEnvironment &environment) const;
    quint32 conditions(const ChannelEnvironment &environment) const;
    ItemValue quantity(ChannelQuantity which, const ChannelEnvironment &environment);

    /// Brings events and errors up to date.
    void settle(const ChannelEnvironment &environment);
    void rampTo(double target, const ChannelEnvironment &environment);
    TarnResult writeQuantity(ChannelQuantity which, const ItemValue &value,
                             const ChannelEnvironment &environment);
    TarnResult writeRampspeed(ChannelQuantity which, double speed, const ChannelEnvironment &environment);
    TarnResult switchOn(bool on, const ChannelEnvironment &environment);
    TarnResult refuseInput();

    const double load; // Ohm
    double voltageSet = 0; // V
    double currentSet; // A
    VoltageRamp ramp;
    ItemState state;
    bool on = false;
    bool emergency = false;
    bool rampEndPending = false;
};

} // namespace simulator
