#include "workbench/app/main_window.h"

#include "hostsdk/kd_plugin_widget.h"
#include "tests/workbench/fake_plugin.h"
#include "tests/workbench/small_system.h"
#include "workbench/app/system_model.h"
#include "workbench/app/system_view.h"
#include "workbench/app/tool_dock.h"
#include "workbench/app/tool_docks.h"
#include "workbench/app/tool_host.h"
#include "workbench/app/tool_menu.h"
#include "workbench/app/unsaved_text.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using workbench::MainWindow;
using workbench::SettingsStore;
using workbench::ToolDock;

Q_DECLARE_METATYPE(QMessageBox::StandardButton)

namespace
{

const QString AlphaChannel = QStringLiteral("/left/3:0:0:-1/4:0:1000:-1/5:0:4:-1/6:0:4:1");

/// A window over a small system and a plug-in that keeps a log.
struct Bench
{
    explicit Bench(const QString &folder = QString()) : store(folder) { open(); }

    void open()
    {
        plugin.log.clear();
        plugin.mainData = &system.mainData;
        system.mainData.shuttingDown = false;
        window = std::make_unique<MainWindow>(plugin, system.mainData, store);
        window->show();
    }

    quint32 alpha() const { return plugin.classIds.at(0); }
    quint32 beta() const { return plugin.classIds.at(1); }
    QAction *entry(quint32 classId) { return window->toolMenu().entry(classId); }
    ToolDock *dock() { return window->toolDocks().dock(alpha()); }

    void choose(const QString &key)
    {
        workbench::SystemView &view = window->systemView();
        const auto *model = qobject_cast<workbench::SystemModel *>(view.model());
        view.scrollTo(model->indexOf(key));
        const QPoint place = view.visualRect(model->indexOf(key)).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place);
    }

    SmallSystem system;
    FakePlugin plugin;
    SettingsStore store;
    std::unique_ptr<MainWindow> window;
};

QStringList list(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1String(", "));
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysThatItIsASimulation()
    {
        Bench bench;
        QVERIFY(bench.window->windowTitle().startsWith(QStringLiteral("SIMULATION")));
        const auto *banner = bench.window->findChild<QLabel *>(QStringLiteral("banner"));
        QVERIFY(banner && banner->isVisible());
        QVERIFY(banner->text().contains(QStringLiteral("Nothing here reaches hardware")));
    }

    void startsWithTheFirstTool()
    {
        Bench bench;
        QCOMPARE(bench.plugin.log,
                 list("describe, register 2, load, create 0 0, event 150 4, event 149, event 148, shown"));
        QVERIFY(bench.dock() && bench.dock()->isVisible());
        QVERIFY(bench.entry(bench.alpha())->isChecked());
        QVERIFY(!bench.entry(bench.beta())->isChecked());
        QVERIFY(bench.dock()->x() > bench.window->systemView().mapTo(bench.window.get(), QPoint()).x());
    }

    void givesTheSystemItsShare()
    {
        Bench bench;
        QCOMPARE(bench.window->size(), QSize(1280, 800));
        // What its columns need, and more than half for the tools.
        const auto share = [&] { return bench.window->systemView().width() * 100 / bench.window->width(); };
        QTRY_VERIFY2(share() >= 38 && share() <= 48, qPrintable(QString::number(share())));
    }

    void hidesAndShowsFromTheMenu()
    {
        Bench bench;
        const KdPluginWidget *tool = bench.window->toolHost().tool(bench.alpha());
        bench.plugin.log.clear();
        bench.entry(bench.alpha())->trigger();
        QCOMPARE(bench.plugin.log, list("event 147, hidden"));
        QVERIFY(bench.dock()->isHidden());
        QVERIFY(!bench.entry(bench.alpha())->isChecked());

        bench.plugin.log.clear();
        bench.entry(bench.alpha())->trigger();
        QCOMPARE(bench.plugin.log, list("event 148, shown"));
        QVERIFY(bench.dock()->isVisible());
        QVERIFY(bench.entry(bench.alpha())->isChecked());
        QCOMPARE(bench.window->toolHost().tool(bench.alpha()), tool);
    }

    void hidesFromTheDock()
    {
        Bench bench;
        bench.plugin.log.clear();
        QVERIFY(bench.dock()->close());
        QCOMPARE(bench.plugin.log, list("event 147, hidden"));
        QVERIFY(!bench.entry(bench.alpha())->isChecked());
        QVERIFY(bench.window->statusBar()->currentMessage().contains(QStringLiteral("Alpha")));
        bench.dock()->close();
        QCOMPARE(bench.plugin.log, list("event 147, hidden"));
    }

    void disablesAToolThatThePluginDoesNotHave()
    {
        Bench bench;
        bench.entry(bench.beta())->trigger();
        QCOMPARE(bench.plugin.logOf(QStringLiteral("create")), list("create 0 0, create 1 0"));
        QVERIFY(!bench.entry(bench.beta())->isEnabled());
        QVERIFY(!bench.entry(bench.beta())->isChecked());
        QVERIFY(bench.window->statusBar()->currentMessage().contains(QStringLiteral("Beta")));
        QVERIFY(bench.entry(bench.alpha())->isEnabled());
    }

    void tellsTheToolsWhatWasChosen()
    {
        Bench bench;
        bench.plugin.log.clear();
        bench.choose(AlphaChannel);
        QCOMPARE(bench.plugin.log, list("event 206 6:0:0:4:1"));
        bench.plugin.log.clear();
        workbench::SystemView &view = bench.window->systemView();
        Q_EMIT view.activated(view.currentIndex());
        QCOMPARE(bench.plugin.log, list("event 208 6:0:0:4:1"));
    }

    void tellsHiddenToolsToo()
    {
        Bench bench;
        bench.dock()->close();
        bench.plugin.log.clear();
        bench.choose(AlphaChannel);
        QCOMPARE(bench.plugin.log, list("event 206 6:0:0:4:1"));
    }

    void shutsDownInOrder()
    {
        Bench bench;
        bench.plugin.log.clear();
        QVERIFY(bench.window->close());
        QVERIFY(bench.system.mainData.shuttingDown);
        QVERIFY(bench.plugin.shuttingDownAtSave);
        QStringList log = bench.plugin.log;
        log.removeAll(QStringLiteral("hidden"));
        QCOMPARE(log, list("save, event 173, deleted"));
        bench.window.reset(); // and nothing is done twice
        log = bench.plugin.log;
        log.removeAll(QStringLiteral("hidden"));
        QCOMPARE(log, list("save, event 173, deleted"));
    }

    void shutsDownWhenItIsDestroyed()
    {
        Bench bench;
        bench.plugin.log.clear();
        bench.window.reset();
        bench.plugin.log.removeAll(QStringLiteral("hidden"));
        QCOMPARE(bench.plugin.log, list("save, event 173, deleted"));
    }

    void ignoresTheOperatorAfterShutDown()
    {
        Bench bench;
        bench.window->shutDown();
        bench.plugin.log.clear();
        bench.choose(AlphaChannel);
        bench.system.setControllers(1);
        QTRY_COMPARE(bench.window->systemView().model()->rowCount(), 1);
        QVERIFY(bench.plugin.logOf(QStringLiteral("event")).isEmpty());
    }

    void quitsFromTheMenu()
    {
        Bench bench;
        QAction *quit = nullptr;
        const QList<QAction *> actions = bench.window->findChildren<QAction *>();
        for (QAction *action : actions) {
            if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Q))
                quit = action;
        }
        QVERIFY(quit);
        quit->trigger();
        QVERIFY(!bench.window->isVisible());
        QVERIFY(bench.system.mainData.shuttingDown);
    }

    void asksBeforeTypedTextIsLost_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("saved");
        QTest::addColumn<QMessageBox::StandardButton>("answer"); // NoButton where nothing is asked
        QTest::addColumn<bool>("closes");
        const QString text = QStringLiteral("wait 1000");
        QTest::newRow("cancelled") << text << false << QMessageBox::Cancel << false;
        QTest::newRow("discarded") << text << false << QMessageBox::Discard << true;
        QTest::newRow("saved") << text << true << QMessageBox::NoButton << true;
        QTest::newRow("empty") << QString() << false << QMessageBox::NoButton << true;
    }

    void asksBeforeTypedTextIsLost()
    {
        QFETCH(QString, typed);
        QFETCH(bool, saved);
        QFETCH(QMessageBox::StandardButton, answer);
        QFETCH(bool, closes);
        Bench bench;
        KdPluginWidget *tool = bench.window->toolHost().tool(bench.alpha());
        auto *editor = new QPlainTextEdit(tool);
        editor->setObjectName(QStringLiteral("editor"));
        editor->setPlainText(QStringLiteral("put there by the program"));
        QVERIFY(!workbench::hasUnsavedText(*tool));
        editor->selectAll();
        QTest::keyClick(editor, Qt::Key_Delete);
        QTest::keyClicks(editor, typed);
        if (saved)
            editor->document()->setModified(false);

        int questions = 0;
        QTimer::singleShot(0, bench.window.get(), [&] {
            if (auto *question = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                ++questions;
                question->button(answer)->click();
            }
        });
        QCOMPARE(bench.window->close(), closes);
        QCOMPARE(bench.window->isVisible(), !closes);
        QCOMPARE(bench.system.mainData.shuttingDown, closes);
        QCOMPARE(questions, answer == QMessageBox::NoButton ? 0 : 1);
    }

    void keepsSettingsBetweenRuns()
    {
        QTemporaryDir dir;
        Bench bench(dir.path());
        bench.plugin.setting = QStringLiteral("/tmp/ramp.txt");
        bench.window.reset();
        bench.plugin.setting.clear();
        bench.open();
        QCOMPARE(bench.plugin.setting, QStringLiteral("/tmp/ramp.txt"));
    }

    void keepsTheLayoutBetweenRuns()
    {
        QTemporaryDir dir;
        Bench bench(dir.path());
        bench.window->resize(900, 700);
        bench.window->addDockWidget(Qt::TopDockWidgetArea, bench.dock());
        bench.window->systemView().header()->resizeSection(0, 333);
        bench.window->close();
        bench.open();
        QCOMPARE(bench.window->size(), QSize(900, 700));
        QVERIFY(bench.dock() && bench.dock()->isVisible());
        QCOMPARE(bench.window->dockWidgetArea(bench.dock()), Qt::TopDockWidgetArea);
        QCOMPARE(bench.window->systemView().header()->sectionSize(0), 333);
        QVERIFY(bench.entry(bench.alpha())->isChecked());
    }

    void remembersThatAToolWasHidden()
    {
        QTemporaryDir dir;
        Bench bench(dir.path());
        bench.dock()->close();
        bench.window->close();
        bench.open();
        QVERIFY(!bench.dock());
        QVERIFY(bench.plugin.logOf(QStringLiteral("create")).isEmpty());
        bench.entry(bench.alpha())->trigger();
        QVERIFY(bench.dock() && bench.dock()->isVisible());
        QVERIFY(bench.entry(bench.alpha())->isChecked());
    }

    void startsWithDamagedFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("complains");
        QTest::newRow("empty") << QByteArray() << true;
        QTest::newRow("noise") << QByteArray(3000, '\xfe') << true;
        QTest::newRow("another tree")
            << QByteArray(R"({"children": [{"name": "x", "value": "y", "saved": true}]})") << false;
        QTest::newRow("a state that is none") << QByteArray(
            R"({"children": [{"name": "state", "value": {"base64": "AAECAwQ="}, "saved": true},)"
            R"({"name": "geometry", "value": {"base64": "AAECAwQ="}, "saved": true},)"
            R"({"name": "openTools", "value": ["nobody", "tool.77.1", "tool.77.0"], "saved": true}]})")
                                              << true;
    }

    void startsWithDamagedFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, complains);
        QTemporaryDir dir;
        const SettingsStore store(dir.path());
        write(store.layoutFile(), bytes);
        write(store.configurationFile(), bytes);
        Bench bench(dir.path());
        QVERIFY(bench.dock() && bench.dock()->isVisible());
        QCOMPARE(bench.window->size(), QSize(1280, 800));
        QCOMPARE(!bench.window->statusBar()->currentMessage().isEmpty(), complains);
        bench.window->close();
        bench.open();
        QVERIFY(bench.dock() && bench.dock()->isVisible());
    }

    void resetsTheLayout()
    {
        Bench bench;
        bench.window->addDockWidget(Qt::LeftDockWidgetArea, bench.dock());
        bench.dock()->close();
        bench.window->resetLayout();
        QVERIFY(bench.dock()->isVisible());
        QCOMPARE(bench.window->dockWidgetArea(bench.dock()), Qt::RightDockWidgetArea);
        QVERIFY(bench.entry(bench.alpha())->isChecked());
    }

    void advisesWhenThereIsNothingElseToSay()
    {
        Bench bench;
        const auto *advice = bench.window->findChild<QLabel *>(QStringLiteral("advice"));
        QVERIFY(advice->isVisible());
        QVERIFY(advice->text().contains(QStringLiteral("Choose a channel in the System dock")));
        bench.dock()->close(); // says where the tool can be found again
        QVERIFY(!bench.window->statusBar()->currentMessage().isEmpty());
        QVERIFY(!advice->isVisible());
        bench.window->statusBar()->clearMessage();
        QVERIFY(advice->isVisible());
    }

    void countsWhatIsThere()
    {
        Bench bench;
        const auto *counts = bench.window->findChild<QLabel *>(QStringLiteral("counts"));
        QVERIFY(counts->text().startsWith(QStringLiteral("2 controllers")));
        bench.system.setControllers(1);
        QTRY_VERIFY(counts->text().startsWith(QStringLiteral("1 controller ")));
        QVERIFY(counts->text().endsWith(QStringLiteral("3 channels")));
        bench.system.setControllers(0);
        QTRY_COMPARE(counts->text(), QStringLiteral("No controller connected"));
    }
};

QTEST_MAIN(TestMainWindow)

#include "tst_main_window.moc"
