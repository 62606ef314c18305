#pragma once

#include "orbclient/python_include.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

namespace python_terminal
{

/// How the GUI thread makes the interpreter's thread stop what it does. Asking sets a flag and knocks: it has Python
/// look for the flag at its next step, and interrupts a system call. A knock may come a moment too early for a call
/// that is about to begin, so it is repeated until the worker has noticed.
///
/// One thread, the worker, holds the interpreter; one object of this class at a time is the one that Python asks.
class StopRequests
{
public:
    /// What runs: a statement or a file of the user's, or something that the console does for itself, which an interrupt
    /// is never meant for.
    enum class Code
    {
        Script,
        Internal,
    };

    StopRequests();
    ~StopRequests();
    StopRequests(const StopRequests &) = delete;
    StopRequests &operator=(const StopRequests &) = delete;

    // On the GUI thread, or any other

    /// The script that runs at the moment is to end with a KeyboardInterrupt; false when none runs.
    bool interrupt();
    /// Whatever runs, now or later, is to end; there is no way back. At first its handlers of exceptions and its
    /// "finally" run as they would at any exception, so that a script may leave the hardware as it should be; soon after
    /// they end as well.
    void close();
    /// Asks again, while something that was asked for has not happened.
    void knock();
    /// An interrupt was asked for and has not been noticed yet.
    bool isInterruptPending() const { return interrupting; }
    bool isClosing() const { return closing; }

    // On the worker, which holds the interpreter lock

    /// The interpreter was started by this thread: from now on it asks here.
    void attach();
    /// The interpreter is about to end; nothing is asked any more.
    void detach();
    /// Python code begins to run. An interrupt that was meant for what ran before is forgotten.
    void enter(Code code);
    void leave();
    /// Sets the exception that was asked for; false when none was. An interrupt is then done with.
    bool raise();
    bool isWanted() const { return closing || interrupting; }
    /// What runs within this time although a close was asked for may come to its end: the script's own clean-up.
    void allowCleanUp(std::chrono::milliseconds time);
    /// The interpreter's end takes the handlers of signals away: from now on only running code is asked, within its
    /// next step.
    void endSignals();
    /// How the interpreter handles any signal.
    const struct sigaction &signalAction() const { return action; }

    /// Waits until `done` holds or a stop is asked for. `lock` holds the mutex of `condition`.
    template <typename Done>
    void waitUnlessStopped(std::unique_lock<std::mutex> &lock, Done done)
    {
        wakeUp.wait(lock, [&] { return done() || isWanted(); });
    }

    /// For whoever waits by waitUnlessStopped: guards what it waits for.
    std::mutex mutex;
    std::condition_variable wakeUp;

private:
    static int onPendingCall(void *);
    static PyObject *onSignal(PyObject *, PyObject *);
    static int onTrace(PyObject *, struct _frame *, int, PyObject *);

    bool isPatient() const;

    std::atomic<bool> closing{false};
    std::atomic<bool> interrupting{false};
    std::chrono::steady_clock::time_point
        patienceEnd; ///< a close waits until then; guarded by the interpreter lock
    bool askedToClose = false; ///< likewise
    std::mutex insideMutex; ///< guards the rest
    struct sigaction action = {};
    bool signalled = false; ///< the interpreter handles the signal
    bool attached = false;
    bool inside = false;
    bool insideScript = false;
    pthread_t worker{};
};

/// Python code runs as long as this lives.
class RunningPython
{
public:
    RunningPython(StopRequests &stopRequests, StopRequests::Code code) : requests(stopRequests)
    {
        requests.enter(code);
    }
    ~RunningPython() { requests.leave(); }
    RunningPython(const RunningPython &) = delete;
    RunningPython &operator=(const RunningPython &) = delete;

private:
    StopRequests &requests;
};

} // namespace python_terminal
