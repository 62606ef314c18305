#pragma once

#include "hostsdk/kd_event_type.h"
#include "hostsdk/kd_observer.h"
#include "hostsdk/kd_plugin_configuration.h"
#include "hostsdk/kd_plugin_description.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVector>

#include <map>

class KdMainData;
class KdParentEvent;
class KdPluginInterface;
class KdPluginWidget;
class OrbItemId;

namespace workbench
{

/// The host's side of one plug-in's life: it learns what tools there are, gives them their class ids, opens and
/// closes them, sends them the host's events and takes theirs. It knows nothing of windows. GUI thread only.
class ToolHost : public QObject, public KdObserver
{
    Q_OBJECT

public:
    /// Plug-in and main data are kept and outlive the host.
    ToolHost(KdPluginInterface &plugin, KdMainData &mainData, QObject *parent = nullptr);

    /// Closes what is still open.
    ~ToolHost() override;

    /// Describes, assigns class ids, registers (menu entries come as signals) and hands over the saved settings.
    /// Called once.
    void start(const KdPluginConfiguration &savedConfiguration);

    /// Adds the plug-in's settings below `parent`; false when it has none.
    bool saveConfiguration(KdPluginConfiguration &parent);

    /// Class ids in the order of the plug-in's description.
    QVector<quint32> toolClasses() const;

    /// The tool's title; empty for an unknown class.
    QString title(quint32 classId) const;

    /// Names a tool in the same way in every run, unlike its class id.
    QString permanentName(quint32 classId) const;

    /// The open tool of that class, or null.
    KdPluginWidget *tool(quint32 classId) const;

    /// Makes the tool (or returns the one that is open), applies the margin (pixels) and asks it to answer.
    /// `parent` owns it. Null when the plug-in has no such tool.
    KdPluginWidget *openTool(quint32 classId, QWidget *parent, int layoutMargin);

    /// Whether the tool answered when it was opened.
    bool hasAnswered(quint32 classId) const;

    /// Tells the tool to stop what it runs, then deletes it.
    void closeTool(quint32 classId);

    // Events to an open tool; nothing happens when it is closed.
    void announceShown(quint32 classId);
    void announceHidden(quint32 classId);

    /// Tells every open tool which hardware item the operator chose or activated.
    void announceItem(KD::EventType type, const OrbItemId &id);

    void processChildEvent(KdChildEvent &event) override;

Q_SIGNALS:
    void menuEntryRegistered(quint32 classId, const QStringList &path);
    void toolShown(quint32 classId);
    void toolHidden(quint32 classId);

private:
    struct Tool
    {
        KdPluginWidgetDescription description;
        QPointer<KdPluginWidget> widget;
        bool answered = false;
        unsigned instances = 0; ///< tools of this class made so far
    };

    void send(quint32 classId, KdParentEvent &event);
    const Tool *find(quint32 classId) const;

    KdPluginInterface &plugin;
    KdMainData &mainData;
    KdPluginDescription description;
    std::map<quint32, Tool> tools;
    quint32 queriedClass = 0; ///< the tool whose answer is expected right now, 0 for none
};

} // namespace workbench
