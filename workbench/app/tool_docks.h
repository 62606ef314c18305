#pragma once

#include <QObject>
#include <QStringList>

#include <map>
#include <memory>

class QMainWindow;

namespace workbench
{

class ToolDock;
class ToolHost;
class ToolMenu;

/// Docks the tools of a host in a window, and keeps menu, docks and tools of one mind. A tool that the operator
/// closes is only hidden: its transcript and its text are still there when it is opened again. GUI thread only.
class ToolDocks : public QObject
{
    Q_OBJECT

public:
    /// All three are kept and outlive this object.
    ToolDocks(ToolHost &host, ToolMenu &menu, QMainWindow &window, QObject *parent = nullptr);
    ~ToolDocks() override;

    /// Opens a tool, or shows the one that is hidden. False when the plug-in has no such tool.
    bool open(quint32 classId);

    /// Hides a tool and keeps it.
    void hide(quint32 classId);

    /// Permanent names of the tools that are open and not hidden, in the order of the plug-in's description.
    QStringList openTools() const;

    /// Opens the tools of these names; names that no tool has are skipped.
    void openTools(const QStringList &permanentNames);

    /// The dock of a tool, or null while it is closed.
    ToolDock *dock(quint32 classId) const;

    /// Stops and deletes every tool.
    void closeAll();

Q_SIGNALS:
    /// Something that the operator should read.
    void message(const QString &text);

private:
    ToolDock *makeDock(quint32 classId, bool &hasPlace);
    void shareHeight();

    ToolHost &host;
    ToolMenu &menu;
    QMainWindow &window;
    std::map<quint32, std::unique_ptr<ToolDock>> docks;
};

} // namespace workbench
