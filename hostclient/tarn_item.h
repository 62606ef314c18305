#pragma once

#include <cstddef>

/// What OrbClient::getItem returns: a plain record of fixed size, copied whole.
///
/// All texts are 8-bit and end with a NUL when they are shorter than their field; a text that fills its field has
/// none, so read them with a bound. Chosen by our kit: what stands in `path`, `unit` and `type`, and that
/// `timestamp` counts seconds since 1970-01-01 UTC with a fraction of milliseconds.
struct TarnItem
{
    char path[128]; ///< full path of the item read; an empty text means that the read failed
    char value[128]; ///< the value: "true", "false", a decimal number or a text
    char unit[64]; ///< unit of the value ("V", "A", "%/s"); empty for a plain number
    char type[37]; ///< kind of value: "bool", "int", "float" or "string"
    char timestamp[25]; ///< when the value was taken, as the text of a decimal number
};

static_assert(sizeof(TarnItem) == 382, "the record crosses the library's border by value");
static_assert(offsetof(TarnItem, value) == 128 && offsetof(TarnItem, timestamp) == 357,
              "the texts stand at fixed bytes");
