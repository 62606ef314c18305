#pragma once

#include "workbench/app/system_values.h"

#include "hostclient/orb_item_id.h"

#include <QString>

#include <memory>
#include <vector>

class DlDataAccess;

namespace workbench
{

/// One object of the system and what lies below it: controller, line, crate, module, channel. The root stands for
/// all controllers and has no address.
class SystemNode
{
    Q_DISABLE_COPY(SystemNode)

public:
    SystemNode() = default;
    SystemNode(const OrbItemId &nodeId, const QString &nodeName) : id(nodeId), name(nodeName) { }

    SystemNode *append(const OrbItemId &childId, const QString &childName);

    /// Names the object among all others, also after the tree was read anew.
    QString key() const;

    OrbItemId id;
    QString name; ///< as shown: "Module 4"
    QString details; ///< where it is: "Line 0, address 4"
    SystemNode *parent = nullptr;
    int row = 0; ///< index in the parent's children
    std::vector<std::unique_ptr<SystemNode>> children;
    SystemValues values; ///< as last read
};

/// Reads the structure of the whole system, without any values. Never null.
std::unique_ptr<SystemNode> readSystemTree(DlDataAccess &dataAccess);

/// Whether both trees hold the same objects in the same order.
bool isSameStructure(const SystemNode &a, const SystemNode &b);

} // namespace workbench
