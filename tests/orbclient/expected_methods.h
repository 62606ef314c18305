#pragma once

#include <QVector>

/// What a method of an object type does.
enum class MethodUse
{
    Get,
    GetWithTimestamp,
    Set,
    Call, ///< something of its own
};

/// What a getter makes of an item's text.
enum class Reading
{
    None, ///< the method is no getter
    Automatic,
    Integer,
    FloatingPoint,
    Boolean,
    Text,
};

/// One method as scripts rely on it.
struct ExpectedMethod
{
    const char *name;
    MethodUse use;
    const char *item; ///< null for MethodUse::Call
    Reading reading;
    const char *docstring;

    bool isGetter() const { return use == MethodUse::Get || use == MethodUse::GetWithTimestamp; }
};

// What each type has, in its order. Kept by hand and apart from the product's own tables, so that a slip there shows.

QVector<ExpectedMethod> expectedConnectionMethods();
QVector<ExpectedMethod> expectedCrateMethods();
QVector<ExpectedMethod> expectedModuleMethods();
QVector<ExpectedMethod> expectedChannelMethods();

// How a row of these lists is written.

constexpr ExpectedMethod get(const char *name, const char *item, Reading reading, const char *docstring)
{
    return {name, MethodUse::Get, item, reading, docstring};
}

constexpr ExpectedMethod getWithTimestamp(const char *name, const char *item, Reading reading,
                                          const char *docstring)
{
    return {name, MethodUse::GetWithTimestamp, item, reading, docstring};
}

constexpr ExpectedMethod set(const char *name, const char *item, const char *docstring)
{
    return {name, MethodUse::Set, item, Reading::None, docstring};
}

constexpr ExpectedMethod call(const char *name, const char *docstring)
{
    return {name, MethodUse::Call, nullptr, Reading::None, docstring};
}
