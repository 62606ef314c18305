#include "command_terminal/request_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using command_terminal::RequestFields;
using command_terminal::requestText;

Q_DECLARE_METATYPE(RequestFields)

/// The text of a request, character by character.
class TestRequestText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_data();
    void text();
    void plainFieldsGiveJson();
    void aQuotationMarkMakesTheJsonInvalid();
    void noFieldIsTakenForAPlaceMarker();
};

void TestRequestText::text_data()
{
    QTest::addColumn<RequestFields>("fields");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const RequestFields &fields, const char *expected) {
        QTest::newRow(name) << fields << QString::fromUtf8(expected);
    };
    const auto text = [](const char *utf8) { return QString::fromUtf8(utf8); };

    row("get of a channel",
        {text("getItem"), text("0"), text("4"), text("1"), text("Status.voltageMeasure"), {}, {}},
        R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"4","c":"1"},)"
        R"("i":"Status.voltageMeasure","v":"","u":""}}],"r":"websocket"})");
    row("nothing filled in", {text("getItem"), {}, {}, {}, text("Select a command"), {}, {}},
        R"({"i":"<session_id>","t":"request","c":[{"c":"getItem","p":{"p":{"l":"","a":"","c":""},)"
        R"("i":"Select a command","v":"","u":""}}],"r":"websocket"})");
    row("set of the system", {text("setItem"), {}, {}, {}, text("Control.power"), text("1"), text("W")},
        R"({"i":"<session_id>","t":"request","c":[{"c":"setItem","p":{"p":{"l":"","a":"","c":""},)"
        R"("i":"Control.power","v":"1","u":"W"}}],"r":"websocket"})");
    row("every field at its place",
        {text("COMMAND"), text("LINE"), text("ADDRESS"), text("CHANNEL"), text("ITEM"), text("VALUE"),
         text("UNIT")},
        R"({"i":"<session_id>","t":"request","c":[{"c":"COMMAND","p":{"p":{"l":"LINE","a":"ADDRESS",)"
        R"("c":"CHANNEL"},"i":"ITEM","v":"VALUE","u":"UNIT"}}],"r":"websocket"})");
    row("all empty", {},
        R"({"i":"<session_id>","t":"request","c":[{"c":"","p":{"p":{"l":"","a":"","c":""},)"
        R"("i":"","v":"","u":""}}],"r":"websocket"})");
    row("nothing is escaped",
        {text("setItem"), text("\\"), text("\""), text("\t"), text("a/b"), text(R"(say "on")"), text("\n")},
        "{\"i\":\"<session_id>\",\"t\":\"request\",\"c\":[{\"c\":\"setItem\",\"p\":{\"p\":{\"l\":\"\\\","
        "\"a\":\"\"\",\"c\":\"\t\"},\"i\":\"a/b\",\"v\":\"say \"on\"\",\"u\":\"\n\"}}],\"r\":\"websocket\"}");
    row("nothing is trimmed",
        {text("setItem"), text(" 0 "), text(" "), text("1 "), text(" x"), text(" 1"), text("V ")},
        R"({"i":"<session_id>","t":"request","c":[{"c":"setItem","p":{"p":{"l":" 0 ","a":" ","c":"1 "},)"
        R"("i":" x","v":" 1","u":"V "}}],"r":"websocket"})");
    row("beyond ASCII", {text("setItem"), text("٣"), {}, {}, text("Größe"), text("😀"), text("µA")},
        R"({"i":"<session_id>","t":"request","c":[{"c":"setItem","p":{"p":{"l":"٣","a":"","c":""},)"
        R"("i":"Größe","v":"😀","u":"µA"}}],"r":"websocket"})");
}

void TestRequestText::text()
{
    QFETCH(RequestFields, fields);
    QTEST(requestText(fields), "expected");
}

void TestRequestText::plainFieldsGiveJson()
{
    const QString request =
        requestText({QStringLiteral("setItem"), QStringLiteral("0"), QStringLiteral("4"), QStringLiteral("1"),
                     QStringLiteral("Control.voltageSet"), QStringLiteral("1500"), QStringLiteral("V")});
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(request.toUtf8(), &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    const QJsonObject expected{
        {QStringLiteral("i"), QStringLiteral("<session_id>")},
        {QStringLiteral("t"), QStringLiteral("request")},
        {QStringLiteral("c"),
         QJsonArray{QJsonObject{{QStringLiteral("c"), QStringLiteral("setItem")},
                                {QStringLiteral("p"),
                                 QJsonObject{{QStringLiteral("p"),
                                              QJsonObject{{QStringLiteral("l"), QStringLiteral("0")},
                                                          {QStringLiteral("a"), QStringLiteral("4")},
                                                          {QStringLiteral("c"), QStringLiteral("1")}}},
                                             {QStringLiteral("i"), QStringLiteral("Control.voltageSet")},
                                             {QStringLiteral("v"), QStringLiteral("1500")},
                                             {QStringLiteral("u"), QStringLiteral("V")}}}}}},
        {QStringLiteral("r"), QStringLiteral("websocket")},
    };
    QCOMPARE(object, expected);
}

void TestRequestText::aQuotationMarkMakesTheJsonInvalid()
{
    const QString request = requestText({QStringLiteral("setItem"),
                                         {},
                                         {},
                                         {},
                                         QStringLiteral("Control.name"),
                                         QStringLiteral("a \"quoted\" name"),
                                         {}});
    QJsonParseError error;
    QJsonDocument::fromJson(request.toUtf8(), &error);
    QVERIFY(error.error != QJsonParseError::NoError);
}

void TestRequestText::noFieldIsTakenForAPlaceMarker()
{
    const QString request =
        requestText({QStringLiteral("%1"), QStringLiteral("%2"), QStringLiteral("%L3"), QStringLiteral("%n"),
                     QStringLiteral("<session_id>"), QStringLiteral("%99"), QStringLiteral("%%")});
    QCOMPARE(request,
             QStringLiteral(R"({"i":"<session_id>","t":"request","c":[{"c":"%1","p":{"p":{"l":"%2",)"
                            R"("a":"%L3","c":"%n"},"i":"<session_id>","v":"%99","u":"%%"}}],)"
                            R"("r":"websocket"})"));
}

QTEST_GUILESS_MAIN(TestRequestText)
#include "tst_request_text.moc"
