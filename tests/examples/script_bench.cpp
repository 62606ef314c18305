#include "tests/examples/script_bench.h"

#include "workbench/hostkit/orb_item_path.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <chrono>
#include <limits>
#include <utility>

namespace
{

constexpr double Never = -1;

// Separate global and local names, as in the terminal, whose functions find the names beside them all the same.
const char Harness[] = R"(
import builtins
import sys
import time


class NamesBeside(dict):
    def __init__(self, beside):
        super().__init__(__import__=builtins.__import__, __build_class__=builtins.__build_class__)
        self.beside = beside

    def __missing__(self, name):
        if name in self.beside:
            return self.beside[name]
        if hasattr(builtins, name):
            return getattr(builtins, name)
        raise KeyError(name)


class Console:
    write = staticmethod(bench_write)

    def flush(self):
        pass


def run_script(text):
    beside = {}
    try:
        exec(compile(text, "<stdin>", "exec"), {"__builtins__": NamesBeside(beside)}, beside)
    except BaseException as problem:
        return f"{type(problem).__name__}: {problem}"
    return ""


sys.argv = [""]
sys.stdout = Console()
time.sleep = bench_sleep
time.monotonic = bench_now
)";

ScriptBench &benchOf(PyObject *capsule)
{
    return *static_cast<ScriptBench *>(PyCapsule_GetPointer(capsule, nullptr));
}

OrbItemId idOf(const QString &item)
{
    const int colon = item.indexOf(QLatin1Char(':'));
    OrbItemId id;
    if (colon < 0 || !hostkit::parseItemPath(item.mid(colon + 1), id))
        qFatal("\"%s\" names no item", qPrintable(item));
    id.connectionName = item.left(colon);
    return id;
}

} // namespace

bool ScriptBench::Outcome::printed(const QString &line) const
{
    return output.split(QLatin1Char('\n')).contains(line);
}

ScriptBench::ScriptBench()
{
    bindFunctions();
    const QString problem = interpreter.exec(QString::fromLatin1(Harness));
    if (!problem.isEmpty())
        qFatal("The script bench does not start: %s", qPrintable(problem));
    renew();
}

ScriptBench::~ScriptBench()
{
    interpreter.exec(QStringLiteral("sys.stdout = sys.__stdout__"));
    interpreter.setClient(nullptr);
}

void ScriptBench::bindFunctions()
{
    static PyMethodDef functions[] = {
        {"bench_now", &ScriptBench::pythonNow, METH_NOARGS, nullptr},
        {"bench_sleep", &ScriptBench::pythonSleep, METH_VARARGS, nullptr},
        {"bench_write", &ScriptBench::pythonWrite, METH_VARARGS, nullptr},
    };
    const PyRef self(PyCapsule_New(this, nullptr, nullptr));
    for (PyMethodDef &function : functions) {
        const PyRef object(PyCFunction_New(&function, self.get()));
        interpreter.bind(QString::fromLatin1(function.ml_name), object.get());
    }
}

void ScriptBench::renew()
{
    interpreter.setClient(nullptr);
    events.clear();
    client.reset();
    injector.reset();
    system.reset();
    clock = std::make_shared<simulator::SteppedClock>();
    system = std::make_unique<simulator::SimulatedService>(clock);
    injector = std::make_unique<FaultInjector>(*system);
    client = std::make_unique<OrbClient>(*injector);
    interpreter.setClient(client.get());
}

QString ScriptBench::folder()
{
    return QStringLiteral(EXAMPLES "/scripts");
}

QString ScriptBench::textOf(const QString &script)
{
    QFile file(folder() + QLatin1Char('/') + script);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

ScriptBench::Outcome ScriptBench::run(const QString &script, const Constants &constants)
{
    QString text = textOf(script);
    for (const QPair<QString, QString> &constant : constants) {
        const QRegularExpression line(QStringLiteral("^%1 = .*$").arg(constant.first),
                                      QRegularExpression::MultilineOption);
        if (text.count(line) != 1)
            return {QString(),
                    QStringLiteral("%1 has not one line for the constant %2").arg(script, constant.first)};
        const QRegularExpressionMatch match = line.match(text);
        text.replace(match.capturedStart(), match.capturedLength(),
                     QStringLiteral("%1 = %2").arg(constant.first, constant.second));
    }
    return runText(text);
}

ScriptBench::Outcome ScriptBench::runText(const QString &text)
{
    output.clear();
    const QByteArray utf8 = text.toUtf8();
    interpreter.bind(QStringLiteral("script_text"),
                     PyRef(PyUnicode_FromStringAndSize(utf8.constData(), utf8.size())).get());
    const PyRef error = interpreter.evaluate(QStringLiteral("run_script(script_text)"));
    if (!error)
        return {output, QStringLiteral("The bench itself failed: ") + PythonInterpreter::takeException()};
    return {output, PythonInterpreter::textOf(error.get())};
}

void ScriptBench::at(double time, std::function<void()> event)
{
    events.append({time, QString(), std::move(event)});
}

void ScriptBench::when(const QString &printed, std::function<void()> event)
{
    events.append({Never, printed, std::move(event)});
}

void ScriptBench::raise(const std::function<bool(const Event &)> &isDue)
{
    QVector<Event> due;
    QVector<Event> later;
    for (const Event &event : std::as_const(events))
        (isDue(event) ? due : later).append(event);
    events = later;
    for (const Event &event : std::as_const(due))
        event.happen();
}

void ScriptBench::letTimePass(double seconds)
{
    clock->advance(
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
}

QString ScriptBench::read(const QString &item) const
{
    OrbItemReading reading;
    return system->readItem(idOf(item), reading) == TarnResult::Success ? reading.value : QString();
}

double ScriptBench::readNumber(const QString &item) const
{
    bool isNumber = false;
    const double number = read(item).toDouble(&isNumber);
    return isNumber ? number : std::numeric_limits<double>::quiet_NaN();
}

void ScriptBench::write(const QString &item, const QString &value)
{
    if (system->writeItem(idOf(item), value) != TarnResult::Success)
        qFatal("The system refuses %s=%s", qPrintable(item), qPrintable(value));
}

PyObject *ScriptBench::pythonNow(PyObject *self, PyObject * /*arguments*/)
{
    return PyFloat_FromDouble(benchOf(self).now());
}

PyObject *ScriptBench::pythonSleep(PyObject *self, PyObject *arguments)
{
    double seconds = 0;
    if (PyArg_ParseTuple(arguments, "d", &seconds) == 0)
        return nullptr;
    ScriptBench &bench = benchOf(self);
    bench.letTimePass(seconds);
    bench.raise([&bench](const Event &event) { return event.time >= 0 && bench.now() >= event.time; });
    Py_RETURN_NONE;
}

PyObject *ScriptBench::pythonWrite(PyObject *self, PyObject *arguments)
{
    const char *text = nullptr;
    if (PyArg_ParseTuple(arguments, "s", &text) == 0)
        return nullptr;
    const QString printed = QString::fromUtf8(text);
    ScriptBench &bench = benchOf(self);
    bench.output += printed;
    bench.raise([&printed](const Event &event) {
        return !event.printed.isEmpty() && printed.contains(event.printed);
    });
    Py_RETURN_NONE;
}
