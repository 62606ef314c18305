#pragma once

#include "hostclient/host_export.h"
#include "hostsdk/kd_icon_type.h"

#include <QIcon>
#include <QString>

class DlDataAccess;

/// Shared services of the host. One instance, owned by the host, which outlives every tool. GUI thread only.
class HOST_EXPORT KdMainData
{
public:
    explicit KdMainData(DlDataAccess *dataAccessLayer);
    ~KdMainData();
    KdMainData(const KdMainData &) = delete;
    KdMainData &operator=(const KdMainData &) = delete;

    /// The icon of that number; a null icon for a number that the host does not know.
    QIcon getIcon(KD::IconType type);

    /// Factor by which a tool bar multiplies its icon size; 1 for the size that the style gives.
    double getToolbarIconScaleFactor() const;

    /// Chosen by our kit: any number is taken and given back as it is; a tool bar never makes its icons smaller than
    /// 16 pixels, so that 0 and less give that size. A tool reads the factor when it is made; open ones stay as they
    /// are.
    void setToolbarIconScaleFactor(double factor);

    /// Mime type under which the host drags items.
    QString getDndMimeType() const;

    /// Where a file dialog starts when nothing says better. Chosen by our kit: the user's documents folder, or the
    /// home folder where there is none.
    QString getDefaultDirectory() const;

    bool shuttingDown = false; ///< true while the host is closing down
    DlDataAccess *dataAccess = nullptr; ///< the data access layer; never null while a tool lives

private:
    double toolbarIconScaleFactor = 1.0;
};
