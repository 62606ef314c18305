#include "workbench/app/channel_csv.h"

#include "workbench/app/channel_recorder.h"

#include <QTextStream>

#include <limits>

namespace workbench
{

namespace
{

QString number(double value)
{
    constexpr int Digits = 9;
    return QString::number(value, 'g', Digits);
}

QString timeText(double seconds)
{
    constexpr int Decimals = 6;
    return QString::number(seconds, 'f', Decimals);
}

/// A field that may hold commas or quotes.
QString quoted(QString text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')))
        return text;
    text.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

void writeRecord(const ChannelRecord &record, QTextStream &out)
{
    const QString name = quoted(record.name());
    auto mark = record.marks().cbegin();
    const auto writeMarksBefore = [&](double time) {
        for (; mark != record.marks().cend() && mark->time < time; ++mark)
            out << timeText(mark->time) << ',' << name << QStringLiteral(",,,,,,,") << quoted(mark->text)
                << '\n';
    };
    for (const ChannelSample &sample : record.samples()) {
        writeMarksBefore(sample.time);
        out << timeText(sample.time) << ',' << name << ',' << number(sample.voltage) << ','
            << number(sample.voltageSet) << ',' << number(sample.voltageLimit) << ','
            << number(sample.current) << ',' << number(sample.currentSet) << ','
            << number(sample.currentLimit) << ",\n";
    }
    writeMarksBefore(std::numeric_limits<double>::infinity());
}

} // namespace

void writeChannelCsv(const ChannelRecorder &recorder, QTextStream &out)
{
    out << "time / s,channel,voltage / V,voltage set / V,voltage limit / V,current / A,current set / A,"
           "current limit / A,event\n";
    for (int index = 0; index < recorder.count(); ++index)
        writeRecord(recorder.at(index), out);
}

} // namespace workbench
