#include "workbench/rehearsal/command_file_review.h"

#include "workbench/simulator/request_parser.h"

#include <QTest>

using rehearsal::CommandFileReview;
using rehearsal::reviewCommandFile;

namespace
{

QVector<int> executedLines(const CommandFileReview &review)
{
    QVector<int> numbers;
    for (const rehearsal::CommandLine &line : review.executed)
        numbers.append(line.number);
    return numbers;
}

QStringList remarksOf(const CommandFileReview &review)
{
    QStringList texts;
    for (const rehearsal::Remark &remark : review.remarks)
        texts.append(QStringLiteral("%1: %2").arg(QString::number(remark.line), remark.text));
    return texts;
}

} // namespace

class TestCommandFileReview : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lines_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVector<int>>("executed");
        QTest::addColumn<int>("remarkedLine"); // 0: no remark
        QTest::addColumn<QString>("remark");
        const auto row = [](const char *name, const char *text, const QVector<int> &executed,
                            int remarkedLine = 0, const char *remark = "") {
            QTest::newRow(name) << QString::fromLatin1(text) << executed << remarkedLine
                                << QString::fromLatin1(remark);
        };
        row("two lines", "# a\n# b\n", {1, 2});
        row("no line feed at the end", "# a\n# b", {1}, 2, "not executed");
        row("nothing but a line without a line feed", "# a", {}, 1, "not executed");
        row("blanks without a line feed", "# a\n  ", {1});
        row("one empty line", "# a\n\n# b\n", {1, 3});
        row("two empty lines", "# a\n\n\n# b\n# c\n", {1}, 3, "not executed: 2");
        row("three empty lines", "# a\n\n\n\n# b\n", {1}, 3, "not executed: 1");
        row("an empty line twice", "# a\n\n# b\n\n# c\n", {1, 3, 5});
        row("blanks are no empty line", "# a\n  \n  \n# b\n", {1, 2, 3, 4});
        row("a first empty line", "\n# a\n# b\n", {}, 1, "begins with an empty line");
        row("empty lines at the end", "# a\n\n\n\n", {1});
        row("empty lines before a line without a line feed", "# a\n\n\n# b", {1}, 3, "not executed: 1");
        row("carriage returns", "# a\r# b\r", {1, 2});
        row("both", "# a\r\n# b\r\n", {1, 2});
        row("both, one empty line", "# a\r\n\r\n# b\r\n", {1, 3});
        row("both, two empty lines", "# a\r\n\r\n\r\n# b\r\n", {1}, 3, "ends the run");
    }

    void lines()
    {
        QFETCH(QString, text);
        QFETCH(QVector<int>, executed);
        QFETCH(int, remarkedLine);
        QFETCH(QString, remark);
        const CommandFileReview review = reviewCommandFile(text);
        QCOMPARE(executedLines(review), executed);
        if (remarkedLine == 0) {
            QCOMPARE(remarksOf(review), QStringList());
            return;
        }
        QCOMPARE(review.remarks.size(), 1);
        QCOMPARE(review.remarks.constFirst().line, remarkedLine);
        QVERIFY2(review.remarks.constFirst().text.contains(remark),
                 qPrintable(remarksOf(review).join(QLatin1Char(' '))));
    }

    void emptyFiles_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << QString();
        QTest::newRow("line feeds") << QStringLiteral("\n\n\n");
        QTest::newRow("blanks") << QStringLiteral("  \n\t\n ");
    }

    void emptyFiles()
    {
        QFETCH(QString, text);
        QCOMPARE(remarksOf(reviewCommandFile(text)),
                 QStringList(QStringLiteral("0: The file is empty: nothing is executed.")));
    }

    // Told once, also where it is in comments.
    void noText()
    {
        const QString odd = QStringLiteral("# ") + QChar(QChar::Null) + QLatin1Char('\n');
        const CommandFileReview review = reviewCommandFile(QStringLiteral("# a\n") + odd + odd);
        QCOMPARE(review.remarks.size(), 1);
        QCOMPARE(review.remarks.constFirst().line, 2);
        QVERIFY(review.remarks.constFirst().text.contains(QStringLiteral("NUL")));
    }

    void remarks_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("remark"); // empty: none
        const auto row = [](const char *line, const char *remark) {
            QTest::newRow(line) << QString::fromLatin1(line) << QString::fromLatin1(remark);
        };
        row("wait 1000", "");
        row("wait 0800", "");
        row("wait 12345", "");
        row("  wait 0800  ", "");
        row("wait 800", "\"wait 0800\"");
        row("wait 5", "\"wait 0005\"");
        row("wait  800", ""); // the second blank is one of the five characters, and it waits for 800 ms
        row("wait 100000", "waits for 0 ms");
        row("wait 123456", "waits for 23456 ms");
        row("wait 1000 ms", "does not wait");
        row("wait 1.5", "does not wait");
        row("wait soon", "does not wait");
        row("wait", "is sent as a request");
        row("Wait 1000", "is sent as a request");
        row("waiting 1000", "is sent as a request");
        row("# wait 5", "");
        row("// a comment", "a comment begins with");
        row("-- a comment", "a comment begins with");
        row("; a comment", "a comment begins with");
        row("REM a comment", "a comment begins with");
        row("{\"i\":\"\",", "does not end on its line");
        row("{\"i\":\"\",\"c\":[", "does not end on its line");
        row("{\"i\":\"\",\"c\":[]}", "");
    }

    void remarks()
    {
        QFETCH(QString, line);
        QFETCH(QString, remark);
        const CommandFileReview review =
            reviewCommandFile(QStringLiteral("# first\n") + line + QLatin1Char('\n'));
        QCOMPARE(executedLines(review), (QVector<int>{1, 2}));
        QCOMPARE(review.executed.constLast().text, line.trimmed());
        if (remark.isEmpty()) {
            QCOMPARE(remarksOf(review), QStringList());
            return;
        }
        QCOMPARE(review.remarks.size(), 1);
        QCOMPARE(review.remarks.constFirst().line, 2);
        QVERIFY2(review.remarks.constFirst().text.contains(remark),
                 qPrintable(review.remarks.constFirst().text));
    }

    void aLongRequest()
    {
        constexpr int most = simulator::RequestParser::LongestRequest;
        const QString longest = QStringLiteral("{\"i\":\"%1\"}").arg(QString(most - 8, QLatin1Char('x')));
        QCOMPARE(longest.size(), most);
        QCOMPARE(remarksOf(reviewCommandFile(longest + QLatin1Char('\n'))), QStringList());
        const CommandFileReview review = reviewCommandFile(longest + QStringLiteral(" x\n"));
        QCOMPARE(review.remarks.size(), 1);
        QVERIFY(review.remarks.constFirst().text.contains(QString::number(most)));
    }

    void remarksComeByLine()
    {
        const CommandFileReview review =
            reviewCommandFile(QStringLiteral("wait 1\n\n// a\n\n\nwait 2\nlast"));
        QCOMPARE(review.remarks.size(), 3);
        QCOMPARE(review.remarks.at(0).line, 1);
        QCOMPARE(review.remarks.at(1).line, 3);
        QCOMPARE(review.remarks.at(2).line, 5);
    }
};

QTEST_GUILESS_MAIN(TestCommandFileReview)
#include "tst_command_file_review.moc"
