#pragma once

#include "workbench/app/options.h"
#include "workbench/rehearsal/limit.h"
#include "workbench/simulator/plant_layout.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

namespace workbench
{

/// A file to be rehearsed. Plain data.
struct RehearsalFile
{
    QString name; ///< as it was given
    QString text;
    bool isScript = false; ///< Python, by its suffix
    int foreignLine = 0; ///< as in TextFile
};

/// What the command line asks a rehearsal to do. Plain data.
struct RehearseOptions
{
    enum class Format
    {
        Text,
        Json,
    };

    std::vector<RehearsalFile> files; ///< one or more, read
    QString controller; ///< connection name or display text; empty for the plant's first
    QString plantFile; ///< empty for the built-in plant
    simulator::PlantLayout plant; ///< with seed and faults as they were asked for
    QVector<rehearsal::Limit> limits;
    QString reportDir; ///< made; empty for no report
    Format format = Format::Text;
    double settleTime = 10; ///< s, for which ramps are watched after the last file
    QString pluginFile; ///< plug-in to load; empty searches the usual places
};

/// Reads the command line, and every file that it names; `arguments` begin behind the word "rehearse". `message` is
/// what to print unless the result is Run.
OptionsResult parseRehearseOptions(const QStringList &arguments, RehearseOptions &options, QString &message);

} // namespace workbench
