#include "workbench/app/unsaved_text.h"

#include <QAction>
#include <QPlainTextEdit>
#include <QTextDocument>

#include <algorithm>

namespace workbench
{

bool hasUnsavedText(const QWidget &tool)
{
    const auto *editor = tool.findChild<QPlainTextEdit *>(QStringLiteral("editor"));
    // A text that was put there by the program is not marked as modified; a saved one cannot be saved again.
    if (!editor || editor->document()->isEmpty() || !editor->document()->isModified())
        return false;
    const QList<QAction *> actions = tool.findChildren<QAction *>();
    return std::any_of(actions.begin(), actions.end(), [](const QAction *action) {
        return action->text() == QLatin1String("Save File") && action->isEnabled();
    });
}

} // namespace workbench
