#include "orbclient/module_description.h"

#include "orbclient/channel_object.h"
#include "orbclient/connection_object.h"
#include "orbclient/crate_object.h"
#include "orbclient/data_frame_object.h"
#include "orbclient/module_object.h"

#include <QHash>
#include <QStringList>

namespace orbclient
{

namespace
{

/// A member has one type wherever it occurs; the interpreter's own tables do not say which.
QString memberTypeName(const QString &member)
{
    static const QHash<QString, QString> types = {
        {QStringLiteral("name"), QStringLiteral("str")},
        {QStringLiteral("connection"), QStringLiteral("str")},
        {QStringLiteral("crates"), QStringLiteral("List[crate]")},
        {QStringLiteral("modules"), QStringLiteral("List[module]")},
        {QStringLiteral("channels"), QStringLiteral("List[channel]")},
        {QStringLiteral("line"), QStringLiteral("int")},
        {QStringLiteral("address"), QStringLiteral("int")},
        {QStringLiteral("module"), QStringLiteral("int")},
        {QStringLiteral("index"), QStringLiteral("int")},
        {QStringLiteral("channel"), QStringLiteral("int")},
        {QStringLiteral("command"), QStringLiteral("str")},
        {QStringLiteral("item"), QStringLiteral("str")},
        {QStringLiteral("value"), valueTypeName()},
        {QStringLiteral("unit"), QStringLiteral("str")},
        {QStringLiteral("rawJson"), QStringLiteral("str")},
    };
    return types.value(member);
}

/// What a getter can give; the rules that a text falls back to are those of Automatic.
QString convertedTypes(Conversion conversion)
{
    switch (conversion) {
    case Conversion::Integer:
        return QStringLiteral("int, float, bool, str");
    case Conversion::Boolean:
        return QStringLiteral("bool, float, str");
    case Conversion::Text:
        return QStringLiteral("str");
    case Conversion::Automatic:
    case Conversion::FloatingPoint:
        break;
    }
    return QStringLiteral("float, bool, str");
}

QString unionOf(const QString &types)
{
    return types.contains(QLatin1Char(',')) ? QStringLiteral("Union[%1]").arg(types) : types;
}

/// The parts of a parameter list: a comma inside of brackets separates nothing.
QStringList splitParameters(const QString &list)
{
    QStringList parts;
    QString part;
    int depth = 0;
    for (const QChar letter : list) {
        if (letter == QLatin1Char('['))
            ++depth;
        else if (letter == QLatin1Char(']'))
            --depth;
        if (letter == QLatin1Char(',') && depth == 0) {
            parts.append(part.trimmed());
            part.clear();
        } else {
            part.append(letter);
        }
    }
    if (!part.trimmed().isEmpty())
        parts.append(part.trimmed());
    return parts;
}

} // namespace

QString TypeDescription::name() const
{
    return QString::fromLatin1(type->tp_name).section(QLatin1Char('.'), -1);
}

std::array<TypeDescription, 5> typeDescriptions()
{
    return {{
        {&connectionType, connectionMethods(), "(self, name: str = ...) -> None"},
        {&crateType, crateMethods(), nullptr},
        {&moduleType, moduleMethods(), nullptr},
        {&channelType, channelMethods(), nullptr},
        {&dataFrameType, {}, nullptr},
    }};
}

QVector<MemberDescription> memberDescriptions(const PyTypeObject &type)
{
    QVector<MemberDescription> members;
    for (const PyMemberDef *member = type.tp_members; member->name != nullptr; ++member) {
        const QString name = QString::fromLatin1(member->name);
        members.append({name, memberTypeName(name), QString::fromLatin1(member->doc)});
    }
    return members;
}

QVector<ParameterDescription> parametersOf(const QString &signature)
{
    const int open = signature.indexOf(QLatin1Char('('));
    const int close = signature.indexOf(QLatin1Char(')'));
    const QStringList parts = splitParameters(signature.mid(open + 1, close - open - 1));
    QVector<ParameterDescription> parameters;
    for (const QString &part : parts) {
        if (part == QLatin1String("self"))
            continue;
        const QString type = part.section(QLatin1Char(':'), 1);
        parameters.append({part.section(QLatin1Char(':'), 0, 0).trimmed(),
                           type.section(QLatin1Char('='), 0, 0).trimmed(), type.contains(QLatin1Char('='))});
    }
    return parameters;
}

QVector<ParameterDescription> parametersOf(const Method &method)
{
    switch (method.kind) {
    case MethodKind::Get:
    case MethodKind::GetWithTimestamp:
        return {};
    case MethodKind::Set:
        return {{QStringLiteral("value"), valueTypeName(), false}};
    case MethodKind::Call:
        break;
    }
    return parametersOf(QString::fromLatin1(method.signature));
}

QString resultTypeOf(const Method &method)
{
    const QString types = convertedTypes(method.conversion);
    switch (method.kind) {
    case MethodKind::Get:
        return unionOf(types);
    case MethodKind::GetWithTimestamp:
        // The timestamp is a float.
        return QStringLiteral("List[%1]")
            .arg(unionOf(types.contains(QLatin1String("float")) ? types : QStringLiteral("float, ") + types));
    case MethodKind::Set:
        return QStringLiteral("str");
    case MethodKind::Call:
        break;
    }
    return QString::fromLatin1(method.signature).section(QLatin1String("->"), 1).trimmed();
}

QString itemNameOf(const Method &method)
{
    if (method.definition != nullptr)
        return method.definition();
    return QString::fromLatin1(method.item);
}

QString valueTypeName()
{
    return QStringLiteral("_Value");
}

} // namespace orbclient
