#include "command_terminal/text_width.h"

#include <QFont>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

using command_terminal::TextWidth;

class TestTextWidth : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void boundIsNeverTooSmall_data();
    void boundIsNeverTooSmall();
    void onlyMeasuringTells_data();
    void onlyMeasuringTells();
    void findsTheWidest_data();
    void findsTheWidest();
};

namespace
{

QFont plainFont(const QString &family, double points, bool bold, bool italic)
{
    QFont font(family);
    font.setPointSizeF(points);
    font.setBold(bold);
    font.setItalic(italic);
    font.setKerning(false);
    return font;
}

QString randomText(QRandomGenerator &random, int longest)
{
    QString text;
    const int length = random.bounded(longest + 1);
    for (int i = 0; i < length; ++i)
        text.append(QChar(0x20 + random.bounded(95)));
    return text;
}

} // namespace

void TestTextWidth::boundIsNeverTooSmall_data()
{
    QTest::addColumn<QFont>("font");
    for (const QString &family : {QStringLiteral("DejaVu Sans"), QStringLiteral("DejaVu Sans Mono")}) {
        for (const double points : {7.0, 9.0, 10.5, 15.0}) {
            QTest::addRow("%s %g", qPrintable(family), points) << plainFont(family, points, false, false);
            QTest::addRow("%s %g bold", qPrintable(family), points) << plainFont(family, points, true, false);
            QTest::addRow("%s %g italic", qPrintable(family), points)
                << plainFont(family, points, false, true);
        }
    }
}

void TestTextWidth::boundIsNeverTooSmall()
{
    QFETCH(QFont, font);
    const TextWidth width(font);
    QRandomGenerator random(1);
    int bounded = 0;
    for (int i = 0; i < 2000; ++i) {
        const QString text = randomText(random, 30);
        const int bound = width.upperBound(text);
        if (bound < 0)
            continue;
        ++bounded;
        QVERIFY2(bound >= width.measure(text), qPrintable(text));
    }
    QVERIFY(bounded > 1000); // else nothing is won
}

void TestTextWidth::onlyMeasuringTells_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("kerning");
    QTest::newRow("ligature") << QStringLiteral("office") << false;
    QTest::newRow("other script") << QStringLiteral("\u03a9") << false;
    QTest::newRow("tab") << QStringLiteral("a\tb") << false;
    QTest::newRow("kerning") << QStringLiteral("AVA") << true;
}

void TestTextWidth::onlyMeasuringTells()
{
    QFETCH(QString, text);
    QFETCH(bool, kerning);
    QFont font = plainFont(QStringLiteral("DejaVu Sans"), 10, false, false);
    font.setKerning(kerning);
    QCOMPARE(TextWidth(font).upperBound(text), -1);
}

void TestTextWidth::findsTheWidest_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("none") << QStringList();
    QTest::newRow("one") << QStringList{QStringLiteral("channel")};
    QTest::newRow("narrow ones behind") << QStringList{QStringLiteral("WWWW"), QStringLiteral("iiiiiiii")};
    QTest::newRow("wider and wider") << QStringList{QStringLiteral("a"), QStringLiteral("ab"),
                                                    QStringLiteral("abc")};
    QTest::newRow("the widest cannot be bounded") << QStringList{
        QStringLiteral("abc"), QStringLiteral("\u03a9\u03a9\u03a9\u03a9\u03a9\u03a9"), QStringLiteral("ab")};
    QTest::newRow("an empty one") << QStringList{QString(), QStringLiteral("a")};
    QRandomGenerator random(7);
    QStringList many;
    for (int i = 0; i < 500; ++i)
        many.append(randomText(random, 20));
    QTest::newRow("many") << many;
}

void TestTextWidth::findsTheWidest()
{
    QFETCH(QStringList, texts);
    const TextWidth width(plainFont(QStringLiteral("DejaVu Sans"), 10, false, false));
    int widest = 0;
    for (const QString &text : std::as_const(texts))
        widest = std::max(widest, width.measure(text));
    QCOMPARE(width.widest(texts), widest);
}

QTEST_MAIN(TestTextWidth)
#include "tst_text_width.moc"
