#include "workbench/simulator/item_text.h"

namespace simulator
{

namespace
{

struct UnitPrefix
{
    char letter;
    double factor;
};

constexpr UnitPrefix UnitPrefixes[] = {{'n', 1e-9}, {'u', 1e-6}, {'m', 1e-3}, {'k', 1e3}, {'M', 1e6}};

// The factor from the unit that was given to the item's; 0 when they do not belong together.
double unitFactor(const ItemDefinition &item, const QString &unit)
{
    const QString itemUnit = QString::fromUtf8(item.unit);
    if (unit.isEmpty() || unit == itemUnit)
        return 1;
    if (item.kind != ItemKind::Float || itemUnit.isEmpty() || unit.size() != itemUnit.size() + 1
        || !unit.endsWith(itemUnit))
        return 0;
    for (const UnitPrefix &prefix : UnitPrefixes) {
        if (unit.at(0) == QLatin1Char(prefix.letter))
            return prefix.factor;
    }
    return 0;
}

bool parseBool(const QString &text, double &number)
{
    const bool isTrue =
        text == QLatin1String("1") || text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
    const bool isFalse =
        text == QLatin1String("0") || text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0;
    number = isTrue ? 1 : 0;
    return isTrue || isFalse;
}

bool parseNumber(ItemKind kind, const QString &text, double &number)
{
    bool ok = false;
    if (kind == ItemKind::Int)
        number = static_cast<double>(text.toLongLong(&ok));
    else
        number = text.toDouble(&ok);
    return ok; // what is no finite number is outside of every range
}

} // namespace

QString kindName(ItemKind kind)
{
    switch (kind) {
    case ItemKind::Bool:
        return QStringLiteral("bool");
    case ItemKind::Int:
        return QStringLiteral("int");
    case ItemKind::Float:
        return QStringLiteral("float");
    case ItemKind::String:
        break;
    }
    return QStringLiteral("string");
}

QString itemWords(const QString &itemName)
{
    QString words;
    const QString name = itemName.mid(itemName.indexOf(QLatin1Char('.')) + 1);
    for (const QChar letter : name) {
        if (letter.isUpper())
            words += QLatin1Char(' ');
        words += letter.toLower();
    }
    return words;
}

QString formatValue(const ItemDefinition &item, const ItemValue &value)
{
    switch (item.kind) {
    case ItemKind::Bool:
        return value.isTrue() ? QStringLiteral("true") : QStringLiteral("false");
    case ItemKind::Int:
        return QString::number(static_cast<qint64>(value.number));
    case ItemKind::Float: {
        constexpr int SignificantDigits = 9;
        return QString::number(value.number, 'g', SignificantDigits);
    }
    case ItemKind::String:
        break;
    }
    return value.text;
}

bool parseValue(const ItemDefinition &item, const QString &text, const QString &unit, ItemValue &value)
{
    const double factor = unitFactor(item, unit.trimmed());
    if (factor == 0)
        return false;
    if (item.kind == ItemKind::String) {
        value = ItemValue::of(text);
        return true;
    }
    double number = 0;
    const QString trimmed = text.trimmed();
    if (item.kind == ItemKind::Bool) {
        if (!parseBool(trimmed, number))
            return false;
    } else if (!parseNumber(item.kind, trimmed, number)) {
        return false;
    }
    number *= factor;
    value = ItemValue::of(number);
    return number >= item.range.minimum && number <= item.range.maximum;
}

} // namespace simulator
