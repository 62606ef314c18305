#include "python_terminal/fallback_names.h"

#include "orbclient/py_ref.h"

namespace python_terminal
{

namespace
{

struct FallbackNames
{
    PyDictObject dictionary;
    PyObject *locals;
};

PyObject *fallbackItem(PyObject *self, PyObject *name)
{
    PyObject *locals = reinterpret_cast<FallbackNames *>(self)->locals;
    PyObject *found = PyDict_GetItemWithError(self, name);
    // The collector takes the local names first, and something of the script's may still run as it goes.
    if (found == nullptr && PyErr_Occurred() == nullptr && locals != nullptr)
        found = PyDict_GetItemWithError(locals, name);
    if (found == nullptr && PyErr_Occurred() == nullptr) {
        // The live ones: a script may add to them.
        const PyRef builtins(PyImport_ImportModule("builtins"));
        found = builtins ? PyDict_GetItemWithError(PyModule_GetDict(builtins.get()), name) : nullptr;
    }
    if (found == nullptr && PyErr_Occurred() == nullptr)
        PyErr_SetObject(PyExc_KeyError, name);
    Py_XINCREF(found);
    return found;
}

PyObject *moduleAttribute(PyObject *locals, PyObject *name)
{
    PyObject *found = PyDict_GetItemWithError(locals, name);
    if (found == nullptr && PyErr_Occurred() == nullptr)
        PyErr_Format(PyExc_AttributeError, "module '__main__' has no attribute '%S'", name);
    Py_XINCREF(found);
    return found;
}

int traverseNames(PyObject *self, visitproc visit, void *arg)
{
    Py_VISIT(reinterpret_cast<FallbackNames *>(self)->locals);
    return PyDict_Type.tp_traverse(self, visit, arg);
}

int clearNames(PyObject *self)
{
    Py_CLEAR(reinterpret_cast<FallbackNames *>(self)->locals);
    return PyDict_Type.tp_clear(self);
}

void releaseNames(PyObject *self)
{
    PyObject_GC_UnTrack(self);
    Py_CLEAR(reinterpret_cast<FallbackNames *>(self)->locals);
    PyObject_GC_Track(self);
    PyDict_Type.tp_dealloc(self);
}

PyTypeObject &namesType()
{
    static PyMappingMethods mapping = {nullptr, fallbackItem, nullptr};
    static PyTypeObject type = [] {
        PyTypeObject made{};
        made.ob_base = {PyObject_HEAD_INIT(nullptr) 0};
        made.tp_name = "ConsoleRedirection.FallbackNames";
        made.tp_basicsize = sizeof(FallbackNames);
        made.tp_base = &PyDict_Type;
        made.tp_flags = Py_TPFLAGS_DEFAULT;
        made.tp_flags |= Py_TPFLAGS_HAVE_GC;
        made.tp_as_mapping = &mapping;
        made.tp_traverse = traverseNames;
        made.tp_clear = clearNames;
        made.tp_dealloc = releaseNames;
        return made;
    }();
    return type;
}

/// The function "__dir__" of the module, with the local names as its self.
PyObject *moduleNames(PyObject *locals, PyObject *)
{
    const PyRef mainModule(PyImport_ImportModule("__main__"));
    const PyRef names(mainModule ? PyDict_Copy(PyModule_GetDict(mainModule.get())) : nullptr);
    if (!names || PyDict_Update(names.get(), locals) != 0)
        return nullptr;
    return PyDict_Keys(names.get());
}

} // namespace

PyObject *newFallbackNames(PyObject *locals)
{
    if (PyType_Ready(&namesType()) != 0)
        return nullptr;
    PyRef names(PyObject_CallObject(reinterpret_cast<PyObject *>(&namesType()), nullptr));
    const PyRef builtins(PyImport_ImportModule("builtins"));
    if (!names || !builtins)
        return nullptr;
    Py_INCREF(locals);
    reinterpret_cast<FallbackNames *>(names.get())->locals = locals;
    // Python looks these up in the dictionary itself.
    for (const char *name : {"__import__", "__build_class__"}) {
        const PyRef function(PyObject_GetAttrString(builtins.get(), name));
        if (!function || PyDict_SetItemString(names.get(), name, function.get()) != 0)
            return nullptr;
    }
    return names.release();
}

PyObject *newModuleAttributes(PyObject *locals)
{
    static PyMethodDef function = {"__getattr__", moduleAttribute, METH_O, nullptr};
    return PyCFunction_New(&function, locals);
}

PyObject *newModuleNames(PyObject *locals)
{
    static PyMethodDef function = {"__dir__", moduleNames, METH_NOARGS, nullptr};
    return PyCFunction_New(&function, locals);
}

} // namespace python_terminal
