#pragma once

#include <QString>

namespace simulator
{

/// Value of an item: a number (0 and 1 for a bool) or, for an item of kind string, a text.
struct ItemValue
{
    double number = 0;
    QString text;

    static ItemValue of(double value) { return {value, {}}; }
    static ItemValue of(bool value) { return {value ? 1.0 : 0.0, {}}; }
    static ItemValue of(const QString &value) { return {0, value}; }

    bool isTrue() const { return number != 0; }
};

} // namespace simulator
