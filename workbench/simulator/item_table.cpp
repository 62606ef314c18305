#include "workbench/simulator/item_table.h"

namespace simulator
{

void ItemTable::indexRows(int count)
{
    index.reserve(count);
    allNames.reserve(count);
    units.reserve(count);
    for (int i = 0; i < count; ++i) {
        const QString name = QString::fromLatin1(rows[i].name);
        index.insert(name, i);
        allNames.append(name);
        if (isWritable(rows[i]))
            writableNames.append(name);
        const int key = argumentKey(rows[i].source, rows[i].argument);
        if (!namesOfArguments.contains(key))
            namesOfArguments.insert(key, name);
        units.append(QString::fromUtf8(rows[i].unit));
    }
}

const ItemDefinition *ItemTable::find(const QString &name) const
{
    const auto found = index.constFind(name);
    return found == index.constEnd() ? nullptr : rows + found.value();
}

const QVector<QString> &ItemTable::names(bool writableOnly) const
{
    return writableOnly ? writableNames : allNames;
}

const QString &ItemTable::nameOf(ItemSource source, quint8 argument) const
{
    const auto found = namesOfArguments.constFind(argumentKey(source, argument));
    return found == namesOfArguments.constEnd() ? noName : *found;
}

const QString &ItemTable::unit(const ItemDefinition &item) const
{
    return units.at(static_cast<int>(&item - rows));
}

} // namespace simulator
