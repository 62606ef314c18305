#include "workbench/app/text_file.h"

#include "command_terminal/file_text.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCodec>

using workbench::readTextFile;
using workbench::TextFile;

/// What is rehearsed is what the terminals' editor would show of the same bytes.
class TestTextFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); }

    void readsAsTheEditor_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("foreignLine");
        const QByteArray mark("\xef\xbb\xbf");
        QTest::newRow("nothing") << QByteArray() << 0;
        QTest::newRow("ASCII") << QByteArray("a\nb\n") << 0;
        QTest::newRow("UTF-8") << QByteArray("caf\xc3\xa9\n") << 0;
        QTest::newRow("a NUL character") << QByteArray("a\0b\n", 4) << 0;
        QTest::newRow("ISO 8859-1") << QByteArray("a\ncaf\xe9\n") << 2;
        QTest::newRow("a character cut off") << QByteArray("a\n\n\xe2\x82") << 3;
        QTest::newRow("UTF-8, marked") << mark + "caf\xc3\xa9\n" << 0;
        QTest::newRow("marked as UTF-8, and is not") << mark + "a\ncaf\xe9\n" << 2;
        QTest::newRow("marked as UTF-8, cut off") << mark + "a\n\xe2\x82" << 2;
        QTest::newRow("UTF-16, marked") << QByteArray("\xff\xfe\xe9\0\n\0", 6) << 0;
        QTest::newRow("UTF-16 from the other end, marked") << QByteArray("\xfe\xff\0\xe9\0\n", 6) << 0;
        QTest::newRow("marked as UTF-16, cut off") << QByteArray("\xff\xfe\xe9\0\n", 5) << 1;
    }

    void readsAsTheEditor()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, foreignLine);
        const QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("file.txt")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64{bytes.size()});
        file.close();
        TextFile content;
        QString error;
        QVERIFY2(readTextFile(file.fileName(), content, error), qPrintable(error));
        QCOMPARE(content.text, command_terminal::decodeFile(bytes).text);
        QCOMPARE(content.foreignLine, foreignLine);
    }
};

QTEST_GUILESS_MAIN(TestTextFile)
#include "tst_text_file.moc"
