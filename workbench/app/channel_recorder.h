#pragma once

#include "workbench/app/channel_record.h"
#include "workbench/simulator/plant_journal.h"

#include <QObject>
#include <QVector>

#include <memory>
#include <vector>

namespace workbench
{

class PlantWatcher;

/// Follows chosen channels and keeps what they do: their values whenever the plant is looked at, and every step and
/// event in between from its journal. Does nothing, and has nothing done, as long as no channel is chosen.
/// GUI thread only.
class ChannelRecorder : public QObject
{
    Q_OBJECT

public:
    /// A chart of more lines than these says nothing any more.
    static constexpr int MostChannels = 12;

    /// The watcher is kept and outlives the recorder.
    explicit ChannelRecorder(PlantWatcher &watcher, QObject *parent = nullptr);

    /// Follows a channel from now on. False when there is no such channel, or too many are followed already; true
    /// when it is followed already. `controller` is a connection name or a display text.
    bool add(const QString &controller, const simulator::ObjectAddress &channel);
    void remove(int index);
    void removeAll();
    /// Forgets what was recorded and goes on.
    void clear();

    int count() const { return static_cast<int>(records.size()); }
    const ChannelRecord &at(int index) const { return *records[static_cast<std::size_t>(index)]; }

    /// s on the plant's clock up to which the records go.
    double now() const { return latest; }

Q_SIGNALS:
    void channelAdded(int index);
    void channelRemoved(int index);
    /// Samples or marks came, or went.
    void recorded();

private:
    simulator::ObjectAddress crateOf(const QString &controller,
                                     const simulator::ObjectAddress &channel) const;
    ChannelRecord *find(const QString &controller, const simulator::ObjectAddress &channel) const;
    void take(const QVector<simulator::JournalEntry> &entries);
    void sample(ChannelRecord &record);
    void sampleAll();

    PlantWatcher &watcher;
    std::vector<std::unique_ptr<ChannelRecord>> records;
    double latest = 0;
};

/// The mark for what the journal says; false for what is none.
bool markOf(const simulator::JournalEntry &entry, ChannelMark &mark);

} // namespace workbench
