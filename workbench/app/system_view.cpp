#include "workbench/app/system_view.h"

#include "workbench/app/system_model.h"
#include "workbench/app/system_state.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <functional>
#include <tuple>

namespace workbench
{

namespace
{

/// Calls `visit` for every row below `parent` that can be opened.
void forEachBranch(const QAbstractItemModel &model, const QModelIndex &parent,
                   const std::function<void(const QModelIndex &)> &visit)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (model.rowCount(index) == 0)
            continue;
        visit(index);
        forEachBranch(model, index, visit);
    }
}

/// By place, so that what was selected in any order comes in that of the tree.
bool comesBefore(const OrbItemId &a, const OrbItemId &b)
{
    return std::tie(a.connection, a.line, a.address, a.channel)
        < std::tie(b.connection, b.line, b.address, b.channel);
}

/// What follows the pointer during a drag: the object's name, and how many more there are.
QPixmap dragPicture(const QString &text, const QWidget &widget)
{
    const QFontMetrics metrics(widget.font());
    const int margin = metrics.height() / 3;
    const QSize size(metrics.horizontalAdvance(text) + 2 * margin, metrics.height() + margin);
    QPixmap pixmap(size * widget.devicePixelRatioF());
    pixmap.setDevicePixelRatio(widget.devicePixelRatioF());
    pixmap.fill(widget.palette().color(QPalette::Highlight));
    QPainter painter(&pixmap);
    painter.setFont(widget.font());
    painter.setPen(widget.palette().color(QPalette::HighlightedText));
    painter.drawText(QRect(QPoint(0, 0), size), Qt::AlignCenter, text);
    return pixmap;
}

/// The palette with a paler selection for when the keys go elsewhere, so that the focus can be seen.
QPalette withPaleInactiveSelection(QPalette palette)
{
    const auto mixed = [](int selection, int ground) { return (2 * selection + 3 * ground) / 5; };
    const QColor selection = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor ground = palette.color(QPalette::Active, QPalette::Base);
    palette.setColor(QPalette::Inactive, QPalette::Highlight,
                     QColor(mixed(selection.red(), ground.red()), mixed(selection.green(), ground.green()),
                            mixed(selection.blue(), ground.blue())));
    palette.setColor(QPalette::Inactive, QPalette::HighlightedText,
                     palette.color(QPalette::Active, QPalette::Text));
    return palette;
}

} // namespace

SystemView::SystemView(SystemModel &model, QWidget *parent) : QTreeView(parent), system(model)
{
    setObjectName(QStringLiteral("systemView"));
    setAccessibleName(tr("System"));
    setPalette(withPaleInactiveSelection(palette()));
    setModel(&model);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(DragOnly);
    layOutColumns();
    expandRows();

    connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, &SystemView::rememberRows);
    connect(&model, &QAbstractItemModel::modelReset, this, &SystemView::restoreRows);
    connect(this, &QAbstractItemView::activated, this,
            [this](const QModelIndex &index) { Q_EMIT itemActivated(system.idAt(index)); });
    connect(this, &QAbstractItemView::clicked, this, [this](const QModelIndex &index) {
        if (!chosenByPress)
            choose(index);
    });

    interval.setInterval(RefreshInterval);
    connect(&interval, &QTimer::timeout, this, &SystemView::refreshVisible);
    soon.setSingleShot(true);
    soon.setInterval(0);
    connect(&soon, &QTimer::timeout, this, [this] {
        if (isVisible())
            refreshVisible();
    });
    const auto refreshSoon = [this] { soon.start(); };
    connect(this, &QTreeView::expanded, &soon, refreshSoon);
    connect(this, &QTreeView::collapsed, &soon, refreshSoon);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, &soon, refreshSoon);
    connect(&model, &QAbstractItemModel::modelReset, &soon, refreshSoon);
}

QModelIndexList SystemView::visibleRows() const
{
    QModelIndexList rows;
    const int bottom = viewport()->height();
    for (QModelIndex index = indexAt(QPoint(0, 0)); index.isValid(); index = indexBelow(index)) {
        if (visualRect(index).top() >= bottom)
            break;
        rows.append(index);
    }
    return rows;
}

void SystemView::refreshVisible()
{
    system.refresh(visibleRows());
}

QVector<OrbItemId> SystemView::selectedIds() const
{
    QModelIndexList rows = selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [this](const QModelIndex &a, const QModelIndex &b) {
        return comesBefore(system.idAt(a), system.idAt(b));
    });
    QVector<OrbItemId> ids;
    ids.reserve(rows.size());
    for (const QModelIndex &row : qAsConst(rows))
        ids.append(system.idAt(row));
    return ids;
}

QSize SystemView::sizeHint() const
{
    return {columnsWidth + 2 * frameWidth() + verticalScrollBar()->sizeHint().width(),
            fontMetrics().height() * 24};
}

void SystemView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTreeView::currentChanged(current, previous);
    if (restoring || !current.isValid())
        return;
    chosenByPress = true;
    choose(current);
}

void SystemView::contextMenuEvent(QContextMenuEvent *event)
{
    QPoint place = event->globalPos();
    // Asked for by the keyboard: where the row is, not where the pointer happens to be.
    const QRect row = visualRect(currentIndex());
    if (event->reason() == QContextMenuEvent::Keyboard && viewport()->rect().intersects(row))
        place = viewport()->mapToGlobal(row.bottomLeft());
    Q_EMIT menuRequested(place);
}

void SystemView::mousePressEvent(QMouseEvent *event)
{
    chosenByPress = false;
    QTreeView::mousePressEvent(event);
}

void SystemView::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    soon.start();
}

void SystemView::showEvent(QShowEvent *event)
{
    QTreeView::showEvent(event);
    interval.start();
    soon.start();
}

void SystemView::hideEvent(QHideEvent *event)
{
    QTreeView::hideEvent(event);
    interval.stop();
}

void SystemView::startDrag(Qt::DropActions supportedActions)
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    QMimeData *payload = model()->mimeData(rows);
    if (!payload)
        return;
    auto *drag = new QDrag(this); // Qt deletes it, and the payload, after the drop
    drag->setMimeData(payload);
    const QString first = rows.constFirst().data().toString();
    drag->setPixmap(dragPicture(
        rows.size() == 1 ? first : tr("%1 and %n more", nullptr, rows.size() - 1).arg(first), *this));
    drag->exec(supportedActions, Qt::CopyAction);
}

void SystemView::layOutColumns()
{
    // Wide enough for the longest value, so that nothing moves while values change.
    const QFontMetrics metrics = fontMetrics();
    const int margin = 2 * (style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header()) + 2);
    const auto fit = [&](int column, const QString &longest) {
        const QString title = model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        const int width = std::max(metrics.horizontalAdvance(longest), metrics.horizontalAdvance(title));
        setColumnWidth(column, width + margin);
    };
    setIndentation(metrics.height() * 3 / 4);
    constexpr int Levels = 5; // controller, line, crate, module, channel
    int nameWidth = Levels * indentation() + metrics.horizontalAdvance(tr("Channel 88")) + 2 * margin;
    const int longestName = 2 * nameWidth;
    for (int row = 0; row < model()->rowCount(); ++row)
        nameWidth =
            std::max(nameWidth, indentation() + margin + sizeHintForIndex(model()->index(row, 0)).width());
    setColumnWidth(SystemModel::NameColumn, std::min(nameWidth, longestName));
    fit(SystemModel::VoltageSetColumn, voltageText(-8888));
    fit(SystemModel::VoltageMeasureColumn, voltageText(-8888));
    fit(SystemModel::CurrentMeasureColumn, currentText(-888.888e-6));
    fit(SystemModel::StateColumn, stateText(SystemState::Emergency));
    const int mark = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this) + margin / 2;
    setColumnWidth(SystemModel::StateColumn, columnWidth(SystemModel::StateColumn) + mark);
    // Words beside the name, numbers beside numbers; and it is in sight however narrow the view is.
    header()->moveSection(SystemModel::StateColumn, 1);
    columnsWidth = header()->length();
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(false);
}

void SystemView::rememberRows()
{
    forEachBranch(system, {}, [this](const QModelIndex &index) {
        const QString key = system.keyAt(index);
        knownKeys.insert(key);
        // What has vanished for a while keeps its last state.
        if (isExpanded(index))
            expandedKeys.insert(key);
        else
            expandedKeys.remove(key);
    });
    selectedKeys.clear();
    const QModelIndexList selected = selectionModel()->selectedRows();
    for (const QModelIndex &index : selected)
        selectedKeys.insert(system.keyAt(index));
    currentKey = system.keyAt(currentIndex());
}

void SystemView::restoreRows()
{
    restoring = true; // what the operator chose before is not chosen again
    expandRows();
    const QModelIndex current = system.indexOf(currentKey);
    if (current.isValid())
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    for (const QString &key : qAsConst(selectedKeys)) {
        const QModelIndex index = system.indexOf(key);
        if (index.isValid())
            selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    restoring = false;
}

void SystemView::expandRows()
{
    // One way through the tree: looking for each key would be one way for each.
    forEachBranch(system, {}, [this](const QModelIndex &index) {
        const QString key = system.keyAt(index);
        // Modules open one at a time: the first shows what there is to see.
        const bool isModule = system.idAt(index).type == OrbItemId::Module;
        const bool isNew = !knownKeys.contains(key);
        if (isNew ? !isModule || index.row() == 0 : expandedKeys.contains(key))
            expand(index);
    });
}

void SystemView::choose(const QModelIndex &index)
{
    Q_EMIT itemChosen(system.idAt(index));
}

} // namespace workbench
