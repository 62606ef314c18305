#pragma once

#include "hostclient/tarn_result.h"
#include "workbench/simulator/object_address.h"

#include <QString>
#include <QVector>

#include <deque>

namespace simulator
{

/// One thing that happened in the plant. Plain data; which members say something depends on the kind.
struct JournalEntry
{
    enum Kind : quint8
    {
        Write, ///< a client wrote `text` to `item`, and that ended with `result`
        Request, ///< a raw request came in: `text`, numbered `request`
        RequestRefused, ///< `request` was not taken, and has no answer: `text` says why
        Answer, ///< a raw message of the answer to `request` went out: `text`, after `delay` s
        AnswerLost, ///< the transport lost it
        Event, ///< what `item` ("Event.currentTrip") tells happened, or became the case, whether or not it was pending
        Error, ///< likewise, of an item "Error.currentTrip"
        SwitchedOff, ///< a channel that was on, or on its way down, was switched off, and not by a write to it. `item`
        ///< says why: an error, or what was written to a crate or a controller; `text` is whose item that is ("module
        ///< 0.3"), empty for the channel's own
        FaultBegins, ///< `text` is the fault's name
        FaultEnds,
        Waypoint, ///< from here on a channel takes another course, goes for another voltage, or begins or ends to ramp;
        ///< `voltage`, `current`, their values just before, `voltageSet` and `isRamping`
        PassThroughIn, ///< a message was handed to a script: `text`
        PassThroughOut, ///< a script sent `text`
        ControllerLeft, ///< the controller went away
        ControllerCame,
    };

    quint64 number = 0; ///< counts all entries from 0 on
    double time = 0; ///< s on the plant's clock
    Kind kind = Write;
    TarnResult result = TarnResult::Success;
    quint64 request = 0; ///< 0 for none; a write that a raw request asked for has that request's number
    QString controller; ///< connection name of the controller
    ObjectAddress object;
    QString item;
    QString text;
    double delay = 0; ///< s
    double voltage = 0; ///< V
    double current = 0; ///< A
    double voltageBefore = 0;
    double currentBefore = 0;
    double voltageSet = 0; ///< V, 0 while the channel is off
    bool isRamping = false; ///< from here on
};

/// The entry as one line of text without a line feed. Equal plants, seeds and commands on a stepped clock give equal
/// lines.
QString journalLine(const JournalEntry &entry);

/// The latest entries, in the order of their time. Not locked; the service does that.
class PlantJournal
{
public:
    /// Entries that are kept of any plant; without their texts they take about 14 MB.
    static constexpr std::size_t LeastRoom = 100000;
    /// More for each channel, which may take four when a restart switches it off.
    static constexpr std::size_t RoomForChannel = 5;
    /// In the texts of all entries but the latest: 200 MB. An answer may be as large as a plant.
    static constexpr std::size_t MostCharacters = 100000000;

    /// Keeps so much more that what happens to all channels at one moment can be read.
    void makeRoomFor(std::size_t channels) { mostEntries += RoomForChannel * channels; }

    /// Numbers the entry and keeps it; the oldest go when there is too much. Returns the number.
    quint64 add(JournalEntry entry);

    /// How what was entered ended, once that is known. An entry that has gone stays gone.
    void setResult(quint64 number, TarnResult result);

    /// The kept entries from that number on, at most `most` of them.
    QVector<JournalEntry> from(quint64 number, int most) const;

    /// The number that the next entry gets.
    quint64 nextNumber() const { return next; }

private:
    void removeOldest();

    std::deque<JournalEntry> entries;
    std::size_t mostEntries = LeastRoom;
    std::size_t characters = 0; // of their texts
    quint64 next = 0;
};

} // namespace simulator
