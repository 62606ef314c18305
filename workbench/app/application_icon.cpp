#include "workbench/app/application_icon.h"

#include <QDir>

/// A static library's resources are there only when somebody asks for them. The macro declares a function, and would
/// declare another one inside of a namespace.
static void loadIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace workbench
{

QIcon applicationIcon()
{
    loadIcons();
    QIcon icon;
    const QFileInfoList files = QDir(QStringLiteral(":/workbench/icons")).entryInfoList();
    for (const QFileInfo &file : files)
        icon.addFile(file.filePath());
    return icon;
}

} // namespace workbench
