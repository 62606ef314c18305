#include "hostsdk/kd_plugin_configuration.h"
#include "hostsdk/kd_plugin_description.h"
#include "hostsdk/kd_plugin_widget.h"
#include "tests/command_terminal/context_translator.h"
#include "tests/command_terminal/terminal_fixture.h"
#include "tests/plugin/built_plugin.h"

#include <QFile>
#include <QFileDialog>
#include <QLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <memory>

/// The tools that the plug-in makes, and what they tell the host of themselves.
class TestTerminalPluginWidgets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void indices_data();
    void indices();
    void theParentOwnsTheTool();
    void classIdBeforeAndAfterRegistration();
    void classIdStaysWhenNothingWasRegistered_data();
    void classIdStaysWhenNothingWasRegistered();

    void showingAndHiding();
    void shownAsItsParentIs();
    void hostEvents_data();
    void hostEvents();
    void theAnswerHasNoArguments();
    void layoutMargin_data();
    void layoutMargin();
    void selectedItemsGetThrough();
    void otherHostEventsAreIgnored();
    void menuPathIsTheRegisteredOne();

    void toolsShareTheRecentFiles();
    void elevenFilesThroughTheTool();
    void twoToolsLiveTogether();

private:
    KdPluginWidget *create(QWidget *parent = nullptr)
    {
        return built.plugin()->createWidget(0, parent, fixture->mainData, fixture->observer, 0);
    }
    std::unique_ptr<KdPluginWidget> makeTool() { return std::unique_ptr<KdPluginWidget>(create()); }
    void registerWidgets(const QVector<quint32> &classIds)
    {
        KdPluginDescription description;
        for (const quint32 id : classIds) {
            KdPluginWidgetDescription widget;
            widget.uniqueWidgetClassId = id;
            description.widgets.append(widget);
        }
        built.plugin()->registerWidgets(description, fixture->observer);
        fixture->observer.clear();
    }
    QStringList savedCommandFiles()
    {
        KdPluginConfiguration root;
        built.plugin()->saveConfiguration(root);
        QStringList files;
        if (const KdPluginConfiguration *settings = root.findChild(QStringLiteral("Commands"))) {
            for (const KdPluginConfiguration &child : settings->children)
                files.append(child.value.toString());
        }
        return files;
    }
    /// Opens a file through the tool's own dialog; the folder in which that dialog began.
    static QString openFile(KdPluginWidget &tool, const QString &path)
    {
        tool.childEventOccured(KD::OpenFile);
        auto *dialog = tool.findChild<QFileDialog *>();
        if (!dialog)
            return {};
        QString directory = dialog->directory().absolutePath();
        dialog->selectFile(path);
        static_cast<QDialog *>(dialog)->accept();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return directory;
    }
    const KdChildEvent &lastEvent() const { return fixture->observer.events().back(); }

    std::unique_ptr<TerminalFixture> fixture;
    BuiltPlugin built;
};

void TestTerminalPluginWidgets::init()
{
    fixture = std::make_unique<TerminalFixture>();
    built.destroyInstance();
    QVERIFY(built.plugin());
}

void TestTerminalPluginWidgets::cleanup()
{
    fixture.reset();
}

// Making

void TestTerminalPluginWidgets::indices_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("toolClass");
    QTest::newRow("command terminal") << 0 << QByteArrayLiteral("TerminalWidget");
    QTest::newRow("Python terminal") << 1 << QByteArrayLiteral("TerminalWidgetPython");
    QTest::newRow("two") << 2 << QByteArray();
    QTest::newRow("below zero") << -1 << QByteArray();
    QTest::newRow("largest") << std::numeric_limits<int>::max() << QByteArray();
    QTest::newRow("smallest") << std::numeric_limits<int>::min() << QByteArray();
}

void TestTerminalPluginWidgets::indices()
{
    QFETCH(int, index);
    const std::unique_ptr<KdPluginWidget> tool(
        built.plugin()->createWidget(index, nullptr, fixture->mainData, fixture->observer, 0));
    // The extension of a tool's class is no class of its own to Qt.
    QTEST(tool ? QByteArray(tool->metaObject()->className()) : QByteArray(), "toolClass");
    QVERIFY(fixture->observer.events().empty());
}

void TestTerminalPluginWidgets::theParentOwnsTheTool()
{
    auto parent = std::make_unique<QWidget>();
    const QPointer<KdPluginWidget> tool = create(parent.get());
    QCOMPARE(tool->parentWidget(), parent.get());
    parent.reset();
    QVERIFY(tool.isNull());
}

void TestTerminalPluginWidgets::classIdBeforeAndAfterRegistration()
{
    QCOMPARE(makeTool()->getUniqueWidgetClassId(), 0U);
    registerWidgets({11, 22});
    QCOMPARE(makeTool()->getUniqueWidgetClassId(), 11U);
}

void TestTerminalPluginWidgets::classIdStaysWhenNothingWasRegistered_data()
{
    QTest::addColumn<QVector<quint32>>("classIds");
    QTest::newRow("none") << QVector<quint32>{};
    QTest::newRow("one") << QVector<quint32>{1};
    QTest::newRow("three") << QVector<quint32>{1, 2, 3};
}

void TestTerminalPluginWidgets::classIdStaysWhenNothingWasRegistered()
{
    QFETCH(QVector<quint32>, classIds);
    registerWidgets({11, 22});
    registerWidgets(classIds);
    QCOMPARE(makeTool()->getUniqueWidgetClassId(), 11U);
}

// What the host hears and says

void TestTerminalPluginWidgets::showingAndHiding()
{
    registerWidgets({11, 22});
    const auto tool = makeTool();
    QVERIFY(fixture->observer.events().empty());
    tool->show();
    QCOMPARE(fixture->observer.types(), std::vector<quint32>{181});
    tool->hide();
    QCOMPARE(fixture->observer.types(), (std::vector<quint32>{181, 182}));
    for (const KdChildEvent &event : fixture->observer.events()) {
        QCOMPARE(event.intArguments, (QVector<qint64>{104, 11}));
        QCOMPARE(
            event.stringArguments,
            (QStringList{QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Terminal")}));
    }
}

void TestTerminalPluginWidgets::shownAsItsParentIs()
{
    QWidget parent;
    create(&parent);
    QVERIFY(fixture->observer.events().empty());
    parent.show();
    QCOMPARE(fixture->observer.types(), std::vector<quint32>{181});
    parent.hide();
    QCOMPARE(fixture->observer.types(), (std::vector<quint32>{181, 182}));
}

void TestTerminalPluginWidgets::hostEvents_data()
{
    QTest::addColumn<quint32>("sent");
    QTest::addColumn<quint32>("answer");
    QTest::newRow("147, hidden") << 147U << 182U;
    QTest::newRow("148, shown") << 148U << 181U;
}

void TestTerminalPluginWidgets::hostEvents()
{
    QFETCH(quint32, sent);
    QFETCH(quint32, answer);
    registerWidgets({11, 22});
    const auto tool = makeTool();
    KdParentEvent event(static_cast<KD::EventType>(sent));
    tool->parentEventOccured(event);
    QCOMPARE(fixture->observer.types(), std::vector<quint32>{answer});
    QCOMPARE(lastEvent().intArguments, (QVector<qint64>{104, 11}));
    QCOMPARE(lastEvent().stringArguments,
             (QStringList{QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Terminal")}));
}

void TestTerminalPluginWidgets::theAnswerHasNoArguments()
{
    const auto tool = makeTool();
    KdParentEvent event(KD::QueryTool);
    event.setIntArgument(5, 0);
    event.stringArguments.append(QStringLiteral("text"));
    tool->parentEventOccured(event);
    QCOMPARE(fixture->observer.types(), std::vector<quint32>{152});
    QVERIFY(lastEvent().intArguments.isEmpty());
    QVERIFY(lastEvent().stringArguments.isEmpty());
}

void TestTerminalPluginWidgets::layoutMargin_data()
{
    QTest::addColumn<int>("margin");
    QTest::newRow("none") << 0;
    QTest::newRow("some") << 7;
    QTest::newRow("much") << 200;
}

void TestTerminalPluginWidgets::layoutMargin()
{
    QFETCH(int, margin);
    const auto tool = makeTool();
    KdParentEvent event(KD::SetLayoutMargin);
    event.setIntArgument(margin, 0);
    tool->parentEventOccured(event);
    QCOMPARE(tool->layout()->contentsMargins(), QMargins(margin, margin, margin, margin));
    QVERIFY(fixture->observer.events().empty());
}

void TestTerminalPluginWidgets::selectedItemsGetThrough()
{
    const auto tool = makeTool();
    OrbItemId id(OrbItemId::Module);
    id.line = 3;
    id.address = 9;
    for (const KD::EventType type : {KD::ItemSelected, KD::ItemActivated}) {
        KdParentEvent event(type);
        event.setHardwareId(id, 0);
        auto *address = tool->findChild<QLineEdit *>(QStringLiteral("addressEdit"));
        address->clear();
        tool->parentEventOccured(event);
        QCOMPARE(address->text(), QStringLiteral("9"));
    }
    QVERIFY(fixture->observer.events().empty());
}

void TestTerminalPluginWidgets::otherHostEventsAreIgnored()
{
    const auto tool = makeTool();
    const QMargins before = tool->layout()->contentsMargins();
    for (const quint32 type : {0U, 146U, 151U, 152U, 173U, 178U, 181U, 207U, 258U, 4294967295U}) {
        KdParentEvent event(static_cast<KD::EventType>(type));
        event.setIntArgument(77, 0);
        tool->parentEventOccured(event);
    }
    QVERIFY(fixture->observer.events().empty());
    QCOMPARE(tool->layout()->contentsMargins(), before);
}

// A host that finds its menu entry by the path must find it again, in any language.
void TestTerminalPluginWidgets::menuPathIsTheRegisteredOne()
{
    const ContextTranslator translator;
    KdPluginDescription description;
    built.plugin()->getPluginDescription(description);
    built.plugin()->registerWidgets(description, fixture->observer);
    const QStringList registered = fixture->observer.events().at(0).stringArguments;
    const auto tool = makeTool();
    tool->show();
    QCOMPARE(lastEvent().stringArguments, registered);
    QVERIFY(registered.constFirst() != QLatin1String("Window"));
}

// What the tools share

void TestTerminalPluginWidgets::toolsShareTheRecentFiles()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("commands.txt"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    const auto first = makeTool();
    const auto second = makeTool();
    openFile(*first, path);
    QCOMPARE(savedCommandFiles(), QStringList{path});
    QCOMPARE(openFile(*second, path), QDir(folder.path()).absolutePath());
    QCOMPARE(savedCommandFiles(), (QStringList{path, path}));
}

void TestTerminalPluginWidgets::elevenFilesThroughTheTool()
{
    const QTemporaryDir folder;
    const auto tool = makeTool();
    QStringList paths;
    for (int i = 0; i < 11; ++i) {
        paths.prepend(folder.filePath(QStringLiteral("file%1.txt").arg(i)));
        QFile file(paths.constFirst());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        openFile(*tool, paths.constFirst());
    }
    QCOMPARE(savedCommandFiles(), paths.mid(0, 10));
}

void TestTerminalPluginWidgets::twoToolsLiveTogether()
{
    const auto first = makeTool();
    auto second = makeTool();
    first->show();
    second->show();
    second.reset();
    fixture->backend.sendRawMessage(QStringLiteral("Main"), QStringLiteral("for whoever is left"));
    QCoreApplication::sendPostedEvents();
    QTRY_VERIFY(first->findChild<QPlainTextEdit *>(QStringLiteral("console"))
                    ->toPlainText()
                    .contains(QLatin1String("for whoever is left")));
}

QTEST_MAIN(TestTerminalPluginWidgets)
#include "tst_terminal_plugin_widgets.moc"
