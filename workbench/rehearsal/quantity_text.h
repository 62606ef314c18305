#pragma once

#include <QString>

namespace rehearsal
{

/// With the unit in which it is best read: "1.5 kV" is "1500 V", "250 mV" stays. Five significant digits; "?" for what
/// is no number.
QString voltageText(double volts);
/// "400 µA", "1.25 mA".
QString currentText(double amperes);
/// "12.345 s".
QString timeText(double seconds);

/// The value rounded to nine significant digits, which is how it stands in both reports.
double reported(double value);
/// The text of reported().
QString reportedText(double value);

} // namespace rehearsal
