#include "workbench/simulator/plant_journal.h"

#include <QStringList>

namespace simulator
{

namespace
{

QString kindName(JournalEntry::Kind kind)
{
    switch (kind) {
    case JournalEntry::Write:
        return QStringLiteral("write");
    case JournalEntry::Request:
        return QStringLiteral("request");
    case JournalEntry::RequestRefused:
        return QStringLiteral("request refused");
    case JournalEntry::Answer:
        return QStringLiteral("answer");
    case JournalEntry::AnswerLost:
        return QStringLiteral("answer lost");
    case JournalEntry::Event:
        return QStringLiteral("event");
    case JournalEntry::Error:
        return QStringLiteral("error");
    case JournalEntry::SwitchedOff:
        return QStringLiteral("switched off");
    case JournalEntry::FaultBegins:
        return QStringLiteral("fault begins");
    case JournalEntry::FaultEnds:
        return QStringLiteral("fault ends");
    case JournalEntry::Waypoint:
        return QStringLiteral("waypoint");
    case JournalEntry::PassThroughIn:
        return QStringLiteral("to the script");
    case JournalEntry::PassThroughOut:
        return QStringLiteral("from the script");
    case JournalEntry::ControllerLeft:
        return QStringLiteral("controller left");
    case JournalEntry::ControllerCame:
        return QStringLiteral("controller came");
    }
    return {};
}

QString resultName(TarnResult result)
{
    switch (result) {
    case TarnResult::Success:
        return QStringLiteral("done");
    case TarnResult::Denied:
        return QStringLiteral("denied");
    case TarnResult::NoData:
        return QStringLiteral("no such item");
    case TarnResult::NotConnected:
        return QStringLiteral("not connected");
    default:
        return QStringLiteral("refused");
    }
}

QString valueText(double value)
{
    return QString::number(value, 'g', 9);
}

} // namespace

QString journalLine(const JournalEntry &entry)
{
    constexpr int Decimals = 6;
    QStringList words{QString::number(entry.time, 'f', Decimals), entry.controller};
    const QString place = addressText(entry.object);
    if (!place.isEmpty())
        words << place;
    words << kindName(entry.kind);
    if (entry.request != 0)
        words << QStringLiteral("#%1").arg(entry.request);
    if (!entry.item.isEmpty())
        words << entry.item;
    if (!entry.text.isEmpty())
        words << entry.text;
    if (entry.kind == JournalEntry::Write)
        words << resultName(entry.result);
    if (entry.kind == JournalEntry::Answer)
        words << QStringLiteral("after %1 s").arg(entry.delay, 0, 'f', Decimals);
    if (entry.kind == JournalEntry::Waypoint)
        words << QStringLiteral("%1 V %2 A, before %3 V %4 A")
                     .arg(valueText(entry.voltage), valueText(entry.current), valueText(entry.voltageBefore),
                          valueText(entry.currentBefore));
    QString line = words.join(QLatin1Char(' '));
    // A request may be of several lines.
    return line.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

quint64 PlantJournal::add(JournalEntry entry)
{
    const quint64 number = next;
    entry.number = next++;
    characters += static_cast<std::size_t>(entry.text.size());
    entries.push_back(std::move(entry));
    while (entries.size() > mostEntries || (characters > MostCharacters && entries.size() > 1))
        removeOldest();
    return number;
}

void PlantJournal::removeOldest()
{
    characters -= static_cast<std::size_t>(entries.front().text.size());
    entries.pop_front();
}

void PlantJournal::setResult(quint64 number, TarnResult result)
{
    if (number < next && next - number <= entries.size())
        entries[entries.size() - static_cast<std::size_t>(next - number)].result = result;
}

QVector<JournalEntry> PlantJournal::from(quint64 number, int most) const
{
    QVector<JournalEntry> result;
    if (entries.empty() || most <= 0)
        return result;
    const quint64 first = entries.front().number;
    std::size_t at = number > first ? static_cast<std::size_t>(number - first) : 0;
    for (; at < entries.size() && result.size() < most; ++at)
        result.append(entries[at]);
    return result;
}

} // namespace simulator
