#include "orbclient/channel_object.h"

#include "orbclient/method_definitions.h"
#include "orbclient/object_type.h"
#include "orbclient/py_ref.h"

#include <array>
#include <cstddef>

namespace orbclient
{

namespace
{

struct ChannelObject
{
    PyObject_HEAD PyObject *connection;
    PyObject *line;
    PyObject *module;
    PyObject *index;
    OrbClient *client;
};

constexpr Conversion Automatic = Conversion::Automatic;
constexpr Conversion Integer = Conversion::Integer;
constexpr Conversion FloatingPoint = Conversion::FloatingPoint;

// clang-format off
constexpr std::array methods = {
    set("setControlClearAll", "Control.clearAll", "clear all channel events and channel errors"),
    set("setControlClearEvents", "Control.clearEvents", "clear all channel events"),
    get("getStatusEventCounter", "Status.eventCounter", Integer, "amount of occured channel events"),
    set("setControlClearErrors", "Control.clearErrors", "clear all channel errors"),
    get("getStatusErrorCounter", "Status.errorCounter", Integer, "amount of occured channel errors"),
    get("getStatusRunningState", "Status.runningState", Automatic, "channel state:, error - channel has an error, info - channel is ramping, ok - HV is on, off - HV is off, disabled - channel not available"),
    get("getControlVoltageSet", "Control.voltageSet", FloatingPoint, "voltage set value"),
    set("setControlVoltageSet", "Control.voltageSet", "voltage set value"),
    get("getStatusVoltageMeasure", "Status.voltageMeasure", FloatingPoint, "measured voltage"),
    getWithTimestamp("getStatusVoltageMeasureWithTimestamp", "Status.voltageMeasure", FloatingPoint, "measured voltage and timestamp"),
    get("getStatusVoltageLimit", "Status.voltageLimit", FloatingPoint, "(Module.Vlimit * Channel.Vnominal)/100% (Sliderlimit, defined by Hardware or Software)"),
    get("getStatusVoltageNominal", "Status.voltageNominal", FloatingPoint, "nominal voltage"),
    get("getControlCurrentSet", "Control.currentSet", FloatingPoint, "current set value"),
    set("setControlCurrentSet", "Control.currentSet", "current set value"),
    get("getStatusCurrentMeasure", "Status.currentMeasure", FloatingPoint, "measured current"),
    getWithTimestamp("getStatusCurrentMeasureWithTimestamp", "Status.currentMeasure", FloatingPoint, "measured current and timestamp"),
    get("getStatusCurrentLimit", "Status.currentLimit", FloatingPoint, "(Module.Ilimit * Channel.Inominal)/100% (Sliderlimit defined by hardware or software)"),
    get("getStatusCurrentNominal", "Status.currentNominal", FloatingPoint, "nominal current"),
    get("getStatusVoltageLimitExceeded", "Status.voltageLimitExceeded", Automatic, "voltage limit exceeded"),
    get("getEventVoltageLimitExceeded", "Event.voltageLimitExceeded", Automatic, "voltage limit has been exceeded, HV turned off if KILL == 1"),
    get("getErrorVoltageLimitExceeded", "Error.voltageLimitExceeded", Automatic, "voltage limit has been exceeded, HV turned off if KILL == 1"),
    get("getStatusCurrentLimitExceeded", "Status.currentLimitExceeded", Automatic, "current limit exceeded"),
    get("getEventCurrentLimitExceeded", "Event.currentLimitExceeded", Automatic, "current limit exceeded, HV turned off if KILL == 1"),
    get("getErrorCurrentLimitExceeded", "Error.currentLimitExceeded", Automatic, "current limit exceeded, HV turned off if KILL == 1"),
    get("getSetupDelayedTripAction", "Setup.delayedTripAction", Automatic, "action on a trip event:, 0 = no action,, 1 = shut down voltage of the channel with ramp,, 2 = shut down voltage of the channel without ramp,, 3 = shut down the whole module without ramp,, 4 = disable the delayed trip action (no Event.trip generation)"),
    set("setSetupDelayedTripAction", "Setup.delayedTripAction", "action on a trip event:, 0 = no action,, 1 = shut down voltage of the channel with ramp,, 2 = shut down voltage of the channel without ramp,, 3 = shut down the whole module without ramp,, 4 = disable the delayed trip action (no Event.trip generation)"),
    get("getSetupDelayedTripTime", "Setup.delayedTripTime", Automatic, "time in ms until delayedTripAction is called"),
    set("setSetupDelayedTripTime", "Setup.delayedTripTime", "time in ms until delayedTripAction is called"),
    get("getStatusTrip", "Status.currentTrip", Automatic, "current trip limit exceeded"),
    get("getEventTrip", "Event.currentTrip", Automatic, "currrent trip limit exceeded, HV turned off"),
    get("getErrorTrip", "Error.currentTrip", Automatic, "current trip limit exceeded, HV turned off"),
    get("getSetupExternalInhibitAction", "Setup.externalInhibitAction", Automatic, "action on external inhibit active:, 0 = no action,, 1 = ramp down voltage of this channel,, 2 = shut down high voltage of the channel without ramp,, 3 = shut down the whole module without ramp"),
    set("setSetupExternalInhibitAction", "Setup.externalInhibitAction", "action on external inhibit active:, 0 = no action,, 1 = ramp down voltage of this channel,, 2 = shut down high voltage of the channel without ramp,, 3 = shut down the whole module without ramp"),
    get("getStatusExternalInhibitActive", "Status.externalInhibitActive", Automatic, "Inhibit active"),
    get("getEventExternalInhibitActive", "Event.externalInhibitActive", Automatic, "Inhibit has been active; HV turned off"),
    get("getErrorExternalInhibitActive", "Error.externalInhibitActive", Automatic, "Inhibit has been active; HV turned off"),
    get("getStatusVoltageBoundExceeded", "Status.voltageBoundExceeded", Automatic, "voltage tolerance range left (upper and/or lower)"),
    get("getEventVoltageBoundExceeded", "Event.voltageBoundExceeded", Automatic, "voltage tolerance range has been left (upper and/or lower)"),
    get("getErrorVoltageBoundExceeded", "Error.voltageBoundExceeded", Automatic, "voltage tolerance range left (upper and/or lower)"),
    get("getStatusCurrentBoundExceeded", "Status.currentBoundExceeded", Automatic, "current tolerance range left (upper and/or lower)"),
    get("getEventCurrentBoundExceeded", "Event.currentBoundExceeded", Automatic, "current tolerance range has been left (upper and/or lower)"),
    get("getErrorCurrentBoundExceeded", "Error.currentBoundExceeded", Automatic, "current tolerance range has been left (upper and/or lower)"),
    get("getStatusConstantVoltage", "Status.constantVoltage", Automatic, "in constant voltage regulation"),
    get("getEventConstantVoltage", "Event.constantVoltage", Automatic, "has been or is in constant voltage regulation"),
    get("getStatusConstantCurrent", "Status.constantCurrent", Automatic, "is in constant current regulation"),
    get("getEventConstantCurrent", "Event.constantCurrent", Automatic, "channel has been or is in constant current regulation"),
    get("getControlEmergency", "Control.emergency", Automatic, "1 = switch channel without ramp to \"Emergency Off\", turn-on-lock is active; 0 = exit \"Emergency Off\""),
    set("setControlEmergency", "Control.emergency", "1 = switch channel without ramp to \"Emergency Off\", turn-on-lock is active; 0 = exit \"Emergency Off\""),
    get("getStatusEmergency", "Status.emergency", Automatic, "\"Emergency Off\" is active"),
    get("getEventEmergency", "Event.emergency", Automatic, "\"Emergency Off\" has been active; HV has been turned off"),
    get("getErrorEmergency", "Error.emergency", Automatic, "\"Emergency Off\" has been active; HV has been turned off"),
    get("getControlOn", "Control.on", Automatic, "1 = turn on channel with ramp; 0 = turn off channel with ramp"),
    set("setControlOn", "Control.on", "1 = turn on channel with ramp; 0 = turn off channel with ramp"),
    get("getStatusOn", "Status.on", Automatic, "HV is turned on"),
    get("getStatusRamping", "Status.ramping", Automatic, "HV is changing with specified ramp"),
    get("getEventEndOfRamp", "Event.endOfRamp", Automatic, "set value reached; ramping ends"),
    get("getStatusArc", "Status.arc", Automatic, "arc detected"),
    get("getEventArc", "Event.arc", Automatic, "at least one arc has been detected"),
    get("getErrorArc", "Error.arc", Automatic, "maximum amount of allowed arcs reached"),
    get("getStatusLowCurrentRange", "Status.lowCurrentRange", Automatic, "Current is measured in 2nd Current Range"),
    get("getControlChannelEventMask", "Control.channelEventMask", Automatic, "bitmask to mask/unmask channel events"),
    set("setControlChannelEventMask", "Control.channelEventMask", "bitmask to mask/unmask channel events"),
    get("getControlVctCoefficient", "Control.vctCoefficient", Automatic, "VCT coefficient"),
    set("setControlVctCoefficient", "Control.vctCoefficient", "VCT coefficient"),
    get("getStatusTemperatureExternal", "Status.temperatureExternal", Automatic, "temperature of external sensor"),
    get("getEventVoltageBottom", "Event.voltageBottom", Automatic, "Output has been set to voltage bottom after a trip"),
    get("getStatusMaxPower", "Status.maxPower", Automatic, "Max power is reached"),
    get("getEventMaxPower", "Event.maxPower", Automatic, "Max power has been or is reached"),
    get("getStatusConstantPower", "Status.constantPower", Automatic, "In constant power regulation"),
    get("getEventConstantPower", "Event.constantPower", Automatic, "Has been or is in constant power regulation"),
    get("getStatusVoltageBoundLower", "Status.voltageBoundLower", Automatic, "HV is lower than the lower voltage bound"),
    get("getEventVoltageBoundLower", "Event.voltageBoundLower", Automatic, "HV has been or is lower than to the lower voltage bound"),
    get("getStatusVoltageBoundUpper", "Status.voltageBoundUpper", Automatic, "HV is higher than the upper voltage bound"),
    get("getEventVoltageBoundUpper", "Event.voltageBoundUpper", Automatic, "HV has been or is higher than the upper voltage bound"),
    get("getStatusVoltageRampDown", "Status.voltageRampDown", Automatic, "HV is ramping down with specified ramp"),
    get("getEventVoltageRampDown", "Event.voltageRampDown", Automatic, "HV has been or is ramp down"),
    get("getStatusVoltageRampUp", "Status.voltageRampUp", Automatic, "HV is ramping up with specified ramp"),
    get("getEventVoltageRampUp", "Event.voltageRampUp", Automatic, "HV has been or is ramp up"),
    get("getStatusCurrentRampDown", "Status.currentRampDown", Automatic, "Current is ramping down with specified ramp"),
    get("getEventCurrentRampDown", "Event.currentRampDown", Automatic, "Current has been or is ramp down"),
    get("getStatusCurrentRampUp", "Status.currentRampUp", Automatic, "Current is ramping up with specified ramp"),
    get("getEventCurrentRampUp", "Event.currentRampUp", Automatic, "Current has been or is ramp up"),
    get("getStatusCurrentRamping", "Status.currentRamping", Automatic, "Current is changing with specified ramp"),
    get("getEventEndOfCurrentRamp", "Event.endOfCurrentRamp", Automatic, "current set value reached; ramping ends"),
    get("getControlVoltageBounds", "Control.voltageBounds", FloatingPoint, "voltage tolerance-bounds value relative (+/-) to voltage set"),
    set("setControlVoltageBounds", "Control.voltageBounds", "voltage tolerance-bounds value relative (+/-) to voltage set"),
    get("getControlCurrentBounds", "Control.currentBounds", Automatic, "current tolerance-bounds value relative (+/-) to current set"),
    set("setControlCurrentBounds", "Control.currentBounds", "current tolerance-bounds value relative (+/-) to current set"),
    get("getStatusVoltageRamping", "Status.voltageRamping", Automatic, "HV is changing with specified ramp"),
    get("getSetupResistanceExternal", "Setup.resistanceExternal", Automatic, "resistance external, option stacked output channels"),
    set("setSetupResistanceExternal", "Setup.resistanceExternal", "resistance external, option stacked output channels"),
    get("getSetupVoltageRampPriority", "Setup.voltageRampPriority", Automatic, "priority controlled voltage ramp, option stacked output channels"),
    set("setSetupVoltageRampPriority", "Setup.voltageRampPriority", "priority controlled voltage ramp, option stacked output channels"),
    get("getSetupVoltageBottom", "Setup.voltageBottom", Automatic, "reduce output voltage to the percentage value = p * voltageSet / 100, option stacked output channels"),
    set("setSetupVoltageBottom", "Setup.voltageBottom", "reduce output voltage to the percentage value = p * voltageSet / 100, option stacked output channels"),
    get("getSetupOutputPolarity", "Setup.outputPolarity", Automatic, "polarity, option switchable polarity"),
    set("setSetupOutputPolarity", "Setup.outputPolarity", "polarity, option switchable polarity"),
    get("getSetupOutputMode", "Setup.outputMode", Automatic, "number of HV mode, option switchable HV-generation modes"),
    set("setSetupOutputMode", "Setup.outputMode", "number of HV mode, option switchable HV-generation modes"),
    get("getStatusVoltageMode", "Status.voltageMode", Automatic, "voltage mode, option switchable HV-generation modes"),
    get("getStatusVoltageModeList", "Status.voltageModeList", Automatic, "voltage mode list, option switchable HV-generation modes"),
    get("getStatusCurrentMode", "Status.currentMode", Automatic, "current mode, option switchable HV-generation modes"),
    get("getStatusCurrentModeList", "Status.currentModeList", Automatic, "current mode list, option switchable HV-generation modes"),
    get("getControlVoltageRampspeedUp", "Control.voltageRampspeedUp", Automatic, "rampspeed to increase the voltage in V/s"),
    set("setControlVoltageRampspeedUp", "Control.voltageRampspeedUp", "rampspeed to increase the voltage in V/s"),
    get("getControlVoltageRampspeedDown", "Control.voltageRampspeedDown", Automatic, "rampspeed to decrease the voltage in V/s"),
    set("setControlVoltageRampspeedDown", "Control.voltageRampspeedDown", "rampspeed to decrease the voltage in V/s"),
    get("getStatusVoltageRampspeedMin", "Status.voltageRampspeedMin", Automatic, "minimun rampspeed to change the voltage in V/s"),
    set("setStatusVoltageRampspeedMin", "Status.voltageRampspeedMin", "minimun rampspeed to change the voltage in V/s"),
    get("getStatusVoltageRampspeedMax", "Status.voltageRampspeedMax", Automatic, "maximum rampspeed to change the voltage in V/s"),
    set("setStatusVoltageRampspeedMax", "Status.voltageRampspeedMax", "maximum rampspeed to change the voltage in V/s"),
    get("getControlCurrentRampspeedUp", "Control.currentRampspeedUp", Automatic, "rampspeed to increase the current in mA/s"),
    set("setControlCurrentRampspeedUp", "Control.currentRampspeedUp", "rampspeed to increase the current in mA/s"),
    get("getControlCurrentRampspeedDown", "Control.currentRampspeedDown", Automatic, "rampspeed to decrease the current in mA/s"),
    set("setControlCurrentRampspeedDown", "Control.currentRampspeedDown", "rampspeed to decrease the current in mA/s"),
    get("getStatusCurrentRampspeedMin", "Status.currentRampspeedMin", Automatic, "minimum rampspeed to change the current in mA/s"),
    set("setStatusCurrentRampspeedMin", "Status.currentRampspeedMin", "minimum rampspeed to change the current in mA/s"),
    get("getStatusCurrentRampspeedMax", "Status.currentRampspeedMax", Automatic, "maximum rampspeed to change the current in mA/s"),
    set("setStatusCurrentRampspeedMax", "Status.currentRampspeedMax", "maximum rampspeed to change the current in mA/s"),
    get("getEventInputError", "Event.inputError", Automatic, ""),
    get("getEventArcError", "Event.arcError", Automatic, ""),
};
// clang-format on

std::array<PyMemberDef, 5> members = {{
    {"connection", T_OBJECT_EX, offsetof(ChannelObject, connection), 0, "connection name"},
    {"line", T_OBJECT_EX, offsetof(ChannelObject, line), 0, "line index"},
    {"module", T_OBJECT_EX, offsetof(ChannelObject, module), 0, "module address"},
    {"index", T_OBJECT_EX, offsetof(ChannelObject, index), 0, "channel index"},
    {nullptr, 0, 0, 0, nullptr},
}};

ItemAddress addressOf(PyObject *self)
{
    const auto *channel = reinterpret_cast<ChannelObject *>(self);
    return {channel->client, channel->connection, {channel->line, channel->module, channel->index}, 3};
}

constexpr ItemOwner owner = {&channelType, addressOf};

PyObject *createChannel(PyTypeObject *type, PyObject *, PyObject *)
{
    return type->tp_alloc(type, 0);
}

PyObject *channelText(PyObject *self)
{
    const auto *channel = reinterpret_cast<ChannelObject *>(self);
    return toPythonText(toValueText(channel->line) + QLatin1Char('.') + toValueText(channel->module)
                        + QLatin1Char('.') + toValueText(channel->index));
}

} // namespace

PyTypeObject channelType =
    makeObjectType({"orbClient.channel", "orbService channel objects", sizeof(ChannelObject), createChannel,
                    channelText, members.data(), methodDefinitions<owner, methods>(), nullptr});

MethodRows channelMethods()
{
    return {methods.data(), methods.size()};
}

PyObject *newChannel(OrbClient *client, const QString &connectionName, quint32 line, quint32 moduleAddress,
                     quint32 index)
{
    PyRef object(createChannel(&channelType, nullptr, nullptr));
    if (!object)
        return nullptr;
    auto *channel = reinterpret_cast<ChannelObject *>(object.get());
    channel->client = client;
    channel->line = PyLong_FromUnsignedLong(line);
    channel->module = PyLong_FromUnsignedLong(moduleAddress);
    channel->index = PyLong_FromUnsignedLong(index);
    channel->connection = toPythonText(connectionName);
    const bool complete = channel->line != nullptr && channel->module != nullptr && channel->index != nullptr
        && channel->connection != nullptr;
    return complete ? object.release() : nullptr;
}

} // namespace orbclient
