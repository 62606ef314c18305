#include "tests/support/recording_backend.h"

#include <QtTest>

#include <functional>

namespace
{

class Listener : public OrbBackendListener
{
public:
    void rawMessage(const QString &connectionName, const QString &message) override
    {
        said << connectionName + QLatin1Char(' ') + message;
    }
    void structureChanged(const OrbItemId &) override { said << QStringLiteral("structure"); }
    void valuesChanged(const OrbItemId &) override { said << QStringLiteral("values"); }
    void statusChanged(const OrbItemId &) override { said << QStringLiteral("status"); }
    void messageWasLogged(const OrbLogMessage &message) override { said << message.text; }

    QStringList said;
};

const QString Name = QStringLiteral("c");

} // namespace

class TestRecordingBackend : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsCallsInOrder();
    void answersAfterTheRequest();
    void asksTheHandler();
    void speaksToItsListener();
    void remembersWhatWasWritten();
    void neverGivesAnIndexAgain();
};

void TestRecordingBackend::recordsCallsInOrder()
{
    RecordingBackend backend;
    QString reply;
    backend.rawRequest(Name, QStringLiteral("1"), reply);
    backend.setDebugLevel(3);
    backend.rawRequest(Name, QStringLiteral("2"), reply);
    QCOMPARE(backend.calls().size(), 3);
    QCOMPARE(backend.calls().at(1).operation, QStringLiteral("setDebugLevel"));
    QCOMPARE(backend.calls().at(1).arguments, QStringList(QStringLiteral("3")));
    QCOMPARE(backend.requests(), (QStringList{QStringLiteral("1"), QStringLiteral("2")}));
    backend.clearCalls();
    QVERIFY(backend.calls().isEmpty());
}

void TestRecordingBackend::answersAfterTheRequest()
{
    RecordingBackend backend;
    Listener listener;
    backend.setListener(&listener);
    backend.setRawAnswer({true, QStringLiteral("reply"), {QStringLiteral("true"), QStringLiteral("data")}});
    QString reply;
    QVERIFY(backend.rawRequest(Name, QString(), reply));
    QCOMPARE(reply, QStringLiteral("reply"));
    QVERIFY(listener.said.isEmpty());
    QTRY_COMPARE(listener.said, (QStringList{QStringLiteral("c true"), QStringLiteral("c data")}));
}

void TestRecordingBackend::asksTheHandler()
{
    RecordingBackend backend;
    backend.setRawHandler([&](const QString &controller, const QString &request) {
        // No lock is held: the handler may ask the backend.
        RecordingBackend::RawAnswer answer;
        answer.accepted = request.isEmpty();
        answer.reply = controller + QString::number(backend.requests().size());
        return answer;
    });
    QString reply;
    QVERIFY(backend.rawRequest(Name, QString(), reply));
    QCOMPARE(reply, QStringLiteral("c1"));
    QVERIFY(!backend.rawRequest(Name, QStringLiteral("x"), reply));
    QCOMPARE(reply, QStringLiteral("c2"));
}

void TestRecordingBackend::speaksToItsListener()
{
    RecordingBackend backend;
    backend.sendRawMessage(Name, QStringLiteral("nobody listens"));
    Listener listener;
    backend.setListener(&listener);
    backend.sendRawMessage(Name, QStringLiteral("m"));
    backend.sendStructureChanged(OrbItemId());
    backend.sendValuesChanged(OrbItemId());
    backend.sendStatusChanged(OrbItemId());
    backend.sendLogMessage({QDateTime(), 0, QStringLiteral("log")});
    backend.setListener(nullptr);
    backend.sendStructureChanged(OrbItemId());
    QCOMPARE(listener.said,
             (QStringList{QStringLiteral("c m"), QStringLiteral("structure"), QStringLiteral("values"),
                          QStringLiteral("status"), QStringLiteral("log")}));
}

void TestRecordingBackend::remembersWhatWasWritten()
{
    RecordingBackend backend;
    backend.setItem(Name, QStringLiteral("0.1.2.Control.x"),
                    {QStringLiteral("1"), QStringLiteral("V"), QStringLiteral("int"), 0});
    OrbItemId id(OrbItemId::Channel);
    id.connectionName = Name;
    id.address = 1;
    id.channel = 2;
    id.itemName = QStringLiteral("Control.x");
    QVERIFY(backend.writeItem(id, QStringLiteral("5")) == TarnResult::Success);
    OrbItemReading reading;
    QVERIFY(backend.readItem(id, reading) == TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("5"));
    QCOMPARE(reading.unit, QStringLiteral("V"));
    backend.setResult(TarnResult::Denied);
    QVERIFY(backend.writeItem(id, QStringLiteral("6")) == TarnResult::Denied);
    QVERIFY(backend.readItem(id, reading) == TarnResult::Success);
    QCOMPARE(reading.value, QStringLiteral("5"));
    id.channel = 3;
    QVERIFY(backend.readItem(id, reading) == TarnResult::NoData);
}

void TestRecordingBackend::neverGivesAnIndexAgain()
{
    RecordingBackend backend;
    backend.setControllers({{Name, QStringLiteral("C")}});
    QCOMPARE(backend.connectionIndex(Name), 0);
    QVERIFY(backend.closeConnection(Name) == TarnResult::Success);
    QCOMPARE(backend.connectionIndex(Name), -1);
    QVERIFY(backend.openConnection(Name, QString(), QString(), QString()) == TarnResult::Success);
    QCOMPARE(backend.connectionIndex(Name), 1);
    QCOMPARE(backend.controllers().size(), 1);
    const QString script = QStringLiteral("script");
    QVERIFY(backend.openScriptConnection(script, QString(), QString(), QString(), QString(), QString())
            == TarnResult::Success);
    QCOMPARE(backend.connectionIndex(script), 2);
}

QTEST_GUILESS_MAIN(TestRecordingBackend)
#include "tst_recording_backend.moc"
