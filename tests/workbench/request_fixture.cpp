#include "tests/workbench/request_fixture.h"

#include <QTest>

#include <chrono>

void RequestFixture::setUp()
{
    ServiceFixture::setUp();
    service->setLatency(std::chrono::milliseconds(0));
}

QString RequestFixture::command(const char *name, const char *place, const char *item, const char *value,
                                const char *unit)
{
    // Field by field as the command builder writes it.
    const QStringList numbers = QString::fromLatin1(place).split(QLatin1Char('.'));
    return QStringLiteral(R"({"c":"%1","p":{"p":{"l":"%2","a":"%3","c":"%4"},"i":"%5","v":"%6","u":"%7"}})")
        .arg(QLatin1String(name), numbers.value(0), numbers.value(1), numbers.value(2), QLatin1String(item),
             QLatin1String(value), QLatin1String(unit));
}

QString RequestFixture::request(const QStringList &commands)
{
    return QStringLiteral(R"({"i":"<session_id>","t":"request","c":[%1],"r":"websocket"})")
        .arg(commands.join(QLatin1Char(',')));
}

QStringList RequestFixture::answerTo(const QString &text, int messages)
{
    const int before = listener->messageCount();
    QString reply = QStringLiteral("left over");
    if (!service->rawRequest(Local, text, reply) || !reply.isEmpty())
        return {reply};
    // A request that makes its own end visible: nothing of the one before can come after it.
    if (!service->rawRequest(Local, request({command("setItem", "0.0.0", "Control.clearAll", "0")}), reply))
        return {reply};
    const bool hasCome = QTest::qWaitFor(
        [this, before, messages] { return listener->messageCount() >= before + messages + 1; });
    const QStringList all = listener->messages();
    if (!hasCome || all.size() != before + messages + 1 || all.constLast() != True)
        return all;
    return all.mid(before, messages);
}
