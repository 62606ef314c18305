#pragma once

#include <QStringList>
#include <QWidget>

class TerminalConsole;

/// The list of candidates that the completion popup scrolls. GUI thread only.
class TerminalConsoleCompleterContents : public QWidget
{
    Q_OBJECT

public:
    /// `parent` owns the list; `console`, which outlives it, takes what is double-clicked.
    TerminalConsoleCompleterContents(QWidget *parent, TerminalConsole *console);
    ~TerminalConsoleCompleterContents() override;

    /// Takes over the candidates in their order, selects the first and fits the size to them.
    void setCandidates(const QStringList &list);

    /// Selects a row; a row that does not exist changes nothing.
    void select(int row);

    int selectedRow() const { return selection; }
    int rowHeight() const { return lineHeight; } ///< in pixels
    int rowTop(int row) const; ///< y of the row's upper edge, in pixels

    /// The candidate of a row, or an empty text for a row that does not exist.
    QString candidate(int row) const { return candidates.value(row); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    bool isRow(int row) const { return row >= 0 && row < candidates.size(); }
    int rowAt(int y) const;

    QStringList candidates;
    int lineHeight;
    int ascent;
    int selection = 0;
    TerminalConsole *console;
};
