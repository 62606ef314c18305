#include "workbench/simulator/plant_file.h"

#include <QtTest>

using namespace simulator;

/// What a plant file is refused for: each text with the exact error.
class TestPlantFileErrors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refused_data();
    void refused();
    void tooLarge();
};

namespace
{

const QByteArray TextRule =
    "a text of 1 to 200 characters that all can be seen, or are blanks, not all of them blanks";
const QByteArray NameRule =
    "a name of 1 to 100 characters that all can be seen, or are blanks between others, "
    "without \"/\", \"*\" and \"<\"";

QByteArray repeated(const QByteArray &element, int count)
{
    return ("," + element).repeated(count).mid(1);
}

// A file whose module stands alone in its last line, from column 1 on.
QByteArray withModule(const QByteArray &module)
{
    return "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"modules\": [\n" + module + "]}]}]}";
}

QByteArray withFault(const QByteArray &fault)
{
    return "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"crates\": [{\"modules\": [\n"
           "{\"channels\": 8, \"voltage\": 1, \"current\": 1}]}]}]}], \"faults\": [\n"
        + fault + "]}";
}

} // namespace

void TestPlantFileErrors::refused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QByteArray &text, const QByteArray &error) {
        QTest::newRow(name) << text << QString::fromUtf8(error);
    };
    const QByteArray good = R"("channels": 2, "voltage": 1, "current": 1)";
    const char *const moduleFields =
        "address, count, channels, voltage, current, polarity, voltageLimit, currentLimit, "
        "voltageRamp, currentRamp, measurement, load, serial, firmware, release";

    row("empty", "", "p.json:1:1: this is not JSON: illegal value");
    row("syntax", "{\n  \"seed\": 1,\n  µ\n}", "p.json:3:4: this is not JSON: unterminated object");
    row("list", "[1]", "p.json:1:1: a list stands where a plant, which is an object, has to be");
    row("unknown field", withModule("{" + good + ", \"volts\": 5}"),
        qPrintable(QStringLiteral("p.json:2:45: a module has no field \"volts\"; it has: ")
                   + QLatin1String(moduleFields)));
    row("field of another object", "{\"controllers\": [{\"name\": \"a\", \"seed\": 5}]}",
        "p.json:1:32: a controller has no field \"seed\"; it has: name, text, address, local, latency, "
        "jitter, lines");
    row("field twice", withModule("{" + good + ",\n \"voltage\": 5}"),
        "p.json:3:2: \"voltage\" stands twice in this object, first in line 2");
    row("missing field", withModule(" {\"channels\": 2, \"voltage\": 1}"),
        "p.json:2:2: a module needs \"current\": above 0 to 1000 A, as a number or as a text with its unit");
    row("missing list", "{}", "p.json:1:1: a plant needs \"controllers\": a list of objects: controllers");
    row("no controllers", "{\"controllers\": []}", "p.json:1:17: a plant needs at least one controller");
    row("not an object", "{\"controllers\": [\n  7]}",
        "p.json:2:3: 7 stands where a controller, which is an object, has to be");
    row("not a list", "{\"controllers\": {}}",
        "p.json:1:17: \"controllers\" of a plant is an object; allowed is a list of objects: controllers");
    row("negative", withModule(R"({"channels": 2, "current": 1, "voltage": -5})"),
        "p.json:2:42: \"voltage\" of a module is -5; allowed is above 0 to 1000000 V, as a number or as a "
        "text with "
        "its unit");
    row("nothing", withModule(R"({"channels": 2, "current": 1, "voltage": 0})"),
        "p.json:2:42: \"voltage\" of a module is 0; allowed is above 0 to 1000000 V, as a number or as a "
        "text with "
        "its unit");
    row("too much", withModule("{" + good + R"(, "voltageLimit": 100.5})"),
        "p.json:2:61: \"voltageLimit\" of a module is 100.5; allowed is above 0 to 100 %, as a number or as "
        "a text "
        "with its unit");
    row("wrong unit", withModule(R"({"channels": 2, "current": "1 V", "voltage": 1})"),
        "p.json:2:28: \"current\" of a module is \"1 V\"; allowed is above 0 to 1000 A, as a number or as a "
        "text with "
        "its unit");
    row("no unit", withModule(R"({"channels": 2, "current": "1", "voltage": 1})"),
        "p.json:2:28: \"current\" of a module is \"1\"; allowed is above 0 to 1000 A, as a number or as a "
        "text with "
        "its unit");
    row("no number", withModule(R"({"channels": 2, "current": null, "voltage": 1})"),
        "p.json:2:28: \"current\" of a module is null; allowed is above 0 to 1000 A, as a number or as a "
        "text with "
        "its unit");
    row("part of a channel", withModule(R"({"channels": 2.5, "voltage": 1, "current": 1})"),
        "p.json:2:14: \"channels\" of a module is 2.5; allowed is a whole number from 1 to 1000");
    row("count as a text", withModule("{" + good + R"(, "count": "3"})"),
        "p.json:2:54: \"count\" of a module is \"3\"; allowed is a whole number from 1 to 1000");
    row("bool", "{\"controllers\": [{\"name\": \"a\", \"local\": 1}]}",
        "p.json:1:41: \"local\" of a controller is 1; allowed is true or false");
    row("behind letters of several bytes", "{\"controllers\": [{\"name\": \"µµ€\", \"local\": 1}]}",
        "p.json:1:43: \"local\" of a controller is 1; allowed is true or false");
    const auto name = [&row](const char *what, const QByteArray &json, const QByteArray &shown) {
        row(what, "{\"controllers\": [{\"name\": \"" + json + "\"}]}",
            "p.json:1:27: \"name\" of a controller is \"" + shown + "\"; allowed is " + NameRule);
    };
    const QByteArray replaced = QString(QChar::ReplacementCharacter).toUtf8();
    name("empty name", "", "");
    name("blank name", " ", " ");
    name("name that is half a character", "a\\ud800", "a?");
    name("name with the other half", "\\udc00b", "?b");
    name("name with a line feed", "a\\nb", "a" + replaced + "b");
    name("name with a zero", "a\\u0000b", "a" + replaced + "b");
    name("name that changes the direction", "a\\u202eb", "a" + replaced + "b");
    name("name with a line separator", "a\\u2028b", QString::fromUtf16(u"a\u2028b").toUtf8());
    name("name with a slash", "a/b", "a/b");
    name("name with an asterisk", "a*", "a*");
    name("name with a less-than sign", "a<b", "a<b");
    name("name with a blank at its end", "a ", "a ");
    name("name that is too long", QByteArray(101, 'a'), QByteArray(60, 'a') + "...");
    row("text of a controller is one, too", R"({"controllers": [{"name": "a", "text": "*"}]})",
        "p.json:1:40: \"text\" of a controller is \"*\"; allowed is " + NameRule);
    row("text with a tabulator", withModule("{" + good + R"(, "firmware": "a\tb"})"),
        "p.json:2:57: \"firmware\" of a module is \"a" + replaced + "b\"; allowed is " + TextRule);
    row("text of blanks", withModule("{" + good + R"(, "firmware": "   "})"),
        "p.json:2:57: \"firmware\" of a module is \"   \"; allowed is " + TextRule);
    row("text that is too long", withModule("{" + good + R"(, "release": ")" + QByteArray(201, '1') + "\"}"),
        "p.json:2:56: \"release\" of a module is \"" + QByteArray(60, '1') + "...\"; allowed is " + TextRule);
    row("not a number", withModule(R"({"channels": 2, "current": 1, "voltage": "nan V"})"),
        "p.json:2:42: \"voltage\" of a module is \"nan V\"; allowed is above 0 to 1000000 V, as a number or "
        "as a text with its unit");
    row("infinite", withModule(R"({"channels": 2, "current": 1, "voltage": "inf V"})"),
        "p.json:2:42: \"voltage\" of a module is \"inf V\"; allowed is above 0 to 1000000 V, as a number or "
        "as a text with its unit");
    row("beyond all numbers", withModule(R"({"channels": 2, "current": 1, "voltage": "1e999 V"})"),
        "p.json:2:42: \"voltage\" of a module is \"1e999 V\"; allowed is above 0 to 1000000 V, as a number "
        "or "
        "as a text with its unit");
    row("beyond all numbers, as a number", withModule(R"({"channels": 2, "current": 1, "voltage": 1e999})"),
        "p.json:2:47: this is not JSON: illegal number");
    row("choice", withModule("{" + good + R"(, "polarity": "both"})"),
        "p.json:2:57: \"polarity\" of a module is \"both\"; allowed is \"positive\" or \"negative\"");
    row("object", withModule("{" + good + R"(, "measurement": []})"),
        "p.json:2:60: \"measurement\" of a module is a list; allowed is an object: a measurement");
    row("object or list", withModule("{" + good + R"(, "load": true})"),
        "p.json:2:53: \"load\" of a module is true; allowed is a load, or a list of loads");
    row("within a load", withModule("{" + good + ", \"load\": [{},\n{\"resistance\": 0}]}"),
        "p.json:3:16: \"resistance\" of a load is 0; allowed is above 0 to 1e+18 Ohm, as a number or as a "
        "text with "
        "its unit");
    row("count of the only load", withModule("{" + good + R"(, "load": {"count": 2}})"),
        "p.json:2:63: \"count\" belongs to a load in a list; this one is the load of all channels");
    row("too few loads", withModule("{" + good + R"(, "load": [{}]})"),
        "p.json:2:53: the loads in this list make up 1 channels; the module has 2");
    row("module twice", withModule("{" + good + ", \"address\": 3},\n{" + good + ", \"address\": 3}"),
        "p.json:3:56: module 0.3 is there twice");
    row("module twice by its count",
        withModule("{\"count\": 2, " + good + "},\n {\"address\": 1, " + good + "}"),
        "p.json:3:14: module 0.1 is there twice");
    row("module in repeated crates",
        "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"crates\": [{\"count\": 2, \"modules\": "
        "[\n{\"address\": 1, "
            + good + "}]}]}]}]}",
        "p.json:2:13: module 0.1 is there twice");
    row("beyond the last module", withModule("{" + good + R"(, "address": 999, "count": 2})"),
        "p.json:2:56: module 0.1000 is beyond the highest number, 999");
    row("crate twice",
        "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"crates\": [{}, {\"address\": 1000}]}]}]}",
        "p.json:1:70: crate 0.1000 is there twice");
    row("crate with a module's address",
        "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"crates\": [{\"address\": 5}]}]}]}",
        "p.json:1:66: \"address\" of a crate is 5; allowed is a whole number from 1000 to 9999");
    row("line twice", "{\"controllers\": [{\"name\": \"a\", \"lines\": [{}, {\"line\": 0}]}]}",
        "p.json:1:55: line 0 is there twice");
    row("controller twice", "{\"controllers\": [{\"name\": \"a\"}, {\"name\": \"a\"}]}",
        "p.json:1:42: there are two controllers of the name \"a\"");
    row("text twice", "{\"controllers\": [{\"name\": \"a\"}, {\"name\": \"b\", \"text\": \"a\"}]}",
        "p.json:1:55: there are two controllers of the text \"a\"");
    row("text that is another's name",
        "{\"controllers\": [{\"name\": \"a\", \"text\": \"b\"}, {\"name\": \"c\", \"text\": \"a\"}]}",
        "p.json:1:68: there is a controller of the name \"a\" already");
    row("name that is another's text",
        "{\"controllers\": [{\"name\": \"a\", \"text\": \"b\"}, {\"name\": \"b\", \"text\": \"c\"}]}",
        "p.json:1:55: there is a controller of the text \"b\" already");
    row("address of a controller twice",
        "{\"controllers\": [{\"name\": \"a\"}, {\"name\": \"b\", \"address\": \"127.0.0.1:8080\"}]}",
        "p.json:1:58: there are two controllers at \"127.0.0.1:8080\"");
    row("no port", "{\"controllers\": [{\"name\": \"a\", \"address\": \"hall\"}]}",
        "p.json:1:43: \"address\" of a controller is \"hall\"; allowed is host:port, with a port from 1 to "
        "65535");
    row("two local ones",
        "{\"controllers\": [{\"name\": \"a\", \"local\": true}, {\"name\": \"b\", \"local\": true}]}",
        "p.json:1:71: \"a\" is the local controller already");
    row("too many channels", withModule(R"({"count": 201, "channels": 1000, "voltage": 1, "current": 1})"),
        "p.json:2:28: with this module the plant has more than 200000 channels");

    row("too many loads",
        withModule("{" + good + ", \"load\": [" + repeated("{\"count\": 1000}", 200000) + "]}"),
        "p.json:2:53: the loads in this list make up 200000000 channels; the module has 2");
    row("too many crates",
        "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"count\": 11, \"crates\": [\n{\"count\": "
        "1000}]}]}]}",
        "p.json:2:11: with these the plant has more than 10000 crates");
    row("too many crates one by one",
        "{\"controllers\": [{\"name\": \"a\", \"lines\": [{\"count\": 1000, \"crates\": ["
            + repeated("{}", 11) + "]}]}]}",
        "p.json:1:72: with these the plant has more than 10000 crates");
    row("too many controllers", "{\"controllers\": [" + repeated("{}", 101) + "]}",
        "p.json:1:17: there are 101 controllers; allowed are 100");
    row("too many faults",
        "{\"controllers\": [{\"name\": \"a\"}], \"faults\": ["
            + repeated(R"({"at": 1, "fault": "disconnect"})", 10001) + "]}",
        "p.json:1:44: there are 10001 faults; allowed are 10000");
    row("too many messages",
        "{\"controllers\": [{\"name\": \"a\"}], \"messages\": ["
            + repeated(R"({"at": 1, "object": "0.3", "item": "i"})", 10001) + "]}",
        "p.json:1:46: there are 10001 messages; allowed are 10000");
    row("serial numbers beyond the highest",
        withModule("{" + good + R"(, "serial": 4294967295, "count": 2})"),
        "p.json:2:55: with \"count\" 2 the serial numbers get beyond the highest, 4294967295");

    row("message without an item",
        "{\"controllers\": [{\"name\": \"a\"}], \"messages\": [\n{\"at\": 1, \"object\": \"0.3\"}]}",
        "p.json:2:1: a message needs \"item\": " + TextRule);
    const auto payload = [&row](const char *what, const QByteArray &value, const QByteArray &shown) {
        row(what,
            "{\"controllers\": [{\"name\": \"a\"}], \"messages\": [\n{\"at\": 1, \"object\": \"0.3\", "
            "\"item\": \"i\", \"value\": \""
                + value + "\"}]}",
            "p.json:2:50: \"value\" of a message is \"" + shown
                + "\"; allowed is any text of up to 10000 characters");
    };
    payload("value that is too long", QByteArray(10001, '1'), QByteArray(60, '1') + "...");
    payload("value that is half a character", "a\\ud800", "a?");
    row("message to nothing",
        "{\"controllers\": [{\"name\": \"a\"}], \"messages\": [\n{\"at\": 1, \"item\": \"i\", \"object\": "
        "\"3\"}]}",
        "p.json:2:34: \"object\" of a message is \"3\"; allowed is line.address or line.address.channel, "
        "such as "
        "\"0.3.7\"");
    row("message of no controller",
        "{\"controllers\": [{\"name\": \"a\"}], \"messages\": [\n{\"at\": 1, \"item\": \"i\", \"object\": "
        "\"0.3\", "
        "\"controller\": \"x\"}]}",
        "p.json:2:55: there is no controller \"x\"");

    row("no such fault", withFault(R"({"at": 1, "fault": "flood"})"),
        "p.json:3:20: there is no fault \"flood\"; there are: spark, short, openLoad, leak, externalInhibit, "
        "safetyLoopOpen, supplyFailure, overheating, needService, mainsFailure, crateSupplyFailure, "
        "batteryFailure, "
        "crateOverheating, disconnect, slowAnswers, dropAnswers, duplicateAnswers, reorderAnswers");
    row("fault without a time", withFault(R"({"fault": "disconnect"})"),
        "p.json:3:1: a fault needs \"at\": 0 to 1000000000 s, as a number or as a text with its unit");
    row("fault of nothing", withFault(R"({"at": 1, "fault": "spark"})"),
        "p.json:3:1: \"spark\" is the fault of a channel, and needs \"channel\": line.address.channel");
    row("fault of another level", withFault(R"({"at": 1, "fault": "disconnect", "module": "0.0"})"),
        "p.json:3:44: \"disconnect\" is the fault of a controller, and takes no \"module\"");
    row("fault of no channel", withFault(R"({"at": 1, "fault": "short", "channel": "0.0.8"})"),
        "p.json:3:40: there is no channel 0.0.8 on the controller \"a\"");
    row("fault of no module", withFault(R"({"at": 1, "fault": "needService", "module": "0.1"})"),
        "p.json:3:45: there is no module 0.1 on the controller \"a\"");
    row("fault of no crate", withFault(R"({"at": 1, "fault": "mainsFailure", "crate": "1.1000"})"),
        "p.json:3:45: there is no crate 1.1000 on the controller \"a\"");
    row("bad address", withFault(R"({"at": 1, "fault": "short", "channel": "0.3"})"),
        "p.json:3:40: \"channel\" of a fault is \"0.3\"; allowed is line.address.channel, such as \"0.3.7\"");
    row("address with a sign", withFault(R"({"at": 1, "fault": "short", "channel": "0.0.-1"})"),
        "p.json:3:40: \"channel\" of a fault is \"0.0.-1\"; allowed is line.address.channel, such as "
        "\"0.3.7\"");
    row("fault of no controller", withFault(R"({"at": 1, "fault": "disconnect", "controller": "x"})"),
        "p.json:3:48: there is no controller \"x\"");
    row("needless amount", withFault(R"({"at": 1, "fault": "short", "channel": "0.0.1", "amount": 1})"),
        "p.json:3:59: \"short\" takes no \"amount\"");
    row("part of a spark", withFault(R"({"at": 1, "fault": "spark", "channel": "0.0.1", "amount": 1.5})"),
        "p.json:3:59: \"amount\" of \"spark\" is 1.5; allowed is a whole number from 0 to 10000");
    row("too many sparks", withFault(R"({"at": 1, "fault": "spark", "channel": "0.0.1", "amount": 10001})"),
        "p.json:3:59: \"amount\" of \"spark\" is 10001; allowed is a whole number from 0 to 10000");
    row("slow by nothing", withFault(R"({"at": 1, "fault": "slowAnswers", "amount": 0})"),
        "p.json:3:45: \"amount\" of \"slowAnswers\" is 0; allowed is above 0 to 3600 s");
    row("needed amount", withFault(R"({"at": 1, "fault": "leak", "channel": "0.0.1"})"),
        "p.json:3:1: \"leak\" needs an \"amount\" above 0, in A");
}

void TestPlantFileErrors::refused()
{
    QFETCH(QByteArray, text);
    PlantLayout layout;
    QString error;
    QVERIFY(!PlantFile::parse(text, QStringLiteral("p.json"), layout, error));
    QTEST(error, "error");
    QVERIFY(layout.controllers.empty());
}

void TestPlantFileErrors::tooLarge()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("large.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(PlantFile::LargestFile + 1));
    PlantLayout layout;
    QString error;
    QVERIFY(!PlantFile::read(file.fileName(), layout, error));
    QCOMPARE(error, file.fileName() + QStringLiteral(": the file is larger than 16 MB"));
}

QTEST_APPLESS_MAIN(TestPlantFileErrors)
#include "tst_plant_file_errors.moc"
