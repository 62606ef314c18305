#include "orbclient/orb_client_module.h"

#include "hostclient/orb_client.h"
#include "orbclient/channel_object.h"
#include "orbclient/connection_object.h"
#include "orbclient/crate_object.h"
#include "orbclient/data_frame_object.h"
#include "orbclient/item_access.h"
#include "orbclient/live_clients.h"
#include "orbclient/module_object.h"
#include "orbclient/py_ref.h"
#include "orbclient/tarn_item_text.h"
#include "orbclient/value_conversion.h"

#include <QHash>
#include <QString>

#include <array>
#include <cstddef>
#include <cstring>

namespace orbclient
{

namespace
{

/// The beginning of what each module keeps for itself; the rest of the state has no meaning and stays zero.
struct ModuleState
{
    OrbClient *client;
};
constexpr Py_ssize_t StateSize = 80; // part of the module's definition

LiveClient clientOf(PyObject *module)
{
    const auto *state = static_cast<ModuleState *>(PyModule_GetState(module));
    return LiveClient(state != nullptr ? state->client : nullptr);
}

/// Null, for a text that was left out, becomes a null string.
QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// The answer to a connect: the new connection, or what became of it. Success without a connection to be found
/// afterwards is "ok", which is meant to differ from a failure.
PyObject *connectResult(OrbClient *client, const QString &connectionName, TarnResult result)
{
    if (result == TarnResult::Success && client->checkHasConnection(connectionName))
        return newConnection(client, connectionName);
    return resultString(result);
}

PyObject *connect(PyObject *module, PyObject *arguments)
{
    const char *name = nullptr;
    const char *address = nullptr;
    const char *login = nullptr;
    const char *password = nullptr;
    if (PyArg_ParseTuple(arguments, "ss|ss", &name, &address, &login, &password) == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    if (client == nullptr)
        return resultString(TarnResult::Failed);
    unsigned number = 1;
    const TarnResult result =
        client->establishConnection(text(name), text(address), text(login), text(password), number);
    return connectResult(client, text(name), result);
}

PyObject *scriptConnect(PyObject *module, PyObject *arguments)
{
    std::array<const char *, 6> texts{};
    if (PyArg_ParseTuple(arguments, "ssssss", &texts[0], &texts[1], &texts[2], &texts[3], &texts[4],
                         &texts[5])
        == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    if (client == nullptr)
        return resultString(TarnResult::Failed);
    unsigned number = 1;
    const TarnResult result =
        client->establishScriptConnection(text(texts[0]), text(texts[1]), text(texts[2]), text(texts[3]),
                                          text(texts[4]), text(texts[5]), number);
    return connectResult(client, text(texts[0]), result);
}

PyObject *fieldToPython(std::string_view field)
{
    return toPythonText(QString::fromLatin1(field.data(), static_cast<int>(field.size())));
}

PyObject *getItem(PyObject *module, PyObject *arguments)
{
    const char *connectionName = nullptr;
    const char *itemPath = nullptr;
    if (PyArg_ParseTuple(arguments, "ss", &connectionName, &itemPath) == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    const TarnItem item = client != nullptr ? client->getItem(connectionName, itemPath) : TarnItem();
    if (!isValid(item))
        return resultString(TarnResult::Failed);
    PyRef path(fieldToPython(fieldText(item.path)));
    PyRef value(fieldToPython(fieldText(item.value)));
    return path && value ? PyTuple_Pack(2, path.get(), value.get()) : nullptr;
}

PyObject *setItem(PyObject *module, PyObject *arguments)
{
    const char *connectionName = nullptr;
    const char *itemPath = nullptr;
    const char *value = nullptr;
    if (PyArg_ParseTuple(arguments, "sss", &connectionName, &itemPath, &value) == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    return resultString(client != nullptr ? client->setItem(connectionName, itemPath, value)
                                          : TarnResult::Failed);
}

PyObject *getConnections(PyObject *module, PyObject *arguments)
{
    int local = 1;
    if (PyArg_ParseTuple(arguments, "|i", &local) == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    if (client == nullptr)
        return nullptr; // without an exception, unlike the other functions, which is meant
    const QHash<QString, unsigned> connections = client->getConnectionsIndices(local != 0);
    PyRef list(PyList_New(connections.size()));
    if (!list)
        return nullptr;
    Py_ssize_t position = 0;
    for (auto connection = connections.constBegin(); connection != connections.constEnd(); ++connection) {
        PyObject *object = newConnection(client, connection.key());
        if (object == nullptr)
            return nullptr;
        PyList_SET_ITEM(list.get(), position++, object);
    }
    return list.release();
}

PyObject *findConnection(PyObject *module, PyObject *arguments)
{
    const char *name = nullptr;
    if (PyArg_ParseTuple(arguments, "s", &name) == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    if (client == nullptr || !client->checkHasConnection(text(name)))
        return resultString(TarnResult::Failed);
    return newConnection(client, text(name));
}

PyObject *setDebugLevel(PyObject *module, PyObject *arguments)
{
    int level = 0;
    if (PyArg_ParseTuple(arguments, "i", &level) == 0)
        return nullptr;
    const LiveClient client = clientOf(module);
    return resultString(client != nullptr ? client->setDebugLevel(level) : TarnResult::Failed);
}

PyObject *getVersion(PyObject *module, PyObject *arguments)
{
    if (PyArg_ParseTuple(arguments, "") == 0)
        return nullptr;
    return clientOf(module) != nullptr ? toPythonText(OrbClient::getVersionString())
                                       : resultString(TarnResult::Failed);
}

// The wording is part of the interface, its oddities included.
// clang-format off
constexpr std::array functions = {
    call("connect", connect, "(connectionName: str, address: str, login: str = ..., password: str = ...) -> Union[connection, str]", "orbClient.connect(<connection name>, <ip:port>, <login>, < password>) attempts to establish a new connection to an ORBservice."),
    call("scriptConnect", scriptConnect, "(connectionName: str, address: str, scriptName: str, sessionId: str, login: str, password: str) -> Union[connection, str]", "The function orbClient.scriptConnect(<connection name>, <ip:port>, <script_name>) is used by scripts having been launched by ORBservice. It allows callbacks to the parent ORBservice."),
    call("getItem", getItem, "(connectionName: str, itemPath: str) -> Union[Tuple[str, str], str]", "This function retrieves an item from the ORBservice connection."),
    call("setItem", setItem, "(connectionName: str, itemPath: str, value: str) -> str", "This function sets an item over the ORBservice connection."),
    call("getConnections", getConnections, "(local: int = ...) -> List[connection]", "orbClient.getConnections(<flag local>) retrieves the list of open ORBservice connections. If <flag local> is set, the connection to the local ORBservice is also included."),
    call("findConnection", findConnection, "(connectionName: str) -> Union[connection, str]", "orbClient.findConnection(<connection name>) returns an ORBservice connection object corrsponding to <connection name> if it exists."),
    call("setDebugLevel", setDebugLevel, "(level: int) -> str", "This function enables printing of error messages to stderr (level = 1) or stderr/stdout (level = 2)."),
    call("getVersion", getVersion, "() -> str", "This function returns the version of the Python module."),
};
// clang-format on

std::array<PyMethodDef, functions.size() + 1> functionDefinitions()
{
    std::array<PyMethodDef, functions.size() + 1> definitions{};
    for (std::size_t i = 0; i < functions.size(); ++i)
        definitions.at(i) = {functions[i].name, functions[i].function, METH_VARARGS, functions[i].docstring};
    return definitions;
}

PyModuleDef &moduleDefinition()
{
    static auto methods = functionDefinitions();
    static PyModuleDef definition = {PyModuleDef_HEAD_INIT,
                                     "orbClientPython_3",
                                     "",
                                     StateSize,
                                     methods.data(),
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr};
    return definition;
}

/// A type that does not become ready is left out; the module lives without it.
bool addType(PyObject *module, const char *name, PyTypeObject &type)
{
    if (PyType_Ready(&type) != 0) {
        PyErr_Clear();
        return true;
    }
    PyRef reference = PyRef::to(reinterpret_cast<PyObject *>(&type));
    if (PyModule_AddObject(module, name, reference.get()) != 0)
        return false;
    static_cast<void>(reference.release()); // the module took it over
    return true;
}

} // namespace

MethodRows moduleFunctions()
{
    return {functions.data(), functions.size()};
}

void setModuleClient(PyObject *module, OrbClient *client)
{
    if (module == nullptr || !PyModule_Check(module) || PyModule_GetDef(module) != &moduleDefinition())
        return;
    auto *state = static_cast<ModuleState *>(PyModule_GetState(module));
    if (state == nullptr)
        return;
    if (state->client != nullptr)
        removeLiveClient(state->client);
    if (client != nullptr)
        addLiveClient(client);
    state->client = client;
}

} // namespace orbclient

PyObject *PyInit_orbClientPython_3_for_ORB()
{
    using namespace orbclient;
    constexpr int ApiVersion = 1013;
    static_assert(PYTHON_API_VERSION == ApiVersion, "the module is made for Python 3.7");
    PyRef module(PyModule_Create2(&moduleDefinition(), ApiVersion));
    if (!module)
        return nullptr;
    std::memset(PyModule_GetState(module.get()), 0, StateSize);
    const bool complete = addType(module.get(), "connection", connectionType)
        && addType(module.get(), "crate", crateType) && addType(module.get(), "module", moduleType)
        && addType(module.get(), "channel", channelType) && addType(module.get(), "dataFrame", dataFrameType);
    return complete ? module.release() : nullptr;
}
