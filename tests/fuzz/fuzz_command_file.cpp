// Command files of any bytes: what reaches the service are the lines that a plain reading of the format gives.

#include "tests/fuzz/fuzz_host.h"

#include "command_terminal/terminal_orb_client_console.h"
#include "hostsdk/kd_child_event.h"

#include <QStringList>

namespace
{

// The requests up to the first line that pauses, read from the format's description and not from the console.
QStringList expectedRequests(QString text)
{
    QStringList requests;
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.replace(QLatin1String("\n\n"), QLatin1String("\n"));
    QStringList lines = text.split(QLatin1Char('\n'));
    lines.removeLast(); // without a line feed behind it, it is no line
    for (const QString &rawLine : std::as_const(lines)) {
        if (rawLine.isEmpty())
            break;
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1String("wait "))) {
            bool pauses = false;
            line.right(5).toUInt(&pauses);
            if (pauses)
                break;
            continue;
        }
        requests.append(line);
    }
    return requests;
}

// A text document knows these as its own marks for the ends of blocks and frames, and breaks the line there.
bool hasDocumentMarks(const QString &text)
{
    for (const QChar c : text) {
        if (c == QChar::ParagraphSeparator || c == QChar(0xfdd0) || c == QChar(0xfdd1))
            return true;
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ensureApplication();
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));

    FuzzHost host;
    host.backend.setRawAnswer({true, QString(), {QStringLiteral(R"([{"trigger":"denied"}])")}});
    TerminalOrbClientConsole console(nullptr, host.mainData, host.observer);
    KdChildEvent controller(KD::ControllerChosen, QStringLiteral("local"));
    console.handleEvent(controller);

    console.runCommandFile(text);
    const QStringList expected = expectedRequests(text);
    int rounds = 0;
    while (console.isFileRunning() && host.backend.requests().size() < expected.size()) {
        QApplication::processEvents();
        require(++rounds < 1000000, "a command file goes on");
    }
    console.stopExecution();
    require(!console.isFileRunning(), "a stopped command file has ended");
    if (!hasDocumentMarks(text))
        require(host.backend.requests() == expected, "every line is sent as it stands, and no other");
    return 0;
}
