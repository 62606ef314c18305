#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_id.h"
#include "hostclient/orb_request_item.h"
#include "tests/support/python_interpreter.h"

#include <QtTest>

#include <array>

/// What scripts do to objects that look like dictionaries to parts of Python, and are none: it fails or it prints.
class TestBadInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void hasTheObjectsItNeeds();
    void raises_data();
    void raises();
    void gives_data();
    void gives();
    void writesNoObjectAsJson_data();
    void writesNoObjectAsJson();
    void cannotBePickled_data();
    void cannotBePickled();
    void comparesWithDictionaries_data();
    void comparesWithDictionaries();
    void prints();

private:
    QString evalFor(const QString &object, const QString &expression);

    PythonInterpreter python;
};

namespace
{

constexpr std::array Types = {"connection", "crate", "module", "channel", "dataFrame"};

/// The names under which the tests have an object of each type: as the service gives it, as a script makes it, with
/// every member taken away or filled with something odd, and the same of a subclass with room for attributes and of
/// one without.
QStringList objects()
{
    QStringList names;
    for (const char *type : Types) {
        for (const char *kind :
             {"given", "made", "stripped", "odd", "derived", "derivedOdd", "slotted", "slottedOdd"})
            names.append(QStringLiteral("%1['%2']").arg(QLatin1String(kind), QLatin1String(type)));
    }
    return names;
}

} // namespace

QString TestBadInput::evalFor(const QString &object, const QString &expression)
{
    const QString bound = python.exec(QStringLiteral("x = ") + object);
    return bound.isEmpty() ? python.eval(expression) : QStringLiteral("no object: ") + bound;
}

void TestBadInput::initTestCase()
{
    RecordingBackend &backend = python.backend();
    backend.setControllers({{QStringLiteral("c1"), QString()}});
    OrbItemId crate(OrbItemId::Crate);
    crate.address = 1000;
    backend.setCrates({crate});
    OrbItemId module(OrbItemId::Module);
    module.address = 2;
    backend.setModules({module});
    backend.setItem(QStringLiteral("c1"),
                    QStringLiteral("0.2.") + OrbItemDefinitions::getItemNameModuleStatusnumberOfChannels(),
                    {QStringLiteral("3"), QString(), QStringLiteral("int"), 0});
    OrbRequestItem request;
    request.itemName = QStringLiteral("a");
    backend.setPassThroughMessages({request});

    QCOMPARE(python.exec(QStringLiteral(R"(
import ast, collections, collections.abc, copy, functools, io, json, marshal, pickle, pprint, reprlib, string, sys, types, weakref
def keywords(**given):
    return given
def anything(*given, **named):
    return given, named
def members(kind):
    return [n for n, m in vars(kind).items() if isinstance(m, types.MemberDescriptorType)]
def strip(made):
    for name in members(getattr(orbClient, type(made).__name__)):
        if hasattr(made, name):
            delattr(made, name)
    return made
def fill(made, kind):
    for i, name in enumerate(members(kind)):
        setattr(made, name, [1, "x", None, {"a": 1}, 2.5][i % 5])
    return made
def hasFirst(made):
    kind = next(k for k in kinds.values() if isinstance(made, k))
    return hasattr(made, members(kind)[0])
connection = orbClient.findConnection("c1")
module = connection.modules[0]
given = dict(connection=connection, crate=connection.crates[0], module=module, channel=module.channels[1],
             dataFrame=connection.getNextPassThroughMessage())
kinds = {name: getattr(orbClient, name) for name in given}
made = {name: kind() for name, kind in kinds.items()}
stripped = {name: strip(kind()) for name, kind in kinds.items()}
odd = {name: fill(kind(), kind) for name, kind in kinds.items()}
subclasses = {name: type("Derived", (kind,), {}) for name, kind in kinds.items()}
derived = {name: kind() for name, kind in subclasses.items()}
derivedOdd = {name: fill(kind(), kinds[name]) for name, kind in subclasses.items()}
slotClasses = {name: type("Slotted", (kind,), {"__slots__": ("a", "b", "c")}) for name, kind in kinds.items()}
slotted = {name: kind() for name, kind in slotClasses.items()}
slottedOdd = {name: fill(kind(), kinds[name]) for name, kind in slotClasses.items()}
for o in derivedOdd.values(): o.extra = {"a": 1}
for o in slottedOdd.values(): o.b = 5
# What an object of a subclass holds is never let go; held by an object that is never freed, it is not lost.
keeper = orbClient.dataFrame()
keeper.value = [derived, derivedOdd, slotted, slottedOdd]
)")),
             QString());
}

void TestBadInput::cleanup()
{
    QCOMPARE(PythonInterpreter::takeException(), QString());
}

void TestBadInput::hasTheObjectsItNeeds()
{
    QCOMPARE(python.eval(QStringLiteral("[type(o).__name__ for o in given.values()]")),
             QStringLiteral("['connection', 'crate', 'module', 'channel', 'dataFrame']"));
    for (const char *name : Types) {
        const QString type = QString::fromLatin1(name);
        QCOMPARE(
            python.eval(
                QStringLiteral("any(hasattr(stripped['%1'], m) for m in members(kinds['%1']))").arg(type)),
            QStringLiteral("False"));
        QCOMPARE(
            python.eval(QStringLiteral("all(hasattr(odd['%1'], m) for m in members(kinds['%1']))").arg(type)),
            QStringLiteral("True"));
        QCOMPARE(python.eval(
                     QStringLiteral("all(hasattr(given['%1'], m) for m in members(kinds['%1']))").arg(type)),
                 QStringLiteral("True"));
        // What makes them look like dictionaries. Python passes it on to no subclass.
        constexpr unsigned long DictionaryFlag = Py_TPFLAGS_DICT_SUBCLASS;
        QCOMPARE(python.eval(
                     QStringLiteral("[c['%1'].__flags__ & %2 != 0 for c in (kinds, subclasses, slotClasses)]")
                         .arg(type)
                         .arg(DictionaryFlag)),
                 QStringLiteral("[True, False, False]"));
    }
}

void TestBadInput::raises_data()
{
    QTest::addColumn<QString>("exception");

    for (const char *expression : {"dict(x)",
                                   "dict(x, a=1)",
                                   "{**x}",
                                   "{**{'a': 1}, **x}",
                                   "keywords(**x)",
                                   "anything(1, **x)",
                                   "anything(*x)",
                                   "print(**x)",
                                   "{}.update(x)",
                                   "{'a': 1}.update(x)",
                                   "dict.update({}, x)",
                                   "dict.__init__({}, x)",
                                   "dict.fromkeys(x)",
                                   "dict.keys(x)",
                                   "dict.items(x)",
                                   "dict.values(x)",
                                   "dict.get(x, 'a')",
                                   "dict.copy(x)",
                                   "dict.clear(x)",
                                   "dict.pop(x, 'a')",
                                   "dict.__len__(x)",
                                   "dict.__contains__(x, 'a')",
                                   "dict.__getitem__(x, 'a')",
                                   "dict.__setitem__(x, 'a', 1)",
                                   "dict.__eq__(x, {})",
                                   "dict.__repr__(x)",
                                   "dict.__iter__(x)",
                                   "dict.__sizeof__(x)",
                                   "iter(x)",
                                   "len(x)",
                                   "next(x)",
                                   "list(x)",
                                   "tuple(x)",
                                   "set(x)",
                                   "frozenset(x)",
                                   "{1}.union(x)",
                                   "sorted(x)",
                                   "sum(x)",
                                   "max(x)",
                                   "any(x)",
                                   "[*x]",
                                   "enumerate(x)",
                                   "zip(x)",
                                   "reversed(x)",
                                   "map(str, x)",
                                   "''.join(x)",
                                   "x['a']",
                                   "x[0]",
                                   "x[1:2]",
                                   "'a' in x",
                                   "x + x",
                                   "x * 2",
                                   "-x",
                                   "x < x",
                                   "x < {}",
                                   "int(x)",
                                   "float(x)",
                                   "bytes(x)",
                                   "x()",
                                   "range(x)",
                                   "'%(a)s' % x",
                                   "'{a}'.format_map(x)",
                                   "'{a}'.format(**x)",
                                   "'%d' % x",
                                   "'abc'.translate(x)",
                                   "str.maketrans(x)",
                                   "type('T', (), x)",
                                   "types.SimpleNamespace(**x)",
                                   "types.MappingProxyType(x)",
                                   "eval('1', {}, x)",
                                   "functools.partial(keywords, **x)",
                                   "string.Template('$a').substitute(x)",
                                   "collections.Counter(x)",
                                   "collections.defaultdict(None, x)",
                                   "collections.OrderedDict(x)",
                                   "collections.UserDict(x)",
                                   "collections.deque(x)",
                                   "collections.ChainMap(x)['a']",
                                   "json.dumps(x, indent=1)",
                                   "json.dumps({x: 1})",
                                   "vars(slotted['crate'])"})
        QTest::newRow(expression) << QStringLiteral("TypeError");
    for (const char *expression : {"x.keys()", "x.items()", "x.get('a')", "x.nothing", "x.__len__()"})
        QTest::newRow(expression) << QStringLiteral("AttributeError");
    for (const char *expression : {"marshal.dumps(x)", "ast.literal_eval(x)"})
        QTest::newRow(expression) << QStringLiteral("ValueError");
}

void TestBadInput::raises()
{
    QFETCH(QString, exception);

    const QString expression = QString::fromLatin1(QTest::currentDataTag());
    const QStringList names = objects();
    for (const QString &name : names) {
        const QString result = evalFor(name, expression);
        QVERIFY2(result == exception, qPrintable(name + QLatin1String(": ") + result));
    }
}

void TestBadInput::gives_data()
{
    QTest::addColumn<QString>("expected");

    QTest::newRow("hash(x) == hash(x)") << QStringLiteral("True");
    QTest::newRow("{x: 1}[x]") << QStringLiteral("1");
    QTest::newRow("x in {x}, x in [x], [x].index(x)") << QStringLiteral("(True, True, 0)");
    QTest::newRow("x == x, x != x, x is x") << QStringLiteral("(True, False, True)");
    QTest::newRow("x == 5, x == 'a', x == None, x == []") << QStringLiteral("(False, False, False, False)");
    QTest::newRow("bool(x)") << QStringLiteral("True");
    QTest::newRow("isinstance(x, dict), issubclass(type(x), dict)") << QStringLiteral("(False, False)");
    QTest::newRow("isinstance(x, collections.abc.Mapping), isinstance(x, collections.abc.Sized)")
        << QStringLiteral("(False, False)");
    QTest::newRow("isinstance(x, collections.abc.Iterable), callable(x)") << QStringLiteral("(False, False)");
    QTest::newRow("type(dir(x)), type(x.__doc__ or ''), type(id(x))")
        << QStringLiteral("(<class 'list'>, <class 'str'>, <class 'int'>)");
    QTest::newRow("sys.getsizeof(x) >= x.__sizeof__() > 0") << QStringLiteral("True");
    QTest::newRow(
        "all(type(s) is str for s in (str(x), repr(x), f'{x}', format(x), ascii(x), '%s' % x, '%r' % x))")
        << QStringLiteral("True");
    QTest::newRow("all(type(s) is str for s in (str([x]), str({1: x}), str((x,)), str({x: x})))")
        << QStringLiteral("True");
    QTest::newRow(
        "all(type(s) is str for s in (pprint.pformat(x), pprint.pformat({'a': [x]}), reprlib.repr(x)))")
        << QStringLiteral("True");
    QTest::newRow("anything(x) == ((x,), {}), anything(a=x) == ((), {'a': x})")
        << QStringLiteral("(True, True)");
    QTest::newRow("hasattr(x, '__iter__'), hasattr(x, '__getitem__')") << QStringLiteral("(False, False)");
}

void TestBadInput::gives()
{
    QFETCH(QString, expected);

    const QString expression = QString::fromLatin1(QTest::currentDataTag());
    const QStringList names = objects();
    for (const QString &name : names) {
        const QString result = evalFor(name, expression);
        QVERIFY2(result == expected, qPrintable(name + QLatin1String(": ") + result));
    }
}

void TestBadInput::writesNoObjectAsJson_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("unsetText");

    const auto row = [](const char *expression, const char *unsetText) {
        QTest::newRow(expression) << QString::fromLatin1(expression) << QString::fromLatin1(unsetText);
    };
    row("json.dumps(x)", "'{}'");
    row("json.dumps(x, sort_keys=True)", "'{}'");
    row("json.dumps([x])", "'[{}]'");
    row("json.dumps({'a': x})", "'{\"a\": {}}'");
    row("json.dumps(x, skipkeys=True, check_circular=False)", "'{}'");
}

void TestBadInput::writesNoObjectAsJson()
{
    QFETCH(QString, expression);
    QFETCH(QString, unsetText);

    // Python's encoder takes what stands in the place of a dictionary's length for one: an object whose first member
    // is unset passes for an empty dictionary. Every other one is asked for its items, and has none. An object of a
    // subclass is told apart.
    const QStringList names = objects();
    for (const QString &name : names) {
        const bool flagged =
            evalFor(name, QStringLiteral("type(x) in kinds.values()")) == QLatin1String("True");
        const bool set = evalFor(name, QStringLiteral("hasFirst(x)")) == QLatin1String("True");
        const QString expected = !flagged ? QStringLiteral("TypeError")
            : set                         ? QStringLiteral("AttributeError")
                                          : unsetText;
        const QString result = evalFor(name, expression);
        QVERIFY2(result == expected, qPrintable(name + QLatin1String(": ") + result));
    }
}

void TestBadInput::cannotBePickled_data()
{
    QTest::addColumn<QString>("expression");
    for (int protocol = 0; protocol <= 4; ++protocol) {
        for (const char *call :
             {"pickle.dumps(x, %1)", "pickle._dumps(x, %1)", "pickle.dumps([x], %1)",
              "pickle.dumps({'a': x}, %1)", "pickle.dump(x, io.BytesIO(), %1)", "x.__reduce_ex__(2 + %1)"}) {
            const QString expression = QString::fromLatin1(call).arg(protocol);
            QTest::newRow(qPrintable(expression)) << expression;
        }
    }
    for (const char *call : {"copy.copy(x)", "copy.deepcopy(x)", "copy.deepcopy([x])",
                             "copy.deepcopy({'a': x})", "copy.copy(x.__reduce_ex__(4))"})
        QTest::newRow(call) << QString::fromLatin1(call);
}

void TestBadInput::cannotBePickled()
{
    QFETCH(QString, expression);

    const QStringList refusals{QStringLiteral("TypeError"), QStringLiteral("AttributeError"),
                               QStringLiteral("PicklingError")};
    const QStringList names = objects();
    for (const QString &name : names) {
        const QString result = evalFor(name, expression);
        QVERIFY2(refusals.contains(result), qPrintable(name + QLatin1String(": ") + result));
    }
}

void TestBadInput::comparesWithDictionaries_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");

    const QString truth = QStringLiteral("[<class 'bool'>, <class 'bool'>, <class 'bool'>, <class 'bool'>]");
    const QString different = QStringLiteral("(False, False, True, True)");
    const auto both = [](const char *dictionary) {
        return QStringLiteral("x == %1, %1 == x, x != %1, %1 != x").arg(QLatin1String(dictionary));
    };
    QTest::newRow("empty") << QStringLiteral("[type(r) for r in (%1)]").arg(both("{}")) << truth;
    QTest::newRow("emptied")
        << QStringLiteral("(lambda d: (d.clear(), [type(r) for r in (%1)])[1])({'a': 1})").arg(both("d"))
        << truth;
    QTest::newRow("one entry") << both("{'a': 1}") << different;
    QTest::newRow("the object itself") << both("{x: x}") << different;
    QTest::newRow("many entries") << both("dict.fromkeys(range(1000))") << different;
    QTest::newRow("ordered") << both("collections.OrderedDict(a=1)") << different;
    QTest::newRow("within lists") << QStringLiteral("[x] == [{'a': 1}], [{'a': 1}] == [x]")
                                  << QStringLiteral("(False, False)");
    QTest::newRow("as values") << QStringLiteral("{1: x} == {1: {'a': 1}}, {1: {'a': 1}} == {1: x}")
                               << QStringLiteral("(False, False)");
    QTest::newRow("among them") << QStringLiteral("x in [{'a': 1}], [{'a': 1}].count(x)")
                                << QStringLiteral("(False, 0)");
}

void TestBadInput::comparesWithDictionaries()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);

    const QStringList names = objects();
    for (const QString &name : names) {
        const QString result = evalFor(name, expression);
        QVERIFY2(result == expected, qPrintable(name + QLatin1String(": ") + result));
    }
}

void TestBadInput::prints()
{
    const QStringList names = objects();
    for (const QString &name : names) {
        QCOMPARE(
            python.exec(
                QStringLiteral("x = %1\nout = io.StringIO()\nprint(x, [x], {1: x}, file=out)").arg(name)),
            QString());
        QCOMPARE(python.eval(QStringLiteral(
                     "out.getvalue() == str(x) + ' [' + repr(x) + '] {1: ' + repr(x) + '}\\n'")),
                 QStringLiteral("True"));
    }
}

QTEST_GUILESS_MAIN(TestBadInput)

#include "tst_bad_input.moc"
