#pragma once

#include <QString>
#include <QStringList>

namespace layering
{

/// A source past this length has a second class hiding in it.
constexpr int maximumLines = 500;

/// One readable line for each house rule that a file breaks: its name, its length, its header guard, the order of its
/// includes, and the words that have no place in it. `path` is relative to the root; `hasOwnHeader` says whether a
/// header of the same name stands beside a source.
QStringList fileViolations(const QString &path, const QString &text, bool hasOwnHeader);

} // namespace layering
