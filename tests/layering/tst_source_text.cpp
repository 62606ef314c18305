#include "tests/layering/source_text.h"

#include <QtTest>

using namespace layering;

class TestSourceText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codeLosesCommentsAndLiterals_data();
    void codeLosesCommentsAndLiterals();
    void includesKeepOrderLineAndKind();
    void includesInCommentsAndRawStringsAreNone();
};

void TestSourceText::codeLosesCommentsAndLiterals_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("code");
    const auto row = [](const char *name, const char *text, const char *code) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(code);
    };
    row("plain", "int a;\n", "int a;\n");
    row("line comment", "a; // b\nc;", "a;     \nc;");
    row("block comment keeps lines", "a /* b\n c */ d", "a     \n      d");
    row("string", "f(\"a//b\");", "f(      );");
    row("escaped quote", R"(f("a\"b");)", "f(      );");
    row("quote as a character", "f('\"'); g", "f(   ); g");
    row("digit separator", "int a = 1'000; // b", "int a = 1'000;     ");
    row("raw string", "f(R\"x(a)\"//)x\"); b", "f(            ); b");
    row("slashes in a string open no comment", "f(\"//\"); b;", "f(    ); b;");
}

void TestSourceText::codeLosesCommentsAndLiterals()
{
    QFETCH(QString, text);
    QFETCH(QString, code);
    QCOMPARE(codeOnly(text), code);
}

void TestSourceText::includesKeepOrderLineAndKind()
{
    const QVector<Include> includes =
        includesOf(QStringLiteral("#include \"a/b.h\"\n\n  # include <QString> // why\n"));
    QCOMPARE(includes.size(), 2);
    QCOMPARE(includes.at(0).path, QStringLiteral("a/b.h"));
    QCOMPARE(includes.at(0).line, 1);
    QVERIFY(includes.at(0).quoted);
    QCOMPARE(includes.at(1).path, QStringLiteral("QString"));
    QCOMPARE(includes.at(1).line, 3);
    QVERIFY(!includes.at(1).quoted);
}

void TestSourceText::includesInCommentsAndRawStringsAreNone()
{
    const QString text =
        QStringLiteral("/*\n#include <a>\n*/\n// #include <b>\nx = R\"(\n#include <c>\n)\";\n#include <d>\n");
    const QVector<Include> includes = includesOf(text);
    QCOMPARE(includes.size(), 1);
    QCOMPARE(includes.at(0).path, QStringLiteral("d"));
    QCOMPARE(includes.at(0).line, 8);
}

QTEST_GUILESS_MAIN(TestSourceText)
#include "tst_source_text.moc"
