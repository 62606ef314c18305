#pragma once

#include "hostclient/orb_client.h"
#include "orbclient/py_ref.h"
#include "orbclient/python_include.h"
#include "tests/support/recording_backend.h"

#include <QString>

/// A Python interpreter with the built-in module "orbClient", whose client speaks to a recording backend.
///
/// Everything runs on the thread that makes it, which holds the interpreter lock all the while. One at a time; a test
/// class has it as a member, or as a local of its initTestCase and of nothing else. It does not look at the user's
/// site-packages nor at PYTHONHOME and PYTHONPATH. Statements and expressions run in the module __main__, where
/// "orbClient" is imported already.
///
/// What became of an evaluation is told as a text: the result's repr(), as in "5", "'5'" or "[]"; the bare name of the
/// exception, as in "TypeError"; or NoObject, when there is no result and no exception either. None of these three can
/// be taken for another one of them. Exceptions are cleared once they are told.
class PythonInterpreter
{
public:
    /// Aborts the process when the interpreter or the module does not start.
    PythonInterpreter();
    ~PythonInterpreter();
    PythonInterpreter(const PythonInterpreter &) = delete;
    PythonInterpreter &operator=(const PythonInterpreter &) = delete;

    /// What the module's client speaks to. Outlives the interpreter.
    RecordingBackend &backend() { return recordingBackend; }
    OrbClient &client() { return orbClient; }

    /// The module "orbClient"; borrowed.
    PyObject *module() const { return orbClientModule.get(); }
    /// Gives the module another client, or none with null.
    void setClient(OrbClient *newClient);

    /// Runs statements, several lines if need be. Empty when they ran to their end, else as above.
    QString exec(const QString &statements);
    /// Evaluates an expression and tells what became of it.
    QString eval(const QString &expression);
    /// Evaluates an expression; without a result the exception is left pending, for describe().
    PyRef evaluate(const QString &expression);
    /// Binds a name in __main__ to an object.
    void bind(const QString &name, PyObject *object);

    /// Tells what became of a call that gave `result`, with an exception pending or not.
    static QString describe(const PyRef &result);
    /// The name of the pending exception, which is cleared; empty when there is none.
    static QString takeException();
    /// The text of a str object; of others what str() makes of them.
    static QString textOf(PyObject *object);

    /// Calls the method's C function itself, past the interpreter's own checks, which would raise a SystemError where
    /// there is neither a result nor an exception. `arguments` is null or a tuple; both are borrowed.
    static PyRef callDirectly(const PyMethodDef &method, PyObject *self, PyObject *arguments);

    /// How a call is told that gave neither a result nor an exception.
    static const QString NoObject;

private:
    PyRef run(const QString &text, int start);

    // In this order: the interpreter ends before the client that its objects point to.
    RecordingBackend recordingBackend;
    OrbClient orbClient{recordingBackend};
    PyRef orbClientModule;
    PyObject *names = nullptr; ///< the dictionary of __main__; borrowed
};
