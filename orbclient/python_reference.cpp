#include "orbclient/python_reference.h"

#include "orbclient/module_description.h"
#include "orbclient/orb_client_module.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

namespace orbclient
{

namespace
{

QString introductionOf(const QString &typeName)
{
    static const QHash<QString, QString> introductions = {
        {QStringLiteral("connection"),
         QStringLiteral(
             "One open connection to a control-system service. `connect()`, `findConnection()` and "
             "`getConnections()` give connection objects. `str()` of one is its name. "
             "`orbClient.connection(\"x\")` makes an object without a client: its setters and getters give "
             "`\"error\"`, and `rawCommand()` raises `SystemError`.\n\n"
             "`crates` and `modules` are read once, when the object is made. `getCrates()` and "
             "`getModules()` "
             "read anew, make new objects each time, and leave the members as they are. Objects stay in "
             "memory: call "
             "them once.\n\n"
             "`rawCommand()` gives `\"ok\"` when the service took the command, else the response of the "
             "service, "
             "or `\"error\"` when there is none.\n\n"
             "For the data pass-through call `activateDataPassThrough()`, with the name of the script, "
             "`\"script\"` when it is left out. `getNextPassThroughMessage()` gives the next message, or "
             "`\"error\"` when there is none; `getPassThroughMessageList()` gives all that wait. "
             "`sendMessageList()` leaves out what is no data frame, and gives `\"error\"` when nothing is "
             "left.")},
        {QStringLiteral("crate"),
         QStringLiteral(
             "A powered chassis that holds modules, on one line of a connection. The member `crates` "
             "of a connection holds them. `str()` of one is line and address: `\"0.1000\"`. The crate's "
             "modules are in its member `modules`; there is no method that reads them anew.")},
        {QStringLiteral("module"),
         QStringLiteral(
             "A high-voltage module. The member `modules` of a connection or of a crate holds them. "
             "`str()` of one is line and address: `\"0.3\"`. The list `channels` is made once, with the "
             "object; it is empty when the number of channels could not be read.")},
        {QStringLiteral("channel"),
         QStringLiteral(
             "One output channel of a module; the module's member `channels` holds them, index 0 first. "
             "`str()` of one is line, module address and index: `\"0.3.7\"`. The member `module` is the "
             "address of the module, a number, and not a module object.")},
        {QStringLiteral("dataFrame"),
         QStringLiteral(
             "One message of the data pass-through, a record of nine members without methods. "
             "`getNextPassThroughMessage()` and `getPassThroughMessageList()` of a connection give what was "
             "received; to send one, make it with `orbClient.dataFrame()`, fill in its members, and hand it "
             "to "
             "`sendMessage()` or `sendMessageList()`.\n\n"
             "A member that was not set raises `AttributeError` when it is read, and is sent as an empty "
             "text or "
             "as -1. `value` of a received frame is a str, or, when the whole message was a JSON object, a "
             "dict "
             "of texts and lists of texts, in which every number, boolean, null and nested object is the "
             "empty "
             "text. When a frame is sent, a float in `line`, `address` or `channel` is cut off to an int, a "
             "str is "
             "sent as -1, and `rawJson` is not used. `str()` of a frame is `command:item=valueunit`.")},
    };
    return introductions.value(typeName);
}

/// Nothing in the text is taken for a mark of Markdown's.
QString plain(const QString &text)
{
    static const QRegularExpression marks(QStringLiteral(R"(([\\|<>*_`\[\]]))"));
    return QString(text).replace(marks, QStringLiteral("\\\\1"));
}

QString code(const QString &text)
{
    return text.isEmpty() ? QString() : QStringLiteral("`%1`").arg(text);
}

QString tableRow(const QStringList &cells)
{
    QString row = QStringLiteral("|");
    for (const QString &cell : cells)
        row += cell.isEmpty() ? QStringLiteral(" |") : QStringLiteral(" %1 |").arg(cell);
    return row + QLatin1Char('\n');
}

QString tableHead(const QStringList &titles)
{
    return tableRow(titles) + QLatin1Char('|') + QStringLiteral("---|").repeated(titles.size())
        + QLatin1Char('\n');
}

/// How a script writes the call: "connect(connectionName, address[, login[, password]])".
QString callText(const Method &method)
{
    QString arguments;
    int optional = 0;
    const QVector<ParameterDescription> parameters = parametersOf(method);
    for (const ParameterDescription &parameter : parameters) {
        if (parameter.optional) {
            arguments += QLatin1Char('[');
            ++optional;
        }
        if (&parameter != &parameters.constFirst())
            arguments += QLatin1String(", ");
        arguments += parameter.name;
    }
    return QStringLiteral("%1(%2%3)")
        .arg(QLatin1String(method.name), arguments, QStringLiteral("]").repeated(optional));
}

QString directionText(MethodKind kind)
{
    switch (kind) {
    case MethodKind::Get:
    case MethodKind::GetWithTimestamp:
        return QStringLiteral("read");
    case MethodKind::Set:
        return QStringLiteral("write");
    case MethodKind::Call:
        break;
    }
    return QStringLiteral("call");
}

QString returnText(const Method &method)
{
    switch (method.kind) {
    case MethodKind::GetWithTimestamp:
        return QStringLiteral("%1: timestamp in s, value").arg(code(resultTypeOf(method)));
    case MethodKind::Set:
        return QStringLiteral("`\"ok\"` or `\"error\"`");
    case MethodKind::Get:
    case MethodKind::Call:
        break;
    }
    return code(resultTypeOf(method));
}

ReferencePage functionsPage()
{
    QString text = QStringLiteral("# Functions\n\n"
                                  "Arguments are given by position; no function takes keywords. "
                                  "What the results mean is in [README.md](README.md).\n\n");
    text += tableHead(
        {QStringLiteral("Function"), QStringLiteral("Returns"), QStringLiteral("What it says of itself")});
    for (const Method &function : moduleFunctions())
        text += tableRow({code(callText(function)), code(resultTypeOf(function)),
                          plain(QString::fromUtf8(function.docstring))});
    return {QStringLiteral("functions.md"), text};
}

QString membersTable(const PyTypeObject &type)
{
    QString text =
        tableHead({QStringLiteral("Member"), QStringLiteral("Type"), QStringLiteral("What it is")});
    const QVector<MemberDescription> members = memberDescriptions(type);
    for (const MemberDescription &member : members) {
        const QString typeText = member.typeName == valueTypeName() ? QStringLiteral("what a setter takes")
                                                                    : code(member.typeName);
        text += tableRow({code(member.name), typeText, plain(member.docstring)});
    }
    return text;
}

QString methodsTable(const MethodRows &methods)
{
    QString text = tableHead({QStringLiteral("Method"), QStringLiteral("Item"), QStringLiteral("Direction"),
                              QStringLiteral("Unit"), QStringLiteral("Returns"),
                              QStringLiteral("What it says of itself")});
    for (const Method &method : methods) {
        const QString docstring = QString::fromUtf8(method.docstring);
        text += tableRow({code(callText(method)), code(itemNameOf(method)), directionText(method.kind),
                          unitIn(docstring), returnText(method), plain(docstring)});
    }
    return text;
}

ReferencePage typePage(const TypeDescription &description)
{
    const QString name = description.name();
    QString text = QStringLiteral("# %1\n\n%2\n\n## Members\n\n%3")
                       .arg(name, introductionOf(name), membersTable(*description.type));
    if (description.methods.count > 0)
        text += QStringLiteral(
                    "\n## Methods\n\n%1 methods. What the results mean is in [README.md](README.md).\n\n%2")
                    .arg(description.methods.count)
                    .arg(methodsTable(description.methods));
    return {name + QStringLiteral(".md"), text};
}

} // namespace

QString unitIn(const QString &docstring)
{
    static const QRegularExpression unit(QStringLiteral(R"(\bin (%/s|V/s|mA/s|ms|celsius degree)(?![\w/]))"));
    return unit.match(docstring).captured(1);
}

QVector<ReferencePage> pythonReference()
{
    QVector<ReferencePage> pages{functionsPage()};
    for (const TypeDescription &description : typeDescriptions())
        pages.append(typePage(description));
    return pages;
}

} // namespace orbclient
