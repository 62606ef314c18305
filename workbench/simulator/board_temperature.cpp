#include "workbench/simulator/board_temperature.h"

#include <cmath>
#include <utility>

namespace simulator
{

BoardTemperature::BoardTemperature(EventQueue &eventQueue, double seconds, double atFirst,
                                   std::function<void(double)> goodChanged)
    : queue(eventQueue),
      changed(std::move(goodChanged)),
      timeConstant(seconds),
      startDegrees(atFirst),
      target(atFirst)
{
    queue.rank(*this);
}

double BoardTemperature::at(double now) const
{
    return target + (startDegrees - target) * std::exp((start - now) / timeConstant) + excess;
}

void BoardTemperature::approach(double degrees, double now)
{
    startDegrees = at(now) - excess;
    start = now;
    target = degrees;
    look(now);
}

void BoardTemperature::setExcess(double degrees, double now)
{
    excess = degrees;
    look(now);
}

void BoardTemperature::happen(double time)
{
    good = !good;
    plan(time);
    changed(time);
}

void BoardTemperature::look(double now)
{
    const bool isGoodNow = good ? at(now) <= Highest : at(now) <= GoodAgain;
    const bool isOther = isGoodNow != good;
    good = isGoodNow;
    plan(now);
    if (isOther)
        changed(now);
}

void BoardTemperature::plan(double now)
{
    const double level = (good ? Highest : GoodAgain) - excess;
    const double here = at(now) - excess;
    const bool isOnTheWay = good ? target > level : target < level;
    const double left = (level - target) / (here - target);
    // At the level already: the one who asks has just crossed it the other way.
    const bool isAhead = isOnTheWay && left > 0 && left < 1;
    queue.setDue(*this, isAhead ? now - timeConstant * std::log(left) : Never);
}

} // namespace simulator
