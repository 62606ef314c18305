#pragma once

#include "hostclient/orb_client.h"
#include "tests/examples/fault_injector.h"
#include "tests/support/python_interpreter.h"
#include "workbench/simulator/simulated_service.h"
#include "workbench/simulator/stepped_clock.h"

#include <QPair>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

/// Runs scripts as the Python terminal does, against the simulated system, in a time that passes only while a script
/// sleeps. One at a time, since it has the process's interpreter. What a script prints is collected.
class ScriptBench
{
public:
    /// How a script ended.
    struct Outcome
    {
        QString output; ///< everything that it printed
        QString error; ///< "RuntimeError: text" when it ended with an exception; else empty

        /// Whether one of the printed lines is this one.
        bool printed(const QString &line) const;
    };
    /// Names of constants at the top of a script, and what stands there instead, in Python.
    using Constants = QVector<QPair<QString, QString>>;

    ScriptBench();
    ~ScriptBench();
    ScriptBench(const ScriptBench &) = delete;
    ScriptBench &operator=(const ScriptBench &) = delete;

    /// A new system, as it is when it is switched on.
    void renew();

    /// The text of a script in examples/scripts/. Fails the process when it cannot be read.
    static QString textOf(const QString &script);
    static QString folder();

    /// Runs a script. A constant that does not stand in it exactly once is an error, as if the script had raised it.
    Outcome run(const QString &script, const Constants &constants = {});
    Outcome runText(const QString &text);

    /// What happens while a script sleeps for the first time at or after this time of the system, in seconds.
    void at(double time, std::function<void()> event);
    /// What happens when a script prints a text that contains this one, for the first time.
    void when(const QString &printed, std::function<void()> event);

    simulator::SimulatedService &service() { return *system; }
    FaultInjector &faults() { return *injector; }
    PythonInterpreter &python() { return interpreter; }
    double now() const { return clock->now(); }
    void letTimePass(double seconds);

    /// The value of an item, named as FaultInjector does; empty when it cannot be read. Past the injector.
    QString read(const QString &item) const;
    double readNumber(const QString &item) const;
    /// Writes an item, past the injector. Fails the process when it is refused.
    void write(const QString &item, const QString &value);

private:
    struct Event
    {
        double time;
        QString printed;
        std::function<void()> happen;
    };

    void raise(const std::function<bool(const Event &)> &isDue);
    void bindFunctions();

    static PyObject *pythonNow(PyObject *self, PyObject *arguments);
    static PyObject *pythonSleep(PyObject *self, PyObject *arguments);
    static PyObject *pythonWrite(PyObject *self, PyObject *arguments);

    std::shared_ptr<simulator::SteppedClock> clock;
    std::unique_ptr<simulator::SimulatedService> system;
    std::unique_ptr<FaultInjector> injector;
    std::unique_ptr<OrbClient> client;
    PythonInterpreter interpreter;
    QVector<Event> events;
    QString output;
};
