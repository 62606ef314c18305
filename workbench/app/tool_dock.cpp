#include "workbench/app/tool_dock.h"

namespace workbench
{

ToolDock::ToolDock(const QString &title, const QString &permanentName, QWidget *parent)
    : QDockWidget(title, parent)
{
    setObjectName(permanentName);
    setAllowedAreas(Qt::AllDockWidgetAreas);
}

void ToolDock::closeEvent(QCloseEvent *event)
{
    if (!isHidden())
        Q_EMIT aboutToHide();
    QDockWidget::closeEvent(event);
}

} // namespace workbench
