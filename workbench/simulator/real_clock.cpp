#include "workbench/simulator/real_clock.h"

namespace simulator
{

RealClock::RealClock()
    : start(std::chrono::steady_clock::now()),
      wallStart(std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count())
{ }

double RealClock::now() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double RealClock::startedAt() const
{
    return wallStart;
}

} // namespace simulator
