#include "workbench/simulator/fault.h"

namespace simulator
{

namespace
{

struct Row
{
    FaultKind kind;
    const char *name;
    OrbItemId::Type level;
};

constexpr Row Rows[] = {
    {FaultKind::Spark, "spark", OrbItemId::Channel},
    {FaultKind::Short, "short", OrbItemId::Channel},
    {FaultKind::OpenLoad, "openLoad", OrbItemId::Channel},
    {FaultKind::Leak, "leak", OrbItemId::Channel},
    {FaultKind::ExternalInhibit, "externalInhibit", OrbItemId::Channel},
    {FaultKind::SafetyLoopOpen, "safetyLoopOpen", OrbItemId::Module},
    {FaultKind::SupplyFailure, "supplyFailure", OrbItemId::Module},
    {FaultKind::Overheating, "overheating", OrbItemId::Module},
    {FaultKind::NeedService, "needService", OrbItemId::Module},
    {FaultKind::MainsFailure, "mainsFailure", OrbItemId::Crate},
    {FaultKind::CrateSupplyFailure, "crateSupplyFailure", OrbItemId::Crate},
    {FaultKind::BatteryFailure, "batteryFailure", OrbItemId::Crate},
    {FaultKind::CrateOverheating, "crateOverheating", OrbItemId::Crate},
    {FaultKind::Disconnect, "disconnect", OrbItemId::System},
    {FaultKind::SlowAnswers, "slowAnswers", OrbItemId::System},
    {FaultKind::DropAnswers, "dropAnswers", OrbItemId::System},
    {FaultKind::DuplicateAnswers, "duplicateAnswers", OrbItemId::System},
    {FaultKind::ReorderAnswers, "reorderAnswers", OrbItemId::System},
};

const Row &rowOf(FaultKind kind)
{
    for (const Row &row : Rows) {
        if (row.kind == kind)
            return row;
    }
    Q_UNREACHABLE();
}

} // namespace

QString faultName(FaultKind kind)
{
    return QString::fromLatin1(rowOf(kind).name);
}

bool faultOfName(const QString &name, FaultKind &kind)
{
    for (const Row &row : Rows) {
        if (name == QLatin1String(row.name)) {
            kind = row.kind;
            return true;
        }
    }
    return false;
}

OrbItemId::Type faultLevel(FaultKind kind)
{
    return rowOf(kind).level;
}

} // namespace simulator
