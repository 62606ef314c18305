#include "workbench/app/system_search.h"

#include "workbench/app/system_model.h"

#include <QElapsedTimer>
#include <QTreeView>

namespace workbench
{

namespace
{

constexpr int SliceTime = 15; // ms that one slice may hold up the window

} // namespace

SystemSearch::SystemSearch(SystemModel &model_, QTreeView &tree_, QObject *parent)
    : QObject(parent), model(model_), tree(tree_)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &SystemSearch::readSlice);
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        timer.stop();
        rows.clear();
    });
    connect(&model, &QAbstractItemModel::modelReset, this, [this] {
        if (isActive())
            start();
    });
}

void SystemSearch::search(const QString &text)
{
    const bool wasActive = isActive();
    filter = SystemFilter(text);
    if (isActive()) {
        if (!wasActive)
            begin();
        start();
    } else if (wasActive) {
        end();
    }
}

void SystemSearch::begin()
{
    openBefore.clear();
    collectRows({});
    for (const QModelIndex &row : rows) {
        if (tree.isExpanded(row))
            openBefore.insert(model.keyAt(row));
    }
}

void SystemSearch::end()
{
    timer.stop();
    collectRows({});
    for (const QModelIndex &row : rows) {
        tree.setRowHidden(row.row(), row.parent(), false);
        if (model.rowCount(row) > 0)
            tree.setExpanded(row, openBefore.contains(model.keyAt(row)));
    }
    rows.clear();
    hitCount = 0;
    unread = 0;
    // What was found stays in sight.
    if (tree.currentIndex().isValid())
        tree.scrollTo(tree.currentIndex());
    Q_EMIT changed();
}

void SystemSearch::start()
{
    collectRows({});
    nextRow = 0;
    unread = filter.asksForState() ? rows.size() : 0;
    applyAll();
    readSoon();
}

void SystemSearch::pause()
{
    isPaused = true;
    timer.stop();
}

void SystemSearch::resume()
{
    isPaused = false;
    readSoon();
}

void SystemSearch::readSoon()
{
    if (isPaused || !filter.asksForState() || rows.empty())
        timer.stop();
    else
        timer.start(isComplete() ? Interval : 0);
}

void SystemSearch::applyAll()
{
    hitCount = 0;
    wasHit.clear();
    apply({}, false);
    Q_EMIT changed();
}

bool SystemSearch::apply(const QModelIndex &parent, bool isBelowHit)
{
    bool anyHit = false;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const bool isHit = filter.matches(model.idAt(index), model.nameAt(index), model.stateAt(index));
        wasHit.push_back(isHit); // in the order of `rows`
        const bool hasHit = apply(index, isBelowHit || isHit);
        tree.setRowHidden(row, parent, !isBelowHit && !isHit && !hasHit);
        if (hasHit)
            tree.expand(index);
        hitCount += isHit ? 1 : 0;
        anyHit = anyHit || isHit || hasHit;
    }
    return anyHit;
}

void SystemSearch::readSlice()
{
    QElapsedTimer elapsed;
    elapsed.start();
    const bool wasComplete = isComplete();
    bool isOther = false;
    for (std::size_t number = 0; number < rows.size() && elapsed.elapsed() < SliceTime; ++number) {
        const QModelIndex &row = rows[nextRow];
        const bool isHit = filter.matches(model.idAt(row), model.nameAt(row), model.refreshState(row));
        isOther = isOther || isHit != wasHit[nextRow];
        nextRow = (nextRow + 1) % rows.size();
        unread -= unread > 0 ? 1 : 0;
    }
    if (isOther)
        applyAll();
    else if (isComplete() != wasComplete)
        Q_EMIT changed();
    readSoon();
}

void SystemSearch::collectRows(const QModelIndex &parent)
{
    if (!parent.isValid())
        rows.clear();
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        rows.push_back(index);
        collectRows(index);
    }
}

} // namespace workbench
