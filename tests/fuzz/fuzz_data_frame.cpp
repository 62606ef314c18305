// Pass-through messages with any JSON, turned into data frames and back into messages.

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "orbclient/data_frame_object.h"
#include "orbclient/py_ref.h"
#include "tests/fuzz/fuzz_require.h"
#include "tests/support/python_interpreter.h"

#include <array>

#include <sanitizer/lsan_interface.h>

using namespace orbclient;

namespace
{

constexpr std::array Members = {"connection", "line",  "address", "channel", "command",
                                "item",       "value", "unit",    "rawJson"};

void requireText(PyObject *object)
{
    require(object != nullptr && PyUnicode_CheckExact(object), "a text is a str");
}

void requireValue(PyObject *value)
{
    if (!PyDict_CheckExact(value)) {
        requireText(value);
        return;
    }
    Py_ssize_t position = 0;
    PyObject *key = nullptr;
    PyObject *entry = nullptr;
    while (PyDict_Next(value, &position, &key, &entry) != 0) {
        requireText(key);
        if (!PyList_CheckExact(entry))
            requireText(entry);
        for (Py_ssize_t i = 0; PyList_CheckExact(entry) && i < PyList_GET_SIZE(entry); ++i)
            requireText(PyList_GET_ITEM(entry, i));
    }
}

/// Qt's parser loses what stood under a key that comes again, a few bytes a message. That is no finding here.
PyRef makeFrame(const OrbRequestItem &request)
{
    const __lsan::ScopedDisabler disabler;
    return PyRef(newDataFrame(nullptr, request.itemName, request));
}

/// A frame is never freed. Here, where millions are made, its members and its storage are handed back by hand.
void handBack(PyRef frame)
{
    for (const char *member : Members)
        require(PyObject_SetAttrString(frame.get(), member, nullptr) == 0, "a member can be deleted");
    PyObject_Free(frame.release());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const PythonInterpreter interpreter;
    if (size == 0)
        return 0;
    OrbRequestItem request;
    request.rawJson = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), static_cast<int>(size) - 1);
    request.value = (data[0] & 1) != 0 ? request.rawJson : request.rawJson.left(5);
    request.commandType = static_cast<OrbRequestItem::CommandType>(data[0] % 3);
    request.line = data[0];
    request.channel = -1;
    request.itemName = request.rawJson.left(20);
    request.unit = request.rawJson.right(3);

    PyRef frame = makeFrame(request);
    require(static_cast<bool>(frame) && PyErr_Occurred() == nullptr, "a frame is made of every message");
    for (const char *member : Members)
        require(static_cast<bool>(PyRef(PyObject_GetAttrString(frame.get(), member))), "every member is set");
    requireValue(PyRef(PyObject_GetAttrString(frame.get(), "value")).get());
    requireText(PyRef(PyObject_Str(frame.get())).get());

    OrbItemValue message;
    require(dataFrameToItemValue(message, frame.get()), "a frame can be sent");
    require(message.id().line == request.line && message.id().channel == -1, "numbers are sent as received");
    require(message.value().userType() == QMetaType::QString, "a value that is no number is sent as a text");
    require(PyErr_Occurred() == nullptr, "no exception is left behind");
    handBack(std::move(frame));
    return 0;
}
