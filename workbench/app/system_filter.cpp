#include "workbench/app/system_filter.h"

#include "hostclient/orb_item_id.h"
#include "workbench/simulator/object_address.h"

#include <algorithm>

namespace workbench
{

namespace
{

/// Whether one of the text's words begins with the term.
bool hasWord(const QString &text, const QString &term)
{
    int at = text.indexOf(term, 0, Qt::CaseInsensitive);
    while (at > 0 && !text.at(at - 1).isSpace())
        at = text.indexOf(term, at + 1, Qt::CaseInsensitive);
    return at >= 0;
}

bool isInSomeState(const QString &term)
{
    for (auto state = static_cast<int>(SystemState::Unknown); state <= static_cast<int>(SystemState::Error);
         ++state) {
        if (hasWord(stateText(static_cast<SystemState>(state)), term))
            return true;
    }
    return false;
}

} // namespace

SystemFilter::SystemFilter(const QString &text)
    : terms(text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts))
{
    hasStateTerm = std::any_of(terms.cbegin(), terms.cend(), isInSomeState);
}

bool SystemFilter::matches(const OrbItemId &id, const QString &name, SystemState state) const
{
    return std::all_of(terms.cbegin(), terms.cend(), [&](const QString &term) {
        if (term.contains(QLatin1Char('.'))
            && simulator::addressText({id.type, id.line, id.address, id.channel}).startsWith(term))
            return true;
        return hasWord(name, term) || hasWord(stateText(state), term);
    });
}

} // namespace workbench
