#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "workbench/app/application_icon.h"
#include "workbench/app/main_window.h"
#include "workbench/app/options.h"
#include "workbench/app/plugin_library.h"
#include "workbench/app/rehearse.h"
#include "workbench/app/settings_store.h"
#include "workbench/app/unattended_run.h"
#include "workbench/simulator/real_clock.h"
#include "workbench/simulator/simulated_service.h"

#include <QApplication>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTextStream>

#include <chrono>
#include <memory>
#include <vector>

namespace
{

constexpr int DesktopPointSize = 10;

QtMessageHandler defaultMessageHandler = nullptr;

/// Qt's own applications take "-plugin", with one dash or two, before we see it. Ours has two, and is taken out of
/// `arguments` first.
QStringList takePluginOption(std::vector<char *> &arguments)
{
    QStringList taken;
    for (auto argument = arguments.begin(); argument != arguments.end();) {
        const QByteArray text(*argument);
        const bool hasOwnValue = text.startsWith("--plugin=");
        if (!hasOwnValue && text != "--plugin") {
            ++argument;
            continue;
        }
        taken.append(QString::fromLocal8Bit(text));
        argument = arguments.erase(argument);
        if (!hasOwnValue && argument != arguments.end()) {
            taken.append(QString::fromLocal8Bit(*argument));
            argument = arguments.erase(argument);
        }
    }
    return taken;
}

/// Draws in memory where there is no display: Qt would end the process before it could say anything, its help
/// included.
void doWithoutDisplay()
{
#ifdef Q_OS_LINUX
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(variable))
            return;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
}

/// Nobody sees or closes a window on these platforms.
bool hasScreen()
{
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

/// Keeps out of a transcript what Qt's windowless platforms say about every window.
void writeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.contains(QLatin1String("propagateSizeHints")))
        defaultMessageHandler(type, context, message);
}

/// Runs the workbench; the process's exit code.
int run(const workbench::Options &options, QTextStream &out, QTextStream &err)
{
    // In this order, so that they go in the other: window and tools, plug-in, client, service.
    simulator::SimulatedService service(std::make_shared<simulator::RealClock>(), options.plant);
    if (options.latency >= 0)
        service.setLatency(std::chrono::milliseconds(options.latency));
    DlDataAccess dataAccess(service);
    KdMainData mainData(&dataAccess);

    workbench::PluginLibrary library;
    QString error;
    if (!library.load(options.pluginFile, QCoreApplication::applicationDirPath(), error)) {
        err << error << QLatin1Char('\n');
        err.flush();
        if (hasScreen() && !options.quitWhenDone)
            QMessageBox::critical(nullptr, QCoreApplication::applicationName(), error);
        return 1;
    }

    // A run that ends by itself looks the same every time, and leaves the operator's own layout alone.
    if (!hasScreen() && !options.hasTask()) {
        err << "There is no screen to show a window on. Give something to do without one: --run-command-file "
               "FILE, --run-python-file FILE, --editor-file FILE or --screenshot FILE.\n";
        return workbench::MisuseExitCode;
    }
    const bool isUnattended = options.hasTask() && (options.quitWhenDone || !hasScreen());
    QString settingsDir = options.configDir;
    if (settingsDir.isEmpty() && !isUnattended)
        settingsDir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    workbench::MainWindow window(*library.plugin(), mainData, workbench::SettingsStore(settingsDir),
                                 &service);
    window.show();

    workbench::Options taskOptions = options;
    taskOptions.quitWhenDone = isUnattended;
    workbench::UnattendedRun task(taskOptions, window, out, err);
    if (options.hasTask()) {
        QObject::connect(&task, &workbench::UnattendedRun::finished, &window, [&](int exitCode) {
            if (isUnattended || exitCode != 0) {
                window.shutDown();
                QCoreApplication::exit(exitCode);
            }
        });
        // From within the event loop, which exit() then ends.
        QMetaObject::invokeMethod(&task, &workbench::UnattendedRun::start, Qt::QueuedConnection);
    }
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc > 1 && QByteArray(argv[1]) == "rehearse")
        return workbench::rehearse(argc, argv, QStringLiteral(WORKBENCH_VERSION));
    doWithoutDisplay();
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // A text that is one and a half times as large does not make everything twice as large.
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::RoundPreferFloor);
    std::vector<char *> arguments(argv, argv + argc);
    const QStringList pluginOption = takePluginOption(arguments);
    int argumentCount = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    QApplication application(argumentCount, arguments.data());
    QCoreApplication::setOrganizationName(QStringLiteral("tarn"));
    QCoreApplication::setApplicationName(QStringLiteral("terminal-workbench"));
    QCoreApplication::setApplicationVersion(QStringLiteral(WORKBENCH_VERSION));
    QApplication::setWindowIcon(workbench::applicationIcon());
    QGuiApplication::setDesktopFileName(QStringLiteral("terminal-workbench"));

    if (!hasScreen()) {
        defaultMessageHandler = qInstallMessageHandler(writeMessage);
        // Without a desktop that says otherwise, Qt's font is a size that no desktop uses.
        QFont font = QApplication::font();
        font.setPointSize(DesktopPointSize);
        QApplication::setFont(font);
    }

    QTextStream out(stdout);
    QTextStream err(stderr);
    out.setCodec("UTF-8");
    err.setCodec("UTF-8");

    workbench::Options options;
    QString message;
    switch (workbench::parseOptions(QCoreApplication::arguments() + pluginOption, options, message)) {
    case workbench::OptionsResult::Inform:
        out << message << QLatin1Char('\n');
        return 0;
    case workbench::OptionsResult::Refuse:
        err << QCoreApplication::applicationName() << ": " << message << QLatin1Char('\n')
            << "Try --help for what can be given.\n";
        return workbench::MisuseExitCode;
    case workbench::OptionsResult::Run:
        break;
    }
    return run(options, out, err);
}
