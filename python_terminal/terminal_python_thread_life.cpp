#include "python_terminal/terminal_python_thread.h"

#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "orbclient/orb_client_module.h"
#include "orbclient/value_conversion.h"
#include "python_terminal/child_processes.h"
#include "python_terminal/console_redirection.h"
#include "python_terminal/fallback_names.h"
#include "python_terminal/other_threads.h"
#include "python_terminal/password_prompt.h"
#include "python_terminal/python_runtime.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QThread>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>

namespace
{

constexpr std::chrono::milliseconds CleanUpTime(50);

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

/// To the debug log and to standard output. There past the stream, once that has written what it holds: the first text
/// that goes through a stream decides whether it takes bytes or wide characters, and it then loses all others. That is
/// the program's to decide.
void report(const char *what, const wchar_t *path)
{
    const QString text = QString::fromLatin1(what) + QString::fromWCharArray(path);
    qDebug().noquote() << text;
    std::fflush(stdout);
    QFile output;
    if (output.open(fileno(stdout), QIODevice::WriteOnly | QIODevice::Unbuffered))
        output.write((text + QLatin1Char('\n')).toLocal8Bit());
}

/// What the end of a script does, whatever comes of it.
void callQuietly(const char *moduleName, const char *function)
{
    const PyRef module(PyImport_ImportModule(moduleName));
    const PyRef result(module ? PyObject_CallMethod(module.get(), function, nullptr) : nullptr);
    PyErr_Clear();
}

/// The last one first: what an object needs at its end was mostly there before it. What Python itself put there stays.
void removeNames(PyObject *dictionary)
{
    const PyRef names(PyDict_Keys(dictionary));
    for (Py_ssize_t i = names ? PyList_GET_SIZE(names.get()) : 0; i > 0; --i) {
        PyObject *name = PyList_GET_ITEM(names.get(), i - 1);
        if (!orbclient::toValueText(name).startsWith(QLatin1String("__")))
            PyDict_DelItem(dictionary, name);
        PyErr_Clear();
    }
}

} // namespace

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
    processSettings.keep();
    Py_Initialize();
    isInitialized = true;
    python_terminal::useNewThreadStateNumbers();
    python_terminal::prepareOtherThreads();
    stop.attach();
    const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Internal);
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
    const PyRef list(python_terminal::newModuleNames(locals));
    if (list)
        PyDict_SetItemString(globals, "__dir__", list.get());
    python_terminal::prepareForChildProcesses(runtime.interpreter);
    python_terminal::askForPasswordsInConsole();
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
    const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Internal);
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

// End

void TerminalPythonThread::onExit()
{
    if (isInitialized && !isFinalized) {
        isFinalized = true;
        runExitFunctions();
        python_terminal::endOtherThreads();
        forgetNames();
        python_terminal::endOtherThreads();
        endInterpreter();
        interpreterTaken = false;
    }
    QThread::currentThread()->quit();
}

void TerminalPythonThread::runExitFunctions()
{
    const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Internal);
    stop.allowCleanUp(CleanUpTime);
    python_terminal::useDefaultSwitchInterval();
    callQuietly("threading", "_shutdown");
    callQuietly("atexit", "_run_exitfuncs");
}

/// Objects of scripts end here, where they can be stopped.
void TerminalPythonThread::forgetNames()
{
    const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Internal);
    stop.allowCleanUp(CleanUpTime);
    for (PyObject *dictionary : {globals, locals})
        removeNames(dictionary);
    callQuietly("gc", "collect");
}

void TerminalPythonThread::endInterpreter()
{
    // An object of a script's that lives until now is still stopped when its own end lasts.
    const python_terminal::RunningPython running(stop, python_terminal::StopRequests::Code::Internal);
    stop.allowCleanUp(CleanUpTime);
    stop.endSignals();
    processSettings.giveBack(stop.signalAction());
    releaseObjects();
    Py_Finalize();
    stop.detach();
    processSettings.restore();
}

void TerminalPythonThread::releaseObjects()
{
    const PyRef client(PyImport_ImportModule("orbClient"));
    if (client)
        orbclient::setModuleClient(client.get(), nullptr);
    PyErr_Clear();
    Py_CLEAR(locals);
    Py_CLEAR(stdoutRedirector);
    Py_CLEAR(stderrRedirector);
    Py_CLEAR(stdinRedirector);
}
