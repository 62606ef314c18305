#include "tests/layering/file_rules.h"

#include <QtTest>

using namespace layering;

/// The house rules themselves, on made-up files: what they must refuse, and what they must not.
class TestFileRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesOrAllows_data();
    void refusesOrAllows();
    void theLongestFileAllowedIsExact();
};

void TestFileRules::refusesOrAllows_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("violation"); // Empty: the file is in order.
    const auto row = [](const char *name, const char *path, const char *text, const char *violation) {
        QTest::newRow(name) << QString::fromLatin1(path) << QString::fromLatin1(text)
                            << QString::fromLatin1(violation);
    };
    row("header in order", "plugin/a.h", "#pragma once\n\n#include <QString>\n", "");
    row("comment above the guard", "plugin/a.h", "// Why.\n#pragma once\n", "");
    row("no guard", "plugin/a.h", "class A;\n", "#pragma once");
    row("guard only in a comment", "plugin/a.h", "// #pragma once\nclass A;\n", "#pragma once");
    row("camel case", "plugin/TerminalPlugin.cpp", "", "snake case");
    row("double underscore", "plugin/a__b.cpp", "", "snake case");
    row("other ending", "plugin/a.cc", "", "snake case");
    row("digits", "plugin/part_2b.cpp", "#include \"plugin/part_2b.h\"\n", "");
    row("source in the client's contract", "hostclient/a.cpp", "#include \"hostclient/a.h\"\n",
        "declarations only");
    row("source in the framework's contract", "hostsdk/a.cpp", "#include \"hostsdk/a.h\"\n",
        "declarations only");

    row("own header first", "plugin/a.cpp",
        "#include \"plugin/a.h\"\n\n#include \"hostsdk/b.h\"\n\n#include <QString>\n\n#include <vector>\n",
        "");
    row("own header second", "plugin/a.cpp", "#include \"hostsdk/b.h\"\n\n#include \"plugin/a.h\"\n",
        "own header");
    row("Qt before the project", "plugin/a.cpp",
        "#include \"plugin/a.h\"\n\n#include <QString>\n\n#include \"hostsdk/b.h\"\n", "the order is");
    row("standard library before Qt", "plugin/a.h", "#pragma once\n#include <vector>\n\n#include <QString>\n",
        "the order is");
    row("no gap between groups", "plugin/a.h", "#pragma once\n#include <QString>\n#include <vector>\n",
        "blank line");
    row("moc's output at the end", "plugin/a.cpp",
        "#include \"plugin/a.h\"\n\n#include <vector>\nint a;\n#include \"a.moc\"\n", "");

    row("old connect", "plugin/a.h", "#pragma once\nconnect(a, SIGNAL(b()), c, SLOT(d()));\n",
        "pointer to member");
    row("old connect in a comment", "plugin/a.h", "#pragma once\n// SIGNAL(b())\n", "");
    row("bare delete", "plugin/a.h", "#pragma once\nvoid f() { delete p; }\n", "owner");
    row("deleted function", "plugin/a.h", "#pragma once\nA(const A &) = delete;\n", "");
    row("word in a string", "plugin/a.h", "#pragma once\nauto a = \"delete p\";\n", "");
    row("skipped test", "tests/plugin/tst_a.cpp", "QSKIP(\"later\");\n", "a test that runs");
    row("fixed wait", "tests/plugin/tst_a.cpp", "QTest::qWait(100);\n", "QTRY_");
    row("sleep", "tests/plugin/tst_a.cpp", "QThread::msleep(100);\n", "QTRY_");
    row("a spy's wait", "tests/plugin/tst_a.cpp", "QVERIFY(spy.wait());\n", "");
}

void TestFileRules::refusesOrAllows()
{
    QFETCH(QString, path);
    QFETCH(QString, text);
    QFETCH(QString, violation);
    const bool hasOwnHeader =
        path.endsWith(QLatin1String(".cpp")) && !path.startsWith(QLatin1String("tests/"));
    const QString violations = fileViolations(path, text, hasOwnHeader).join(QLatin1Char('\n'));
    if (violation.isEmpty())
        QCOMPARE(violations, QString());
    else
        QVERIFY2(violations.contains(violation), qPrintable(violations));
}

void TestFileRules::theLongestFileAllowedIsExact()
{
    const QString path = QStringLiteral("plugin/a.h");
    const QString longest = QStringLiteral("#pragma once\n") + QString(maximumLines - 1, QLatin1Char('\n'));
    QCOMPARE(fileViolations(path, longest, false), QStringList());
    QCOMPARE(fileViolations(path, longest + QLatin1Char('\n'), false),
             QStringList{
                 QStringLiteral("plugin/a.h: %1 lines, at most %2").arg(maximumLines + 1).arg(maximumLines)});
}

QTEST_GUILESS_MAIN(TestFileRules)
#include "tst_file_rules.moc"
