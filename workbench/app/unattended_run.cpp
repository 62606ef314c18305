#include "workbench/app/unattended_run.h"

#include "hostsdk/kd_plugin_widget.h"
#include "workbench/app/command_terminal_driver.h"
#include "workbench/app/main_window.h"
#include "workbench/app/python_terminal_driver.h"
#include "workbench/app/system_view.h"
#include "workbench/app/text_file.h"
#include "workbench/app/tool_docks.h"
#include "workbench/app/tool_host.h"

#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QTextStream>

namespace workbench
{

namespace
{

constexpr int PollInterval = 20; // ms

} // namespace

UnattendedRun::UnattendedRun(const Options &options_, MainWindow &window_, QTextStream &out_,
                             QTextStream &err_, QObject *parent)
    : QObject(parent), options(options_), window(window_), out(out_), err(err_)
{
    poll.setInterval(PollInterval);
    connect(&poll, &QTimer::timeout, this, [this] { (this->*step)(); });
}

UnattendedRun::~UnattendedRun() = default;

void UnattendedRun::start()
{
    const QString path = options.file();
    QString error;
    TextFile content;
    if (!path.isEmpty() && !readTextFile(path, content, error)) {
        fail(tr("The file \"%1\" cannot be read: %2.").arg(QDir::toNativeSeparators(path), error));
        return;
    }
    fileText = content.text;
    if (!options.commandFile.isEmpty() && !fileText.isEmpty() && !fileText.endsWith(QLatin1Char('\n'))
        && !fileText.endsWith(QLatin1Char('\r'))) {
        err << tr("Note: the last line of \"%1\" has no line feed and is therefore not executed.")
                   .arg(QDir::toNativeSeparators(path))
            << QLatin1Char('\n');
    }
    if (!openTerminal())
        return;
    step = &UnattendedRun::waitUntilReady;
    readyDeadline.setRemainingTime(ReadyTime);
    poll.start();
}

bool UnattendedRun::openTerminal()
{
    const QVector<quint32> classes = window.toolHost().toolClasses();
    const int index = options.pythonFile.isEmpty() ? 0 : 1; // of the plug-in's tools
    if (classes.size() <= index || !window.toolDocks().open(classes.at(index))) {
        fail(index == 0 ? tr("The plug-in has no command terminal that could be opened.")
                        : tr("The plug-in has no Python terminal that could be opened."));
        return false;
    }
    QWidget *tool = window.toolHost().tool(classes.at(index));
    connect(tool, &QObject::destroyed, this, [this] {
        if (step)
            fail(tr("The window was closed before the run was over."));
    });
    if (options.pythonFile.isEmpty())
        driver = std::make_unique<CommandTerminalDriver>(*tool);
    else
        driver = std::make_unique<PythonTerminalDriver>(*tool);
    const QString missing = driver->missingControl();
    if (!missing.isEmpty()) {
        fail(tr("The tool \"%1\" cannot be operated: it has no \"%2\".")
                 .arg(window.toolHost().title(classes.at(index)), missing));
        return false;
    }
    return true;
}

void UnattendedRun::waitUntilReady()
{
    if (failedAtObstacle())
        return;
    if (!driver->isReady() && !readyDeadline.hasExpired())
        return;
    QString error;
    if (!driver->prepare(options.controller, error)) {
        fail(error);
        return;
    }
    begin();
}

void UnattendedRun::begin()
{
    if (!options.file().isEmpty())
        driver->edit(fileText);
    if (executesFile())
        driver->execute();
    step = &UnattendedRun::waitForEnd;
}

bool UnattendedRun::failedAtObstacle()
{
    const QString obstacle = driver->obstacle();
    if (!obstacle.isEmpty())
        fail(obstacle);
    return !obstacle.isEmpty();
}

void UnattendedRun::printNewLines()
{
    if (!executesFile())
        return;
    out << driver->takeNewLines();
    out.flush();
}

void UnattendedRun::waitForEnd()
{
    // As it happens: whoever interrupts a run still has what was sent and answered.
    printNewLines();
    if (failedAtObstacle())
        return;
    if (driver->waitsForUser() && options.quitWhenDone) {
        out << driver->lastLine() << QLatin1Char('\n');
        fail(tr("\"%1\" waits for a line that somebody types, and nobody is there.")
                 .arg(QDir::toNativeSeparators(options.file())));
        return;
    }
    if (driver->isBusy())
        return;
    printNewLines();
    if (executesFile())
        out << driver->lastLine() << QLatin1Char('\n');
    window.systemView().refreshVisible();
    // One more turn, so that everything that the last answer caused is laid out.
    step = &UnattendedRun::takePicture;
}

void UnattendedRun::takePicture()
{
    if (options.screenshotFile.isEmpty()) {
        end(0);
        return;
    }
    const QString shown = QDir::toNativeSeparators(QFileInfo(options.screenshotFile).absoluteFilePath());
    QDir().mkpath(QFileInfo(options.screenshotFile).absolutePath());
    if (!window.grab().save(options.screenshotFile)) {
        fail(tr("The picture could not be saved as \"%1\".").arg(shown));
        return;
    }
    out << tr("Picture saved as %1").arg(shown) << QLatin1Char('\n');
    end(0);
}

void UnattendedRun::end(int exitCode)
{
    poll.stop();
    step = nullptr;
    out.flush();
    err.flush();
    const bool printed = out.status() == QTextStream::Ok;
    if (!printed) {
        err << tr("The transcript could not be written.") << QLatin1Char('\n');
        err.flush();
    }
    Q_EMIT finished(printed ? exitCode : 1);
}

void UnattendedRun::fail(const QString &text)
{
    err << text << QLatin1Char('\n');
    end(1);
}

} // namespace workbench
