#include "workbench/app/system_model.h"

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "workbench/hostkit/drag_payload.h"

#include <QFont>
#include <QMimeData>

#include <algorithm>

namespace workbench
{

namespace
{

const SystemNode *findKey(const SystemNode &node, const QString &key)
{
    for (const auto &child : node.children) {
        const QString childKey = child->key();
        if (childKey == key)
            return child.get();
        if (key.startsWith(childKey + QLatin1Char('/')))
            return findKey(*child, key);
    }
    return nullptr;
}

int countLevel(const SystemNode &node, OrbItemId::Type level)
{
    int number = node.id.type == level ? 1 : 0;
    for (const auto &child : node.children)
        number += countLevel(*child, level);
    return number;
}

} // namespace

SystemModel::SystemModel(KdMainData &mainData_, QObject *parent)
    : QAbstractItemModel(parent), mainData(mainData_), root(readSystemTree(*mainData_.dataAccess))
{
    mainData.dataAccess->subscribeStructureChanged(this);
}

SystemModel::~SystemModel()
{
    mainData.dataAccess->unsubscribe(this);
}

void SystemModel::refresh(const QModelIndexList &rows)
{
    OrbClient &client = *mainData.dataAccess->getOrbClientPtr();
    for (const QModelIndex &row : rows) {
        if (!row.isValid())
            continue;
        auto *node = static_cast<SystemNode *>(row.internalPointer());
        SystemValues values = readSystemValues(client, node->id);
        if (values == node->values)
            continue;
        node->values = values;
        Q_EMIT dataChanged(row.sibling(row.row(), VoltageSetColumn), row.sibling(row.row(), StateColumn));
    }
}

SystemState SystemModel::refreshState(const QModelIndex &row)
{
    if (!row.isValid())
        return SystemState::Unknown;
    auto *node = static_cast<SystemNode *>(row.internalPointer());
    const SystemState state = readSystemState(*mainData.dataAccess->getOrbClientPtr(), node->id);
    if (state != node->values.state) {
        node->values.state = state;
        const QModelIndex cell = row.sibling(row.row(), StateColumn);
        Q_EMIT dataChanged(cell, cell);
    }
    return state;
}

SystemState SystemModel::stateAt(const QModelIndex &index) const
{
    return nodeAt(index).values.state;
}

QString SystemModel::nameAt(const QModelIndex &index) const
{
    return nodeAt(index).name;
}

OrbItemId SystemModel::idAt(const QModelIndex &index) const
{
    return nodeAt(index).id;
}

QString SystemModel::keyAt(const QModelIndex &index) const
{
    return nodeAt(index).key();
}

QModelIndex SystemModel::indexOf(const QString &key) const
{
    const SystemNode *node = findKey(*root, key);
    return node ? indexOf(*node) : QModelIndex();
}

int SystemModel::count(OrbItemId::Type level) const
{
    return countLevel(*root, level);
}

QModelIndex SystemModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, nodeAt(parent).children[static_cast<std::size_t>(row)].get());
}

QModelIndex SystemModel::parent(const QModelIndex &child) const
{
    return child.isValid() ? indexOf(*nodeAt(child).parent) : QModelIndex();
}

int SystemModel::rowCount(const QModelIndex &parent) const
{
    return parent.column() > 0 ? 0 : static_cast<int>(nodeAt(parent).children.size());
}

int SystemModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QVariant SystemModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const SystemNode &node = nodeAt(index);
    if (role == Qt::ToolTipRole)
        return node.details;
    if (role == Qt::DecorationRole && index.column() == StateColumn)
        return stateIcon(node.values.state);
    if (role == Qt::TextAlignmentRole && index.column() != NameColumn && index.column() != StateColumn)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::FontRole && node.id.type == OrbItemId::System && index.column() == NameColumn) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case NameColumn:
        return node.name;
    case VoltageSetColumn:
        return node.values.voltageSet;
    case VoltageMeasureColumn:
        return node.values.voltageMeasure;
    case CurrentMeasureColumn:
        return node.values.currentMeasure;
    case StateColumn:
        return stateText(node.values.state);
    default:
        return {};
    }
}

QVariant SystemModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole && section != NameColumn && section != StateColumn)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const bool isLong = role == Qt::ToolTipRole;
    switch (section) {
    case NameColumn:
        return isLong ? tr("Controller, line, crate, module or channel") : tr("Name");
    case VoltageSetColumn:
        return isLong ? tr("Voltage that the channel is set to") : tr("Set voltage");
    case VoltageMeasureColumn:
        return isLong ? tr("Voltage measured at the channel's output") : tr("Voltage");
    case CurrentMeasureColumn:
        return isLong ? tr("Current measured at the channel's output") : tr("Current");
    case StateColumn:
        return isLong ? tr("What the object is doing") : tr("State");
    default:
        return {};
    }
}

Qt::ItemFlags SystemModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    return index.isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

QStringList SystemModel::mimeTypes() const
{
    return {mainData.getDndMimeType()};
}

QMimeData *SystemModel::mimeData(const QModelIndexList &indexes) const
{
    QModelIndexList rows;
    for (const QModelIndex &index : indexes) {
        const QModelIndex row = index.sibling(index.row(), NameColumn);
        if (row.isValid() && !rows.contains(row))
            rows.append(row);
    }
    if (rows.isEmpty())
        return nullptr;
    QVector<OrbItemId> ids;
    ids.reserve(rows.size());
    for (const QModelIndex &row : qAsConst(rows))
        ids.append(idAt(row));
    return hostkit::makeDragPayload(ids, mainData.getDndMimeType()).release();
}

Qt::DropActions SystemModel::supportedDragActions() const
{
    return Qt::CopyAction;
}

bool SystemModel::wantsNotification(DlNotificationQuery &query)
{
    return query.kind == DlNotificationQuery::StructureChanged;
}

void SystemModel::structureChanged(const OrbItemId &)
{
    // Several changes that come together are read once, and not from within the notification.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (rebuildPending)
                return;
            rebuildPending = true;
            QMetaObject::invokeMethod(this, &SystemModel::rebuild, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void SystemModel::rebuild()
{
    rebuildPending = false;
    std::unique_ptr<SystemNode> current = readSystemTree(*mainData.dataAccess);
    if (isSameStructure(*current, *root))
        return;
    beginResetModel();
    root = std::move(current);
    endResetModel();
}

const SystemNode &SystemModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? *static_cast<const SystemNode *>(index.internalPointer()) : *root;
}

QModelIndex SystemModel::indexOf(const SystemNode &node) const
{
    if (!node.parent)
        return {};
    return createIndex(node.row, NameColumn, const_cast<SystemNode *>(&node));
}

} // namespace workbench
