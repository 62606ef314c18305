#include "workbench/simulator/plant_file_object.h"

#include "workbench/simulator/refusal_text.h"
#include "workbench/simulator/unit_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <cmath>

namespace simulator
{

namespace
{

using Kind = PlantFieldKind;

// Of a Number or an Integer, which has no unit.
bool numberOf(const PlantField &field, const QJsonValue &value, double &number)
{
    if (value.isDouble()) {
        number = value.toDouble();
    } else if (field.unit[0] == '\0' || !value.isString()
               || !parseWithUnit(value.toString(), QString::fromUtf8(field.unit), number)) {
        return false;
    }
    const bool isWhole = field.kind != Kind::Integer || std::floor(number) == number;
    const bool isAboveLeast = field.isLeastAllowed ? number >= field.least : number > field.least;
    return isWhole && isAboveLeast && number <= field.most;
}

QString shown(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Array:
        return QStringLiteral("a list");
    case QJsonValue::String:
        return quoted(value.toString());
    default:
        break;
    }
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

QString fieldNames(PlantObjectKind kind)
{
    QStringList names;
    for (const PlantField *field = PlantSchema::begin(); field != PlantSchema::end(); ++field) {
        if (field->owner == kind)
            names << QString::fromLatin1(field->name);
    }
    return names.join(QStringLiteral(", "));
}

} // namespace

PlantFileObject::PlantFileObject(PlantFileErrors &fileErrors, PlantObjectKind objectKind,
                                 const QJsonValue &value, const QString &objectPath)
    : errorList(&fileErrors), kind(objectKind), path(objectPath), members(value.toObject())
{
    if (value.isObject() || value.isUndefined())
        checkFields();
    else
        errorList->add(path,
                       QStringLiteral("%1 stands where a %2, which is an object, has to be")
                           .arg(shown(value), PlantSchema::kindName(kind)));
}

void PlantFileObject::checkFields()
{
    const QStringList names = members.keys();
    for (const QString &name : names) {
        const PlantField *const known = PlantSchema::find(kind, name);
        const QJsonValue value = members.value(name);
        if (known == nullptr) {
            errorList->addAtName(pathOf(name),
                                 QStringLiteral("a %1 has no field %2; it has: %3")
                                     .arg(PlantSchema::kindName(kind), quoted(name), fieldNames(kind)));
        } else if (!isAllowed(*known, value)) {
            errorList->add(
                pathOf(name),
                QStringLiteral("\"%1\" of a %2 is %3; allowed is %4")
                    .arg(name, PlantSchema::kindName(kind), shown(value), PlantSchema::allowed(*known)));
        } else {
            continue;
        }
        members.remove(name);
    }
    for (const PlantField *field = PlantSchema::begin(); field != PlantSchema::end(); ++field) {
        if (field->owner == kind && field->isRequired && !names.contains(QLatin1String(field->name)))
            errorList->add(path,
                           QStringLiteral("a %1 needs \"%2\": %3")
                               .arg(PlantSchema::kindName(kind), QLatin1String(field->name),
                                    PlantSchema::allowed(*field)));
    }
}

bool PlantFileObject::isAllowed(const PlantField &field, const QJsonValue &value) const
{
    double number = 0;
    switch (field.kind) {
    case Kind::Number:
    case Kind::Integer:
        return numberOf(field, value, number);
    case Kind::Bool:
        return value.isBool();
    case Kind::Text:
        return value.isString() && PlantSchema::isText(value.toString());
    case Kind::Payload:
        return value.isString() && PlantSchema::isPayload(value.toString());
    case Kind::Name:
        return value.isString() && PlantSchema::isName(value.toString());
    case Kind::Choice:
        return value.isString()
            && QString::fromLatin1(field.choices).split(QLatin1Char('|')).contains(value.toString());
    case Kind::Object:
        return value.isObject();
    case Kind::Objects:
        return value.isArray();
    case Kind::ObjectOrObjects:
        return value.isObject() || value.isArray();
    }
    return false;
}

double PlantFileObject::number(const char *name) const
{
    const PlantField &wanted = field(name);
    double number = 0;
    return has(name) && numberOf(wanted, members.value(QLatin1String(name)), number) ? number
                                                                                     : wanted.fallback;
}

quint32 PlantFileObject::integer(const char *name) const
{
    const double value = number(name);
    return std::isnan(value) ? 0 : static_cast<quint32>(value);
}

bool PlantFileObject::flag(const char *name) const
{
    return members.value(QLatin1String(name)).toBool();
}

QString PlantFileObject::text(const char *name) const
{
    const PlantField &wanted = field(name);
    return members.value(QLatin1String(name))
        .toString(QString::fromLatin1(wanted.choices).section(QLatin1Char('|'), 0, 0));
}

PlantFileObject PlantFileObject::object(const char *name) const
{
    const QString key = QString::fromLatin1(name);
    return {*errorList, field(name).element, members.value(key), pathOf(key)};
}

std::vector<PlantFileObject> PlantFileObject::objects(const char *name) const
{
    const QString key = QString::fromLatin1(name);
    const QJsonValue value = members.value(key);
    std::vector<PlantFileObject> result;
    if (value.isObject())
        result.push_back(object(name));
    const QJsonArray list = value.toArray();
    for (int i = 0; i < list.size() && errorList->isEmpty(); ++i)
        result.emplace_back(*errorList, field(name).element, list.at(i),
                            PlantFilePlaces::elementPath(pathOf(key), i));
    return result;
}

bool PlantFileObject::allowAtMost(int most, const char *name) const
{
    const int count = members.value(QLatin1String(name)).toArray().size();
    if (count <= most)
        return true;
    refuse(name,
           QStringLiteral("there are %1 %2; allowed are %3")
               .arg(QString::number(count), QLatin1String(name), QString::number(most)));
    return false;
}

void PlantFileObject::refuse(const char *name, const QString &text) const
{
    errorList->add(has(name) ? pathOf(QString::fromLatin1(name)) : path, text);
}

const PlantField &PlantFileObject::field(const char *name) const
{
    const PlantField *const known = PlantSchema::find(kind, QString::fromLatin1(name));
    Q_ASSERT(known != nullptr);
    return *known;
}

} // namespace simulator
