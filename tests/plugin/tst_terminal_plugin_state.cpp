#include "plugin/terminal_plugin_state.h"

#include <QtTest>

/// The lists of recent files.
class TestTerminalPluginState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { state = TerminalPluginState(); }

    void beginsEmpty();
    void newestFirst_data() { bothLists(); }
    void newestFirst();
    void theSamePathTwice_data() { bothLists(); }
    void theSamePathTwice();
    void theEleventhDropsTheOldest_data() { bothLists(); }
    void theEleventhDropsTheOldest();
    void aLongerListIsCut_data() { bothLists(); }
    void aLongerListIsCut();
    void theListsAreApart();

private:
    static void bothLists()
    {
        QTest::addColumn<bool>("python");
        QTest::newRow("command files") << false;
        QTest::newRow("Python files") << true;
    }
    void add(const QString &path)
    {
        QFETCH(bool, python);
        python ? state.addPythonFile(path) : state.addCommandFile(path);
    }
    QStringList &list()
    {
        QFETCH(bool, python);
        return python ? state.pythonFiles : state.commandFiles;
    }

    TerminalPluginState state;
};

void TestTerminalPluginState::beginsEmpty()
{
    QCOMPARE(state.terminalWidgetClassId, 0U);
    QCOMPARE(state.pythonWidgetClassId, 0U);
    QVERIFY(state.commandFiles.isEmpty());
    QVERIFY(state.pythonFiles.isEmpty());
}

void TestTerminalPluginState::newestFirst()
{
    add(QStringLiteral("a"));
    add(QStringLiteral("b"));
    QCOMPARE(list(), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
}

void TestTerminalPluginState::theSamePathTwice()
{
    add(QStringLiteral("a"));
    add(QStringLiteral("b"));
    add(QStringLiteral("a"));
    QCOMPARE(list(), (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a")}));
}

void TestTerminalPluginState::theEleventhDropsTheOldest()
{
    for (int i = 1; i <= 10; ++i)
        add(QString::number(i));
    QCOMPARE(list().size(), 10);
    QCOMPARE(list().constLast(), QStringLiteral("1"));
    add(QStringLiteral("11"));
    QCOMPARE(list().size(), 10);
    QCOMPARE(list().constFirst(), QStringLiteral("11"));
    QCOMPARE(list().constLast(), QStringLiteral("2"));
}

// What was loaded is not cut until something is added.
void TestTerminalPluginState::aLongerListIsCut()
{
    for (int i = 0; i < 5000; ++i)
        list().append(QString::number(i));
    add(QStringLiteral("new"));
    QCOMPARE(list().size(), 10);
    QCOMPARE(list().constFirst(), QStringLiteral("new"));
    QCOMPARE(list().constLast(), QStringLiteral("8"));
}

void TestTerminalPluginState::theListsAreApart()
{
    state.addCommandFile(QStringLiteral("command"));
    state.addPythonFile(QStringLiteral("python"));
    QCOMPARE(state.commandFiles, QStringList{QStringLiteral("command")});
    QCOMPARE(state.pythonFiles, QStringList{QStringLiteral("python")});
}

QTEST_GUILESS_MAIN(TestTerminalPluginState)
#include "tst_terminal_plugin_state.moc"
