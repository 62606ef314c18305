#pragma once

#include "workbench/simulator/plant_file_errors.h"
#include "workbench/simulator/plant_schema.h"

#include <QJsonObject>
#include <QString>

#include <vector>

namespace simulator
{

/// One object of a plant file, checked against the schema when it is made: afterwards every field that is there has a
/// value that the schema allows, and one that is not there, or was refused, has its fallback. The names that are asked
/// for are the schema's.
class PlantFileObject
{
public:
    /// `fileErrors` outlives this object.
    PlantFileObject(PlantFileErrors &fileErrors, PlantObjectKind objectKind, const QJsonValue &value,
                    const QString &objectPath);

    QString kindName() const { return PlantSchema::kindName(kind); }
    bool has(const char *name) const { return members.contains(QLatin1String(name)); }
    /// A Number in its field's unit, or an Integer.
    double number(const char *name) const;
    /// An Integer; 0 when there is no fallback.
    quint32 integer(const char *name) const;
    bool flag(const char *name) const;
    /// A Text, a Name or a Choice.
    QString text(const char *name) const;
    /// An Object, also one that is left out.
    PlantFileObject object(const char *name) const;
    /// The elements of Objects or ObjectOrObjects.
    std::vector<PlantFileObject> objects(const char *name) const;
    bool isList(const char *name) const { return members.value(QLatin1String(name)).isArray(); }

    /// Whether a list has no more elements than that; adds an error when it has.
    bool allowAtMost(int most, const char *name) const;

    /// Adds an error at the field, or at the object when it has no such field.
    void refuse(const char *name, const QString &text) const;
    PlantFileErrors &errors() const { return *errorList; }

private:
    void checkFields();
    bool isAllowed(const PlantField &field, const QJsonValue &value) const;
    QString pathOf(const QString &name) const { return PlantFilePlaces::memberPath(path, name); }
    const PlantField &field(const char *name) const;

    PlantFileErrors *errorList; // never null, not owned
    PlantObjectKind kind;
    QString path;
    QJsonObject members; // without those that were refused
};

} // namespace simulator
