#include "workbench/app/channel_record.h"

#include <algorithm>

namespace workbench
{

namespace
{

// Values are as they were computed, so that what did not change is the same to the last bit.
bool hasSameValues(const ChannelSample &a, const ChannelSample &b)
{
    return a.voltage == b.voltage && a.voltageSet == b.voltageSet && a.voltageLimit == b.voltageLimit
        && a.current == b.current && a.currentSet == b.currentSet && a.currentLimit == b.currentLimit;
}

} // namespace

ChannelRecord::ChannelRecord(const QString &controllerName_, const simulator::ObjectAddress &channelAddress_,
                             int lookNumber_)
    : controllerName(controllerName_), channelAddress(channelAddress_), lookNumber(lookNumber_)
{ }

QString ChannelRecord::name() const
{
    return controllerName + QLatin1Char(' ') + simulator::addressText(channelAddress);
}

void ChannelRecord::add(const ChannelSample &sample)
{
    const std::size_t size = kept.size();
    if (size > 0
        && (sample.time < kept.back().time
            || (sample.time == kept.back().time && hasSameValues(kept.back(), sample))))
        return;
    if (size > 1 && hasSameValues(kept[size - 1], sample) && hasSameValues(kept[size - 2], sample)) {
        kept.back().time = sample.time;
        return;
    }
    kept.push_back(sample);
    // The last one before the span stays: the line begins there.
    while (kept.size() > MostSamples || (kept.size() > 1 && kept[1].time < sample.time - Span))
        kept.pop_front();
}

void ChannelRecord::add(const ChannelMark &mark)
{
    keptMarks.push_back(mark);
    while (keptMarks.size() > MostMarks || keptMarks.front().time < mark.time - Span)
        keptMarks.pop_front();
}

void ChannelRecord::clear()
{
    kept.clear();
    keptMarks.clear();
}

std::size_t ChannelRecord::firstAt(double time) const
{
    const auto isBefore = [](const ChannelSample &sample, double limit) { return sample.time < limit; };
    return static_cast<std::size_t>(std::lower_bound(kept.begin(), kept.end(), time, isBefore)
                                    - kept.begin());
}

} // namespace workbench
