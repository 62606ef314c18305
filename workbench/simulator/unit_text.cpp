#include "workbench/simulator/unit_text.h"

#include <QLocale>
#include <QStringList>

#include <cmath>

namespace simulator
{

namespace
{

struct Prefix
{
    ushort letter;
    double factor;
};

constexpr ushort MicroSign = 0xB5;
constexpr ushort GreekMu = 0x3BC;
constexpr Prefix Prefixes[] = {{'p', 1e12}, {'n', 1e9}, {'u', 1e6}, {MicroSign, 1e6}, {GreekMu, 1e6},
                               {'m', 1e3},  {'k', 1e3}, {'M', 1e6}, {'G', 1e9}};

// Small prefixes divide: 20 ms is then the same number as 0.02.
bool divides(ushort letter)
{
    return letter != 'k' && letter != 'M' && letter != 'G';
}

bool applyPrefix(const QString &prefix, double &number)
{
    if (prefix.isEmpty())
        return true;
    if (prefix.size() > 1)
        return false;
    for (const Prefix &candidate : Prefixes) {
        if (prefix.at(0).unicode() != candidate.letter)
            continue;
        number = divides(candidate.letter) ? number / candidate.factor : number * candidate.factor;
        return true;
    }
    return false;
}

QStringList spellings(const QString &unit)
{
    constexpr ushort OhmSign = 0x2126;
    constexpr ushort GreekOmega = 0x3A9;
    if (unit != QLatin1String("Ohm"))
        return {unit};
    return {unit, QString(QChar(OhmSign)), QString(QChar(GreekOmega))};
}

int lengthOfNumber(const QString &text)
{
    int length = 0;
    for (; length < text.size(); ++length) {
        const QChar character = text.at(length);
        const bool isSign = character == QLatin1Char('-') || character == QLatin1Char('+');
        const bool isExponent = length > 0 && character.toLower() == QLatin1Char('e')
            && length + 1 < text.size()
            && (text.at(length + 1).isDigit() || text.at(length + 1) == QLatin1Char('-')
                || text.at(length + 1) == QLatin1Char('+'));
        if (!isSign && !isExponent && character != QLatin1Char('.') && !character.isDigit())
            break;
    }
    return length;
}

} // namespace

bool parseWithUnit(const QString &text, const QString &unit, double &number)
{
    const QString trimmed = text.trimmed();
    const int length = lengthOfNumber(trimmed);
    bool isNumber = false;
    double value = QLocale::c().toDouble(trimmed.left(length), &isNumber);
    if (!isNumber)
        return false;
    const QString rest = trimmed.mid(length).trimmed();
    const QStringList units = spellings(unit);
    for (const QString &spelling : units) {
        if (!rest.endsWith(spelling))
            continue;
        const QString prefix = rest.left(rest.size() - spelling.size());
        const bool mayHavePrefix = !spelling.isEmpty() && !spelling.startsWith(QLatin1Char('%'));
        if ((!prefix.isEmpty() && !mayHavePrefix) || !applyPrefix(prefix, value) || !std::isfinite(value))
            continue;
        number = value;
        return true;
    }
    return false;
}

} // namespace simulator
