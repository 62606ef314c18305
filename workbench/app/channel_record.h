#pragma once

#include "workbench/simulator/object_address.h"

#include <QString>

#include <deque>

namespace workbench
{

/// A channel at one moment. Plain data.
struct ChannelSample
{
    double time = 0; ///< s on the plant's clock
    double voltage = 0; ///< V
    double voltageSet = 0;
    double voltageLimit = 0;
    double current = 0; ///< A
    double currentSet = 0;
    double currentLimit = 0;
};

/// Something that happened to a channel. Plain data.
struct ChannelMark
{
    enum Kind : quint8
    {
        Information, ///< a ramp ended
        Warning, ///< an arc, a bound that was left
        Trip, ///< high voltage was switched off
        Simulated, ///< a fault that somebody caused, or its end
    };

    double time = 0; ///< s on the plant's clock
    Kind kind = Information;
    QString text; ///< "trip"
};

/// The course of one channel over the last hour. Memory is bounded; a channel that does nothing takes next to none,
/// since of samples that are all the same only the first and the last are kept.
class ChannelRecord
{
public:
    static constexpr double Span = 3600; ///< s that are kept
    static constexpr std::size_t MostSamples = 50000;
    static constexpr std::size_t MostMarks = 1000;

    /// `lookNumber` is what its lines look by; it stays when other channels come and go.
    ChannelRecord(const QString &controllerName, const simulator::ObjectAddress &channelAddress,
                  int lookNumber = 0);

    const QString &controller() const { return controllerName; }
    const simulator::ObjectAddress &address() const { return channelAddress; }
    /// The crate that the channel's module is in; of no level when it is in none.
    const simulator::ObjectAddress &crate() const { return crateAddress; }
    void setCrate(const simulator::ObjectAddress &address) { crateAddress = address; }
    int look() const { return lookNumber; }
    /// Controller and address: "bench 0.3.7".
    QString name() const;

    /// Times must not go back; what does is left out. Two samples of the same time are a step.
    void add(const ChannelSample &sample);
    void add(const ChannelMark &mark);
    void clear();

    const std::deque<ChannelSample> &samples() const { return kept; }
    const std::deque<ChannelMark> &marks() const { return keptMarks; }

    /// Index of the first sample at or after that time; the number of samples when there is none.
    std::size_t firstAt(double time) const;

private:
    QString controllerName;
    simulator::ObjectAddress channelAddress;
    simulator::ObjectAddress crateAddress;
    int lookNumber;
    std::deque<ChannelSample> kept;
    std::deque<ChannelMark> keptMarks;
};

} // namespace workbench
