#include "python_terminal/console_redirection.h"

#include "orbclient/py_ref.h"
#include "python_terminal/terminal_python_thread.h"

#include <QString>

#include <array>
#include <utility>

namespace python_terminal
{

namespace
{

struct ConsoleRedirection
{
    PyObject_HEAD TerminalPythonThread *owner;
    bool isError;
};
static_assert(sizeof(void *) != 8 || sizeof(ConsoleRedirection) == 32,
              "the size is part of the type's definition");

PyTypeObject &redirectionType();

/// The host behind a stream; null for a subclass and for a stream that nobody gave a host.
TerminalPythonThread *hostOf(PyObject *self)
{
    return Py_TYPE(self) == &redirectionType() ? reinterpret_cast<ConsoleRedirection *>(self)->owner
                                               : nullptr;
}

PyObject *write(PyObject *self, PyObject *arguments)
{
    TerminalPythonThread *host = hostOf(self);
    const char *text = nullptr;
    // The exception of an argument that is no text stays set, which is meant: Python then complains itself.
    if (host != nullptr && PyArg_ParseTuple(arguments, "s", &text) != 0)
        host->takeOutput(QString::fromLocal8Bit(text), reinterpret_cast<ConsoleRedirection *>(self)->isError);
    Py_RETURN_NONE;
}

PyObject *readLine(PyObject *self, PyObject *)
{
    TerminalPythonThread *host = hostOf(self);
    if (host == nullptr)
        Py_RETURN_NONE;
    QString line;
    if (!host->readStdInLine(line))
        return nullptr;
    return PyUnicode_FromString(line.toLocal8Bit().constData());
}

// What libraries expect of a stream beyond that.

PyObject *writeLines(PyObject *self, PyObject *lines)
{
    const PyRef iterator(PyObject_GetIter(lines));
    if (!iterator)
        return nullptr;
    for (PyRef line(PyIter_Next(iterator.get())); line; line = PyRef(PyIter_Next(iterator.get()))) {
        const PyRef written(PyObject_CallMethod(self, "write", "O", line.get()));
        if (!written)
            return nullptr;
    }
    if (PyErr_Occurred() != nullptr)
        return nullptr;
    Py_RETURN_NONE;
}

/// An interactive stream has no end: what is read in one piece is the next line.
PyObject *read(PyObject *self, PyObject *)
{
    return readLine(self, nullptr);
}

PyObject *readLines(PyObject *self, PyObject *)
{
    PyRef line(readLine(self, nullptr));
    return line ? Py_BuildValue("[O]", line.get()) : nullptr;
}

PyObject *itself(PyObject *self)
{
    Py_INCREF(self);
    return self;
}

PyObject *nextLine(PyObject *self)
{
    return hostOf(self) != nullptr ? readLine(self, nullptr) : nullptr;
}

PyObject *nothing(PyObject *, PyObject *)
{
    Py_RETURN_NONE;
}

PyObject *yes(PyObject *, PyObject *)
{
    Py_RETURN_TRUE;
}

PyObject *no(PyObject *, PyObject *)
{
    Py_RETURN_FALSE;
}

PyObject *create(PyTypeObject *type, PyObject *, PyObject *)
{
    return type->tp_alloc(type, 0);
}

int initialise(PyObject *, PyObject *, PyObject *)
{
    return 0;
}

std::array<PyMethodDef, 13> methods = {{
    // Beside the slot of the same name, for its documentation.
    {"__init__", nothing, METH_VARARGS | METH_COEXIST, "initialize the stdout/err redirector"},
    {"write", write, METH_VARARGS, "implement the write method to redirect stdout/err"},
    {"readline", readLine, METH_VARARGS, "implement the readline method to redirect stdin"},
    {"writelines", writeLines, METH_O, "write each text of an iterable"},
    {"read", read, METH_VARARGS, "read the next line"},
    {"readlines", readLines, METH_VARARGS, "read the next line, as a list of one"},
    {"flush", nothing, METH_VARARGS, "do nothing: every text is passed on when it is written"},
    {"close", nothing, METH_VARARGS, "do nothing: the console stays open"},
    {"isatty", no, METH_VARARGS, "tell that this is no terminal that understands control codes"},
    {"readable", yes, METH_VARARGS, "tell that this stream can be read"},
    {"writable", yes, METH_VARARGS, "tell that this stream can be written"},
    {"seekable", no, METH_VARARGS, "tell that this stream has no positions"},
    {nullptr, nullptr, 0, nullptr},
}};

PyTypeObject makeType()
{
    PyTypeObject type{};
    type.ob_base = {PyObject_HEAD_INIT(nullptr) 0};
    type.tp_name = "redirection.ConsoleRedirection";
    type.tp_basicsize = sizeof(ConsoleRedirection);
    // The flag of a dictionary although it is none: deliberately the same word as the scripting module's types have.
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    type.tp_flags |= Py_TPFLAGS_BASETYPE | Py_TPFLAGS_DICT_SUBCLASS;
    type.tp_new = create;
    type.tp_init = initialise;
    type.tp_methods = methods.data();
    type.tp_iter = itself;
    type.tp_iternext = nextLine;
    return type;
}

PyTypeObject &redirectionType()
{
    static PyTypeObject type = makeType();
    return type;
}

/// What libraries ask a stream, as attributes of the type: the objects themselves have none.
bool addAttributes(PyTypeObject &type)
{
    const std::array<std::pair<const char *, const char *>, 4> texts = {
        {{"encoding", "utf-8"}, {"errors", "strict"}, {"mode", "r+"}, {"name", "<console>"}}};
    for (const auto &[name, text] : texts) {
        const PyRef value(PyUnicode_FromString(text));
        if (!value || PyDict_SetItemString(type.tp_dict, name, value.get()) != 0)
            return false;
    }
    const bool added = PyDict_SetItemString(type.tp_dict, "closed", Py_False) == 0
        && PyDict_SetItemString(type.tp_dict, "newlines", Py_None) == 0;
    PyType_Modified(&type);
    return added;
}

} // namespace

PyObject *initialiseConsoleRedirection()
{
    constexpr int ApiVersion = 1013;
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "ConsoleRedirection", "", -1, nullptr, nullptr, nullptr, nullptr, nullptr};
    PyRef module(PyModule_Create2(&definition, ApiVersion));
    if (!module)
        return nullptr;
    if (PyType_Ready(&redirectionType()) != 0 || !addAttributes(redirectionType())) {
        PyErr_Clear();
        return module.release();
    }
    PyRef type = PyRef::to(reinterpret_cast<PyObject *>(&redirectionType()));
    if (PyModule_AddObject(module.get(), "ConsoleRedirection", type.get()) != 0)
        return nullptr;
    static_cast<void>(type.release()); // the module took it over
    return module.release();
}

PyObject *newConsoleRedirection(TerminalPythonThread *owner, bool isError)
{
    if (PyType_Ready(&redirectionType()) != 0)
        return nullptr;
    PyObject *object = redirectionType().tp_alloc(&redirectionType(), 0);
    if (object != nullptr) {
        reinterpret_cast<ConsoleRedirection *>(object)->owner = owner;
        reinterpret_cast<ConsoleRedirection *>(object)->isError = isError;
    }
    return object;
}

} // namespace python_terminal
