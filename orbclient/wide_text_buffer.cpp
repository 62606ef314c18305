#include "orbclient/wide_text_buffer.h"

#include <limits>
#include <new>

namespace orbclient
{

WideTextBuffer &WideTextBuffer::instance()
{
    static WideTextBuffer buffer;
    return buffer;
}

QString WideTextBuffer::textOf(PyObject *string)
{
    constexpr std::size_t Reserve = 10;
    constexpr Py_ssize_t Longest = std::numeric_limits<int>::max() / 4; // more does not fit into a QString
    const Py_ssize_t length = PyUnicode_GetLength(string);
    if (length < 0 || length > Longest) {
        PyErr_Clear();
        return {};
    }
    const std::size_t needed = static_cast<std::size_t>(length) + Reserve;
    if (needed >= size) {
        storage.reset();
        size = 0;
        storage.reset(new (std::nothrow) wchar_t[needed]);
        if (!storage)
            return {};
        size = needed;
    }
    const Py_ssize_t copied = PyUnicode_AsWideChar(string, storage.get(), static_cast<Py_ssize_t>(needed));
    if (copied < 0) {
        PyErr_Clear();
        return {};
    }
    return QString::fromWCharArray(storage.get(), static_cast<int>(copied));
}

} // namespace orbclient
