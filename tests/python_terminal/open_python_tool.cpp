#include "tests/python_terminal/open_python_tool.h"

#include "hostsdk/kd_parent_event.h"
#include "python_terminal/abandoned_worker.h"
#include "python_terminal/terminal_python_console.h"
#include "python_terminal/terminal_widget_python.h"
#include "tests/python_terminal/process_census.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WITH_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define WITH_SANITIZER 1
#endif
#endif
#ifndef WITH_SANITIZER
#define WITH_SANITIZER 0
#endif

namespace
{

constexpr int Patience = 10000; // ms; the time that a loaded machine may take

class ProcessorTime
{
public:
    ProcessorTime() : waitedBefore(process_census::waitedForProcessor()) { timer.start(); }
    qint64 elapsed() const { return timer.elapsed() - (process_census::waitedForProcessor() - waitedBefore); }

private:
    qint64 waitedBefore;
    QElapsedTimer timer;
};

} // namespace

int ClosingLimits::variantRounds()
{
    constexpr int Fewest = 4;
    return std::max(Fewest, qEnvironmentVariableIntValue("CLOSING_CYCLES"));
}

qint64 ClosingLimits::closeTime()
{
    constexpr qint64 Longest = 300;
    constexpr qint64 SanitizerFactor = 3;
    return WITH_SANITIZER ? Longest * SanitizerFactor : Longest;
}

OpenPythonTool::OpenPythonTool()
{
    backend.setControllers({{QStringLiteral("local"), QStringLiteral("local")}});
}

OpenPythonTool::~OpenPythonTool() = default;

void OpenPythonTool::openAtOnce()
{
    tool = std::make_unique<TerminalWidgetPython>(nullptr, &state, mainData, observer, 1U);
    tool->resize(600, 400);
    tool->show();
}

bool OpenPythonTool::open()
{
    return QTest::qWaitFor([] { return qApp->findChildren<AbandonedWorker *>().isEmpty(); }, Patience)
        && openBeside();
}

bool OpenPythonTool::openBeside()
{
    const QLatin1String started("more information on the orbClient module.");
    const QLatin1String failed("Failed to initialize Python.");
    openAtOnce();
    return QTest::qWaitFor([&] { return text().contains(started) || text().contains(failed); }, Patience)
        && text().contains(started);
}

bool OpenPythonTool::evaluates()
{
    if (!QTest::qWaitFor([this] { return text().endsWith(QLatin1String("\n> ")); }, Patience))
        return false;
    QTest::keyClicks(console(), QStringLiteral("1+1"));
    QTest::keyClick(console(), Qt::Key_Return);
    return QTest::qWaitFor([this] { return text().endsWith(QLatin1String("\n2\n> ")); }, Patience);
}

bool OpenPythonTool::run(const QString &script)
{
    console()->executeFile(script);
    return QTest::qWaitFor([this] { return text().contains(QLatin1String("\nreached\n")); }, Patience);
}

qint64 OpenPythonTool::close()
{
    const ProcessorTime timer;
    tool.reset();
    return timer.elapsed();
}

qint64 OpenPythonTool::stop()
{
    const ProcessorTime timer;
    KdParentEvent event(KD::StopInterpreter);
    tool->parentEventOccured(event);
    return timer.elapsed();
}

QString OpenPythonTool::text() const
{
    return tool ? console()->toPlainText() : QString();
}

TerminalPythonConsole *OpenPythonTool::console() const
{
    return tool->findChild<TerminalPythonConsole *>();
}
