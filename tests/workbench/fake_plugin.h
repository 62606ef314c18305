#pragma once

#include "hostsdk/kd_plugin_interface.h"

#include <QStringList>
#include <QVector>

/// A plug-in with two tools, of which only the first can be made. It writes down what the host asks, in order:
/// "describe", "register 101 102", "load", "create 0 0", and for its tool "event 150 (4)", "shown", "deleted".
class FakePlugin : public KdPluginInterface
{
public:
    static constexpr int PluginId = 77;

    QStringList log;
    QStringList menuPath = {QStringLiteral("Window"), QStringLiteral("Tools"), QStringLiteral("Alpha")};
    QString setting; ///< saved and loaded when it is not empty
    bool answersQueries = true;
    bool shuttingDownAtSave = false; ///< whether main data said so when the settings were asked for
    KdMainData *mainData = nullptr; ///< to look at while the settings are saved
    QVector<quint32> classIds; ///< as the host assigned them

    /// Entries of the log that begin with that word.
    QStringList logOf(const QString &word) const;

    void getPluginDescription(KdPluginDescription &description) override;
    bool saveConfiguration(KdPluginConfiguration &parent) override;
    bool loadConfiguration(const KdPluginConfiguration &parent) override;
    void registerWidgets(const KdPluginDescription &description, KdObserver &host) override;
    KdPluginWidget *createWidget(int widgetIndex, QWidget *parent, KdMainData &mainData, KdObserver &host,
                                 unsigned int instance) override;
};
