#include "workbench/rehearsal/quantity_text.h"

#include <cmath>

namespace rehearsal
{

namespace
{

constexpr int ShownDigits = 5;
constexpr int ReportedDigits = 9;
constexpr double Least = 1e-15; // what is smaller is nothing

QString digits(double value)
{
    // Never as a power of ten: these texts are read by people.
    const double size = std::abs(value);
    const int before = size < 1 ? 1 : static_cast<int>(std::floor(std::log10(size))) + 1;
    QString text = QString::number(value, 'f', qMax(0, ShownDigits - before));
    if (!text.contains(QLatin1Char('.')))
        return text;
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

} // namespace

QString voltageText(double volts)
{
    if (!std::isfinite(volts))
        return QStringLiteral("?");
    const double size = std::abs(volts);
    if (size >= 1 || size < 1e-6)
        return digits(volts) + QStringLiteral(" V");
    return digits(volts * 1e3) + QStringLiteral(" mV");
}

QString currentText(double amperes)
{
    if (!std::isfinite(amperes))
        return QStringLiteral("?");
    const double size = std::abs(amperes);
    if (size < Least)
        return QStringLiteral("0 A");
    if (size >= 1)
        return digits(amperes) + QStringLiteral(" A");
    if (size >= 1e-3)
        return digits(amperes * 1e3) + QStringLiteral(" mA");
    if (size >= 1e-6)
        return digits(amperes * 1e6) + QStringLiteral(" µA");
    return digits(amperes * 1e9) + QStringLiteral(" nA");
}

QString timeText(double seconds)
{
    constexpr int Milliseconds = 3;
    return std::isfinite(seconds) ? QString::number(seconds, 'f', Milliseconds) + QStringLiteral(" s")
                                  : QStringLiteral("?");
}

double reported(double value)
{
    return reportedText(value).toDouble();
}

QString reportedText(double value)
{
    return QString::number(value, 'g', ReportedDigits);
}

} // namespace rehearsal
