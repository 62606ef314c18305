#pragma once

#include "hostclient/tarn_item.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace orbclient
{

/// The text in a field of a TarnItem: it ends with a NUL, or with the field when it fills it.
template <std::size_t Size>
std::string_view fieldText(const char (&field)[Size])
{
    return {field, ::strnlen(field, Size)};
}

/// Whether the read produced an item.
inline bool isValid(const TarnItem &item)
{
    return item.path[0] != '\0';
}

} // namespace orbclient
