#pragma once

#include "workbench/simulator/item_text.h"
#include "workbench/simulator/module.h"

#include <QString>

#include <cmath>

inline constexpr double Nominal = 2000; // V
inline constexpr double NominalCurrent = 0.004; // A
inline constexpr double Load = 1e6; // Ohm: half the nominal current at the nominal voltage

inline constexpr double OnePercent = 0.01;

inline simulator::LoadLayout resistiveLoad(double ohm)
{
    simulator::LoadLayout load;
    load.resistance = ohm;
    return load;
}

inline simulator::LoadLayout capacitiveLoad(double ohm, double farad)
{
    simulator::LoadLayout load = resistiveLoad(ohm);
    load.capacitance = farad;
    return load;
}

/// A 2 kV, 4 mA module at 10 %/s with one channel or more of the same load.
inline simulator::ModuleLayout moduleOf(const simulator::LoadLayout &load, std::size_t channels = 1)
{
    simulator::ModuleLayout layout;
    layout.address = 3;
    layout.nominalVoltage = Nominal;
    layout.nominalCurrent = NominalCurrent;
    layout.loads.assign(channels, load);
    return layout;
}

/// The first channel of a module, unless told otherwise, in a time that the test steps.
class ChannelBench
{
public:
    explicit ChannelBench(double load = Load) : ChannelBench(resistiveLoad(load)) { }
    explicit ChannelBench(const simulator::LoadLayout &load) : ChannelBench(moduleOf(load)) { }
    explicit ChannelBench(const simulator::ModuleLayout &layout)
        : module(layout, {&run, &summary, QStringLiteral("local"), 0})
    {
        advance(0);
    }

    QString text(const char *item, std::size_t channel = 0)
    {
        const simulator::ItemDefinition &definition =
            *simulator::channelItems().find(QString::fromLatin1(item));
        return simulator::formatValue(definition, module.readChannel(channel, definition, now));
    }
    double number(const char *item, std::size_t channel = 0) { return text(item, channel).toDouble(); }
    bool isTrue(const char *item, std::size_t channel = 0)
    {
        return text(item, channel) == QLatin1String("true");
    }

    TarnResult write(const char *item, const char *value, std::size_t channel = 0)
    {
        const simulator::ItemDefinition &definition =
            *simulator::channelItems().find(QString::fromLatin1(item));
        simulator::ItemValue parsed;
        if (!simulator::parseValue(definition, QString::fromLatin1(value), QString(), parsed))
            return TarnResult::Failed;
        return module.writeChannel(channel, definition, parsed, now);
    }
    bool set(const char *item, const char *value, std::size_t channel = 0)
    {
        return write(item, value, channel) == TarnResult::Success;
    }

    bool setModule(const char *item, const char *value)
    {
        const simulator::ItemDefinition &definition =
            *simulator::moduleItems().find(QString::fromLatin1(item));
        simulator::ItemValue parsed;
        return simulator::parseValue(definition, QString::fromLatin1(value), QString(), parsed)
            && module.write(definition, parsed, now) == TarnResult::Success;
    }
    QString moduleText(const char *item)
    {
        const simulator::ItemDefinition &definition =
            *simulator::moduleItems().find(QString::fromLatin1(item));
        return simulator::formatValue(definition, module.read(definition, now));
    }

    void fault(simulator::FaultKind kind, bool begins, double amount = 0)
    {
        simulator::Fault what;
        what.kind = kind;
        what.amount = amount;
        if (simulator::faultLevel(kind) == OrbItemId::Channel)
            module.applyChannelFault(0, what, begins, now);
        else
            module.applyFault(what, begins, now);
    }

    /// On, with the ramp done.
    bool rampedTo(const char *volts)
    {
        const bool isOn = set("Control.voltageSet", volts) && set("Control.on", "1");
        advance(1000);
        return isOn;
    }

    void advance(double seconds)
    {
        now += seconds;
        run.queue.runUntil(now);
    }

    /// When that event or error was entered for the last time; below 0 for never.
    double timeOf(const char *item) const
    {
        double result = -1;
        const QVector<simulator::JournalEntry> entries = run.journal.from(0, 1000000);
        for (const simulator::JournalEntry &entry : entries) {
            if (entry.item == QLatin1String(item))
                result = entry.time;
        }
        return result;
    }
    int entriesOf(const char *item) const
    {
        int result = 0;
        const QVector<simulator::JournalEntry> entries = run.journal.from(0, 1000000);
        for (const simulator::JournalEntry &entry : entries)
            result += entry.item == QLatin1String(item) ? 1 : 0;
        return result;
    }

    double now = 100;
    simulator::PlantRun run;
    simulator::RunningSummary summary{nullptr};
    simulator::Module module;
};

inline bool isWithin(double value, double expected, double fraction)
{
    return std::abs(value - expected) <= std::abs(expected) * fraction;
}
