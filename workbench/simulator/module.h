#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/channel.h"
#include "workbench/simulator/item_state.h"
#include "workbench/simulator/module_items.h"
#include "workbench/simulator/plant_layout.h"

#include <vector>

namespace simulator
{

/// A module and its channels. Whether it has power is its crate's business and is passed in; `now` is in seconds and
/// never before that of an earlier call. Not locked; the service does that.
///
/// Chosen for the simulation: "Control.installFirmware" takes any file name that is not empty and leaves the firmware
/// as it is. Without power every write is refused and the state is "disabled".
class Module
{
public:
    explicit Module(const ModuleLayout &moduleLayout);

    quint32 address() const { return layout.address; }
    std::size_t channelCount() const { return channels.size(); }

    ItemValue read(const ItemDefinition &item, bool isPowered, double now);
    TarnResult write(const ItemDefinition &item, const ItemValue &value, bool isPowered, double now);

    /// `channel` is below channelCount().
    ItemValue readChannel(std::size_t channel, const ItemDefinition &item, bool isPowered, double now);
    TarnResult writeChannel(std::size_t channel, const ItemDefinition &item, const ItemValue &value,
                            bool isPowered, double now);

    ChannelSnapshot channelSnapshot(std::size_t channel, bool isPowered, double now);

    /// All channels off at once, without a ramp.
    void dropOut(double now);
    void clearEvents(bool isPowered, double now);
    void clearErrors(bool isPowered, double now);
    RunningSummary summary(bool isPowered, double now);

private:
    ChannelEnvironment environment(bool isPowered, double now) const;
    ItemValue quantity(ModuleQuantity which, bool isPowered, double now);
    TarnResult writeQuantity(ModuleQuantity which, const ItemValue &value, double now);

    const ModuleLayout layout;
    std::vector<Channel> channels;
    ItemState state;
    double voltageRampspeed = DefaultVoltageRampspeed; // %/s
    bool adjustment = true;
};

} // namespace simulator
