#include "hostsdk/kd_plain_text_edit.h"

KdPlainTextEdit::KdPlainTextEdit(QWidget *parent, KdMainData &hostData, KdObserver &hostObserver)
    : QPlainTextEdit(parent), mainData(hostData), observer(hostObserver)
{ }

KdPlainTextEdit::~KdPlainTextEdit() = default;

// This host has nothing of its own to do here. The overrides are part of the contract: subclasses call them.

void KdPlainTextEdit::focusInEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusInEvent(event);
}

void KdPlainTextEdit::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
}

void KdPlainTextEdit::hideEvent(QHideEvent *event)
{
    QPlainTextEdit::hideEvent(event);
}
