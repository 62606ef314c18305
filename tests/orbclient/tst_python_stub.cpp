#include "orbclient/python_stub.h"

#include <QtTest>

/// The text of the stub file. That its names are those of the module is tested from Python.
class TestPythonStub : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void contains_data();
    void contains();
    void sameEachTime();
};

void TestPythonStub::contains_data()
{
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(text);
    };
    row("function",
        "\ndef getVersion() -> str:\n"
        "    \"\"\"This function returns the version of the Python module.\"\"\"\n");
    row("no keywords",
        "\ndef connect(__connectionName: str, __address: str, __login: str = ..., "
        "__password: str = ...) -> Union[connection, str]:\n");
    row("class",
        "\n\nclass crate:\n    \"\"\"orbService crate objects\"\"\"\n\n"
        "    connection: str  # connection name\n"
        "    line: int  # line index\n"
        "    address: int  # crate address\n"
        "    modules: List[module]  # modules managed by crate\n");
    row("constructor", "    def __init__(self, name: str = ...) -> None: ...\n");
    row("automatic",
        "    def getStatusOn(self) -> Union[float, bool, str]:\n"
        "        \"\"\"HV is turned on\"\"\"\n");
    row("integer", "    def getStatusSerialNumber(self) -> Union[int, float, bool, str]:\n");
    row("boolean", "    def getControlPower(self) -> Union[bool, float, str]:\n");
    row("text, no docstring", "    def getStatusSessionId(self) -> str: ...\n");
    row("timestamp",
        "    def getStatusVoltageMeasureWithTimestamp(self) -> List[Union[float, bool, str]]:\n");
    row("set", "    def setControlOn(self, __value: _Value) -> str:\n");
    row("quotes in a docstring", R"(        """\"Emergency Off\" is active""")");
    row("value of a frame", "    value: _Value  # value\n");
}

void TestPythonStub::contains()
{
    QFETCH(QString, text);
    QVERIFY2(orbclient::pythonStub().contains(text), qPrintable(text));
}

void TestPythonStub::sameEachTime()
{
    QCOMPARE(orbclient::pythonStub(), orbclient::pythonStub());
}

QTEST_APPLESS_MAIN(TestPythonStub)
#include "tst_python_stub.moc"
