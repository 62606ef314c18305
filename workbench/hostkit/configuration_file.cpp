#include "workbench/hostkit/configuration_file.h"

#include "hostsdk/kd_plugin_configuration.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <limits>

namespace
{

QString translated(const char *text)
{
    return QCoreApplication::translate("ConfigurationFile", text);
}

bool fail(QString *error, const QString &text)
{
    if (error != nullptr)
        *error = text;
    return false;
}

QString depthText()
{
    return translated("The configuration is nested deeper than %1 levels.")
        .arg(hostkit::MaximumConfigurationDepth);
}

// Values

QJsonValue doubleToJson(double number)
{
    if (std::isnan(number))
        return QStringLiteral("nan");
    if (std::isinf(number))
        return number > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    return number;
}

QJsonObject tagged(const char *tag, const QJsonValue &value)
{
    return {{QString::fromLatin1(tag), value}};
}

/// Undefined for a value that has no text.
QJsonValue toJson(const QVariant &value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QStringList:
        return QJsonArray::fromStringList(value.toStringList());
    case QMetaType::Int:
        return tagged("int", value.toInt());
    case QMetaType::UInt:
        return tagged("uint", static_cast<qint64>(value.toUInt()));
    // As texts: JSON's numbers are exact to 53 bits only.
    case QMetaType::LongLong:
        return tagged("int64", QString::number(value.toLongLong()));
    case QMetaType::ULongLong:
        return tagged("uint64", QString::number(value.toULongLong()));
    case QMetaType::Double:
        return tagged("double", doubleToJson(value.toDouble()));
    case QMetaType::QByteArray:
        return tagged("base64", QString::fromLatin1(value.toByteArray().toBase64()));
    default:
        return value.canConvert<QString>() ? QJsonValue(value.toString()) : QJsonValue(QJsonValue::Undefined);
    }
}

/// A whole number between the limits; an invalid variant for anything else.
template <class Number>
QVariant wholeNumber(const QJsonValue &value)
{
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    const bool fits =
        number >= std::numeric_limits<Number>::min() && number <= std::numeric_limits<Number>::max();
    return fits && std::floor(number) == number ? QVariant::fromValue(static_cast<Number>(number))
                                                : QVariant();
}

QVariant doubleFromJson(const QJsonValue &value)
{
    if (value.isDouble())
        return value.toDouble();
    const QString text = value.toString();
    if (text == QLatin1String("nan"))
        return std::numeric_limits<double>::quiet_NaN();
    if (text == QLatin1String("inf"))
        return std::numeric_limits<double>::infinity();
    if (text == QLatin1String("-inf"))
        return -std::numeric_limits<double>::infinity();
    return {};
}

QVariant taggedFromJson(const QJsonObject &object)
{
    if (object.size() != 1)
        return {};
    const QString tag = object.constBegin().key();
    const QJsonValue value = object.constBegin().value();
    bool ok = false;
    if (tag == QLatin1String("int"))
        return wholeNumber<int>(value);
    if (tag == QLatin1String("uint"))
        return wholeNumber<unsigned>(value);
    if (tag == QLatin1String("double"))
        return doubleFromJson(value);
    if (tag == QLatin1String("int64")) {
        const qlonglong number = value.toString().toLongLong(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    if (tag == QLatin1String("uint64")) {
        const qulonglong number = value.toString().toULongLong(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    if (tag == QLatin1String("base64")) {
        const QByteArray encoded = value.toString().toLatin1();
        const QByteArray decoded = QByteArray::fromBase64(encoded);
        // The decoder skips what it does not know; only what encodes to the same text was ever written by us.
        return value.isString() && decoded.toBase64() == encoded ? QVariant(decoded) : QVariant();
    }
    return {};
}

/// A list of texts; elements that are none are skipped.
QStringList listFromJson(const QJsonArray &array)
{
    QStringList list;
    list.reserve(array.size());
    for (const QJsonValue &element : array) {
        if (element.isString())
            list.append(element.toString());
    }
    return list;
}

QVariant fromJson(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Array:
        return listFromJson(value.toArray());
    case QJsonValue::Object:
        return taggedFromJson(value.toObject());
    // Somebody edited the file by hand.
    case QJsonValue::Double:
        return value.toDouble();
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    return {};
}

// Nodes

bool writeNode(const KdPluginConfiguration &node, int depth, QJsonObject &object)
{
    if (depth > hostkit::MaximumConfigurationDepth)
        return false;
    object.insert(QStringLiteral("name"), node.name);
    // Inserting an undefined value leaves the key out.
    object.insert(QStringLiteral("value"), toJson(node.value));
    object.insert(QStringLiteral("default"), toJson(node.defaultValue));
    if (node.saved)
        object.insert(QStringLiteral("saved"), true);
    if (node.visible)
        object.insert(QStringLiteral("visible"), true);
    QJsonArray children;
    for (const KdPluginConfiguration &child : node.children) {
        QJsonObject childObject;
        if (!writeNode(child, depth + 1, childObject))
            return false;
        children.append(childObject);
    }
    if (!children.isEmpty())
        object.insert(QStringLiteral("children"), children);
    return true;
}

bool readNode(const QJsonObject &object, int depth, KdPluginConfiguration &node)
{
    if (depth > hostkit::MaximumConfigurationDepth)
        return false;
    node.name = object.value(QStringLiteral("name")).toString();
    node.value = fromJson(object.value(QStringLiteral("value")));
    node.defaultValue = fromJson(object.value(QStringLiteral("default")));
    node.saved = object.value(QStringLiteral("saved")).toBool();
    node.visible = object.value(QStringLiteral("visible")).toBool();
    const QJsonArray children = object.value(QStringLiteral("children")).toArray();
    for (const QJsonValue &child : children) {
        if (!child.isObject())
            continue;
        node.children.append(KdPluginConfiguration());
        if (!readNode(child.toObject(), depth + 1, node.children.last()))
            return false;
    }
    return true;
}

/// Says where in the text a parser stopped, counting lines and bytes from 1.
QString parseErrorText(const QByteArray &text, const QJsonParseError &error)
{
    const int offset = qBound(0, error.offset, text.size());
    const QByteArray before = text.left(offset);
    const int line = before.count('\n') + 1;
    const int column = offset - (before.lastIndexOf('\n') + 1) + 1;
    return translated("line %1, column %2: %3").arg(line).arg(column).arg(error.errorString());
}

} // namespace

namespace hostkit
{

bool saveConfiguration(const KdPluginConfiguration &tree, const QString &path, QString *error)
{
    QJsonObject root;
    if (!writeNode(tree, 0, root))
        return fail(error, depthText());
    const QByteArray text = QJsonDocument(root).toJson();

    const QString folder = QFileInfo(path).absolutePath();
    QSaveFile file(path);
    if (!QDir().mkpath(folder))
        return fail(error, translated("The folder \"%1\" cannot be made.").arg(folder));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
        return fail(error, translated("\"%1\" cannot be written: %2").arg(path, file.errorString()));
    return true;
}

bool loadConfiguration(KdPluginConfiguration &tree, const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, translated("\"%1\" cannot be read: %2").arg(path, file.errorString()));
    const QByteArray text = file.read(MaximumConfigurationSize + 1);
    if (file.error() != QFileDevice::NoError)
        return fail(error, translated("\"%1\" cannot be read: %2").arg(path, file.errorString()));
    if (text.size() > MaximumConfigurationSize)
        return fail(error, translated("\"%1\" is too large for a configuration.").arg(path));

    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(error, translated("\"%1\", %2").arg(path, parseErrorText(text, parseError)));
    if (!document.isObject())
        return fail(error, translated("\"%1\", line 1: a configuration begins with \"{\".").arg(path));

    KdPluginConfiguration read;
    if (!readNode(document.object(), 0, read))
        return fail(error, translated("\"%1\": %2").arg(path, depthText()));
    tree = std::move(read);
    return true;
}

} // namespace hostkit
