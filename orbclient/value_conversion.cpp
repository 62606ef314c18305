#include "orbclient/value_conversion.h"

#include "orbclient/py_ref.h"
#include "orbclient/tarn_item_text.h"
#include "orbclient/wide_text_buffer.h"

#include <QByteArray>

#include <cmath>
#include <limits>

namespace orbclient
{

namespace
{

constexpr int SignificantDigits = 6;

PyObject *truthValue(bool value)
{
    return PyBool_FromLong(value ? 1 : 0);
}

QString latin1Text(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}

PyObject *readAutomatically(const QString &text)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (ok)
        return PyFloat_FromDouble(number); // every number is a float here, "5" too, and this is meant
    const int integer = text.toInt(&ok);
    if (ok)
        return PyLong_FromLong(integer);
    const QString lower = text.toLower();
    if (lower == QLatin1String("false"))
        return truthValue(false);
    if (lower == QLatin1String("true"))
        return truthValue(true);
    return toPythonText(text);
}

/// An int of any size as the 32-bit signed integer that its lower 32 bits are.
int toInteger32(PyObject *integer)
{
    const auto bits = static_cast<quint32>(PyLong_AsUnsignedLongMask(integer));
    // The mask raises for nothing that is an int.
    PyErr_Clear();
    return static_cast<qint32>(bits);
}

/// Our own object types carry the flag of a dictionary without being one, so the flag alone is not believed.
bool isDictionary(PyObject *object)
{
    return PyDict_Check(object) && PyObject_TypeCheck(object, &PyDict_Type);
}

/// Builds the text of one value. A container that cannot be spelled out to its end has no text at all: one that holds
/// itself twice would otherwise never end.
class ValueText
{
public:
    static QString of(PyObject *object)
    {
        ValueText text;
        text.append(object);
        return text.abandoned ? QString() : text.result;
    }

private:
    void append(PyObject *object)
    {
        if (object == nullptr)
            return;
        if (PyFloat_Check(object)) {
            result += QString::number(PyFloat_AS_DOUBLE(object), 'g', SignificantDigits);
        } else if (PyLong_Check(object)) {
            result += QString::number(toInteger32(object));
        } else if (PyUnicode_Check(object)) {
            result += WideTextBuffer::instance().textOf(object);
        } else if (isDictionary(object)) {
            appendContainer(object, &ValueText::appendDictionary);
        } else if (PyList_Check(object)) {
            appendContainer(object, &ValueText::appendList);
        }
    }

    void appendContainer(PyObject *container, void (ValueText::*appendContents)(PyObject *))
    {
        if (Py_EnterRecursiveCall(" while a value is turned into its text") != 0) {
            PyErr_Clear();
            abandoned = true;
            return;
        }
        result += QLatin1Char('[');
        (this->*appendContents)(container);
        result += QLatin1Char(']');
        Py_LeaveRecursiveCall();
    }

    void appendDictionary(PyObject *dictionary)
    {
        Py_ssize_t position = 0;
        PyObject *key = nullptr;
        PyObject *value = nullptr;
        while (!abandoned && PyDict_Next(dictionary, &position, &key, &value) != 0) {
            if (key == nullptr || value == nullptr)
                return;
            result += QLatin1Char(' ');
            append(key);
            result += QLatin1Char('=');
            append(value);
            result += QLatin1Char(' ');
        }
    }

    void appendList(PyObject *list)
    {
        for (Py_ssize_t i = 0; !abandoned && i < PyList_GET_SIZE(list); ++i) {
            append(PyList_GET_ITEM(list, i));
            result += QLatin1String(", "); // after the last element too, which is meant
        }
    }

    QString result;
    bool abandoned = false;
};

} // namespace

PyObject *toPython(const TarnItem &item, Conversion code)
{
    if (!isValid(item))
        return PyUnicode_FromString("error");
    QString text = latin1Text(fieldText(item.value));
    bool ok = false;
    switch (code) {
    case Conversion::Integer: {
        const int integer = text.toInt(&ok);
        if (ok)
            return PyLong_FromLong(integer);
        break;
    }
    case Conversion::FloatingPoint: {
        const double number = text.toDouble(&ok);
        if (ok)
            return PyFloat_FromDouble(number);
        break;
    }
    case Conversion::Boolean:
        text = text.toLower();
        if (text.isEmpty() || text == QLatin1String("false"))
            return truthValue(false);
        if (text == QLatin1String("true"))
            return truthValue(true);
        break;
    case Conversion::Text:
        return toPythonText(text);
    case Conversion::Automatic:
        break;
    }
    return readAutomatically(text);
}

PyObject *toPythonPair(const TarnItem &item, Conversion code)
{
    bool ok = false;
    const std::string_view digits = fieldText(item.timestamp);
    const double timestamp =
        QByteArray::fromRawData(digits.data(), static_cast<int>(digits.size())).toDouble(&ok);
    PyRef time(PyFloat_FromDouble(ok ? timestamp : std::numeric_limits<double>::quiet_NaN()));
    PyRef value(toPython(item, code));
    PyRef pair(PyList_New(2));
    if (!time || !value || !pair)
        return nullptr;
    PyList_SET_ITEM(pair.get(), 0, time.release());
    PyList_SET_ITEM(pair.get(), 1, value.release());
    return pair.release();
}

PyObject *toPythonText(const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    PyObject *string = PyUnicode_DecodeUTF8(bytes.constData(), bytes.size(), nullptr);
    if (string != nullptr || PyErr_ExceptionMatches(PyExc_UnicodeDecodeError) == 0)
        return string;
    // The system's encoding is another one; each of its bytes is still a character.
    PyErr_Clear();
    return PyUnicode_DecodeLatin1(bytes.constData(), bytes.size(), nullptr);
}

QString toValueText(PyObject *object)
{
    return ValueText::of(object);
}

int toInteger(PyObject *object)
{
    constexpr int NoInteger = -1;
    if (object == nullptr)
        return NoInteger;
    if (PyLong_Check(object))
        return toInteger32(object);
    if (!PyFloat_Check(object))
        return NoInteger;
    const double truncated = std::trunc(PyFloat_AS_DOUBLE(object));
    const bool fits =
        truncated >= std::numeric_limits<int>::min() && truncated <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(truncated) : NoInteger;
}

QVariant toVariant(PyObject *object)
{
    if (object == nullptr)
        return {};
    if (PyLong_Check(object))
        return toInteger32(object);
    if (PyFloat_Check(object))
        return PyFloat_AS_DOUBLE(object);
    return toValueText(object);
}

} // namespace orbclient
