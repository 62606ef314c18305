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
    QMetaObject::invokeMethod(evaluator.get(), &TerminalPythonThread::onExit, Qt::QueuedConnection);
    constexpr int Pause = 5;
    do {
        evaluator->requestClose();
    } while (!workerThread.wait(Pause));
}

void EvaluatorUnderTest::connectSignals()
{
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

QStringList EvaluatorUnderTest::handled()
{
    QEventLoop arrival;
    QTimer::singleShot(LongestWait, &arrival, [] { qFatal("the worker does not come to an end"); });
    // Sent after everything else, it arrives after everything else.
    QMetaObject::invokeMethod(
        evaluator.get(),
        [&arrival] { QMetaObject::invokeMethod(&arrival, &QEventLoop::quit, Qt::QueuedConnection); },
        Qt::QueuedConnection);
    arrival.exec();
    return std::exchange(taken, {});
}

QStringList EvaluatorUnderTest::init()
{
    QMetaObject::invokeMethod(evaluator.get(), &TerminalPythonThread::onInit, Qt::QueuedConnection);
    return handled();
}

QStringList EvaluatorUnderTest::type(const QString &line)
{
    QMetaObject::invokeMethod(
        evaluator.get(), [this, line] { evaluator->onReturnPressed(line); }, Qt::QueuedConnection);
    return handled();
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
    QMetaObject::invokeMethod(
        evaluator.get(), [this, file] { evaluator->onExecuteFile(file); }, Qt::QueuedConnection);
    return handled();
}

QStringList EvaluatorUnderTest::complete(const QString &word)
{
    QMetaObject::invokeMethod(
        evaluator.get(), [this, word] { evaluator->onComplete(word); }, Qt::QueuedConnection);
    return handled();
}

QStringList EvaluatorUnderTest::clear()
{
    QMetaObject::invokeMethod(evaluator.get(), &TerminalPythonThread::onClear, Qt::QueuedConnection);
    return handled();
}

QStringList EvaluatorUnderTest::exit()
{
    QMetaObject::invokeMethod(evaluator.get(), &TerminalPythonThread::onExit, Qt::QueuedConnection);
    if (!QTest::qWaitFor([this] { return workerThread.isFinished(); }, LongestWait))
        qFatal("the worker does not end");
    QCoreApplication::processEvents();
    return std::exchange(taken, {});
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

void EvaluatorUnderTest::onWorker(const std::function<void()> &call)
{
    QMetaObject::invokeMethod(evaluator.get(), call, Qt::BlockingQueuedConnection);
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
