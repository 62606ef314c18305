#include "workbench/app/application_icon.h"

#include <QDir>
#include <QImage>
#include <QImageReader>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

/// The program's icon, as it is drawn and as it was rendered for each size.
class TestApplicationIcon : public QObject
{
    Q_OBJECT

private:
    static const QVector<int> &sizes()
    {
        static const QVector<int> all = {16, 24, 32, 48, 64, 128, 256};
        return all;
    }

private Q_SLOTS:
    void hasEachSize()
    {
        QList<QSize> expected;
        for (int size : sizes())
            expected.append(QSize(size, size));
        QList<QSize> actual = workbench::applicationIcon().availableSizes();
        std::sort(actual.begin(), actual.end(),
                  [](const QSize &left, const QSize &right) { return left.width() < right.width(); });
        QCOMPARE(actual, expected);
    }

    void pictureIsTheDrawing_data()
    {
        QTest::addColumn<int>("size");
        for (int size : sizes())
            QTest::addRow("%d pixels", size) << size;
    }

    /// Renderers differ in how they smooth an edge, of which the smallest picture has the most, and in nothing else.
    void pictureIsTheDrawing()
    {
        QFETCH(int, size);
        QImageReader drawing(QStringLiteral(ICON_DIR "/terminal-workbench.svg"));
        drawing.setScaledSize(QSize(size, size));
        const QImage drawn = drawing.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QVERIFY2(!drawn.isNull(), qPrintable(drawing.errorString()));
        const QImage picture = workbench::applicationIcon()
                                   .pixmap(size, size)
                                   .toImage()
                                   .convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QCOMPARE(picture.size(), drawn.size());

        qint64 difference = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const QRgb left = picture.pixel(x, y);
                const QRgb right = drawn.pixel(x, y);
                difference += std::abs(qRed(left) - qRed(right)) + std::abs(qGreen(left) - qGreen(right))
                    + std::abs(qBlue(left) - qBlue(right)) + std::abs(qAlpha(left) - qAlpha(right));
            }
        }
        const double mean = static_cast<double>(difference) / (4.0 * size * size);
        QVERIFY2(mean < (size < 24 ? 4.0 : 1.0),
                 qPrintable(QStringLiteral("differs by %1 of 255 on average").arg(mean)));
    }
};

QTEST_MAIN(TestApplicationIcon)
#include "tst_application_icon.moc"
