#include "workbench/rehearsal/request_summary.h"

#include <QTest>

class TestRequestSummary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("summary");
        QTest::newRow("set") << QStringLiteral(
            R"({"i":"","t":"request","c":[{"c":"setItem","p":{"p":{"l":"0","a":"2","c":"1"},"i":"Control.voltageSet","v":"1000","u":"V"}}],"r":"websocket"})")
                             << QStringLiteral("set 0.2.1 Control.voltageSet to 1000 V");
        QTest::newRow("get") << QStringLiteral(
            R"({"i":"","t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"2","c":""},"i":"Status.temperature"}}]})")
                             << QStringLiteral("get 0.2 Status.temperature");
        QTest::newRow("of the system, and two") << QStringLiteral(
            R"({"i":"","t":"request","c":[{"c":"getItem","p":{"p":{},"i":"Status.heartBeat"}},{"c":"setItem","p":{"p":{"l":"0","a":"2","c":"1"},"i":"Control.on","v":"1"}}]})")
                                                << QStringLiteral(
                                                       "get Status.heartBeat; set 0.2.1 Control.on to 1");
        QTest::newRow("no request") << QStringLiteral("// <b>") << QStringLiteral("// <b>");
        QTest::newRow("a long text") << QString(1000, QLatin1Char('x'))
                                     << QString(200, QLatin1Char('x')) + QStringLiteral("...");
    }

    void requests()
    {
        QFETCH(QString, request);
        QTEST(rehearsal::requestSummary(request), "summary");
    }

    void answers_data()
    {
        QTest::addColumn<QStringList>("answers");
        QTest::addColumn<QString>("summary");
        const QString done = QStringLiteral(R"([{"trigger":"true"}])");
        QTest::newRow("nothing") << QStringList() << QString();
        QTest::newRow("a trigger") << QStringList{done} << QString();
        QTest::newRow("a number") << QStringList{done, QStringLiteral(R"([{"value":499.8,"unit":"V"}])")}
                                  << QStringLiteral("499.8 V");
        QTest::newRow("a bool and a text")
            << QStringList{done, QStringLiteral(R"([{"value":false,"unit":""},{"value":"ok","unit":""}])")}
            << QStringLiteral("false; ok");
        QTest::newRow("no JSON") << QStringList{QStringLiteral("oops")} << QString();
    }

    void answers()
    {
        QFETCH(QStringList, answers);
        QTEST(rehearsal::answerSummary(answers), "summary");
    }
};

QTEST_GUILESS_MAIN(TestRequestSummary)
#include "tst_request_summary.moc"
