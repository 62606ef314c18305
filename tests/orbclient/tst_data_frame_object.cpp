#include "orbclient/data_frame_object.h"

#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

#include <array>
#include <limits>

class TestDataFrameObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void isARecordOfNineMembers();
    void describesItsMembers_data();
    void describesItsMembers();
    void startsWithNothingSet_data();
    void startsWithNothingSet();
    void takesEveryMember_data();
    void takesEveryMember();
    void ignoresConstructorArguments_data();
    void ignoresConstructorArguments();
    void canBeSubclassed();
    void hasNoRoomForOtherAttributes();
    void printsItself_data();
    void printsItself();
    void isNeverReleased();

    void holdsTheRequest();
    void namesCommands_data();
    void namesCommands();
    void holdsLargeNumbers();
    void needsNoClient();
    void readsValues_data();
    void readsValues();
    void keepsAPlainValueAsItIs_data();
    void keepsAPlainValueAsItIs();

private:
    QString received(const OrbRequestItem &request, const QString &expression);

    PythonInterpreter python;
};

namespace
{

struct MemberRow
{
    const char *name;
    const char *docstring;
};

constexpr std::array<MemberRow, 9> Members = {{
    {"connection", "connection name"},
    {"line", "line index"},
    {"address", "address"},
    {"channel", "channel index"},
    {"command", "command"},
    {"item", "item"},
    {"value", "value"},
    {"unit", "unit"},
    {"rawJson", "raw Json string"},
}};

OrbRequestItem plainRequest()
{
    OrbRequestItem request;
    request.commandType = OrbRequestItem::SetItem;
    request.line = 1;
    request.address = 2;
    request.channel = 3;
    request.itemName = QStringLiteral("Control.voltageSet");
    request.value = QStringLiteral("100.5");
    request.unit = QStringLiteral("V");
    request.rawJson = QStringLiteral("{\"c\": 1}");
    return request;
}

/// A request whose value is the message as a whole.
OrbRequestItem jsonRequest(const QString &json)
{
    OrbRequestItem request = plainRequest();
    request.value = json;
    request.rawJson = json;
    return request;
}

} // namespace

/// Binds the frame of a request to "f" and tells what an expression makes of it.
QString TestDataFrameObject::received(const OrbRequestItem &request, const QString &expression)
{
    const PyRef frame(orbclient::newDataFrame(&python.client(), QStringLiteral("c1"), request));
    if (!frame)
        return QStringLiteral("no frame: ") + PythonInterpreter::takeException();
    python.bind(QStringLiteral("f"), frame.get());
    return python.eval(expression);
}

void TestDataFrameObject::initTestCase()
{
    QCOMPARE(python.exec(QStringLiteral(R"(
import sys, types
def members():
    return [n for n, m in vars(orbClient.dataFrame).items() if isinstance(m, types.MemberDescriptorType)]
class Derived(orbClient.dataFrame):
    pass
class Raising:
    def __str__(self): raise RuntimeError
    __repr__ = __int__ = __float__ = __str__
)")),
             QString());
}

void TestDataFrameObject::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestDataFrameObject::isARecordOfNineMembers()
{
    QCOMPARE(
        python.eval(QStringLiteral("members()")),
        QStringLiteral("['connection', 'line', 'address', 'channel', 'command', 'item', 'value', 'unit', "
                       "'rawJson']"));
    QCOMPARE(python.eval(QStringLiteral("[n for n in vars(orbClient.dataFrame) if n[0] != '_' "
                                        "and n not in members()]")),
             QStringLiteral("[]"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.dataFrame.__doc__")),
             QStringLiteral("'orbService data frame objects'"));
    QCOMPARE(QString::fromLatin1(orbclient::dataFrameType.tp_name), QStringLiteral("orbClient.dataFrame"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.dataFrame")),
             QStringLiteral("<class 'orbClient.dataFrame'>"));
    QVERIFY((orbclient::dataFrameType.tp_flags & Py_TPFLAGS_DICT_SUBCLASS) != 0);
    QVERIFY((orbclient::dataFrameType.tp_flags & Py_TPFLAGS_BASETYPE) != 0);
}

void TestDataFrameObject::describesItsMembers_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("docstring");

    for (const MemberRow &row : Members)
        QTest::newRow(row.name) << QString::fromLatin1(row.name) << QString::fromLatin1(row.docstring);
}

void TestDataFrameObject::describesItsMembers()
{
    QFETCH(QString, member);
    QFETCH(QString, docstring);

    QCOMPARE(python.eval(QStringLiteral("orbClient.dataFrame.%1.__doc__").arg(member)),
             QStringLiteral("'%1'").arg(docstring));
}

void TestDataFrameObject::startsWithNothingSet_data()
{
    QTest::addColumn<QString>("member");
    for (const MemberRow &row : Members)
        QTest::newRow(row.name) << QString::fromLatin1(row.name);
}

void TestDataFrameObject::startsWithNothingSet()
{
    QFETCH(QString, member);

    QCOMPARE(python.eval(QStringLiteral("orbClient.dataFrame().%1").arg(member)),
             QStringLiteral("AttributeError"));
    QCOMPARE(python.eval(QStringLiteral("hasattr(Derived(), '%1')").arg(member)), QStringLiteral("False"));
}

void TestDataFrameObject::takesEveryMember_data()
{
    startsWithNothingSet_data();
}

void TestDataFrameObject::takesEveryMember()
{
    QFETCH(QString, member);

    const QString statements = QStringLiteral(R"(
f = orbClient.dataFrame()
held = object()
f.%1 = held
same = f.%1 is held
others = [m for m in members() if m != "%1" and hasattr(f, m)]
f.%1 = "again"
again = f.%1
del f.%1
gone = not hasattr(f, "%1")
)");
    QCOMPARE(python.exec(QString(statements).replace(QLatin1String("%1"), member)), QString());
    QCOMPARE(python.eval(QStringLiteral("(same, others, again, gone)")),
             QStringLiteral("(True, [], 'again', True)"));
    QCOMPARE(python.exec(QStringLiteral("del f.%1").arg(member)), QStringLiteral("AttributeError"));
}

void TestDataFrameObject::ignoresConstructorArguments_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"", "1", "'c1', 2, 3", "*range(20)", "line=1", "nothing=1", "'a', value=2", "None"})
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
}

void TestDataFrameObject::ignoresConstructorArguments()
{
    QFETCH(QString, arguments);

    QCOMPARE(python.exec(QStringLiteral("f = orbClient.dataFrame(%1)").arg(arguments)), QString());
    QCOMPARE(python.eval(QStringLiteral("[m for m in members() if hasattr(f, m)]")), QStringLiteral("[]"));
    QCOMPARE(python.eval(QStringLiteral("type(f) is orbClient.dataFrame")), QStringLiteral("True"));
}

void TestDataFrameObject::canBeSubclassed()
{
    QCOMPARE(python.exec(QStringLiteral("d = Derived()\nd.item = 'a'\nd.extra = 5")), QString());
    QCOMPARE(python.eval(QStringLiteral("(str(d), d.extra)")), QStringLiteral("(':a=', 5)"));
}

void TestDataFrameObject::hasNoRoomForOtherAttributes()
{
    QCOMPARE(python.exec(QStringLiteral("orbClient.dataFrame().Line = 1")), QStringLiteral("AttributeError"));
    QCOMPARE(python.eval(QStringLiteral("orbClient.dataFrame().__dict__")), QStringLiteral("AttributeError"));
}

void TestDataFrameObject::printsItself_data()
{
    QTest::addColumn<QString>("statements");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *statements, const char *expected) {
        QTest::newRow(statements) << QString::fromLatin1(statements) << QString::fromUtf8(expected);
    };
    row("pass", ":=");
    row("f.command = 'getItem'", "getItem:=");
    row("f.item = 'Status.voltageMeasure'", ":Status.voltageMeasure=");
    row("f.value = 5", ":=5");
    row("f.unit = 'V'", ":=V");
    row("f.command, f.item, f.value, f.unit = 'setItem', 'Control.voltageSet', 100.5, 'V'",
        "setItem:Control.voltageSet=100.5V");
    row("f.connection, f.line, f.address, f.channel, f.rawJson = 'c1', 1, 2, 3, '{}'", ":=");
    row("f.value = [1, 2]", ":=[1, 2, ]");
    row("f.value = {'a': True}", ":=[ a=1 ]");
    row("f.value = None", ":=");
    row("f.value = Raising(); f.unit = Raising()", ":=");
    row("f.value = 0.1234567", ":=0.123457");
    row("f.value = f", ":=");
    row("f.value = []; f.value.append(f.value)", ":=");
    row("f.unit = '\\u00b5A'", ":=\u00b5A");
}

void TestDataFrameObject::printsItself()
{
    QFETCH(QString, statements);
    QFETCH(QString, expected);

    QCOMPARE(python.exec(QStringLiteral("f = orbClient.dataFrame()\n") + statements), QString());
    QCOMPARE(PythonInterpreter::textOf(python.evaluate(QStringLiteral("str(f)")).get()), expected);
    QCOMPARE(PythonInterpreter::textOf(python.evaluate(QStringLiteral("repr(f)")).get()), expected);
}

void TestDataFrameObject::isNeverReleased()
{
    QCOMPARE(python.exec(QStringLiteral(R"(
held = object()
f = orbClient.dataFrame()
f.value = held
before = sys.getrefcount(held)
del f
)")),
             QString());
    QCOMPARE(python.eval(QStringLiteral("sys.getrefcount(held) - before")), QStringLiteral("0"));
}

void TestDataFrameObject::holdsTheRequest()
{
    const QString every = QStringLiteral("[getattr(f, m) for m in members()]");
    QCOMPARE(received(plainRequest(), every),
             QStringLiteral("['c1', 1, 2, 3, 'setItem', 'Control.voltageSet', '100.5', 'V', '{\"c\": 1}']"));
    QCOMPARE(received(plainRequest(), QStringLiteral("str(f)")),
             QStringLiteral("'setItem:Control.voltageSet=100.5V'"));
    QCOMPARE(received(OrbRequestItem(), every), QStringLiteral("['c1', 0, 0, -1, '', '', '', '', '']"));
}

void TestDataFrameObject::namesCommands_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("expected");
    QTest::newRow("get") << static_cast<int>(OrbRequestItem::GetItem) << QStringLiteral("'getItem'");
    QTest::newRow("set") << static_cast<int>(OrbRequestItem::SetItem) << QStringLiteral("'setItem'");
    QTest::newRow("neither") << static_cast<int>(OrbRequestItem::Unknown) << QStringLiteral("''");
}

void TestDataFrameObject::namesCommands()
{
    QFETCH(int, type);

    OrbRequestItem request;
    request.commandType = static_cast<OrbRequestItem::CommandType>(type);
    QTEST(received(request, QStringLiteral("f.command")), "expected");
}

void TestDataFrameObject::holdsLargeNumbers()
{
    OrbRequestItem request;
    request.line = std::numeric_limits<quint32>::max();
    request.address = 3000000000U;
    request.channel = std::numeric_limits<qint32>::min();
    QCOMPARE(received(request, QStringLiteral("(f.line, f.address, f.channel)")),
             QStringLiteral("(4294967295, 3000000000, -2147483648)"));
}

void TestDataFrameObject::needsNoClient()
{
    const PyRef frame(orbclient::newDataFrame(nullptr, QStringLiteral("c2"), plainRequest()));
    python.bind(QStringLiteral("f"), frame.get());
    QCOMPARE(python.eval(QStringLiteral("(f.connection, f.value)")), QStringLiteral("('c2', '100.5')"));
}

void TestDataFrameObject::readsValues_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *json, const char *expected) {
        QTest::newRow(json) << QString::fromUtf8(json) << QString::fromUtf8(expected);
    };
    row(R"({"b":["x",1],"a":5})", "{'a': '', 'b': ['x', '']}");
    row(R"({"a":"x"})", "{'a': 'x'}");
    row(R"({ "z":"1", "B":"2", "a":"3", "A":"4", "10":"5", "9":"6" })",
        "{'10': '5', '9': '6', 'A': '4', 'B': '2', 'a': '3', 'z': '1'}");
    row(R"({"a":5,"b":5.5,"c":true,"d":false,"e":null,"f":{"g":"h"},"i":"j"})",
        "{'a': '', 'b': '', 'c': '', 'd': '', 'e': '', 'f': '', 'i': 'j'}");
    row(R"({"a":[]})", "{'a': []}");
    row(R"({"a":["x",1,true,null,["y"],{"z":"z"},"",2.5,"w"]})",
        "{'a': ['x', '', '', '', '', '', '', '', 'w']}");
    row(R"({"":""})", "{'': ''}");
    row("{}", "{}");
    row(" \n{\"a\" : \"b\"}\t ", "{'a': 'b'}");
    row(R"({"a":"x","a":"y"})", "{'a': 'y'}");
    row("{\"\u00e9\":\"\u03a9\"}", "{'\u00e9': '\u03a9'}");
    row(R"({"a":"\u20ac\n\"\\"})", "{'a': '\u20ac\\n\"\\\\'}");

    row("[1,2]", "'[1,2]'");
    row("[]", "'[]'");
    row(R"([{"a":"b"}])", R"('[{"a":"b"}]')");
    row(R"("text")", R"('"text"')");
    row("5", "'5'");
    row("true", "'true'");
    row("null", "'null'");
    row("", "''");
    row(" ", "' '");
    row("{", "'{'");
    row(R"({"a":})", R"('{"a":}')");
    row(R"({"a":"b"} and more)", R"('{"a":"b"} and more')");
    row("{'a':'b'}", R"("{'a':'b'}")");
    row(R"({"a":"b",})", R"('{"a":"b",}')");
}

void TestDataFrameObject::readsValues()
{
    QFETCH(QString, json);
    QFETCH(QString, expected);

    QCOMPARE(received(jsonRequest(json), QStringLiteral("f.value")), expected);
    QCOMPARE(PythonInterpreter::textOf(python.evaluate(QStringLiteral("f.rawJson")).get()), json);
}

void TestDataFrameObject::keepsAPlainValueAsItIs_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("rawJson");

    QTest::newRow("JSON of its own") << QStringLiteral(R"({"a":"b"})")
                                     << QStringLiteral(R"({"v":{"a":"b"}})");
    QTest::newRow("one blank apart") << QStringLiteral(R"({"a":"b"})") << QStringLiteral(R"({"a":"b"} )");
    QTest::newRow("nothing raw") << QStringLiteral(R"({"a":"b"})") << QString();
    QTest::newRow("nothing but raw") << QString() << QStringLiteral(R"({"a":"b"})");
    QTest::newRow("number") << QStringLiteral("5") << QStringLiteral(R"({"v":5})");
}

void TestDataFrameObject::keepsAPlainValueAsItIs()
{
    QFETCH(QString, value);
    QFETCH(QString, rawJson);

    OrbRequestItem request = plainRequest();
    request.value = value;
    request.rawJson = rawJson;
    QCOMPARE(received(request, QStringLiteral("f.value")), QStringLiteral("'%1'").arg(value));
    QCOMPARE(python.eval(QStringLiteral("f.rawJson")), QStringLiteral("'%1'").arg(rawJson));
}

QTEST_GUILESS_MAIN(TestDataFrameObject)

#include "tst_data_frame_object.moc"
