#pragma once

#include "workbench/simulator/item_definition.h"

#include <QHash>
#include <QString>
#include <QVector>

namespace simulator
{

/// The items of one level, found by name. Made once for each level and never changed: any thread may read it.
class ItemTable
{
public:
    /// `rows` is not owned and outlives the table.
    template <std::size_t Size>
    explicit ItemTable(const ItemDefinition (&tableRows)[Size]) : rows(tableRows)
    {
        indexRows(static_cast<int>(Size));
    }

    /// Null when the level has no item of that name.
    const ItemDefinition *find(const QString &name) const;

    /// In the table's order.
    const QVector<QString> &names(bool writableOnly) const;

    /// The first item of that source and argument; empty when there is none.
    const QString &nameOf(ItemSource source, quint8 argument) const;

    /// The unit of one of this table's rows as a text that is shared, not made anew.
    const QString &unit(const ItemDefinition &item) const;

private:
    static int argumentKey(ItemSource source, quint8 argument)
    {
        return static_cast<int>(source) * 256 + argument;
    }
    void indexRows(int count);

    const ItemDefinition *const rows;
    QHash<QString, int> index;
    QVector<QString> allNames;
    QVector<QString> writableNames;
    QVector<QString> units;
    QHash<int, QString> namesOfArguments;
    const QString noName;
};

} // namespace simulator
