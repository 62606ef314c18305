#include "hostsdk/kd_main_data.h"

#include "workbench/hostkit/drag_payload.h"
#include "workbench/hostkit/vector_icon_engine.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

KdMainData::KdMainData(DlDataAccess *dataAccessLayer) : dataAccess(dataAccessLayer) { }

KdMainData::~KdMainData() = default;

QIcon KdMainData::getIcon(KD::IconType type)
{
    // The icon owns its engine.
    return hostkit::VectorIconEngine::knows(type) ? QIcon(new hostkit::VectorIconEngine(type)) : QIcon();
}

double KdMainData::getToolbarIconScaleFactor() const
{
    return toolbarIconScaleFactor;
}

void KdMainData::setToolbarIconScaleFactor(double factor)
{
    toolbarIconScaleFactor = factor;
}

QString KdMainData::getDndMimeType() const
{
    return hostkit::dragMimeType();
}

QString KdMainData::getDefaultDirectory() const
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}
