#include "workbench/app/tool_docks.h"

#include "hostsdk/kd_plugin_widget.h"
#include "workbench/app/tool_dock.h"
#include "workbench/app/tool_host.h"
#include "workbench/app/tool_menu.h"

#include <QMainWindow>

namespace workbench
{

namespace
{

constexpr int ToolLayoutMargin = 4; // pixels; docks have a frame of their own

} // namespace

ToolDocks::ToolDocks(ToolHost &host_, ToolMenu &menu_, QMainWindow &window_, QObject *parent)
    : QObject(parent), host(host_), menu(menu_), window(window_)
{
    connect(&host, &ToolHost::menuEntryRegistered, &menu, &ToolMenu::addEntry);
    connect(&host, &ToolHost::toolShown, this, [this](quint32 classId) { menu.setOpen(classId, true); });
    connect(&host, &ToolHost::toolHidden, this, [this](quint32 classId) {
        // A minimised window hides its tools too; they are open all the same.
        const ToolDock *toolDock = dock(classId);
        menu.setOpen(classId, toolDock && !toolDock->isHidden() && window.isMinimized());
    });
    connect(&menu, &ToolMenu::openRequested, this, [this](quint32 classId, bool isOpen) {
        if (isOpen)
            open(classId);
        else
            hide(classId);
    });
}

ToolDocks::~ToolDocks()
{
    closeAll();
}

bool ToolDocks::open(quint32 classId)
{
    ToolDock *toolDock = dock(classId);
    const bool isNew = !toolDock;
    bool hasPlace = true;
    if (isNew)
        toolDock = makeDock(classId, hasPlace);
    if (!toolDock) {
        const QString reason =
            tr("\"%1\" cannot be opened: this plug-in does not provide it.").arg(host.title(classId));
        menu.setUnavailable(classId, reason);
        Q_EMIT message(reason);
        return false;
    }
    if (isNew || toolDock->isHidden()) {
        host.announceShown(classId);
        toolDock->show();
    }
    if (!hasPlace)
        shareHeight();
    toolDock->raise();
    if (QWidget *tool = host.tool(classId))
        tool->setFocus(Qt::OtherFocusReason);
    return true;
}

/// A tool that the saved layout does not know would get what height the others do not need.
void ToolDocks::shareHeight()
{
    QList<QDockWidget *> column;
    QList<int> heights;
    for (const auto &[classId, toolDock] : docks) {
        if (toolDock->isHidden() || toolDock->isFloating())
            continue;
        column.append(toolDock.get());
        heights.append(window.height());
    }
    if (column.size() > 1)
        window.resizeDocks(column, heights, Qt::Vertical);
}

void ToolDocks::hide(quint32 classId)
{
    if (ToolDock *toolDock = dock(classId))
        toolDock->close();
}

QStringList ToolDocks::openTools() const
{
    QStringList names;
    const QVector<quint32> classes = host.toolClasses();
    for (quint32 classId : classes) {
        const ToolDock *toolDock = dock(classId);
        if (toolDock && !toolDock->isHidden())
            names.append(host.permanentName(classId));
    }
    return names;
}

void ToolDocks::openTools(const QStringList &permanentNames)
{
    const QVector<quint32> classes = host.toolClasses();
    for (quint32 classId : classes) {
        if (permanentNames.contains(host.permanentName(classId)))
            open(classId);
    }
}

ToolDock *ToolDocks::dock(quint32 classId) const
{
    const auto found = docks.find(classId);
    return found == docks.end() ? nullptr : found->second.get();
}

void ToolDocks::closeAll()
{
    for (auto &[classId, toolDock] : docks)
        host.closeTool(classId);
    docks.clear();
}

/// `hasPlace` tells whether the window's layout knows where it stands.
ToolDock *ToolDocks::makeDock(quint32 classId, bool &hasPlace)
{
    auto toolDock = std::make_unique<ToolDock>(host.title(classId), host.permanentName(classId), &window);
    QWidget *tool = host.openTool(classId, toolDock.get(), ToolLayoutMargin);
    if (!tool)
        return nullptr;
    toolDock->setWidget(tool);
    toolDock->hide(); // until the tool was told that it is shown
    connect(toolDock.get(), &ToolDock::aboutToHide, this, [this, classId] {
        host.announceHidden(classId);
        Q_EMIT message(
            tr("\"%1\" is hidden and goes on with what it does. The menu brings it back as it was.")
                .arg(host.title(classId)));
    });
    hasPlace = window.restoreDockWidget(toolDock.get());
    if (!hasPlace)
        window.addDockWidget(Qt::RightDockWidgetArea, toolDock.get());
    toolDock->hide();
    return (docks[classId] = std::move(toolDock)).get();
}

} // namespace workbench
