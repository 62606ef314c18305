#pragma once

#include "hostclient/orb_item_id.h"
#include "workbench/simulator/fault.h"

#include <QMenu>
#include <QVector>

namespace workbench
{

class FaultSwitch;

/// "Simulate Fault": what can go wrong with the chosen objects, each kind an entry, checked while it is there, and what
/// is wrong anywhere, to be ended. It is filled when it opens. GUI thread only.
class FaultMenu : public QMenu
{
    Q_OBJECT

public:
    /// The switch is kept and outlives the menu.
    explicit FaultMenu(FaultSwitch &faults, QWidget *parent = nullptr);

    /// Objects that the entries are for: those of the level of the first one.
    void setTargets(const QVector<OrbItemId> &ids);

private:
    void fill();
    void addKind(simulator::FaultKind kind, const QString &text);
    void addEndings();
    void chosen(simulator::FaultKind kind, bool isOn);
    void askForAmount(simulator::FaultKind kind);
    QVector<simulator::Fault> faultsOf(simulator::FaultKind kind, double amount = 0) const;

    FaultSwitch &faults;
    QMenu *const endings;
    QVector<OrbItemId> targets;
};

} // namespace workbench
