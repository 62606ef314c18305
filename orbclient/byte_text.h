#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace orbclient
{

/// A short text of single bytes that is put together without asking for memory. What does not fit is not appended.
class ByteText
{
public:
    /// Enough for the path of an item, whatever its numbers.
    static constexpr std::size_t Capacity = 127;

    bool append(std::string_view text)
    {
        if (text.size() > bytes.size() - 1 - length)
            return false;
        std::memcpy(bytes.data() + length, text.data(), text.size());
        length += text.size();
        return true;
    }

    bool append(char letter) { return append(std::string_view(&letter, 1)); }

    /// In decimal.
    bool append(int number)
    {
        const std::to_chars_result end =
            std::to_chars(bytes.data() + length, bytes.data() + bytes.size() - 1, number);
        if (end.ec != std::errc())
            return false;
        length = static_cast<std::size_t>(end.ptr - bytes.data());
        return true;
    }

    /// The text with a NUL behind it, good until something is appended.
    const char *terminated()
    {
        bytes.at(length) = '\0';
        return bytes.data();
    }

private:
    std::array<char, Capacity + 1> bytes{};
    std::size_t length = 0;
};

} // namespace orbclient
