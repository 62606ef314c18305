#include "workbench/app/plant_docks.h"

#include "tests/workbench/fake_plugin.h"
#include "tests/workbench/plant_bench.h"
#include "workbench/app/channel_recorder.h"
#include "workbench/app/fault_switch.h"
#include "workbench/app/main_window.h"
#include "workbench/app/message_log.h"
#include "workbench/app/plant_watcher.h"
#include "workbench/app/settings_store.h"
#include "workbench/app/strip_chart.h"
#include "workbench/app/system_model.h"
#include "workbench/app/system_panel.h"
#include "workbench/app/system_view.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDockWidget>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QScopeGuard>
#include <QScrollBar>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using workbench::MainWindow;
using workbench::SettingsStore;
using workbench::SystemModel;
using workbench::SystemView;

namespace
{

const QString Channel = QStringLiteral("/local/3:0:0:-1/4:0:1000:-1/5:0:0:-1/6:0:0:1");

/// The window over the simulated plant.
struct Bench : PlantBench
{
    explicit Bench(const QString &folder = QString()) : store(folder) { open(); }

    void open()
    {
        plugin.mainData = &mainData;
        mainData.shuttingDown = false;
        window = std::make_unique<MainWindow>(plugin, mainData, store, &service);
        window->show();
    }

    SystemView &view() { return window->systemView(); }
    void select(const QString &key)
    {
        view().setCurrentIndex(qobject_cast<SystemModel *>(view().model())->indexOf(key));
    }

    /// Asks for the menu of the tree by the keyboard.
    QMenu *systemMenu()
    {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(1, 1));
        QCoreApplication::sendEvent(view().viewport(), &event);
        return window->findChild<QMenu *>(QStringLiteral("systemMenu"));
    }

    QDockWidget *dock(const char *name)
    {
        return window->findChild<QDockWidget *>(QString::fromLatin1(name));
    }
    QMenu *menu(const QString &title)
    {
        for (QAction *action : window->menuBar()->actions()) {
            if (action->menu() && action->text() == title)
                return action->menu();
        }
        return nullptr;
    }

    FakePlugin plugin;
    SettingsStore store;
    std::unique_ptr<MainWindow> window;
};

QAction *entryOf(const QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

} // namespace

class TestPlantDocks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void costsNothingAtFirst()
    {
        Bench bench;
        QVERIFY(!bench.dock("chart")->isVisible());
        QVERIFY(!bench.dock("messages")->isVisible());
        QVERIFY(!bench.window->plantDocks()->watcher().isRunning());
    }

    void isInTheWindowMenu()
    {
        Bench bench;
        const QMenu *menu = bench.menu(QStringLiteral("&Window"));
        QVERIFY(menu);
        QStringList mnemonics;
        for (const QAction *action : menu->actions()) {
            const int at = action->text().indexOf(QLatin1Char('&'));
            if (at >= 0)
                mnemonics << action->text().mid(at + 1, 1).toLower();
        }
        QCOMPARE(mnemonics.removeDuplicates(), 0);
        for (const char *name : {"chart", "messages"}) {
            QDockWidget *dock = bench.dock(name);
            QVERIFY(menu->actions().contains(dock->toggleViewAction()));
            dock->toggleViewAction()->trigger();
            QVERIFY(dock->isVisible());
            QVERIFY(!dock->visibleRegion().isEmpty());
        }
        QVERIFY(bench.window->plantDocks()->watcher().isRunning());
        bench.dock("messages")->toggleViewAction()->trigger();
        QVERIFY(!bench.dock("messages")->isVisible());
    }

    void showsEveryColumnOfTheSystem()
    {
        const QFont usual = QApplication::font();
        const auto restore = qScopeGuard([&usual] { QApplication::setFont(usual); });
        QFont font = usual;
        font.setPointSize(10); // a desktop's
        QApplication::setFont(font);
        Bench bench;
        // Also when there are more rows than fit, and so a scroll bar beside them.
        QTRY_VERIFY2(bench.view().width() >= bench.view().sizeHint().width(),
                     qPrintable(QString::number(bench.view().width())));
        QVERIFY(!bench.view().horizontalScrollBar()->isVisible());
        QVERIFY(bench.dock("system")->width() < bench.window->width() / 2);
    }

    void givesRoomToWhatIsShownFirst()
    {
        Bench bench;
        QDockWidget *messages = bench.dock("messages");
        messages->toggleViewAction()->trigger();
        QTRY_VERIFY2(messages->height() > bench.window->height() / 3,
                     qPrintable(QString::number(messages->height())));
    }

    void showsChannelsInTheChart()
    {
        Bench bench;
        bench.select(Channel);
        QMenu *menu = bench.systemMenu();
        QVERIFY(menu && menu->isVisible());
        QAction *show = entryOf(menu, QStringLiteral("Show in &Chart"));
        QVERIFY(show && show->isEnabled());
        show->trigger();
        menu->close();
        QVERIFY(bench.dock("chart")->isVisible());
        QCOMPARE(bench.window->plantDocks()->chart().recorder().count(), 1);
        QCOMPARE(bench.window->plantDocks()->chart().recorder().at(0).name(), QStringLiteral("local 0.0.1"));
        QTRY_VERIFY(bench.dock("chart")->height() > bench.window->height() / 5);
    }

    void offersNoChartForACrate()
    {
        Bench bench;
        bench.select(QStringLiteral("/local/3:0:0:-1/4:0:1000:-1"));
        QMenu *menu = bench.systemMenu();
        QVERIFY(!entryOf(menu, QStringLiteral("Show in &Chart"))->isEnabled());
        menu->close();
    }

    void simulatesFaultsPlainly()
    {
        Bench bench;
        bench.select(Channel);
        QMenu *menu = bench.menu(QStringLiteral("&Simulation"));
        QVERIFY(menu);
        Q_EMIT menu->aboutToShow();
        QAction *faults = entryOf(menu, QStringLiteral("Simulate &Fault"));
        QVERIFY(faults && faults->menu());
        Q_EMIT faults->menu()->aboutToShow();
        entryOf(faults->menu(), QStringLiteral("External &Inhibit"))->trigger();
        QCOMPARE(bench.window->statusBar()->currentMessage(),
                 QStringLiteral("Simulated fault: external inhibit at local 0.0.1"));
        QCOMPARE(bench.window->plantDocks()->faults().active().size(), 1);
    }

    void copiesAddresses()
    {
        Bench bench;
        bench.select(Channel);
        QMenu *menu = bench.systemMenu();
        entryOf(menu, QStringLiteral("Copy &Address"))->trigger();
        menu->close();
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("0.0.1"));
    }

    void keepsTheLayoutBetweenRuns()
    {
        QTemporaryDir dir;
        Bench bench(dir.path());
        bench.dock("messages")->toggleViewAction()->trigger();
        bench.window->addDockWidget(Qt::TopDockWidgetArea, bench.dock("messages"));
        bench.window->close();
        bench.open();
        QVERIFY(bench.dock("messages")->isVisible());
        QVERIFY(!bench.dock("chart")->isVisible());
        QCOMPARE(bench.window->dockWidgetArea(bench.dock("messages")), Qt::TopDockWidgetArea);
        QVERIFY(bench.window->plantDocks()->watcher().isRunning());
        bench.window->resetLayout();
        QVERIFY(!bench.dock("messages")->isVisible());
        QCOMPARE(bench.window->dockWidgetArea(bench.dock("messages")), Qt::BottomDockWidgetArea);
    }

    void closesInTheMiddleOfEverything()
    {
        Bench bench;
        bench.select(Channel);
        bench.window->plantDocks()->showInChart({PlantBench::channel(1)});
        bench.dock("messages")->toggleViewAction()->trigger();
        QVERIFY(bench.rampTo(PlantBench::channel(1), 1200));
        bench.window->systemPanel().findChild<QWidget *>(QStringLiteral("systemSearch"))->setFocus();
        QMenu *menu = bench.menu(QStringLiteral("&Simulation"));
        Q_EMIT menu->aboutToShow();
        QMenu *faults = entryOf(menu, QStringLiteral("Simulate &Fault"))->menu();
        Q_EMIT faults->aboutToShow();
        entryOf(faults, QStringLiteral("&Leak..."))->trigger();
        QVERIFY(bench.window->findChild<QInputDialog *>(QStringLiteral("faultAmount")));
        bench.step(0.5);
        bench.window->plantDocks()->watcher().poll();

        bench.window->shutDown();
        QVERIFY(!bench.window->plantDocks()->watcher().isRunning());
        bench.window.reset();
        bench.step(10);
        QVERIFY(!bench.service.journal(0).isEmpty());
    }

    void sharesTheMenuWithNoPlantAtAll()
    {
        PlantBench plant;
        FakePlugin plugin;
        plugin.mainData = &plant.mainData;
        MainWindow window(plugin, plant.mainData, SettingsStore(QString()));
        window.show();
        QVERIFY(!window.plantDocks());
        QVERIFY(!window.findChild<QDockWidget *>(QStringLiteral("chart")));
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(1, 1), QPoint(1, 1));
        QCoreApplication::sendEvent(window.systemView().viewport(), &event);
        auto *menu = window.findChild<QMenu *>(QStringLiteral("systemMenu"));
        QVERIFY(menu);
        QCOMPARE(menu->actions().size(), 1);
        menu->close();
    }
};

QTEST_MAIN(TestPlantDocks)

#include "tst_plant_docks.moc"
