#pragma once

#include "workbench/simulator/plant_layout.h"

#include <QString>
#include <QStringList>

namespace workbench
{

/// What the command line asks for.
struct Options
{
    QString pluginFile; ///< plug-in to load; empty searches the usual places
    QString configDir; ///< folder of layout and settings; empty for the user's own
    QString commandFile; ///< command file to execute after start-up; empty for none
    QString controller; ///< controller that the file's requests go to; empty for the first
    QString pythonFile; ///< Python file to execute after start-up; empty for none
    QString editorFile; ///< file to show in the editor; empty for none
    QString screenshotFile; ///< where to save a picture of the window; empty for none
    bool quitWhenDone = false; ///< end the program once file and picture are done: nobody is there
    int latency = -1; ///< answering time of the simulated service in ms, 0 to 60000; -1 for its own
    simulator::PlantLayout plant = simulator::PlantLayout::rehearsal(); ///< what is simulated, with its seed

    /// Whether there is something to do by itself.
    bool hasTask() const;

    /// The file to execute or to show; empty for none.
    QString file() const;
};

enum class OptionsResult
{
    Run, ///< the options are complete
    Inform, ///< print the message and end well
    Refuse, ///< print the message and end with MisuseExitCode
};

constexpr int MisuseExitCode = 2;

/// Reads the command line; `arguments` starts with the program's name. `message` is what to print unless the result
/// is Run.
OptionsResult parseOptions(const QStringList &arguments, Options &options, QString &message);

} // namespace workbench
