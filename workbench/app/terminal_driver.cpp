#include "workbench/app/terminal_driver.h"

#include <QAction>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QTextBlock>

namespace workbench
{

namespace
{

const QLatin1String ShowEditorText("Show Text Editor");
const QLatin1String ExecuteFileText("Execute File");
const QLatin1String ClearTerminalText("Clear Terminal");

TerminalLine::Kind kindOf(const QTextBlock &line)
{
    // By its colour, as a user tells it; an empty line has none.
    const auto text = line.begin();
    if (text.atEnd())
        return TerminalLine::Plain;
    const QColor colour = text.fragment().charFormat().foreground().color();
    if (colour == QColor(Qt::red))
        return TerminalLine::Error;
    return colour == QColor(Qt::green) ? TerminalLine::Success : TerminalLine::Plain;
}

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
    for (const QLatin1String &text : {ShowEditorText, ExecuteFileText, ClearTerminalText}) {
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

void TerminalDriver::stop()
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier);
    QCoreApplication::sendEvent(&tool, &press);
}

void TerminalDriver::clear()
{
    action(ClearTerminalText)->trigger();
    linesTaken.movePosition(QTextCursor::End);
}

QVector<TerminalLine> TerminalDriver::takeLines()
{
    QVector<TerminalLine> lines;
    QTextBlock block = linesTaken.block();
    for (; block.next().isValid(); block = block.next())
        lines.append({kindOf(block), block.text()});
    linesTaken.setPosition(block.position());
    return lines;
}

QString TerminalDriver::takeNewLines()
{
    QString text;
    const QVector<TerminalLine> lines = takeLines();
    for (const TerminalLine &line : lines)
        text += line.text + QLatin1Char('\n');
    return text;
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
