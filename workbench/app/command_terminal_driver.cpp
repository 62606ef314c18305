#include "workbench/app/command_terminal_driver.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QVariant>

namespace workbench
{

CommandTerminalDriver::CommandTerminalDriver(QWidget &tool_)
    : TerminalDriver(tool_), controllerBox(tool_.findChild<QComboBox *>(QStringLiteral("controllerBox")))
{ }

QString CommandTerminalDriver::missingControl() const
{
    if (!controllerBox)
        return QStringLiteral("controllerBox");
    if (!console || !console->property("fileRunning").isValid())
        return QStringLiteral("console");
    return TerminalDriver::missingControl();
}

bool CommandTerminalDriver::isReady() const
{
    return controllerBox->count() > 0 && controllerBox->itemData(controllerBox->count() - 1).isValid();
}

bool CommandTerminalDriver::prepare(const QString &name, QString &error)
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

bool CommandTerminalDriver::isBusy() const
{
    // The console is locked while it waits for an answer.
    return console->property("fileRunning").toBool() || !console->isEnabledTo(&tool);
}

bool CommandTerminalDriver::waitsForUser() const
{
    return false;
}

QString CommandTerminalDriver::obstacle() const
{
    return {};
}

} // namespace workbench
