#include "python_terminal/other_threads.h"

#include "orbclient/py_ref.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

#include <frameobject.h>
#include <pythread.h>

#include <sys/socket.h>

namespace python_terminal
{

namespace
{

using Clock = std::chrono::steady_clock;

// What a sleeping thread looks at. There is one interpreter at a time, and these are its.
struct Sleepers
{
    std::mutex mutex;
    std::condition_variable wakeUp;
    bool mustEnd = false;
    unsigned long interpreterThread = 0;
};

Sleepers &sleepers()
{
    static auto *all = new Sleepers; // an interpreter that is left to itself may outlive every static object
    return *all;
}

PyObject *sleep(PyObject *originalSleep, PyObject *length)
{
    // The interpreter's own thread is woken by signals, as scripts expect it.
    if (PyThread_get_thread_ident() == sleepers().interpreterThread)
        return PyObject_CallFunctionObjArgs(originalSleep, length, nullptr);
    _PyTime_t nanoseconds = 0;
    if (_PyTime_FromSecondsObject(&nanoseconds, length, _PyTime_ROUND_TIMEOUT) != 0)
        return nullptr;
    if (nanoseconds < 0) {
        PyErr_SetString(PyExc_ValueError, "sleep length must be non-negative");
        return nullptr;
    }
    const Clock::time_point start = Clock::now();
    Py_BEGIN_ALLOW_THREADS
    {
        std::unique_lock<std::mutex> lock(sleepers().mutex);
        // In pieces: no clock can count to the end of the longest time.
        constexpr std::chrono::nanoseconds Piece = std::chrono::hours(1);
        const std::chrono::nanoseconds all(nanoseconds);
        for (auto passed = Clock::now() - start; passed < all && !sleepers().mustEnd;
             passed = Clock::now() - start)
            sleepers().wakeUp.wait_for(lock, std::min<std::chrono::nanoseconds>(all - passed, Piece));
    }
    Py_END_ALLOW_THREADS Py_RETURN_NONE;
}

int endAtEveryStep(PyObject *, PyFrameObject *, int, PyObject *)
{
    PyErr_SetNone(PyExc_SystemExit);
    return -1;
}

/// A type of a module that is loaded; null when it is not.
PyRef loadedType(const char *moduleName, const char *typeName)
{
    const PyRef name(PyUnicode_FromString(moduleName));
    const PyRef module(name ? PyImport_GetModule(name.get()) : nullptr);
    PyRef type(module ? PyObject_GetAttrString(module.get(), typeName) : nullptr);
    PyErr_Clear();
    return type && PyType_Check(type.get()) ? std::move(type) : PyRef();
}

PyTypeObject *asType(const PyRef &type)
{
    return reinterpret_cast<PyTypeObject *>(type.get());
}

void traceFrom(PyThreadState *thread)
{
    PyThreadState *own = PyThreadState_Swap(thread);
    PyEval_SetTrace(endAtEveryStep, nullptr);
    PyThreadState_Swap(own);
}

/// What a thread waits for is mostly a local variable of the function that it is in.
void collectLocals(PyThreadState *thread, std::vector<PyRef> &locals)
{
    const PyFrameObject *frame = thread->frame;
    const int count = frame != nullptr ? frame->f_code->co_nlocals : 0;
    for (int i = 0; i < count; ++i) {
        if (frame->f_localsplus[i] != nullptr)
            locals.push_back(PyRef::to(frame->f_localsplus[i]));
    }
}

void endWaitingFor(const std::vector<PyRef> &objects)
{
    const PyRef lockType = loadedType("_thread", "LockType");
    const PyRef socketType = loadedType("_socket", "socket");
    for (const PyRef &object : objects) {
        if (lockType && Py_TYPE(object.get()) == asType(lockType))
            const PyRef released(PyObject_CallMethod(object.get(), "release", nullptr));
        else if (socketType && PyObject_TypeCheck(object.get(), asType(socketType)) != 0)
            const PyRef shutDown(PyObject_CallMethod(object.get(), "shutdown", "i", SHUT_RDWR));
        PyErr_Clear();
    }
}

/// One round; false when there is no other thread any more.
bool askOtherThreads(bool politely)
{
    PyThreadState *own = PyThreadState_Get();
    bool others = false;
    // The list of threads stays as it is as long as the interpreter lock is held: calls are for later.
    std::vector<PyRef> locals;
    for (PyThreadState *thread = PyInterpreterState_ThreadHead(own->interp); thread != nullptr;
         thread = PyThreadState_Next(thread)) {
        if (thread == own)
            continue;
        others = true;
        if (!politely && thread->c_tracefunc != endAtEveryStep)
            traceFrom(thread);
        PyThreadState_SetAsyncExc(thread->thread_id, PyExc_SystemExit);
        collectLocals(thread, locals);
    }
    endWaitingFor(locals);
    return others;
}

} // namespace

void prepareOtherThreads()
{
    static PyMethodDef method = {"sleep", sleep, METH_O,
                                 "sleep(seconds)\n\nDelay execution for a given number of seconds."};
    sleepers().mustEnd = false;
    sleepers().interpreterThread = PyThread_get_thread_ident();
    const PyRef time(PyImport_ImportModule("time"));
    const PyRef name(PyUnicode_FromString("time"));
    const PyRef original(time ? PyObject_GetAttrString(time.get(), "sleep") : nullptr);
    const PyRef replacement(original && name ? PyCFunction_NewEx(&method, original.get(), name.get())
                                             : nullptr);
    if (replacement)
        PyObject_SetAttrString(time.get(), "sleep", replacement.get());
    PyErr_Clear();
}

void useDefaultSwitchInterval()
{
    constexpr unsigned long Microseconds = 5000;
    _PyEval_SetSwitchInterval(Microseconds);
}

void endOtherThreads()
{
    constexpr std::chrono::milliseconds Grace(20);
    constexpr std::chrono::milliseconds Pause(2);
    {
        const std::lock_guard<std::mutex> lock(sleepers().mutex);
        sleepers().mustEnd = true;
    }
    sleepers().wakeUp.notify_all();
    const Clock::time_point start = Clock::now();
    while (askOtherThreads(Clock::now() - start < Grace)) {
        Py_BEGIN_ALLOW_THREADS
        {
            std::unique_lock<std::mutex> lock(sleepers().mutex);
            sleepers().wakeUp.wait_for(lock, Pause);
        }
        Py_END_ALLOW_THREADS
    }
}

} // namespace python_terminal
