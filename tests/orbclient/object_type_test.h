#pragma once

#include "tests/orbclient/expected_methods.h"
#include "tests/support/python_interpreter.h"

#include <QObject>
#include <QStringList>
#include <QVector>

/// A member of an object type as scripts see it.
struct ExpectedMember
{
    const char *name;
    const char *docstring;
    const char *value; ///< repr() of what the member holds in the object under test
    const char *unsetValue; ///< repr() of what it holds in an object that a script made, or "AttributeError"
};

/// What a type is like, and the object of it that the tests work with.
struct ExpectedType
{
    QString name; ///< in the module
    QString docstring;
    PyTypeObject *type;
    QVector<ExpectedMethod> methods;
    QVector<ExpectedMember> members;
    QString pathPrefix; ///< what stands before an item's name in the paths of the object under test
    QString text; ///< str() and repr() of the object under test
    QString unsetText; ///< str() and repr() of an object that a script made
};

/// What every object type with item methods has in common: its type object, its members, its text and its release.
///
/// A test program derives its class from this one, says what it expects, and adds what only its type has; QTest runs
/// the slots of all of them. For each row two objects are made anew: the object under test, which Python knows as "x"
/// and which works through the interpreter's client, and one as a script makes it, which Python knows as "y".
class ObjectTypeTest : public QObject
{
    Q_OBJECT

protected:
    explicit ObjectTypeTest(ExpectedType what);
    ~ObjectTypeTest() override;

    /// The connection of the object under test.
    static QString connectionName() { return QStringLiteral("hall 3"); }

    /// Makes the object under test. Called before every row; the backend then has no calls recorded.
    virtual PyRef makeObject(OrbClient &client) = 0;

    const ExpectedType &expectation() const { return expected; }
    PythonInterpreter &interpreter() { return python; }
    RecordingBackend &backend() { return python.backend(); }
    PyObject *object() const { return objectUnderTest.get(); }
    QString eval(const QString &expression) { return python.eval(expression); }
    QString exec(const QString &statements) { return python.exec(statements); }

    /// What was read, and what was written as "place=text", oldest first, where a place is "connection:path".
    QStringList reads();
    QStringList writes();
    /// The place of an item of the object under test.
    QString placeOf(const char *item) const;

private Q_SLOTS:
    void init();

    void hasItsNameDocstringAndFlags();
    void hasNoInstanceDictionary();
    void hasNoComputedAttributes();

    void listsItsMembersInOrder();
    void memberOfObjectUnderTest_data();
    void memberOfObjectUnderTest();
    void memberOfScriptsOwnObject_data();
    void memberOfScriptsOwnObject();
    void memberTakesAnythingAndCanBeDeleted_data();
    void memberTakesAnythingAndCanBeDeleted();

    void textIsItsPlace();

    void releaseFreesNothing();
    void releaseOfSubclassInstance_data();
    void releaseOfSubclassInstance();

private:
    void addMemberRows();
    /// How many bytes Python keeps for having made and dropped many objects with the expression.
    qlonglong bytesKeptBy(const QString &expression);

    const ExpectedType expected;
    PythonInterpreter python;
    PyRef objectUnderTest;
};
