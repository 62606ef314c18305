// What a call from a script costs, and what the objects of a large system cost. The same client stands behind our
// module and behind the same methods bound with pybind11, and an empty method shows what Python itself takes.

#include "benchmarks/in_process_client.h"
#include "hostclient/orb_client.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_item_value.h"
#include "orbclient/connection_object.h"
#include "orbclient/orb_client_module.h"
#include "orbclient/py_ref.h"
#include "tests/support/recording_backend.h"

#include <QElapsedTimer>
#include <QString>
#include <QVector>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

constexpr int CallsOfBatch = 1000;
constexpr int Batches = 1000; // a million calls of each
constexpr double CallLimit = 0.65; // of what the same costs with pybind11
constexpr double ObjectLimit = 1.5; // microseconds

PyObject *emptyMethod(PyObject *, PyObject *)
{
    Py_RETURN_NONE;
}

PyObject *initialiseEmpty()
{
    static std::array<PyMethodDef, 3> methods = {{{"get", emptyMethod, METH_NOARGS, ""},
                                                  {"set", emptyMethod, METH_O, ""},
                                                  {nullptr, nullptr, 0, nullptr}}};
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "emptyMethods", "", 0, methods.data(), nullptr, nullptr, nullptr, nullptr};
    return PyModule_Create(&definition);
}

[[noreturn]] void giveUp(const char *what)
{
    std::fprintf(stderr, "%s failed\n", what);
    if (PyErr_Occurred() != nullptr)
        PyErr_Print();
    std::exit(1);
}

PyObject *checked(PyObject *object, const char *what)
{
    if (object == nullptr)
        giveUp(what);
    return object;
}

/// An interpreter with the three modules, and the objects under measurement as names in `__main__`.
class Interpreter
{
public:
    Interpreter()
    {
        PyImport_AppendInittab("orbClient", PyInit_orbClientPython_3_for_ORB);
        PyImport_AppendInittab("emptyMethods", initialiseEmpty);
        static std::wstring home = QStringLiteral(PYTHON_HOME).toStdWString(); // Python keeps the pointer
        Py_SetPythonHome(home.data());
        Py_NoUserSiteDirectory = 1;
        Py_Initialize();
        PyRef module(checked(PyImport_ImportModule("orbClient"), "import orbClient"));
        orbclient::setModuleClient(module.get(), &client);
        run("import orbClient, boundClient, emptyMethods\n"
            "from itertools import repeat\n"
            "ours = orbClient.findConnection('local')\n"
            "bound = boundClient.connection('local')\n"
            "oursCrate = ours.crates[0]\n"
            "boundCrate = boundClient.crate('local', 0, 1000)\n"
            "oursChannel = ours.modules[2].channels[7]\n"
            "boundChannel = boundClient.channel('local', 0, 2, 7)\n");
    }

    void run(const std::string &text)
    {
        PyObject *names = PyModule_GetDict(checked(PyImport_AddModule("__main__"), "__main__"));
        PyRef result(checked(PyRun_String(text.c_str(), Py_file_input, names, names), text.c_str()));
    }

    /// A function that makes the call CallsOfBatch times.
    PyRef batchOf(const std::string &call)
    {
        run("def batch(calls=" + std::to_string(CallsOfBatch)
            + "):\n    for _ in repeat(None, calls): " + call + "\n");
        PyObject *main = checked(PyImport_AddModule("__main__"), "__main__");
        return PyRef(checked(PyObject_GetAttrString(main, "batch"), "batch"));
    }

    /// Whether both calls give the same object and reach the client with the same texts.
    bool agree(const std::string &ourCall, const std::string &boundCall)
    {
        InProcessClient &state = InProcessClient::instance();
        const auto textOf = [&](const std::string &call) {
            state.checksum = 0;
            run("answer = repr(" + call + ")");
            PyObject *main = checked(PyImport_AddModule("__main__"), "__main__");
            PyRef answer(checked(PyObject_GetAttrString(main, "answer"), "answer"));
            return std::string(PyUnicode_AsUTF8(answer.get())) + std::to_string(state.checksum);
        };
        return textOf(ourCall) == textOf(boundCall);
    }

    OrbClient client{backend};

private:
    RecordingBackend backend;
};

Interpreter &interpreter()
{
    static Interpreter one;
    return one;
}

double nanosecondsOfBatch(const PyRef &batch)
{
    QElapsedTimer timer;
    timer.start();
    PyRef result(checked(PyObject_CallObject(batch.get(), nullptr), "a batch"));
    return double(timer.nsecsElapsed()) / CallsOfBatch;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

struct Call
{
    const char *name;
    const char *value; ///< what the client reads
    const char *ours;
    const char *bound;
    const char *empty;
};

constexpr std::array<Call, 12> Calls = {{
    {"get/automatic/number", "5", "oursChannel.getStatusOn()", "boundChannel.getStatusOn()",
     "emptyMethods.get()"},
    {"get/automatic/truth", "true", "oursChannel.getStatusOn()", "boundChannel.getStatusOn()",
     "emptyMethods.get()"},
    {"get/automatic/word", "ok", "oursChannel.getStatusOn()", "boundChannel.getStatusOn()",
     "emptyMethods.get()"},
    {"get/integer", "1234", "oursChannel.getStatusEventCounter()", "boundChannel.getStatusEventCounter()",
     "emptyMethods.get()"},
    {"get/floating_point", "1234.567", "oursChannel.getStatusVoltageMeasure()",
     "boundChannel.getStatusVoltageMeasure()", "emptyMethods.get()"},
    {"get/boolean", "true", "oursCrate.getControlPower()", "boundCrate.getControlPower()",
     "emptyMethods.get()"},
    {"get/text", "CAN is running", "ours.getStatusCanText()", "bound.getStatusCanText()",
     "emptyMethods.get()"},
    {"set/int", "", "oursChannel.setControlVoltageSet(1500)", "boundChannel.setControlVoltageSet(1500)",
     "emptyMethods.set(1500)"},
    {"set/float", "", "oursChannel.setControlVoltageSet(1500.25)",
     "boundChannel.setControlVoltageSet(1500.25)", "emptyMethods.set(1500.25)"},
    {"set/float_rounded", "", "oursChannel.setControlVoltageSet(333.3333333333333)",
     "boundChannel.setControlVoltageSet(333.3333333333333)", "emptyMethods.set(333.3333333333333)"},
    {"set/str", "", "oursChannel.setControlVoltageSet('1500.25')",
     "boundChannel.setControlVoltageSet('1500.25')", "emptyMethods.set('1500.25')"},
    {"set/bool", "", "oursChannel.setControlVoltageSet(True)", "boundChannel.setControlVoltageSet(True)",
     "emptyMethods.set(True)"},
}};

// The three take turns, batch by batch, so that they share whatever else the machine does.
void callMethod(benchmark::State &state, const Call &call)
{
    Interpreter &python = interpreter();
    InProcessClient::instance().setValue(call.value);
    if (!python.agree(call.ours, call.bound)) {
        state.SkipWithError("the two modules do not do the same");
        return;
    }
    const PyRef ours = python.batchOf(call.ours);
    const PyRef bound = python.batchOf(call.bound);
    const PyRef empty = python.batchOf(call.empty);
    std::vector<double> ourTimes;
    std::vector<double> boundTimes;
    std::vector<double> emptyTimes;
    for (auto _ : state) {
        for (int i = 0; i < Batches; ++i) {
            ourTimes.push_back(nanosecondsOfBatch(ours));
            boundTimes.push_back(nanosecondsOfBatch(bound));
            emptyTimes.push_back(nanosecondsOfBatch(empty));
        }
    }
    state.counters["ours_ns"] = median(ourTimes);
    state.counters["pybind11_ns"] = median(boundTimes);
    state.counters["empty_ns"] = median(emptyTimes);
    state.counters["ratio"] = median(ourTimes) / median(boundTimes);
    state.counters["limit"] = CallLimit;
}

/// What the client itself takes for a connection's lists and its modules' numbers of channels.
double clientSeconds(OrbClient &client)
{
    const QString name = QStringLiteral("local");
    QElapsedTimer timer;
    timer.start();
    QVector<OrbItemId> ids;
    client.getCrates(name, ids);
    client.getModules(name, ids);
    for (const OrbItemId &id : qAsConst(ids)) {
        OrbItemValue value(id);
        client.readItemValue(value);
        benchmark::DoNotOptimize(value.value().toUInt());
    }
    return double(timer.nsecsElapsed()) * 1e-9;
}

// A connection object with all of its module and channel objects. They stay: nothing of ours is ever freed.
void createConnection(benchmark::State &state)
{
    Interpreter &python = interpreter();
    InProcessClient &service = InProcessClient::instance();
    service.hasCrate = false;
    service.modules = static_cast<int>(state.range(0));
    const int channels = service.modules * InProcessClient::ChannelsOfModule;
    std::vector<double> times;
    for (auto _ : state) {
        const double clientTime = clientSeconds(python.client);
        QElapsedTimer timer;
        timer.start();
        PyRef connection(
            checked(orbclient::newConnection(&python.client, QStringLiteral("local")), "newConnection"));
        times.push_back((double(timer.nsecsElapsed()) * 1e-9 - clientTime) / channels);
        PyRef modules(checked(PyObject_GetAttrString(connection.get(), "modules"), "modules"));
        if (PyList_Size(modules.get()) != service.modules)
            state.SkipWithError("there are not as many modules as the client listed");
    }
    state.counters["us_per_channel"] = median(times) * 1e6;
    state.counters["limit_us"] = ObjectLimit;
}
BENCHMARK(createConnection)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(5000)
    ->Arg(10000)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    for (const Call &call : Calls) {
        benchmark::RegisterBenchmark(call.name, callMethod, call)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
