#include "workbench/app/tool_menu.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>

using workbench::ToolMenu;

namespace
{

QStringList titles(const QList<QAction *> &actions)
{
    QStringList texts;
    for (const QAction *action : actions)
        texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return texts;
}

QStringList path(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

} // namespace

class TestToolMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sharesMenusByTitle()
    {
        QMenuBar bar;
        QMenu *window = bar.addMenu(QStringLiteral("&Window"));
        window->addAction(QStringLiteral("Reset"));
        QMenu *help = bar.addMenu(QStringLiteral("&Help"));
        ToolMenu menu(bar, help);
        menu.addEntry(1, path("Window/Tools/Terminal"));
        menu.addEntry(2, path("Window/Tools/Python Terminal"));
        menu.addEntry(3, path("Extras/Plot"));
        QCOMPARE(titles(bar.actions()),
                 QStringList({QStringLiteral("&Window"), QStringLiteral("Extras"), QStringLiteral("&Help")}));
        QCOMPARE(titles(window->actions()), QStringList({QStringLiteral("Tools"), QStringLiteral("Reset")}));
        QCOMPARE(titles(window->actions().constFirst()->menu()->actions()),
                 QStringList({QStringLiteral("Terminal"), QStringLiteral("Python Terminal")}));
    }

    void showsTitlesAsTheyAre()
    {
        QMenuBar bar;
        ToolMenu menu(bar, nullptr);
        menu.addEntry(1, path("R&D/Ramp & Hold"));
        menu.addEntry(2, path("R&D/Other"));
        QCOMPARE(titles(bar.actions()), QStringList(QStringLiteral("R&&D")));
        QCOMPARE(menu.entry(1)->text(), QStringLiteral("Ramp && Hold"));
    }

    void takesAPathOfOneElement()
    {
        QMenuBar bar;
        QMenu *help = bar.addMenu(QStringLiteral("&Help"));
        ToolMenu menu(bar, help);
        menu.addEntry(1, path("Terminal"));
        menu.addEntry(2, {});
        QCOMPARE(titles(bar.actions()), QStringList({QStringLiteral("Terminal"), QStringLiteral("&Help")}));
        QVERIFY(!menu.entry(2));
    }

    void asksToOpenAndToHide()
    {
        QMenuBar bar;
        ToolMenu menu(bar, nullptr);
        menu.addEntry(7, path("Window/Tools/Terminal"));
        QSignalSpy requests(&menu, &ToolMenu::openRequested);
        menu.entry(7)->trigger();
        QCOMPARE(requests.takeFirst(), QVariantList({7U, true}));
        menu.entry(7)->trigger();
        QCOMPARE(requests.takeFirst(), QVariantList({7U, false}));
    }

    void marksWithoutAsking()
    {
        QMenuBar bar;
        ToolMenu menu(bar, nullptr);
        menu.addEntry(7, path("Window/Tools/Terminal"));
        QSignalSpy requests(&menu, &ToolMenu::openRequested);
        QVERIFY(!menu.entry(7)->isChecked());
        menu.setOpen(7, true);
        QVERIFY(menu.entry(7)->isChecked());
        menu.setOpen(7, false);
        QVERIFY(!menu.entry(7)->isChecked());
        menu.setOpen(8, true);
        QVERIFY(requests.isEmpty());
    }

    void saysWhyAnEntryIsDisabled()
    {
        QMenuBar bar;
        ToolMenu menu(bar, nullptr);
        menu.addEntry(7, path("Window/Tools/Terminal"));
        menu.setOpen(7, true);
        menu.setUnavailable(7, QStringLiteral("not built"));
        QVERIFY(!menu.entry(7)->isEnabled());
        QVERIFY(!menu.entry(7)->isChecked());
        QCOMPARE(menu.entry(7)->statusTip(), QStringLiteral("not built"));
    }

    void replacesAnEntry()
    {
        QMenuBar bar;
        ToolMenu menu(bar, nullptr);
        menu.addEntry(7, path("Window/Old"));
        menu.addEntry(7, path("Window/New"));
        QMenu *window = bar.actions().constFirst()->menu();
        QTRY_COMPARE(titles(window->actions()), QStringList(QStringLiteral("New")));
    }
};

QTEST_MAIN(TestToolMenu)

#include "tst_tool_menu.moc"
