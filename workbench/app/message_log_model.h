#pragma once

#include "workbench/app/logged_request.h"
#include "workbench/simulator/plant_journal.h"

#include <QAbstractTableModel>

#include <deque>

namespace workbench
{

/// The latest raw requests with what came of them, and the messages to scripts and from them, a row each, the newest
/// last. GUI thread only.
class MessageLogModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        TimeColumn,
        ControllerColumn,
        RequestColumn,
        AnswerColumn,
        LatencyColumn,
        ResultColumn,
        ColumnCount,
    };

    static constexpr int MostRows = 10000;

    using QAbstractTableModel::QAbstractTableModel;

    /// Takes requests and answers out of what happened; answers to requests that are not there are passed over.
    void take(const QVector<simulator::JournalEntry> &entries);
    void clear();

    const LoggedRequest &at(int row) const { return requests[static_cast<std::size_t>(row)]; }
    /// A row as one line, columns separated by tabs.
    QString lineOf(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void append(const QVector<LoggedRequest> &added);
    LoggedRequest loggedRequest(const simulator::JournalEntry &entry);
    int rowOf(quint64 request) const;
    void takeAnswer(const simulator::JournalEntry &entry);
    void takeRefusal(const simulator::JournalEntry &entry);
    void dropWaiting(const QString &controller);
    void reportChange(int row);

    std::deque<LoggedRequest> requests; // by number
    quint64 lastNumber = 0;
};

} // namespace workbench
