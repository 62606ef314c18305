#include "orbclient/crate_object.h"

#include "hostclient/orb_client.h"
#include "hostclient/orb_item_id.h"
#include "orbclient/method_definitions.h"
#include "orbclient/module_object.h"
#include "orbclient/object_type.h"
#include "orbclient/py_ref.h"

#include <array>
#include <cstddef>

namespace orbclient
{

namespace
{

struct CrateObject
{
    PyObject_HEAD PyObject *connection;
    PyObject *line;
    PyObject *address;
    PyObject *modules;
    OrbClient *client;
};

constexpr Conversion Automatic = Conversion::Automatic;
constexpr Conversion Integer = Conversion::Integer;
constexpr Conversion Boolean = Conversion::Boolean;

// clang-format off
constexpr std::array methods = {
    get("getControlPower", "Control.power", Boolean, "Returns true if the crate is switched on."),
    set("setControlPower", "Control.power", "Switches the crate on or off."),
    set("setControlClearAll", "Control.clearAll", "clear all events and errors of the crate, even the module and channel errors and events of this crate"),
    set("setControlClearEvents", "Control.clearEvents", "clear all events of the crate, even the module and channel events of this crate"),
    set("setControlClearErrors", "Control.clearErrors", "clear all errors of the crate, even the module and channel errors of this crate"),
    set("setControlInstallFirmware", "Control.installFirmware", "update crate controller firmware with given filename"),
    get("getStatusEventCounter", "Status.eventCounter", Integer, "amount of events occured in the crate and its modules and corresponding channels"),
    get("getStatusErrorCounter", "Status.errorCounter", Integer, "amount of errors occured in the crate and its modules and corresponding channels"),
    get("getStatusRunningState", "Status.runningState", Automatic, "crate status: error - at least one error in crate or its modules or channels, info - at least one channel ramping, ok - at least one channel at HV-ON, off - all channels at HV-OFF, disabled - crate not available"),
    get("getStatusMainsGood", "Status.mainsGood", Automatic, "mains voltage is in valid range"),
    get("getEventMainsNotGood", "Event.mainsNotGood", Automatic, "mains voltage is or was out of valid range"),
    get("getErrorMainsNotGood", "Error.mainsNotGood", Automatic, "mains voltage is or was out of valid range"),
    get("getStatusSupplyGood", "Status.supplyGood", Automatic, "all supply voltages are in valid range"),
    get("getEventSupplyNotGood", "Event.supplyNotGood", Automatic, "at least one supply voltage is or was out of valid range"),
    get("getErrorSupplyNotGood", "Error.supplyNotGood", Automatic, "at least one supply voltage is or was out of valid range"),
    get("getStatusBatteryGood", "Status.batteryGood", Automatic, "the battery voltage is in valid range"),
    get("getEventBatteryNotGood", "Event.batteryNotGood", Automatic, "the battery voltage is or was out of valid range"),
    get("getErrorBatteryNotGood", "Error.batteryNotGood", Automatic, "the battery voltage is or was out of valid range"),
    get("getStatusPower", "Status.power", Automatic, "the crate is switched on (no standby)"),
    get("getStatusOn", "Status.on", Automatic, "at least one channel is active or has measured voltage above 63 Volts"),
    get("getStatusIsAlive", "Status.isAlive", Automatic, "the crate is alive (in standby or powered on)"),
    get("getStatusTemperature0", "Status.temperature0", Automatic, "measured temperature in celsius degree"),
    get("getStatusTemperature1", "Status.temperature1", Automatic, "measured temperature in celsius degree"),
    get("getStatusTemperatureGood", "Status.temperatureGood", Automatic, "crate temperature is in valid range"),
    get("getEventTemperatureNotGood", "Event.temperatureNotGood", Automatic, "crate temperature has been or is out of valid range"),
    get("getErrorTemperatureNotGood", "Error.temperatureNotGood", Automatic, "crate temperature has been or is out of valid range"),
    get("getStatusFirmwareName", "Status.firmwareName", Automatic, "name of firmware"),
    get("getStatusFirmwareRelease", "Status.firmwareRelease", Automatic, "firmware version"),
};
// clang-format on

std::array<PyMemberDef, 5> members = {{
    {"connection", T_OBJECT_EX, offsetof(CrateObject, connection), 0, "connection name"},
    {"line", T_OBJECT_EX, offsetof(CrateObject, line), 0, "line index"},
    {"address", T_OBJECT_EX, offsetof(CrateObject, address), 0, "crate address"},
    {"modules", T_OBJECT_EX, offsetof(CrateObject, modules), 0, "modules managed by crate"},
    {nullptr, 0, 0, 0, nullptr},
}};

ItemAddress addressOf(PyObject *self)
{
    const auto *crate = reinterpret_cast<CrateObject *>(self);
    return {crate->client, crate->connection, {crate->line, crate->address, nullptr}, 2};
}

constexpr ItemOwner owner = {&crateType, addressOf};

PyObject *createCrate(PyTypeObject *type, PyObject *, PyObject *)
{
    PyRef modules(PyList_New(0));
    PyObject *object = modules ? type->tp_alloc(type, 0) : nullptr;
    if (object != nullptr)
        reinterpret_cast<CrateObject *>(object)->modules = modules.release();
    return object;
}

PyObject *crateText(PyObject *self)
{
    const auto *crate = reinterpret_cast<CrateObject *>(self);
    return toPythonText(toValueText(crate->line) + QLatin1Char('.') + toValueText(crate->address));
}

QVector<OrbItemId> modulesOf(OrbClient &client, const QString &connectionName, quint32 line, quint32 address)
{
    OrbItemId id(OrbItemId::Crate);
    id.line = line;
    id.address = address;
    QVector<OrbItemId> ids;
    client.getCrateModules(connectionName, id, ids);
    return ids;
}

} // namespace

PyTypeObject crateType =
    makeObjectType({"orbClient.crate", "orbService crate objects", sizeof(CrateObject), createCrate,
                    crateText, members.data(), methodDefinitions<owner, methods>(), nullptr});

MethodRows crateMethods()
{
    return {methods.data(), methods.size()};
}

PyObject *newCrate(OrbClient *client, const QString &connectionName, quint32 line, quint32 address)
{
    PyRef object(createCrate(&crateType, nullptr, nullptr));
    if (!object)
        return nullptr;
    auto *crate = reinterpret_cast<CrateObject *>(object.get());
    crate->client = client;
    crate->line = PyLong_FromUnsignedLong(line);
    crate->address = PyLong_FromUnsignedLong(address);
    crate->connection = toPythonText(connectionName);
    if (crate->line == nullptr || crate->address == nullptr || crate->connection == nullptr)
        return nullptr;
    if (client == nullptr)
        return object.release();
    const QVector<OrbItemId> ids = modulesOf(*client, connectionName, line, address);
    for (const OrbItemId &id : ids) {
        const PyRef module(newModule(client, connectionName, id.line, id.address));
        if (!module || PyList_Append(crate->modules, module.get()) != 0)
            return nullptr;
    }
    return object.release();
}

} // namespace orbclient
