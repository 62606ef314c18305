#include "workbench/rehearsal/limit.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace rehearsal
{

namespace
{

constexpr double Inexactness = 1e-6;
constexpr double Least = 1e-12; // V or A: what is less is nothing

struct Unit
{
    const char *name;
    Quantity quantity;
    double factor;
};

constexpr Unit Units[] = {
    {"V", Quantity::Voltage, 1},
    {"kV", Quantity::Voltage, 1e3},
    {"mV", Quantity::Voltage, 1e-3},
    {"A", Quantity::Current, 1},
    {"mA", Quantity::Current, 1e-3},
    {"uA", Quantity::Current, 1e-6},
    {"\xc2\xb5"
     "A",
     Quantity::Current, 1e-6}, // micro sign
    {"\xce\xbc"
     "A",
     Quantity::Current, 1e-6}, // Greek letter
    {"nA", Quantity::Current, 1e-9},
};

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::Limit", text);
}

QString allowed()
{
    return tr("A limit reads 'line.module.channel.voltage<=1500 V' or '*.current<=2 mA'; \"*\" stands for "
              "any line, "
              "module or channel, alone for any channel; 'controller/' may stand before it.");
}

bool refuse(const QString &text, const QString &reason, QString &error)
{
    error = tr("The limit \"%1\" %2. %3").arg(text, reason, allowed());
    return false;
}

bool parsePart(const QString &text, int &part)
{
    constexpr int MostDigits = 6;
    if (text == QLatin1String("*")) {
        part = Limit::Any;
        return true;
    }
    const auto isDigit = [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    };
    if (text.isEmpty() || text.size() > MostDigits || !std::all_of(text.begin(), text.end(), isDigit))
        return false;
    part = text.toInt();
    return true;
}

bool parsePattern(const QString &pattern, Limit &limit, QString &reason)
{
    const int slash = pattern.lastIndexOf(QLatin1Char('/'));
    if (slash == 0) {
        reason = tr("has no controller before \"/\"");
        return false;
    }
    limit.controller = pattern.left(qMax(slash, 0)).trimmed();
    QStringList parts = pattern.mid(slash + 1).trimmed().split(QLatin1Char('.'));
    const QString quantity = parts.takeLast();
    if (quantity == quantityName(Quantity::Voltage)) {
        limit.quantity = Quantity::Voltage;
    } else if (quantity == quantityName(Quantity::Current)) {
        limit.quantity = Quantity::Current;
    } else {
        reason = tr("is for \"%1\", which is neither \"voltage\" nor \"current\"").arg(quantity);
        return false;
    }
    if (parts.size() == 1 && parts.constFirst() == QLatin1String("*"))
        return true;
    constexpr int PlaceParts = 3;
    if (parts.size() == PlaceParts && parsePart(parts.at(0), limit.line)
        && parsePart(parts.at(1), limit.module) && parsePart(parts.at(2), limit.channel))
        return true;
    reason = tr("has the place \"%1\", which is no channel's").arg(parts.join(QLatin1Char('.')));
    return false;
}

bool parseValue(const QString &text, Limit &limit, QString &reason)
{
    static const QRegularExpression form(
        QStringLiteral("^([0-9]+(?:\\.[0-9]*)?(?:[eE][-+]?[0-9]+)?)\\s*([^\\s0-9]+)$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch()) {
        reason = tr("has the value \"%1\", which is not a number with a unit").arg(text);
        return false;
    }
    const QString name = match.captured(2);
    const auto *const unit = std::find_if(std::begin(Units), std::end(Units), [&](const Unit &known) {
        return known.quantity == limit.quantity && name == QString::fromUtf8(known.name);
    });
    if (unit == std::end(Units)) {
        reason = limit.quantity == Quantity::Voltage
            ? tr("has the unit \"%1\"; a voltage has V, kV or mV").arg(name)
            : tr("has the unit \"%1\"; a current has A, mA, uA or nA").arg(name);
        return false;
    }
    limit.value = match.captured(1).toDouble() * unit->factor;
    if (std::isfinite(limit.value))
        return true;
    reason = tr("has a value that is too large");
    return false;
}

bool isIn(int part, quint32 index)
{
    return part == Limit::Any || static_cast<quint32>(part) == index;
}

bool matchesText(const QString &pattern, const QString &text)
{
    // Only the asterisk is special.
    const QStringList pieces = pattern.split(QLatin1Char('*'));
    QStringList escaped;
    for (const QString &piece : pieces)
        escaped << QRegularExpression::escape(piece);
    const QRegularExpression expression(
        QRegularExpression::anchoredPattern(escaped.join(QStringLiteral(".*"))),
        QRegularExpression::DotMatchesEverythingOption);
    return expression.match(text).hasMatch();
}

} // namespace

QString quantityName(Quantity quantity)
{
    return quantity == Quantity::Voltage ? QStringLiteral("voltage") : QStringLiteral("current");
}

bool Limit::holdsFor(const QString &connectionName, const QString &displayText,
                     const simulator::ObjectAddress &address) const
{
    return address.level == OrbItemId::Channel && isIn(line, address.line) && isIn(module, address.address)
        && isIn(channel, static_cast<quint32>(address.channel))
        && (controller.isEmpty() || matchesText(controller, connectionName)
            || matchesText(controller, displayText));
}

bool Limit::holdsIn(const simulator::PlantLayout &plant) const
{
    for (const simulator::ControllerLayout &candidate : plant.controllers) {
        for (const simulator::LineLayout &row : candidate.lines) {
            const auto isHere = [&](const simulator::ModuleLayout &layout) {
                simulator::ObjectAddress place;
                place.level = OrbItemId::Channel;
                place.line = row.line;
                place.address = layout.address;
                place.channel = channel == Any ? 0 : channel;
                return static_cast<std::size_t>(place.channel) < layout.loads.size()
                    && holdsFor(candidate.connectionName, candidate.displayText, place);
            };
            if (std::any_of(row.modules.begin(), row.modules.end(), isHere))
                return true;
            for (const simulator::CrateLayout &crate : row.crates) {
                if (std::any_of(crate.modules.begin(), crate.modules.end(), isHere))
                    return true;
            }
        }
    }
    return false;
}

bool Limit::isCrossedBy(double measured) const
{
    return std::abs(measured) > value * (1 + Inexactness) + Least;
}

bool parseLimit(const QString &text, Limit &limit, QString &error)
{
    limit = {};
    limit.text = text.trimmed();
    const QString sign = QStringLiteral("<=");
    const int place = limit.text.indexOf(sign);
    QString reason;
    if (place < 0)
        return refuse(limit.text, tr("has no \"<=\""), error);
    if (!parsePattern(limit.text.left(place).trimmed(), limit, reason)
        || !parseValue(limit.text.mid(place + sign.size()).trimmed(), limit, reason))
        return refuse(limit.text, reason, error);
    return true;
}

} // namespace rehearsal
