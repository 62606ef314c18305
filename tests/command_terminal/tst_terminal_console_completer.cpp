#include "command_terminal/terminal_console_completer.h"

#include "command_terminal/terminal_console_completer_contents.h"
#include "tests/command_terminal/shown_console.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLineEdit>
#include <QPointer>
#include <QProxyStyle>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleFactory>
#include <QTest>
#include <QVBoxLayout>

/// The popup around the list: its size, its scrolling, its selection and the focus that it never takes.
class TestTerminalConsoleCompleter : public QObject, private ShownConsole
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void isAHiddenToolTipOfTheConsole();
    void fitsItsCandidates_data();
    void fitsItsCandidates();
    void fitsTheFontOfTheContents();
    void measuresInEveryFont_data();
    void measuresInEveryFont();
    void fitsUnderEveryStyle_data();
    void fitsUnderEveryStyle();
    void takesTheScrollBarExtentOnce();
    void isNeverSmallerThanItsMinimum();
    void showsWithoutTakingTheFocus();
    void startsWithTheFirstCandidate();
    void emptyListHidesIt();
    void selectsRows_data();
    void selectsRows();
    void hasNothingSelectedWhenEmpty();
    void scrollsTheSelectionIntoView();
    void scrollsEvenWhenTheSelectionStays();
    void knowsTheFocusInside();
    void ignoresFocusOutsideTheFirstChildren();
    void destroysItsParts();

private:
    int rowHeight() const { return contents->fontMetrics().height(); }
    int widthOf(const QString &text) const
    {
        return contents->fontMetrics()
            .boundingRect(0, 0, 1000, 1000, Qt::AlignLeft | Qt::AlignTop, text)
            .width();
    }
    void takeParts(QWidget *owner);
    bool showsRow(int row) const;
    static QStringList names(int count);

    TerminalConsoleCompleter *popup = nullptr; // the console's, and so are its parts
    QScrollArea *scrollArea = nullptr;
    TerminalConsoleCompleterContents *contents = nullptr;
};

void TestTerminalConsoleCompleter::init()
{
    QVERIFY(showConsole());
    takeParts(console.get());
}

void TestTerminalConsoleCompleter::takeParts(QWidget *owner)
{
    popup = owner->findChild<TerminalConsoleCompleter *>();
    QVERIFY(popup);
    scrollArea = popup->findChild<QScrollArea *>();
    contents = popup->findChild<TerminalConsoleCompleterContents *>();
    QVERIFY(scrollArea);
    QVERIFY(contents);
}

void TestTerminalConsoleCompleter::cleanup()
{
    closeConsole();
}

QStringList TestTerminalConsoleCompleter::names(int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list.append(QStringLiteral("name%1").arg(i));
    return list;
}

bool TestTerminalConsoleCompleter::showsRow(int row) const
{
    const QRect place(0, row * rowHeight() + 2, 1, rowHeight());
    return contents->visibleRegion().boundingRect().contains(place);
}

void TestTerminalConsoleCompleter::isAHiddenToolTipOfTheConsole()
{
    QCOMPARE(popup->windowType(), Qt::ToolTip);
    QCOMPARE(popup->parentWidget(), console.get());
    QVERIFY(popup->isHidden());
    QCOMPARE(popup->minimumSize(), QSize(10, 10));
    QCOMPARE(popup->focusPolicy(), Qt::NoFocus);
    QCOMPARE(contents->focusPolicy(), Qt::NoFocus);
    const auto *layout = qobject_cast<QVBoxLayout *>(popup->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(1, 1, 1, 1));
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), scrollArea);
    QCOMPARE(scrollArea->parentWidget(), popup);
    QCOMPARE(scrollArea->widget(), contents);
    QVERIFY(!contents->isHidden());
    QCOMPARE(console->findChildren<TerminalConsoleCompleter *>().size(), 1);
}

void TestTerminalConsoleCompleter::fitsItsCandidates_data()
{
    QTest::addColumn<QStringList>("candidates");
    // As many rows as fit in 100 pixels with the margins of 2, and one more.
    const int fitting = (100 - 4) / QFontMetrics(QApplication::font()).height();
    QTest::newRow("one") << names(1);
    QTest::newRow("three") << names(3);
    QTest::newRow("just fitting") << names(fitting);
    QTest::newRow("one too many") << names(fitting + 1);
    QTest::newRow("five thousand") << names(5000);
    QTest::newRow("widest in the middle")
        << QStringList{QStringLiteral("a"), QStringLiteral("a wide candidate"), QStringLiteral("ab")};
    QTest::newRow("wider than the screen")
        << QStringList{QStringLiteral("w").repeated(500), QStringLiteral("a")};
    QTest::newRow("wider than the screen and scrolled")
        << names(fitting + 1) + QStringList{QStringLiteral("w").repeated(500)};
    QTest::newRow("right-to-left") << QStringList{QStringLiteral("\u05e9\u05dc\u05d5\u05dd"),
                                                  QStringLiteral("a")};
}

void TestTerminalConsoleCompleter::fitsItsCandidates()
{
    QFETCH(QStringList, candidates);
    popup->showCompletions(candidates);

    int widest = 0;
    for (const QString &text : std::as_const(candidates))
        widest = qMax(widest, widthOf(text));
    const QSize list(widest + 4, candidates.size() * rowHeight() + 4);
    QCOMPARE(contents->size(), list);

    const bool scrolls = list.height() > 100;
    const int extent = QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    const QSize expected =
        scrolls ? QSize(list.width() + extent + 8, 104) : QSize(list.width() + 4, list.height() + 4);
    QCOMPARE(popup->size(), expected);
    QVERIFY(popup->isVisible());
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QCOMPARE(popup->size(), expected);
    QCOMPARE(scrollArea->verticalScrollBar()->isVisible(), scrolls);
    QVERIFY(!scrollArea->horizontalScrollBar()->isVisible());
}

void TestTerminalConsoleCompleter::fitsTheFontOfTheContents()
{
    // Looks for fonts that bring the list to exactly 100 pixels and just above.
    bool exact = false;
    bool above = false;
    for (int pixels = 6; pixels < 90; ++pixels) {
        QFont font = contents->font();
        font.setPixelSize(pixels);
        contents->setFont(font);
        const int rows = 96 / rowHeight() + (96 % rowHeight() ? 1 : 0);
        popup->showCompletions(names(rows));
        const int height = rows * rowHeight() + 4;
        QCOMPARE(contents->height(), height);
        QCOMPARE(contents->width(), widthOf(names(rows).constLast()) + 4);
        QCOMPARE(popup->height(), 104); // 100 + 4, or what scrolls
        const int extent = QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
        QCOMPARE(popup->width(), contents->width() + (height > 100 ? extent + 8 : 4));
        exact = exact || height == 100;
        above = above || (height > 100 && height <= 104);
    }
    QVERIFY(exact);
    QVERIFY(above);
}

void TestTerminalConsoleCompleter::measuresInEveryFont_data()
{
    QTest::addColumn<QFont>("font");
    const QFont general = QApplication::font();
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (const QFont &base : {general, fixed}) {
        for (const bool kerning : {true, false}) {
            for (const bool italic : {true, false}) {
                QFont font = base;
                font.setKerning(kerning);
                font.setItalic(italic);
                QTest::addRow("%s%s%s", base == fixed ? "fixed" : "general", kerning ? ", kerned" : "",
                              italic ? ", italic" : "")
                    << font;
            }
        }
    }
}

void TestTerminalConsoleCompleter::measuresInEveryFont()
{
    QFETCH(QFont, font);
    contents->setFont(font);
    const QStringList texts{QStringLiteral("iiiiiiiiii"), QStringLiteral("WWWWWW"),
                            QStringLiteral("AVAVAVAV"),   QStringLiteral("office fluff"),
                            QStringLiteral("fffffffff"),  QStringLiteral("\t\t"),
                            QStringLiteral("a\nbbbbbbb"), QStringLiteral("\u4f60\u597d\u4f60\u597d"),
                            QStringLiteral("e\u0301"),    QStringLiteral("trailing f")};
    for (const QString &second : texts) {
        for (const QString &first : texts) {
            popup->showCompletions({first, second});
            QCOMPARE(contents->width(), qMax(widthOf(first), widthOf(second)) + 4);
        }
    }
}

void TestTerminalConsoleCompleter::fitsUnderEveryStyle_data()
{
    QTest::addColumn<QString>("style");
    const QStringList styles = QStyleFactory::keys();
    for (const QString &style : styles)
        QTest::newRow(qPrintable(style)) << style;
}

void TestTerminalConsoleCompleter::fitsUnderEveryStyle()
{
    QFETCH(QString, style);
    const QString usual = QApplication::style()->objectName();
    QApplication::setStyle(style);
    ProbeConsole other(*host);
    takeParts(&other);
    popup->showCompletions(names(3));
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    const bool fewScroll =
        scrollArea->verticalScrollBar()->isVisible() || scrollArea->horizontalScrollBar()->isVisible();
    popup->showCompletions(names(50));
    QCoreApplication::processEvents();
    const bool manyScroll = scrollArea->verticalScrollBar()->isVisible();
    const bool manyScrollSideways = scrollArea->horizontalScrollBar()->isVisible();
    QApplication::setStyle(usual);
    QVERIFY(!fewScroll);
    QVERIFY(manyScroll);
    QVERIFY(!manyScrollSideways);
}

namespace
{

/// A style with scroll bars of its own width.
class WideBars : public QProxyStyle
{
public:
    WideBars() : QProxyStyle(QStringLiteral("fusion")) { }

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        return metric == PM_ScrollBarExtent ? 37 : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

} // namespace

void TestTerminalConsoleCompleter::takesTheScrollBarExtentOnce()
{
    const QString usual = QApplication::style()->objectName();
    QApplication::setStyle(new WideBars); // the application owns it
    ProbeConsole other(*host);
    QApplication::setStyle(usual);
    QVERIFY(QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent) != 37);

    takeParts(&other);
    popup->showCompletions(names(50));
    QCOMPARE(popup->width(), contents->width() + 37 + 8);
    takeParts(console.get());
    popup->showCompletions(names(50));
    QCOMPARE(popup->width(),
             contents->width() + QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 8);
}

void TestTerminalConsoleCompleter::isNeverSmallerThanItsMinimum()
{
    popup->showCompletions({QString()});
    QCOMPARE(contents->width(), widthOf(QString()) + 4);
    QCOMPARE(popup->width(), qMax(10, contents->width() + 4));
    QCOMPARE(popup->currentCompletion(), QString());
}

void TestTerminalConsoleCompleter::showsWithoutTakingTheFocus()
{
    console->setFocus();
    popup->showCompletions(names(3));
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QVERIFY(console->isActiveWindow());
    QVERIFY(console->hasFocus());
    QTest::mouseClick(contents, Qt::LeftButton, {}, QPoint(5, rowHeight() + 5));
    QCOMPARE(popup->currentCompletion(), QStringLiteral("name1"));
    QVERIFY(console->hasFocus());
}

void TestTerminalConsoleCompleter::startsWithTheFirstCandidate()
{
    popup->showCompletions(names(3));
    QCOMPARE(popup->currentCompletion(), QStringLiteral("name0"));
    popup->selectNext();
    popup->showCompletions({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")}); // in their order
    QCOMPARE(popup->currentCompletion(), QStringLiteral("b"));
    QCOMPARE(contents->selectedRow(), 0);
}

void TestTerminalConsoleCompleter::emptyListHidesIt()
{
    popup->showCompletions(names(3));
    popup->selectNext();
    const QSize size = popup->size();
    popup->showCompletions({});
    QVERIFY(!popup->isVisible());
    QCOMPARE(popup->currentCompletion(), QStringLiteral("name1")); // kept, yet unseen
    QCOMPARE(popup->size(), size);
    popup->showCompletions({});
    QVERIFY(!popup->isVisible());
    popup->showCompletions(names(1));
    QVERIFY(popup->isVisible());
}

void TestTerminalConsoleCompleter::selectsRows_data()
{
    QTest::addColumn<QString>("moves"); // n for the next, p for the previous
    QTest::addColumn<int>("row");
    QTest::newRow("next") << QStringLiteral("n") << 1;
    QTest::newRow("next and previous") << QStringLiteral("np") << 0;
    QTest::newRow("to the last") << QStringLiteral("nn") << 2;
    QTest::newRow("stays at the last") << QStringLiteral("nnnnn") << 2;
    QTest::newRow("back from the last") << QStringLiteral("nnnp") << 1;
    QTest::newRow("stays at the first") << QStringLiteral("ppp") << 0;
    QTest::newRow("forth from the first") << QStringLiteral("ppn") << 1;
}

void TestTerminalConsoleCompleter::selectsRows()
{
    QFETCH(QString, moves);
    QFETCH(int, row);
    popup->showCompletions(names(3));
    for (const QChar move : std::as_const(moves)) {
        if (move == QLatin1Char('n'))
            popup->selectNext();
        else
            popup->selectPrevious();
    }
    QCOMPARE(contents->selectedRow(), row);
    QCOMPARE(popup->currentCompletion(), QStringLiteral("name%1").arg(row));
}

void TestTerminalConsoleCompleter::hasNothingSelectedWhenEmpty()
{
    QCOMPARE(popup->currentCompletion(), QString());
    popup->selectNext();
    popup->selectPrevious();
    QCOMPARE(popup->currentCompletion(), QString());
}

void TestTerminalConsoleCompleter::scrollsTheSelectionIntoView()
{
    popup->showCompletions(names(50));
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    for (int row = 1; row < 50; ++row) {
        popup->selectNext();
        QVERIFY2(showsRow(row), qPrintable(QString::number(row)));
        QVERIFY(row == 49 || showsRow(row - 1)); // a row's height of margin above
    }
    const QScrollBar *bar = scrollArea->verticalScrollBar();
    QCOMPARE(bar->value(), bar->maximum() - 2); // a row's height below the last row's top, without the margin
    for (int row = 48; row >= 0; --row) {
        popup->selectPrevious();
        QVERIFY2(showsRow(row), qPrintable(QString::number(row)));
        QVERIFY(row == 0 || showsRow(row - 1));
    }
    QCOMPARE(bar->value(), 0);
}

void TestTerminalConsoleCompleter::scrollsEvenWhenTheSelectionStays()
{
    popup->showCompletions(names(50));
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QScrollBar *bar = scrollArea->verticalScrollBar();
    bar->setValue(bar->maximum());
    QVERIFY(!showsRow(0));
    popup->selectPrevious();
    QCOMPARE(contents->selectedRow(), 0);
    QVERIFY(showsRow(0));

    for (int i = 0; i < 49; ++i)
        popup->selectNext();
    bar->setValue(0);
    QVERIFY(!showsRow(49));
    popup->selectNext();
    QCOMPARE(contents->selectedRow(), 49);
    QVERIFY(showsRow(49));
}

// Focus

void TestTerminalConsoleCompleter::knowsTheFocusInside()
{
    QVERIFY(console->hasFocus());
    popup->showCompletions(names(50));
    QVERIFY(!popup->hasFocusInside());
    console->clearFocus(); // which would close the popup when it goes
    popup->showCompletions(names(50));
    QVERIFY(!popup->hasFocusInside());

    // The popup and the first widget of each widget below it.
    QList<QWidget *> chain{popup};
    for (;;) {
        QWidget *first = chain.constLast()->findChild<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        if (!first)
            break;
        chain.append(first);
    }
    QVERIFY(chain.size() >= 3);
    QCOMPARE(chain.at(1), scrollArea);
    QApplication::setActiveWindow(popup);
    for (QWidget *widget : std::as_const(chain)) {
        widget->setFocusProxy(nullptr); // a scroll area takes the focus for its viewport otherwise
        widget->setFocus();
        QVERIFY(widget->hasFocus());
        QVERIFY(popup->hasFocusInside());
    }
}

void TestTerminalConsoleCompleter::ignoresFocusOutsideTheFirstChildren()
{
    console->clearFocus(); // which would close the popup when it goes
    popup->showCompletions(names(50));
    QApplication::setActiveWindow(popup);
    auto *second = new QLineEdit(popup);
    second->show();
    second->setFocus();
    QVERIFY(second->hasFocus());
    QVERIFY(!popup->hasFocusInside());

    QScrollBar *bar = scrollArea->verticalScrollBar(); // not the first child of the scroll area
    bar->setFocus();
    QVERIFY(bar->hasFocus());
    QVERIFY(!popup->hasFocusInside());
}

void TestTerminalConsoleCompleter::destroysItsParts()
{
    const QPointer<QWidget> area(scrollArea);
    const QPointer<QWidget> list(contents);
    const QPointer<QWidget> top(popup);
    popup->showCompletions(names(3));
    console.reset();
    QVERIFY(!top);
    QVERIFY(!area);
    QVERIFY(!list);
}

QTEST_MAIN(TestTerminalConsoleCompleter)

#include "tst_terminal_console_completer.moc"
