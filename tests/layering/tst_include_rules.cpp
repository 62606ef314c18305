#include "tests/layering/include_rules.h"

#include <QtTest>

using namespace layering;

/// The rules themselves, on made-up sources: what they must refuse, and what they must not.
class TestIncludeRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesOrAllows_data();
    void refusesOrAllows();
    void namesFileLineAndReason();
    void rulesPointOneWay();
};

void TestIncludeRules::refusesOrAllows_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("include");
    QTest::addColumn<bool>("allowed");
    const auto row = [](const char *path, const char *include, bool allowed) {
        QTest::addRow("%s: %s", path, include)
            << QString::fromLatin1(path) << QString::fromLatin1(include) << allowed;
    };
    row("hostclient/a.h", "<QString>", true);
    row("hostclient/a.h", "<QtCore/QString>", true);
    row("hostclient/a.h", "<vector>", true);
    row("hostclient/a.h", "<QColor>", false);
    row("hostclient/a.h", "<QWidget>", false);
    row("hostclient/a.h", "<QtWidgets/QWidget>", false);
    row("hostclient/a.h", "<Python.h>", false);
    row("hostclient/a.h", "\"hostclient/b.h\"", true);
    row("hostclient/a.h", "\"hostsdk/b.h\"", false);
    row("hostclient/a.h", "\"../hostclient/b.h\"", false);
    row("hostclient/a.h", "\"b.h\"", false);

    row("hostsdk/a.h", "<QWidget>", true);
    row("hostsdk/a.h", "\"hostclient/b.h\"", true);
    row("hostsdk/a.h", "\"workbench/hostkit/b.h\"", false);

    row("plugin/terminal_plugin_state.h", "<QStringList>", true);
    row("plugin/terminal_plugin_state.h", "<QWidget>", false);
    row("plugin/terminal_plugin_state.h", "\"hostsdk/b.h\"", false);
    row("plugin/terminal_plugin_state.h", "\"plugin/terminal_plugin.h\"", false);
    row("plugin/terminal_plugin_state.cpp", "\"plugin/terminal_plugin_state.h\"", true);

    row("orbclient/a.cpp", "\"hostclient/b.h\"", true);
    row("orbclient/a.cpp", "\"orbclient/python_include.h\"", true);
    row("orbclient/a.cpp", "<Python.h>", false);
    row("orbclient/a.cpp", "<QWidget>", false);
    row("orbclient/a.cpp", "\"hostsdk/b.h\"", false);
    row("orbclient/python_include.h", "<Python.h>", true);

    row("command_terminal/a.cpp", "<QWidget>", true);
    row("command_terminal/a.cpp", "<QTcpSocket>", false);
    row("command_terminal/a.cpp", "<unistd.h>", false);
    row("command_terminal/a.cpp", "\"plugin/terminal_plugin_state.h\"", true);
    row("command_terminal/a.cpp", "\"plugin/terminal_plugin.h\"", false);
    row("command_terminal/a.cpp", "\"python_terminal/b.h\"", false);
    row("command_terminal/a.cpp", "\"orbclient/b.h\"", false);
    row("command_terminal/a.cpp", "\"workbench/hostkit/orb_backend.h\"", false);
    row("command_terminal/a.cpp", "\"command_terminal/b.cpp\"", false);
    row("command_terminal/a.cpp", "\"moc_a.cpp\"", true);

    row("python_terminal/a.cpp", "\"command_terminal/b.h\"", true);
    row("python_terminal/a.cpp", "\"plugin/terminal_plugin.h\"", false);
    row("python_terminal/a.cpp", "<unistd.h>", false);
    row("python_terminal/a.cpp", "<Python.h>", false);
    row("python_terminal/child_processes.cpp", "<unistd.h>", true);
    row("python_terminal/child_processes.cpp", "<QWidget>", false);
    row("python_terminal/other_threads.cpp", "<pythread.h>", true);
    row("python_terminal/process_settings.cpp", "<sys/time.h>", true);
    row("plugin/a.cpp", "\"command_terminal/b.h\"", true);
    row("plugin/a.cpp", "\"workbench/hostkit/b.h\"", false);

    row("workbench/hostkit/a.cpp", "\"hostsdk/b.h\"", true);
    row("workbench/hostkit/a.cpp", "\"workbench/simulator/b.h\"", false);
    row("workbench/simulator/a.cpp", "\"workbench/hostkit/orb_backend.h\"", true);
    row("workbench/simulator/a.cpp", "\"workbench/hostkit/other.h\"", false);
    row("workbench/simulator/a.cpp", "\"hostsdk/b.h\"", false);
    row("workbench/simulator/a.cpp", "<QTimer>", true);
    row("workbench/simulator/a.cpp", "<QGuiApplication>", false);
    row("workbench/app/a.cpp", "\"workbench/simulator/b.h\"", true);
    row("workbench/app/a.cpp", "\"plugin/terminal_plugin_state.h\"", false);
    row("workbench/app/a.cpp", "\"command_terminal/b.h\"", false);
    row("workbench/app/a.cpp", "<qwt_plot.h>", false);
    row("workbench/app/strip_chart_a.cpp", "<qwt_plot.h>", true);

    row("tests/support/a.cpp", "\"command_terminal/b.h\"", true);
    row("tests/command_terminal/tst_a.cpp", "\"tests/support/b.h\"", true);
    row("tests/command_terminal/tst_a.cpp", "\"command_terminal/b.cpp\"", false);
    row("tests/command_terminal/tst_a.cpp", "<QtTest>", true);
    row("command_terminal/a.h", "\"tests/support/b.h\"", false);
    row("benchmarks/a.cpp", "<benchmark/benchmark.h>", true);
    row("elsewhere/a.cpp", "<vector>", false);
}

void TestIncludeRules::refusesOrAllows()
{
    QFETCH(QString, path);
    QFETCH(QString, include);
    QFETCH(bool, allowed);
    const QStringList violations = includeViolations(path, QStringLiteral("#include %1\n").arg(include));
    QVERIFY2(violations.isEmpty() == allowed, qPrintable(violations.join(QLatin1Char('\n'))));
}

void TestIncludeRules::namesFileLineAndReason()
{
    const QString text = QStringLiteral("#include <QString>\n\n#include \"plugin/terminal_plugin.h\"\n");
    QCOMPARE(includeViolations(QStringLiteral("hostclient/a.h"), text),
             QStringList{QStringLiteral("hostclient/a.h:3: plugin/terminal_plugin.h: "
                                        "hostclient/ may include nothing of ours")});
}

/// Whoever includes stands further down in the table, so no two folders can include each other by any detour.
void TestIncludeRules::rulesPointOneWay()
{
    const QVector<IncludeRule> &rules = includeRules();
    int pairs = 0;
    for (const IncludeRule &rule : rules) {
        for (const QString &lower : rule.project) {
            const IncludeRule *other = includeRuleOf(lower);
            // workbench/ as a whole has no rule of its own: each of its folders has one.
            if (!other)
                continue;
            ++pairs;
            QVERIFY2(other < &rule, qPrintable(rule.place + QLatin1String(" includes ") + lower));
        }
    }
    QVERIFY(pairs > 0);
}

QTEST_GUILESS_MAIN(TestIncludeRules)
#include "tst_include_rules.moc"
