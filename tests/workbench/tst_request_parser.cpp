#include "workbench/simulator/request_parser.h"

#include <QtTest>

using namespace simulator;

class TestRequestParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAGet();
    void readsASet();
    void readsPlaces_data();
    void readsPlaces();
    void readsValues_data();
    void readsValues();
    void keepsTheOrderOfCommands();
    void fieldsThatMayBeMissing();
    void refuses_data();
    void refuses();
    void saysWhereItIsMalformed_data();
    void saysWhereItIsMalformed();
    void survivesAnything_data();
    void survivesAnything();
    void survivesEveryCutAndEveryChange();
};

namespace
{

// As the command builder writes it.
const char Get[] =
    R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"4","c":"1"},)"
    R"("i":"Status.voltageMeasure","v":"","u":""}}],"r":"websocket"})";

QString get()
{
    return QString::fromLatin1(Get);
}

QString withPlace(const char *place)
{
    return QStringLiteral(R"({"t":"request","c":[{"c":"getItem","p":{"p":%1,"i":"X"}}]})")
        .arg(QLatin1String(place));
}

QString withValue(const char *value)
{
    return QStringLiteral(R"({"t":"request","c":[{"c":"setItem","p":{"p":{},"i":"X","v":%1,"u":"V"}}]})")
        .arg(QLatin1String(value));
}

bool parses(const QString &request)
{
    QVector<RequestCommand> commands;
    QString error;
    const bool isGood = RequestParser::parse(request, commands, error);
    // Either commands or an error, never both and never neither.
    return isGood && !commands.isEmpty() && error.isEmpty();
}

QString refusal(const QString &request)
{
    QVector<RequestCommand> commands;
    QString error;
    const bool isGood = RequestParser::parse(request, commands, error);
    return isGood || !commands.isEmpty() ? QStringLiteral("taken as good") : error;
}

} // namespace

Q_DECLARE_METATYPE(OrbItemId::Type)

void TestRequestParser::readsAGet()
{
    QVector<RequestCommand> commands;
    QString error;
    QVERIFY2(RequestParser::parse(get(), commands, error), qPrintable(error));
    QCOMPARE(commands.size(), 1);
    const RequestCommand &command = commands.constFirst();
    QCOMPARE(command.kind, RequestCommand::GetItem);
    QCOMPARE(command.object.level, OrbItemId::Channel);
    QCOMPARE(command.object.line, 0u);
    QCOMPARE(command.object.address, 4u);
    QCOMPARE(command.object.channel, 1);
    QCOMPARE(command.item, QStringLiteral("Status.voltageMeasure"));
}

void TestRequestParser::readsASet()
{
    QString request = get();
    request.replace(QStringLiteral("getItem"), QStringLiteral("setItem"));
    request.replace(QStringLiteral(R"("v":"","u":"")"), QStringLiteral(R"("v":"1.5","u":"kV")"));
    QVector<RequestCommand> commands;
    QString error;
    QVERIFY2(RequestParser::parse(request, commands, error), qPrintable(error));
    QCOMPARE(commands.constFirst().kind, RequestCommand::SetItem);
    QCOMPARE(commands.constFirst().value, QStringLiteral("1.5"));
    QCOMPARE(commands.constFirst().unit, QStringLiteral("kV"));
}

void TestRequestParser::readsPlaces_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<OrbItemId::Type>("level");
    QTest::addColumn<quint32>("line");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<qint32>("channel");
    const auto row = [](const char *name, const char *place, OrbItemId::Type level, quint32 line,
                        quint32 address, qint32 channel) {
        QTest::newRow(name) << QByteArray(place) << level << line << address << channel;
    };
    row("system", R"({"l":"","a":"","c":""})", OrbItemId::System, 0, 0, -1);
    row("system, fields missing", "{}", OrbItemId::System, 0, 0, -1);
    row("line", R"({"l":"3","a":"","c":""})", OrbItemId::Line, 3, 0, -1);
    row("module", R"({"l":"0","a":"999","c":""})", OrbItemId::Module, 0, 999, -1);
    row("crate", R"({"l":"0","a":"1000","c":""})", OrbItemId::Crate, 0, 1000, -1);
    row("channel", R"({"l":"1","a":"2","c":"15"})", OrbItemId::Channel, 1, 2, 15);
    row("numbers", R"({"l":1,"a":2,"c":15})", OrbItemId::Channel, 1, 2, 15);
    row("blanks", R"({"l":" 1 ","a":" 2","c":"  "})", OrbItemId::Module, 1, 2, -1);
    row("leading zeros", R"({"l":"00","a":"004"})", OrbItemId::Module, 0, 4, -1);
    row("largest", R"({"l":4294967295,"a":"4294967295"})", OrbItemId::Crate, 4294967295u, 4294967295u, -1);
}

void TestRequestParser::readsPlaces()
{
    QFETCH(QByteArray, place);
    QVector<RequestCommand> commands;
    QString error;
    QVERIFY2(RequestParser::parse(withPlace(place.constData()), commands, error), qPrintable(error));
    const ObjectAddress &object = commands.constFirst().object;
    QTEST(object.level, "level");
    QTEST(object.line, "line");
    QTEST(object.address, "address");
    QTEST(object.channel, "channel");
}

void TestRequestParser::readsValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("text") << QByteArray(R"("12 x")") << QStringLiteral("12 x");
    QTest::newRow("empty text") << QByteArray(R"("")") << QString();
    QTest::newRow("whole number") << QByteArray("4711") << QStringLiteral("4711");
    QTest::newRow("whole number with exponent") << QByteArray("1e6") << QStringLiteral("1000000");
    QTest::newRow("fraction") << QByteArray("-0.25") << QStringLiteral("-0.25");
    QTest::newRow("true") << QByteArray("true") << QStringLiteral("1");
    QTest::newRow("false") << QByteArray("false") << QStringLiteral("0");
}

void TestRequestParser::readsValues()
{
    QFETCH(QByteArray, value);
    QVector<RequestCommand> commands;
    QString error;
    QVERIFY2(RequestParser::parse(withValue(value.constData()), commands, error), qPrintable(error));
    QTEST(commands.constFirst().value, "text");
}

void TestRequestParser::keepsTheOrderOfCommands()
{
    QStringList list;
    for (int i = 0; i < 100; ++i)
        list << QStringLiteral(R"({"c":"getItem","p":{"p":{},"i":"Item%1"}})").arg(i);
    QVector<RequestCommand> commands;
    QString error;
    QVERIFY(RequestParser::parse(
        QStringLiteral(R"({"t":"request","c":[%1]})").arg(list.join(QLatin1Char(','))), commands, error));
    QCOMPARE(commands.size(), 100);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(commands.at(i).item, QStringLiteral("Item%1").arg(i));
}

void TestRequestParser::fieldsThatMayBeMissing()
{
    QVERIFY(parses(QStringLiteral(R"({"t":"request","c":[{"c":"getItem","p":{"p":{},"i":"X"}}]})")));
    QVERIFY(parses(QStringLiteral(R"({"t":"request","c":[{"c":"setItem","p":{"p":{},"i":"X","v":"1"}}]})")));
}

void TestRequestParser::refuses_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QString &request, const char *text) {
        QTest::newRow(name) << request << QString::fromLatin1(text);
    };
    const auto changed = [](const char *from, const char *to) {
        return get().replace(QLatin1String(from), QLatin1String(to));
    };
    row("array", QStringLiteral("[]"), "not a request: it is an array; allowed: an object");
    row("empty object", QStringLiteral("{}"), "not a request: t is missing; allowed: \"request\"");
    row("other type", changed("\"t\":\"request\"", "\"t\":\"reply\""),
        "not a request: t is \"reply\"; allowed: \"request\"");
    row("session is a number", changed("\"<session_id>\"", "5"), "not a request: i is 5; allowed: a text");
    row("other route", changed("websocket", "pigeon"),
        "not a request: r is \"pigeon\"; allowed: \"websocket\"");
    row("no commands", QStringLiteral(R"({"t":"request"})"),
        "not a request: c is missing; allowed: an array of one or more commands");
    row("empty list", QStringLiteral(R"({"t":"request","c":[]})"),
        "not a request: c is an empty array; allowed: an array of one or more commands");
    row("commands are an object", QStringLiteral(R"({"t":"request","c":{}})"),
        "not a request: c is an object; allowed: an array of one or more commands");
    row("command is a text", QStringLiteral(R"({"t":"request","c":["getItem"]})"),
        "not a request: c[0] is \"getItem\"; allowed: an object");
    row("unknown command", changed("getItem", "dropItem"),
        "not a request: c[0].c is \"dropItem\"; allowed: \"getItem\" or \"setItem\"");
    row("no parameters", QStringLiteral(R"({"t":"request","c":[{"c":"getItem"}]})"),
        "not a request: c[0].p is missing; allowed: an object");
    row("no place", QStringLiteral(R"({"t":"request","c":[{"c":"getItem","p":{"i":"X"}}]})"),
        "not a request: c[0].p.p is missing; allowed: an object");
    row("place is null", withPlace("null"), "not a request: c[0].p.p is null; allowed: an object");
    row("no item", QStringLiteral(R"({"t":"request","c":[{"c":"getItem","p":{"p":{}}}]})"),
        "not a request: c[0].p.i is missing; allowed: the name of an item");
    row("empty item", changed("Status.voltageMeasure", ""),
        "not a request: c[0].p.i is \"\"; allowed: the name of an item");
    row("negative line", withPlace(R"({"l":"-1"})"),
        "not a request: c[0].p.p.l is \"-1\"; allowed: empty, or a number from 0 to 4294967295");
    row("negative address", withPlace(R"({"l":0,"a":-4})"),
        "not a request: c[0].p.p.a is -4; allowed: empty, or a number from 0 to 4294967295");
    row("line too large", withPlace(R"({"l":"4294967296"})"),
        "not a request: c[0].p.p.l is \"4294967296\"; allowed: empty, or a number from 0 to 4294967295");
    row("line beyond all numbers", withPlace(R"({"l":"99999999999999999999999"})"),
        "not a request: c[0].p.p.l is \"99999999999999999999999\"; allowed: empty, or a number from 0 to "
        "4294967295");
    row("channel too large", withPlace(R"({"l":0,"a":0,"c":2147483648})"),
        "not a request: c[0].p.p.c is 2147483648; allowed: empty, or a number from 0 to 2147483647");
    row("huge number", withPlace(R"({"l":1e300})"),
        "not a request: c[0].p.p.l is 1e+300; allowed: empty, or a number from 0 to 4294967295");
    row("fraction", withPlace(R"({"l":0.5})"),
        "not a request: c[0].p.p.l is 0.5; allowed: empty, or a number from 0 to 4294967295");
    row("word", withPlace(R"({"l":"zero"})"),
        "not a request: c[0].p.p.l is \"zero\"; allowed: empty, or a number from 0 to 4294967295");
    row("hexadecimal", withPlace(R"({"l":"0x1"})"),
        "not a request: c[0].p.p.l is \"0x1\"; allowed: empty, or a number from 0 to 4294967295");
    row("line is true", withPlace(R"({"l":true})"),
        "not a request: c[0].p.p.l is true; allowed: empty, or a number from 0 to 4294967295");
    row("line is null", withPlace(R"({"l":null})"),
        "not a request: c[0].p.p.l is null; allowed: empty, or a number from 0 to 4294967295");
    row("channel without address", withPlace(R"({"l":"0","c":"1"})"),
        "not a request: c[0].p.p.a is empty; allowed: a number, since a channel is given");
    row("address without line", withPlace(R"({"a":"0"})"),
        "not a request: c[0].p.p.l is empty; allowed: a number, since what follows it is given");
    row("set without value", QStringLiteral(R"({"t":"request","c":[{"c":"setItem","p":{"p":{},"i":"X"}}]})"),
        "not a request: c[0].p.v is missing; allowed: a text, a number, true or false");
    row("value is an array", withValue("[1]"),
        "not a request: c[0].p.v is an array; allowed: a text, a number, true or false");
    row("unit is a number", changed(R"("u":"")", R"("u":1)"),
        "not a request: c[0].p.u is 1; allowed: a text");
    row("unknown field", changed(R"("i":"<session_id>")", R"("id":"")"),
        "not a request: the request has the field \"id\"; allowed: i, t, c, r");
    row("misspelt field", changed(R"("v":"")", R"("value":"")"),
        "not a request: c[0].p has the field \"value\"; allowed: p, i, v, u");
    row("field of the place", withPlace(R"({"L":"0"})"),
        "not a request: c[0].p.p has the field \"L\"; allowed: l, a, c");
    row("second command",
        QStringLiteral(R"({"t":"request","c":[{"c":"getItem","p":{"p":{},"i":"X"}},{"c":1,"p":{}}]})"),
        "not a request: c[1].c is 1; allowed: \"getItem\" or \"setItem\"");
}

void TestRequestParser::refuses()
{
    QFETCH(QString, request);
    QTEST(refusal(request), "text");
}

void TestRequestParser::saysWhereItIsMalformed_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("where");
    QTest::newRow("quotation mark in a value")
        << get().replace(QStringLiteral(R"("v":"")"), QStringLiteral(R"("v":"a"b")"))
        << QStringLiteral("line 1, column 125: ");
    QTest::newRow("second member is no name")
        << QStringLiteral("{\"a\":1,}") << QStringLiteral("line 1, column 8: ");
    QTest::newRow("no colon") << QStringLiteral("{\"a\" 1}") << QStringLiteral("line 1, column 6: ");
    QTest::newRow("no comma") << QStringLiteral("[1 2]") << QStringLiteral("line 1, column 4: ");
    QTest::newRow("other bracket") << QStringLiteral("[1}") << QStringLiteral("line 1, column 3: ");
    QTest::newRow("two texts") << QStringLiteral("{} {}") << QStringLiteral("line 1, column 4: ");
    QTest::newRow("bad escape") << QStringLiteral("[\"\\u12g4\"]") << QStringLiteral("line 1, column 7: ");
    QTest::newRow("not JSON at all") << QStringLiteral("help") << QStringLiteral("line 1, column 1: ");
    QTest::newRow("third line") << QStringLiteral("{\n\"t\":\"request\",\n  x}")
                                << QStringLiteral("line 3, column 3: ");
    // Columns count characters, not the bytes that they take.
    QTest::newRow("after other letters")
        << QString::fromUtf8("{\"äöü\":x}") << QStringLiteral("line 1, column 8: ");
    QTest::newRow("half surrogate") << QString(QStringLiteral("{\"") + QChar(0xd800)
                                               + QStringLiteral("\":1}"))
                                    << QStringLiteral("line 1, column 3: half of a surrogate pair");
}

void TestRequestParser::saysWhereItIsMalformed()
{
    QFETCH(QString, request);
    QFETCH(QString, where);
    const QString text = refusal(request);
    const QString prefix = QStringLiteral("malformed JSON at ") + where;
    QVERIFY2(text.startsWith(prefix), qPrintable(text));
    QVERIFY(text.size() > QStringLiteral("malformed JSON at line 1, column 1: ").size());
}

void TestRequestParser::survivesAnything_data()
{
    QTest::addColumn<QString>("request");
    QString bytes;
    for (int i = 0; i < 256; ++i)
        bytes += QChar(i);
    constexpr int Deep = 100000;
    const QString megabyte(1 << 20, QLatin1Char('a'));
    QTest::newRow("nothing") << QString();
    QTest::newRow("blanks") << QStringLiteral(" \t\r\n");
    QTest::newRow("NUL") << QString(QChar(0));
    QTest::newRow("all bytes") << bytes;
    QTest::newRow("deep arrays") << QString(Deep, QLatin1Char('['));
    QTest::newRow("deep closed arrays") << QString(Deep, QLatin1Char('[')) + QString(Deep, QLatin1Char(']'));
    QTest::newRow("deep objects") << QStringLiteral("{\"a\":").repeated(Deep);
    QTest::newRow("two megabytes") << QLatin1Char('"') + megabyte + megabyte + QLatin1Char('"');
    QTest::newRow("a megabyte of unknown field")
        << QLatin1String("{\"") + megabyte.left(megabyte.size() - 8) + QLatin1String("\":1}");
    QTest::newRow("lone low surrogate") << QString(QChar(0xdc00));
    QTest::newRow("escaped lone surrogate")
        << withValue(R"("\ud800")").replace(QStringLiteral("setItem"), QString());
    QTest::newRow("number out of range") << withPlace(R"({"l":1e999})");
    QTest::newRow("trailing text") << get() + QStringLiteral(" x");
    QTest::newRow("two requests") << get() + get();
}

void TestRequestParser::survivesAnything()
{
    QFETCH(QString, request);
    const QString text = refusal(request);
    QVERIFY2(text.startsWith(QLatin1String("malformed JSON at line "))
                 || text.startsWith(QLatin1String("not a request: "))
                 || text.startsWith(QLatin1String("the request has ")),
             qPrintable(text));
    // One line that an operator can read.
    QVERIFY(text.size() < 300);
    QVERIFY(!text.contains(QLatin1Char('\n')));
    QVERIFY(!text.contains(QChar(0)));
}

void TestRequestParser::survivesEveryCutAndEveryChange()
{
    const QString request = get();
    for (int cut = 0; cut < request.size(); ++cut)
        QVERIFY(!parses(request.left(cut)));
    const QString letters = QStringLiteral("\"{}[],:0-x\\ ") + QChar(0) + QChar(0xdfff) + QChar(0x20ac);
    for (int i = 0; i < request.size(); ++i) {
        for (const QChar letter : letters) {
            QString changed = request;
            changed[i] = letter;
            QVERIFY(parses(changed) || !refusal(changed).isEmpty());
        }
    }
}

QTEST_APPLESS_MAIN(TestRequestParser)
#include "tst_request_parser.moc"
