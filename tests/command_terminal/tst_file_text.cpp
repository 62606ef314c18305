#include "command_terminal/file_text.h"

#include <QTextCodec>
#include <QtTest>

using command_terminal::decodeFile;
using command_terminal::encodeFile;
using command_terminal::FileText;

class TestFileText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); }

    void readsEveryLineEnd_data();
    void readsEveryLineEnd();
    void givesEveryByteBack_data();
    void givesEveryByteBack();
    void readsUnicodeByItsMark();
    void readsInTheSystemsCodec();
    void writesWhatTheCodecDoesNotKnow();
};

void TestFileText::readsEveryLineEnd_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("line feeds") << QByteArrayLiteral("a\nb\n") << QStringLiteral("a\nb\n");
    QTest::newRow("carriage returns") << QByteArrayLiteral("a\rb\r") << QStringLiteral("a\nb\n");
    QTest::newRow("both") << QByteArrayLiteral("a\r\nb\r\n") << QStringLiteral("a\nb\n");
    QTest::newRow("empty lines") << QByteArrayLiteral("a\r\n\r\nb\r\rc\n\nd")
                                 << QStringLiteral("a\n\nb\n\nc\n\nd");
    QTest::newRow("none") << QByteArrayLiteral("a") << QStringLiteral("a");
    QTest::newRow("empty") << QByteArray() << QString();
}

void TestFileText::readsEveryLineEnd()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(decodeFile(bytes).text, text);
}

void TestFileText::givesEveryByteBack_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray all;
    for (int i = 0; i < 256; ++i) {
        if (i != '\r')
            all.append(static_cast<char>(i));
    }
    QTest::newRow("every byte but the carriage return") << all;
    QTest::newRow("a letter of another codec") << QByteArrayLiteral("# 3 \xb5"
                                                                    "A\n");
    QTest::newRow("a character that is cut off") << QByteArrayLiteral("abc\xe2\x82");
    QTest::newRow("UTF-8") << QByteArrayLiteral("# 3 \xc2\xb5"
                                                "A \xf0\x9f\x94\x8c\n");
    QTest::newRow("zero bytes") << QByteArray("a\0b\0", 4);
}

void TestFileText::givesEveryByteBack()
{
    QFETCH(QByteArray, bytes);
    const FileText content = decodeFile(bytes);
    QCOMPARE(encodeFile(content.text, content.codec), bytes);
}

void TestFileText::readsUnicodeByItsMark()
{
    const QString text = QStringLiteral("wait 1000\n# \u03a9\n");
    QTextCodec *utf16 = QTextCodec::codecForName("UTF-16");
    const FileText content = decodeFile(utf16->fromUnicode(text));
    QCOMPARE(content.text, text);
    QCOMPARE(decodeFile(QByteArrayLiteral("\xef\xbb\xbf#") + "a").text, QStringLiteral("#a"));
}

void TestFileText::readsInTheSystemsCodec()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-15"));
    const FileText content = decodeFile(QByteArrayLiteral("\xa4"));
    QCOMPARE(content.text, QStringLiteral("\u20ac"));
    QCOMPARE(encodeFile(content.text, content.codec), QByteArrayLiteral("\xa4"));
}

void TestFileText::writesWhatTheCodecDoesNotKnow()
{
    const QString text = QStringLiteral("\u03a9 \u00e4\n");
    QCOMPARE(encodeFile(text, QTextCodec::codecForName("ISO-8859-1")), text.toUtf8());
    QCOMPARE(encodeFile(QStringLiteral("\u00e4\n"), QTextCodec::codecForName("ISO-8859-1")),
             QByteArrayLiteral("\xe4\n"));
}

QTEST_GUILESS_MAIN(TestFileText)
#include "tst_file_text.moc"
