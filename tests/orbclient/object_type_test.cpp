#include "tests/orbclient/object_type_test.h"

#include <QtTest>

#include <utility>

ObjectTypeTest::ObjectTypeTest(ExpectedType what) : expected(std::move(what)) { }

ObjectTypeTest::~ObjectTypeTest() = default;

QStringList ObjectTypeTest::reads()
{
    QStringList places;
    const QVector<RecordedCall> calls = backend().callsOf(QStringLiteral("readItem"));
    for (const RecordedCall &call : calls)
        places.append(call.arguments.join(QLatin1Char('=')));
    return places;
}

QStringList ObjectTypeTest::writes()
{
    QStringList texts;
    const QVector<RecordedCall> calls = backend().callsOf(QStringLiteral("writeItem"));
    for (const RecordedCall &call : calls)
        texts.append(call.arguments.join(QLatin1Char('=')));
    return texts;
}

QString ObjectTypeTest::placeOf(const char *item) const
{
    return connectionName() + QLatin1Char(':') + expected.pathPrefix + QLatin1String(item);
}

void ObjectTypeTest::init()
{
    backend().setResult(TarnResult::Success);
    python.setClient(&python.client());
    backend().clearCalls();
    objectUnderTest = makeObject(python.client());
    QVERIFY(objectUnderTest);
    python.bind(QStringLiteral("x"), objectUnderTest.get());
    QCOMPARE(exec(QStringLiteral("T = type(x); y = T()")), QString());
    backend().clearCalls();
}

void ObjectTypeTest::hasItsNameDocstringAndFlags()
{
    QCOMPARE(eval(QStringLiteral("T is orbClient.%1").arg(expected.name)), QStringLiteral("True"));
    QCOMPARE(QString::fromLatin1(expected.type->tp_name), QStringLiteral("orbClient.") + expected.name);
    QCOMPARE(PythonInterpreter::textOf(python.evaluate(QStringLiteral("T.__doc__")).get()),
             expected.docstring);
    QCOMPARE(Py_TYPE(object()), expected.type);

    const unsigned long flags = expected.type->tp_flags;
    QVERIFY((flags & Py_TPFLAGS_DEFAULT) == Py_TPFLAGS_DEFAULT);
    QVERIFY((flags & Py_TPFLAGS_BASETYPE) != 0);
    QVERIFY((flags & Py_TPFLAGS_DICT_SUBCLASS) != 0);
    // The flag alone: these objects are nothing else that Python would tell by a flag.
    QCOMPARE(flags
                 & (Py_TPFLAGS_HEAPTYPE | Py_TPFLAGS_HAVE_GC | Py_TPFLAGS_LONG_SUBCLASS
                    | Py_TPFLAGS_LIST_SUBCLASS | Py_TPFLAGS_TUPLE_SUBCLASS | Py_TPFLAGS_UNICODE_SUBCLASS
                    | Py_TPFLAGS_BYTES_SUBCLASS | Py_TPFLAGS_TYPE_SUBCLASS | Py_TPFLAGS_BASE_EXC_SUBCLASS),
             0UL);
    QCOMPARE(eval(QStringLiteral("T.__bases__ == (object,)")), QStringLiteral("True"));
    QCOMPARE(exec(QStringLiteral("class Sub(T): pass\nSub()")), QString());
}

void ObjectTypeTest::hasNoInstanceDictionary()
{
    QCOMPARE(expected.type->tp_dictoffset, Py_ssize_t(0));
    QCOMPARE(eval(QStringLiteral("x.__dict__")), QStringLiteral("AttributeError"));
    QCOMPARE(exec(QStringLiteral("x.noSuchMember = 1")), QStringLiteral("AttributeError"));
    QCOMPARE(eval(QStringLiteral("x.noSuchMember")), QStringLiteral("AttributeError"));
}

void ObjectTypeTest::hasNoComputedAttributes()
{
    const QString names = QStringLiteral("[n for n, v in vars(T).items() if type(v).__name__ == '%1']");
    QCOMPARE(eval(names.arg(QStringLiteral("getset_descriptor"))), QStringLiteral("[]"));
    QCOMPARE(eval(names.arg(QStringLiteral("property"))), QStringLiteral("[]"));
}

void ObjectTypeTest::listsItsMembersInOrder()
{
    QStringList names;
    for (const ExpectedMember &member : expected.members)
        names.append(QLatin1String(member.name));
    const PyRef listed = python.evaluate(
        QStringLiteral("' '.join(n for n, v in vars(T).items() if type(v).__name__ == 'member_descriptor')"));
    QCOMPARE(PythonInterpreter::textOf(listed.get()).split(QLatin1Char(' ')), names);

    QStringList defined;
    for (const PyMemberDef *member = expected.type->tp_members; member->name != nullptr; ++member) {
        defined.append(QLatin1String(member->name));
        QCOMPARE(member->type, T_OBJECT_EX);
        QCOMPARE(member->flags, 0);
    }
    QCOMPARE(defined, names);
}

void ObjectTypeTest::addMemberRows()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < expected.members.size(); ++row)
        QTest::newRow(expected.members.at(row).name) << row;
}

void ObjectTypeTest::memberOfObjectUnderTest_data()
{
    addMemberRows();
}

void ObjectTypeTest::memberOfObjectUnderTest()
{
    QFETCH(int, row);
    const ExpectedMember &member = expected.members.at(row);
    const QString name = QLatin1String(member.name);
    QCOMPARE(eval(QStringLiteral("x.%1").arg(name)), QString::fromLatin1(member.value));
    QCOMPARE(eval(QStringLiteral("T.%1.__doc__").arg(name)),
             QStringLiteral("'%1'").arg(QLatin1String(member.docstring)));
}

void ObjectTypeTest::memberOfScriptsOwnObject_data()
{
    addMemberRows();
}

void ObjectTypeTest::memberOfScriptsOwnObject()
{
    QFETCH(int, row);
    const ExpectedMember &member = expected.members.at(row);
    const QString value = QStringLiteral("y.%1").arg(QLatin1String(member.name));
    QCOMPARE(eval(value), QString::fromLatin1(member.unsetValue));
    // A list of its own, not one for all.
    QCOMPARE(eval(QStringLiteral("y.%1 is T().%1").arg(QLatin1String(member.name))),
             member.unsetValue == QByteArray("[]") ? QStringLiteral("False")
                                                   : QString::fromLatin1(member.unsetValue));
}

void ObjectTypeTest::memberTakesAnythingAndCanBeDeleted_data()
{
    addMemberRows();
}

void ObjectTypeTest::memberTakesAnythingAndCanBeDeleted()
{
    QFETCH(int, row);
    const QString name = QLatin1String(expected.members.at(row).name);
    for (const QString &of : {QStringLiteral("x"), QStringLiteral("y")}) {
        const QString member = of + QLatin1Char('.') + name;
        for (const QString &value : {QStringLiteral("5"), QStringLiteral("'text'"), QStringLiteral("None"),
                                     QStringLiteral("[1]"), QStringLiteral("object()"), of}) {
            QCOMPARE(exec(QStringLiteral("v = %1; %2 = v").arg(value, member)), QString());
            QCOMPARE(eval(QStringLiteral("%1 is v").arg(member)), QStringLiteral("True"));
        }
        QCOMPARE(exec(QStringLiteral("del %1").arg(member)), QString());
        QCOMPARE(eval(member), QStringLiteral("AttributeError"));
        QCOMPARE(exec(QStringLiteral("del %1").arg(member)), QStringLiteral("AttributeError"));
        QCOMPARE(exec(QStringLiteral("%1 = 7").arg(member)), QString());
        QCOMPARE(eval(member), QStringLiteral("7"));
    }
}

void ObjectTypeTest::textIsItsPlace()
{
    for (const QString &function : {QStringLiteral("str"), QStringLiteral("repr")}) {
        const PyRef made = python.evaluate(function + QStringLiteral("(x)"));
        QCOMPARE(PythonInterpreter::textOf(made.get()), expected.text);
        QCOMPARE(Py_TYPE(made.get()), &PyUnicode_Type);
        const PyRef unset = python.evaluate(function + QStringLiteral("(y)"));
        QCOMPARE(PythonInterpreter::textOf(unset.get()), expected.unsetText);
    }
}

void ObjectTypeTest::releaseFreesNothing()
{
    const QString member = QLatin1String(expected.members.first().name);
    QCOMPARE(exec(QStringLiteral("import sys\n"
                                 "kept = object()\n"
                                 "y.%1 = kept\n"
                                 "keptBefore = sys.getrefcount(kept)\n"
                                 "typeBefore = sys.getrefcount(T)\n"
                                 "del y")
                      .arg(member)),
             QString());
    QCOMPARE(eval(QStringLiteral("sys.getrefcount(kept) - keptBefore")), QStringLiteral("0"));
    QCOMPARE(eval(QStringLiteral("sys.getrefcount(T) - typeBefore")), QStringLiteral("0"));
    QVERIFY(bytesKeptBy(QStringLiteral("T()")) >= 1000 * expected.type->tp_basicsize);
}

void ObjectTypeTest::releaseOfSubclassInstance_data()
{
    QTest::addColumn<QString>("body");
    QTest::newRow("with a dictionary, known to the garbage collector") << QStringLiteral("pass");
    QTest::newRow("without anything of its own") << QStringLiteral("__slots__ = ()");
}

void ObjectTypeTest::releaseOfSubclassInstance()
{
    QFETCH(QString, body);
    const QString member = QLatin1String(expected.members.first().name);
    QCOMPARE(exec(QStringLiteral("import sys\n"
                                 "class Sub(T):\n"
                                 "    %1\n"
                                 "z = Sub()\n"
                                 "kept = object()\n"
                                 "z.%2 = kept\n"
                                 "keptBefore = sys.getrefcount(kept)\n"
                                 "subBefore = sys.getrefcount(Sub)\n"
                                 "del z")
                      .arg(body, member)),
             QString());
    // The storage goes back, and with it the instance's hold on its type; what the members held stays.
    QCOMPARE(eval(QStringLiteral("sys.getrefcount(kept) - keptBefore")), QStringLiteral("0"));
    QCOMPARE(eval(QStringLiteral("sys.getrefcount(Sub) - subBefore")), QStringLiteral("-1"));
    const qlonglong kept = bytesKeptBy(QStringLiteral("Sub()"));
    QVERIFY(kept >= 0);
    // Nearly, since the measurement itself keeps something. The lists that a type makes for each object stay with both.
    QVERIFY(bytesKeptBy(QStringLiteral("T()")) - kept >= 900 * expected.type->tp_basicsize);
}

qlonglong ObjectTypeTest::bytesKeptBy(const QString &expression)
{
    const QString outcome =
        exec(QStringLiteral("import gc, tracemalloc\n"
                            "def makeMany():\n"
                            "    for i in range(1000):\n"
                            "        %1\n"
                            "makeMany()\n"
                            "gc.collect()\n"
                            "tracemalloc.start()\n"
                            "bytesBefore = tracemalloc.get_traced_memory()[0]\n"
                            "makeMany()\n"
                            "gc.collect()\n"
                            "bytesKept = tracemalloc.get_traced_memory()[0] - bytesBefore\n"
                            "tracemalloc.stop()\n")
                 .arg(expression));
    return outcome.isEmpty() ? eval(QStringLiteral("bytesKept")).toLongLong() : -1;
}
