#include "orbclient/module_description.h"

#include <QtTest>

using namespace orbclient;

Q_DECLARE_METATYPE(orbclient::Method)

namespace
{

PyObject *nothing(PyObject *, PyObject *)
{
    return nullptr;
}

QString definedName()
{
    return QStringLiteral("Status.defined");
}

/// "name: type" of each, with " = ..." after an optional one.
QString asText(const QVector<ParameterDescription> &parameters)
{
    QStringList texts;
    for (const ParameterDescription &parameter : parameters) {
        texts.append(parameter.name + QLatin1String(": ") + parameter.typeName
                     + (parameter.optional ? QStringLiteral(" = ...") : QString()));
    }
    return texts.join(QLatin1String("; "));
}

} // namespace

/// What the module says of itself to the generators.
class TestModuleDescription : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_data();
    void rows();
    void types_data();
    void types();
    void everyMemberHasAType();
};

void TestModuleDescription::rows_data()
{
    QTest::addColumn<Method>("method");
    QTest::addColumn<QString>("parameters");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("item");
    const QString item = QStringLiteral("Status.a");
    QTest::newRow("automatic") << get("m", "Status.a", Conversion::Automatic, "") << QString()
                               << QStringLiteral("Union[float, bool, str]") << item;
    QTest::newRow("integer") << get("m", "Status.a", Conversion::Integer, "") << QString()
                             << QStringLiteral("Union[int, float, bool, str]") << item;
    QTest::newRow("floating point") << get("m", "Status.a", Conversion::FloatingPoint, "") << QString()
                                    << QStringLiteral("Union[float, bool, str]") << item;
    QTest::newRow("boolean") << get("m", "Status.a", Conversion::Boolean, "") << QString()
                             << QStringLiteral("Union[bool, float, str]") << item;
    QTest::newRow("text") << get("m", "Status.a", Conversion::Text, "") << QString() << QStringLiteral("str")
                          << item;
    QTest::newRow("name from the client") << get("m", definedName, Conversion::Text, "") << QString()
                                          << QStringLiteral("str") << QStringLiteral("Status.defined");
    QTest::newRow("timestamp") << getWithTimestamp("m", "Status.a", Conversion::FloatingPoint, "")
                               << QString() << QStringLiteral("List[Union[float, bool, str]]") << item;
    QTest::newRow("timestamp of a text") << getWithTimestamp("m", "Status.a", Conversion::Text, "")
                                         << QString() << QStringLiteral("List[Union[float, str]]") << item;
    QTest::newRow("set") << set("m", "Control.a", "") << QStringLiteral("value: _Value")
                         << QStringLiteral("str") << QStringLiteral("Control.a");
    QTest::newRow("call without parameters") << call("m", nothing, "(self) -> List[crate]", "") << QString()
                                             << QStringLiteral("List[crate]") << QString();
    QTest::newRow("function") << call("m", nothing, "() -> str", "") << QString() << QStringLiteral("str")
                              << QString();
    QTest::newRow("parameters") << call(
        "m", nothing, "(self, a: str, b: Dict[str, int] = ..., c: int = ...) -> Union[int, str]", "")
                                << QStringLiteral("a: str; b: Dict[str, int] = ...; c: int = ...")
                                << QStringLiteral("Union[int, str]") << QString();
}

void TestModuleDescription::rows()
{
    QFETCH(Method, method);
    QTEST(asText(parametersOf(method)), "parameters");
    QTEST(resultTypeOf(method), "result");
    QTEST(itemNameOf(method), "item");
}

void TestModuleDescription::types_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("methods");
    QTest::addColumn<bool>("takesArguments");
    QTest::addColumn<QStringList>("members");
    const auto names = [](const char *text) { return QString::fromLatin1(text).split(QLatin1Char(' ')); };
    QTest::newRow("connection") << 0 << 43 << true << names("name crates modules");
    QTest::newRow("crate") << 1 << 28 << false << names("connection line address modules");
    QTest::newRow("module") << 2 << 46 << false << names("connection line address channels");
    QTest::newRow("channel") << 3 << 121 << false << names("connection line module index");
    QTest::newRow("dataFrame") << 4 << 0 << false
                               << names("connection line address channel command item value unit rawJson");
}

void TestModuleDescription::types()
{
    QFETCH(int, index);
    const TypeDescription description = typeDescriptions().at(std::size_t(index));
    QCOMPARE(description.name(), QString::fromLatin1(QTest::currentDataTag()));
    QTEST(int(description.methods.count), "methods");
    QTEST(description.constructor != nullptr, "takesArguments");
    QStringList members;
    for (const MemberDescription &member : memberDescriptions(*description.type))
        members.append(member.name);
    QTEST(members, "members");
}

void TestModuleDescription::everyMemberHasAType()
{
    for (const TypeDescription &description : typeDescriptions()) {
        for (const MemberDescription &member : memberDescriptions(*description.type)) {
            QVERIFY2(!member.typeName.isEmpty(),
                     qPrintable(description.name() + QLatin1Char('.') + member.name));
            QVERIFY(!member.docstring.isEmpty());
        }
    }
}

QTEST_APPLESS_MAIN(TestModuleDescription)
#include "tst_module_description.moc"
