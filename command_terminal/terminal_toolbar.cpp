#include "command_terminal/terminal_toolbar.h"

#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_observer.h"

#include <QAction>

namespace
{

constexpr int MinIconPixels = 16;

} // namespace

TerminalToolbar::TerminalToolbar(QWidget *parent, KdMainData &mainData, KdObserver &eventObserver)
    : QToolBar(parent),
      observer(eventObserver),
      showTerminal(createAction(QStringLiteral("Show Terminal"), tr("Show the terminal"),
                                QKeySequence(Qt::CTRL | Qt::Key_1), KD::TerminalIcon, KD::ShowTerminal,
                                mainData)),
      showEditor(createAction(QStringLiteral("Show Text Editor"), tr("Show the text editor"),
                              QKeySequence(Qt::CTRL | Qt::Key_2), KD::TextEditorIcon, KD::ShowEditor,
                              mainData)),
      openFile(createAction(QStringLiteral("Open File"), tr("Open a file in the text editor"),
                            QKeySequence(Qt::CTRL | Qt::Key_O), KD::OpenFileIcon, KD::OpenFile, mainData)),
      saveFile(createAction(QStringLiteral("Save File"), tr("Save the text"),
                            QKeySequence(Qt::CTRL | Qt::Key_S), KD::SaveFileIcon, KD::SaveFile, mainData)),
      executeFile(createAction(QStringLiteral("Execute File"), tr("Execute the text in the terminal"),
                               QKeySequence(Qt::Key_F5), KD::ExecuteFileIcon, KD::ExecuteFile, mainData)),
      clearTerminal(createAction(QStringLiteral("Clear Terminal"), tr("Clear the terminal and its history"),
                                 QKeySequence(Qt::CTRL | Qt::Key_L), KD::ClearIcon, KD::ClearTerminal,
                                 mainData))
{
    setOrientation(Qt::Vertical);
    setMovable(false);

    const double factor = mainData.getToolbarIconScaleFactor();
    QSize size(static_cast<int>(iconSize().width() * factor), static_cast<int>(iconSize().height() * factor));
    if (size.width() < MinIconPixels)
        size = QSize(MinIconPixels, MinIconPixels);
    setIconSize(size);

    showTerminal->setCheckable(true);
    showEditor->setCheckable(true);
    connect(this, &QToolBar::actionTriggered, this, &TerminalToolbar::reportAction);
}

TerminalToolbar::~TerminalToolbar() = default;

// The texts of the actions are the same in every language: this is meant. The tool tips are translated.
QAction *TerminalToolbar::createAction(const QString &text, const QString &tip, const QKeySequence &shortcut,
                                       KD::IconType icon, KD::EventType event, KdMainData &mainData)
{
    QAction *action = addAction(mainData.getIcon(icon), text);
    action->setData(quint32{event});
    action->setToolTip(QStringLiteral("%1 (%2)").arg(tip, shortcut.toString(QKeySequence::NativeText)));
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    if (parentWidget())
        parentWidget()->addAction(action); // the shortcut works wherever the focus is in the tool
    return action;
}

void TerminalToolbar::reportAction(const QAction *action)
{
    observer.childEventOccured(action->data().toUInt());
}

void TerminalToolbar::setMode(bool terminal)
{
    showTerminal->setEnabled(!terminal);
    showTerminal->setChecked(terminal);
    showEditor->setEnabled(terminal);
    showEditor->setChecked(!terminal);
    for (QAction *fileAction : {openFile, saveFile, executeFile})
        fileAction->setVisible(!terminal);
    clearTerminal->setVisible(terminal);
}

void TerminalToolbar::setTerminalMode()
{
    setMode(true);
}

void TerminalToolbar::setEditorMode()
{
    setMode(false);
}

void TerminalToolbar::setSaveEnabled(bool enabled)
{
    saveFile->setEnabled(enabled);
}
