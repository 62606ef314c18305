#include "orbclient/module_object.h"

#include "hostclient/orb_client.h"
#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_value.h"
#include "orbclient/channel_object.h"
#include "orbclient/method_definitions.h"
#include "orbclient/object_type.h"
#include "orbclient/py_ref.h"

#include <array>
#include <cstddef>
#include <limits>

namespace orbclient
{

namespace
{

struct ModuleObject
{
    PyObject_HEAD PyObject *connection;
    PyObject *line;
    PyObject *address;
    PyObject *channels;
    OrbClient *client;
};

constexpr Conversion Automatic = Conversion::Automatic;
constexpr Conversion Integer = Conversion::Integer;

// clang-format off
constexpr std::array methods = {
    set("setControlClearAll", "Control.clearAll", "clear all events and errors of the module, even the channel errors and channel events of the module"),
    set("setControlClearEvents", "Control.clearEvents", "clear all events of the module, even the channel events of this module"),
    set("setControlClearErrors", "Control.clearErrors", "clear all errors of the module, even the channel errors of this module"),
    set("setControlInstallFirmware", "Control.installFirmware", "update module firmware with given filename"),
    get("getStatusEventCounter", "Status.eventCounter", Automatic, "amount of events occured in module and corresponding channels"),
    get("getStatusErrorCounter", "Status.errorCounter", Automatic, "amount of errors occured in module and corresponding channels"),
    get("getStatusRunningState", "Status.runningState", Automatic, "module status:, error - at least one error in module or channel, info - at least one channel ramping, ok - at least one channel at HV-ON, off - all channels at HV-OFF, disabled - module not available"),
    get("getControlKill", "Control.kill", Automatic, "activate / deactivate KILL mode"),
    set("setControlKill", "Control.kill", "activate / deactivate KILL mode"),
    get("getControlAdjustment", "Control.adjustment", Automatic, "activate / deactivate fine adjustment"),
    set("setControlAdjustment", "Control.adjustment", "activate / deactivate fine adjustment"),
    get("getStatusAdjustment", "Status.adjustment", Automatic, "fine adjustment is activated"),
    get("getStatusTemperature", "Status.temperature", Automatic, "measured temperature in celsius degree"),
    get("getStatusTemperatureGood", "Status.temperatureGood", Automatic, "board temperature is in valid range"),
    get("getEventTemperatureNotGood", "Event.temperatureNotGood", Automatic, "board temperature has been or is out of valid range"),
    get("getErrorTemperatureNotGood", "Error.temperatureNotGood", Automatic, "board temperature has been or is out of valid range"),
    get("getStatusSupplyGood", "Status.supplyGood", Automatic, "all supply voltages are in valid range"),
    get("getEventSupplyNotGood", "Event.supplyNotGood", Automatic, "at least one supply voltage is or was out of valid range"),
    get("getErrorSupplyNotGood", "Error.supplyNotGood", Automatic, "at least one supply voltage is or was out of valid range"),
    get("getStatusInterlockOut", "Status.interlockOut", Automatic, "InterlockOut active"),
    get("getEventInterlockOut", "Event.interlockOut", Automatic, "caught InterlockOut event"),
    get("getErrorInterlockOut", "Error.interlockOut", Automatic, "caught InterlockOut event"),
    get("getStatusSafetyLoopClosed", "Status.safetyLoopClosed", Automatic, "Safety-Loop is closed"),
    get("getEventSafetyLoopWasOpened", "Event.safetyLoopWasOpened", Automatic, "Safety-Loop has been opened"),
    get("getErrorSafetyLoopWasOpened", "Error.safetyLoopWasOpened", Automatic, "Safety-Loop has been opened"),
    get("getStatusNeedService", "Status.needService", Automatic, "hardware failure detected, vendor support needed"),
    get("getErrorNeedService", "Error.needService", Automatic, "hardware failure detected, vendor support needed"),
    get("getControlVoltageRampspeed", "Control.voltageRampspeed", Automatic, "rampspeed of voltage in %/s"),
    set("setControlVoltageRampspeed", "Control.voltageRampspeed", "rampspeed of voltage in %/s"),
    get("getControlCurrentRampspeed", "Control.currentRampspeed", Automatic, ""),
    set("setControlCurrentRampspeed", "Control.currentRampspeed", ""),
    get("getControlModuleEventMask", "Control.moduleEventMask", Automatic, "bitmask to mask/unmask module events"),
    set("setControlModuleEventMask", "Control.moduleEventMask", "bitmask to mask/unmask module events"),
    get("getControlModuleChannelEventMask", "Control.moduleChannelEventMask", Automatic, "bitmask to mask/unmask channel events at module level"),
    set("setControlModuleChannelEventMask", "Control.moduleChannelEventMask", "bitmask to mask/unmask channel events at module level"),
    get("getSetupDigitalFilter", "Setup.digitalFilter", Automatic, "moving average on specified steps of samples"),
    set("setSetupDigitalFilter", "Setup.digitalFilter", "moving average on specified steps of samples"),
    get("getSetupAdcSampleRate", "Setup.adcSampleRate", Automatic, "Samplerate of ADC for measured voltage and current"),
    set("setSetupAdcSampleRate", "Setup.adcSampleRate", "Samplerate of ADC for measured voltage and current"),
    get("getStatusSerialNumber", "Status.serialNumber", Integer, "serialnumber of the module"),
    get("getStatusIsAlive", "Status.isAlive", Automatic, "module is powered on and able to communicate"),
    get("getStatusFirmwareName", "Status.firmwareName", Automatic, "name of firmware"),
    get("getStatusFirmwareRelease", "Status.firmwareRelease", Automatic, "firmware version"),
    get("getControlUserHardwareCheck", "Control.userHardwareCheck", Automatic, "only for tarn ZENT-systems: user confirms that ZENT configuration has been verified"),
    set("setControlUserHardwareCheck", "Control.userHardwareCheck", "only for tarn ZENT-systems: user confirms that ZENT configuration has been verified"),
    get("getErrorNeedUserHardwareCheck", "Error.needUserHardwareCheck", Automatic, "only for tarn ZENT-systems: user has to confirm that ZENT configuration has been verified"),
};
// clang-format on

std::array<PyMemberDef, 5> members = {{
    {"connection", T_OBJECT_EX, offsetof(ModuleObject, connection), 0, "connection name"},
    {"line", T_OBJECT_EX, offsetof(ModuleObject, line), 0, "line index"},
    {"address", T_OBJECT_EX, offsetof(ModuleObject, address), 0, "module address"},
    {"channels", T_OBJECT_EX, offsetof(ModuleObject, channels), 0, "module channels"},
    {nullptr, 0, 0, 0, nullptr},
}};

ItemAddress addressOf(PyObject *self)
{
    const auto *module = reinterpret_cast<ModuleObject *>(self);
    return {module->client, module->connection, {module->line, module->address, nullptr}, 2};
}

constexpr ItemOwner owner = {&moduleType, addressOf};

PyObject *createModule(PyTypeObject *type, PyObject *, PyObject *)
{
    PyRef channels(PyList_New(0));
    PyObject *object = channels ? type->tp_alloc(type, 0) : nullptr;
    if (object != nullptr)
        reinterpret_cast<ModuleObject *>(object)->channels = channels.release();
    return object;
}

PyObject *moduleText(PyObject *self)
{
    const auto *module = reinterpret_cast<ModuleObject *>(self);
    return toPythonText(toValueText(module->line) + QLatin1Char('.') + toValueText(module->address));
}

/// How many channels the module says that it has; 0 when that cannot be read.
quint32 readChannelCount(OrbClient &client, const QString &connectionName, quint32 line, quint32 address)
{
    OrbItemId id(OrbItemId::Module);
    id.connectionName = connectionName;
    id.line = line;
    id.address = address;
    id.channel = -1;
    id.itemName = OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels();
    OrbItemValue value(id);
    // QVariant::toUInt() makes an unsigned number of a negative one and of one that does not fit.
    bool ok = false;
    const qlonglong count = client.readItemValue(value) ? value.value().toLongLong(&ok) : 0;
    return ok && count >= 0 && count <= std::numeric_limits<quint32>::max() ? static_cast<quint32>(count) : 0;
}

} // namespace

PyTypeObject moduleType =
    makeObjectType({"orbClient.module", "orbService module objects", sizeof(ModuleObject), createModule,
                    moduleText, members.data(), methodDefinitions<owner, methods>(), nullptr});

MethodRows moduleMethods()
{
    return {methods.data(), methods.size()};
}

PyObject *newModule(OrbClient *client, const QString &connectionName, quint32 line, quint32 address)
{
    PyRef object(createModule(&moduleType, nullptr, nullptr));
    if (!object)
        return nullptr;
    auto *module = reinterpret_cast<ModuleObject *>(object.get());
    module->client = client;
    module->line = PyLong_FromUnsignedLong(line);
    module->address = PyLong_FromUnsignedLong(address);
    module->connection = toPythonText(connectionName);
    if (module->line == nullptr || module->address == nullptr || module->connection == nullptr)
        return nullptr;
    const quint32 count = client != nullptr ? readChannelCount(*client, connectionName, line, address) : 0;
    for (quint32 index = 0; index < count; ++index) {
        const PyRef channel(newChannel(client, connectionName, line, address, index));
        if (!channel || PyList_Append(module->channels, channel.get()) != 0)
            return nullptr;
    }
    return object.release();
}

} // namespace orbclient
