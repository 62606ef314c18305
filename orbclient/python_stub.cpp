#include "orbclient/python_stub.h"

#include "orbclient/module_description.h"
#include "orbclient/orb_client_module.h"

#include <QStringList>

namespace orbclient
{

namespace
{

QString header()
{
    return QStringLiteral(
               R"(# What editors and type checkers know of the module orbClient. Made from the module's own tables.

from typing import Any, Dict, List, Tuple, Union

# What a setter sends as the text that was meant. Every other object, None among them, would be sent as the empty text.
%1 = Union[bool, int, float, str, List[Any], Dict[Any, Any]]
)")
        .arg(valueTypeName());
}

/// The text as a docstring that reads back as the same text.
QString docstringLiteral(const char *docstring)
{
    QString text = QString::fromUtf8(docstring);
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QStringLiteral("\"\"\"%1\"\"\"").arg(text);
}

/// No function of the module takes keywords: a name that begins with two underscores says so to a type checker.
QString parameterText(const ParameterDescription &parameter)
{
    return QStringLiteral("__%1: %2%3")
        .arg(parameter.name, parameter.typeName, parameter.optional ? QStringLiteral(" = ...") : QString());
}

QString functionText(const Method &method, bool ofType)
{
    QStringList parameters;
    if (ofType)
        parameters.append(QStringLiteral("self"));
    const QVector<ParameterDescription> descriptions = parametersOf(method);
    for (const ParameterDescription &parameter : descriptions)
        parameters.append(parameterText(parameter));

    const QString indent = ofType ? QStringLiteral("    ") : QString();
    const QString head = QStringLiteral("%1def %2(%3) -> %4:")
                             .arg(indent, QString::fromLatin1(method.name),
                                  parameters.join(QLatin1String(", ")), resultTypeOf(method));
    if (*method.docstring == '\0')
        return head + QLatin1String(" ...\n");
    return QStringLiteral("%1\n%2    %3\n").arg(head, indent, docstringLiteral(method.docstring));
}

QString memberText(const MemberDescription &member)
{
    return QStringLiteral("    %1: %2  # %3\n").arg(member.name, member.typeName, member.docstring);
}

QString classText(const TypeDescription &description)
{
    QString text = QStringLiteral("\n\nclass %1:\n    %2\n\n")
                       .arg(description.name(), docstringLiteral(description.type->tp_doc));
    const QVector<MemberDescription> members = memberDescriptions(*description.type);
    for (const MemberDescription &member : members)
        text += memberText(member);
    if (description.constructor != nullptr)
        text += QStringLiteral("\n    def __init__%1: ...\n").arg(QLatin1String(description.constructor));
    for (const Method &method : description.methods)
        text += QLatin1Char('\n') + functionText(method, true);
    return text;
}

} // namespace

QString pythonStub()
{
    QString text = header();
    for (const Method &function : moduleFunctions())
        text += QStringLiteral("\n\n") + functionText(function, false);
    for (const TypeDescription &description : typeDescriptions())
        text += classText(description);
    return text;
}

} // namespace orbclient
