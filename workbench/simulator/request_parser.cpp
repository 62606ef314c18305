#include "workbench/simulator/request_parser.h"

#include "workbench/simulator/refusal_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <cmath>
#include <limits>

namespace simulator
{

namespace
{

constexpr quint32 FirstCrateAddress = 1000;

// Where the offending character stands, in bytes. For some errors the parser is already past it.
int errorOffset(const QJsonParseError &error, int size)
{
    switch (error.error) {
    case QJsonParseError::UnterminatedObject:
    case QJsonParseError::UnterminatedArray:
    case QJsonParseError::MissingNameSeparator:
    case QJsonParseError::MissingValueSeparator:
    case QJsonParseError::MissingObject:
    case QJsonParseError::IllegalValue:
        return qBound(0, error.offset - 1, size);
    default:
        return qBound(0, error.offset, size);
    }
}

QString positionText(const QString &before)
{
    const int line = before.count(QLatin1Char('\n')) + 1;
    const int column = before.size() - before.lastIndexOf(QLatin1Char('\n'));
    return QStringLiteral("line %1, column %2").arg(line).arg(column);
}

// Position of half of a surrogate pair, which no JSON text can carry; -1 when there is none.
int loneSurrogate(const QString &text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        const bool isPair =
            text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (!isPair)
            return i;
        ++i;
    }
    return -1;
}

// What stands there, in the words of a refusal.
QString described(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 15);
    case QJsonValue::String:
        return quoted(value.toString());
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("missing");
}

QString numberText(double number)
{
    constexpr double LargestExactInteger = 9007199254740992.0;
    if (number == std::floor(number) && std::abs(number) <= LargestExactInteger)
        return QString::number(static_cast<qint64>(number));
    return QString::number(number, 'g', 17);
}

bool isDecimal(const QString &text)
{
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return false;
    }
    return !text.isEmpty();
}

} // namespace

bool RequestParser::parse(const QString &request, QVector<RequestCommand> &commands, QString &error)
{
    commands.clear();
    error.clear();
    const bool isGood = RequestParser(error).parseDocument(request, commands);
    if (!isGood)
        commands.clear();
    return isGood;
}

bool RequestParser::parseDocument(const QString &request, QVector<RequestCommand> &commands)
{
    if (request.size() > LongestRequest) {
        error = QStringLiteral("the request has %1 characters; allowed: at most %2")
                    .arg(request.size())
                    .arg(LongestRequest);
        return false;
    }
    const int surrogate = loneSurrogate(request);
    if (surrogate >= 0) {
        error = QStringLiteral("malformed JSON at %1: half of a surrogate pair")
                    .arg(positionText(request.left(surrogate)));
        return false;
    }
    const QByteArray utf8 = request.toUtf8();
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(utf8, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        const QByteArray before = utf8.left(errorOffset(parseError, utf8.size()));
        error = QStringLiteral("malformed JSON at %1: %2")
                    .arg(positionText(QString::fromUtf8(before)), parseError.errorString());
        return false;
    }
    if (!document.isObject())
        return refuse(QString(), QStringLiteral("an array"), QStringLiteral("an object"));
    return parseRequest(document.object(), commands);
}

bool RequestParser::parseRequest(const QJsonObject &request, QVector<RequestCommand> &commands)
{
    if (!hasOnly(request, QString(), QStringLiteral("i t c r")))
        return false;
    const QJsonValue session = request.value(QLatin1String("i"));
    if (!session.isUndefined() && !session.isString())
        return refuse(QStringLiteral("i"), described(session), QStringLiteral("a text"));
    const QJsonValue type = request.value(QLatin1String("t"));
    if (type != QJsonValue(QStringLiteral("request")))
        return refuse(QStringLiteral("t"), described(type), QStringLiteral("\"request\""));
    const QJsonValue route = request.value(QLatin1String("r"));
    if (!route.isUndefined() && route != QJsonValue(QStringLiteral("websocket")))
        return refuse(QStringLiteral("r"), described(route), QStringLiteral("\"websocket\""));

    const QJsonValue list = request.value(QLatin1String("c"));
    const QJsonArray array = list.toArray();
    if (array.isEmpty()) {
        const QString found = list.isArray() ? QStringLiteral("an empty array") : described(list);
        return refuse(QStringLiteral("c"), found, QStringLiteral("an array of one or more commands"));
    }
    commands.reserve(array.size());
    for (int i = 0; i < array.size(); ++i) {
        const QString field = QStringLiteral("c[%1]").arg(i);
        QJsonObject object;
        RequestCommand command;
        if (!parseObject(array.at(i), field, object) || !parseCommand(object, field, command))
            return false;
        commands.append(command);
    }
    return true;
}

bool RequestParser::parseCommand(const QJsonObject &object, const QString &field, RequestCommand &command)
{
    if (!hasOnly(object, field, QStringLiteral("c p")))
        return false;
    const QJsonValue name = object.value(QLatin1String("c"));
    if (name == QJsonValue(QStringLiteral("getItem")))
        command.kind = RequestCommand::GetItem;
    else if (name == QJsonValue(QStringLiteral("setItem")))
        command.kind = RequestCommand::SetItem;
    else
        return refuse(field + QStringLiteral(".c"), described(name),
                      QStringLiteral("\"getItem\" or \"setItem\""));
    QJsonObject parameters;
    const QString parametersField = field + QStringLiteral(".p");
    return parseObject(object.value(QLatin1String("p")), parametersField, parameters)
        && parseItem(parameters, parametersField, command);
}

bool RequestParser::parseItem(const QJsonObject &object, const QString &field, RequestCommand &command)
{
    if (!hasOnly(object, field, QStringLiteral("p i v u")))
        return false;
    QJsonObject place;
    const QString placeField = field + QStringLiteral(".p");
    if (!parseObject(object.value(QLatin1String("p")), placeField, place)
        || !parsePlace(place, placeField, command.object))
        return false;

    const QJsonValue item = object.value(QLatin1String("i"));
    if (!item.isString() || item.toString().isEmpty())
        return refuse(field + QStringLiteral(".i"), described(item), QStringLiteral("the name of an item"));
    command.item = item.toString();

    const QJsonValue value = object.value(QLatin1String("v"));
    if (!(value.isUndefined() && command.kind == RequestCommand::GetItem)
        && !parseText(value, field + QStringLiteral(".v"), command.value))
        return false;

    const QJsonValue unit = object.value(QLatin1String("u"));
    if (!unit.isUndefined() && !unit.isString())
        return refuse(field + QStringLiteral(".u"), described(unit), QStringLiteral("a text"));
    command.unit = unit.toString();
    return true;
}

bool RequestParser::parsePlace(const QJsonObject &object, const QString &field, ObjectAddress &place)
{
    if (!hasOnly(object, field, QStringLiteral("l a c")))
        return false;
    constexpr quint32 LargestIndex = std::numeric_limits<quint32>::max();
    constexpr quint32 LargestChannel = std::numeric_limits<qint32>::max();
    bool hasLine = false;
    bool hasAddress = false;
    bool hasChannel = false;
    quint32 channel = 0;
    const QString lineField = field + QStringLiteral(".l");
    const QString addressField = field + QStringLiteral(".a");
    const QString channelField = field + QStringLiteral(".c");
    if (!parseIndex(object.value(QLatin1String("l")), lineField, LargestIndex, hasLine, place.line)
        || !parseIndex(object.value(QLatin1String("a")), addressField, LargestIndex, hasAddress,
                       place.address)
        || !parseIndex(object.value(QLatin1String("c")), channelField, LargestChannel, hasChannel, channel))
        return false;
    if (!hasLine && (hasAddress || hasChannel))
        return refuse(lineField, QStringLiteral("empty"),
                      QStringLiteral("a number, since what follows it is given"));
    if (!hasAddress && hasChannel)
        return refuse(addressField, QStringLiteral("empty"),
                      QStringLiteral("a number, since a channel is given"));

    place.level = OrbItemId::System;
    if (hasChannel) {
        place.level = OrbItemId::Channel;
        place.channel = static_cast<qint32>(channel);
    } else if (hasAddress) {
        place.level = place.address >= FirstCrateAddress ? OrbItemId::Crate : OrbItemId::Module;
    } else if (hasLine) {
        place.level = OrbItemId::Line;
    }
    return true;
}

bool RequestParser::parseIndex(const QJsonValue &value, const QString &field, quint32 maximum, bool &isGiven,
                               quint32 &index)
{
    QString text;
    if (value.isString())
        text = value.toString().trimmed();
    else if (value.isDouble())
        text = numberText(value.toDouble());
    isGiven = !text.isEmpty();
    bool isNumber = isDecimal(text);
    const qulonglong number = isNumber ? text.toULongLong(&isNumber) : 0;
    index = static_cast<quint32>(number);
    const bool isEmpty = value.isUndefined() || (value.isString() && !isGiven);
    if (isEmpty || (isNumber && number <= maximum))
        return true;
    return refuse(field, described(value), QStringLiteral("empty, or a number from 0 to %1").arg(maximum));
}

bool RequestParser::parseText(const QJsonValue &value, const QString &field, QString &text)
{
    if (value.isString())
        text = value.toString();
    else if (value.isDouble())
        text = numberText(value.toDouble());
    else if (value.isBool())
        text = value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    else
        return refuse(field, described(value), QStringLiteral("a text, a number, true or false"));
    return true;
}

bool RequestParser::parseObject(const QJsonValue &value, const QString &field, QJsonObject &object)
{
    if (!value.isObject())
        return refuse(field, described(value), QStringLiteral("an object"));
    object = value.toObject();
    return true;
}

bool RequestParser::hasOnly(const QJsonObject &object, const QString &field, const QString &allowed)
{
    const QStringList names = allowed.split(QLatin1Char(' '));
    for (auto entry = object.constBegin(); entry != object.constEnd(); ++entry) {
        if (names.contains(entry.key()))
            continue;
        const QString place = field.isEmpty() ? QStringLiteral("the request") : field;
        error = QStringLiteral("not a request: %1 has the field %2; allowed: %3")
                    .arg(place, quoted(entry.key()), names.join(QStringLiteral(", ")));
        return false;
    }
    return true;
}

bool RequestParser::refuse(const QString &field, const QString &found, const QString &allowed)
{
    error = QStringLiteral("not a request: %1 is %2; allowed: %3")
                .arg(field.isEmpty() ? QStringLiteral("it") : field, found, allowed);
    return false;
}

} // namespace simulator
