#include "workbench/app/terminal_driver.h"

#include <QAction>
#include <QPlainTextEdit>
#include <QTextBlock>

namespace workbench
{

namespace
{

const QLatin1String ShowEditorText("Show Text Editor");
const QLatin1String ExecuteFileText("Execute File");

} // namespace

TerminalDriver::TerminalDriver(QWidget &tool_)
    : tool(tool_),
      console(tool_.findChild<QPlainTextEdit *>(QStringLiteral("console"))),
      editor(tool_.findChild<QPlainTextEdit *>(QStringLiteral("editor")))
{
    if (!console)
        return;
    linesTaken = QTextCursor(console->document());
    linesTaken.setKeepPositionOnInsert(true);
}

TerminalDriver::~TerminalDriver() = default;

QString TerminalDriver::missingControl() const
{
    if (!console)
        return QStringLiteral("console");
    if (!editor)
        return QStringLiteral("editor");
    for (const QLatin1String &text : {ShowEditorText, ExecuteFileText}) {
        if (!action(text))
            return text;
    }
    return {};
}

void TerminalDriver::edit(const QString &text)
{
    action(ShowEditorText)->trigger();
    // Not setPlainText, which ends a text at its first zero.
    editor->clear();
    editor->insertPlainText(text);
    editor->document()->setModified(false);
}

void TerminalDriver::execute()
{
    action(ExecuteFileText)->trigger();
}

QString TerminalDriver::takeNewLines()
{
    QString lines;
    QTextBlock block = linesTaken.block();
    for (; block.next().isValid(); block = block.next())
        lines += block.text() + QLatin1Char('\n');
    linesTaken.setPosition(block.position());
    return lines;
}

QString TerminalDriver::lastLine() const
{
    return console->document()->lastBlock().text();
}

QAction *TerminalDriver::action(const QString &text) const
{
    const QList<QAction *> actions = tool.findChildren<QAction *>();
    for (QAction *candidate : actions) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

} // namespace workbench
