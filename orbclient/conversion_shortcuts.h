#pragma once

#include "orbclient/byte_text.h"
#include "orbclient/python_include.h"
#include "orbclient/value_conversion.h"

#include <optional>
#include <string_view>

// The conversions of value_conversion.h for what is met most of the time, by way of bytes instead of QStrings, at a
// third of the cost. Each gives what the general conversion gives, to the bit, or declines; a test compares the two.
//
// Called with the interpreter lock held. None raises an exception, except a MemoryError from toPythonQuickly.

namespace orbclient
{

/// The bytes of a str that is plain ASCII and holds no NUL, with a NUL behind them, good as long as the object; nothing
/// for everything else.
std::optional<std::string_view> plainAscii(PyObject *object);

/// Appends the value text of an int, of a float with up to six digits before its point, or of a short ASCII str. False
/// for everything else; the text may then have got a part of it.
bool appendValueText(ByteText &text, PyObject *object);

/// Reads an item's text as toPython does. Declines with null and no exception; `failed` says whether null is a failure
/// with an exception instead.
PyObject *toPythonQuickly(std::string_view text, Conversion code, bool &failed);

} // namespace orbclient
