#include "command_terminal/terminal_tool.h"

#include "command_terminal/terminal_console.h"
#include "command_terminal/terminal_file_editor.h"
#include "command_terminal/terminal_toolbar.h"
#include "hostsdk/kd_child_event.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace
{

constexpr int StopKeys = int(Qt::CTRL) | int(Qt::Key_C);

bool isStopKeys(const QEvent &event)
{
    if (event.type() != QEvent::ShortcutOverride && event.type() != QEvent::KeyPress)
        return false;
    const auto &keyEvent = static_cast<const QKeyEvent &>(event);
    return (int(keyEvent.modifiers()) | keyEvent.key()) == StopKeys;
}

} // namespace

TerminalTool::TerminalTool(QWidget *parent, KdMainData &hostData, KdObserver &eventHost,
                           unsigned int widgetClassId, unsigned int toolInstance)
    : KdPluginWidget(parent, hostData, eventHost, widgetClassId, toolInstance),
      toolbar(new TerminalToolbar(this, hostData, *this)),
      column(new QVBoxLayout)
{
    toolbar->setObjectName(QStringLiteral("toolbar"));
    auto *row = new QHBoxLayout(this);
    row->addWidget(toolbar);
    row->addLayout(column);
}

TerminalTool::~TerminalTool() = default;

void TerminalTool::addConsoleAndEditor(TerminalConsole &console, TerminalPluginState *state)
{
    shownConsole = &console;
    shownConsole->setObjectName(QStringLiteral("console"));
    editor = new TerminalFileEditor(this, state, mainData, *this);
    editor->setObjectName(QStringLiteral("editor"));
    column->addWidget(shownConsole);
    column->addWidget(editor);

    editor->hide();
    shownConsole->show();
    toolbar->setTerminalMode();
    setAcceptDrops(true);
    // A click on the console while it is disabled still brings the focus, and with it Ctrl+C, back to the tool.
    setFocusPolicy(Qt::ClickFocus);

    takeStopKeysFrom(*shownConsole);
    takeStopKeysFrom(*editor);
    takeStopKeysFrom(*this);
}

void TerminalTool::addAbove(QWidget &part)
{
    column->insertWidget(0, &part);
}

void TerminalTool::processChildEvent(KdChildEvent &event)
{
    switch (event.type) {
    case KD::ShowTerminal:
        showConsole();
        break;
    case KD::ShowEditor:
        showEditor();
        break;
    case KD::OpenFile:
    case KD::SaveFile:
        editor->handleEvent(event);
        break;
    case KD::ExecuteFile:
        executeFile();
        break;
    case KD::ClearTerminal:
        if (shownConsole)
            clearConsole();
        break;
    case KD::Request:
        passRequest(event);
        break;
    case KD::ControllerChosen:
        consoleEvent(event);
        break;
    case KD::BusyChanged:
        setBusy(event.getIntArgument(0) != 0);
        break;
    case KD::ModifiedChanged:
        toolbar->setSaveEnabled(event.getIntArgument(0) != 0);
        break;
    default:
        host.processChildEvent(event);
        break;
    }
}

void TerminalTool::consoleEvent(KdChildEvent &) { }

void TerminalTool::busyChanged(bool) { }

void TerminalTool::showConsole()
{
    editor->hide();
    shownConsole->show();
    toolbar->setTerminalMode();
    // A console that is disabled takes no focus, which would go from the hidden editor to whatever comes next in the
    // window.
    if (busy)
        setFocus(Qt::OtherFocusReason);
    else
        shownConsole->setFocus(Qt::OtherFocusReason);
}

void TerminalTool::showEditor()
{
    editor->show();
    shownConsole->hide();
    toolbar->setEditorMode();
    editor->setFocus(Qt::OtherFocusReason);
}

void TerminalTool::executeFile()
{
    const QString text = editor->wholeText();
    showConsole();
    executeText(text);
}

void TerminalTool::passRequest(KdChildEvent &event)
{
    if (shownConsole->isVisible())
        consoleEvent(event);
    else if (editor->isVisible())
        editor->handleEvent(event);
}

void TerminalTool::setBusy(bool nowBusy)
{
    busy = nowBusy;
    setCursor(nowBusy ? Qt::BusyCursor : Qt::ArrowCursor);
    busyChanged(nowBusy);
}

void TerminalTool::focusInEvent(QFocusEvent *event)
{
    KdPluginWidget::focusInEvent(event);
    if (busy)
        return;
    if (shownConsole->isVisibleTo(this))
        shownConsole->setFocus(Qt::OtherFocusReason);
    else
        editor->setFocus(Qt::OtherFocusReason);
}

// Ctrl+C. Claimed as a key and no shortcut of its own: next to a host's action with the same keys neither would be
// triggered. What makes nothing of the keys itself, as a tool button, hands them on to the tool.

void TerminalTool::takeStopKeysFrom(QWidget &part)
{
    part.installEventFilter(this);
}

bool TerminalTool::eventFilter(QObject *watched, QEvent *event)
{
    if (!isStopKeys(*event) || !canStop())
        return KdPluginWidget::eventFilter(watched, event);
    event->accept();
    if (event->type() == QEvent::KeyPress)
        stopOrCopy();
    return true;
}

void TerminalTool::stopOrCopy()
{
    QWidget *focused = window()->focusWidget();
    auto *text = qobject_cast<QPlainTextEdit *>(focused);
    auto *field = qobject_cast<QLineEdit *>(focused);
    if (text && text->textCursor().hasSelection())
        text->copy();
    else if (field && field->hasSelectedText())
        field->copy();
    else
        stop();
}
