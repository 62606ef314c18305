#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/board_temperature.h"
#include "workbench/simulator/channel.h"
#include "workbench/simulator/channel_host.h"
#include "workbench/simulator/fault.h"
#include "workbench/simulator/item_state.h"
#include "workbench/simulator/module_items.h"
#include "workbench/simulator/plant_layout.h"
#include "workbench/simulator/plant_run.h"
#include "workbench/simulator/running_summary.h"

#include <functional>
#include <vector>

namespace simulator
{

/// Where a module or a crate is. Plain data; nothing is owned.
struct DevicePlace
{
    PlantRun *run;
    RunningSummary *above; ///< what it counts for
    QString controller; ///< connection name
    quint32 line;
    std::function<void(double)> heatChanged =
        {}; ///< called with the time when the module gives off more or less heat
};

/// A module and its channels. `now` is in s on the plant's clock and never before that of an earlier call. Not locked;
/// the service does that.
///
/// Chosen for the simulation:
/// - "Control.installFirmware" takes any file name that is not empty and leaves the firmware as it is. Without power every
///   write is refused and the state is "disabled".
/// - The board follows the power that its outputs gave when they last turned, with a time constant of two minutes, up to
///   25 degrees with all channels at their nominal power. Above 60 degrees "Status.temperatureGood" is false until it is
///   below 58.
/// - An open safety loop, a supply that is not good and a temperature that is not good switch all channels off without a
///   ramp; none can be switched on while that lasts, and "Status.interlockOut" is true. Each is an event and an error.
/// - Clearing clears module and channels as far as the causes are over, and is refused when one lasts, in the module or in
///   a channel.
/// - "Status.needService" is an error, no event, and has no other consequence.
/// - "Control.moduleEventMask" has a bit for each ModuleCondition, "Control.moduleChannelEventMask" one for each
///   ChannelCondition: an event whose bit is 0 does not count at the module, the crate and the system. Errors always do.
class Module final : private ChannelHost
{
public:
    Module(const ModuleLayout &moduleLayout, const DevicePlace &modulePlace);
    ~Module() = default;
    // Its channels know it.
    Module(const Module &) = delete;
    Module &operator=(const Module &) = delete;

    quint32 address() const { return layout.address; }
    std::size_t channelCount() const { return channels.size(); }

    ItemValue read(const ItemDefinition &item, double now) const;
    TarnResult write(const ItemDefinition &item, const ItemValue &value, double now);

    /// `channel` is below channelCount().
    ItemValue readChannel(std::size_t channel, const ItemDefinition &item, double now) const;
    TarnResult writeChannel(std::size_t channel, const ItemDefinition &item, const ItemValue &value,
                            double now);
    ChannelSnapshot channelSnapshot(std::size_t channel, double now) const;

    /// A fault of the module begins or ends.
    void applyFault(const Fault &fault, bool begins, double now);
    void applyChannelFault(std::size_t channel, const Fault &fault, bool begins, double now);

    /// Its supply comes or goes. Without it, all channels are off at once; `cause` is why it goes.
    void setPowered(bool isPowered, const SwitchOffCause &cause, double now);
    /// All channels off at once, without a ramp.
    void dropOut(const SwitchOffCause &cause, double now);
    /// Those of the module and of its channels. False when the cause of one lasts.
    bool clearEvents(double now);
    bool clearErrors(double now);

    double highestVoltage(double now) const; ///< V
    /// What its outputs gave when they last turned, in parts of their nominal power, 0 to 1.
    double heat() const;

private:
    const ChannelEnvironment &channelEnvironment() const override { return environment; }
    PlantRun &plantRun() override { return *place.run; }
    quint32 indexOf(const Channel &channel) const override;
    JournalEntry entryFor(const Channel &channel, double now) const override;
    void shutDown(const SwitchOffCause &cause, double now) override { dropOut(cause, now); }
    RunningSummary &summaryOfChannels() override { return summary; }
    void heatChanged(double now) override;

    JournalEntry entry(double now) const;
    double settingOf(ModuleSetting which, double fallback) const;
    void followSettings(double now);
    /// Carries out what its conditions ask for, and raises them.
    void settle(double now);
    void contribute();
    ItemValue quantity(ModuleQuantity which, double now) const;
    TarnResult clear(ModuleQuantity which, double now);
    TarnResult writeQuantity(ModuleQuantity which, const ItemValue &value, double now);

    const ModuleLayout layout;
    const DevicePlace place;
    RunningSummary summary;
    RunningCounts contributed;
    ChannelEnvironment environment;
    std::vector<Channel> channels;
    BoardTemperature temperature;
    ItemState state;
    quint32 faults = 0; // bits of ModuleCondition
    quint32 live = 0; // bits of ModuleCondition
    bool adjustment = true;
};

} // namespace simulator
