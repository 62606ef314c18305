#include "orbclient/conversion_shortcuts.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

namespace orbclient
{

namespace
{

// Powers of ten that a double holds exactly.
constexpr std::array<double, 16> PowersOfTen = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

bool isLetter(char letter)
{
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

bool isAscii(std::string_view text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

/// "12", "-12", "12.5": a number whose digits all fit into a double's.
struct PlainNumber
{
    std::int64_t digits = 0; ///< without the point
    std::size_t decimals = 0;
    bool negative = false;
    bool hasPoint = false;

    /// The division is the one rounding, so the result is the double nearest to the number.
    double value() const
    {
        const double magnitude = static_cast<double>(digits) / PowersOfTen[decimals];
        return negative ? -magnitude : magnitude;
    }
};

std::optional<PlainNumber> readPlainNumber(std::string_view text)
{
    constexpr std::size_t MostDigits = 15;
    PlainNumber number;
    if (!text.empty() && text.front() == '-') {
        number.negative = true;
        text.remove_prefix(1);
    }
    // A point stands between digits, and there is one at most.
    if (text.empty() || text.size() > MostDigits + 1 || !isDigit(text.front()) || !isDigit(text.back()))
        return std::nullopt;
    std::size_t count = 0;
    for (const char letter : text) {
        if (letter == '.' && !number.hasPoint) {
            number.hasPoint = true;
            continue;
        }
        if (!isDigit(letter) || ++count > MostDigits)
            return std::nullopt;
        number.digits = number.digits * 10 + (letter - '0');
        number.decimals += number.hasPoint ? 1 : 0;
    }
    return number;
}

PyObject *numberToPython(const PlainNumber &number, Conversion code)
{
    constexpr std::int64_t MostOfInteger = 999999999; // beyond it, Qt decides what still fits into 32 bits
    if (code == Conversion::Integer && !number.hasPoint) {
        if (number.digits > MostOfInteger)
            return nullptr;
        return PyLong_FromLong(static_cast<long>(number.negative ? -number.digits : number.digits));
    }
    return PyFloat_FromDouble(number.value());
}

PyObject *textToPython(std::string_view text)
{
    return PyUnicode_DecodeASCII(text.data(), static_cast<Py_ssize_t>(text.size()), nullptr);
}

/// A text that begins with a letter and can be no number: those that can begin with i ("inf") or n ("nan").
bool isWord(std::string_view text)
{
    return !text.empty() && isLetter(text.front())
        && std::string_view("iInN").find(text.front()) == std::string_view::npos && isAscii(text);
}

/// Whether a word is "true" or "false" in any case, and so more than a text.
bool mayBeTruthValue(std::string_view word)
{
    return word.size() <= 5 && std::string_view("tTfF").find(word.front()) != std::string_view::npos;
}

/// With six significant digits, for magnitudes that need no exponent.
bool appendFloat(ByteText &text, double number)
{
    constexpr double Smallest = 1e-4;
    constexpr double Limit = 1e6;
    constexpr std::int64_t SixDigits = 1000000;
    constexpr double DoubtfulRounding = 1e-6; // far more than the error of the multiplication below

    const double magnitude = std::fabs(number);
    if (!(magnitude >= Smallest && magnitude < Limit))
        return false;
    std::size_t decimals = 0;
    while (decimals < 9 && magnitude * PowersOfTen[decimals] < 1e5)
        ++decimals;
    const double scaled = magnitude * PowersOfTen[decimals];
    const double below = std::floor(scaled);
    const double rest = scaled - below;
    if (std::fabs(rest - 0.5) < DoubtfulRounding)
        return false;
    std::int64_t digits = static_cast<std::int64_t>(below) + (rest > 0.5 ? 1 : 0);
    if (digits >= SixDigits)
        return false;
    for (; decimals > 0 && digits % 10 == 0; --decimals)
        digits /= 10;

    const auto unit = static_cast<std::int64_t>(PowersOfTen[decimals]);
    bool fits = !std::signbit(number) || text.append('-');
    fits = fits && text.append(static_cast<int>(digits / unit));
    if (decimals == 0)
        return fits;
    std::array<char, 10> fraction{};
    std::int64_t remaining = digits % unit;
    for (std::size_t i = decimals; i-- > 0; remaining /= 10)
        fraction.at(i) = static_cast<char>('0' + remaining % 10);
    return fits && text.append('.') && text.append(std::string_view(fraction.data(), decimals));
}

} // namespace

std::optional<std::string_view> plainAscii(PyObject *object)
{
    if (object == nullptr || !PyUnicode_CheckExact(object))
        return std::nullopt;
    // Such a str keeps its bytes, and a NUL after them, right behind its head.
    const auto *string = reinterpret_cast<const PyASCIIObject *>(object);
    if (string->state.compact == 0 || string->state.ascii == 0)
        return std::nullopt;
    const std::string_view bytes(reinterpret_cast<const char *>(string + 1),
                                 static_cast<std::size_t>(string->length));
    return bytes.find('\0') == std::string_view::npos ? std::optional(bytes) : std::nullopt;
}

bool appendValueText(ByteText &text, PyObject *object)
{
    if (object == nullptr)
        return false;
    if (PyLong_Check(object))
        return text.append(toInteger(object));
    if (PyFloat_Check(object))
        return appendFloat(text, PyFloat_AS_DOUBLE(object));
    const std::optional<std::string_view> bytes = plainAscii(object);
    return bytes.has_value() && text.append(*bytes);
}

PyObject *toPythonQuickly(std::string_view text, Conversion code, bool &failed)
{
    PyObject *result = nullptr;
    if (code == Conversion::Text) {
        if (!isAscii(text))
            return nullptr;
        result = textToPython(text);
    } else if (text == "true" || text == "false") {
        result = PyBool_FromLong(text == "true" ? 1 : 0);
    } else if (const std::optional<PlainNumber> number = readPlainNumber(text)) {
        result = numberToPython(*number, code);
    } else if (code != Conversion::Boolean && isWord(text) && !mayBeTruthValue(text)) {
        result = textToPython(text);
    }
    failed = result == nullptr && PyErr_Occurred() != nullptr;
    return result;
}

} // namespace orbclient
