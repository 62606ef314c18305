// The same objects and client, bound by a general binding library in the way that its manual recommends: the measure
// for the scripting module.

#include "benchmarks/in_process_client.h"
#include "hostclient/orb_client.h"
#include "hostclient/tarn_item.h"
#include "tests/support/recording_backend.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <pybind11/embed.h>

namespace py = pybind11;

namespace
{

/// Reads and writes items, whatever the level of the object is.
class BoundObject
{
public:
    BoundObject(OrbClient *orbClient, std::string connectionName)
        : client(orbClient), connection(std::move(connectionName))
    { }

protected:
    py::object read(const std::string &path, int code) const
    {
        const TarnItem item = client->getItem(connection.c_str(), path.c_str());
        if (item.path[0] == '\0')
            return py::str("error");
        return toPython(item.value, code);
    }

    std::string write(const std::string &path, const py::object &value) const
    {
        const TarnResult result = client->setItem(connection.c_str(), path.c_str(), toText(value).c_str());
        return result == TarnResult::Success ? "ok" : "error";
    }

private:
    static py::object toPython(const char *text, int code)
    {
        char *end = nullptr;
        if (code == 4)
            return py::str(text);
        if (code == 1) {
            const long integer = std::strtol(text, &end, 10);
            if (end != text && *end == '\0')
                return py::int_(integer);
        }
        const std::string value(text);
        if (value == "true" || value == "false")
            return py::bool_(value == "true");
        const double number = std::strtod(text, &end);
        if (end != text && *end == '\0')
            return py::float_(number);
        return py::str(value);
    }

    static std::string toText(const py::object &value)
    {
        if (py::isinstance<py::float_>(value)) {
            char text[32];
            std::snprintf(text, sizeof(text), "%.6g", value.cast<double>());
            return text;
        }
        if (py::isinstance<py::int_>(value))
            return std::to_string(value.cast<int>());
        if (py::isinstance<py::str>(value))
            return value.cast<std::string>();
        return {};
    }

    OrbClient *client;
    std::string connection;
};

class BoundConnection : public BoundObject
{
public:
    using BoundObject::BoundObject;
    py::object getStatusCanText() const { return read("Status.canText", 4); }
};

class BoundCrate : public BoundObject
{
public:
    BoundCrate(OrbClient *orbClient, std::string connectionName, int lineIndex, int crateAddress)
        : BoundObject(orbClient, std::move(connectionName)), line(lineIndex), address(crateAddress)
    { }
    py::object getControlPower() const
    {
        return read(std::to_string(line) + "." + std::to_string(address) + ".Control.power", 3);
    }

    int line;
    int address;
};

class BoundChannel : public BoundObject
{
public:
    BoundChannel(OrbClient *orbClient, std::string connectionName, int lineIndex, int moduleAddress,
                 int channelIndex)
        : BoundObject(orbClient, std::move(connectionName)),
          line(lineIndex),
          module(moduleAddress),
          index(channelIndex)
    { }
    py::object getStatusOn() const { return read(path("Status.on"), 0); }
    py::object getStatusEventCounter() const { return read(path("Status.eventCounter"), 1); }
    py::object getStatusVoltageMeasure() const { return read(path("Status.voltageMeasure"), 2); }
    std::string setControlVoltageSet(const py::object &value) const
    {
        return write(path("Control.voltageSet"), value);
    }

    int line;
    int module;
    int index;

private:
    std::string path(const char *item) const
    {
        return std::to_string(line) + "." + std::to_string(module) + "." + std::to_string(index) + "." + item;
    }
};

// A client needs a service to stand on, although this one never asks it.
OrbClient &client()
{
    static RecordingBackend backend;
    static OrbClient orbClient(backend);
    return orbClient;
}

} // namespace

PYBIND11_EMBEDDED_MODULE(boundClient, module)
{
    py::class_<BoundConnection>(module, "connection")
        .def(py::init([](const std::string &name) { return BoundConnection(&client(), name); }))
        .def("getStatusCanText", &BoundConnection::getStatusCanText);
    py::class_<BoundCrate>(module, "crate")
        .def(py::init([](const std::string &name, int line, int address) {
            return BoundCrate(&client(), name, line, address);
        }))
        .def_readwrite("line", &BoundCrate::line)
        .def_readwrite("address", &BoundCrate::address)
        .def("getControlPower", &BoundCrate::getControlPower);
    py::class_<BoundChannel>(module, "channel")
        .def(py::init([](const std::string &name, int line, int moduleAddress, int index) {
            return BoundChannel(&client(), name, line, moduleAddress, index);
        }))
        .def_readwrite("line", &BoundChannel::line)
        .def_readwrite("module", &BoundChannel::module)
        .def_readwrite("index", &BoundChannel::index)
        .def("getStatusOn", &BoundChannel::getStatusOn)
        .def("getStatusEventCounter", &BoundChannel::getStatusEventCounter)
        .def("getStatusVoltageMeasure", &BoundChannel::getStatusVoltageMeasure)
        .def("setControlVoltageSet", &BoundChannel::setControlVoltageSet);
}
