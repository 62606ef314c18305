#include "workbench/app/terminal_driver.h"

#include <QAction>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QVariant>

namespace workbench
{

namespace
{

const QLatin1String ShowEditorText("Show Text Editor");
const QLatin1String ExecuteFileText("Execute File");

} // namespace

TerminalDriver::TerminalDriver(QWidget &tool_)
    : tool(tool_),
      controllerBox(tool_.findChild<QComboBox *>(QStringLiteral("controllerBox"))),
      console(tool_.findChild<QPlainTextEdit *>(QStringLiteral("console"))),
      editor(tool_.findChild<QPlainTextEdit *>(QStringLiteral("editor")))
{ }

QString TerminalDriver::missingControl() const
{
    if (!controllerBox)
        return QStringLiteral("controllerBox");
    if (!console || !console->property("fileRunning").isValid())
        return QStringLiteral("console");
    if (!editor)
        return QStringLiteral("editor");
    for (const QLatin1String &text : {ShowEditorText, ExecuteFileText}) {
        if (!action(text))
            return text;
    }
    return {};
}

bool TerminalDriver::knowsControllers() const
{
    return controllerBox->count() > 0 && controllerBox->itemData(controllerBox->count() - 1).isValid();
}

bool TerminalDriver::chooseController(const QString &name, QString &error)
{
    QStringList known;
    int chosen = -1;
    for (int i = 0; i < controllerBox->count(); ++i) {
        const QString text = controllerBox->itemText(i);
        const QString connection = controllerBox->itemData(i).toString();
        if (connection.isEmpty())
            continue; // a text that asks for a choice
        known.append(text);
        if (chosen < 0 && (name.isEmpty() || name == text || name == connection))
            chosen = i;
    }
    if (chosen < 0) {
        error = known.isEmpty()
            ? tr("There is no controller to send requests to.")
            : tr("There is no controller \"%1\". There are: %2").arg(name, known.join(QStringLiteral(", ")));
        return false;
    }
    controllerBox->setCurrentIndex(chosen);
    return true;
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

bool TerminalDriver::isBusy() const
{
    // The console is locked while it waits for an answer.
    return console->property("fileRunning").toBool() || !console->isEnabledTo(&tool);
}

QString TerminalDriver::takeNewLines()
{
    QString lines;
    for (QTextBlock block = console->document()->findBlockByNumber(linesTaken); block.next().isValid();
         block = block.next()) {
        lines += block.text() + QLatin1Char('\n');
        ++linesTaken;
    }
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
