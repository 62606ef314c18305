#include "workbench/simulator/answer_transport.h"

#include "workbench/simulator/answer_text.h"
#include "workbench/simulator/chance.h"
#include "workbench/simulator/moment_clock.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace simulator
{

namespace
{

constexpr double Never = std::numeric_limits<double>::infinity();

OrbItemId idOf(const QString &connection, const RequestCommand &command)
{
    OrbItemId id(command.object.level);
    id.line = command.object.line;
    id.address = command.object.address;
    id.channel = command.object.channel;
    id.connectionName = connection;
    id.itemName = command.item;
    return id;
}

} // namespace

AnswerTransport::AnswerTransport(ConnectionTable &connectionTable, PlantJournal &journalEntries,
                                 const PlantLayout &layout, double clockStartedAt,
                                 std::function<void(double)> letPlantComeTo)
    : table(connectionTable),
      journal(journalEntries),
      startedAt(clockStartedAt),
      letPlantRun(std::move(letPlantComeTo))
{
    for (const ControllerLayout &controller : layout.controllers)
        paths.emplace_back(controller, chance::mixed(layout.seed, paths.size()));
    for (const ScheduledMessage &message : layout.messages)
        addMessage(message);
    for (const ScheduledFault &scheduled : layout.faults) {
        if (faultLevel(scheduled.fault.kind) == OrbItemId::System)
            addTurn({scheduled.at, true, scheduled.fault});
    }
}

void AnswerTransport::ask(const Connection &connection, const QString &text,
                          const QVector<RequestCommand> &commands, double now,
                          std::chrono::milliseconds serviceLatency)
{
    PendingRequest request;
    request.number = enterRequest(connection.controller->connectionName(), text, now);
    request.connection = connection.name;
    request.commands = commands;
    request.askedAt = now;
    pathOf(*connection.controller).ask(request, serviceLatency);
}

void AnswerTransport::refuse(const QString &controller, const QString &text, const QString &reason,
                             double now)
{
    JournalEntry entry;
    entry.kind = JournalEntry::RequestRefused;
    entry.request = enterRequest(controller, text.left(LongestRefusedText), now);
    entry.controller = controller;
    entry.text = reason;
    entry.time = now;
    journal.add(entry);
}

void AnswerTransport::comeTo(double now)
{
    const RealTime::time_point realNow = RealTime::now();
    for (;;) {
        const double nextTurn = turns.empty() ? Never : turns.front().at;
        const double nextMessage = messages.empty() ? Never : messages.front().at;
        double next = std::min(nextTurn, nextMessage);
        std::size_t nextPath = paths.size();
        for (std::size_t i = 0; i < paths.size(); ++i) {
            const double due = paths[i].nextDue(now, realNow);
            if (due < next) {
                next = due;
                nextPath = i;
            }
        }
        if (next > now)
            break;
        time = std::max(time, next);
        letPlantRun(time);
        if (nextPath < paths.size()) {
            const PendingRequest request = paths[nextPath].takeNext();
            carryOut(request, *table.controllers()[nextPath], paths[nextPath], time);
        } else if (nextTurn <= nextMessage) {
            const Turn what = turns.front();
            turns.erase(turns.begin());
            turn(what, time);
        } else {
            ScheduledMessage message = messages.front();
            messages.erase(messages.begin());
            handOver(message);
            message.at += message.every;
            if (message.every > 0)
                addMessage(message);
        }
    }
    time = std::max(time, now);
    letPlantRun(time);
}

AnswerTransport::RealTime::time_point AnswerTransport::nextLook(double now) const
{
    const RealTime::time_point realNow = RealTime::now();
    RealTime::time_point next = RealTime::time_point::max();
    if (!turns.empty())
        next = AnswerPath::lookAfter(turns.front().at - now, realNow);
    if (!messages.empty())
        next = std::min(next, AnswerPath::lookAfter(messages.front().at - now, realNow));
    for (const AnswerPath &path : paths)
        next = std::min(next, path.nextLook(now, realNow));
    return next;
}

std::vector<AnswerNotice> AnswerTransport::takeNotices()
{
    return std::exchange(notices, {});
}

TarnResult AnswerTransport::write(const Connection &connection, const OrbItemId &id, const QString &value,
                                  const QString &unit, quint64 request, double now, AnswerNotice &changed)
{
    Controller &controller = *connection.controller;
    const ObjectAddress object{id.type, id.line, id.address, id.channel};
    JournalEntry entry;
    entry.kind = JournalEntry::Write;
    entry.request = request;
    entry.controller = controller.connectionName();
    entry.object = object;
    entry.item = id.itemName;
    entry.text = unit.isEmpty() ? value : value + QLatin1Char(' ') + unit;
    entry.time = now;
    // First, since it may cause what is entered next.
    const quint64 number = journal.add(entry);
    const TarnResult result =
        table.write(connection, object, id.itemName, value, unit, MomentClock(now, startedAt));
    journal.setResult(number, result);
    changed.kind = AnswerNotice::ValuesChanged;
    changed.id = id;
    changed.id.connectionName = connection.name;
    changed.id.connection = table.indexOf(connection);
    if (!controller.isAvailable()) {
        // It was there a moment ago: this write took it away.
        loseAll(pathOf(controller).drop(), controller, now);
        changed.kind = AnswerNotice::StructureChanged;
    }
    return result;
}

bool AnswerTransport::setAvailable(Controller &controller, bool available, double now)
{
    if (controller.isAvailable() == available)
        return false;
    controller.setAvailable(available);
    enter(available ? JournalEntry::ControllerCame : JournalEntry::ControllerLeft, controller, {}, now);
    if (available)
        forgetEnd(FaultKind::Disconnect, controller.connectionName());
    else
        loseAll(pathOf(controller).drop(), controller, now);
    return true;
}

void AnswerTransport::dropConnection(const Connection &connection, double now)
{
    Controller &controller = *connection.controller;
    loseAll(pathOf(controller).drop(connection.name), controller, now);
}

TarnResult AnswerTransport::cause(const Fault &fault, double now)
{
    if (!makesSense(fault))
        return TarnResult::Failed;
    Controller *const controller = table.controller(fault.controller);
    if (controller == nullptr)
        return TarnResult::NoData;
    begin(fault, *controller, now);
    return TarnResult::Success;
}

TarnResult AnswerTransport::mend(const Fault &fault, double now)
{
    if (faultLevel(fault.kind) != OrbItemId::System)
        return TarnResult::Failed;
    Controller *const controller = table.controller(fault.controller);
    return controller != nullptr && end(fault.kind, *controller, now) ? TarnResult::Success
                                                                      : TarnResult::NoData;
}

bool AnswerTransport::makesSense(const Fault &fault)
{
    constexpr double MostAnswers = 1e6;
    constexpr double LongestDelay = 3600;
    if (faultLevel(fault.kind) != OrbItemId::System || !std::isfinite(fault.duration) || fault.duration < 0
        || !std::isfinite(fault.amount) || fault.amount < 0)
        return false;
    return fault.kind == FaultKind::SlowAnswers ? fault.amount > 0 && fault.amount <= LongestDelay
                                                : fault.amount <= MostAnswers;
}

quint64 AnswerTransport::enterRequest(const QString &controller, const QString &text, double now)
{
    JournalEntry entry;
    entry.kind = JournalEntry::Request;
    entry.request = ++lastRequest;
    entry.controller = controller;
    entry.text = text;
    entry.time = now;
    journal.add(entry);
    return lastRequest;
}

AnswerPath &AnswerTransport::pathOf(const Controller &controller)
{
    const auto &controllers = table.controllers();
    const auto found =
        std::find_if(controllers.begin(), controllers.end(),
                     [&controller](const auto &candidate) { return candidate.get() == &controller; });
    return paths[static_cast<std::size_t>(found - controllers.begin())];
}

void AnswerTransport::carryOut(const PendingRequest &request, Controller &controller, AnswerPath &path,
                               double now)
{
    QStringList data;
    TarnResult result = TarnResult::Success;
    for (const RequestCommand &command : request.commands) {
        result = carryOut(command, request, now, data);
        if (result != TarnResult::Success)
            break;
    }
    if (result == TarnResult::NotConnected)
        return loseAll({request}, controller, now); // went away in the middle of it
    ReadyAnswer answer{request.number, request.connection, request.askedAt, {triggerMessage(result)}};
    if (result == TarnResult::Success && !data.isEmpty())
        answer.messages << dataMessage(data);
    send(answer, controller, path, now);
}

TarnResult AnswerTransport::carryOut(const RequestCommand &command, const PendingRequest &request, double now,
                                     QStringList &data)
{
    const Connection *const connection = table.find(request.connection);
    if (connection == nullptr || !connection->isUsable())
        return TarnResult::NotConnected;
    if (command.kind == RequestCommand::SetItem) {
        AnswerNotice changed;
        const TarnResult result = write(*connection, idOf(request.connection, command), command.value,
                                        command.unit, request.number, now, changed);
        if (result == TarnResult::Success)
            notices.push_back(changed);
        return result;
    }
    OrbItemReading reading;
    const TarnResult result =
        table.read(*connection, command.object, command.item, MomentClock(now, startedAt), reading);
    if (result == TarnResult::Success)
        data << dataObject(request.connection, command, reading);
    return result;
}

void AnswerTransport::send(const ReadyAnswer &answer, Controller &controller, AnswerPath &path, double now)
{
    constexpr FaultKind Counting[] = {FaultKind::DropAnswers, FaultKind::DuplicateAnswers,
                                      FaultKind::ReorderAnswers};
    std::vector<FaultKind> active;
    std::copy_if(std::begin(Counting), std::end(Counting), std::back_inserter(active),
                 [&path](FaultKind kind) { return path.isActive(kind); });
    const bool isLost = path.isActive(FaultKind::DropAnswers);
    sendAll(path.send(answer), controller, now);
    if (isLost) {
        PendingRequest lost;
        lost.number = answer.request;
        lost.askedAt = answer.askedAt;
        loseAll({lost}, controller, now);
    }
    for (const FaultKind kind : active) {
        if (path.isActive(kind))
            continue;
        forgetEnd(kind, controller.connectionName());
        enter(JournalEntry::FaultEnds, controller, faultName(kind), now);
    }
}

void AnswerTransport::sendAll(const std::vector<ReadyAnswer> &answers, const Controller &controller,
                              double now)
{
    for (const ReadyAnswer &answer : answers) {
        for (const QString &message : answer.messages) {
            JournalEntry entry;
            entry.kind = JournalEntry::Answer;
            entry.request = answer.request;
            entry.controller = controller.connectionName();
            entry.text = message;
            entry.delay = now - answer.askedAt;
            entry.time = now;
            journal.add(entry);
            notices.push_back({AnswerNotice::RawMessage, answer.connection, message, OrbItemId()});
        }
    }
}

void AnswerTransport::loseAll(const std::vector<PendingRequest> &dropped, const Controller &controller,
                              double now)
{
    for (const PendingRequest &request : dropped) {
        JournalEntry entry;
        entry.kind = JournalEntry::AnswerLost;
        entry.request = request.number;
        entry.controller = controller.connectionName();
        entry.delay = now - request.askedAt;
        entry.time = now;
        journal.add(entry);
    }
}

void AnswerTransport::begin(const Fault &fault, Controller &controller, double now)
{
    const QString &name = controller.connectionName();
    enter(JournalEntry::FaultBegins, controller, faultName(fault.kind), now);
    if (fault.kind == FaultKind::Disconnect) {
        if (setAvailable(controller, false, now))
            notifyStructureChanged();
    } else {
        pathOf(controller).begin(fault.kind, fault.amount);
    }
    forgetEnd(fault.kind, name);
    if (fault.duration > 0) {
        Fault over = fault;
        over.controller = name;
        addTurn({now + fault.duration, false, over});
    }
}

bool AnswerTransport::end(FaultKind kind, Controller &controller, double now)
{
    AnswerPath &path = pathOf(controller);
    if (kind == FaultKind::Disconnect ? controller.isAvailable() : !path.isActive(kind))
        return false;
    forgetEnd(kind, controller.connectionName());
    enter(JournalEntry::FaultEnds, controller, faultName(kind), now);
    if (kind == FaultKind::Disconnect) {
        setAvailable(controller, true, now);
        notifyStructureChanged();
        return true;
    }
    path.end(kind);
    if (kind == FaultKind::ReorderAnswers)
        sendAll(path.takeKept(), controller, now);
    return true;
}

void AnswerTransport::turn(const Turn &what, double now)
{
    Controller *const controller = table.controller(what.fault.controller);
    if (controller == nullptr)
        return;
    if (!what.begins)
        end(what.fault.kind, *controller, now);
    else if (makesSense(what.fault))
        begin(what.fault, *controller, now);
}

void AnswerTransport::handOver(const ScheduledMessage &message)
{
    const Controller *const controller = table.controller(message.controller);
    const QVector<QPair<QString, QString>> usable = table.usable();
    for (const QPair<QString, QString> &name : usable) {
        Connection *const connection = table.find(name.first);
        if (connection->controller == controller)
            connection->passThrough.inject(message.request); // refused where no script waits for it
    }
}

void AnswerTransport::forgetEnd(FaultKind kind, const QString &controller)
{
    const auto isMeant = [kind, &controller](const Turn &what) {
        return !what.begins && what.fault.kind == kind && what.fault.controller == controller;
    };
    turns.erase(std::remove_if(turns.begin(), turns.end(), isMeant), turns.end());
}

void AnswerTransport::addTurn(const Turn &what)
{
    const auto later = std::upper_bound(turns.begin(), turns.end(), what,
                                        [](const Turn &a, const Turn &b) { return a.at < b.at; });
    turns.insert(later, what);
}

void AnswerTransport::addMessage(const ScheduledMessage &message)
{
    const auto later =
        std::upper_bound(messages.begin(), messages.end(), message,
                         [](const ScheduledMessage &a, const ScheduledMessage &b) { return a.at < b.at; });
    messages.insert(later, message);
}

void AnswerTransport::enter(JournalEntry::Kind kind, const Controller &controller, const QString &text,
                            double now)
{
    JournalEntry entry;
    entry.kind = kind;
    entry.controller = controller.connectionName();
    entry.text = text;
    entry.time = now;
    journal.add(entry);
}

void AnswerTransport::notifyStructureChanged()
{
    AnswerNotice notice;
    notice.kind = AnswerNotice::StructureChanged;
    notices.push_back(notice);
}

} // namespace simulator
