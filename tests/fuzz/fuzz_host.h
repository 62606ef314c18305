#pragma once

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "plugin/terminal_plugin_state.h"
#include "tests/fuzz/fuzz_require.h"
#include "tests/support/recording_backend.h"
#include "tests/support/recording_observer.h"

#include <QApplication>
#include <QLoggingCategory>

/// The host that a tool needs, made anew for every input.
struct FuzzHost
{
    FuzzHost() { backend.setControllers({{QStringLiteral("local"), QStringLiteral("Local")}}); }

    RecordingBackend backend;
    DlDataAccess dataAccess{backend};
    KdMainData mainData{&dataAccess};
    RecordingObserver observer;
    TerminalPluginState state;
};

/// The one application of the process; made by the first input, as widgets need it.
inline void ensureApplication()
{
    static int argumentCount = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QApplication application(argumentCount, arguments);
    static const bool quiet = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.warning=false"));
        return true;
    }();
    Q_UNUSED(quiet)
}
