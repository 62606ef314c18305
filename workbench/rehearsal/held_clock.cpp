#include "workbench/rehearsal/held_clock.h"

namespace rehearsal
{

HeldClock::HeldClock()
    : wallStart(std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count())
{ }

void HeldClock::release()
{
    Clock::rep held = 0;
    releasedAt.compare_exchange_strong(held, Clock::now().time_since_epoch().count());
}

double HeldClock::now() const
{
    const Clock::rep start = releasedAt;
    if (start == 0)
        return 0;
    return std::chrono::duration<double>(Clock::now().time_since_epoch() - Clock::duration(start)).count();
}

double HeldClock::startedAt() const
{
    return wallStart;
}

} // namespace rehearsal
