#include "workbench/simulator/channel_items.h"

namespace simulator
{

namespace
{

using Condition = ChannelCondition;
using Setting = ChannelSetting;
using Quantity = ChannelQuantity;
using namespace item_words;

constexpr ItemRange NotNegative{0, 1e9};

// clang-format off
constexpr ItemDefinition Rows[] = {
    command("Control.clearAll", Quantity::ClearAll),
    command("Control.clearEvents", Quantity::ClearEvents),
    quantity("Status.eventCounter", Int, Read, "", Quantity::EventCounter),
    command("Control.clearErrors", Quantity::ClearErrors),
    quantity("Status.errorCounter", Int, Read, "", Quantity::ErrorCounter),
    quantity("Status.runningState", String, Read, "", Quantity::RunningState),
    quantity("Control.voltageSet", Float, ReadWrite, "V", Quantity::VoltageSet),
    quantity("Status.voltageMeasure", Float, Read, "V", Quantity::VoltageMeasure),
    quantity("Status.voltageLimit", Float, Read, "V", Quantity::VoltageLimit),
    quantity("Status.voltageNominal", Float, Read, "V", Quantity::VoltageNominal),
    quantity("Control.currentSet", Float, ReadWrite, "A", Quantity::CurrentSet),
    quantity("Status.currentMeasure", Float, Read, "A", Quantity::CurrentMeasure),
    quantity("Status.currentLimit", Float, Read, "A", Quantity::CurrentLimit),
    quantity("Status.currentNominal", Float, Read, "A", Quantity::CurrentNominal),
    status("Status.voltageLimitExceeded", Condition::VoltageLimitExceeded),
    event("Event.voltageLimitExceeded", Condition::VoltageLimitExceeded),
    error("Error.voltageLimitExceeded", Condition::VoltageLimitExceeded),
    status("Status.currentLimitExceeded", Condition::CurrentLimitExceeded),
    event("Event.currentLimitExceeded", Condition::CurrentLimitExceeded),
    error("Error.currentLimitExceeded", Condition::CurrentLimitExceeded),
    setting("Setup.delayedTripAction", Int, "", Setting::DelayedTripAction, 0, {0, 4}),
    setting("Setup.delayedTripTime", Int, "ms", Setting::DelayedTripTime, 100, {0, 60000}),
    status("Status.currentTrip", Condition::CurrentTrip),
    event("Event.currentTrip", Condition::CurrentTrip),
    error("Error.currentTrip", Condition::CurrentTrip),
    setting("Setup.externalInhibitAction", Int, "", Setting::ExternalInhibitAction, 0, {0, 3}),
    status("Status.externalInhibitActive", Condition::ExternalInhibit),
    event("Event.externalInhibitActive", Condition::ExternalInhibit),
    error("Error.externalInhibitActive", Condition::ExternalInhibit),
    status("Status.voltageBoundExceeded", Condition::VoltageBoundExceeded),
    event("Event.voltageBoundExceeded", Condition::VoltageBoundExceeded),
    error("Error.voltageBoundExceeded", Condition::VoltageBoundExceeded),
    status("Status.currentBoundExceeded", Condition::CurrentBoundExceeded),
    event("Event.currentBoundExceeded", Condition::CurrentBoundExceeded),
    error("Error.currentBoundExceeded", Condition::CurrentBoundExceeded),
    status("Status.constantVoltage", Condition::ConstantVoltage),
    event("Event.constantVoltage", Condition::ConstantVoltage),
    status("Status.constantCurrent", Condition::ConstantCurrent),
    event("Event.constantCurrent", Condition::ConstantCurrent),
    quantity("Control.emergency", Bool, ReadWrite, "", Quantity::Emergency),
    status("Status.emergency", Condition::Emergency),
    event("Event.emergency", Condition::Emergency),
    error("Error.emergency", Condition::Emergency),
    quantity("Control.on", Bool, ReadWrite, "", Quantity::On),
    status("Status.on", Condition::On),
    status("Status.ramping", Condition::VoltageRamping),
    event("Event.endOfRamp", Condition::EndOfRamp),
    status("Status.arc", Condition::Arc),
    event("Event.arc", Condition::Arc),
    error("Error.arc", Condition::Arc),
    status("Status.lowCurrentRange", Condition::LowCurrentRange),
    setting("Control.channelEventMask", Int, "", Setting::ChannelEventMask, AnyMask.maximum, AnyMask),
    setting("Control.vctCoefficient", Float, "V/K", Setting::VctCoefficient, 0, {-1000, 1000}),
    constant("Status.temperatureExternal", Float, "°C", 22.5),
    event("Event.voltageBottom", Condition::VoltageBottom),
    status("Status.maxPower", Condition::MaxPower),
    event("Event.maxPower", Condition::MaxPower),
    status("Status.constantPower", Condition::ConstantPower),
    event("Event.constantPower", Condition::ConstantPower),
    status("Status.voltageBoundLower", Condition::VoltageBoundLower),
    event("Event.voltageBoundLower", Condition::VoltageBoundLower),
    status("Status.voltageBoundUpper", Condition::VoltageBoundUpper),
    event("Event.voltageBoundUpper", Condition::VoltageBoundUpper),
    status("Status.voltageRampDown", Condition::VoltageRampDown),
    event("Event.voltageRampDown", Condition::VoltageRampDown),
    status("Status.voltageRampUp", Condition::VoltageRampUp),
    event("Event.voltageRampUp", Condition::VoltageRampUp),
    status("Status.currentRampDown", Condition::CurrentRampDown),
    event("Event.currentRampDown", Condition::CurrentRampDown),
    status("Status.currentRampUp", Condition::CurrentRampUp),
    event("Event.currentRampUp", Condition::CurrentRampUp),
    status("Status.currentRamping", Condition::CurrentRamping),
    event("Event.endOfCurrentRamp", Condition::EndOfCurrentRamp),
    setting("Control.voltageBounds", Float, "V", Setting::VoltageBounds, 0, NotNegative),
    setting("Control.currentBounds", Float, "A", Setting::CurrentBounds, 0, NotNegative),
    status("Status.voltageRamping", Condition::VoltageRamping),
    setting("Setup.resistanceExternal", Float, "Ohm", Setting::ResistanceExternal, 0, {0, 1e15}),
    setting("Setup.voltageRampPriority", Int, "", Setting::VoltageRampPriority, 0, {0, 255}),
    setting("Setup.voltageBottom", Float, "%", Setting::VoltageBottom, 0, {0, 100}),
    setting("Setup.outputPolarity", Int, "", Setting::OutputPolarity, 0, {0, 1}), // 0 positive, 1 negative
    setting("Setup.outputMode", Int, "", Setting::OutputMode, 1, {1, 1}), // there is one mode, the nominal one
    quantity("Status.voltageMode", Float, Read, "V", Quantity::VoltageNominal),
    quantity("Status.voltageModeList", String, Read, "", Quantity::VoltageModeList),
    quantity("Status.currentMode", Float, Read, "A", Quantity::CurrentNominal),
    quantity("Status.currentModeList", String, Read, "", Quantity::CurrentModeList),
    quantity("Control.voltageRampspeedUp", Float, ReadWrite, "V/s", Quantity::VoltageRampspeedUp),
    quantity("Control.voltageRampspeedDown", Float, ReadWrite, "V/s", Quantity::VoltageRampspeedDown),
    quantity("Status.voltageRampspeedMin", Float, ReadWrite, "V/s", Quantity::VoltageRampspeedMin),
    quantity("Status.voltageRampspeedMax", Float, ReadWrite, "V/s", Quantity::VoltageRampspeedMax),
    quantity("Control.currentRampspeedUp", Float, ReadWrite, "mA/s", Quantity::CurrentRampspeedUp),
    quantity("Control.currentRampspeedDown", Float, ReadWrite, "mA/s", Quantity::CurrentRampspeedDown),
    quantity("Status.currentRampspeedMin", Float, ReadWrite, "mA/s", Quantity::CurrentRampspeedMin),
    quantity("Status.currentRampspeedMax", Float, ReadWrite, "mA/s", Quantity::CurrentRampspeedMax),
    event("Event.inputError", Condition::InputError),
    event("Event.arcError", Condition::ArcError),
};
// clang-format on

static_assert(namesAreUnique(Rows), "a channel item is listed twice");

} // namespace

const ItemTable &channelItems()
{
    static const ItemTable table(Rows);
    return table;
}

} // namespace simulator
