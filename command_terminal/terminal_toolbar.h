#pragma once

#include "hostsdk/kd_event_type.h"
#include "hostsdk/kd_icon_type.h"

#include <QToolBar>

class KdMainData;
class KdObserver;
class QAction;

/// The vertical tool bar of a terminal tool. Each action reports its event to the observer. GUI thread only.
class TerminalToolbar : public QToolBar
{
    Q_OBJECT

public:
    /// `parent` owns the tool bar; main data and observer outlive it.
    TerminalToolbar(QWidget *parent, KdMainData &mainData, KdObserver &observer);
    ~TerminalToolbar() override;

    void setTerminalMode(); ///< the console is shown
    void setEditorMode(); ///< the editor is shown
    void setSaveEnabled(bool enabled);

private:
    QAction *createAction(const QString &text, const QString &tip, const QKeySequence &shortcut,
                          KD::IconType icon, KD::EventType event, KdMainData &mainData);
    void setMode(bool terminal);
    void reportAction(const QAction *action);

    KdObserver &observer;
    QAction *showTerminal;
    QAction *showEditor;
    QAction *openFile;
    QAction *saveFile;
    QAction *executeFile;
    QAction *clearTerminal;
};
