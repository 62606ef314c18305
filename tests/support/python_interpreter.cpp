#include "tests/support/python_interpreter.h"

#include "orbclient/orb_client_module.h"

#include <string>

const QString PythonInterpreter::NoObject = QStringLiteral("no object and no exception");

namespace
{

/// Everything that decides where the interpreter looks for its library, so that the user's own settings do not.
void isolate()
{
    qunsetenv("PYTHONPATH");
    qunsetenv("PYTHONHOME");
    qunsetenv("PYTHONSTARTUP");
    // Python keeps the pointer.
    static std::wstring home = QStringLiteral(PYTHON_HOME).toStdWString();
    Py_SetPythonHome(home.data());
    Py_NoUserSiteDirectory = 1;
    Py_DontWriteBytecodeFlag = 1;
}

void registerModule()
{
    static const bool registered = PyImport_AppendInittab("orbClient", PyInit_orbClientPython_3_for_ORB) == 0;
    if (!registered)
        qFatal("The interpreter does not take another built-in module");
}

/// Nothing that a test of this module does may fail so early.
PyRef required(PyObject *object, const char *what)
{
    if (object == nullptr) {
        PyErr_Print();
        qFatal("Python could not %s", what);
    }
    return PyRef(object);
}

} // namespace

PythonInterpreter::PythonInterpreter()
{
    if (Py_IsInitialized() != 0)
        qFatal("There is an interpreter already");
    isolate();
    registerModule();
    Py_InitializeEx(0); // the test program keeps its own signal handlers
    names = PyModule_GetDict(required(PyImport_ImportModule("__main__"), "make its main module").get());
    orbClientModule = required(PyImport_ImportModule("orbClient"), "import orbClient");
    bind(QStringLiteral("orbClient"), orbClientModule.get());
    setClient(&orbClient);
}

PythonInterpreter::~PythonInterpreter()
{
    setClient(nullptr);
    orbClientModule = PyRef();
    if (Py_FinalizeEx() != 0)
        qWarning("Python could not write out its streams");
}

void PythonInterpreter::setClient(OrbClient *newClient)
{
    orbclient::setModuleClient(orbClientModule.get(), newClient);
}

PyRef PythonInterpreter::run(const QString &text, int start)
{
    const QByteArray source = text.toUtf8();
    return PyRef(PyRun_String(source.constData(), start, names, names));
}

QString PythonInterpreter::exec(const QString &statements)
{
    const PyRef none = run(statements, Py_file_input);
    return none ? QString() : describe(none);
}

PyRef PythonInterpreter::evaluate(const QString &expression)
{
    return run(expression, Py_eval_input);
}

QString PythonInterpreter::eval(const QString &expression)
{
    return describe(evaluate(expression));
}

void PythonInterpreter::bind(const QString &name, PyObject *object)
{
    const QByteArray key = name.toUtf8();
    if (PyDict_SetItemString(names, key.constData(), object) != 0)
        qFatal("Python could not bind %s", key.constData());
}

QString PythonInterpreter::describe(const PyRef &result)
{
    if (!result) {
        const QString exception = takeException();
        return exception.isEmpty() ? NoObject : exception;
    }
    if (PyErr_Occurred() != nullptr)
        return QStringLiteral("both an object and a ") + takeException();
    const PyRef text(PyObject_Repr(result.get()));
    return text ? textOf(text.get()) : QStringLiteral("a repr() that raises ") + takeException();
}

QString PythonInterpreter::takeException()
{
    PyObject *type = nullptr;
    PyObject *value = nullptr;
    PyObject *traceback = nullptr;
    PyErr_Fetch(&type, &value, &traceback);
    const PyRef ownedType(type);
    const PyRef ownedValue(value);
    const PyRef ownedTraceback(traceback);
    if (!ownedType)
        return QString();
    return textOf(PyRef(PyObject_GetAttrString(ownedType.get(), "__name__")).get());
}

QString PythonInterpreter::textOf(PyObject *object)
{
    const PyRef text(PyObject_Str(object));
    // Half of a surrogate pair has no place in UTF-8; it is spelled out, as Python does where it shows one.
    const PyRef bytes(text ? PyUnicode_AsEncodedString(text.get(), "utf-8", "backslashreplace") : nullptr);
    if (!bytes)
        return QStringLiteral("a str() that raises ") + takeException();
    return QString::fromUtf8(PyBytes_AS_STRING(bytes.get()), static_cast<int>(PyBytes_GET_SIZE(bytes.get())));
}

PyRef PythonInterpreter::callDirectly(const PyMethodDef &method, PyObject *self, PyObject *arguments)
{
    return PyRef(method.ml_meth(self, arguments));
}
