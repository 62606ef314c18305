#include "python_terminal/stop_requests.h"

#include "orbclient/py_ref.h"

namespace python_terminal
{

namespace
{

// Python calls back without saying for whom, and keeps a call that it has not come to yet beyond its own end.
std::atomic<StopRequests *> current{nullptr};

// Of the signals that interrupt a system call, this one does nothing where nobody handles it: after the interpreter's
// end a late one must not harm the host.
constexpr int InterruptingSignal = SIGURG;

// What a script's own handlers may take when they are asked to end.
constexpr std::chrono::milliseconds Grace(40);

} // namespace

StopRequests::StopRequests() = default;

StopRequests::~StopRequests()
{
    StopRequests *self = this;
    current.compare_exchange_strong(self, nullptr);
}

bool StopRequests::interrupt()
{
    {
        const std::lock_guard<std::mutex> lock(insideMutex);
        if (!insideScript)
            return false;
        interrupting = true;
    }
    knock();
    return true;
}

void StopRequests::close()
{
    closing = true;
    knock();
}

void StopRequests::knock()
{
    if (!isWanted())
        return;
    {
        // Whoever has looked at the flags waits already; whoever has not will see them.
        const std::lock_guard<std::mutex> lock(mutex);
    }
    wakeUp.notify_all();
    const std::lock_guard<std::mutex> lock(insideMutex);
    if (!attached || !inside)
        return;
    Py_AddPendingCall(onPendingCall, nullptr);
    if (!signalled)
        return;
    // A script may have had the signal ignored.
    if (closing)
        sigaction(InterruptingSignal, &action, nullptr);
    pthread_kill(worker, InterruptingSignal);
}

void StopRequests::attach()
{
    static PyMethodDef handler = {"stop", onSignal, METH_VARARGS, nullptr};
    const PyRef function(PyCFunction_New(&handler, nullptr));
    const PyRef module(PyImport_ImportModule("signal"));
    const PyRef old(function && module ? PyObject_CallMethod(module.get(), "signal", "iO", InterruptingSignal,
                                                             function.get())
                                       : nullptr);
    PyErr_Clear();
    current = this;
    const std::lock_guard<std::mutex> lock(insideMutex);
    worker = pthread_self();
    sigaction(InterruptingSignal, nullptr, &action);
    signalled = static_cast<bool>(old);
    attached = true;
}

void StopRequests::detach()
{
    const std::lock_guard<std::mutex> lock(insideMutex);
    attached = false;
    current = nullptr;
}

void StopRequests::enter(Code code)
{
    // A signal that came while nothing ran is nobody's.
    PyErr_CheckSignals();
    PyErr_Clear();
    const std::lock_guard<std::mutex> lock(insideMutex);
    inside = true;
    insideScript = code == Code::Script;
    interrupting = false;
}

void StopRequests::leave()
{
    const std::lock_guard<std::mutex> lock(insideMutex);
    inside = false;
    insideScript = false;
    interrupting = false;
}

void StopRequests::allowCleanUp(std::chrono::milliseconds time)
{
    PyEval_SetTrace(nullptr, nullptr);
    askedToClose = true;
    patienceEnd = std::chrono::steady_clock::now() + time;
}

void StopRequests::endSignals()
{
    const std::lock_guard<std::mutex> lock(insideMutex);
    signalled = false;
}

bool StopRequests::isPatient() const
{
    return std::chrono::steady_clock::now() < patienceEnd;
}

bool StopRequests::raise()
{
    if (closing) {
        if (isPatient())
            return false;
        // From the second time on it is raised again at every step: "except: pass" and a long "finally" end as well.
        if (askedToClose)
            PyEval_SetTrace(onTrace, nullptr);
        else
            patienceEnd = std::chrono::steady_clock::now() + Grace;
        askedToClose = true;
        PyErr_SetNone(PyExc_SystemExit);
        return true;
    }
    if (!interrupting.exchange(false))
        return false;
    PyErr_SetNone(PyExc_KeyboardInterrupt);
    return true;
}

int StopRequests::onPendingCall(void *)
{
    StopRequests *requests = current;
    return requests != nullptr && requests->raise() ? -1 : 0;
}

PyObject *StopRequests::onSignal(PyObject *, PyObject *)
{
    StopRequests *requests = current;
    if (requests != nullptr && requests->raise())
        return nullptr;
    Py_RETURN_NONE;
}

int StopRequests::onTrace(PyObject *, struct _frame *, int, PyObject *)
{
    StopRequests *requests = current;
    if (requests == nullptr || requests->isPatient())
        return 0;
    PyErr_SetNone(PyExc_SystemExit);
    return -1;
}

} // namespace python_terminal
