// Drag payloads of any bytes, decoded and dropped on the tool.

#include "tests/fuzz/fuzz_host.h"

#include "command_terminal/terminal_widget.h"
#include "hostsdk/kd_plugin_common.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ensureApplication();
    FuzzHost host;
    QMimeData payload;
    payload.setData(host.mainData.getDndMimeType(),
                    QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));

    QVector<OrbItemId> items;
    const bool decoded = KdPluginCommon::parseDragAndDropString(&payload, items);
    require(decoded == !items.isEmpty(), "a payload is decoded when it holds an address");
    for (const OrbItemId &id : std::as_const(items))
        require(id.type >= OrbItemId::Item && id.type <= OrbItemId::Channel, "an address has a level");
    if (!decoded)
        return 0;

    TerminalWidget tool(nullptr, &host.state, host.mainData, host.observer, 1U);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &payload, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&tool, &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &payload, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QApplication::sendEvent(&tool, &drop);
    require(drop.isAccepted(), "an address can be dropped");
    return 0;
}
