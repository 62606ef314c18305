#include "python_terminal/process_settings.h"

#include "orbclient/python_include.h"

#include <cstdint>

#include <sys/time.h>

namespace python_terminal
{

namespace
{

constexpr std::array<__itimer_which_t, 3> clocks = {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF};
constexpr std::array<int, 3> clockSignals = {SIGALRM, SIGVTALRM, SIGPROF};

bool isArmed(__itimer_which_t clock)
{
    itimerval timer{};
    getitimer(clock, &timer);
    return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
}

/// That of a signal that nobody handles, or that is ignored.
bool isPlain(const struct sigaction &action)
{
    return (action.sa_flags & SA_SIGINFO) == 0
        && (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN);
}

bool haveOneHandler(const struct sigaction &one, const struct sigaction &other)
{
    return (one.sa_flags & SA_SIGINFO) == (other.sa_flags & SA_SIGINFO) && one.sa_handler == other.sa_handler;
}

} // namespace

void ProcessSettings::keep()
{
    for (int number = 1; number < Signals; ++number)
        sigaction(number, nullptr, &actions.at(std::size_t(number)));
    for (std::size_t i = 0; i < clocks.size(); ++i)
        armed.at(i) = isArmed(clocks.at(i));
}

void ProcessSettings::giveBack(const struct sigaction &pythonsHandler)
{
    for (std::size_t i = 0; i < clocks.size(); ++i) {
        const itimerval never{};
        if (!armed.at(i) && isArmed(clocks.at(i)))
            setitimer(clocks.at(i), &never, nullptr);
        // The last signal may be under way to a thread that does not run at the moment: being ignored ends it.
        struct sigaction now
        { };
        if (sigaction(clockSignals.at(i), nullptr, &now) == 0 && haveOneHandler(now, pythonsHandler)) {
            now.sa_handler = SIG_IGN;
            sigaction(clockSignals.at(i), &now, nullptr);
        }
    }
    // Python remembers the number of this descriptor beyond its end; by then it may be anybody's.
    PySignal_SetWakeupFd(-1);
    // What the host itself has changed since then is left alone.
    for (int number = 1; number < Signals; ++number) {
        const std::size_t index = std::size_t(number);
        struct sigaction now
        { };
        changed.at(index) = sigaction(number, nullptr, &now) == 0
            && (haveOneHandler(now, pythonsHandler) || isPlain(now))
            && !haveOneHandler(now, actions.at(index));
    }
}

void ProcessSettings::restore()
{
    for (int number = 1; number < Signals; ++number) {
        if (changed.at(std::size_t(number)))
            sigaction(number, &actions.at(std::size_t(number)), nullptr);
    }
}

void useNewThreadStateNumbers()
{
    constexpr int MostThreadsBits = 32;
    static std::uint64_t starts = 0; // whoever has the interpreter has this
    PyThreadState *own = PyThreadState_Get();
    own->interp->tstate_next_unique_id = ++starts << MostThreadsBits;
    own->id = ++own->interp->tstate_next_unique_id;
}

} // namespace python_terminal
