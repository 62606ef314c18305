#include "orbclient/python_reference.h"

#include <QDir>
#include <QFile>
#include <QtTest>

using orbclient::ReferencePage;

/// The pages of the reference, and that those under version control are the ones that the module's tables give.
class TestPythonReference : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pages();
    void committedPages_data();
    void committedPages();
    void rows_data();
    void rows();
    void units_data();
    void units();

private:
    const QVector<ReferencePage> made = orbclient::pythonReference();
};

void TestPythonReference::pages()
{
    QStringList names{QStringLiteral("README.md")}; // which is written by hand
    for (const ReferencePage &page : made)
        names.append(page.fileName);
    names.sort();
    QCOMPARE(QDir(QStringLiteral(PYTHON_REFERENCE)).entryList(QDir::Files, QDir::Name), names);
    QCOMPARE(names.size(), 7);
}

void TestPythonReference::committedPages_data()
{
    QTest::addColumn<QString>("text");
    for (const ReferencePage &page : made)
        QTest::newRow(qPrintable(page.fileName)) << page.text;
}

/// To mend it: generate_reference pages docs/python_reference, and commit.
void TestPythonReference::committedPages()
{
    QFETCH(QString, text);
    QFile file(QStringLiteral(PYTHON_REFERENCE "/") + QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
    // Line by line: a difference is then told by its line.
    const QStringList committed = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    QCOMPARE(committed, text.split(QLatin1Char('\n')));
}

void TestPythonReference::rows_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("row");
    const auto row = [](const char *name, const char *fileName, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(fileName) << QString::fromLatin1(text);
    };
    row("read", "module.md",
        "| `getStatusTemperature()` | `Status.temperature` | read | celsius degree | `Union[float, bool, "
        "str]` "
        "| measured temperature in celsius degree |");
    row("read with timestamp", "channel.md",
        "| `getStatusCurrentMeasureWithTimestamp()` | `Status.currentMeasure` | read | "
        "| `List[Union[float, bool, str]]`: timestamp in s, value | measured current and timestamp |");
    row("write", "channel.md",
        "| `setControlVoltageRampspeedUp(value)` | `Control.voltageRampspeedUp` | write | V/s "
        "| `\"ok\"` or `\"error\"` | rampspeed to increase the voltage in V/s |");
    row("item that the client names", "connection.md",
        "| `getStatusSessionId()` | `Status.sessionId` | read | | `str` | |");
    row("call", "connection.md", "| `activateDataPassThrough([scriptName])` | | call | | `str` | |");
    row("marks of Markdown's", "channel.md",
        "| `getStatusVoltageLimit()` | `Status.voltageLimit` | read | | `Union[float, bool, str]` "
        "| (Module.Vlimit \\* Channel.Vnominal)/100% (Sliderlimit, defined by Hardware or Software) |");
    row("member", "channel.md", "| `module` | `int` | module address |");
    row("function", "functions.md",
        "| `getConnections([local])` | `List[connection]` "
        "| orbClient.getConnections(\\<flag local\\>) retrieves the list of open ORBservice connections. If "
        "\\<flag local\\> is set, the connection to the local ORBservice is also included. |");
    row("several optional arguments", "functions.md",
        "| `connect(connectionName, address[, login[, password]])` | `Union[connection, str]` "
        "| orbClient.connect(\\<connection name\\>, \\<ip:port\\>, \\<login\\>, \\< password\\>) attempts to "
        "establish a new connection to an ORBservice. |");
}

void TestPythonReference::rows()
{
    QFETCH(QString, fileName);
    QFETCH(QString, row);
    QStringList lines;
    for (const ReferencePage &page : made) {
        if (page.fileName == fileName)
            lines = page.text.split(QLatin1Char('\n'));
    }
    QVERIFY2(lines.contains(row), qPrintable(row));
}

void TestPythonReference::units_data()
{
    QTest::addColumn<QString>("unit");
    QTest::newRow("rampspeed of voltage in %/s") << QStringLiteral("%/s");
    QTest::newRow("rampspeed to increase the voltage in V/s") << QStringLiteral("V/s");
    QTest::newRow("rampspeed to increase the current in mA/s") << QStringLiteral("mA/s");
    QTest::newRow("time in ms until delayedTripAction is called") << QStringLiteral("ms");
    QTest::newRow("cycletime (updaterate) in ms") << QStringLiteral("ms");
    QTest::newRow("measured temperature in celsius degree") << QStringLiteral("celsius degree");
    QTest::newRow("Inhibit has been active; HV turned off") << QString();
    QTest::newRow("in constant voltage regulation") << QString();
    QTest::newRow("measured in msomething") << QString();
    QTest::newRow("begin ms") << QString();
    QTest::newRow("") << QString();
}

void TestPythonReference::units()
{
    QTEST(orbclient::unitIn(QString::fromLatin1(QTest::currentDataTag())), "unit");
}

QTEST_APPLESS_MAIN(TestPythonReference)
#include "tst_python_reference.moc"
