#pragma once

#include "orbclient/python_include.h"

#include <utility>

/// Owns one reference to a Python object, or none. Made, used and destroyed with the interpreter lock held.
class PyRef
{
public:
    PyRef() = default;
    /// Takes over a reference that the caller owns; null is allowed and means that there is no object.
    explicit PyRef(PyObject *owned) : object(owned) { }
    PyRef(PyRef &&other) noexcept : object(std::exchange(other.object, nullptr)) { }
    PyRef &operator=(PyRef &&other) noexcept
    {
        std::swap(object, other.object);
        return *this;
    }
    PyRef(const PyRef &) = delete;
    PyRef &operator=(const PyRef &) = delete;
    ~PyRef() { Py_XDECREF(object); }

    /// A reference of its own to an object that somebody else keeps.
    static PyRef to(PyObject *borrowed)
    {
        Py_XINCREF(borrowed);
        return PyRef(borrowed);
    }

    PyObject *get() const { return object; }
    explicit operator bool() const { return object != nullptr; }
    /// Hands the reference to the caller.
    [[nodiscard]] PyObject *release() { return std::exchange(object, nullptr); }

private:
    PyObject *object = nullptr;
};
