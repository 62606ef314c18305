#include "command_terminal/terminal_toolbar.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QAction>
#include <QIcon>
#include <QtTest>

#include <memory>

namespace
{

enum Position
{
    ShowTerminal,
    ShowEditor,
    OpenFile,
    SaveFile,
    ExecuteFile,
    ClearTerminal,
};

QImage pictureOf(const QIcon &icon)
{
    return icon.pixmap(32, 32).toImage();
}

} // namespace

class TestTerminalToolbar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void placement();
    void actions_data();
    void actions();
    void iconsDiffer();
    void textsArePlainAndToolTipsTranslated();
    void toolTipsTellWhatAndHow();
    void shortcutsDiffer();

    void eachActionReportsItsEvent_data();
    void eachActionReportsItsEvent();
    void theDataAreReadAsUnsigned();
    void theActionsOwnStateDoesNotReport();

    void iconSize_data();
    void iconSize();

    void modes_data();
    void modes();
    void aModeCanBeSetAgain();
    void saveIsEnabledAndDisabled();
    void savingStaysDisabledThroughTheModes();

private:
    QAction *action(int position) const { return toolbar->actions().at(position); }

    std::unique_ptr<TerminalFixture> fixture;
    std::unique_ptr<TerminalToolbar> toolbar;
};

void TestTerminalToolbar::init()
{
    fixture = std::make_unique<TerminalFixture>();
    toolbar = std::make_unique<TerminalToolbar>(nullptr, fixture->mainData, fixture->observer);
}

void TestTerminalToolbar::cleanup()
{
    toolbar.reset();
    fixture.reset();
}

void TestTerminalToolbar::placement()
{
    QCOMPARE(toolbar->orientation(), Qt::Vertical);
    QVERIFY(!toolbar->isMovable());
    QCOMPARE(toolbar->actions().size(), 6);
}

void TestTerminalToolbar::actions_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("icon");
    QTest::addColumn<uint>("event");
    QTest::addColumn<bool>("checkable");
    QTest::newRow("Show Terminal") << 0 << 51 << 252U << true;
    QTest::newRow("Show Text Editor") << 1 << 29 << 253U << true;
    QTest::newRow("Open File") << 2 << 10 << 254U << false;
    QTest::newRow("Save File") << 3 << 11 << 255U << false;
    QTest::newRow("Execute File") << 4 << 55 << 256U << false;
    QTest::newRow("Clear Terminal") << 5 << 15 << 257U << false;
}

void TestTerminalToolbar::actions()
{
    QFETCH(int, position);
    QFETCH(int, icon);
    QCOMPARE(action(position)->text(), QString::fromLatin1(QTest::currentDataTag()));
    QTEST(action(position)->data().toUInt(), "event");
    QTEST(action(position)->isCheckable(), "checkable");
    QVERIFY(!action(position)->icon().isNull());
    QCOMPARE(pictureOf(action(position)->icon()),
             pictureOf(fixture->mainData.getIcon(static_cast<KD::IconType>(icon))));
}

// Without it the comparison with the host's icons would tell nothing.
void TestTerminalToolbar::iconsDiffer()
{
    for (int i = 0; i < 6; ++i) {
        for (int k = 0; k < i; ++k)
            QVERIFY(pictureOf(action(i)->icon()) != pictureOf(action(k)->icon()));
    }
}

void TestTerminalToolbar::textsArePlainAndToolTipsTranslated()
{
    const ContextTranslator translator;
    const TerminalToolbar other(nullptr, fixture->mainData, fixture->observer);
    for (int i = 0; i < 6; ++i) {
        const QAction *translated = other.actions().at(i);
        QCOMPARE(translated->text(), action(i)->text());
        QVERIFY2(translated->toolTip().startsWith(QLatin1String("[TerminalToolbar]")),
                 qPrintable(translated->toolTip()));
    }
}

void TestTerminalToolbar::toolTipsTellWhatAndHow()
{
    for (int i = 0; i < 6; ++i) {
        const QString shortcut = action(i)->shortcut().toString(QKeySequence::NativeText);
        QVERIFY(!shortcut.isEmpty());
        const QString tip = action(i)->toolTip();
        QVERIFY2(tip.endsWith(QStringLiteral(" (%1)").arg(shortcut)), qPrintable(tip));
        QVERIFY2(tip.size() > shortcut.size() + 3 + 5, qPrintable(tip));
    }
}

void TestTerminalToolbar::shortcutsDiffer()
{
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(action(i)->shortcutContext(), Qt::WidgetWithChildrenShortcut);
        for (int k = 0; k < i; ++k)
            QVERIFY(action(i)->shortcut() != action(k)->shortcut());
    }
}

void TestTerminalToolbar::eachActionReportsItsEvent_data()
{
    actions_data();
}

void TestTerminalToolbar::eachActionReportsItsEvent()
{
    QFETCH(int, position);
    QFETCH(uint, event);
    // Pressed as a user does it: by the button that stands for the action, in the mode in which it is there.
    toolbar->setTerminalMode();
    if (position != ShowEditor && position != ClearTerminal)
        toolbar->setEditorMode();
    toolbar->show();
    QTest::mouseClick(toolbar->widgetForAction(action(position)), Qt::LeftButton);

    const std::vector<KdChildEvent> &events = fixture->observer.events();
    QCOMPARE(events.size(), std::size_t{1});
    QCOMPARE(quint32{events.front().type}, event);
    QVERIFY(events.front().intArguments.isEmpty());
    QVERIFY(events.front().stringArguments.isEmpty());
}

void TestTerminalToolbar::theDataAreReadAsUnsigned()
{
    QAction *added = toolbar->addAction(QStringLiteral("another"));
    added->setData(4294967295U);
    added->trigger();
    QCOMPARE(fixture->observer.types(), std::vector<quint32>{4294967295U});
}

void TestTerminalToolbar::theActionsOwnStateDoesNotReport()
{
    toolbar->setEditorMode();
    toolbar->setTerminalMode();
    toolbar->setSaveEnabled(false);
    toolbar->setSaveEnabled(true);
    QVERIFY(fixture->observer.events().empty());
}

void TestTerminalToolbar::iconSize_data()
{
    QTest::addColumn<double>("factor");
    QTest::newRow("none") << 0.0;
    QTest::newRow("a tenth") << 0.1;
    QTest::newRow("half") << 0.5;
    QTest::newRow("as it is") << 1.0;
    QTest::newRow("between two pixels") << 1.03;
    QTest::newRow("two and a half") << 2.5;
    QTest::newRow("below zero") << -1.0;
}

void TestTerminalToolbar::iconSize()
{
    QFETCH(double, factor);
    const QSize usual = QToolBar().iconSize();
    QVERIFY(usual.width() > 16);
    fixture->mainData.setToolbarIconScaleFactor(factor);
    const TerminalToolbar other(nullptr, fixture->mainData, fixture->observer);
    const QSize scaled(static_cast<int>(usual.width() * factor), static_cast<int>(usual.height() * factor));
    QCOMPARE(other.iconSize(), scaled.width() < 16 ? QSize(16, 16) : scaled);
}

void TestTerminalToolbar::modes_data()
{
    QTest::addColumn<bool>("terminal");
    QTest::newRow("terminal mode") << true;
    QTest::newRow("editor mode") << false;
}

void TestTerminalToolbar::modes()
{
    QFETCH(bool, terminal);
    // From the other mode, so that nothing is as it is by chance.
    terminal ? toolbar->setEditorMode() : toolbar->setTerminalMode();
    terminal ? toolbar->setTerminalMode() : toolbar->setEditorMode();

    QCOMPARE(action(ShowTerminal)->isEnabled(), !terminal);
    QCOMPARE(action(ShowTerminal)->isChecked(), terminal);
    QCOMPARE(action(ShowEditor)->isEnabled(), terminal);
    QCOMPARE(action(ShowEditor)->isChecked(), !terminal);
    QCOMPARE(action(OpenFile)->isVisible(), !terminal);
    QCOMPARE(action(SaveFile)->isVisible(), !terminal);
    QCOMPARE(action(ExecuteFile)->isVisible(), !terminal);
    QCOMPARE(action(ClearTerminal)->isVisible(), terminal);
    QVERIFY(action(ShowTerminal)->isVisible());
    QVERIFY(action(ShowEditor)->isVisible());
}

void TestTerminalToolbar::aModeCanBeSetAgain()
{
    toolbar->setEditorMode();
    toolbar->setEditorMode();
    QVERIFY(action(ShowEditor)->isChecked());
    QVERIFY(!action(ShowTerminal)->isChecked());
    toolbar->setTerminalMode();
    toolbar->setTerminalMode();
    QVERIFY(action(ShowTerminal)->isChecked());
    QVERIFY(!action(ShowEditor)->isChecked());
}

void TestTerminalToolbar::saveIsEnabledAndDisabled()
{
    toolbar->setEditorMode();
    toolbar->setSaveEnabled(false);
    QVERIFY(!action(SaveFile)->isEnabled());
    QVERIFY(action(OpenFile)->isEnabled());
    QVERIFY(action(ExecuteFile)->isEnabled());
    toolbar->setSaveEnabled(true);
    QVERIFY(action(SaveFile)->isEnabled());
}

void TestTerminalToolbar::savingStaysDisabledThroughTheModes()
{
    toolbar->setEditorMode();
    toolbar->setSaveEnabled(false);
    toolbar->setTerminalMode();
    toolbar->setEditorMode();
    QVERIFY(!action(SaveFile)->isEnabled());
    QVERIFY(action(SaveFile)->isVisible());
}

QTEST_MAIN(TestTerminalToolbar)
#include "tst_terminal_toolbar.moc"
