#pragma once

#include "hostclient/orb_item_id.h"

#include <QSet>
#include <QTimer>
#include <QTreeView>
#include <QVector>

namespace workbench
{

class SystemModel;

/// Shows the system and keeps the rows in sight up to date. Selection and expansion survive a change of the
/// structure as far as the objects do. GUI thread only.
class SystemView : public QTreeView
{
    Q_OBJECT

public:
    /// Time between two readings of the rows in sight, in ms.
    static constexpr int RefreshInterval = 500;

    /// The model is kept and outlives the view.
    explicit SystemView(SystemModel &model, QWidget *parent = nullptr);

    /// Rows that can be seen right now, from top to bottom.
    QModelIndexList visibleRows() const;

    /// Reads the rows in sight now.
    void refreshVisible();

    /// What is selected, in the order of the tree.
    QVector<OrbItemId> selectedIds() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The operator chose an object, with the pointer or the keyboard. Choosing it again says so again.
    void itemChosen(const OrbItemId &id);

    /// The operator activated an object: a double click, or Enter.
    void itemActivated(const OrbItemId &id);

    /// The operator wants the menu of what is selected, at that place on the screen.
    void menuRequested(const QPoint &place);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void mousePressEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;

private:
    void layOutColumns();
    void rememberRows();
    void restoreRows();
    void expandRows();
    void choose(const QModelIndex &index);

    SystemModel &system;
    QTimer interval;
    QTimer soon; ///< reads once what just came into sight

    QSet<QString> knownKeys; ///< every object that had something below it so far
    QSet<QString> expandedKeys;
    QSet<QString> selectedKeys;
    QString currentKey;
    int columnsWidth = 0; ///< all of them as wide as their values
    bool restoring = false;
    bool chosenByPress = false; ///< the press under way has made its choice
};

} // namespace workbench
