#include "command_terminal/terminal_console_completer.h"

#include "command_terminal/terminal_console.h"
#include "command_terminal/terminal_console_completer_contents.h"

#include <QApplication>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

namespace
{

constexpr int MaxUnscrolledHeight = 100;
constexpr int BorderPixels = 4;
constexpr int ScrolledBorderPixels = 8;
constexpr int HorizontalScrollMargin = 10;

} // namespace

TerminalConsoleCompleter::TerminalConsoleCompleter(TerminalConsole *console)
    : QWidget(console, Qt::ToolTip),
      scrollArea(new QScrollArea(this)),
      contents(new TerminalConsoleCompleterContents(this, console)),
      scrollBarExtent(QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent))
{
    setMinimumSize(10, 10);
    setFocusPolicy(Qt::NoFocus);
    scrollArea->setFocusPolicy(Qt::NoFocus);
    // One pixel under every style: with the thicker frame of some, a list that fits would get scroll bars.
    scrollArea->setFrameStyle(QFrame::Box | QFrame::Plain);
    scrollArea->setLineWidth(1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(scrollArea);
    contents->show();
    scrollArea->setWidget(contents);
    scrollArea->setBackgroundRole(QPalette::Base); // no grey strip beside the list
    hide();
}

TerminalConsoleCompleter::~TerminalConsoleCompleter() = default;

void TerminalConsoleCompleter::showCompletions(const QStringList &candidates)
{
    if (candidates.isEmpty()) {
        hide();
        return;
    }
    contents->setCandidates(candidates);
    const int width = contents->width();
    const int height = contents->height();
    if (height <= MaxUnscrolledHeight)
        resize(width + BorderPixels, height + BorderPixels);
    else
        resize(width + scrollBarExtent + ScrolledBorderPixels, MaxUnscrolledHeight + BorderPixels);
    show();
}

void TerminalConsoleCompleter::selectNext()
{
    contents->select(contents->selectedRow() + 1);
    showSelection();
}

void TerminalConsoleCompleter::selectPrevious()
{
    contents->select(contents->selectedRow() - 1);
    showSelection();
}

void TerminalConsoleCompleter::showSelection()
{
    scrollArea->ensureVisible(0, contents->rowTop(contents->selectedRow()), HorizontalScrollMargin,
                              contents->rowHeight());
}

QString TerminalConsoleCompleter::currentCompletion() const
{
    return contents->candidate(contents->selectedRow());
}

bool TerminalConsoleCompleter::hasFocusInside() const
{
    // Only the chain of first widget children is searched, and not the whole tree: this is meant.
    const QWidget *widget = this;
    while (widget) {
        if (widget->hasFocus())
            return true;
        const QWidget *firstChild = nullptr;
        for (const QObject *child : widget->children()) {
            if (child->isWidgetType()) {
                firstChild = static_cast<const QWidget *>(child);
                break;
            }
        }
        widget = firstChild;
    }
    return false;
}
