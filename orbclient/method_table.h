#pragma once

#include "orbclient/python_include.h"
#include "orbclient/value_conversion.h"

#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// A method of an object type is one row of a table: what it is called, which item it reads or writes, how, and what it
// says of itself.

namespace orbclient
{

/// What a method does.
enum class MethodKind
{
    Get, ///< reads an item; no arguments
    GetWithTimestamp, ///< reads an item; no arguments; gives a list of timestamp and value
    Set, ///< writes an item; one argument of any type
    Call, ///< something of its own, with an argument tuple
};

/// One method of an object type.
struct Method
{
    const char *name;
    MethodKind kind;
    const char *item; ///< name of the item; null when `definition` gives it, and for Call
    QString (*definition)(); ///< the client library's name for the item; null when `item` gives it
    Conversion conversion; ///< of a getter
    PyCFunction function; ///< of a Call
    const char *signature; ///< of a Call: parameters and result as a stub file writes them, "(self) -> str"
    const char *docstring;
};

/// The rows of an object type, in the order in which the type lists its methods.
struct MethodRows
{
    const Method *first = nullptr;
    std::size_t count = 0;

    const Method *begin() const { return first; }
    const Method *end() const { return first + count; }
};

constexpr Method get(const char *name, const char *item, Conversion conversion, const char *docstring)
{
    return {name, MethodKind::Get, item, nullptr, conversion, nullptr, nullptr, docstring};
}

constexpr Method get(const char *name, QString (*definition)(), Conversion conversion, const char *docstring)
{
    return {name, MethodKind::Get, nullptr, definition, conversion, nullptr, nullptr, docstring};
}

constexpr Method getWithTimestamp(const char *name, const char *item, Conversion conversion,
                                  const char *docstring)
{
    return {name, MethodKind::GetWithTimestamp, item, nullptr, conversion, nullptr, nullptr, docstring};
}

constexpr Method set(const char *name, const char *item, const char *docstring)
{
    return {name, MethodKind::Set, item, nullptr, Conversion::Automatic, nullptr, nullptr, docstring};
}

constexpr Method call(const char *name, PyCFunction function, const char *signature, const char *docstring)
{
    return {name, MethodKind::Call, nullptr, nullptr, Conversion::Automatic, function, signature, docstring};
}

/// 64-bit FNV-1a: comparing the names themselves, each with each, runs into a compiler's step limit.
constexpr std::uint64_t nameHash(std::string_view name)
{
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char letter : name)
        hash = (hash ^ static_cast<unsigned char>(letter)) * 0x100000001b3U;
    return hash;
}

template <std::size_t Count>
constexpr bool namesAreDistinct(const std::array<Method, Count> &table)
{
    std::array<std::uint64_t, Count> hashes{};
    for (std::size_t i = 0; i < Count; ++i) {
        hashes[i] = nameHash(table[i].name);
        for (std::size_t j = 0; j < i; ++j) {
            if (hashes[j] == hashes[i])
                return false;
        }
    }
    return true;
}

/// Whether each row has what its kind needs: an item or a function, and never both.
template <std::size_t Count>
constexpr bool rowsAreComplete(const std::array<Method, Count> &table)
{
    for (const Method &row : table) {
        const bool namesItem = (row.item != nullptr) != (row.definition != nullptr);
        const bool calls = row.function != nullptr && row.signature != nullptr;
        if ((row.kind == MethodKind::Call) ? (namesItem || !calls) : (!namesItem || row.function != nullptr))
            return false;
        if (row.name == nullptr || row.docstring == nullptr)
            return false;
    }
    return true;
}

} // namespace orbclient
