#include "command_terminal/terminal_console_completer_contents.h"

#include "command_terminal/terminal_console.h"
#include "command_terminal/text_width.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPalette>

#include <algorithm>

namespace
{

constexpr int MarginPixels = 2;
constexpr int HighlightPixels = 1000; // whatever the list's own width

} // namespace

TerminalConsoleCompleterContents::TerminalConsoleCompleterContents(QWidget *parent, TerminalConsole *owner)
    : QWidget(parent), lineHeight(fontMetrics().height()), ascent(fontMetrics().ascent()), console(owner)
{
    setFocusPolicy(Qt::NoFocus);
    QFont withoutKerning = font(); // of a long list only some candidates must be measured then
    withoutKerning.setKerning(false);
    setFont(withoutKerning);
}

TerminalConsoleCompleterContents::~TerminalConsoleCompleterContents() = default;

void TerminalConsoleCompleterContents::setCandidates(const QStringList &list)
{
    candidates = list;
    selection = 0;
    const QFontMetrics metrics = fontMetrics();
    lineHeight = metrics.height();
    ascent = metrics.ascent();
    const int widest = command_terminal::TextWidth(font()).widest(candidates);
    resize(widest + 2 * MarginPixels, candidates.size() * lineHeight + 2 * MarginPixels);
    update();
}

void TerminalConsoleCompleterContents::select(int row)
{
    if (!isRow(row) || row == selection)
        return;
    selection = row;
    update();
}

int TerminalConsoleCompleterContents::rowTop(int row) const
{
    return row * lineHeight + MarginPixels;
}

int TerminalConsoleCompleterContents::rowAt(int y) const
{
    return (y - MarginPixels) / lineHeight; // truncates towards zero, so the upper margin belongs to row 0
}

void TerminalConsoleCompleterContents::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);

    const QPalette palette; // the application's, not the widget's own
    // Glyphs may reach out of their row, so a row more is painted on either side.
    const int first = std::max(rowAt(event->rect().top()) - 1, 0);
    const int last = std::min(rowAt(event->rect().bottom()) + 1, candidates.size() - 1);
    for (int row = first; row <= last; ++row) {
        const int baseline = rowTop(row) + ascent;
        if (row == selection)
            painter.fillRect(0, baseline - ascent, HighlightPixels, lineHeight, palette.highlight());
        const QPalette::ColorRole role = row == selection ? QPalette::HighlightedText : QPalette::WindowText;
        painter.setPen(palette.color(QPalette::Active, role));
        painter.drawText(MarginPixels, baseline, candidates.at(row));
    }
}

void TerminalConsoleCompleterContents::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        select(rowAt(event->y()));
}

void TerminalConsoleCompleterContents::mouseDoubleClickEvent(QMouseEvent *event)
{
    const int row = rowAt(event->y());
    if (event->button() != Qt::LeftButton || !isRow(row))
        return;
    selection = row;
    if (console)
        console->acceptCompletion(candidates.at(row));
}
