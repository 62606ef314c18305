#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>

class KdPluginConfiguration;

namespace workbench
{

/// How the window looked when it was closed.
struct WindowLayout
{
    QByteArray geometry; ///< as QMainWindow::saveGeometry gives it
    QByteArray state; ///< as QMainWindow::saveState gives it
    QByteArray systemColumns; ///< as QHeaderView::saveState gives it
    QStringList openTools; ///< permanent names
    bool saved = false; ///< false on the first start
};

/// What the workbench keeps between runs: the plug-in's settings and the window's layout, each in a file of one
/// folder. Failures are texts for the operator; none of them loses what is saved already.
class SettingsStore
{
    Q_DECLARE_TR_FUNCTIONS(workbench::SettingsStore)

public:
    /// An empty folder name keeps nothing.
    explicit SettingsStore(const QString &folder);

    QString configurationFile() const;
    QString layoutFile() const;

    /// Reads the plug-in's settings; `tree` stays empty on the first start. A file that cannot be read is moved
    /// aside, so that the next save does not replace it. The text is empty when all is well.
    QString loadConfiguration(KdPluginConfiguration &tree) const;
    QString saveConfiguration(const KdPluginConfiguration &tree) const;

    WindowLayout loadLayout() const;
    QString saveLayout(const WindowLayout &layout) const;

private:
    QString path(const QString &fileName) const;

    QString folder;
};

} // namespace workbench
