#include "orbclient/object_type.h"

#include "orbclient/py_ref.h"

namespace orbclient
{

namespace
{

/// An object of a static type keeps its storage and its members' references: this is deliberate. Objects that were
/// handed to a script stay valid for as long as the process lives. A Python subclass gets its storage back, and the
/// members stay referenced even then.
void releaseObject(PyObject *object)
{
    PyTypeObject *type = Py_TYPE(object);
    // The type must outlive its own free slot.
    const PyRef keptType = PyRef::to(reinterpret_cast<PyObject *>(type));
    if ((type->tp_flags & Py_TPFLAGS_HEAPTYPE) != 0)
        type->tp_free(object);
}

} // namespace

PyTypeObject makeObjectType(const ObjectTypeParts &parts)
{
    PyTypeObject type{};
    type.ob_base = {PyObject_HEAD_INIT(nullptr) 0};
    type.tp_name = parts.name;
    type.tp_doc = parts.docstring;
    type.tp_basicsize = parts.size;
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    type.tp_flags |= Py_TPFLAGS_BASETYPE | Py_TPFLAGS_DICT_SUBCLASS;
    type.tp_new = parts.create;
    type.tp_init = parts.initialise;
    type.tp_dealloc = releaseObject;
    type.tp_repr = parts.text;
    type.tp_str = parts.text;
    type.tp_members = parts.members;
    type.tp_methods = parts.methods;
    return type;
}

} // namespace orbclient
