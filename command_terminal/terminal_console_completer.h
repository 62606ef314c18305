#pragma once

#include <QStringList>
#include <QWidget>

class QScrollArea;
class TerminalConsole;
class TerminalConsoleCompleterContents;

/// The popup that lists completions below the word being typed. It never takes the keyboard focus: the console keeps
/// it and forwards the keys. GUI thread only.
class TerminalConsoleCompleter : public QWidget
{
    Q_OBJECT

public:
    /// The console owns the popup and is told when a candidate is double-clicked.
    explicit TerminalConsoleCompleter(TerminalConsole *console);
    ~TerminalConsoleCompleter() override;

    /// Shows the candidates in their order, the first one selected; an empty list hides the popup.
    void showCompletions(const QStringList &candidates);

    /// Move the selection by a row and scroll it into view.
    void selectNext();
    void selectPrevious();

    /// The selected candidate, or an empty text when there is none.
    QString currentCompletion() const;

    /// Whether the popup or one of the widgets inside it has the focus.
    bool hasFocusInside() const;

private:
    void showSelection();

    QScrollArea *scrollArea;
    TerminalConsoleCompleterContents *contents;
    const int scrollBarExtent;
};
