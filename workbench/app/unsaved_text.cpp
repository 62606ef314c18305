#include "workbench/app/unsaved_text.h"

#include <QPlainTextEdit>
#include <QTextDocument>

namespace workbench
{

bool hasUnsavedText(const QWidget &tool)
{
    const auto *editor = tool.findChild<QPlainTextEdit *>(QStringLiteral("editor"));
    return editor && !editor->document()->isEmpty() && editor->document()->isModified();
}

} // namespace workbench
