// Items of any bytes, turned into Python objects.

#include "hostclient/tarn_item.h"
#include "orbclient/conversion_shortcuts.h"
#include "orbclient/py_ref.h"
#include "orbclient/tarn_item_text.h"
#include "orbclient/value_conversion.h"
#include "tests/fuzz/fuzz_require.h"
#include "tests/support/python_interpreter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

using namespace orbclient;

namespace
{

bool areAlike(PyObject *a, PyObject *b)
{
    if (Py_TYPE(a) != Py_TYPE(b))
        return false;
    if (PyFloat_Check(a)) {
        const double first = PyFloat_AS_DOUBLE(a);
        const double second = PyFloat_AS_DOUBLE(b);
        return std::memcmp(&first, &second, sizeof(first)) == 0;
    }
    return PyObject_RichCompareBool(a, b, Py_EQ) == 1;
}

void readWith(const TarnItem &item, Conversion code)
{
    const PyRef value(toPython(item, code));
    const bool known = value
        && (PyFloat_CheckExact(value.get()) || PyLong_CheckExact(value.get()) || PyBool_Check(value.get())
            || PyUnicode_CheckExact(value.get()));
    require(known, "a read gives a float, an int, a bool or a str");
    require(isValid(item) || PyUnicode_CompareWithASCIIString(value.get(), "error") == 0,
            "a failed read gives \"error\"");

    const PyRef pair(toPythonPair(item, code));
    require(pair && PyList_CheckExact(pair.get()) && PyList_GET_SIZE(pair.get()) == 2,
            "a pair has two elements");
    require(PyFloat_CheckExact(PyList_GET_ITEM(pair.get(), 0)), "a timestamp is a float");
    require(areAlike(PyList_GET_ITEM(pair.get(), 1), value.get()), "a pair holds what the plain read gives");

    bool failed = false;
    const PyRef quick(toPythonQuickly(fieldText(item.value), code, failed));
    require(!failed && PyErr_Occurred() == nullptr, "no exception is left behind");
    require(!quick || !isValid(item) || areAlike(quick.get(), value.get()),
            "the quick conversion gives what the general one gives");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const PythonInterpreter interpreter;
    TarnItem item{};
    // The first bytes of an input are the value: that is what most of the work is about.
    std::array<char, sizeof(TarnItem)> bytes{};
    std::copy_n(data, std::min(size, bytes.size()), bytes.begin());
    std::memcpy(item.value, bytes.data(), sizeof(item.value));
    std::memcpy(item.timestamp, bytes.data() + sizeof(item.value), sizeof(item.timestamp));
    constexpr std::size_t Named = sizeof(item.value) + sizeof(item.timestamp);
    std::memcpy(item.path, bytes.data() + Named, sizeof(item.path));
    if (size <= Named)
        item.path[0] = 'p';
    for (const int code : {0, 1, 2, 3, 4, 5, -1})
        readWith(item, static_cast<Conversion>(code));
    return 0;
}
