#include "tests/examples/script_bench.h"

#include <QtTest>

#include <memory>

namespace
{

// Calls every method that reads, and then every method that writes with one value after the other, each object of a
// fresh system; what is not as it should be is listed.
const char Smoke[] = R"(
import orbClient

VALUES = [1, 0, True, 2.5, -1, 1e300, float("nan"), 2 ** 70, "1", "", 100, "http", "x" * 1000, None, [1, "a"], {"a": 1},
          orbClient.dataFrame()]


def methods(kind, start):
    return [name for name, value in vars(kind).items()
            if name.startswith(start) and type(value).__name__ == "method_descriptor"]


def item_methods(kind, start):
    groups = tuple(start + group for group in ("Control", "Setup", "Status", "Event", "Error"))
    return [name for name in methods(kind, start) if name.startswith(groups)]


def find(kind):
    connection = orbClient.findConnection("local")
    module = connection.modules[2]
    return {"connection": connection, "crate": connection.crates[0], "module": module,
            "channel": module.channels[1]}[kind]


def read(kind):
    target = find(kind)
    names = item_methods(type(target), "get")
    for name in names:
        result = getattr(target, name)()
        is_value = isinstance(result, (bool, int, float, str, list))
        if not is_value or result == "error" or result == [] or "error" in str(result):
            print(kind, name, "gives", repr(result))
    return len(names)


def write(kind, name):
    target = find(kind)
    for value in VALUES:
        result = getattr(target, name)(value)
        if result not in ("ok", "error"):
            print(kind, name, repr(value)[:20], "gives", repr(result))
        results.add(result)
)";

} // namespace

/// Every method of every object type against the simulated service.
class TestScriptingSmoke : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { bench->renew(); }
    void cleanupTestCase() { bench.reset(); }

    void readsEveryItem_data();
    void readsEveryItem();
    void writesEveryItem_data();
    void writesEveryItem();
    void writesWhatIsRead();
    void writesMasksAsText();
    void connectsAndDisconnects();
    void listsWhatThereIs();
    void sendsRawCommands();
    void measuresWithATimestamp();

private:
    ScriptBench::Outcome run(const QString &text);

    std::unique_ptr<ScriptBench> bench;
};

void TestScriptingSmoke::initTestCase()
{
    bench = std::make_unique<ScriptBench>();
}

ScriptBench::Outcome TestScriptingSmoke::run(const QString &text)
{
    return bench->runText(QLatin1String(Smoke) + text);
}

void TestScriptingSmoke::readsEveryItem_data()
{
    QTest::addColumn<int>("getters");
    QTest::newRow("connection") << 22;
    QTest::newRow("crate") << 23;
    QTest::newRow("module") << 33;
    QTest::newRow("channel") << 94;
}

void TestScriptingSmoke::readsEveryItem()
{
    QFETCH(int, getters);
    const ScriptBench::Outcome outcome =
        run(QStringLiteral("print(read('%1'), 'getters')").arg(QLatin1String(QTest::currentDataTag())));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("%1 getters\n").arg(getters));
    QCOMPARE(bench->faults().writes(), QStringList());
}

void TestScriptingSmoke::writesEveryItem_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("name");
    for (const char *kind : {"connection", "crate", "module", "channel"}) {
        const QString names =
            run(QStringLiteral("print(*item_methods(orbClient.%1, 'set'))").arg(QLatin1String(kind))).output;
        QVERIFY2(names.startsWith(QStringLiteral("setControl")), qPrintable(names));
        const QStringList list = names.trimmed().split(QLatin1Char(' '));
        for (const QString &name : list)
            QTest::addRow("%s.%s", kind, qPrintable(name)) << QString::fromLatin1(kind) << name;
    }
}

void TestScriptingSmoke::writesEveryItem()
{
    QFETCH(QString, kind);
    QFETCH(QString, name);
    const ScriptBench::Outcome outcome =
        run(QStringLiteral("results = set()\nwrite('%1', '%2')\nprint(*sorted(results))").arg(kind, name));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("error ok\n")); // some values fit, some do not
}

void TestScriptingSmoke::writesWhatIsRead()
{
    const ScriptBench::Outcome outcome = run(QStringLiteral(R"(
def write_back(kind):
    target = find(kind)
    setters = item_methods(type(target), "set")
    pairs = [(name, "g" + name[1:]) for name in setters if hasattr(target, "g" + name[1:])]
    for setter, getter in pairs:
        before = getattr(target, getter)()
        result = getattr(target, setter)(before)
        after = getattr(target, getter)()
        if result != "ok" or after != before:
            print(kind, setter, repr(before), result, repr(after))
    return len(pairs)

for kind in ("connection", "crate", "module", "channel"):
    print(write_back(kind), "pairs")
)"));
    QCOMPARE(outcome.error, QString());
    // A mask is read as a float, and six digits of a float do not hold all its bits: refused, not rounded.
    QCOMPARE(outcome.output,
             QStringLiteral("2 pairs\n1 pairs\n"
                            "module setControlModuleEventMask 4294967295.0 error 4294967295.0\n"
                            "module setControlModuleChannelEventMask 4294967295.0 error 4294967295.0\n"
                            "9 pairs\n"
                            "channel setControlChannelEventMask 4294967295.0 error 4294967295.0\n"
                            "24 pairs\n"));
}

void TestScriptingSmoke::writesMasksAsText()
{
    const ScriptBench::Outcome outcome = run(QStringLiteral(R"(
channel = find("channel")
mask = channel.getControlChannelEventMask()
print(channel.setControlChannelEventMask(int(mask)), channel.setControlChannelEventMask(str(int(mask) - 1)))
)"));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("error ok\n"));
    QCOMPARE(bench->read(QStringLiteral("local:0.2.1.Control.channelEventMask")),
             QStringLiteral("4294967294"));
}

void TestScriptingSmoke::connectsAndDisconnects()
{
    const ScriptBench::Outcome outcome = bench->runText(QStringLiteral(R"(
import orbClient
second = orbClient.connect("second", "127.0.0.1:8081")
print(second, len(second.modules), second.getStatusConnectedClients())
third = orbClient.scriptConnect("third", "127.0.0.1:8080", "ramp.py", "42", "operator", "secret")
print(third, len(third.crates), third.getStatusSessionId())
print(sorted(map(str, orbClient.getConnections())), sorted(map(str, orbClient.getConnections(0))))
print(orbClient.connect("second", "127.0.0.1:8081"), orbClient.connect("", "here"))
print(second.disconnect(), second.disconnect(), orbClient.findConnection("second"))
print(second.getStatusHeartBeat(), second.getModules())
)"));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output,
             QStringLiteral("second 1 2\n"
                            "third 1 42\n"
                            "['bench', 'local', 'second', 'third'] ['bench', 'second', 'third']\n"
                            "error error\n"
                            "ok error error\n"
                            "error []\n"));
    QCOMPARE(bench->service().connectionScript(QStringLiteral("third")), QStringLiteral("ramp.py"));
}

void TestScriptingSmoke::listsWhatThereIs()
{
    const ScriptBench::Outcome outcome = bench->runText(QStringLiteral(R"(
import orbClient
local = orbClient.findConnection("local")
print(local.getCrates(), local.getModules(), local.crates[0].modules)
print(local.modules[0].channels, [len(module.channels) for module in local.modules])
print(orbClient.getItem("local", "0.2.Status.serialNumber"), orbClient.getItem("local", "0.9.Status.serialNumber"))
print(orbClient.setItem("local", "0.2.1.Control.voltageSet", "10"), local.modules[2].channels[1].getControlVoltageSet())
print(orbClient.setDebugLevel(1), orbClient.setDebugLevel(7), orbClient.setDebugLevel(0))
)"));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output,
             QStringLiteral("[0.1000] [0.0, 0.1, 0.2, 0.3] [0.0, 0.1, 0.2, 0.3]\n"
                            "[0.0.0, 0.0.1, 0.0.2, 0.0.3, 0.0.4, 0.0.5, 0.0.6, 0.0.7] [8, 12, 16, 16]\n"
                            "('0.2.Status.serialNumber', '480103') error\n"
                            "ok 10.0\n"
                            "ok error ok\n"));
}

void TestScriptingSmoke::sendsRawCommands()
{
    const ScriptBench::Outcome outcome = bench->runText(QStringLiteral(R"(
import orbClient
local = orbClient.findConnection("local")
get = '{"i":"1","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"2","c":"1"},"i":"Control.on","v":"","u":""}}],"r":"websocket"}'
print(local.rawCommand(get))
print(local.rawCommand("nonsense") not in ("ok", "error", ""))
)"));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.output, QStringLiteral("ok\nTrue\n"));
}

void TestScriptingSmoke::measuresWithATimestamp()
{
    bench->letTimePass(2.5);
    const ScriptBench::Outcome outcome = bench->runText(QStringLiteral(R"(
import orbClient
channel = orbClient.findConnection("local").modules[0].channels[0]
print(channel.getStatusVoltageMeasureWithTimestamp(), channel.getStatusVoltageMeasure())
)"));
    QCOMPARE(outcome.error, QString());
    const simulator::SteppedClock zero;
    QCOMPARE(outcome.output, QStringLiteral("[%1, 0.0] 0.0\n").arg(zero.startedAt() + 2.5, 0, 'f', 1));
}

QTEST_GUILESS_MAIN(TestScriptingSmoke)
#include "tst_scripting_smoke.moc"
