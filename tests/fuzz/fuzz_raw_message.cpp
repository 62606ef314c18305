// Raw messages of any content at any time, among key presses, requests and clearings: nothing crashes, the prompt
// stays, and what is being typed stays whole.

#include "tests/fuzz/fuzz_host.h"

#include "command_terminal/terminal_orb_client_console.h"
#include "hostsdk/kd_child_event.h"

#include <QKeyEvent>

#include <memory>

namespace
{

void press(TerminalOrbClientConsole &console, int key, const QString &text)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(&console, &event);
}

QString messageOf(int kind, const QString &text)
{
    switch (kind) {
    case 0:
        return QStringLiteral(R"([{"trigger":"true"}])");
    case 1:
        return QStringLiteral(R"([{"trigger":"false"}])");
    case 2:
        return QStringLiteral(R"([{"trigger":"noData"}])");
    default:
        return text;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ensureApplication();
    FuzzHost host;
    auto console = std::make_unique<TerminalOrbClientConsole>(nullptr, host.mainData, host.observer);
    KdChildEvent controller(KD::ControllerChosen, QStringLiteral("local"));
    console->handleEvent(controller);

    // Each step is a byte that says what happens, a byte of length and that many bytes of text.
    for (size_t at = 0; at + 2 <= size;) {
        const int step = data[at] % 8;
        const int kind = data[at] / 8 % 4;
        const size_t length = std::min<size_t>(data[at + 1], size - at - 2);
        const QString text =
            QString::fromUtf8(reinterpret_cast<const char *>(data) + at + 2, static_cast<int>(length));
        at += 2 + length;

        const bool typing = console->isEnabled();
        switch (step) {
        case 0:
        case 1:
            if (typing) {
                console->removeInput();
                press(*console, Qt::Key_A, QStringLiteral("typed"));
            }
            console->rawMessageReceived(messageOf(kind, text));
            if (typing)
                require(console->toPlainText().endsWith(QLatin1String("> typed")),
                        "the typed input stays whole");
            break;
        case 2:
            host.backend.sendRawMessage(QStringLiteral("local"), messageOf(kind, text));
            QApplication::processEvents();
            break;
        case 3: {
            KdChildEvent request(KD::Request, kind == 0 ? QStringLiteral("\"c\":\"getItem\"") + text : text);
            console->handleEvent(request);
            break;
        }
        case 4:
            console->clearConsole(kind == 0 ? text : QString());
            break;
        case 5:
            press(*console,
                  kind == 0       ? Qt::Key_Return
                      : kind == 1 ? Qt::Key_Up
                                  : Qt::Key_Backspace,
                  QString());
            break;
        case 6:
            console->runCommandFile(text);
            break;
        default:
            console->stopExecution();
            break;
        }
    }
    host.backend.sendRawMessage(QStringLiteral("local"), QStringLiteral("late"));
    console.reset();
    QApplication::processEvents();
    return 0;
}
