#pragma once

#include "hostclient/host_export.h"

#include <QPlainTextEdit>

class KdMainData;
class KdObserver;

/// Base of every text surface of a tool. GUI thread only.
class HOST_EXPORT KdPlainTextEdit : public QPlainTextEdit
{
    Q_OBJECT

public:
    /// `parent` owns the widget; main data and observer are kept and outlive it.
    KdPlainTextEdit(QWidget *parent, KdMainData &mainData, KdObserver &observer);
    ~KdPlainTextEdit() override;

protected:
    // Subclasses call these first from their own.
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    KdMainData &mainData;
    KdObserver &observer;
};
