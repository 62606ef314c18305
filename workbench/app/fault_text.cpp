#include "workbench/app/fault_text.h"

#include "workbench/app/translated_text.h"

namespace workbench
{

QString faultText(simulator::FaultKind kind)
{
    using simulator::FaultKind;
    switch (kind) {
    case FaultKind::Spark:
        return tr("Spark");
    case FaultKind::Short:
        return tr("Short");
    case FaultKind::OpenLoad:
        return tr("Open load");
    case FaultKind::Leak:
        return tr("Leak");
    case FaultKind::ExternalInhibit:
        return tr("External inhibit");
    case FaultKind::SafetyLoopOpen:
        return tr("Safety loop open");
    case FaultKind::SupplyFailure:
    case FaultKind::CrateSupplyFailure:
        return tr("Supply failure");
    case FaultKind::Overheating:
    case FaultKind::CrateOverheating:
        return tr("Overheating");
    case FaultKind::NeedService:
        return tr("Needs service");
    case FaultKind::MainsFailure:
        return tr("Mains failure");
    case FaultKind::BatteryFailure:
        return tr("Battery failure");
    case FaultKind::Disconnect:
        return tr("Disconnected");
    case FaultKind::SlowAnswers:
        return tr("Slow answers");
    case FaultKind::DropAnswers:
        return tr("Next answer is lost");
    case FaultKind::DuplicateAnswers:
        return tr("Next answer comes twice");
    case FaultKind::ReorderAnswers:
        return tr("Next two answers swap places");
    }
    return {};
}

} // namespace workbench
