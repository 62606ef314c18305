#include "workbench/app/logged_request.h"

#include "workbench/app/translated_text.h"
#include "workbench/simulator/request_parser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

namespace workbench
{

namespace
{

/// The word of a trigger message, [{"trigger":"true"}]; empty for any other message.
QString triggerWord(const QString &text)
{
    const QJsonArray array = QJsonDocument::fromJson(text.toUtf8()).array();
    return array.first().toObject().value(QLatin1String("trigger")).toString();
}

/// The trigger that came or was lost first; empty for none.
QString trigger(const LoggedRequest &request)
{
    for (const LoggedAnswer &answer : request.answers) {
        QString word = triggerWord(answer.text);
        if (!word.isEmpty())
            return word;
    }
    return {};
}

QString valueSummary(const QJsonObject &reading)
{
    const QString value = reading.value(QLatin1String("value")).toVariant().toString();
    const QString unit = reading.value(QLatin1String("unit")).toString();
    return unit.isEmpty() ? value : value + QLatin1Char(' ') + unit;
}

QString messageSummary(const QString &text)
{
    QString word = triggerWord(text);
    if (!word.isEmpty())
        return word;
    const QJsonArray readings = QJsonDocument::fromJson(text.toUtf8()).array();
    QStringList values;
    for (const QJsonValue &reading : readings)
        values << valueSummary(reading.toObject());
    return values.isEmpty() ? text.simplified() : values.join(QLatin1String(", "));
}

/// JSON with line feeds and indentation, and its members in the order in which they came.
class Indenter
{
public:
    QString indent(const QString &json)
    {
        for (const QChar &letter : json) {
            if (isInText || letter == QLatin1Char('"'))
                copyText(letter);
            else if (!letter.isSpace())
                copyMark(letter);
        }
        return result;
    }

private:
    void copyText(QChar letter)
    {
        result += letter;
        if (letter == QLatin1Char('"') && !isEscaped)
            isInText = !isInText;
        isEscaped = isInText && letter == QLatin1Char('\\') && !isEscaped;
    }

    void copyMark(QChar letter)
    {
        switch (letter.unicode()) {
        case '{':
        case '[':
            ++depth;
            result += letter;
            breakLine();
            break;
        case '}':
        case ']':
            --depth;
            breakLine();
            result += letter;
            break;
        case ',':
            result += letter;
            breakLine();
            break;
        case ':':
            result += QLatin1String(": ");
            break;
        default:
            result += letter;
            break;
        }
    }

    void breakLine()
    {
        constexpr int Step = 2;
        result += QLatin1Char('\n') + QString(depth * Step, QLatin1Char(' '));
    }

    QString result;
    int depth = 0;
    bool isInText = false;
    bool isEscaped = false;
};

QString milliseconds(double seconds)
{
    constexpr double Milliseconds = 1000;
    return QString::number(seconds * Milliseconds, 'f', 1);
}

QString pretty(const QString &text)
{
    return QJsonDocument::fromJson(text.toUtf8()).isNull() ? text : Indenter().indent(text);
}

} // namespace

LoggedRequest::Outcome LoggedRequest::outcome() const
{
    if (kind != Raw)
        return PassedThrough;
    if (!refusal.isEmpty())
        return Refused;
    const auto isLost = [](const LoggedAnswer &answer) { return answer.isLost; };
    if (std::any_of(answers.cbegin(), answers.cend(), isLost))
        return Lost;
    if (answers.isEmpty())
        return isDropped ? Dropped : Waiting;
    return trigger(*this) == QLatin1String("true") ? Answered : Refused;
}

double LoggedRequest::latency() const
{
    for (const LoggedAnswer &answer : answers) {
        if (!answer.isLost)
            return answer.delay;
    }
    return -1;
}

QString requestSummary(const LoggedRequest &request)
{
    QVector<simulator::RequestCommand> commands;
    QString complaint;
    if (!simulator::RequestParser::parse(request.text, commands, complaint))
        return request.text.simplified();
    QStringList parts;
    for (const simulator::RequestCommand &command : qAsConst(commands)) {
        const bool isSet = command.kind == simulator::RequestCommand::SetItem;
        QStringList words = {isSet ? tr("set") : tr("get"), simulator::addressText(command.object),
                             command.item};
        if (isSet)
            words << command.value << command.unit;
        words.removeAll(QString());
        parts << words.join(QLatin1Char(' '));
    }
    return parts.join(QLatin1String("; "));
}

QString answerSummary(const LoggedRequest &request)
{
    if (!request.refusal.isEmpty())
        return request.refusal.simplified();
    QStringList parts;
    for (const LoggedAnswer &answer : request.answers)
        parts << messageSummary(answer.text);
    return parts.join(QLatin1String("; "));
}

QString outcomeText(const LoggedRequest &request)
{
    const QString word = trigger(request);
    const auto count = [&](bool isLost) {
        return std::count_if(request.answers.cbegin(), request.answers.cend(),
                             [&](const LoggedAnswer &answer) {
                                 return answer.isLost == isLost && triggerWord(answer.text) == word;
                             });
    };
    switch (request.outcome()) {
    case LoggedRequest::Waiting:
        return tr("no answer yet");
    case LoggedRequest::PassedThrough:
        return request.kind == LoggedRequest::ToScript ? tr("to the script") : tr("from the script");
    case LoggedRequest::Dropped:
        return tr("none: controller left");
    case LoggedRequest::Lost:
        return request.latency() < 0 ? tr("lost") : tr("partly lost");
    case LoggedRequest::Answered:
        return count(false) > 1 ? tr("done, came twice") : tr("done");
    case LoggedRequest::Refused:
        break;
    }
    if (word == QLatin1String("denied"))
        return tr("denied");
    if (word == QLatin1String("noData"))
        return tr("no such item");
    return tr("refused");
}

QString requestDetails(const LoggedRequest &request)
{
    constexpr int Decimals = 3;
    const QString time = QString::number(request.time, 'f', Decimals);
    if (request.kind == LoggedRequest::ToScript)
        return tr("Message from %1 to the script at %2 s").arg(request.controller, time) + QLatin1Char('\n')
            + request.text;
    if (request.kind == LoggedRequest::FromScript)
        return tr("Message from the script to %1 at %2 s").arg(request.controller, time) + QLatin1Char('\n')
            + request.text;
    QStringList parts{
        tr("Request %1 to %2 at %3 s").arg(QString::number(request.number), request.controller, time),
        pretty(request.text)};
    for (const LoggedAnswer &answer : request.answers) {
        parts << QString()
              << (answer.isLost ? tr("Answer, lost on its way after %1 ms") : tr("Answer after %1 ms"))
                     .arg(milliseconds(answer.delay))
              << pretty(answer.text);
    }
    if (!request.refusal.isEmpty())
        parts << QString() << tr("Refused at once:") << request.refusal;
    else if (request.answers.isEmpty())
        parts << QString() << outcomeText(request);
    return parts.join(QLatin1Char('\n'));
}

} // namespace workbench
