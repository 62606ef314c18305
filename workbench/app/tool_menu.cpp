#include "workbench/app/tool_menu.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace workbench
{

namespace
{

/// A menu title as the plug-in wrote it: without our mnemonic.
QString plainTitle(const QString &title)
{
    QString plain;
    plain.reserve(title.size());
    for (int i = 0; i < title.size(); ++i) {
        if (title.at(i) == QLatin1Char('&') && i + 1 < title.size())
            ++i;
        plain.append(title.at(i));
    }
    return plain;
}

QString escaped(QString title)
{
    return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

QMenu *findMenu(const QList<QAction *> &actions, const QString &title)
{
    for (QAction *action : actions) {
        if (action->menu() && plainTitle(action->text()) == title)
            return action->menu();
    }
    return nullptr;
}

/// Submenus come before the entries and separators that the window put there itself.
QAction *firstEntry(const QMenu &menu)
{
    const QList<QAction *> actions = menu.actions();
    for (QAction *action : actions) {
        if (!action->menu())
            return action;
    }
    return nullptr;
}

} // namespace

ToolMenu::ToolMenu(QMenuBar &menuBar_, QMenu *followingMenu_, QObject *parent)
    : QObject(parent), menuBar(menuBar_), followingMenu(followingMenu_)
{ }

void ToolMenu::addEntry(quint32 classId, const QStringList &path)
{
    if (path.isEmpty())
        return;
    QAction *&action = entries[classId];
    if (action)
        action->deleteLater();

    action = new QAction(escaped(path.constLast()), this);
    action->setCheckable(true);
    action->setStatusTip(tr("Opens or hides \"%1\"").arg(path.constLast()));
    connect(action, &QAction::triggered, this,
            [this, classId](bool checked) { Q_EMIT openRequested(classId, checked); });
    if (QMenu *menu = menuAt(path.mid(0, path.size() - 1)))
        menu->addAction(action);
    else
        menuBar.insertAction(followingMenu ? followingMenu->menuAction() : nullptr, action);
}

void ToolMenu::setOpen(quint32 classId, bool open)
{
    if (QAction *action = entry(classId))
        action->setChecked(open);
}

void ToolMenu::setUnavailable(quint32 classId, const QString &reason)
{
    if (QAction *action = entry(classId)) {
        action->setChecked(false);
        action->setEnabled(false);
        action->setStatusTip(reason);
        action->setToolTip(reason);
    }
}

QAction *ToolMenu::entry(quint32 classId) const
{
    const auto found = entries.find(classId);
    return found == entries.end() ? nullptr : found->second;
}

QMenu *ToolMenu::menuAt(const QStringList &path)
{
    QMenu *menu = nullptr;
    for (const QString &title : path) {
        QMenu *next = findMenu(menu ? menu->actions() : menuBar.actions(), title);
        if (!next && !menu) {
            next = new QMenu(escaped(title), &menuBar);
            menuBar.insertMenu(followingMenu ? followingMenu->menuAction() : nullptr, next);
        } else if (!next) {
            next = new QMenu(escaped(title), menu);
            menu->insertMenu(firstEntry(*menu), next);
        }
        menu = next;
    }
    return menu;
}

} // namespace workbench
