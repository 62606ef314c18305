#include "workbench/app/system_tree.h"

#include "hostclient/dl_data_access.h"
#include "hostclient/orb_client.h"
#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_value.h"
#include "workbench/app/translated_text.h"

#include <QSet>

#include <algorithm>
#include <map>

namespace workbench
{

namespace
{

constexpr int ChannelLimit = 4096; // a module that claims more is not believed

bool comesBefore(const OrbItemId &a, const OrbItemId &b)
{
    return a.line != b.line ? a.line < b.line : a.address < b.address;
}

/// Builds what lies below one controller.
class ControllerReader
{
public:
    ControllerReader(OrbClient &client_, SystemNode &controller_) : client(client_), controller(controller_)
    { }

    void read()
    {
        QVector<OrbItemId> crates;
        QVector<OrbItemId> modules;
        client.getCrates(controller.id.connectionName, crates);
        client.getModules(controller.id.connectionName, modules);
        // Lines come first, so that they stand in their own order whatever lies on them.
        for (const OrbItemId &id : qAsConst(crates))
            lines[id.line] = nullptr;
        for (const OrbItemId &id : qAsConst(modules))
            lines[id.line] = nullptr;
        for (auto &[number, node] : lines) {
            OrbItemId id = addressOf(OrbItemId::Line);
            id.line = number;
            node = controller.append(id, tr("Line %1").arg(number));
            node->details = node->name;
        }
        std::sort(crates.begin(), crates.end(), comesBefore);
        std::sort(modules.begin(), modules.end(), comesBefore);
        for (const OrbItemId &id : qAsConst(crates))
            addCrate(id);
        for (const OrbItemId &id : qAsConst(modules)) {
            if (!inCrate.contains(placeOf(id)))
                addModule(*lines[id.line], id);
        }
    }

private:
    static quint64 placeOf(const OrbItemId &id) { return (static_cast<quint64>(id.line) << 32) | id.address; }

    /// An address of that level below the controller, complete with both forms of the connection.
    OrbItemId addressOf(OrbItemId::Type level) const
    {
        OrbItemId id(level);
        id.connection = controller.id.connection;
        id.connectionName = controller.id.connectionName;
        return id;
    }

    OrbItemId addressOf(OrbItemId::Type level, const OrbItemId &listed) const
    {
        OrbItemId id = addressOf(level);
        id.line = listed.line;
        id.address = listed.address;
        return id;
    }

    void addCrate(const OrbItemId &listed)
    {
        const OrbItemId id = addressOf(OrbItemId::Crate, listed);
        SystemNode *node = lines[id.line]->append(id, tr("Crate %1").arg(id.address));
        node->details = tr("Line %1, address %2").arg(id.line).arg(id.address);
        QVector<OrbItemId> modules;
        client.getCrateModules(id.connectionName, id, modules);
        std::sort(modules.begin(), modules.end(), comesBefore);
        for (const OrbItemId &module : qAsConst(modules)) {
            inCrate.insert(placeOf(module));
            addModule(*node, module);
        }
    }

    void addModule(SystemNode &parent, const OrbItemId &listed)
    {
        OrbItemId id = addressOf(OrbItemId::Module, listed);
        SystemNode *node = parent.append(id, tr("Module %1").arg(id.address));
        node->details = tr("Line %1, address %2").arg(id.line).arg(id.address);

        id.itemName = OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels();
        OrbItemValue number(id);
        if (!client.readItemValue(number))
            return;
        const int channels = std::min(number.value().toInt(), ChannelLimit);
        id = addressOf(OrbItemId::Channel, listed);
        for (id.channel = 0; id.channel < channels; ++id.channel) {
            SystemNode *channel = node->append(id, tr("Channel %1").arg(id.channel));
            channel->details = tr("%1, channel %2").arg(node->details).arg(id.channel);
        }
    }

    OrbClient &client;
    SystemNode &controller;
    std::map<quint32, SystemNode *> lines;
    QSet<quint64> inCrate;
};

} // namespace

SystemNode *SystemNode::append(const OrbItemId &childId, const QString &childName)
{
    children.push_back(std::make_unique<SystemNode>(childId, childName));
    SystemNode *child = children.back().get();
    child->parent = this;
    child->row = static_cast<int>(children.size()) - 1;
    return child;
}

QString SystemNode::key() const
{
    if (!parent)
        return {};
    // A controller's display text may change and its index may not mean the same controller again: its name stays.
    const QString own = id.type == OrbItemId::System
        ? id.connectionName
        : QStringLiteral("%1:%2:%3:%4").arg(id.type).arg(id.line).arg(id.address).arg(id.channel);
    return parent->key() + QLatin1Char('/') + own;
}

std::unique_ptr<SystemNode> readSystemTree(DlDataAccess &dataAccess)
{
    auto root = std::make_unique<SystemNode>();
    QVector<QPair<QString, QString>> controllers;
    dataAccess.getAllControllerNames(controllers);
    for (const auto &[connectionName, text] : qAsConst(controllers)) {
        OrbItemId id(OrbItemId::System);
        id.connectionName = connectionName;
        id.connection = dataAccess.getOrbConnectionIndex(connectionName);
        SystemNode *node = root->append(id, text.isEmpty() ? connectionName : text);
        node->details = tr("Connection \"%1\"").arg(connectionName);
        ControllerReader(*dataAccess.getOrbClientPtr(), *node).read();
    }
    return root;
}

bool isSameStructure(const SystemNode &a, const SystemNode &b)
{
    return a.id == b.id && a.name == b.name
        && std::equal(a.children.begin(), a.children.end(), b.children.begin(), b.children.end(),
                      [](const auto &left, const auto &right) { return isSameStructure(*left, *right); });
}

} // namespace workbench
