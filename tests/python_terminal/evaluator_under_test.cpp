#include "tests/python_terminal/evaluator_under_test.h"

#include "python_terminal/terminal_python_thread.h"

#include <QEventLoop>
#include <QRegularExpression>
#include <QTimer>
#include <QtTest>

#include <utility>

namespace
{

// An upper bound for a machine under load with a sanitizer; what is waited for takes milliseconds.
constexpr int LongestWait = 60'000;

} // namespace

EvaluatorUnderTest::EvaluatorUnderTest()
    : evaluator(std::make_unique<TerminalPythonThread>(nullptr, &mainData))
{
    evaluator->moveToThread(&workerThread);
    connectSignals();
    workerThread.start();
}

EvaluatorUnderTest::~EvaluatorUnderTest()
{
    if (workerThread.isFinished())
        return;
    send([this] { evaluator->onExit(); });
    constexpr int Pause = 5;
    do {
        evaluator->requestClose();
    } while (!workerThread.wait(Pause));
}

void EvaluatorUnderTest::connectSignals()
{
    connect(this, &EvaluatorUnderTest::errandCame, evaluator.get(), [this] { runErrand(); });
    connect(evaluator.get(), &TerminalPythonThread::insertSuccessText, this, [this](const QString &text) {
        take(QStringLiteral("out ") + text);
        evaluator->textsTaken(TerminalPythonThread::weightOf(text));
    });
    connect(evaluator.get(), &TerminalPythonThread::insertErrorText, this, [this](const QString &text) {
        take(QStringLiteral("err ") + text);
        evaluator->textsTaken(TerminalPythonThread::weightOf(text));
    });
    connect(evaluator.get(), &TerminalPythonThread::completed, this, [this](const QStringList &candidates) {
        take((QStringList(QStringLiteral("candidates")) + candidates).join(QLatin1Char(' ')));
    });
    connect(evaluator.get(), &TerminalPythonThread::evaluationComplete, this,
            [this](bool more) { take(more ? QStringLiteral("more") : QStringLiteral("done")); });
    connect(evaluator.get(), &TerminalPythonThread::waitingForStdIn, this, [this] {
        take(QStringLiteral("input"));
        answer();
    });
    connect(evaluator.get(), &TerminalPythonThread::initialized, this,
            [this](const QString &text) { take(QStringLiteral("start ") + text); });
}

void EvaluatorUnderTest::take(const QString &signalText)
{
    taken.append(signalText);
}

void EvaluatorUnderTest::answer()
{
    if (answers.isEmpty())
        evaluator->interrupt();
    else
        evaluator->setStdInText(answers.takeFirst());
}

void EvaluatorUnderTest::send(const std::function<void()> &errand)
{
    {
        const std::lock_guard<std::mutex> lock(errandMutex);
        errands.push_back(errand);
    }
    Q_EMIT errandCame();
}

void EvaluatorUnderTest::runErrand()
{
    std::function<void()> errand;
    {
        const std::lock_guard<std::mutex> lock(errandMutex);
        errand = std::move(errands.front());
        errands.pop_front();
    }
    errand();
    {
        // What the errand did is known to whoever takes the lock next.
        const std::lock_guard<std::mutex> lock(errandMutex);
        errand = nullptr;
    }
    // Sent after everything else, it arrives after everything else.
    Q_EMIT errandDone();
}

QStringList EvaluatorUnderTest::handled(const std::function<void()> &errand)
{
    QEventLoop arrival;
    connect(this, &EvaluatorUnderTest::errandDone, &arrival, &QEventLoop::quit);
    QTimer::singleShot(LongestWait, &arrival, [] { qFatal("the worker does not come to an end"); });
    send(errand);
    arrival.exec();
    const std::lock_guard<std::mutex> lock(errandMutex);
    return std::exchange(taken, {});
}

QStringList EvaluatorUnderTest::init()
{
    return handled([this] { evaluator->onInit(); });
}

QStringList EvaluatorUnderTest::type(const QString &line)
{
    return handled([this, line] { evaluator->onReturnPressed(line); });
}

QStringList EvaluatorUnderTest::type(const QStringList &lines)
{
    QStringList all;
    for (const QString &line : lines)
        all += type(line);
    return all;
}

QStringList EvaluatorUnderTest::execute(const QString &file)
{
    return handled([this, file] { evaluator->onExecuteFile(file); });
}

QStringList EvaluatorUnderTest::complete(const QString &word)
{
    return handled([this, word] { evaluator->onComplete(word); });
}

QStringList EvaluatorUnderTest::clear()
{
    return handled([this] { evaluator->onClear(); });
}

QStringList EvaluatorUnderTest::exit()
{
    QStringList signalTexts = handled([this] { evaluator->onExit(); });
    if (!workerThread.wait(LongestWait))
        qFatal("the worker does not end");
    return signalTexts;
}

void EvaluatorUnderTest::setAnswers(const QStringList &lines)
{
    answers = lines;
}

QString EvaluatorUnderTest::shownBy(const QString &line)
{
    return shown(type(line));
}

QString EvaluatorUnderTest::shownByFile(const QString &text)
{
    return shown(execute(text));
}

QString EvaluatorUnderTest::shown(const QStringList &signalTexts)
{
    QString written;
    QStringList errors;
    for (const QString &text : signalTexts) {
        if (text.startsWith(QLatin1String("out ")))
            written += text.mid(4);
        else if (text.startsWith(QLatin1String("err ")))
            errors.append(text);
    }
    return written + errors.join(QString());
}

QStringList EvaluatorUnderTest::withoutAddresses(const QStringList &signalTexts)
{
    static const QRegularExpression address(QStringLiteral("0x[0-9a-f]+"));
    QStringList texts = signalTexts;
    return texts.replaceInStrings(address, QStringLiteral("0x?"));
}
