#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

#include <array>

/// Objects whose members a script took away or filled with something else, and values that are none.
class TestBadMembers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void takesItsAddressFromTheMembersOfNow_data();
    void takesItsAddressFromTheMembersOfNow();
    void handsBadAddressesOn_data();
    void handsBadAddressesOn();
    void sendsOddValues_data();
    void sendsOddValues();
    void sendsLongValues();
    void readsOddTexts_data();
    void readsOddTexts();
    void survivesRandomMembers();

private:
    PythonInterpreter python;
};

void TestBadMembers::init()
{
    RecordingBackend &backend = python.backend();
    backend.setControllers({{QStringLiteral("c1"), QString()}});
    OrbItemId crate(OrbItemId::Crate);
    crate.address = 1000;
    backend.setCrates({crate});
    OrbItemId module(OrbItemId::Module);
    module.address = 2;
    backend.setModules({module});
    backend.setCrateModules({module});
    backend.setItem(QStringLiteral("c1"),
                    QStringLiteral("0.2.") + OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels(),
                    {QStringLiteral("6"), QString(), QStringLiteral("int"), 0});
    OrbRequestItem request;
    request.itemName = QStringLiteral("a");
    backend.setPassThroughMessages({request});
    QCOMPARE(python.exec(QStringLiteral(R"(
import random, types
connection = orbClient.findConnection("c1")
crate = connection.crates[0]
module = connection.modules[0]
channel = module.channels[5]
frame = connection.getNextPassThroughMessage()
class Raising:
    def __str__(self): raise RuntimeError
    __repr__ = __int__ = __index__ = __float__ = __bool__ = __hash__ = __iter__ = __len__ = __eq__ = __str__
    def __getattr__(self, name): raise RuntimeError
def itself():
    held = []
    held.append(held)
    return held
)")),
             QString());
    backend.clearCalls();
}

void TestBadMembers::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestBadMembers::takesItsAddressFromTheMembersOfNow_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *statement, const char *expected) {
        QTest::newRow(statement) << QString::fromLatin1(statement) << QString::fromUtf8(expected);
    };
    row("pass", "c1:0.2.5.Control.voltageSet");
    row("channel.line = 7", "c1:7.2.5.Control.voltageSet");
    row("channel.line = '7'", "c1:7.2.5.Control.voltageSet");
    row("channel.line = 7.0", "c1:7.2.5.Control.voltageSet");
    row("channel.line = True", "c1:1.2.5.Control.voltageSet");
    row("channel.module = 2**32 + 9", "c1:0.9.5.Control.voltageSet");
    row("channel.index = 4", "c1:0.2.4.Control.voltageSet");
    row("channel.connection = 'h\\u00e9'", "h\u00e9:0.2.5.Control.voltageSet");
    row("channel.connection = 5", "5:0.2.5.Control.voltageSet");
    row("channel.connection = None", ":0.2.5.Control.voltageSet");
    row("channel.connection = connection", ":0.2.5.Control.voltageSet");
    row("channel.connection = itself()", ":0.2.5.Control.voltageSet");
    row("channel.connection = Raising()", ":0.2.5.Control.voltageSet");
    row("del channel.connection", ":0.2.5.Control.voltageSet");
}

void TestBadMembers::takesItsAddressFromTheMembersOfNow()
{
    QFETCH(QString, statement);
    QFETCH(QString, expected);

    QCOMPARE(python.exec(statement), QString());
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet(1)")), QStringLiteral("'ok'"));
    const QVector<RecordedCall> writes = python.backend().callsOf(QStringLiteral("writeItem"));
    QCOMPARE(writes.size(), 1);
    QCOMPARE(writes.first().arguments, (QStringList{expected, QStringLiteral("1")}));

    python.exec(QStringLiteral("channel.getControlVoltageSet()"));
    const QVector<RecordedCall> reads = python.backend().callsOf(QStringLiteral("readItem"));
    QCOMPARE(reads.size(), 1);
    QCOMPARE(reads.first().arguments, QStringList{expected});
}

void TestBadMembers::handsBadAddressesOn_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("write");
    QTest::addColumn<QString>("path");

    const QVector<std::array<const char *, 3>> places{
        {"crate.line", "crate.setControlPower(1)", "%1.1000.Control.power"},
        {"crate.address", "crate.setControlPower(1)", "0.%1.Control.power"},
        {"module.line", "module.setControlClearAll(1)", "%1.2.Control.clearAll"},
        {"module.address", "module.setControlClearAll(1)", "0.%1.Control.clearAll"},
        {"channel.line", "channel.setControlVoltageSet(1)", "%1.2.5.Control.voltageSet"},
        {"channel.module", "channel.setControlVoltageSet(1)", "0.%1.5.Control.voltageSet"},
        {"channel.index", "channel.setControlVoltageSet(1)", "0.2.%1.Control.voltageSet"},
    };
    const QString empty = QLatin1String("");
    const QVector<QPair<const char *, QString>> values{
        {"", empty}, // the member is deleted
        {"None", empty},
        {"'x'", QStringLiteral("x")},
        {"'1.2'", QStringLiteral("1.2")},
        {"''", empty},
        {"-1", QStringLiteral("-1")},
        {"1.5", QStringLiteral("1.5")},
        {"[1]", QStringLiteral("[1, ]")},
        {"{'a': 1}", QStringLiteral("[ a=1 ]")},
        {"(1,)", empty},
        {"Raising()", empty},
        {"itself()", empty},
        {"channel", empty},
        {"b'1'", empty},
        {"'\\ud800'", QString(QChar(0xd800))},
        {"'1\\0'", QString::fromLatin1("1\0", 2)},
        {"float('nan')", QStringLiteral("nan")},
        {"'9' * 1000", QString(1000, QLatin1Char('9'))},
    };
    for (const auto &place : places) {
        for (const auto &[value, text] : values)
            QTest::addRow("%s = %s", place[0], value)
                << QString::fromLatin1(place[0]) << QString::fromLatin1(value)
                << QString::fromLatin1(place[1]) << QString::fromLatin1(place[2]).arg(text);
    }
}

void TestBadMembers::handsBadAddressesOn()
{
    QFETCH(QString, member);
    QFETCH(QString, value);
    QFETCH(QString, write);
    QFETCH(QString, path);

    // What the client makes of such a path is its own business; it must be this one.
    const bool taken =
        python.client().setItem(QStringLiteral("c1"), path, QStringLiteral("1")) == TarnResult::Success;
    const auto written = [this] {
        QStringList all;
        const QVector<RecordedCall> writes = python.backend().callsOf(QStringLiteral("writeItem"));
        for (const RecordedCall &call : writes)
            all.append(call.arguments);
        return all;
    };
    const QStringList expected = written();
    python.backend().clearCalls();

    QCOMPARE(python.exec(value.isEmpty() ? QStringLiteral("del ") + member
                                         : member + QStringLiteral(" = ") + value),
             QString());
    QCOMPARE(python.eval(write), taken ? QStringLiteral("'ok'") : QStringLiteral("'error'"));
    QCOMPARE(written(), expected);
    // Such objects still have a text.
    QCOMPARE(python.eval(
                 QStringLiteral("type(str(%1)), type(repr(%1))").arg(member.section(QLatin1Char('.'), 0, 0))),
             QStringLiteral("(<class 'str'>, <class 'str'>)"));
}

void TestBadMembers::sendsOddValues_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *value, const QString &expected) {
        QTest::newRow(value) << QString::fromLatin1(value) << expected;
    };
    const QString empty = QLatin1String("");
    row("2**31", QStringLiteral("-2147483648"));
    row("2**32 + 5", QStringLiteral("5"));
    row("-2**63 - 1", QStringLiteral("-1"));
    row("10**400", QStringLiteral("0"));
    row("float('nan')", QStringLiteral("nan"));
    row("float('inf')", QStringLiteral("inf"));
    row("-float('inf')", QStringLiteral("-inf"));
    row("1e308 * 10", QStringLiteral("inf"));
    row("'\\ud800'", QString(QChar(0xd800)));
    row("'a\\udfffb'", QLatin1Char('a') + QString(QChar(0xdfff)) + QLatin1Char('b'));
    row("'a\\0b'", QString::fromLatin1("a\0b", 3));
    row("'\\0'", QString::fromLatin1("\0", 1));
    row("itself()", empty);
    row("[itself(), 1]", empty);
    row("{'a': itself()}", empty);
    row("Raising()", empty);
    row("[Raising(), 1]", QStringLiteral("[, 1, ]"));
    row("Raising", empty);
    row("connection", empty);
    row("crate", empty);
    row("module", empty);
    row("channel", empty);
    row("frame", empty);
    row("[channel, frame]", QStringLiteral("[, , ]"));
    row("{'c': channel, 'd': 1}", QStringLiteral("[ c=  d=1 ]"));
    row("b'\\xff'", empty);
    row("None", empty);
    row("...", empty);
}

void TestBadMembers::sendsOddValues()
{
    QFETCH(QString, value);
    QFETCH(QString, expected);

    const QStringList methods{
        QStringLiteral("connection.setControlReboot"), QStringLiteral("crate.setControlPower"),
        QStringLiteral("module.setControlClearAll"), QStringLiteral("channel.setControlVoltageSet")};
    for (const QString &method : methods) {
        python.backend().clearCalls();
        QCOMPARE(python.eval(QStringLiteral("%1(%2)").arg(method, value)), QStringLiteral("'ok'"));
        const QVector<RecordedCall> writes = python.backend().callsOf(QStringLiteral("writeItem"));
        QCOMPARE(writes.size(), 1);
        QCOMPARE(writes.first().arguments.at(1), expected);
    }
}

void TestBadMembers::sendsLongValues()
{
    constexpr int Length = 5000000;
    QCOMPARE(python.exec(QStringLiteral("long = 'v' * %1").arg(Length)), QString());
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet(long)")), QStringLiteral("'ok'"));
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet([long])")), QStringLiteral("'ok'"));
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet('w')")), QStringLiteral("'ok'"));
    const QVector<RecordedCall> writes = python.backend().callsOf(QStringLiteral("writeItem"));
    QCOMPARE(writes.size(), 3);
    QVERIFY(writes.at(0).arguments.at(1) == QString(Length, QLatin1Char('v')));
    QVERIFY(writes.at(1).arguments.at(1)
            == QLatin1Char('[') + QString(Length, QLatin1Char('v')) + QLatin1String(", ]"));
    QCOMPARE(writes.at(2).arguments.at(1), QStringLiteral("w"));

    QCOMPARE(python.exec(QStringLiteral("channel.connection = long")), QString());
    QCOMPARE(python.eval(QStringLiteral("channel.setControlVoltageSet(1)")), QStringLiteral("'ok'"));
    QCOMPARE(python.eval(QStringLiteral("channel.getControlVoltageSet()")), QStringLiteral("'error'"));
    QCOMPARE(python.exec(QStringLiteral("frame.value = long")), QString());
    QCOMPARE(python.eval(QStringLiteral("len(str(frame)) > len(long)")), QStringLiteral("True"));
    QCOMPARE(python.eval(QStringLiteral("connection.sendMessage(frame)")), QStringLiteral("'ok'"));
}

void TestBadMembers::readsOddTexts_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no UTF-8") << QStringLiteral("\u00ff\u00fe") << QStringLiteral("'\u00ff\u00fe'");
    QTest::newRow("as long as its field")
        << QString(128, QLatin1Char('y')) << QStringLiteral("'%1'").arg(QString(128, QLatin1Char('y')));
    QTest::newRow("longer than its field")
        << QString(100000, QLatin1Char('y')) << QStringLiteral("'%1'").arg(QString(128, QLatin1Char('y')));
    QTest::newRow("digits to the end")
        << QString(127, QLatin1Char('0')) + QLatin1Char('7') << QStringLiteral("7.0");
    QTest::newRow("ends at a NUL") << QString::fromLatin1("5\0009", 3) << QStringLiteral("5.0");
    QTest::newRow("no number that fits") << QStringLiteral("1e400") << QStringLiteral("'1e400'");
}

void TestBadMembers::readsOddTexts()
{
    QFETCH(QString, value);

    // A unit that fills its field too follows at once.
    python.backend().setItem(QStringLiteral("c1"), QStringLiteral("0.2.5.Control.voltageSet"),
                             {value, QString(64, QLatin1Char('9')), QString(37, QLatin1Char('9')), 0});
    QTEST(python.eval(QStringLiteral("channel.getControlVoltageSet()")), "expected");
}

void TestBadMembers::survivesRandomMembers()
{
    // Whatever stands in the members, a getter gives an object, a setter a result, and nothing is raised.
    const QString statements = QStringLiteral(R"(
chooser = random.Random(7)
odd = [lambda: 1, lambda: -1, lambda: 2**40, lambda: True, lambda: 1.5, lambda: float("nan"), lambda: "1",
       lambda: "c1", lambda: "", lambda: "\ud800\0", lambda: "x" * 5000, lambda: None, lambda: (1,), lambda: [1, "a"],
       itself, lambda: {"a": {"b": 1}}, Raising, lambda: Raising, lambda: orbClient.channel(), lambda: channel,
       lambda: connection, lambda: frame, lambda: object(), lambda: b"1", lambda: orbClient.dataFrame()]
def members(kind):
    return [n for n, m in vars(kind).items() if isinstance(m, types.MemberDescriptorType)]
def disturb(made):
    for name in members(type(made)):
        action = chooser.randrange(3)
        if action == 0:
            setattr(made, name, chooser.choice(odd)())
        elif action == 1 and hasattr(made, name):
            delattr(made, name)
results = set()
unexpected = []
for turn in range(300):
    for source in (connection, crate, module, channel, frame):
        made = type(source)()
        for name in members(type(source)):
            if hasattr(source, name):
                setattr(made, name, getattr(source, name))
        for subject in (made, source) if turn > 250 else (made,):
            disturb(subject)
            texts = [str(subject), repr(subject)]
            names = [n for n in dir(subject) if n.startswith(("get", "set"))]
            for name in chooser.sample(names, min(len(names), 12)):
                arguments = (chooser.choice(odd)(),) if name.startswith("set") else ()
                result = getattr(subject, name)(*arguments)
                if name.startswith("set") and result not in ("ok", "error"):
                    unexpected.append((name, result))
                if type(result) not in (str, float, int, bool, list, orbClient.dataFrame):
                    unexpected.append((name, type(result)))
                results.add(type(result).__name__)
    connection.sendMessage(frame)
    connection.sendMessageList([frame, chooser.choice(odd)()])
)");
    QCOMPARE(python.exec(statements), QString());
    QCOMPARE(python.eval(QStringLiteral("unexpected")), QStringLiteral("[]"));
    QCOMPARE(python.eval(QStringLiteral("results >= {'str', 'list'}")), QStringLiteral("True"));
    QVERIFY(!python.backend().callsOf(QStringLiteral("writeItem")).isEmpty());
}

QTEST_GUILESS_MAIN(TestBadMembers)

#include "tst_bad_members.moc"
