#pragma once

#include "workbench/app/system_state.h"

#include <QString>
#include <QStringList>

class OrbItemId;

namespace workbench
{

/// What an operator looks for in the system: terms separated by blanks, all of which an object has to have. A term
/// with a point in it is the beginning of an address ("0.3.7"); any other term is the beginning of a word of the
/// object's name or state ("crate", "trip"). Case does not matter. Plain data.
class SystemFilter
{
public:
    SystemFilter() = default;
    explicit SystemFilter(const QString &text);

    bool isEmpty() const { return terms.isEmpty(); }

    /// Whether the state of an object may decide: without it no state has to be read.
    bool asksForState() const { return hasStateTerm; }

    bool matches(const OrbItemId &id, const QString &name, SystemState state) const;

private:
    QStringList terms;
    bool hasStateTerm = false;
};

} // namespace workbench
