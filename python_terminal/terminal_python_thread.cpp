#include "python_terminal/terminal_python_thread.h"

#include "orbclient/value_conversion.h"
#include "python_terminal/child_processes.h"

namespace
{

constexpr int MostWeightUnderWay = 1000;

PyRef compiled(const QString &text, int start)
{
    return PyRef(Py_CompileStringExFlags(text.toLocal8Bit().constData(), "<stdin>", start, nullptr, -1));
}

/// The object's own string, as the conversion of values makes a text of it; false when it has none.
bool stringOf(PyObject *object, QString &text)
{
    // An interrupt may come here as well, after the one that the text is about.
    constexpr int MostAttempts = 3;
    PyRef string;
    bool interrupted = true;
    for (int i = 0; object != nullptr && !string && interrupted && i < MostAttempts; ++i) {
        string = PyRef(PyObject_Str(object));
        interrupted = !string && PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0;
        PyErr_Clear();
    }
    if (string)
        text = orbclient::toValueText(string.get());
    return static_cast<bool>(string);
}

} // namespace

TerminalPythonThread::TerminalPythonThread(QObject *parent, KdMainData *hostData)
    : QObject(parent), mainData(hostData)
{ }

TerminalPythonThread::~TerminalPythonThread() = default;

// For the GUI thread

void TerminalPythonThread::setStdInText(const QString &text)
{
    {
        const std::lock_guard<std::mutex> lock(stop.mutex);
        stdinLine = text + QLatin1Char('\n');
        stdinLineArrived = true;
    }
    stop.wakeUp.notify_all();
}

void TerminalPythonThread::textsTaken(int weight)
{
    {
        const std::lock_guard<std::mutex> lock(stop.mutex);
        weightUnderWay -= weight;
    }
    stop.wakeUp.notify_all();
}

int TerminalPythonThread::weightOf(const QString &text)
{
    constexpr int LightestCharacters = 1000;
    return 1 + text.size() / LightestCharacters;
}

bool TerminalPythonThread::interrupt()
{
    return stop.interrupt();
}

void TerminalPythonThread::requestClose()
{
    stop.close();
}

bool TerminalPythonThread::knockAgain()
{
    stop.knock();
    return stop.isWanted();
}

// For the stream objects

void TerminalPythonThread::takeOutput(const QString &text, bool isError)
{
    if (captureMode) {
        if (!isError)
            captureBuffer += text;
        return;
    }
    if (python_terminal::isForkedProcess()) {
        python_terminal::writeInForkedProcess(text, isError);
        return;
    }
    bool mustWait = false;
    {
        const std::lock_guard<std::mutex> lock(stop.mutex);
        weightUnderWay += weightOf(text);
        mustWait = weightUnderWay > MostWeightUnderWay;
    }
    if (isError)
        Q_EMIT insertErrorText(text);
    else
        Q_EMIT insertSuccessText(text);
    if (!mustWait)
        return;
    Py_BEGIN_ALLOW_THREADS
    {
        std::unique_lock<std::mutex> lock(stop.mutex);
        stop.waitUnlessStopped(lock, [this] { return weightUnderWay <= MostWeightUnderWay; });
    }
    Py_END_ALLOW_THREADS
}

bool TerminalPythonThread::readStdInLine(QString &line)
{
    // Nobody could answer there: an empty line, without its line feed, is the end of the input.
    line.clear();
    if (python_terminal::isForkedProcess())
        return true;
    std::unique_lock<std::mutex> lock(stop.mutex);
    stdinLine.clear();
    stdinLineArrived = false;
    Q_EMIT waitingForStdIn();
    stop.waitUnlessStopped(lock, [this] { return stdinLineArrived; });
    line = stdinLine;
    const bool arrived = stdinLineArrived;
    lock.unlock();
    if (arrived)
        return true;
    // Somebody else's knock may have been answered in the meantime.
    if (!stop.raise())
        PyErr_SetNone(PyExc_KeyboardInterrupt);
    return false;
}

// Evaluation

bool TerminalPythonThread::runStatement(const QString &text, StatementKind kind)
{
    if (!isInitialized)
        return false;
    const bool file = kind == StatementKind::File;
    const PyRef code = compiled(text, file ? Py_file_input : Py_single_input);
    const PyRef result = code ? evaluated(code) : PyRef();
    if (result)
        return true;
    // A file that does not compile says nothing, which is meant.
    if (code && file && !stop.isClosing()) {
        bool incomplete = false;
        Q_EMIT insertErrorText(takeErrorText(incomplete));
    }
    PyErr_Clear();
    return false;
}

PyRef TerminalPythonThread::evaluated(const PyRef &code)
{
    PyRef result(PyEval_EvalCode(code.get(), globals, locals));
    if (python_terminal::isForkedProcess())
        python_terminal::endForkedProcess();
    // A signal that comes while a statement runs is the statement's, to its very end.
    if (result && PyErr_CheckSignals() != 0)
        result = PyRef();
    return result;
}

void TerminalPythonThread::onReturnPressed(const QString &cmd)
{
    if (!canRun())
        return;
    bool incomplete = false;
    // An empty line and a comment leave even a pending statement as it is.
    if (!cmd.isEmpty() && !cmd.startsWith(QLatin1Char('#'))) {
        const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Script);
        pendingCommand += cmd + QLatin1Char('\n');
        const PyRef code = compiled(pendingCommand, Py_single_input);
        bool errorShown = false;
        if (PyErr_Occurred() != nullptr) {
            const QString text = takeErrorText(incomplete);
            errorShown = !incomplete;
            if (errorShown)
                Q_EMIT insertErrorText(text);
        }
        if (code && !incomplete) {
            const PyRef result = evaluated(code);
            if (PyErr_Occurred() != nullptr && !stop.isClosing()) {
                bool ignored = false;
                Q_EMIT insertErrorText(takeErrorText(ignored));
            }
            PyErr_Clear();
            pendingCommand.clear();
        } else if (!incomplete) {
            incomplete = pendingCommand.trimmed().endsWith(QLatin1Char(':'));
            if (!incomplete) {
                if (!errorShown)
                    Q_EMIT insertErrorText(tr("Python parser error."));
                pendingCommand.clear();
            }
        }
    }
    Q_EMIT evaluationComplete(incomplete);
}

void TerminalPythonThread::dropPendingCommand()
{
    pendingCommand.clear();
}

void TerminalPythonThread::onExecuteFile(const QString &txt)
{
    if (!canRun())
        return;
    {
        const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Script);
        runStatement(txt, StatementKind::File);
    }
    Q_EMIT evaluationComplete(false);
}

QString TerminalPythonThread::takeErrorText(bool &incomplete)
{
    PyObject *fetchedType = nullptr;
    PyObject *fetchedValue = nullptr;
    PyObject *fetchedTraceback = nullptr;
    PyErr_Fetch(&fetchedType, &fetchedValue, &fetchedTraceback);
    const PyRef type(fetchedType);
    const PyRef value(fetchedValue);
    const PyRef traceback(fetchedTraceback);

    QString typeText = QStringLiteral("<unknown error type>");
    QString valueText;
    stringOf(type.get(), typeText);
    // A value that has no string stays empty.
    stringOf(value.get(), valueText);
    QString text = typeText + QLatin1Char(' ') + valueText;
    QString tracebackText;
    // The traceback object's own string, which is meant; the lines that it holds are not formatted.
    if (stringOf(traceback.get(), tracebackText))
        text += QLatin1Char(' ') + tracebackText;
    incomplete = typeText.contains(QLatin1String("SyntaxError"))
        && valueText.contains(QLatin1String("unexpected EOF while parsing"));
    return text;
}

// Completion

void TerminalPythonThread::onComplete(const QString &cmd)
{
    constexpr int ShortestWord = 4;
    constexpr int MostCandidates = 1000;
    if (!canRun())
        return;
    QStringList candidates;
    if (cmd.size() >= ShortestWord) {
        const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Internal);
        captureMode = true;
        bool found = false;
        QString candidate;
        for (int state = 0; state < MostCandidates && !found && completionOf(cmd, state, candidate);
             ++state) {
            found = !candidate.isEmpty() && cmd.contains(candidate);
            if (!candidate.isEmpty() && !found)
                candidates.append(candidate);
        }
        captureMode = false;
        candidates.removeDuplicates();
        if (found)
            candidates.clear();
    }
    Q_EMIT completed(candidates);
}

/// One candidate as the display of results writes it; empty when there is none for this state. False when the
/// completion has to end.
bool TerminalPythonThread::completionOf(const QString &cmd, int state, QString &candidate)
{
    captureBuffer.clear();
    const PyRef code =
        compiled(QStringLiteral("completer.complete(\"%1\", %2)").arg(cmd).arg(state), Py_single_input);
    const PyRef result(code ? PyEval_EvalCode(code.get(), globals, locals) : nullptr);
    if (!result) {
        PyErr_Clear();
        return false;
    }
    constexpr int Shortest = 4; // with its quotes
    candidate = captureBuffer.trimmed();
    if (candidate.size() < Shortest) {
        candidate.clear();
        return true;
    }
    if (candidate.startsWith(QLatin1Char('\'')))
        candidate.remove(0, 1);
    if (candidate.endsWith(QLatin1Char('\'')))
        candidate.chop(1);
    if (candidate.endsWith(QLatin1Char('(')))
        candidate.chop(1);
    return true;
}
