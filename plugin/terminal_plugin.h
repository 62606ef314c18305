#pragma once

#include "hostsdk/kd_plugin_interface.h"
#include "plugin/terminal_plugin_state.h"

#include <QObject>

class KdPluginConfiguration;

/// The one object that the host talks to before a tool exists. It describes the two tools, makes them, keeps what
/// they share, and saves and restores it. It outlives every tool that it made. GUI thread only.
class TerminalPlugin : public QObject, public KdPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "tarn.tarnControl.PluginInterface/1.0")
    Q_INTERFACES(KdPluginInterface)

public:
    TerminalPlugin();
    ~TerminalPlugin() override;

    void getPluginDescription(KdPluginDescription &description) override;
    bool saveConfiguration(KdPluginConfiguration &parent) override;
    bool loadConfiguration(const KdPluginConfiguration &parent) override;
    void registerWidgets(const KdPluginDescription &description, KdObserver &host) override;
    KdPluginWidget *createWidget(int widgetIndex, QWidget *parent, KdMainData &mainData, KdObserver &host,
                                 unsigned int instance) override;

private:
    TerminalPluginState state;
};
