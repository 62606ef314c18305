#pragma once

#include <QString>
#include <QtGlobal>

namespace simulator
{

/// What an object contributes to the running state and the counters of the object above it.
struct RunningSummary
{
    quint32 events = 0;
    quint32 errors = 0;
    bool hasError = false;
    bool isRamping = false;
    bool isOn = false;
    double highestVoltage = 0; ///< V
    double loadFraction = 0; ///< measured by nominal voltage, 0 to 1; summed up when summaries are added

    RunningSummary &operator+=(const RunningSummary &other)
    {
        events += other.events;
        errors += other.errors;
        hasError = hasError || other.hasError;
        isRamping = isRamping || other.isRamping;
        isOn = isOn || other.isOn;
        highestVoltage = qMax(highestVoltage, other.highestVoltage);
        loadFraction += other.loadFraction;
        return *this;
    }

    /// The worst first: "error", "info" (something ramps), "ok" (something is on), "off".
    QString runningState() const
    {
        if (hasError)
            return QStringLiteral("error");
        if (isRamping)
            return QStringLiteral("info");
        return isOn ? QStringLiteral("ok") : QStringLiteral("off");
    }
};

} // namespace simulator
