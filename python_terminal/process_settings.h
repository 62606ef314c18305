#pragma once

#include <array>
#include <csignal>

namespace python_terminal
{

/// What belongs to the whole process and scripts change: what signals do, and the timers of the operating system, whose
/// signal ends a process that does not handle it. The interpreter's end gives none of it back to the host.
///
/// On the interpreter's thread.
class ProcessSettings
{
public:
    /// Remembers how things are. Before the interpreter's start.
    void keep();

    /// Disarms what scripts armed, and finds out what they changed. With the interpreter lock held, before the
    /// interpreter's end. `pythonsHandler` is how the interpreter handles any signal.
    void giveBack(const struct sigaction &pythonsHandler);

    /// Makes things as they were. After the interpreter's end.
    void restore();

private:
    static constexpr int Signals = NSIG;
    static constexpr int Timers = 3;

    std::array<struct sigaction, Signals> actions{}; ///< before the start, by the signal's number
    std::array<bool, Signals> changed{};
    std::array<bool, Timers> armed{};
};

/// Python's own modules remember things by a thread state's number, and some beyond the interpreter's end: gives the
/// interpreter that this thread has just started numbers that no earlier one had. With the interpreter lock held.
void useNewThreadStateNumbers();

} // namespace python_terminal
