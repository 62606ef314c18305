#include "workbench/simulator/pass_through.h"

namespace simulator
{

void PassThrough::activate(const QString &scriptName)
{
    active = true;
    script = scriptName;
}

void PassThrough::end()
{
    *this = PassThrough();
}

TarnResult PassThrough::inject(const OrbRequestItem &request)
{
    if (!active || waiting.size() >= MostMessages)
        return TarnResult::Failed;
    waiting.append(request);
    return TarnResult::Success;
}

TarnResult PassThrough::takeNext(OrbRequestItem &request)
{
    if (!active)
        return TarnResult::Failed;
    if (waiting.isEmpty())
        return TarnResult::NoData;
    request = waiting.takeFirst();
    return TarnResult::Success;
}

TarnResult PassThrough::takeAll(QVector<OrbRequestItem> &requests)
{
    requests.clear();
    if (!active)
        return TarnResult::Failed;
    requests.swap(waiting);
    return TarnResult::Success;
}

TarnResult PassThrough::send(const QVector<OrbItemValue> &values)
{
    if (!active || values.size() > MostMessages - sent.size())
        return TarnResult::Failed;
    sent += values;
    return TarnResult::Success;
}

QVector<OrbItemValue> PassThrough::takeSent()
{
    QVector<OrbItemValue> result;
    result.swap(sent);
    return result;
}

} // namespace simulator
