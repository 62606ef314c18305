#pragma once

#include "orbclient/python_include.h"

#include <QString>
#include <QVariant>

struct TarnItem;

// How the hardware's texts become Python objects and back, for every method of every object type alike.
//
// Everything here is called on the interpreter's thread with the interpreter lock held. A `PyObject *` result is a new
// reference; it is null, with a MemoryError set, only when memory is exhausted. Arguments are borrowed. No exception
// is left behind by anything that does not return an object.

namespace orbclient
{

/// What a getter makes of an item's text. The numbers are part of the interface; any other number is Automatic.
enum class Conversion : int
{
    Automatic = 0, ///< float, int, bool or str, whatever the text can be read as first
    Integer = 1, ///< int of 32 bits; else as Automatic
    FloatingPoint = 2, ///< float; else as Automatic
    Boolean = 3, ///< bool from "true", "false" and the empty text; else as Automatic, in lower case
    Text = 4, ///< str, as received
};

/// The value of an item that was read; "error" when the read failed (the record's first text is empty).
PyObject *toPython(const TarnItem &item, Conversion code);

/// A list of the item's timestamp (float, seconds; NaN when there is none) and what toPython makes of the item.
PyObject *toPythonPair(const TarnItem &item, Conversion code);

/// A text as Python's str. It passes through the system's 8-bit encoding, as every text of the client library does.
PyObject *toPythonText(const QString &text);

/// The text that is sent for a value: numbers in decimal, a float with six significant digits, str as it is,
/// containers spelled out, and an empty text for null and for every other object, our own object types among them.
/// An int is taken as a 32-bit signed integer: of a larger one its lower 32 bits. A container that is nested deeper
/// than Python's recursion limit, or holds itself, gives the empty text as a whole.
QString toValueText(PyObject *object);

/// An int as a 32-bit signed integer (of a larger one its lower 32 bits), a float truncated towards zero; -1 for null,
/// for every other object and for a float that no 32-bit integer can hold.
int toInteger(PyObject *object);

/// A value to send in a pass-through message: a 32-bit int, a double, or the value text; invalid for null.
QVariant toVariant(PyObject *object);

} // namespace orbclient
