#pragma once

#include "tests/orbclient/expected_methods.h"

#include <QString>

#include <array>

/// A value text and what the five ways of reading make of it, as repr() shows it.
struct ReadText
{
    const char *text;
    const char *automatic;
    const char *integer;
    const char *floatingPoint;
    const char *boolean;
    const char *asText;

    QString expected(Reading reading) const
    {
        switch (reading) {
        case Reading::Automatic:
            return QString::fromLatin1(automatic);
        case Reading::Integer:
            return QString::fromLatin1(integer);
        case Reading::FloatingPoint:
            return QString::fromLatin1(floatingPoint);
        case Reading::Boolean:
            return QString::fromLatin1(boolean);
        case Reading::Text:
            return QString::fromLatin1(asText);
        case Reading::None:
            break;
        }
        return QStringLiteral("no getter");
    }
};

inline constexpr std::array<ReadText, 11> ReadTexts{{
    {"5", "5.0", "5", "5.0", "5.0", "'5'"},
    {"-12", "-12.0", "-12", "-12.0", "-12.0", "'-12'"},
    {"1", "1.0", "1", "1.0", "1.0", "'1'"},
    {"5.5", "5.5", "5.5", "5.5", "5.5", "'5.5'"},
    {"true", "True", "True", "True", "True", "'true'"},
    {"TRUE", "True", "True", "True", "True", "'TRUE'"},
    {"False", "False", "False", "False", "False", "'False'"},
    {"abc", "'abc'", "'abc'", "'abc'", "'abc'", "'abc'"},
    {"ABC", "'ABC'", "'ABC'", "'ABC'", "'abc'", "'ABC'"},
    {"on", "'on'", "'on'", "'on'", "'on'", "'on'"},
    {"", "''", "''", "''", "False", "''"},
}};

/// An expression, and the text that a setter sends for its value.
struct SentText
{
    const char *expression;
    const char *text;
};

inline constexpr std::array<SentText, 21> SentTexts{{
    {"1", "1"},
    {"-70000", "-70000"},
    {"2**32 + 5", "5"},
    {"True", "1"},
    {"False", "0"},
    {"0.1", "0.1"},
    {"2.5", "2.5"},
    {"1e7", "1e+07"},
    {"1234567.0", "1.23457e+06"},
    {"'on'", "on"},
    {"''", ""},
    {"None", ""},
    {"(1, 2)", ""},
    {"b'on'", ""},
    {"[1, 2]", "[1, 2, ]"},
    {"[]", "[]"},
    {"{'a': 1}", "[ a=1 ]"},
    {"{'a': 1, 'b': 2.5}", "[ a=1  b=2.5 ]"},
    {"[1, [True, 'x'], {'k': None}]", "[1, [1, x, ], [ k= ], ]"},
    {"x", ""},
    {"y", ""},
}};
