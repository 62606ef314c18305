#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_plugin_widget.h"
#include "workbench/app/main_window.h"
#include "workbench/app/plugin_library.h"
#include "workbench/app/settings_store.h"
#include "workbench/app/tool_docks.h"
#include "workbench/app/tool_host.h"
#include "workbench/app/unattended_run.h"
#include "workbench/simulator/simulated_service.h"

#include <QPlainTextEdit>
#include <QTextStream>

#include <memory>

/// The real plug-in in the real window, in front of the simulated system, and a run that is not begun.
/// Goes in the order that main() has. TERMINAL_PLUGIN says where the plug-in is.
struct RealWorkbench
{
    explicit RealWorkbench(const workbench::Options &runOptions)
        : dataAccess(service), mainData(&dataAccess), options(runOptions)
    {
        QString error;
        if (!library.load(QStringLiteral(TERMINAL_PLUGIN), QString(), error))
            qFatal("%s", qUtf8Printable(error));
        window = std::make_unique<workbench::MainWindow>(*library.plugin(), mainData,
                                                         workbench::SettingsStore(QString()));
        window->show();
        run = std::make_unique<workbench::UnattendedRun>(options, *window, out, err);
    }

    ~RealWorkbench()
    {
        run.reset();
        window.reset();
    }

    /// The command terminal, or the Python terminal when the run is one of a Python file.
    QWidget *tool()
    {
        const int index = options.pythonFile.isEmpty() ? 0 : 1;
        return window->toolHost().tool(window->toolHost().toolClasses().at(index));
    }
    QPlainTextEdit *console() { return tool()->findChild<QPlainTextEdit *>(QStringLiteral("console")); }
    QPlainTextEdit *editor() { return tool()->findChild<QPlainTextEdit *>(QStringLiteral("editor")); }

    simulator::SimulatedService service;
    DlDataAccess dataAccess;
    KdMainData mainData;
    workbench::PluginLibrary library;
    workbench::Options options;
    QString outText;
    QString errText;
    QTextStream out{&outText};
    QTextStream err{&errText};
    std::unique_ptr<workbench::MainWindow> window;
    std::unique_ptr<workbench::UnattendedRun> run;
};
