#include "workbench/simulator/service_node.h"

#include <QStringList>

namespace simulator
{

namespace
{

using Quantity = SystemQuantity;

constexpr double ScanTime = 2; // s
constexpr double DefaultCycleTime = 200; // ms
constexpr double MillisecondsPerSecond = 1000;

} // namespace

ItemValue ServiceNode::read(const ItemDefinition &item, const ConnectionView &view, double now) const
{
    if (item.source == ItemSource::Quantity)
        return quantity(static_cast<Quantity>(item.argument), view, now);
    return state.read(item, 0);
}

TarnResult ServiceNode::write(const ItemDefinition &item, const ItemValue &value, double now)
{
    if (item.source == ItemSource::Quantity)
        return writeQuantity(static_cast<Quantity>(item.argument), value, now);
    return state.store(item, value) ? TarnResult::Success : TarnResult::Denied;
}

void ServiceNode::restart(double now)
{
    *this = ServiceNode();
    startTime = now;
}

ItemValue ServiceNode::quantity(SystemQuantity which, const ConnectionView &view, double now) const
{
    switch (which) {
    case Quantity::LiveInsertion:
        return ItemValue::of(liveInsertion);
    case Quantity::RunningStateWeb:
        return ItemValue::of(httpRunning ? QStringLiteral("ok") : QStringLiteral("off"));
    case Quantity::WifiState:
        return ItemValue::of(wifi ? QStringLiteral("ok") : QStringLiteral("off"));
    case Quantity::ConnectedClients:
        return ItemValue::of(static_cast<double>(view.clients));
    case Quantity::Discover:
        return ItemValue::of(now < scanEnd);
    case Quantity::Protocols: {
        QStringList running;
        if (httpRunning)
            running << QStringLiteral("http");
        if (websocketRunning)
            running << QStringLiteral("websocket");
        return ItemValue::of(running.join(QLatin1Char(',')));
    }
    case Quantity::HeartBeat: {
        const double cycle =
            state.settings.value(static_cast<quint8>(SystemSetting::CycleTime), DefaultCycleTime);
        return ItemValue::of((now - startTime) * MillisecondsPerSecond / cycle);
    }
    case Quantity::ConnectionStatus:
        return ItemValue::of(connected ? QStringLiteral("connected") : QStringLiteral("disconnected"));
    case Quantity::ConnectionName:
        return ItemValue::of(view.connectionName);
    case Quantity::ControllerName:
        return ItemValue::of(view.displayText);
    case Quantity::SessionId:
        return ItemValue::of(view.sessionId);
    default:
        return {}; // the others can only be written, or are the controller's
    }
}

TarnResult ServiceNode::writeQuantity(SystemQuantity which, const ItemValue &value, double now)
{
    switch (which) {
    case Quantity::Wifi:
        wifi = value.isTrue();
        return TarnResult::Success;
    case Quantity::LiveInsertion:
        liveInsertion = value.isTrue();
        return TarnResult::Success;
    case Quantity::RestartScan:
    case Quantity::AutoConfig:
        if (value.isTrue())
            scanEnd = now + ScanTime;
        return TarnResult::Success;
    case Quantity::Connect:
    case Quantity::Disconnect:
        if (value.isTrue())
            connected = which == Quantity::Connect;
        return TarnResult::Success;
    case Quantity::ServiceStart:
    case Quantity::ServiceStop:
    case Quantity::ServiceRestart:
        return controlInterface(which, value.text);
    default:
        return TarnResult::Denied; // the others can only be read
    }
}

TarnResult ServiceNode::controlInterface(SystemQuantity which, const QString &name)
{
    const bool isRunning = which != Quantity::ServiceStop;
    if (name == QLatin1String("http")) {
        httpRunning = isRunning;
        return TarnResult::Success;
    }
    if (name == QLatin1String("websocket")) {
        websocketRunning = isRunning;
        return TarnResult::Success;
    }
    return TarnResult::Failed;
}

} // namespace simulator
