#pragma once

#include "workbench/simulator/channel.h"
#include "workbench/simulator/item_text.h"

#include <QString>

#include <cmath>

inline constexpr double Nominal = 2000; // V
inline constexpr double NominalCurrent = 0.004; // A
inline constexpr double Load = 1e6; // Ohm: half the nominal current at the nominal voltage

inline constexpr double OnePercent = 0.01;

/// A channel of a 2 kV, 4 mA module at 10 %/s, in a time that the test steps.
class ChannelBench
{
public:
    explicit ChannelBench(double load = Load) : channel(load, NominalCurrent) { }

    QString text(const char *item)
    {
        const simulator::ItemDefinition &definition =
            *simulator::channelItems().find(QString::fromLatin1(item));
        return simulator::formatValue(definition, channel.read(definition, environment));
    }
    double number(const char *item) { return text(item).toDouble(); }
    bool isTrue(const char *item) { return text(item) == QLatin1String("true"); }

    TarnResult write(const char *item, const char *value)
    {
        const simulator::ItemDefinition &definition =
            *simulator::channelItems().find(QString::fromLatin1(item));
        simulator::ItemValue parsed;
        if (!simulator::parseValue(definition, QString::fromLatin1(value), QString(), parsed))
            return TarnResult::Failed;
        return channel.write(definition, parsed, environment);
    }
    bool set(const char *item, const char *value) { return write(item, value) == TarnResult::Success; }

    /// On, with the ramp done.
    bool rampedTo(const char *volts)
    {
        const bool isOn = set("Control.voltageSet", volts) && set("Control.on", "1");
        environment.now += 1000;
        return isOn;
    }

    void advance(double seconds) { environment.now += seconds; }

    simulator::ChannelEnvironment environment{Nominal, NominalCurrent, 10, 50, true, 100};
    simulator::Channel channel;
};

inline bool isWithin(double value, double expected, double fraction)
{
    return std::abs(value - expected) <= std::abs(expected) * fraction;
}
