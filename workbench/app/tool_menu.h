#pragma once

#include <QObject>
#include <QStringList>

#include <map>

class QAction;
class QMenu;
class QMenuBar;

namespace workbench
{

/// The part of a menu bar that the plug-in asked for: one checkable entry a tool, checked while the tool is open.
class ToolMenu : public QObject
{
    Q_OBJECT

public:
    /// New top-level menus go before `followingMenu`, or last when it is null. The menu bar owns what is built.
    ToolMenu(QMenuBar &menuBar, QMenu *followingMenu, QObject *parent = nullptr);

    /// Adds the entry for a tool: all but the last element of `path` are menus, which are shared by their titles.
    /// A second entry for the same tool replaces the first.
    void addEntry(quint32 classId, const QStringList &path);

    /// Shows the tool as open or closed; triggers nothing.
    void setOpen(quint32 classId, bool open);

    /// Disables the entry for good and shows why when the pointer is over it.
    void setUnavailable(quint32 classId, const QString &reason);

    /// The entry of a tool, or null.
    QAction *entry(quint32 classId) const;

Q_SIGNALS:
    /// The operator wants the tool open or closed. The check mark already says so; setOpen() corrects it.
    void openRequested(quint32 classId, bool open);

private:
    QMenu *menuAt(const QStringList &path);

    QMenuBar &menuBar;
    QMenu *const followingMenu;
    std::map<quint32, QAction *> entries;
};

} // namespace workbench
