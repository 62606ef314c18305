#include "tests/workbench/small_system.h"

namespace
{

OrbItemId address(OrbItemId::Type level, quint32 line, quint32 device)
{
    OrbItemId id(level);
    id.line = line;
    id.address = device;
    return id;
}

const QVector<QPair<QString, QString>> bothControllers = {
    {QStringLiteral("left"), QStringLiteral("Left hall")},
    {QStringLiteral("right"), QStringLiteral("Right hall")},
};

} // namespace

SmallSystem::SmallSystem() : dataAccess(backend), mainData(&dataAccess)
{
    backend.setControllers(bothControllers);
    backend.setCrates({address(OrbItemId::Crate, 0, 1000)});
    backend.setModules({address(OrbItemId::Module, 1, 7), address(OrbItemId::Module, 0, 4)});
    backend.setCrateModules({address(OrbItemId::Module, 0, 4)});
    setItem(QStringLiteral("Status.runningStateOrb"), QStringLiteral("ok"));
    setItem(QStringLiteral("0.1000.Status.runningState"), QStringLiteral("off"));
    setItem(QStringLiteral("0.4.Status.runningState"), QStringLiteral("info"));
    setItem(QStringLiteral("0.4.Status.numberOfChannels"), QStringLiteral("2"));
    setItem(QStringLiteral("1.7.Status.numberOfChannels"), QStringLiteral("1"));
    setItem(QStringLiteral("0.4.0.Control.voltageSet"), QStringLiteral("1500"), QStringLiteral("V"));
    setItem(QStringLiteral("0.4.0.Status.voltageMeasure"), QStringLiteral("750.125"), QStringLiteral("V"));
    setItem(QStringLiteral("0.4.0.Status.currentMeasure"), QStringLiteral("2.5e-6"), QStringLiteral("A"));
    setItem(QStringLiteral("0.4.0.Status.runningState"), QStringLiteral("info"));
    setItem(QStringLiteral("0.4.0.Status.voltageRampUp"), QStringLiteral("true"));
    setItem(QStringLiteral("0.4.1.Status.runningState"), QStringLiteral("off"));
}

void SmallSystem::setControllers(int number)
{
    backend.setControllers(bothControllers.mid(0, number));
    backend.sendStructureChanged(OrbItemId(OrbItemId::System));
}

void SmallSystem::setItem(const QString &path, const QString &value, const QString &unit)
{
    OrbItemReading reading;
    reading.value = value;
    reading.unit = unit;
    for (const auto &controller : bothControllers)
        backend.setItem(controller.first, path, reading);
}
