#include "python_terminal/terminal_python_thread.h"

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "orbclient/orb_client_module.h"
#include "orbclient/value_conversion.h"
#include "python_terminal/child_processes.h"
#include "python_terminal/console_redirection.h"
#include "python_terminal/fallback_names.h"
#include "python_terminal/python_runtime.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace
{

constexpr int MostWeightUnderWay = 1000;
constexpr std::chrono::milliseconds CleanUpTime(60);

// There is one interpreter in a process; this says whether somebody has it.
std::atomic<bool> interpreterTaken{false};

/// Python keeps the pointers that it is given before its start for as long as the process lives.
const wchar_t *keptForPython(std::wstring &place, const QString &text)
{
    place = text.toStdWString();
    return place.c_str();
}

void registerModules()
{
    static const bool once = [] {
        PyImport_AppendInittab("orbClient", PyInit_orbClientPython_3_for_ORB);
        PyImport_AppendInittab("ConsoleRedirection", python_terminal::initialiseConsoleRedirection);
        return true;
    }();
    Q_UNUSED(once)
}

/// To the debug log and to standard output. There by bytes: once wide characters went to the stream, everything else
/// that the program writes to it would be lost.
void report(const char *what, const wchar_t *path)
{
    const QString text = QString::fromLatin1(what) + QString::fromWCharArray(path);
    qDebug().noquote() << text;
    std::fputs((text + QLatin1Char('\n')).toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

PyRef compiled(const QString &text, int start)
{
    return PyRef(Py_CompileStringExFlags(text.toLocal8Bit().constData(), "<stdin>", start, nullptr, -1));
}

/// The object's own string, as the conversion of values makes a text of it; false when it has none.
bool stringOf(PyObject *object, QString &text)
{
    const PyRef string(object != nullptr ? PyObject_Str(object) : nullptr);
    PyErr_Clear();
    if (string)
        text = orbclient::toValueText(string.get());
    return static_cast<bool>(string);
}

/// Where the interpreter looks for nothing but what it was given.
void callQuietly(const char *moduleName, const char *function)
{
    const PyRef module(PyImport_ImportModule(moduleName));
    const PyRef result(module ? PyObject_CallMethod(module.get(), function, nullptr) : nullptr);
    PyErr_Clear();
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

// Start

void TerminalPythonThread::onInit()
{
    if (isInitialized)
        return;
    initialize();
    Q_EMIT initialized(banner());
}

void TerminalPythonThread::initialize()
{
    constexpr int Major = 3;
    constexpr int Minor = 7;
    static_assert(PY_MAJOR_VERSION == Major && PY_MINOR_VERSION == Minor, "the interpreter is Python 3.7");

    if (stop.isClosing() || interpreterTaken.exchange(true))
        return;
    const QString application = QCoreApplication::applicationFilePath();
    const auto runtime = python_terminal::PythonRuntime::beside(application);
    static std::wstring programName;
    static std::wstring home;
    static std::wstring searchPath;
    Py_SetProgramName(keptForPython(programName, application));
    Py_SetPythonHome(keptForPython(home, runtime.home));
    Py_SetPath(keptForPython(searchPath, runtime.libraryPath));
    registerModules();
    if (const wchar_t *path = Py_GetPath()) {
        report("python path == ", path);
        report("python home == ", Py_GetPythonHome());
    }
    if (!runtime.usable) {
        interpreterTaken = false;
        return;
    }
    Py_Initialize();
    isInitialized = true;
    stop.attach();
    const python_terminal::RunningPython running(stop);
    std::array<wchar_t, 1> noName = {L'\0'};
    std::array<wchar_t *, 1> arguments = {noName.data()};
    PySys_SetArgvEx(1, arguments.data(), 0);
    const PyRef mainModule(PyImport_ImportModule("__main__"));
    globals = PyModule_GetDict(mainModule.get());
    locals = PyDict_New();
    const PyRef names(python_terminal::newFallbackNames(locals));
    if (names)
        PyDict_SetItemString(globals, "__builtins__", names.get());
    const PyRef attributes(python_terminal::newModuleAttributes(locals));
    if (attributes)
        PyDict_SetItemString(globals, "__getattr__", attributes.get());
    python_terminal::prepareForChildProcesses(runtime.interpreter);
    PyErr_Clear();
    setUpNamespace();
}

QString TerminalPythonThread::failureText()
{
    return QStringLiteral("Failed to initialize Python.");
}

QString TerminalPythonThread::banner() const
{
    if (!isInitialized)
        return failureText();
    return QStringLiteral("Python %1 on %2\n"
                          "Type \"help\", \"copyright\", \"credits\" or \"license\" for more information.\n"
                          "Type \"help(orbClient)\" for more information on the orbClient module.\n")
        .arg(QString::fromLocal8Bit(Py_GetVersion()), QString::fromLocal8Bit(Py_GetPlatform()));
}

void TerminalPythonThread::onClear()
{
    if (!canRun())
        return;
    const python_terminal::RunningPython running(stop);
    setUpNamespace();
}

void TerminalPythonThread::setUpNamespace()
{
    const PyGILState_STATE state = PyGILState_Ensure();
    PyDict_Clear(locals);
    PyDict_SetItemString(globals, "localdict", locals);
    for (const char *statement : {"import sys", "import ConsoleRedirection", "import orbClient",
                                  "import rlcompleter", "completer=rlcompleter.Completer(localdict)"})
        runStatement(QString::fromLatin1(statement), StatementKind::Single);
    createRedirectors();
    for (const char *statement :
         {"sys.stdout = ConsoleRedirection.stdout", "sys.stderr = ConsoleRedirection.stderr",
          "sys.stdin = ConsoleRedirection.stdin"})
        runStatement(QString::fromLatin1(statement), StatementKind::Single);
    const PyRef client(PyImport_ImportModule("orbClient"));
    if (client)
        orbclient::setModuleClient(client.get(), mainData->dataAccess->getOrbClientPtr());
    PyErr_Clear();
    PyGILState_Release(state);
}

void TerminalPythonThread::createRedirectors()
{
    struct Stream
    {
        const char *name;
        PyObject *&redirector;
        bool isError;
    };
    const std::array<Stream, 3> streams = {{{"stdout", stdoutRedirector, false},
                                            {"stderr", stderrRedirector, true},
                                            {"stdin", stdinRedirector, false}}};
    const PyRef module(PyImport_ImportModule("ConsoleRedirection"));
    for (const Stream &stream : streams) {
        if (stream.redirector == nullptr)
            stream.redirector = python_terminal::newConsoleRedirection(this, stream.isError);
        if (module && stream.redirector != nullptr)
            PyDict_SetItemString(PyModule_GetDict(module.get()), stream.name, stream.redirector);
    }
    PyErr_Clear();
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
    // A signal that came while nothing ran is not this statement's; one that comes while it runs is, to its very end.
    PyErr_CheckSignals();
    PyErr_Clear();
    PyRef result(PyEval_EvalCode(code.get(), globals, locals));
    if (python_terminal::isForkedProcess())
        python_terminal::endForkedProcess();
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
        const python_terminal::RunningPython running(stop);
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
        const python_terminal::RunningPython running(stop);
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
        const python_terminal::RunningPython running(stop);
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

// End

void TerminalPythonThread::onExit()
{
    if (isInitialized && !isFinalized) {
        isFinalized = true;
        runCleanUp();
        endOtherThreads();
        stop.detach();
        Py_Finalize();
        interpreterTaken = false;
    }
    QThread::currentThread()->quit();
}

void TerminalPythonThread::runCleanUp()
{
    const python_terminal::RunningPython running(stop);
    stop.allowCleanUp(CleanUpTime);
    callQuietly("threading", "_shutdown");
    callQuietly("atexit", "_run_exitfuncs");
    stop.forbidStopping();
    const PyRef client(PyImport_ImportModule("orbClient"));
    if (client)
        orbclient::setModuleClient(client.get(), nullptr);
    PyErr_Clear();
    Py_CLEAR(locals);
    Py_CLEAR(stdoutRedirector);
    Py_CLEAR(stderrRedirector);
    Py_CLEAR(stdinRedirector);
}

/// A thread that still lives would take the next start with it. One that cannot be ended now is waited for, however
/// long it takes; nobody else waits for that.
void TerminalPythonThread::endOtherThreads()
{
    constexpr std::chrono::milliseconds Pause(2);
    PyThreadState *own = PyThreadState_Get();
    for (;;) {
        bool others = false;
        for (PyThreadState *state = PyInterpreterState_ThreadHead(own->interp); state != nullptr;
             state = PyThreadState_Next(state)) {
            if (state == own)
                continue;
            others = true;
            PyThreadState_SetAsyncExc(state->thread_id, PyExc_SystemExit);
        }
        if (!others)
            return;
        Py_BEGIN_ALLOW_THREADS std::this_thread::sleep_for(Pause);
        Py_END_ALLOW_THREADS
    }
}
