// What the command terminal costs, and how the cost grows. Each figure stands beside its limit.

#include "command_terminal/terminal_console.h"
#include "command_terminal/terminal_console_completer.h"
#include "command_terminal/terminal_widget.h"
#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_main_data.h"
#include "plugin/terminal_plugin_state.h"
#include "tests/support/recording_backend.h"
#include "tests/support/recording_observer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <QTextBlock>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <memory>
#include <vector>

namespace
{

constexpr QSize WindowSize(900, 600);

QString requestLine(int number)
{
    return QStringLiteral(
               R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"%1",)"
               R"("c":"%2"},"i":"Status.voltageMeasure","v":"","u":""}}],"r":"websocket"})")
        .arg(number / 16 % 4)
        .arg(number % 16);
}

QString answerLine(int number)
{
    return QStringLiteral(R"([{"i":"Status.voltageMeasure","l":"0","a":"0","c":"1","v":"%1","u":"V"}])")
        .arg(number);
}

double secondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) * 1e-9;
}

/// Without the time that other programs had on a shared machine.
double processorSecondsOf(const std::function<void()> &work)
{
    const auto now = [] {
        timespec time = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
    };
    const double start = now();
    work();
    return now() - start;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// The host that a tool needs, with a service that answers at once.
struct Host
{
    Host()
    {
        backend.setControllers({{QStringLiteral("local"), QStringLiteral("local")}});
        backend.setRawHandler([this](const QString &, const QString &) {
            ++requests;
            return RecordingBackend::RawAnswer{
                true, QString(), {QStringLiteral(R"([{"trigger":"true"}])"), answerLine(requests)}};
        });
    }

    int requests = 0;
    RecordingBackend backend;
    DlDataAccess dataAccess{backend};
    KdMainData mainData{&dataAccess};
    RecordingObserver observer;
    TerminalPluginState state;
};

std::unique_ptr<TerminalConsole> shownConsole(Host &host)
{
    auto console = std::make_unique<TerminalConsole>(nullptr, host.mainData, host.observer);
    console->resize(WindowSize);
    console->show();
    QApplication::processEvents();
    return console;
}

std::unique_ptr<TerminalWidget> shownTool(Host &host)
{
    auto tool = std::make_unique<TerminalWidget>(nullptr, &host.state, host.mainData, host.observer, 1U);
    tool->resize(WindowSize);
    tool->show();
    tool->activateWindow();
    QApplication::processEvents();
    KdChildEvent controller(KD::ControllerChosen, QStringLiteral("local"));
    tool->processChildEvent(controller);
    return tool;
}

void runFile(TerminalWidget &tool, const QString &text)
{
    auto *console = tool.findChild<QWidget *>(QStringLiteral("console"));
    tool.findChild<QPlainTextEdit *>(QStringLiteral("editor"))->setPlainText(text);
    KdChildEvent execute(KD::ExecuteFile);
    tool.processChildEvent(execute);
    while (console->property("fileRunning").toBool())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void insertLines(TerminalConsole &console, int count)
{
    for (int i = 0; i < count; ++i)
        console.printSuccess(answerLine(i));
}

// Per line, 100,000 lines against the first 1,000.
void insertHundredThousandLines(benchmark::State &state)
{
    constexpr int First = 1000;
    constexpr int All = 100000;
    for (auto _ : state) {
        Host host;
        std::vector<double> firstTimes;
        for (int i = 0; i < 9; ++i) {
            const auto console = shownConsole(host);
            firstTimes.push_back(secondsOf([&] { insertLines(*console, First); }) / First);
        }
        const auto console = shownConsole(host);
        const double all = secondsOf([&] { insertLines(*console, All); }) / All;
        state.counters["first_us_per_line"] = median(firstTimes) * 1e6;
        state.counters["all_us_per_line"] = all * 1e6;
        state.counters["ratio"] = all / median(firstTimes);
        state.counters["limit"] = 1.5;
    }
}
BENCHMARK(insertHundredThousandLines)->Iterations(1)->Unit(benchmark::kMillisecond);

// A command file of 10,000 requests against a plain editor that is given the transcript line by line.
void runTenThousandRequests(benchmark::State &state)
{
    constexpr int Requests = 10000;
    QString file;
    for (int i = 0; i < Requests; ++i)
        file += requestLine(i) + QLatin1Char('\n');

    for (auto _ : state) {
        Host host;
        const auto tool = shownTool(host);
        const double toolTime = secondsOf([&] { runFile(*tool, file); });
        const QString transcript =
            tool->findChild<QPlainTextEdit *>(QStringLiteral("console"))->toPlainText();
        const QStringList lines = transcript.split(QLatin1Char('\n'));
        if (host.requests != Requests || lines.size() < 3 * Requests) {
            state.SkipWithError("the command file was not run as a whole");
            break;
        }

        QPlainTextEdit plain;
        plain.setFont(tool->findChild<QPlainTextEdit *>(QStringLiteral("console"))->font());
        plain.resize(tool->findChild<QWidget *>(QStringLiteral("console"))->size());
        plain.show();
        QApplication::processEvents();
        const double plainTime = secondsOf([&] {
            for (const QString &line : lines) {
                plain.insertPlainText(line + QLatin1Char('\n'));
                plain.ensureCursorVisible();
            }
        });
        state.counters["tool_us_per_request"] = toolTime / Requests * 1e6;
        state.counters["plain_us_per_request"] = plainTime / Requests * 1e6;
        state.counters["ratio"] = toolTime / plainTime;
        state.counters["limit"] = 2;
    }
}
BENCHMARK(runTenThousandRequests)->Iterations(1)->Unit(benchmark::kMillisecond);

// One key press below 100,000 lines, in milliseconds of processor time: the median and the slowest of many.
void pressKeyBelowHundredThousandLines(benchmark::State &state)
{
    Host host;
    const auto console = shownConsole(host);
    insertLines(*console, 100000);
    console->printPrompt();
    QApplication::processEvents();
    std::vector<double> times;
    for (auto _ : state) {
        times.push_back(processorSecondsOf([&] { QTest::keyClick(console.get(), Qt::Key_A); }));
        state.PauseTiming();
        if (times.size() % 60 == 0)
            console->removeInput();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["median_ms"] = median(times) * 1e3;
    state.counters["slowest_ms"] = *std::max_element(times.begin(), times.end()) * 1e3;
    state.counters["limit_ms"] = 2;
}
BENCHMARK(pressKeyBelowHundredThousandLines)->Iterations(500)->Unit(benchmark::kMillisecond);

// 5,000 candidates, wider and wider, until the popup is on the screen.
void showFiveThousandCandidates(benchmark::State &state)
{
    Host host;
    const auto console = shownConsole(host);
    QStringList candidates;
    for (int i = 0; i < 5000; ++i)
        candidates.append(
            QStringLiteral("get%1Voltage%2(").arg(QString(1 + i / 100, QLatin1Char('a'))).arg(i));
    std::vector<double> times;
    for (auto _ : state) {
        times.push_back(secondsOf([&] {
            console->showCompletions(candidates);
            QApplication::processEvents();
        }));
        state.PauseTiming();
        console->hideCompletion();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["median_ms"] = median(times) * 1e3;
    state.counters["limit_ms"] = 20;
}
BENCHMARK(showFiveThousandCandidates)->Iterations(50)->Unit(benchmark::kMillisecond);

// Comment lines need no answer: the cost per line stays the same up to a million.
void runCommentLines(benchmark::State &state)
{
    const int count = int(state.range(0));
    const QString text = QStringLiteral("# nothing to do here\n").repeated(count);
    for (auto _ : state) {
        Host host;
        const auto tool = shownTool(host);
        state.counters["us_per_line"] = secondsOf([&] { runFile(*tool, text); }) / count * 1e6;
    }
}
BENCHMARK(runCommentLines)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// One line of any length: the cost per character stays the same.
void runLongLine(benchmark::State &state)
{
    const int length = int(state.range(0));
    const QString text = QString(length, QLatin1Char('x')) + QLatin1Char('\n');
    for (auto _ : state) {
        Host host;
        const auto tool = shownTool(host);
        state.counters["us_per_character"] = secondsOf([&] { runFile(*tool, text); }) / length * 1e6;
    }
}
BENCHMARK(runLongLine)->Arg(10000)->Arg(100000)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
