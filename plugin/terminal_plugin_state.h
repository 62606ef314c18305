#pragma once

#include <QString>
#include <QStringList>

/// What both tools and their file editors share. The plug-in object owns the one record and outlives every tool; the
/// tools keep a pointer to it. GUI thread only.
struct TerminalPluginState
{
    quint32 terminalWidgetClassId =
        0; ///< the host's id of the command terminal, 0 until it registered the tools
    quint32 pythonWidgetClassId =
        0; ///< the host's id of the Python terminal, 0 until it registered the tools
    QStringList commandFiles; ///< most recently used command files, newest first
    QStringList pythonFiles; ///< most recently used Python files, newest first

    void addCommandFile(const QString &path) { addRecentFile(commandFiles, path); }
    void addPythonFile(const QString &path) { addRecentFile(pythonFiles, path); }

private:
    static constexpr int MaxRecentFiles = 10;

    // A path that is listed already is meant to appear again: the list tells what was used, not what there is.
    static void addRecentFile(QStringList &files, const QString &path)
    {
        files.prepend(path);
        if (files.size() > MaxRecentFiles)
            files.erase(files.begin() + MaxRecentFiles, files.end());
    }
};
