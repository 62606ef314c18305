#pragma once

#include "workbench/app/settings_store.h"

#include <QMainWindow>

#include <memory>

class KdMainData;
class KdPluginInterface;
class QAction;
class QDockWidget;
class QLabel;
class QMenu;

namespace simulator
{
class SimulatedService;
}

namespace workbench
{

class PlantDocks;
class SystemModel;
class SystemPanel;
class SystemView;
class ToolDocks;
class ToolHost;
class ToolMenu;

/// The workbench's window: the simulated system on one side, the plug-in's tools on the other. Closing it asks first
/// when a tool holds text that is not saved. GUI thread only.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Plug-in and main data are kept and outlive the window, and so does the plant when there is one: without it there
    /// is no chart, no message log and no fault to simulate. Reads layout and settings from `store`.
    MainWindow(KdPluginInterface &plugin, KdMainData &mainData, const SettingsStore &store,
               simulator::SimulatedService *plant = nullptr);

    /// Shuts down first, unless closing the window has done so.
    ~MainWindow() override;

    ToolHost &toolHost() { return *host; }
    ToolDocks &toolDocks() { return *docks; }
    ToolMenu &toolMenu() { return *menu; }
    SystemView &systemView() { return *view; }
    SystemPanel &systemPanel() { return *panel; }
    /// Null when the window has no plant.
    PlantDocks *plantDocks() { return plantViews.get(); }

    /// Puts window and docks where they are on the first start.
    void resetLayout();

    /// Saves settings and layout without asking anything, then stops and deletes the tools. Safe to call twice.
    void shutDown();

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void buildMenus();
    void buildSystemDock();
    void buildPlantDocks(simulator::SimulatedService &plant);
    void showSystemMenu(const QPoint &place);
    void buildBanner();
    void buildStatusBar();
    void restoreLayout();
    void applyDefaultSizes();
    bool mayDiscardTexts();
    void updateCounts();
    void showMessage(const QString &text);
    void showAbout();

    KdMainData &mainData;
    const SettingsStore store;
    std::unique_ptr<ToolHost> host;
    ToolMenu *menu = nullptr;
    ToolDocks *docks = nullptr;
    SystemModel *model = nullptr;
    SystemPanel *panel = nullptr;
    SystemView *view = nullptr; ///< the panel's
    std::unique_ptr<PlantDocks> plantViews;
    QDockWidget *systemDock = nullptr;
    QLabel *counts = nullptr;
    QMenu *windowMenu = nullptr;
    QMenu *helpMenu = nullptr;
    bool sizesPending = false; ///< default sizes take effect once the window has its own
    bool isShutDown = false;
};

} // namespace workbench
