#include "workbench/app/message_log_model.h"

#include "workbench/app/arrow_icon.h"
#include "workbench/app/system_state.h"

#include <QIcon>
#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace workbench
{

namespace
{

using simulator::JournalEntry;

constexpr int MostShown = 300; // characters in a cell; the whole text is in the details

QString oneLine(const QString &text)
{
    const QString line = text.left(MostShown).simplified();
    return text.size() > MostShown ? line + QChar(0x2026) : line;
}

QIcon outcomeIcon(const LoggedRequest &request)
{
    switch (request.outcome()) {
    case LoggedRequest::Waiting:
        return stateIcon(SystemState::Ramping);
    case LoggedRequest::Answered:
        return stateIcon(SystemState::On);
    case LoggedRequest::PassedThrough:
        return arrowIcon(request.kind == LoggedRequest::ToScript ? Qt::RightArrow : Qt::LeftArrow);
    case LoggedRequest::Refused:
    case LoggedRequest::Lost:
        return stateIcon(SystemState::Error);
    case LoggedRequest::Dropped:
        return stateIcon(SystemState::Unavailable);
    }
    return {};
}

} // namespace

void MessageLogModel::take(const QVector<JournalEntry> &entries)
{
    QVector<LoggedRequest> added;
    const auto flush = [&] {
        append(added);
        added.clear();
    };
    for (const JournalEntry &entry : entries) {
        switch (entry.kind) {
        case JournalEntry::Request:
        case JournalEntry::PassThroughIn:
        case JournalEntry::PassThroughOut:
            added.append(loggedRequest(entry));
            break;
        case JournalEntry::RequestRefused:
            flush();
            takeRefusal(entry);
            break;
        case JournalEntry::Answer:
        case JournalEntry::AnswerLost:
            flush();
            takeAnswer(entry);
            break;
        case JournalEntry::ControllerLeft:
            flush();
            dropWaiting(entry.controller);
            break;
        default:
            break;
        }
    }
    flush();
}

void MessageLogModel::clear()
{
    beginResetModel();
    requests.clear();
    endResetModel();
}

QString MessageLogModel::lineOf(int row) const
{
    QStringList cells;
    const LoggedRequest &request = at(row);
    for (int column = 0; column < ColumnCount; ++column) {
        switch (column) {
        case RequestColumn:
            cells << request.text.simplified();
            break;
        case AnswerColumn: {
            QStringList texts;
            if (!request.refusal.isEmpty())
                texts << request.refusal.simplified();
            for (const LoggedAnswer &answer : request.answers)
                texts << answer.text.simplified();
            cells << texts.join(QLatin1Char(' '));
            break;
        }
        default:
            cells << index(row, column).data().toString();
            break;
        }
    }
    return cells.join(QLatin1Char('\t'));
}

int MessageLogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(requests.size());
}

int MessageLogModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(ColumnCount);
}

QVariant MessageLogModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const LoggedRequest &request = at(index.row());
    if (role == Qt::DecorationRole && index.column() == ResultColumn)
        return outcomeIcon(request);
    if (role == Qt::TextAlignmentRole && (index.column() == TimeColumn || index.column() == LatencyColumn))
        return static_cast<int>(Qt::AlignCenter); // words are beside the numbers
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case TimeColumn:
        return QLocale().toString(request.time, 'f', 3);
    case ControllerColumn:
        return request.controller;
    case RequestColumn:
        return oneLine(request.summary);
    case AnswerColumn:
        return oneLine(answerSummary(request));
    case LatencyColumn: {
        constexpr double Milliseconds = 1000;
        return request.latency() < 0 ? QString()
                                     : QLocale().toString(request.latency() * Milliseconds, 'f', 1);
    }
    case ResultColumn:
        return outcomeText(request);
    default:
        return {};
    }
}

QVariant MessageLogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole && (section == TimeColumn || section == LatencyColumn))
        return static_cast<int>(Qt::AlignCenter); // words are beside the numbers
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const bool isLong = role == Qt::ToolTipRole;
    switch (section) {
    case TimeColumn:
        return isLong ? tr("When the request came in, in seconds since the start") : tr("Time / s");
    case ControllerColumn:
        return isLong ? tr("Connection that the request went to") : tr("Controller");
    case RequestColumn:
        return isLong ? tr("What was asked for; the message itself is beside the table") : tr("Request");
    case AnswerColumn:
        return isLong ? tr("What was answered; the messages themselves are beside the table") : tr("Answer");
    case LatencyColumn:
        return isLong ? tr("Time from the request to the first message of its answer") : tr("Latency / ms");
    case ResultColumn:
        return isLong ? tr("What came of it") : tr("Result");
    default:
        return {};
    }
}

void MessageLogModel::append(const QVector<LoggedRequest> &added)
{
    if (added.isEmpty())
        return;
    const int first = rowCount();
    beginInsertRows({}, first, first + added.size() - 1);
    requests.insert(requests.end(), added.cbegin(), added.cend());
    endInsertRows();
    const int surplus = rowCount() - MostRows;
    if (surplus <= 0)
        return;
    beginRemoveRows({}, 0, surplus - 1);
    requests.erase(requests.begin(), requests.begin() + surplus);
    endRemoveRows();
}

int MessageLogModel::rowOf(quint64 request) const
{
    const auto found =
        std::lower_bound(requests.cbegin(), requests.cend(), request,
                         [](const LoggedRequest &each, quint64 number) { return each.number < number; });
    // What passed through after it has its number, too.
    const bool isThere =
        found != requests.cend() && found->number == request && found->kind == LoggedRequest::Raw;
    return isThere ? static_cast<int>(found - requests.cbegin()) : -1;
}

LoggedRequest MessageLogModel::loggedRequest(const JournalEntry &entry)
{
    LoggedRequest request;
    if (entry.kind == JournalEntry::Request)
        lastNumber = entry.request;
    else
        request.kind =
            entry.kind == JournalEntry::PassThroughIn ? LoggedRequest::ToScript : LoggedRequest::FromScript;
    request.number = lastNumber;
    request.time = entry.time;
    request.controller = entry.controller;
    request.text = entry.text;
    request.summary = requestSummary(request);
    return request;
}

void MessageLogModel::takeAnswer(const JournalEntry &entry)
{
    const int row = rowOf(entry.request);
    if (row < 0)
        return;
    LoggedAnswer answer;
    answer.time = entry.time;
    answer.delay = entry.delay;
    answer.text = entry.text;
    answer.isLost = entry.kind == JournalEntry::AnswerLost;
    requests[static_cast<std::size_t>(row)].answers.append(answer);
    reportChange(row);
}

void MessageLogModel::takeRefusal(const JournalEntry &entry)
{
    const int row = rowOf(entry.request);
    if (row < 0)
        return;
    requests[static_cast<std::size_t>(row)].refusal = entry.text;
    reportChange(row);
}

void MessageLogModel::dropWaiting(const QString &controller)
{
    for (int row = 0; row < rowCount(); ++row) {
        LoggedRequest &request = requests[static_cast<std::size_t>(row)];
        if (request.controller != controller || request.outcome() != LoggedRequest::Waiting)
            continue;
        request.isDropped = true;
        reportChange(row);
    }
}

void MessageLogModel::reportChange(int row)
{
    Q_EMIT dataChanged(index(row, AnswerColumn), index(row, ResultColumn));
}

} // namespace workbench
