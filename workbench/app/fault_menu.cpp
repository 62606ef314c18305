#include "workbench/app/fault_menu.h"

#include "workbench/app/fault_switch.h"
#include "workbench/app/fault_text.h"

#include <QInputDialog>

#include <algorithm>
#include <iterator>

namespace workbench
{

namespace
{

using simulator::Fault;
using simulator::FaultKind;

struct Entry
{
    FaultKind kind;
    const char *text; ///< ends in an ellipsis when an amount is asked for
};

constexpr Entry Entries[] = {
    {FaultKind::Spark, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Spark")},
    {FaultKind::Short, QT_TRANSLATE_NOOP("workbench::FaultMenu", "S&hort")},
    {FaultKind::OpenLoad, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Open Load")},
    {FaultKind::Leak, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Leak...")},
    {FaultKind::ExternalInhibit, QT_TRANSLATE_NOOP("workbench::FaultMenu", "External &Inhibit")},
    {FaultKind::SafetyLoopOpen, QT_TRANSLATE_NOOP("workbench::FaultMenu", "Open Safety &Loop")},
    {FaultKind::SupplyFailure, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Supply Failure")},
    {FaultKind::Overheating, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Overheating...")},
    {FaultKind::NeedService, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Needs Service")},
    {FaultKind::MainsFailure, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Mains Failure")},
    {FaultKind::CrateSupplyFailure, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Supply Failure")},
    {FaultKind::BatteryFailure, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Battery Failure")},
    {FaultKind::CrateOverheating, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Overheating")},
    {FaultKind::Disconnect, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Disconnected")},
    {FaultKind::SlowAnswers, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Slow Answers...")},
    {FaultKind::DropAnswers, QT_TRANSLATE_NOOP("workbench::FaultMenu", "&Lose the Next Answer")},
    {FaultKind::DuplicateAnswers, QT_TRANSLATE_NOOP("workbench::FaultMenu", "Send the Next Answer &Twice")},
    {FaultKind::ReorderAnswers, QT_TRANSLATE_NOOP("workbench::FaultMenu", "S&wap the Next Two Answers")},
};

/// What is asked for before a fault begins.
struct Question
{
    FaultKind kind;
    const char *text;
    double factor; ///< from what is asked to the fault's amount
    double suggested;
    double least;
    double most;
    int decimals;
};

constexpr Question Questions[] = {
    {FaultKind::Leak, QT_TRANSLATE_NOOP("workbench::FaultMenu", "Additional leakage current in \u00b5A:"),
     1e-6, 100, 0.001, 1e6, 3},
    {FaultKind::Overheating, QT_TRANSLATE_NOOP("workbench::FaultMenu", "Warmer than it would be by, in K:"),
     1, 40, 1, 200, 0},
    {FaultKind::SlowAnswers, QT_TRANSLATE_NOOP("workbench::FaultMenu", "Every answer takes longer by, in s:"),
     1, 2, 0.001, 600, 3},
};

const Question *questionOf(FaultKind kind)
{
    for (const Question &question : Questions) {
        if (question.kind == kind)
            return &question;
    }
    return nullptr;
}

} // namespace

FaultMenu::FaultMenu(FaultSwitch &faults_, QWidget *parent)
    : QMenu(tr("Simulate &Fault"), parent), faults(faults_), endings(new QMenu(this))
{
    setObjectName(QStringLiteral("faultMenu"));
    endings->setObjectName(QStringLiteral("endFaults"));
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, &FaultMenu::fill);
}

void FaultMenu::setTargets(const QVector<OrbItemId> &ids)
{
    targets.clear();
    for (const OrbItemId &id : ids) {
        if (id.type == ids.constFirst().type)
            targets.append(id);
    }
}

void FaultMenu::fill()
{
    clear();
    const OrbItemId::Type level = targets.isEmpty() ? OrbItemId::Undefined : targets.constFirst().type;
    for (const Entry &entry : Entries) {
        if (simulator::faultLevel(entry.kind) == level)
            addKind(entry.kind, tr(entry.text));
    }
    if (isEmpty())
        addAction(tr("Choose a channel, module, crate or controller first"))->setEnabled(false);
    addSeparator();
    addEndings();
}

void FaultMenu::addKind(FaultKind kind, const QString &text)
{
    QAction *action = addAction(text);
    action->setObjectName(simulator::faultName(kind));
    action->setToolTip(tr("In the simulated plant only"));
    action->setStatusTip(tr("In the simulated plant only: %1").arg(faultText(kind)));
    if (FaultSwitch::lasts(kind)) {
        const QVector<Fault> here = faultsOf(kind);
        action->setCheckable(true);
        action->setChecked(std::all_of(here.cbegin(), here.cend(),
                                       [this](const Fault &fault) { return faults.isActive(fault); }));
    }
    connect(action, &QAction::triggered, this, [this, kind](bool isOn) { chosen(kind, isOn); });
}

/// A controller that is away is not in the tree, and a fault may lie anywhere in it.
void FaultMenu::addEndings()
{
    const QVector<Fault> there = faults.active();
    addMenu(endings);
    endings->clear();
    endings->setTitle(there.isEmpty() ? tr("&End (Nothing Is Simulated)") : tr("&End"));
    endings->menuAction()->setEnabled(!there.isEmpty());
    for (const Fault &fault : there) {
        const QString address = simulator::addressText(fault.object);
        QString place = fault.controller + (address.isEmpty() ? address : QLatin1Char(' ') + address);
        place.replace(QLatin1Char('&'), QLatin1String("&&"));
        endings->addAction(tr("%1: %2").arg(place, faultText(fault.kind)), &faults,
                           [this, fault] { faults.end({fault}); });
    }
    endings->addSeparator();
    endings->addAction(tr("&All of Them"), &faults, [this] {
        const QVector<Fault> all = faults.active();
        for (const Fault &fault : all)
            faults.end({fault});
    });
}

void FaultMenu::chosen(FaultKind kind, bool isOn)
{
    if (FaultSwitch::lasts(kind) && !isOn) {
        QVector<Fault> there = faultsOf(kind);
        there.erase(std::remove_if(there.begin(), there.end(),
                                   [this](const Fault &fault) { return !faults.isActive(fault); }),
                    there.end());
        faults.end(there);
    } else if (questionOf(kind)) {
        askForAmount(kind);
    } else {
        faults.cause(faultsOf(kind));
    }
}

void FaultMenu::askForAmount(FaultKind kind)
{
    const Question &question = *questionOf(kind);
    auto *dialog = new QInputDialog(parentWidget());
    dialog->setObjectName(QStringLiteral("faultAmount"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Simulate a fault: %1").arg(faultText(kind)));
    dialog->setLabelText(tr(question.text));
    dialog->setInputMode(QInputDialog::DoubleInput);
    dialog->setDoubleDecimals(question.decimals);
    dialog->setDoubleRange(question.least, question.most);
    dialog->setDoubleValue(question.suggested);
    // What is selected may change while the dialog is there.
    QVector<Fault> asked = faultsOf(kind);
    connect(dialog, &QInputDialog::doubleValueSelected, &faults,
            [this, asked, factor = question.factor](double amount) mutable {
                for (Fault &fault : asked)
                    fault.amount = amount * factor;
                faults.cause(asked);
            });
    dialog->open();
}

QVector<Fault> FaultMenu::faultsOf(FaultKind kind, double amount) const
{
    QVector<Fault> result;
    for (const OrbItemId &id : targets)
        result.append(FaultSwitch::faultAt(kind, id, amount));
    return result;
}

} // namespace workbench
