#include "benchmarks/in_process_client.h"

#include "hostclient/orb_client.h"
#include "hostclient/orb_item_value.h"

#include <cstring>

// The client's operations, as little as they can cost. They stand in the program itself, so that both modules call
// these and not the host library's.

InProcessClient &InProcessClient::instance()
{
    static InProcessClient client;
    return client;
}

void InProcessClient::setValue(const char *text)
{
    item = TarnItem();
    std::strncpy(item.path, "0.0.0.Item", sizeof(item.path) - 1);
    std::strncpy(item.value, text, sizeof(item.value) - 1);
    std::strncpy(item.timestamp, "1763650000.123", sizeof(item.timestamp) - 1);
}

namespace
{

// Calls, and what they were given: nothing of a call can then be left out.
void count(const char *connectionName, const char *itemPath)
{
    InProcessClient &client = InProcessClient::instance();
    ++client.calls;
    client.checksum += static_cast<unsigned char>(connectionName[0]) + std::strlen(itemPath);
}

} // namespace

OrbClient::OrbClient(OrbBackend &service) : backend(service) { }
OrbClient::~OrbClient() = default;

TarnItem OrbClient::getItem(const char *connectionName, const char *itemPath)
{
    count(connectionName, itemPath);
    return InProcessClient::instance().item;
}

TarnItem OrbClient::getItem(const QString &connectionName, const QString &itemPath)
{
    count(connectionName.toLatin1().constData(), itemPath.toLatin1().constData());
    return InProcessClient::instance().item;
}

TarnResult OrbClient::setItem(const char *connectionName, const char *itemPath, const char *value)
{
    count(connectionName, itemPath);
    InProcessClient::instance().checksum += std::strlen(value);
    return TarnResult::Success;
}

TarnResult OrbClient::setItem(const QString &connectionName, const QString &itemPath, const QString &value)
{
    return setItem(connectionName.toLatin1().constData(), itemPath.toLatin1().constData(),
                   value.toLatin1().constData());
}

bool OrbClient::checkHasConnection(const QString &)
{
    return true;
}

bool OrbClient::getCrates(const QString &, QVector<OrbItemId> &crates)
{
    crates.clear();
    if (InProcessClient::instance().hasCrate) {
        OrbItemId crate(OrbItemId::Crate);
        crate.address = 1000;
        crates.append(crate);
    }
    return true;
}

bool OrbClient::getModules(const QString &, QVector<OrbItemId> &modules)
{
    modules.clear();
    for (int i = 0; i < InProcessClient::instance().modules; ++i) {
        OrbItemId module(OrbItemId::Module);
        module.line = static_cast<quint32>(i / 1000);
        module.address = static_cast<quint32>(i % 1000);
        modules.append(module);
    }
    return true;
}

bool OrbClient::getCrateModules(const QString &, const OrbItemId &, QVector<OrbItemId> &modules)
{
    modules.clear();
    return true;
}

bool OrbClient::readItemValue(OrbItemValue &value)
{
    value.setValue(InProcessClient::ChannelsOfModule);
    return true;
}
