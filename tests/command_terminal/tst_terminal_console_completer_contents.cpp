#include "command_terminal/terminal_console_completer_contents.h"

#include "command_terminal/terminal_console_completer.h"
#include "tests/command_terminal/shown_console.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <utility>

namespace
{

/// Counts how often a widget is painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget *widget) { widget->installEventFilter(this); }

    int taken()
    {
        QCoreApplication::processEvents();
        return std::exchange(count, 0);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }

private:
    int count = 0;
};

QStringList names()
{
    return {QStringLiteral("alpha"), QStringLiteral("beta"), QStringLiteral("gamma")};
}

} // namespace

/// What the list paints and which row the mouse means.
class TestTerminalConsoleCompleterContents : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void fillsItselfWithWhite();
    void highlightsTheSelectedRow_data();
    void highlightsTheSelectedRow();
    void highlightIsAThousandPixelsWide();
    void drawsTextInTheApplicationsColours();
    void paintsEveryRowInItsPlace_data();
    void paintsEveryRowInItsPlace();
    void paintsAnyPartAlike();
    void textIsNotElided();

    void pressSelectsTheRow_data();
    void pressSelectsTheRow();
    void onlyLeftButtonCounts_data();
    void onlyLeftButtonCounts();
    void repaintsOnlyOnChange();
    void doubleClickHandsTheCandidateOver_data();
    void doubleClickHandsTheCandidateOver();
    void doubleClickWithoutConsole();

private:
    int rowHeight() const { return contents->fontMetrics().height(); }
    QImage painted() const;
    QImage expected(const QSize &size, const QStringList &rows, int selected) const;

    QPalette usualPalette;
    TerminalConsoleCompleterContents *contents = nullptr; // the console's popup's
};

void TestTerminalConsoleCompleterContents::initTestCase()
{
    usualPalette = QApplication::palette();
    // Colours that nothing else has, and others in the groups that must not be taken.
    QPalette palette = usualPalette;
    palette.setColor(QPalette::Highlight, Qt::darkCyan);
    palette.setColor(QPalette::HighlightedText, Qt::gray);
    palette.setColor(QPalette::WindowText, Qt::gray);
    palette.setColor(QPalette::Active, QPalette::HighlightedText, Qt::yellow);
    palette.setColor(QPalette::Active, QPalette::WindowText, Qt::blue);
    QApplication::setPalette(palette);
}

void TestTerminalConsoleCompleterContents::cleanupTestCase()
{
    QApplication::setPalette(usualPalette);
}

void TestTerminalConsoleCompleterContents::init()
{
    QVERIFY(showConsole());
    contents = console->findChild<TerminalConsoleCompleterContents *>();
    QVERIFY(contents);
    // Large enough for strokes of the full colour; and the widget's own palette is not to be used.
    QFont font = contents->font();
    font.setPixelSize(40);
    font.setBold(true);
    contents->setFont(font);
    QPalette own = contents->palette();
    own.setColor(QPalette::Highlight, Qt::magenta);
    own.setColor(QPalette::HighlightedText, Qt::magenta);
    own.setColor(QPalette::WindowText, Qt::magenta);
    own.setColor(QPalette::Window, Qt::magenta);
    contents->setPalette(own);
    console->showCompletions(names());
    QVERIFY(QTest::qWaitForWindowExposed(console->completer));
}

void TestTerminalConsoleCompleterContents::cleanup()
{
    closeConsole();
}

QImage TestTerminalConsoleCompleterContents::painted() const
{
    QImage image(contents->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::magenta);
    contents->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

/// The list as it should be: white, a row selected, each text 2 pixels from the left on the baseline of its row.
QImage TestTerminalConsoleCompleterContents::expected(const QSize &size, const QStringList &rows,
                                                      int selected) const
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(contents->font());
    int baseline = contents->fontMetrics().ascent() + 2;
    for (int row = 0; row < rows.size(); ++row) {
        if (row == selected)
            painter.fillRect(0, baseline - contents->fontMetrics().ascent(), 1000, rowHeight(), Qt::darkCyan);
        painter.setPen(row == selected ? Qt::yellow : Qt::blue);
        painter.drawText(2, baseline, rows.at(row));
        baseline += rowHeight();
    }
    return image;
}

void TestTerminalConsoleCompleterContents::fillsItselfWithWhite()
{
    contents->resize(1200, 600); // more than rows and texts need
    const QImage image = painted();
    for (const QPoint &corner : {QPoint(0, 0), QPoint(1199, 0), QPoint(0, 599), QPoint(1199, 599)})
        QCOMPARE(image.pixelColor(corner), QColor(Qt::white));
    for (int y = 0; y < image.height(); ++y)
        QCOMPARE(image.pixelColor(1100, y), QColor(Qt::white)); // beyond text and highlight
}

void TestTerminalConsoleCompleterContents::highlightsTheSelectedRow_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("first") << 0;
    QTest::newRow("second") << 1;
    QTest::newRow("last") << 2;
}

void TestTerminalConsoleCompleterContents::highlightsTheSelectedRow()
{
    QFETCH(int, row);
    contents->select(row);
    const QImage image = painted();
    const int top = 2 + row * rowHeight();
    for (int y = 0; y < image.height(); ++y) {
        const bool selected = y >= top && y < top + rowHeight();
        QCOMPARE(image.pixelColor(0, y), QColor(selected ? Qt::darkCyan : Qt::white)); // left of every text
        QCOMPARE(image.pixelColor(image.width() - 1, y), image.pixelColor(0, y));
    }
}

void TestTerminalConsoleCompleterContents::highlightIsAThousandPixelsWide()
{
    contents->resize(1200, contents->height());
    const QImage image = painted();
    const int middle = 2 + rowHeight() / 2;
    QCOMPARE(image.pixelColor(999, middle), QColor(Qt::darkCyan));
    QCOMPARE(image.pixelColor(1000, middle), QColor(Qt::white));
}

void TestTerminalConsoleCompleterContents::drawsTextInTheApplicationsColours()
{
    contents->select(1);
    const QImage image = painted();
    const auto count = [&](int row, const QColor &colour) {
        int found = 0;
        for (int y = 2 + row * rowHeight(); y < 2 + (row + 1) * rowHeight(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                found += image.pixelColor(x, y) == colour;
        }
        return found;
    };
    for (int row = 0; row < names().size(); ++row) {
        QVERIFY(count(row, row == 1 ? Qt::yellow : Qt::blue) > 20);
        QCOMPARE(count(row, row == 1 ? Qt::blue : Qt::yellow), 0);
        QCOMPARE(count(row, Qt::gray), 0);
        QCOMPARE(count(row, Qt::magenta), 0);
    }
}

void TestTerminalConsoleCompleterContents::paintsEveryRowInItsPlace_data()
{
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<int>("selected");
    QTest::newRow("first selected") << names() << 0;
    QTest::newRow("last selected") << names() << 2;
    QTest::newRow("many") << names() + names() + names() + names() << 7;
    QTest::newRow("empty candidate") << QStringList{QString(), QStringLiteral("a")} << 1;
    QTest::newRow("line feed inside") << QStringList{QStringLiteral("a\nb"), QStringLiteral("c")} << 0;
    QTest::newRow("right-to-left") << QStringList{QStringLiteral("\u05e9\u05dc\u05d5\u05dd"),
                                                  QStringLiteral("a")}
                                   << 1;
}

void TestTerminalConsoleCompleterContents::paintsEveryRowInItsPlace()
{
    QFETCH(QStringList, rows);
    QFETCH(int, selected);
    console->showCompletions(rows);
    contents->select(selected);
    QCOMPARE(painted(), expected(contents->size(), rows, selected));
}

void TestTerminalConsoleCompleterContents::paintsAnyPartAlike()
{
    // Marks above and below reach out of their row.
    const QStringList tall{QStringLiteral("\u00c5\u0302\u0302g\u0331\u0331"), QStringLiteral("a")};
    const QStringList rows = names() + tall + tall + tall + names();
    console->showCompletions(rows);
    contents->select(5);
    const QImage whole = expected(contents->size(), rows, 5);
    for (int y = 0; y < contents->height(); y += 7) {
        const QRect part(0, y, contents->width(), qMin(7, contents->height() - y));
        QImage image(part.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::magenta);
        contents->render(&image, QPoint(), part, QWidget::RenderFlags());
        QVERIFY2(image == whole.copy(part), qPrintable(QString::number(y)));
    }
}

void TestTerminalConsoleCompleterContents::textIsNotElided()
{
    const QStringList rows{QStringLiteral("a_candidate_of_some_length")};
    console->showCompletions(rows);
    contents->resize(100, contents->height());
    QCOMPARE(painted(), expected(contents->size(), rows, 0));
}

// Mouse

void TestTerminalConsoleCompleterContents::pressSelectsTheRow_data()
{
    QTest::addColumn<int>("rows"); // the vertical place: so many row heights,
    QTest::addColumn<int>("pixels"); // and so many pixels
    QTest::addColumn<int>("selected"); // row 1 is selected before
    QTest::newRow("upper edge belongs to the first") << 0 << 0 << 0;
    QTest::newRow("last pixel of the margin") << 0 << 1 << 0;
    QTest::newRow("first pixel of the first row") << 0 << 2 << 0;
    QTest::newRow("last pixel of the first row") << 1 << 1 << 0;
    QTest::newRow("first pixel of the second row") << 1 << 2 << 1;
    QTest::newRow("last pixel of the last row") << 3 << 1 << 2;
    QTest::newRow("below the last row") << 3 << 2 << 1;
    QTest::newRow("far below") << 9 << 0 << 1;
    QTest::newRow("just above") << 0 << -1 << 0; // rounded towards zero
    QTest::newRow("a row above") << -1 << 2 << 1;
    QTest::newRow("nearly a row above") << -1 << 3 << 0;
}

void TestTerminalConsoleCompleterContents::pressSelectsTheRow()
{
    QFETCH(int, rows);
    QFETCH(int, pixels);
    contents->select(1);
    QMouseEvent press(QEvent::MouseButtonPress, QPoint(5, rows * rowHeight() + pixels), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(contents, &press);
    QTEST(contents->selectedRow(), "selected");
    QCOMPARE(console->completer->currentCompletion(), names().at(contents->selectedRow()));
    QVERIFY(console->isPopupOpen());
}

void TestTerminalConsoleCompleterContents::onlyLeftButtonCounts_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("right") << int{Qt::RightButton};
    QTest::newRow("middle") << int{Qt::MiddleButton};
    QTest::newRow("back") << int{Qt::BackButton};
}

void TestTerminalConsoleCompleterContents::onlyLeftButtonCounts()
{
    QFETCH(int, button);
    const QPoint second(5, rowHeight() + 5);
    QTest::mouseClick(contents, static_cast<Qt::MouseButton>(button), {}, second);
    QTest::mouseDClick(contents, static_cast<Qt::MouseButton>(button), {}, second);
    QCOMPARE(contents->selectedRow(), 0);
    QVERIFY(console->isPopupOpen());
    QCOMPARE(console->toPlainText(), QStringLiteral("> "));
}

void TestTerminalConsoleCompleterContents::repaintsOnlyOnChange()
{
    // Small enough that nothing scrolls, which would paint as well.
    QFont font = contents->font();
    font.setPixelSize(12);
    contents->setFont(font);
    console->showCompletions(names());
    PaintCounter paints(contents);
    paints.taken();
    const auto press = [&](int row) {
        QTest::mousePress(contents, Qt::LeftButton, {}, QPoint(5, row * rowHeight() + 5));
        return paints.taken();
    };
    QCOMPARE(press(1), 1);
    QCOMPARE(press(1), 0); // the selected row already
    QCOMPARE(press(3), 0); // no row
    QCOMPARE(press(2), 1);
    console->completer->selectNext();
    QCOMPARE(paints.taken(), 0); // the last row already
    console->completer->selectPrevious();
    QCOMPARE(paints.taken(), 1);
    console->showCompletions(names());
    QCOMPARE(paints.taken(), 1);
}

void TestTerminalConsoleCompleterContents::doubleClickHandsTheCandidateOver_data()
{
    QTest::addColumn<int>("y"); // in row heights
    QTest::addColumn<QString>("input");
    QTest::addColumn<int>("selected");
    QTest::newRow("selected row") << 0 << QStringLiteral("get alpha") << 0;
    QTest::newRow("another row") << 2 << QStringLiteral("get gamma") << 2;
    QTest::newRow("below the last row") << 3 << QStringLiteral("get al") << 0;
}

void TestTerminalConsoleCompleterContents::doubleClickHandsTheCandidateOver()
{
    QFETCH(int, y);
    QFETCH(QString, input);
    console->type(QStringLiteral("get al"));
    console->showCompletions(names());
    QMouseEvent click(QEvent::MouseButtonDblClick, QPoint(5, y * rowHeight() + 5), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(contents, &click);
    QCOMPARE(console->input(), input);
    QTEST(contents->selectedRow(), "selected");
    const bool accepted = input != QStringLiteral("get al");
    QCOMPARE(console->isPopupOpen(), !accepted);
    QCOMPARE(console->completionStart == -1, accepted);
    QVERIFY(console->executed.isEmpty());
}

void TestTerminalConsoleCompleterContents::doubleClickWithoutConsole()
{
    TerminalConsoleCompleterContents alone(nullptr, nullptr);
    alone.setCandidates(names());
    alone.show();
    QVERIFY(QTest::qWaitForWindowExposed(&alone));
    PaintCounter paints(&alone);
    paints.taken();
    const auto doubleClick = [&](int row) {
        QMouseEvent click(QEvent::MouseButtonDblClick, QPoint(5, row * alone.fontMetrics().height() + 5),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&alone, &click);
    };
    doubleClick(2);
    QCOMPARE(alone.selectedRow(), 2);
    QCOMPARE(paints.taken(), 0); // it is hidden next, so nobody would see it
    doubleClick(3);
    QCOMPARE(alone.selectedRow(), 2);
    alone.select(1);
    QCOMPARE(paints.taken(), 1);
}

QTEST_MAIN(TestTerminalConsoleCompleterContents)

#include "tst_terminal_console_completer_contents.moc"
