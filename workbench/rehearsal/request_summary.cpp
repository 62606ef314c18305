#include "workbench/rehearsal/request_summary.h"

#include "workbench/simulator/object_address.h"
#include "workbench/simulator/request_parser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace rehearsal
{

namespace
{

constexpr int LongestText = 200;

QString shortened(const QString &text)
{
    return text.size() <= LongestText ? text : text.left(LongestText) + QStringLiteral("...");
}

QString withUnit(const QString &value, const QString &unit)
{
    return unit.isEmpty() ? value : value + QLatin1Char(' ') + unit;
}

QString commandText(const simulator::RequestCommand &command)
{
    const QString place = simulator::addressText(command.object);
    const QString item = place.isEmpty() ? command.item : place + QLatin1Char(' ') + command.item;
    if (command.kind != simulator::RequestCommand::SetItem)
        return QStringLiteral("get ") + item;
    return QStringLiteral("set %1 to %2").arg(item, withUnit(command.value, command.unit));
}

} // namespace

QString requestSummary(const QString &request)
{
    QVector<simulator::RequestCommand> commands;
    QString error;
    if (!simulator::RequestParser::parse(request, commands, error))
        return shortened(request);
    QStringList texts;
    for (const simulator::RequestCommand &command : std::as_const(commands))
        texts << commandText(command);
    return shortened(texts.join(QStringLiteral("; ")));
}

QString answerSummary(const QStringList &answers)
{
    QStringList values;
    for (const QString &answer : answers) {
        const QJsonArray objects = QJsonDocument::fromJson(answer.toUtf8()).array();
        for (const QJsonValue &object : objects) {
            const QJsonValue value = object.toObject().value(QLatin1String("value"));
            if (value.isUndefined())
                continue;
            constexpr int Digits = 6;
            const QString text = value.isDouble() ? QString::number(value.toDouble(), 'g', Digits)
                                                  : value.toVariant().toString();
            values << withUnit(text, object.toObject().value(QLatin1String("unit")).toString());
        }
    }
    return shortened(values.join(QStringLiteral("; ")));
}

} // namespace rehearsal
