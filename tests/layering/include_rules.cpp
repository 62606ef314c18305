#include "tests/layering/include_rules.h"

#include "tests/layering/source_text.h"

#include <QFileInfo>

namespace layering
{

namespace
{

using Names = QStringList;

QString name(const char *text)
{
    return QString::fromLatin1(text);
}

Names names(std::initializer_list<const char *> texts)
{
    Names result;
    for (const char *text : texts)
        result.append(name(text));
    return result;
}

QVector<IncludeRule> makeRules()
{
    constexpr auto core = QtUse::Core;
    constexpr auto widgets = QtUse::Widgets;
    constexpr auto standard = Elsewhere::StandardLibrary;
    constexpr auto any = Elsewhere::Any;
    // clang-format off
    return {
        // place                                 Qt           angle brackets  folders and files of ours
        {name("hostclient/"),                    core,        standard,       {}},
        {name("hostsdk/"),                       widgets,     standard,       names({"hostclient/"})},
        // Plain data that the tools share although it lives in the plug-in's folder.
        {name("plugin/terminal_plugin_state."),  core,        standard,       {}},
        // Keeps Qt's keywords and Python's header apart, and is the only way to the latter.
        {name("orbclient/python_include."),      core,        any,            {}},
        {name("orbclient/"),                     core,        standard,       names({"hostclient/"})},
        {name("command_terminal/"),              widgets,     standard,       names({"hostclient/", "hostsdk/", "plugin/terminal_plugin_state.h"})},
        {name("python_terminal/"),               widgets,     standard,       names({"hostclient/", "hostsdk/", "orbclient/", "command_terminal/", "plugin/terminal_plugin_state.h"})},
        // What the operating system does with threads and processes, and Python's own view of them.
        {name("python_terminal/child_processes."), core,      any,            names({"orbclient/"})},
        {name("python_terminal/other_threads."), core,        any,            names({"orbclient/"})},
        {name("python_terminal/process_settings."), core,     any,            names({"orbclient/"})},
        {name("plugin/"),                        widgets,     standard,       names({"hostclient/", "hostsdk/", "orbclient/", "command_terminal/", "python_terminal/"})},

        {name("workbench/hostkit/"),             widgets,     standard,       names({"hostclient/", "hostsdk/"})},
        // The backend interface is made of the contract's value types.
        {name("workbench/simulator/"),           core,        standard,       names({"hostclient/", "workbench/hostkit/orb_backend.h"})},
        {name("workbench/rehearsal/"),           core,        standard,       names({"hostclient/", "workbench/hostkit/orb_backend.h", "workbench/simulator/"})},
        // What a process is given to write to.
        {name("workbench/app/own_output."),      core,        any,            {}},
        // The plug-in is loaded at run time: the host knows it by the contract alone.
        {name("workbench/app/"),                 widgets,     standard,       names({"hostclient/", "hostsdk/", "workbench/"})},
        // The one place that draws with Qwt.
        {name("workbench/app/strip_chart"),      widgets,     any,            names({"hostclient/", "hostsdk/", "workbench/"})},

        {name("tests/"),                         QtUse::Any,  any,            names({"hostclient/", "hostsdk/", "orbclient/", "command_terminal/", "python_terminal/", "plugin/", "workbench/"})},
        {name("benchmarks/"),                    QtUse::Any,  any,            names({"hostclient/", "hostsdk/", "orbclient/", "command_terminal/", "python_terminal/", "plugin/", "workbench/", "tests/support/"})},
    };
    // clang-format on
}

/// The module that owns a Qt header ("QtCore"), or an empty text when it is none of Qt's.
QString qtModuleOf(const QString &header)
{
    if (header.startsWith(QLatin1String("Qt")) && header.contains(QLatin1Char('/')))
        return header.section(QLatin1Char('/'), 0, 0);
    static const Names modules = names({"QtCore", "QtGui", "QtWidgets", "QtTest", "QtNetwork", "QtConcurrent",
                                        "QtDBus", "QtPrintSupport", "QtSql", "QtXml"});
    for (const QString &module : modules) {
        if (QFileInfo(QStringLiteral(TERMINAL_QT_HEADERS "/%1/%2").arg(module, header)).isFile())
            return module;
    }
    return {};
}

bool mayUseModule(QtUse use, const QString &module)
{
    switch (use) {
    case QtUse::Core:
        return module == QLatin1String("QtCore");
    case QtUse::Widgets:
        return names({"QtCore", "QtGui", "QtWidgets"}).contains(module);
    case QtUse::Any:
        break;
    }
    return true;
}

bool isMadeByMoc(const QString &file)
{
    return file.endsWith(QLatin1String(".moc"))
        || (file.startsWith(QLatin1String("moc_")) && file.endsWith(QLatin1String(".cpp")));
}

/// Why the rule forbids a file of ours, or an empty text.
QString whyNotOurs(const IncludeRule &rule, const QString &file)
{
    if (isMadeByMoc(file))
        return {};
    if (file.endsWith(QLatin1String(".cpp")))
        return QStringLiteral("a source is linked, never included");
    if (!file.contains(QLatin1Char('/')) || file.contains(QLatin1String("..")))
        return QStringLiteral("write the path from the root of the tree");
    if (file.startsWith(rule.place))
        return {};
    for (const QString &allowed : rule.project) {
        if (file == allowed || (allowed.endsWith(QLatin1Char('/')) && file.startsWith(allowed)))
            return {};
    }
    return rule.project.isEmpty()
        ? QStringLiteral("%1 may include nothing of ours").arg(rule.place)
        : QStringLiteral("%1 may include only %2").arg(rule.place, rule.project.join(QLatin1String(", ")));
}

/// Why the rule forbids a header in angle brackets, or an empty text.
QString whyNotElsewhere(const IncludeRule &rule, const QString &header)
{
    const QString module = qtModuleOf(header);
    if (!module.isEmpty()) {
        return mayUseModule(rule.qt, module) ? QString()
                                             : QStringLiteral("%1 may not use %2").arg(rule.place, module);
    }
    // The standard library's own names carry neither a dot nor a slash.
    const bool standard = !header.contains(QLatin1Char('.')) && !header.contains(QLatin1Char('/'));
    if (standard || rule.elsewhere == Elsewhere::Any)
        return {};
    return QStringLiteral("%1 may use Qt and the standard library only").arg(rule.place);
}

} // namespace

const QVector<IncludeRule> &includeRules()
{
    static const QVector<IncludeRule> rules = makeRules();
    return rules;
}

const IncludeRule *includeRuleOf(const QString &path)
{
    const IncludeRule *found = nullptr;
    for (const IncludeRule &rule : includeRules()) {
        if (path.startsWith(rule.place) && (!found || rule.place.size() > found->place.size()))
            found = &rule;
    }
    return found;
}

QStringList includeViolations(const QString &path, const QString &text)
{
    const IncludeRule *rule = includeRuleOf(path);
    if (!rule)
        return {QStringLiteral("%1: no include rule for this folder").arg(path)};
    QStringList violations;
    const QVector<Include> includes = includesOf(text);
    for (const Include &include : includes) {
        const QString why =
            include.quoted ? whyNotOurs(*rule, include.path) : whyNotElsewhere(*rule, include.path);
        if (!why.isEmpty())
            violations.append(
                QStringLiteral("%1:%2: %3: %4").arg(path).arg(include.line).arg(include.path, why));
    }
    return violations;
}

} // namespace layering
