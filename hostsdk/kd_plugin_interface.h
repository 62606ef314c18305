#pragma once

#include "hostclient/host_export.h"

#include <QtPlugin>

class KdMainData;
class KdObserver;
class KdPluginConfiguration;
class KdPluginWidget;
class QWidget;
struct KdPluginDescription;

/// What the host asks of a plug-in, in the order of the virtual slots. Every call comes on the GUI thread.
///
/// The host calls getPluginDescription once after loading, assigns a class id to each tool, calls registerWidgets,
/// then loadConfiguration, then createWidget whenever the user opens a tool, and saveConfiguration when it saves.
class HOST_EXPORT KdPluginInterface
{
public:
    KdPluginInterface();
    virtual ~KdPluginInterface();

    /// Fills the description, which belongs to the host.
    virtual void getPluginDescription(KdPluginDescription &description) = 0;

    /// Adds the plug-in's settings below `parent`; false when there is nothing to save.
    virtual bool saveConfiguration(KdPluginConfiguration &parent) = 0;

    /// Takes the plug-in's settings from below `parent`; false when there are none.
    virtual bool loadConfiguration(const KdPluginConfiguration &parent) = 0;

    /// Hands the description back with the class ids filled in; the plug-in answers with its menu entries.
    virtual void registerWidgets(const KdPluginDescription &description, KdObserver &host) = 0;

    /// Makes the tool of that index, or null when there is none. The caller owns it (and `parent`, when given).
    /// `mainData` and `host` outlive it; `instance` counts the tools of one class.
    virtual KdPluginWidget *createWidget(int widgetIndex, QWidget *parent, KdMainData &mainData,
                                         KdObserver &host, unsigned int instance) = 0;
};

#define KdPluginInterface_iid "tarn.tarnControl.PluginInterface/1.0"
Q_DECLARE_INTERFACE(KdPluginInterface, KdPluginInterface_iid)
