#pragma once

#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_event_type.h"
#include "hostsdk/kd_parent_event.h"

#include <QHideEvent>
#include <QLayout>
#include <QShowEvent>
#include <QStringList>

/// Fills an event with a tool's menu entry: where it stands in the host's menu, and which tool it opens.
inline void fillMenuEntry(KdChildEvent &event, unsigned int uniqueWidgetClassId, const QStringList &menuPath)
{
    constexpr qint64 MenuEntryKind = 104; // the host's number, which only the host interprets
    event.clear();
    event.setIntArgument(MenuEntryKind, 0);
    event.setIntArgument(uniqueWidgetClassId, 1);
    event.stringArguments = menuPath;
}

/// Adds the host's bookkeeping to a tool: it reports when the tool is shown or hidden and answers the host's own
/// parent events. T is a KdPluginWidget with a static `menuPath()`, the tool's place in the host's menu.
template <class T>
class KdPluginWidgetExtension : public T
{
public:
    using T::T;

    /// Handles 147 to 150 as the host asks; the events that T knows go on to T.
    void parentEventOccured(KdParentEvent &event) override
    {
        switch (event.type) {
        case KD::HideTool:
            reportMenuEntry(KD::ToolHidden);
            T::parentEventOccured(event);
            break;
        case KD::ShowTool:
            reportMenuEntry(KD::ToolShown);
            T::parentEventOccured(event);
            break;
        case KD::QueryTool: {
            KdChildEvent answer(KD::ToolAnswer);
            this->processChildEvent(answer);
            break;
        }
        case KD::SetLayoutMargin:
            applyLayoutMargin(static_cast<int>(event.getIntArgument(0)));
            break;
        default:
            T::parentEventOccured(event);
            break;
        }
    }

protected:
    void showEvent(QShowEvent *event) override
    {
        T::showEvent(event);
        reportMenuEntry(KD::ToolShown);
    }

    void hideEvent(QHideEvent *event) override
    {
        T::hideEvent(event);
        reportMenuEntry(KD::ToolHidden);
    }

private:
    void reportMenuEntry(KD::EventType type)
    {
        KdChildEvent event(type);
        fillMenuEntry(event, this->getUniqueWidgetClassId(), T::menuPath());
        this->host.processChildEvent(event);
    }

    void applyLayoutMargin(int margin)
    {
        if (QLayout *layout = this->layout())
            layout->setContentsMargins(margin, margin, margin, margin);
    }
};
