#include "workbench/simulator/plant_file.h"

#include <QtTest>

using namespace simulator;

/// The values of a plant file's messages: it is for the script to say what it takes.
class TestPlantFilePayloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anythingIsAPayload_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("escaped");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("blanks") << QStringLiteral("  ") << QStringLiteral("  ");
        QTest::newRow("tabulator and line feed") << QStringLiteral("a\tb\n") << QStringLiteral("a\\tb\\n");
        const QString most(10000, QLatin1Char('1'));
        QTest::newRow("the longest") << most << most;
    }

    void anythingIsAPayload()
    {
        QFETCH(QString, value);
        QFETCH(QString, escaped);
        const QString file = QStringLiteral(R"({"controllers": [{"name": "a"}], "messages": [
            {"at": 1, "object": "0.3", "item": "i", "command": "setItem", "value": "%1"}]})");
        PlantLayout plant;
        QString error;
        QVERIFY2(PlantFile::parse(file.arg(escaped).toUtf8(), QStringLiteral("plant.json"), plant, error),
                 qPrintable(error));
        QCOMPARE(plant.messages.size(), std::size_t(1));
        QCOMPARE(plant.messages.at(0).request.value, value);
    }
};

QTEST_APPLESS_MAIN(TestPlantFilePayloads)
#include "tst_plant_file_payloads.moc"
