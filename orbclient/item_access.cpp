#include "orbclient/item_access.h"

#include "hostclient/orb_client.h"
#include "orbclient/live_clients.h"

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

TarnItem readThrough(OrbClient &client, const ItemAddress &address, std::string_view itemName)
{
    return client.getItem(toValueText(address.connection), itemPath(address, itemName));
}

TarnResult writeThrough(OrbClient &client, const ItemAddress &address, std::string_view itemName,
                        PyObject *value)
{
    return client.setItem(toValueText(address.connection), itemPath(address, itemName), toValueText(value));
}

} // namespace

PyObject *readItem(PyObject *self, const ItemOwner &owner, std::string_view itemName, Conversion code,
                   bool withTimestamp)
{
    if (Py_TYPE(self) != owner.type)
        return nullptr;
    const ItemAddress address = owner.addressOf(self);
    OrbClient *client = liveClient(address.client);
    const TarnItem item = client != nullptr ? readThrough(*client, address, itemName) : TarnItem();
    return withTimestamp ? toPythonPair(item, code) : toPython(item, code);
}

PyObject *writeItem(PyObject *self, const ItemOwner &owner, PyObject *arguments, std::string_view itemName)
{
    if (Py_TYPE(self) != owner.type)
        return nullptr;
    PyObject *value = nullptr;
    if (PyArg_ParseTuple(arguments, "O", &value) == 0)
        return nullptr;
    const ItemAddress address = owner.addressOf(self);
    OrbClient *client = liveClient(address.client);
    return resultString(client != nullptr ? writeThrough(*client, address, itemName, value)
                                          : TarnResult::Failed);
}

PyObject *resultString(TarnResult result)
{
    return PyUnicode_FromString(result == TarnResult::Success ? "ok" : "error");
}

} // namespace orbclient
