#include "workbench/simulator/voltage_ramp.h"

#include <QtGlobal>

#include <cmath>

namespace simulator
{

double VoltageRamp::valueAt(double now) const
{
    if (!isRampingAt(now))
        return targetValue;
    return startValue + (targetValue - startValue) * (now - startTime) / (endTime - startTime);
}

void VoltageRamp::start(double from, double to, double speed, double now)
{
    Q_ASSERT(speed > 0);
    startValue = from;
    targetValue = to;
    startTime = now;
    endTime = now + std::abs(to - from) / speed;
}

void VoltageRamp::jumpTo(double value)
{
    startValue = value;
    targetValue = value;
    startTime = 0;
    endTime = 0;
}

} // namespace simulator
