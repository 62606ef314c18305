#include "workbench/hostkit/vector_icon_engine.h"

#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QSet>
#include <QtTest>

using hostkit::VectorIconEngine;

class TestVectorIconEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void drawsInside_data();
    void drawsInside();
    void drawsDifferentIcons();
    void takesThePalettesColour();
    void isGreyWhenDisabled();
    void isNotGreyWhenDisabledAndOn();
    void linesLieOnWholePixels_data();
    void linesLieOnWholePixels();
    void isSharpAtEveryPixelRatio();
    void drawsWhereItIsTold();
    void survivesOddSizes_data();
    void survivesOddSizes();
    void clonesItself();

private:
    const QPalette palette = QGuiApplication::palette();
};

namespace
{

const QVector<KD::IconType> AllIcons{KD::TerminalIcon, KD::TextEditorIcon,  KD::OpenFileIcon,
                                     KD::SaveFileIcon, KD::ExecuteFileIcon, KD::ClearIcon};

QImage draw(KD::IconType type, int size, QIcon::Mode mode = QIcon::Normal)
{
    return QIcon(new VectorIconEngine(type))
        .pixmap(size, size, mode)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

int inkedPixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) > 127 ? 1 : 0;
    }
    return count;
}

} // namespace

void TestVectorIconEngine::cleanup()
{
    QGuiApplication::setPalette(palette);
}

void TestVectorIconEngine::drawsInside_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("size");
    for (const KD::IconType type : AllIcons) {
        for (const int size : {16, 24, 32, 48, 256})
            QTest::addRow("icon %d at %d", int(type), size) << int(type) << size;
    }
}

void TestVectorIconEngine::drawsInside()
{
    QFETCH(int, type);
    QFETCH(int, size);
    const QImage image = draw(static_cast<KD::IconType>(type), size);
    QCOMPARE(image.size(), QSize(size, size));
    const int inked = inkedPixels(image);
    // Lines, not nothing and not a block.
    QVERIFY2(inked > size, qPrintable(QString::number(inked)));
    QVERIFY2(inked < size * size / 2, qPrintable(QString::number(inked)));
    // Nothing is cut off: the outermost pixels are empty.
    for (int i = 0; i < size; ++i) {
        QCOMPARE(qAlpha(image.pixel(i, 0)), 0);
        QCOMPARE(qAlpha(image.pixel(i, size - 1)), 0);
        QCOMPARE(qAlpha(image.pixel(0, i)), 0);
        QCOMPARE(qAlpha(image.pixel(size - 1, i)), 0);
    }
}

void TestVectorIconEngine::drawsDifferentIcons()
{
    for (int i = 0; i < AllIcons.size(); ++i) {
        for (int j = 0; j < i; ++j)
            QVERIFY(draw(AllIcons.at(i), 24) != draw(AllIcons.at(j), 24));
    }
}

void TestVectorIconEngine::takesThePalettesColour()
{
    QPalette changed = palette;
    changed.setColor(QPalette::Active, QPalette::ButtonText, QColor(200, 30, 10));
    const QIcon icon(new VectorIconEngine(KD::SaveFileIcon));
    icon.pixmap(24, 24);
    // An icon that exists already follows a change.
    QGuiApplication::setPalette(changed);
    const QImage image = icon.pixmap(24, 24).toImage().convertToFormat(QImage::Format_ARGB32);
    int coloured = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            coloured += image.pixel(x, y) == qRgb(200, 30, 10) ? 1 : 0;
    }
    QVERIFY(coloured > 24);
}

void TestVectorIconEngine::isGreyWhenDisabled()
{
    QPalette changed = palette;
    changed.setColor(QPalette::Active, QPalette::ButtonText, Qt::black);
    changed.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(150, 150, 150));
    QGuiApplication::setPalette(changed);
    const QImage image = draw(KD::SaveFileIcon, 24, QIcon::Disabled);
    bool grey = false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            grey = grey || image.pixel(x, y) == qRgb(150, 150, 150);
            QVERIFY(image.pixel(x, y) != qRgb(0, 0, 0));
        }
    }
    QVERIFY(grey);
}

void TestVectorIconEngine::isNotGreyWhenDisabledAndOn()
{
    const QIcon icon(new VectorIconEngine(KD::TerminalIcon));
    const QImage off = icon.pixmap(24, 24, QIcon::Disabled, QIcon::Off).toImage();
    const QImage on = icon.pixmap(24, 24, QIcon::Disabled, QIcon::On).toImage();
    QVERIFY(on != off);
    QCOMPARE(on, icon.pixmap(24, 24, QIcon::Normal, QIcon::Off).toImage());
}

void TestVectorIconEngine::linesLieOnWholePixels_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {16, 20, 22, 24, 32, 40, 48, 64})
        QTest::addRow("%d", size) << size;
}

void TestVectorIconEngine::linesLieOnWholePixels()
{
    QFETCH(int, size);
    // Across the middle of the terminal's frame there is its left and its right line and nothing half covered.
    const QImage image = draw(KD::TerminalIcon, size);
    const int y = size * 5 / 6 - 1 - size / 10;
    int full = 0;
    for (int x = 0; x < size; ++x) {
        if (x < size / 6 || x >= size - size / 6) {
            const int alpha = qAlpha(image.pixel(x, y));
            QVERIFY2(alpha == 0 || alpha == 255, qPrintable(QStringLiteral("%1: %2").arg(x).arg(alpha)));
            full += alpha == 255 ? 1 : 0;
        }
    }
    QVERIFY(full >= 2);
}

void TestVectorIconEngine::isSharpAtEveryPixelRatio()
{
    // Painted at double density it is the drawing of double size, not a magnified one.
    QImage image(48, 48, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(2);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    VectorIconEngine engine(KD::OpenFileIcon);
    engine.paint(&painter, QRect(0, 0, 24, 24), QIcon::Normal, QIcon::Off);
    painter.end();
    image.setDevicePixelRatio(1);
    QCOMPARE(image.convertToFormat(QImage::Format_ARGB32), draw(KD::OpenFileIcon, 48));
}

void TestVectorIconEngine::drawsWhereItIsTold()
{
    QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    VectorIconEngine engine(KD::OpenFileIcon);
    engine.paint(&painter, QRect(30, 10, 34, 24), QIcon::Normal, QIcon::Off);
    painter.end();
    // Centred in the wider rectangle.
    QCOMPARE(image.copy(35, 10, 24, 24).convertToFormat(QImage::Format_ARGB32), draw(KD::OpenFileIcon, 24));
    QCOMPARE(inkedPixels(image), inkedPixels(draw(KD::OpenFileIcon, 24)));
}

void TestVectorIconEngine::survivesOddSizes_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("nothing") << QSize(0, 0);
    QTest::newRow("negative") << QSize(-1, -1);
    QTest::newRow("one pixel") << QSize(1, 1);
    QTest::newRow("flat") << QSize(100, 1);
}

void TestVectorIconEngine::survivesOddSizes()
{
    QFETCH(QSize, size);
    for (const KD::IconType type : AllIcons) {
        VectorIconEngine engine(type);
        const QPixmap pixmap = engine.pixmap(size, QIcon::Normal, QIcon::Off);
        QCOMPARE(pixmap.size(), size.isEmpty() ? QSize(0, 0) : size);
    }
}

void TestVectorIconEngine::clonesItself()
{
    VectorIconEngine engine(KD::ClearIcon);
    const QIcon copy(engine.clone());
    QCOMPARE(copy.pixmap(24, 24).toImage().convertToFormat(QImage::Format_ARGB32), draw(KD::ClearIcon, 24));
}

QTEST_MAIN(TestVectorIconEngine)
#include "tst_vector_icon_engine.moc"
