#include "python_terminal/child_processes.h"

#include "orbclient/orb_client_module.h"
#include "orbclient/py_ref.h"

#include <atomic>

#include <unistd.h>

namespace python_terminal
{

namespace
{

std::atomic<bool> forked{false};

PyObject *afterFork(PyObject *, PyObject *)
{
    forked = true;
    // The client's locks may be held by threads that this process does not have.
    const PyRef client(PyImport_ImportModule("orbClient"));
    if (client)
        orbclient::setModuleClient(client.get(), nullptr);
    PyErr_Clear();
    Py_RETURN_NONE;
}

/// The exit code that the exception asks for, which is written when it is none of that kind.
int exitCodeOfException()
{
    if (PyErr_ExceptionMatches(PyExc_SystemExit) == 0) {
        PyErr_Print();
        return 1;
    }
    PyObject *type = nullptr;
    PyObject *value = nullptr;
    PyObject *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    const PyRef code(value != nullptr ? PyObject_GetAttrString(value, "code") : nullptr);
    PyErr_Clear();
    if (!code || code.get() == Py_None)
        return 0;
    return PyLong_Check(code.get()) ? static_cast<int>(PyLong_AsLong(code.get())) : 1;
}

} // namespace

void prepareForChildProcesses(const QString &interpreter)
{
    const PyRef executable(PyUnicode_DecodeFSDefault(interpreter.toLocal8Bit().constData()));
    if (executable)
        PySys_SetObject("executable", executable.get());

    static PyMethodDef hook = {"after_fork", afterFork, METH_NOARGS, nullptr};
    const PyRef function(PyCFunction_New(&hook, nullptr));
    const PyRef os(PyImport_ImportModule("os"));
    const PyRef registration(os ? PyObject_GetAttrString(os.get(), "register_at_fork") : nullptr);
    const PyRef noArguments(PyTuple_New(0));
    const PyRef keywords(function ? Py_BuildValue("{sO}", "after_in_child", function.get()) : nullptr);
    if (registration && noArguments && keywords)
        const PyRef result(PyObject_Call(registration.get(), noArguments.get(), keywords.get()));
    PyErr_Clear();
}

bool isForkedProcess()
{
    return forked;
}

void writeInForkedProcess(const QString &text, bool isError)
{
    const QByteArray bytes = text.toLocal8Bit();
    for (int written = 0; written < bytes.size();) {
        const ssize_t count = ::write(isError ? STDERR_FILENO : STDOUT_FILENO, bytes.constData() + written,
                                      static_cast<size_t>(bytes.size() - written));
        if (count <= 0)
            return;
        written += static_cast<int>(count);
    }
}

void endForkedProcess()
{
    const int exitCode = PyErr_Occurred() != nullptr ? exitCodeOfException() : 0;
    ::_exit(exitCode);
}

} // namespace python_terminal
