#include "workbench/app/rehearse.h"

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "workbench/app/own_output.h"
#include "workbench/app/plugin_library.h"
#include "workbench/app/rehearse_options.h"
#include "workbench/app/rehearse_output.h"
#include "workbench/app/rehearse_run.h"
#include "workbench/app/tool_host.h"
#include "workbench/rehearsal/held_clock.h"
#include "workbench/rehearsal/recorder.h"
#include "workbench/rehearsal/report_json.h"
#include "workbench/rehearsal/report_page.h"
#include "workbench/simulator/simulated_service.h"

#include <QApplication>
#include <QDir>
#include <QSaveFile>
#include <QTextStream>
#include <QTimer>
#include <QWidget>

#include <csignal>
#include <memory>

namespace workbench
{

namespace
{

constexpr int SignalInterval = 20; // ms
constexpr int SignalBase = 128; // exit code of what a signal ended, as shells have it

volatile std::sig_atomic_t caughtSignal = 0;

extern "C" void catchSignal(int number)
{
    caughtSignal = number;
    // A second one ends the process at once.
    std::signal(number, SIG_DFL);
}

void catchSignals()
{
    // Again and again until one came: the interpreter sets its own when it starts.
    if (caughtSignal != 0)
        return;
    std::signal(SIGINT, catchSignal);
    std::signal(SIGTERM, catchSignal);
}

QtMessageHandler defaultMessageHandler = nullptr;

/// Without what is for developers, and what Qt says of windows and desktops, of which a rehearsal has none.
void writeMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool isOfDesktop = message.contains(QLatin1String("propagateSizeHints"))
        || message.contains(QLatin1String("XDG_RUNTIME_DIR"));
    if (type != QtDebugMsg && !isOfDesktop)
        defaultMessageHandler(type, context, message);
}

rehearsal::Recording newRecording(const RehearseOptions &options, const QString &version)
{
    rehearsal::Recording recording;
    recording.programVersion = version;
    recording.plant = options.plantFile;
    recording.seed = options.plant.seed;
    recording.startedAt = QDateTime::currentDateTime();
    recording.limits = options.limits;
    for (const RehearsalFile &file : options.files) {
        rehearsal::FileRecord record;
        record.name = file.name;
        record.isScript = file.isScript;
        record.outcome = QStringLiteral("not run");
        recording.files.push_back(record);
    }
    return recording;
}

/// False with the reason in `error`.
bool writeFile(const QString &path, const QByteArray &content, QString &error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit())
        return true;
    error = QCoreApplication::translate("workbench::Rehearse", "The report \"%1\" cannot be written: %2.")
                .arg(QDir::toNativeSeparators(path), file.errorString());
    return false;
}

bool writeReport(const QString &dir, const rehearsal::Recording &recording, QString &page, QString &error)
{
    if (dir.isEmpty())
        return true;
    page = QDir(dir).filePath(QStringLiteral("report.html"));
    return writeFile(page, rehearsal::reportPage(recording).toUtf8(), error)
        && writeFile(QDir(dir).filePath(QStringLiteral("report.json")), rehearsal::reportJson(recording),
                     error);
}

int exitCodeOf(const rehearsal::Recording &recording)
{
    if (caughtSignal != 0)
        return SignalBase + caughtSignal;
    return recording.failures.empty() ? 0 : 1;
}

/// Runs it; the process's exit code.
int run(const RehearseOptions &options, const QString &version, RehearseOutput &output, QTextStream &err)
{
    // In this order, so that they go in the other: run, tools, plug-in, client, service.
    const auto clock = std::make_shared<rehearsal::HeldClock>();
    simulator::SimulatedService service(clock, options.plant);
    DlDataAccess dataAccess(service);
    KdMainData mainData(&dataAccess);
    PluginLibrary library;
    QString error;
    if (!library.load(options.pluginFile, QCoreApplication::applicationDirPath(), error)) {
        err << error << QLatin1Char('\n');
        return MisuseExitCode;
    }
    QWidget window;
    ToolHost host(*library.plugin(), mainData);
    host.start(KdPluginConfiguration());
    window.show();

    rehearsal::Recording recording = newRecording(options, version);
    rehearsal::Recorder recorder(service, clock, recording,
                                 [&output](const rehearsal::Finding &finding) { output.finding(finding); });
    RehearseRun task(options, {host, window, *clock, recorder, recording, output});

    QTimer signalLook;
    signalLook.setInterval(SignalInterval);
    QObject::connect(&signalLook, &QTimer::timeout, &task, [&task] {
        catchSignals();
        if (caughtSignal != 0)
            task.interrupt(caughtSignal == SIGINT
                               ? QCoreApplication::translate("workbench::Rehearse", "Interrupted by Ctrl+C.")
                               : QCoreApplication::translate("workbench::Rehearse", "Ended from outside."));
    });
    catchSignals();
    signalLook.start();
    QObject::connect(&task, &RehearseRun::finished, qApp, &QCoreApplication::quit);
    QMetaObject::invokeMethod(&task, &RehearseRun::start, Qt::QueuedConnection);
    QApplication::exec();

    recording.exitCode = exitCodeOf(recording);
    QString page;
    if (!writeReport(options.reportDir, recording, page, error)) {
        err << error << QLatin1Char('\n');
        recording.exitCode = qMax(recording.exitCode, 1);
        page.clear();
    }
    output.result(recording, page);
    if (!output.isWhole()) {
        err << QCoreApplication::translate("workbench::Rehearse", "The transcript could not be written.")
            << QLatin1Char('\n');
        recording.exitCode = qMax(recording.exitCode, 1);
    }
    mainData.shuttingDown = true;
    return recording.exitCode;
}

} // namespace

int rehearse(int argumentCount, char **arguments, const QString &version)
{
    // Never on somebody's display, also where there is one.
    qputenv("QT_QPA_PLATFORM", "offscreen");
#ifdef Q_OS_UNIX
    // The report is wanted also when nobody reads the transcript to its end; the interpreter sets the same.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    OwnOutput ownOutput;
    defaultMessageHandler = qInstallMessageHandler(writeMessage);
    // Qt gets none of our arguments, some of which are called as its own.
    int ownCount = 1;
    char *ownArguments[] = {arguments[0], nullptr};
    const QApplication application(ownCount, ownArguments);
    QCoreApplication::setOrganizationName(QStringLiteral("tarn"));
    QCoreApplication::setApplicationName(QStringLiteral("terminal-workbench"));
    QCoreApplication::setApplicationVersion(version);

    QTextStream err(stderr);
    err.setCodec("UTF-8");
    QStringList given;
    for (int i = 2; i < argumentCount; ++i)
        given.append(QString::fromLocal8Bit(arguments[i]));
    RehearseOptions options;
    QString message;
    switch (parseRehearseOptions(given, options, message)) {
    case OptionsResult::Inform:
        ownOutput.file().write(message.toUtf8());
        return 0;
    case OptionsResult::Refuse:
        err << QStringLiteral("terminal-workbench rehearse: ") << message << QLatin1Char('\n')
            << "Try rehearse --help for what can be given.\n";
        return MisuseExitCode;
    case OptionsResult::Run:
        break;
    }
    RehearseOutput output(ownOutput.file(), options.format);
    return run(options, version, output, err);
}

} // namespace workbench
