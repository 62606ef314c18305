#pragma once

#include <QString>

namespace simulator
{

/// Reads a number with its unit as people write it: "1.5 kV", "20ms", "10 %/s". The unit may have one of the prefixes
/// p, n, u, µ, m, k, M and G, unless it begins with a "%"; "Ohm" may be written "Ω". False when the text is something
/// else, or without its unit; an empty unit takes a number alone. Finite.
bool parseWithUnit(const QString &text, const QString &unit, double &number);

} // namespace simulator
