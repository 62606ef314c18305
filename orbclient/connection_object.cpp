#include "orbclient/connection_object.h"

#include "hostclient/orb_client.h"
#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "orbclient/crate_object.h"
#include "orbclient/data_frame_object.h"
#include "orbclient/live_clients.h"
#include "orbclient/method_definitions.h"
#include "orbclient/module_object.h"
#include "orbclient/object_type.h"
#include "orbclient/py_ref.h"

#include <array>
#include <cstddef>
#include <utility>

namespace orbclient
{

namespace
{

struct ConnectionObject
{
    PyObject_HEAD PyObject *name;
    PyObject *crates;
    PyObject *modules;
    OrbClient *client;
};

/// Who is called, and under which name, when a method of a connection reaches its client.
struct Caller
{
    explicit Caller(PyObject *self)
        : client(reinterpret_cast<ConnectionObject *>(self)->client),
          name(toValueText(reinterpret_cast<ConnectionObject *>(self)->name))
    { }

    LiveClient client; ///< null when there is none to call
    QString name;
};

/// Null results of the methods below, for an object that is not exactly a connection, deliberately set no exception.
bool isConnection(PyObject *self)
{
    return Py_TYPE(self) == &connectionType;
}

/// A list of the objects that `makeObject` makes of the identifiers.
template <typename MakeObject>
PyObject *objectList(const Caller &caller, const QVector<OrbItemId> &ids, MakeObject makeObject)
{
    PyRef list(PyList_New(0));
    for (const OrbItemId &id : ids) {
        const PyRef object(list ? makeObject(caller.client, caller.name, id.line, id.address) : nullptr);
        if (!object || PyList_Append(list.get(), object.get()) != 0)
            return nullptr;
    }
    return list.release();
}

PyObject *crateList(const Caller &caller)
{
    QVector<OrbItemId> ids;
    if (caller.client != nullptr)
        caller.client->getCrates(caller.name, ids);
    return objectList(caller, ids, newCrate);
}

PyObject *moduleList(const Caller &caller)
{
    QVector<OrbItemId> ids;
    if (caller.client != nullptr)
        caller.client->getModules(caller.name, ids);
    return objectList(caller, ids, newModule);
}

PyObject *rawCommand(PyObject *self, PyObject *arguments)
{
    const char *command = nullptr;
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "s", &command) == 0)
        return nullptr;
    const Caller caller(self);
    if (caller.client == nullptr)
        return nullptr; // without an exception, which is meant
    QString response;
    if (caller.client->executeRawOrbCommand(caller.name, QString::fromUtf8(command), response))
        return PyUnicode_FromString("ok");
    return response.isEmpty() ? PyUnicode_FromString("error") : toPythonText(response);
}

PyObject *disconnect(PyObject *self, PyObject *arguments)
{
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "") == 0)
        return nullptr;
    const Caller caller(self);
    return resultString(caller.client != nullptr ? caller.client->closeConnection(caller.name)
                                                 : TarnResult::Failed);
}

PyObject *getModules(PyObject *self, PyObject *arguments)
{
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "") == 0)
        return nullptr;
    return moduleList(Caller(self));
}

PyObject *getCrates(PyObject *self, PyObject *arguments)
{
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "") == 0)
        return nullptr;
    return crateList(Caller(self));
}

PyObject *activateDataPassThrough(PyObject *self, PyObject *arguments)
{
    const char *scriptName = "script";
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "|s", &scriptName) == 0)
        return nullptr;
    const Caller caller(self);
    if (caller.client == nullptr)
        return resultString(TarnResult::Failed);
    return resultString(caller.client->activateDataPassThrough(caller.name, QString::fromUtf8(scriptName)));
}

PyObject *getNextPassThroughMessage(PyObject *self, PyObject *arguments)
{
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "") == 0)
        return nullptr;
    const Caller caller(self);
    if (caller.client == nullptr)
        return resultString(TarnResult::Failed);
    OrbRequestItem request;
    const TarnResult result = caller.client->getNextPassThroughMessage(caller.name, request);
    return result == TarnResult::Success ? newDataFrame(caller.client, caller.name, request)
                                         : resultString(result);
}

PyObject *getPassThroughMessageList(PyObject *self, PyObject *arguments)
{
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "") == 0)
        return nullptr;
    const Caller caller(self);
    QVector<OrbRequestItem> requests;
    if (caller.client != nullptr)
        caller.client->getPassThroughMessageList(caller.name, requests);
    PyRef list(PyList_New(0));
    for (const OrbRequestItem &request : qAsConst(requests)) {
        const PyRef frame(list ? newDataFrame(caller.client, caller.name, request) : nullptr);
        if (!frame || PyList_Append(list.get(), frame.get()) != 0)
            return nullptr;
    }
    return list.release();
}

PyObject *sendMessage(PyObject *self, PyObject *arguments)
{
    PyObject *frame = nullptr;
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "O", &frame) == 0)
        return nullptr;
    const Caller caller(self);
    OrbItemValue value;
    if (caller.client == nullptr || !dataFrameToItemValue(value, frame))
        return resultString(TarnResult::Failed);
    return resultString(caller.client->sendPassThroughMessage(caller.name, value));
}

PyObject *sendMessageList(PyObject *self, PyObject *arguments)
{
    PyObject *frames = nullptr;
    if (!isConnection(self) || PyArg_ParseTuple(arguments, "O", &frames) == 0)
        return nullptr;
    const Caller caller(self);
    QVector<OrbItemValue> values;
    for (Py_ssize_t i = 0; PyList_Check(frames) && i < PyList_GET_SIZE(frames); ++i) {
        OrbItemValue value;
        if (dataFrameToItemValue(value, PyList_GET_ITEM(frames, i)))
            values.append(value);
    }
    if (caller.client == nullptr || values.isEmpty())
        return resultString(TarnResult::Failed);
    return resultString(caller.client->sendPassThroughMessage(caller.name, values));
}

constexpr Conversion Automatic = Conversion::Automatic;
constexpr Conversion Integer = Conversion::Integer;
constexpr Conversion Text = Conversion::Text;

// clang-format off
constexpr std::array methods = {
    call("rawCommand", rawCommand, "(self, command: str) -> str", "This method sends a command to an orbService connection. The command has to be a JSON string."),
    call("disconnect", disconnect, "(self) -> str", "This method closes the connection to an orbService."),
    call("getModules", getModules, "(self) -> List[module]", ""),
    call("getCrates", getCrates, "(self) -> List[crate]", ""),
    set("setControlReboot", "Control.reboot", "reboot ORB Server"),
    set("setControlShutdown", "Control.shutdown", "shutdown ORB Server"),
    set("setControlRestartScan", "Control.restartScan", "rescan all connected devices (modules, crates)"),
    set("setControlWifi", "Control.wifi", "switch wifi on or off"),
    get("getControlLiveInsertion", "Control.liveInsertion", Automatic, "switch live insertion mode on or off"),
    set("setControlLiveInsertion", "Control.liveInsertion", "switch live insertion mode on or off"),
    get("getStatusRunningStateOrb", "Status.runningStateOrb", Automatic, "general state of ORB system"),
    get("getStatusRunningStateWeb", "Status.runningStateWeb", Automatic, "state of webserver"),
    get("getStatusRunningStateWifi", "Status.runningStateWifi", Automatic, "state of Wifi connection"),
    get("getStatusRunningStateEthernet", "Status.runningStateEthernet", Automatic, "state of ethernet adapter"),
    get("getStatusConnectedClients", "Status.connectedClients", Integer, "amount of clients connected with ORB"),
    get("getSetupCycleTime", "Setup.cycleTime", Automatic, "cycletime (updaterate) in ms"),
    set("setSetupCycleTime", "Setup.cycleTime", "cycletime (updaterate) in ms"),
    set("setControlServiceStart", "Control.serviceStart", "start one of the available interface services"),
    set("setControlServiceStop", "Control.serviceStop", "stop one of the available interface services"),
    set("setControlServiceRestart", "Control.serviceRestart", "restart one of the available interface services"),
    get("getStatusDiscover", "Status.discover", Automatic, ""),
    get("getStatusProtocols", "Status.protocols", Automatic, ""),
    get("getStatusHeartBeat", "Status.heartBeat", Automatic, ""),
    get("getStatusConnectionStatus", "Status.connectionStatus", Automatic, ""),
    get("getStatusConnectionName", "Status.connectionName", Automatic, ""),
    set("setControlDisconnect", "Control.disconnect", ""),
    set("setControlConnect", "Control.connect", ""),
    set("setControlAutoConfig", "Control.autoConfig", ""),
    call("activateDataPassThrough", activateDataPassThrough, "(self, scriptName: str = ...) -> str", ""),
    call("getNextPassThroughMessage", getNextPassThroughMessage, "(self) -> Union[dataFrame, str]", ""),
    call("getPassThroughMessageList", getPassThroughMessageList, "(self) -> List[dataFrame]", ""),
    get("getStatusSessionId", OrbItemDefinitions::getItemNameSystemStatussessionId, Text, ""),
    call("sendMessage", sendMessage, "(self, frame: dataFrame) -> str", ""),
    call("sendMessageList", sendMessageList, "(self, frames: List[dataFrame]) -> str", ""),
    get("getStatusUsbAuxState", OrbItemDefinitions::getItemNameSystemStatususbAuxState, Text, ""),
    get("getStatusLiveInsertion", OrbItemDefinitions::getItemNameSystemStatusliveInsertion, Text, ""),
    get("getStatusEthernetState", OrbItemDefinitions::getItemNameSystemStatusethernetState, Text, ""),
    get("getStatusWifiState", OrbItemDefinitions::getItemNameSystemStatuswifiState, Text, ""),
    get("getStatusUsbRemoteState", OrbItemDefinitions::getItemNameSystemStatususbRemoteState, Text, ""),
    get("getStatusUsbRemoteText", OrbItemDefinitions::getItemNameSystemStatususbRemoteText, Text, ""),
    get("getStatusUsbAuxText", OrbItemDefinitions::getItemNameSystemStatususbAuxText, Text, ""),
    get("getStatusCanState", OrbItemDefinitions::getItemNameSystemStatuscanState, Text, ""),
    get("getStatusCanText", OrbItemDefinitions::getItemNameSystemStatuscanText, Text, ""),
};
// clang-format on

std::array<PyMemberDef, 4> members = {{
    {"name", T_OBJECT_EX, offsetof(ConnectionObject, name), 0, "connection name"},
    {"crates", T_OBJECT_EX, offsetof(ConnectionObject, crates), 0, "crates managed by connection"},
    {"modules", T_OBJECT_EX, offsetof(ConnectionObject, modules), 0, "modules managed by connection"},
    {nullptr, 0, 0, 0, nullptr},
}};

ItemAddress addressOf(PyObject *self)
{
    const auto *connection = reinterpret_cast<ConnectionObject *>(self);
    return {connection->client, connection->name, {nullptr, nullptr, nullptr}, 0};
}

constexpr ItemOwner owner = {&connectionType, addressOf};

PyObject *createConnection(PyTypeObject *type, PyObject *, PyObject *)
{
    PyRef crates(PyList_New(0));
    PyRef modules(PyList_New(0));
    PyObject *object = crates && modules ? type->tp_alloc(type, 0) : nullptr;
    if (object != nullptr) {
        reinterpret_cast<ConnectionObject *>(object)->crates = crates.release();
        reinterpret_cast<ConnectionObject *>(object)->modules = modules.release();
    }
    return object;
}

int initialiseConnection(PyObject *self, PyObject *arguments, PyObject *keywords)
{
    std::array<char, 5> nameKeyword = {"name"};
    std::array<char *, 2> keywordList = {nameKeyword.data(), nullptr};
    const char *name = nullptr;
    if (PyArg_ParseTupleAndKeywords(arguments, keywords, "|s", keywordList.data(), &name) == 0)
        return -1;
    if (name == nullptr)
        return 0;
    PyRef text(PyUnicode_FromString(name));
    if (!text)
        return -1;
    // The old name is released only when the object no longer holds it.
    const PyRef oldName(std::exchange(reinterpret_cast<ConnectionObject *>(self)->name, text.release()));
    return 0;
}

PyObject *connectionText(PyObject *self)
{
    return toPythonText(toValueText(reinterpret_cast<ConnectionObject *>(self)->name));
}

/// Replaces a list that a new object got when it was created. False when there is no list to replace it with.
bool replaceList(PyObject *&member, PyObject *list)
{
    if (list == nullptr)
        return false;
    const PyRef oldList(std::exchange(member, list));
    return true;
}

} // namespace

PyTypeObject connectionType = makeObjectType(
    {"orbClient.connection", "orbService connection objects", sizeof(ConnectionObject), createConnection,
     connectionText, members.data(), methodDefinitions<owner, methods>(), initialiseConnection});

MethodRows connectionMethods()
{
    return {methods.data(), methods.size()};
}

PyObject *newConnection(OrbClient *client, const QString &connectionName)
{
    PyRef object(createConnection(&connectionType, nullptr, nullptr));
    if (!object)
        return nullptr;
    auto *connection = reinterpret_cast<ConnectionObject *>(object.get());
    connection->client = client;
    connection->name = toPythonText(connectionName);
    if (connection->name == nullptr)
        return nullptr;
    Caller caller(object.get());
    caller.name = connectionName;
    if (!replaceList(connection->crates, crateList(caller))
        || !replaceList(connection->modules, moduleList(caller)))
        return nullptr;
    return object.release();
}

} // namespace orbclient
