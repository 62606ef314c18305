#include "workbench/rehearsal/html_text.h"

#include <QTest>

class TestHtmlText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void escapes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("html");
        QTest::newRow("nothing") << QString() << QString();
        QTest::newRow("plain") << QStringLiteral("0.2.1 µA ✖") << QStringLiteral("0.2.1 µA ✖");
        QTest::newRow("a tag") << QStringLiteral("<script>alert(1)</script>")
                               << QStringLiteral("&lt;script&gt;alert(1)&lt;/script&gt;");
        QTest::newRow("an entity") << QStringLiteral("&lt;") << QStringLiteral("&amp;lt;");
        QTest::newRow("quotation marks")
            << QStringLiteral("\" onload='x'") << QStringLiteral("&quot; onload=&#39;x&#39;");
        QTest::newRow("a zero") << QString(QChar(0)) << QString(QChar(QChar::ReplacementCharacter));
        QTest::newRow("an escape character")
            << QString(QChar(0x1b)) << QString(QChar(QChar::ReplacementCharacter));
        QTest::newRow("lines stay") << QStringLiteral("a\n\tb") << QStringLiteral("a\n\tb");
        QTest::newRow("a mark of direction")
            << QString(QChar(0x202e)) << QString(QChar(QChar::ReplacementCharacter));
        QTest::newRow("half a character")
            << QString(QChar(0xd800)) << QString(QChar(QChar::ReplacementCharacter));
    }

    void escapes()
    {
        QFETCH(QString, text);
        QTEST(rehearsal::html(text), "html");
    }
};

QTEST_GUILESS_MAIN(TestHtmlText)
#include "tst_html_text.moc"
