#pragma once

#include <QPersistentModelIndex>
#include <QWidget>

class QAction;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSortFilterProxyModel;
class QTableView;

namespace workbench
{

class MessageLogModel;
class PlantWatcher;

/// Every raw request with its answer and its latency. It scrolls with what comes as long as its end is in sight.
/// GUI thread only.
class MessageLog : public QWidget
{
    Q_OBJECT

public:
    /// The watcher is kept and outlives the log.
    explicit MessageLog(PlantWatcher &watcher, QWidget *parent = nullptr);

    MessageLogModel &model() { return *requests; }
    QTableView &table() { return *view; }

    /// Copies the selected rows, or the current one.
    void copy();
    void clear();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void buildTable();
    void layOut();
    void showDetails();
    void showCount();

    PlantWatcher &watcher;
    MessageLogModel *requests;
    QSortFilterProxyModel *filtered;
    QLineEdit *filterLine;
    QLabel *count;
    QTableView *view;
    QPlainTextEdit *details;
    QAction *copyAction;
    bool isAtEnd = true;
    QPersistentModelIndex shown; ///< row of the model whose details are shown
};

} // namespace workbench
