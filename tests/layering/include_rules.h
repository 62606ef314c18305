#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace layering
{

enum class QtUse
{
    Core,
    Widgets,
    Any
};
enum class Elsewhere
{
    StandardLibrary,
    Any
};

/// What the files below one place in the tree may include, besides files of that same place.
struct IncludeRule
{
    QString place; ///< A folder, or the beginning of a path. The longest one that fits a file is its rule.
    QtUse qt = QtUse::Core;
    Elsewhere elsewhere = Elsewhere::StandardLibrary;
    QStringList project; ///< Folders (with a closing slash) and single files.
};

/// The whole table, lowest folder first: includes point up in it, never down.
const QVector<IncludeRule> &includeRules();

/// The rule of a file, or null when the table does not know its folder. `path` is relative to the root.
const IncludeRule *includeRuleOf(const QString &path);

/// One readable line for each include that the file's rule forbids.
QStringList includeViolations(const QString &path, const QString &text);

} // namespace layering
