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
    StopRequests();
    ~StopRequests();
    StopRequests(const StopRequests &) = delete;
    StopRequests &operator=(const StopRequests &) = delete;

    // On the GUI thread, or any other

    /// What runs at the moment is to end with a KeyboardInterrupt; false when nothing runs.
    bool interrupt();
    /// Whatever runs, now or later, is to end, handlers of exceptions included; there is no way back.
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
    void enter();
    void leave();
    /// Sets the exception that was asked for; false when none was. An interrupt is then done with.
    bool raise();
    bool isWanted() const { return closing || interrupting; }
    /// What runs within this time although a close was asked for may come to its end: the script's own clean-up.
    void allowCleanUp(std::chrono::milliseconds time);
    /// From now on nothing is stopped any more: what the interpreter's end itself runs must not be.
    void forbidStopping();

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

    bool mustClose() const;

    std::atomic<bool> closing{false};
    std::atomic<std::chrono::steady_clock::rep> cleanUpEnd{
        std::chrono::steady_clock::duration::min().count()};
    std::atomic<bool> interrupting{false};
    std::mutex insideMutex; ///< guards the next three
    bool attached = false;
    bool inside = false;
    pthread_t worker{};
};

/// Python code runs as long as this lives.
class RunningPython
{
public:
    explicit RunningPython(StopRequests &stopRequests) : requests(stopRequests) { requests.enter(); }
    ~RunningPython() { requests.leave(); }
    RunningPython(const RunningPython &) = delete;
    RunningPython &operator=(const RunningPython &) = delete;

private:
    StopRequests &requests;
};

} // namespace python_terminal
