#include "workbench/simulator/plant_reference.h"

#include "workbench/simulator/plant_file.h"
#include "workbench/simulator/plant_schema.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <cmath>
#include <iterator>

using namespace simulator;

class TestPlantReference : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void committedPage();
    void examplesOfThePage();
    void errorOfThePage();
    void everyFieldIsThere();
    void everyFaultIsThere();
    void rows_data();
    void rows();
    void rangesMakeSense();
};

namespace
{

QStringList lines()
{
    return plantReference().split(QLatin1Char('\n'));
}

} // namespace

/// To mend it: generate_plant_reference docs/plant_files.md, and commit.
void TestPlantReference::committedPage()
{
    QFile file(QStringLiteral(PLANT_REFERENCE));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
    // Line by line: a difference is then told by its line.
    QCOMPARE(QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')), lines());
}

void TestPlantReference::examplesOfThePage()
{
    const QRegularExpression block(QStringLiteral("```json\n(.*?)```"),
                                   QRegularExpression::DotMatchesEverythingOption);
    QRegularExpressionMatchIterator matches = block.globalMatch(plantReference());
    QVERIFY(matches.hasNext());
    while (matches.hasNext()) {
        PlantLayout layout;
        QString error;
        QVERIFY2(PlantFile::parse(matches.next().captured(1).toUtf8(), QStringLiteral("page"), layout, error),
                 qPrintable(error));
        QCOMPARE(layout.controllers.size(), std::size_t(1));
    }
}

void TestPlantReference::errorOfThePage()
{
    PlantLayout layout;
    QString error;
    const QByteArray text = QByteArray(11, '\n') + R"(  "controllers": [{"name": "a", "lines": [{"modules": [
        {"channels": 1, "voltage": -5, "current": 1}]}]}]})";
    QVERIFY(!PlantFile::parse('{' + text, QStringLiteral("plant.json"), layout, error));
    QString said = plantReference();
    said.replace(QRegularExpression(QStringLiteral("\\s+")), QStringLiteral(" "));
    const QString what = error.section(QStringLiteral(": "), 1);
    QVERIFY2(said.contains(what), qPrintable(what));
}

void TestPlantReference::everyFieldIsThere()
{
    const QStringList page = lines();
    for (const PlantField *field = PlantSchema::begin(); field != PlantSchema::end(); ++field) {
        const int heading = page.indexOf(QStringLiteral("## ") + PlantSchema::kindName(field->owner));
        QVERIFY2(heading >= 0, field->name);
        const QString begin = QStringLiteral("| `%1` |").arg(QLatin1String(field->name));
        int line = heading + 1;
        while (line < page.size() && !page.at(line).startsWith(QLatin1String("## "))
               && !page.at(line).startsWith(begin))
            ++line;
        QVERIFY2(line < page.size() && page.at(line).startsWith(begin), field->name);
        QVERIFY2(field->description[0] != '\0', field->name);
    }
}

void TestPlantReference::everyFaultIsThere()
{
    const QStringList page = lines();
    for (int i = 0; i <= static_cast<int>(FaultKind::ReorderAnswers); ++i) {
        const QString name = faultName(static_cast<FaultKind>(i));
        const QStringList found = page.filter(QStringLiteral("| `%1` |").arg(name));
        QVERIFY2(found.size() == 1 && !found.constFirst().endsWith(QLatin1String("| |")), qPrintable(name));
    }
}

void TestPlantReference::rows_data()
{
    QTest::addColumn<QString>("row");
    QTest::newRow("needed number") << QStringLiteral(
        "| `voltage` | above 0 to 1000000 V | **needed** | The nominal voltage of each channel |");
    QTest::newRow("number") << QStringLiteral(
        "| `voltageRamp` | 0.001 to 100 %/s | 10 %/s | How fast voltages ramp "
        "until somebody sets another speed |");
    QTest::newRow("choice") << QStringLiteral(
        "| `polarity` | `positive` or `negative` | `positive` | The polarity of the outputs |");
    QTest::newRow("list") << QStringLiteral(
        "| `lines` | a list: [line](#line) | none | The lines of the controller |");
    QTest::newRow("fault with an amount") << QStringLiteral(
        "| `slowAnswers` | controller | above 0 to 3600 s, **needed** | every answer takes so much longer |");
    QTest::newRow("fault that counts")
        << QStringLiteral("| `duplicateAnswers` | controller | a whole number from 0 to 1000000 | so many of "
                          "the next answers come twice, one when left out |");
}

void TestPlantReference::rows()
{
    QFETCH(QString, row);
    QVERIFY2(lines().contains(row), qPrintable(row));
}

void TestPlantReference::rangesMakeSense()
{
    for (const PlantField *field = PlantSchema::begin(); field != PlantSchema::end(); ++field) {
        if (field->kind != PlantFieldKind::Number && field->kind != PlantFieldKind::Integer)
            continue;
        QVERIFY2(field->least < field->most, field->name);
        // What is left out says so itself, or is a value that could have been given.
        const bool isAllowed = field->fallback >= field->least && field->fallback <= field->most;
        QVERIFY2(field->isRequired || isAllowed || field->fallbackText[0] != '\0', field->name);
    }
}

QTEST_APPLESS_MAIN(TestPlantReference)
#include "tst_plant_reference.moc"
