#include "orbclient/data_frame_object.h"

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "orbclient/object_type.h"
#include "orbclient/py_ref.h"
#include "orbclient/value_conversion.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cstddef>

namespace orbclient
{

namespace
{

struct DataFrameObject
{
    PyObject_HEAD PyObject *connection;
    PyObject *line;
    PyObject *address;
    PyObject *channel;
    PyObject *command;
    PyObject *item;
    PyObject *value;
    PyObject *unit;
    PyObject *rawJson;
};

std::array<PyMemberDef, 10> members = {{
    {"connection", T_OBJECT_EX, offsetof(DataFrameObject, connection), 0, "connection name"},
    {"line", T_OBJECT_EX, offsetof(DataFrameObject, line), 0, "line index"},
    {"address", T_OBJECT_EX, offsetof(DataFrameObject, address), 0, "address"},
    {"channel", T_OBJECT_EX, offsetof(DataFrameObject, channel), 0, "channel index"},
    {"command", T_OBJECT_EX, offsetof(DataFrameObject, command), 0, "command"},
    {"item", T_OBJECT_EX, offsetof(DataFrameObject, item), 0, "item"},
    {"value", T_OBJECT_EX, offsetof(DataFrameObject, value), 0, "value"},
    {"unit", T_OBJECT_EX, offsetof(DataFrameObject, unit), 0, "unit"},
    {"rawJson", T_OBJECT_EX, offsetof(DataFrameObject, rawJson), 0, "raw Json string"},
    {nullptr, 0, 0, 0, nullptr},
}};

PyObject *createDataFrame(PyTypeObject *type, PyObject *, PyObject *)
{
    return type->tp_alloc(type, 0);
}

PyObject *dataFrameText(PyObject *self)
{
    const auto *frame = reinterpret_cast<DataFrameObject *>(self);
    return toPythonText(toValueText(frame->command) + QLatin1Char(':') + toValueText(frame->item)
                        + QLatin1Char('=') + toValueText(frame->value) + toValueText(frame->unit));
}

/// Only texts reach the script: a number, a boolean, a null or anything nested becomes the empty text. This is meant.
PyObject *textList(const QJsonArray &array)
{
    PyRef list(PyList_New(array.size()));
    if (!list)
        return nullptr;
    for (int i = 0; i < array.size(); ++i) {
        PyObject *text = toPythonText(array.at(i).toString());
        if (text == nullptr)
            return nullptr;
        PyList_SET_ITEM(list.get(), i, text);
    }
    return list.release();
}

PyObject *textDictionary(const QJsonObject &object)
{
    PyRef dictionary(PyDict_New());
    if (!dictionary)
        return nullptr;
    for (auto member = object.constBegin(); member != object.constEnd(); ++member) {
        const QJsonValue json = member.value();
        const PyRef key(toPythonText(member.key()));
        const PyRef value(json.isArray() ? textList(json.toArray()) : toPythonText(json.toString()));
        if (!key || !value || PyDict_SetItem(dictionary.get(), key.get(), value.get()) != 0)
            return nullptr;
    }
    return dictionary.release();
}

PyObject *messageValue(const OrbRequestItem &request)
{
    if (request.value == request.rawJson) {
        const QJsonDocument document = QJsonDocument::fromJson(request.rawJson.toUtf8());
        if (document.isObject())
            return textDictionary(document.object());
    }
    return toPythonText(request.value);
}

} // namespace

PyTypeObject dataFrameType =
    makeObjectType({"orbClient.dataFrame", "orbService data frame objects", sizeof(DataFrameObject),
                    createDataFrame, dataFrameText, members.data(), nullptr, nullptr});

PyObject *newDataFrame(OrbClient *, const QString &connectionName, const OrbRequestItem &request)
{
    PyRef object(createDataFrame(&dataFrameType, nullptr, nullptr));
    if (!object)
        return nullptr;
    auto *frame = reinterpret_cast<DataFrameObject *>(object.get());
    frame->connection = toPythonText(connectionName);
    frame->line = PyLong_FromUnsignedLong(request.line);
    frame->address = PyLong_FromUnsignedLong(request.address);
    frame->channel = PyLong_FromLong(request.channel);
    frame->command = toPythonText(request.getCommandTypeAsString());
    frame->item = toPythonText(request.itemName);
    frame->value = messageValue(request);
    frame->unit = toPythonText(request.unit);
    frame->rawJson = toPythonText(request.rawJson);
    return PyErr_Occurred() == nullptr ? object.release() : nullptr;
}

bool dataFrameToItemValue(OrbItemValue &itemValue, PyObject *object)
{
    itemValue = OrbItemValue();
    if (object == nullptr || Py_TYPE(object) != &dataFrameType)
        return false;
    const auto *frame = reinterpret_cast<DataFrameObject *>(object);
    OrbItemId id;
    id.connectionName = toValueText(frame->connection);
    id.line = static_cast<quint32>(toInteger(frame->line));
    id.address = static_cast<quint32>(toInteger(frame->address));
    id.channel = toInteger(frame->channel);
    id.itemName = toValueText(frame->item);
    itemValue.setId(id);
    itemValue.setValue(toVariant(frame->value));
    itemValue.setUnit(toValueText(frame->unit));
    itemValue.setCommand(toValueText(frame->command));
    return true;
}

} // namespace orbclient
