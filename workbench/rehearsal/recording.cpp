#include "workbench/rehearsal/recording.h"

namespace rehearsal
{

namespace
{

constexpr double Flatness = 1e-6; // of the nominal value

} // namespace

QString findingName(Finding::Kind kind)
{
    switch (kind) {
    case Finding::Request:
        return QStringLiteral("request");
    case Finding::TimeOut:
        return QStringLiteral("timeout");
    case Finding::LimitCrossed:
        return QStringLiteral("limit");
    case Finding::Trip:
        return QStringLiteral("trip");
    case Finding::Error:
        return QStringLiteral("error");
    case Finding::Script:
        return QStringLiteral("script");
    case Finding::Run:
        return QStringLiteral("run");
    case Finding::Warning:
        break;
    }
    return QStringLiteral("warning");
}

ChannelRecord::ChannelRecord(int mostPoints, double voltageNominal_, double currentNominal_)
    : voltageNominal(voltageNominal_),
      currentNominal(currentNominal_),
      trace(mostPoints, voltageNominal_ * Flatness, currentNominal_ * Flatness)
{ }

QString ChannelRecord::name() const
{
    return controller + QLatin1Char('/') + simulator::addressText(address);
}

} // namespace rehearsal
