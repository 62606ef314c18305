#include "tests/orbclient/item_methods_test.h"

#include "tests/orbclient/expected_texts.h"

#include <QtTest>

namespace
{

bool isAny(const ExpectedMethod &)
{
    return true;
}

bool isItemMethod(const ExpectedMethod &method)
{
    return method.use != MethodUse::Call;
}

bool isGetter(const ExpectedMethod &method)
{
    return method.isGetter();
}

bool isSetter(const ExpectedMethod &method)
{
    return method.use == MethodUse::Set;
}

/// A call of the method on the object, with an argument where it takes one.
QString callOf(const ExpectedMethod &method, const QString &object)
{
    return QStringLiteral("%1.%2(%3)")
        .arg(object, QLatin1String(method.name), method.isGetter() ? QString() : QStringLiteral("'1'"));
}

/// A getter's result with the timestamp before it, where the getter gives one.
QString resultOf(const ExpectedMethod &method, const QString &timestamp, const QString &value)
{
    if (method.use != MethodUse::GetWithTimestamp)
        return value;
    return QStringLiteral("[%1, %2]").arg(timestamp, value);
}

} // namespace

ItemMethodsTest::~ItemMethodsTest() = default;

void ItemMethodsTest::addRows(bool (*wanted)(const ExpectedMethod &))
{
    QTest::addColumn<int>("row");
    const QVector<ExpectedMethod> &methods = expectation().methods;
    for (int row = 0; row < methods.size(); ++row) {
        if (wanted(methods.at(row)))
            QTest::newRow(methods.at(row).name) << row;
    }
}

void ItemMethodsTest::setItemText(const char *item, const QString &text)
{
    backend().setItem(connectionName(), expectation().pathPrefix + QLatin1String(item),
                      {text, QStringLiteral("V"), QStringLiteral("string"), 12.5});
}

/// The type's own definition of the method, without a name when it has none.
PyMethodDef ItemMethodsTest::definition(const ExpectedMethod &method) const
{
    for (const PyMethodDef *found = expectation().type->tp_methods; found->ml_name != nullptr; ++found) {
        if (qstrcmp(found->ml_name, method.name) == 0)
            return *found;
    }
    return {};
}

void ItemMethodsTest::listsMethodsInOrder()
{
    QStringList names;
    for (const ExpectedMethod &method : expectation().methods)
        names.append(QLatin1String(method.name));
    const PyRef listed = interpreter().evaluate(
        QStringLiteral("' '.join(n for n, v in vars(T).items() if type(v).__name__ == 'method_descriptor')"));
    QCOMPARE(PythonInterpreter::textOf(listed.get()).split(QLatin1Char(' ')), names);

    QStringList defined;
    for (const PyMethodDef *method = expectation().type->tp_methods; method->ml_name != nullptr; ++method)
        defined.append(QLatin1String(method->ml_name));
    QCOMPARE(defined, names);
}

void ItemMethodsTest::documentsMethod_data()
{
    addRows(isAny);
}

void ItemMethodsTest::documentsMethod()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    const PyMethodDef defined = definition(method);
    QCOMPARE(defined.ml_name, method.name);
    QVERIFY(defined.ml_doc != nullptr);
    QCOMPARE(QString::fromLatin1(defined.ml_doc), QString::fromLatin1(method.docstring));
    const PyRef shown =
        interpreter().evaluate(QStringLiteral("T.%1.__doc__").arg(QLatin1String(method.name)));
    // Python shows an empty docstring as none at all.
    QCOMPARE(PythonInterpreter::textOf(shown.get()),
             *method.docstring == '\0' ? QStringLiteral("None") : QString::fromLatin1(method.docstring));
}

void ItemMethodsTest::declaresHowMethodTakesArguments_data()
{
    addRows(isAny);
}

void ItemMethodsTest::declaresHowMethodTakesArguments()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    const PyMethodDef defined = definition(method);
    QCOMPARE(defined.ml_name, method.name);
    QCOMPARE(defined.ml_flags, method.isGetter() ? METH_NOARGS : METH_VARARGS);
}

void ItemMethodsTest::getterConvertsItsItem_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("value");
    const QVector<ExpectedMethod> &methods = expectation().methods;
    for (int row = 0; row < methods.size(); ++row) {
        const ExpectedMethod &method = methods.at(row);
        if (!method.isGetter())
            continue;
        for (const ReadText &read : ReadTexts) {
            QTest::addRow("%s \"%s\"", method.name, read.text)
                << row << QString::fromLatin1(read.text) << read.expected(method.reading);
        }
    }
}

void ItemMethodsTest::getterConvertsItsItem()
{
    QFETCH(int, row);
    QFETCH(QString, text);
    QFETCH(QString, value);
    const ExpectedMethod &method = expectation().methods.at(row);
    setItemText(method.item, text);
    QCOMPARE(eval(callOf(method, QStringLiteral("x"))), resultOf(method, QStringLiteral("12.5"), value));
    QCOMPARE(reads(), QStringList{placeOf(method.item)});
    QCOMPARE(writes(), QStringList());
}

void ItemMethodsTest::getterTellsOfFailedRead_data()
{
    addRows(isGetter);
}

void ItemMethodsTest::getterTellsOfFailedRead()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    // Nobody has set an item of this object.
    QCOMPARE(exec(QStringLiteral("x.%1 = 'nowhere'").arg(QLatin1String(expectation().members.first().name))),
             QString());
    QCOMPARE(eval(callOf(method, QStringLiteral("x"))),
             resultOf(method, QStringLiteral("nan"), QStringLiteral("'error'")));
    QCOMPARE(reads(), QStringList{placeOf(method.item).replace(connectionName(), QStringLiteral("nowhere"))});
}

void ItemMethodsTest::getterRefusesArguments_data()
{
    addRows(isGetter);
}

void ItemMethodsTest::getterRefusesArguments()
{
    QFETCH(int, row);
    const QString name = QLatin1String(expectation().methods.at(row).name);
    for (const QString &arguments :
         {QStringLiteral("1"), QStringLiteral("None"), QStringLiteral("1, 2"), QStringLiteral("value=1")}) {
        QCOMPARE(eval(QStringLiteral("x.%1(%2)").arg(name, arguments)), QStringLiteral("TypeError"));
    }
    QVERIFY(backend().calls().isEmpty());
}

void ItemMethodsTest::setterSendsText_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("text");
    const QVector<ExpectedMethod> &methods = expectation().methods;
    for (int row = 0; row < methods.size(); ++row) {
        if (!isSetter(methods.at(row)))
            continue;
        for (const SentText &sent : SentTexts) {
            QTest::addRow("%s(%s)", methods.at(row).name, sent.expression)
                << row << QString::fromLatin1(sent.expression) << QString::fromLatin1(sent.text);
        }
    }
}

void ItemMethodsTest::setterSendsText()
{
    QFETCH(int, row);
    QFETCH(QString, expression);
    QFETCH(QString, text);
    const ExpectedMethod &method = expectation().methods.at(row);
    QCOMPARE(eval(QStringLiteral("x.%1(%2)").arg(QLatin1String(method.name), expression)),
             QStringLiteral("'ok'"));
    QCOMPARE(writes(), QStringList{placeOf(method.item) + QLatin1Char('=') + text});
    QCOMPARE(reads(), QStringList());
}

void ItemMethodsTest::setterTellsOfRefusedWrite_data()
{
    addRows(isSetter);
}

void ItemMethodsTest::setterTellsOfRefusedWrite()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    for (const TarnResult result :
         {TarnResult::Failed, TarnResult::Denied, TarnResult::NoData, TarnResult::NotConnected}) {
        backend().setResult(result);
        QCOMPARE(eval(callOf(method, QStringLiteral("x"))), QStringLiteral("'error'"));
    }
    QCOMPARE(writes().size(), 4);
}

void ItemMethodsTest::setterWantsExactlyOneArgument_data()
{
    addRows(isSetter);
}

void ItemMethodsTest::setterWantsExactlyOneArgument()
{
    QFETCH(int, row);
    const QString name = QLatin1String(expectation().methods.at(row).name);
    for (const QString &arguments :
         {QString(), QStringLiteral("1, 2"), QStringLiteral("value=1"), QStringLiteral("1, value=1")}) {
        QCOMPARE(eval(QStringLiteral("x.%1(%2)").arg(name, arguments)), QStringLiteral("TypeError"));
    }
    QVERIFY(writes().isEmpty());
}

void ItemMethodsTest::failsWithoutClient_data()
{
    addRows(isItemMethod);
}

void ItemMethodsTest::failsWithoutClient()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    const QString failure = resultOf(method, QStringLiteral("nan"), QStringLiteral("'error'"));
    QCOMPARE(eval(callOf(method, QStringLiteral("y"))), failure);
    // An address makes no difference.
    for (const ExpectedMember &member : expectation().members)
        QCOMPARE(exec(QStringLiteral("y.%1 = x.%1").arg(QLatin1String(member.name))), QString());
    setItemText(method.item, QStringLiteral("5"));
    QCOMPARE(eval(callOf(method, QStringLiteral("y"))), failure);
    QVERIFY(backend().calls().isEmpty());
}

void ItemMethodsTest::failsOnceClientIsGone_data()
{
    addRows(isItemMethod);
}

void ItemMethodsTest::failsOnceClientIsGone()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    const QString failure = resultOf(method, QStringLiteral("nan"), QStringLiteral("'error'"));
    setItemText(method.item, QStringLiteral("5"));
    interpreter().setClient(nullptr);
    QCOMPARE(eval(callOf(method, QStringLiteral("x"))), failure);
    QVERIFY(backend().calls().isEmpty());
}

void ItemMethodsTest::refusesForeignSelf_data()
{
    addRows(isAny);
}

void ItemMethodsTest::refusesForeignSelf()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    const PyMethodDef defined = definition(method);
    QCOMPARE(defined.ml_name, method.name);
    if (method.use != MethodUse::Call)
        setItemText(method.item, QStringLiteral("5"));
    QCOMPARE(exec(QStringLiteral(
                 "class Sub(T): __slots__ = ()\n"
                 "others = [None, 5, {}, object(), T, orbClient.dataFrame(), Sub()]\n"
                 "others += [t() for t in (orbClient.connection, orbClient.crate, orbClient.module,\n"
                 "                         orbClient.channel) if t is not T]\n")),
             QString());
    const PyRef arguments = method.isGetter() ? PyRef() : interpreter().evaluate(QStringLiteral("('1',)"));
    const PyRef others = interpreter().evaluate(QStringLiteral("others"));
    QCOMPARE(PyList_Size(others.get()), Py_ssize_t(10));
    for (Py_ssize_t i = 0; i < PyList_Size(others.get()); ++i) {
        QCOMPARE(PythonInterpreter::describe(PythonInterpreter::callDirectly(
                     defined, PyList_GetItem(others.get(), i), arguments.get())),
                 PythonInterpreter::NoObject);
    }

    // An instance of a subclass that does have a client and an address, which no script can make.
    const PyRef subclass = interpreter().evaluate(QStringLiteral("Sub"));
    Py_TYPE(object()) = reinterpret_cast<PyTypeObject *>(subclass.get());
    const QString outcome =
        PythonInterpreter::describe(PythonInterpreter::callDirectly(defined, object(), arguments.get()));
    Py_TYPE(object()) = expectation().type;
    QCOMPARE(outcome, PythonInterpreter::NoObject);
    QVERIFY(backend().calls().isEmpty());
}

void ItemMethodsTest::refusedSelfIsSystemErrorToScript_data()
{
    addRows(isAny);
}

void ItemMethodsTest::refusedSelfIsSystemErrorToScript()
{
    QFETCH(int, row);
    const ExpectedMethod &method = expectation().methods.at(row);
    QCOMPARE(exec(QStringLiteral("class Sub(T): pass\nz = Sub()")), QString());
    QCOMPARE(eval(callOf(method, QStringLiteral("z"))), QStringLiteral("SystemError"));
    QVERIFY(backend().calls().isEmpty());
}
