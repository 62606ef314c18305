#pragma once

#include "hostclient/orb_item_value.h"
#include "hostclient/orb_request_item.h"
#include "hostclient/tarn_result.h"

#include <QString>
#include <QVector>

namespace simulator
{

/// The pass-through of one connection: what the service hands to a script, and what the script sends back. Not locked;
/// the service does that.
///
/// Chosen for the simulation: nothing is handed over or sent before a script has activated it (Failed). Activating it
/// again, under whatever name, keeps what waits. At most 10,000 messages wait in either direction; one more is refused.
class PassThrough
{
public:
    static constexpr int MostMessages = 10000;

    bool isActive() const { return active; }
    /// The script that activated it last.
    const QString &scriptName() const { return script; }

    void activate(const QString &scriptName);
    void end();

    /// From the service to the script.
    TarnResult inject(const OrbRequestItem &request);
    /// NoData when none waits.
    TarnResult takeNext(OrbRequestItem &request);
    TarnResult takeAll(QVector<OrbRequestItem> &requests);

    /// From the script to the service.
    TarnResult send(const QVector<OrbItemValue> &values);
    QVector<OrbItemValue> takeSent();

private:
    bool active = false;
    QString script;
    QVector<OrbRequestItem> waiting;
    QVector<OrbItemValue> sent;
};

} // namespace simulator
