#pragma once

#include "workbench/app/system_tree.h"

#include "hostclient/dl_message_subscriber.h"

#include <QAbstractItemModel>

class KdMainData;

namespace workbench
{

/// The system as a tree of live values. It follows the structure by itself, and reads values only of the rows that
/// refresh() is called for. GUI thread only.
class SystemModel : public QAbstractItemModel, private DlMessageSubscriber
{
    Q_OBJECT

public:
    enum Column
    {
        NameColumn,
        VoltageSetColumn,
        VoltageMeasureColumn,
        CurrentMeasureColumn,
        StateColumn,
        ColumnCount,
    };

    /// Main data is kept and outlives the model.
    explicit SystemModel(KdMainData &mainData, QObject *parent = nullptr);
    ~SystemModel() override;

    /// Reads the values of these rows now and reports what changed.
    void refresh(const QModelIndexList &rows);

    /// Reads no more than the state of one row now, reports a change, and gives it.
    SystemState refreshState(const QModelIndex &row);

    /// As it was last read.
    SystemState stateAt(const QModelIndex &index) const;
    QString nameAt(const QModelIndex &index) const;

    /// Address of a row; Undefined for an invalid index.
    OrbItemId idAt(const QModelIndex &index) const;

    /// Names a row also after the structure changed; empty for an invalid index.
    QString keyAt(const QModelIndex &index) const;

    /// The row with that key, or an invalid index when it is gone.
    QModelIndex indexOf(const QString &key) const;

    /// Number of objects of that level.
    int count(OrbItemId::Type level) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;

private:
    bool wantsNotification(DlNotificationQuery &query) override;
    void structureChanged(const OrbItemId &id) override;

    void rebuild();
    const SystemNode &nodeAt(const QModelIndex &index) const;
    QModelIndex indexOf(const SystemNode &node) const;

    KdMainData &mainData;
    std::unique_ptr<SystemNode> root;
    bool rebuildPending = false;
};

} // namespace workbench
