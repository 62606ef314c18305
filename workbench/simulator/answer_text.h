#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/hostkit/orb_backend.h"
#include "workbench/simulator/request_command.h"

#include <QString>
#include <QStringList>

namespace simulator
{

/// The trigger message that stands for a result: Success "true", Failed "false", Denied "denied", NoData "noData".
QString triggerMessage(TarnResult result);

/// What a get has read, as a JSON object:
///
///     {"controller":"local","line":0,"address":0,"channel":1,"item":"Status.voltageMeasure",
///      "value":499.8,"unit":"V","timestamp":1577836812.250}
///
/// in one line without blanks. "controller" is the connection's name; "line", "address" and "channel" are there as far
/// as the place was given. "value" is true or false, a number or a text, as the item's kind has it; "timestamp" is in
/// seconds since 1970-01-01 UTC. The data of a request follow its trigger as one message: an array of these objects in
/// the order of its gets.
QString dataObject(const QString &connectionName, const RequestCommand &command,
                   const OrbItemReading &reading);

/// The message of one or more objects.
QString dataMessage(const QStringList &objects);

} // namespace simulator
