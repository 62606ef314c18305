#pragma once

#include "hostclient/host_export.h"

#include <QString>

class KdPluginConfiguration;

/// The host's configuration tree as a JSON file.
///
/// A node is an object with "name", "value", "default", "saved", "visible" and "children"; what is at its default is
/// left out. A value is a JSON bool, string or array of strings, or an object that says what it is: {"int": 5},
/// {"int64": "5"}, {"uint": 5}, {"uint64": "5"}, {"double": 0.5} (a text where JSON has no number: "nan", "inf",
/// "-inf") or {"base64": "AAE="}. A value of any other type is written as its text, or left out when it has none.
///
/// Both functions are for any thread, one file by one thread at a time. They return false and set `error`, which may
/// be null, to a text for the operator.
namespace hostkit
{

/// Nodes may be nested this deep below the root; more is refused on both ways.
constexpr int MaximumConfigurationDepth = 64;

/// A file larger than this many bytes is not a configuration.
constexpr qint64 MaximumConfigurationSize = 64 * 1024 * 1024;

/// Writes the tree to the file, whose folder is made when it is missing. The old file stays as it is until the new
/// one is complete.
HOST_EXPORT bool saveConfiguration(const KdPluginConfiguration &tree, const QString &path, QString *error);

/// Reads the file into `tree`, which is left alone on failure. A file that is not such a tree is refused with a text
/// that says where; a field of the wrong type is skipped.
HOST_EXPORT bool loadConfiguration(KdPluginConfiguration &tree, const QString &path, QString *error);

} // namespace hostkit
