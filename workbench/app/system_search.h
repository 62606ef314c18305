#pragma once

#include "workbench/app/system_filter.h"

#include <QModelIndex>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <vector>

class QTreeView;

namespace workbench
{

class SystemModel;

/// Narrows a tree of the system down to what an operator looks for: what matches, with what is above it and below it.
/// States are read in slices, so that a search for "tripped" goes through any number of channels without holding up the
/// window, and goes on being true while states change. A search survives a change of the structure. GUI thread only.
class SystemSearch : public QObject
{
    Q_OBJECT

public:
    /// Time between two slices once every state was read, in ms.
    static constexpr int Interval = 500;

    /// Both are kept and outlive the search; the tree shows the model.
    SystemSearch(SystemModel &model, QTreeView &tree, QObject *parent = nullptr);

    /// A text without any term ends the search: the tree is as it was, with what is current in sight.
    void search(const QString &text);

    /// Reads no states while nobody sees the tree.
    void pause();
    void resume();

    bool isActive() const { return !filter.isEmpty(); }
    int hits() const { return hitCount; }
    /// Whether every state that matters has been read at least once.
    bool isComplete() const { return !isActive() || unread == 0; }

Q_SIGNALS:
    /// Number of hits, or completeness, may have changed.
    void changed();

private:
    void begin();
    void end();
    void start();
    /// Hides and opens rows; whether something below `parent` matches.
    bool apply(const QModelIndex &parent, bool isBelowHit);
    void applyAll();
    void readSlice();
    void readSoon();
    void collectRows(const QModelIndex &parent);

    SystemModel &model;
    QTreeView &tree;
    SystemFilter filter;
    int hitCount = 0;
    QSet<QString> openBefore; ///< keys of the rows that were open when the search began
    std::vector<QModelIndex> rows; ///< all of them; the model changes by resets only
    std::vector<bool> wasHit; ///< which of them matched when rows were hidden last
    std::size_t nextRow = 0;
    std::size_t unread = 0; ///< rows whose state was not read since the search changed
    QTimer timer;
    bool isPaused = false;
};

} // namespace workbench
