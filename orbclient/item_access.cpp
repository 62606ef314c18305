#include "orbclient/item_access.h"

#include "hostclient/orb_client.h"
#include "hostclient/tarn_item.h"
#include "orbclient/byte_text.h"
#include "orbclient/conversion_shortcuts.h"
#include "orbclient/live_clients.h"
#include "orbclient/tarn_item_text.h"

#include <QString>

namespace orbclient
{

namespace
{

QString itemPath(const ItemAddress &address, std::string_view itemName)
{
    QString path;
    for (int level = 0; level < address.levels; ++level) {
        path += toValueText(address.indices.at(static_cast<std::size_t>(level)));
        path += QLatin1Char('.');
    }
    return path + QString::fromLatin1(itemName.data(), static_cast<int>(itemName.size()));
}

/// The path in bytes; false when a member is out of the ordinary or the path is too long.
bool appendItemPath(ByteText &path, const ItemAddress &address, std::string_view itemName)
{
    for (int level = 0; level < address.levels; ++level) {
        if (!appendValueText(path, address.indices.at(static_cast<std::size_t>(level))) || !path.append('.'))
            return false;
    }
    return path.append(itemName);
}

// The client takes texts in bytes as well. ASCII means the same to it in both, and needs no conversion.

TarnItem readThrough(OrbClient &client, const ItemAddress &address, std::string_view itemName)
{
    ByteText path;
    const std::optional<std::string_view> connection = plainAscii(address.connection);
    if (connection && appendItemPath(path, address, itemName))
        return client.getItem(connection->data(), path.terminated());
    return client.getItem(toValueText(address.connection), itemPath(address, itemName));
}

TarnResult writeThrough(OrbClient &client, const ItemAddress &address, std::string_view itemName,
                        PyObject *value)
{
    ByteText path;
    const std::optional<std::string_view> connection = plainAscii(address.connection);
    if (connection && appendItemPath(path, address, itemName)) {
        const std::optional<std::string_view> text = plainAscii(value);
        if (text)
            return client.setItem(connection->data(), path.terminated(), text->data());
        ByteText number;
        if (appendValueText(number, value))
            return client.setItem(connection->data(), path.terminated(), number.terminated());
    }
    return client.setItem(toValueText(address.connection), itemPath(address, itemName), toValueText(value));
}

/// What toPython makes of the item, at less cost for what is met most of the time.
PyObject *itemToPython(const TarnItem &item, Conversion code)
{
    if (isValid(item)) {
        bool failed = false;
        PyObject *value = toPythonQuickly(fieldText(item.value), code, failed);
        if (value != nullptr || failed)
            return value;
    }
    return toPython(item, code);
}

} // namespace

PyObject *readItem(PyObject *self, const ItemOwner &owner, std::string_view itemName, Conversion code,
                   bool withTimestamp)
{
    if (Py_TYPE(self) != owner.type)
        return nullptr;
    const ItemAddress address = owner.addressOf(self);
    const LiveClient client(address.client);
    const TarnItem item = client != nullptr ? readThrough(*client, address, itemName) : TarnItem();
    return withTimestamp ? toPythonPair(item, code) : itemToPython(item, code);
}

PyObject *writeItem(PyObject *self, const ItemOwner &owner, PyObject *arguments, std::string_view itemName)
{
    if (Py_TYPE(self) != owner.type)
        return nullptr;
    PyObject *value = PyTuple_GET_SIZE(arguments) == 1 ? PyTuple_GET_ITEM(arguments, 0) : nullptr;
    // The parser finds the words for what is wrong.
    if (value == nullptr && PyArg_ParseTuple(arguments, "O", &value) == 0)
        return nullptr;
    const ItemAddress address = owner.addressOf(self);
    const LiveClient client(address.client);
    return resultString(client != nullptr ? writeThrough(*client, address, itemName, value)
                                          : TarnResult::Failed);
}

PyObject *resultString(TarnResult result)
{
    return PyUnicode_FromString(result == TarnResult::Success ? "ok" : "error");
}

} // namespace orbclient
