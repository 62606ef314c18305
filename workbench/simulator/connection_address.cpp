#include "workbench/simulator/connection_address.h"

namespace simulator
{

bool isConnectionAddress(const QString &address)
{
    const int colon = address.lastIndexOf(QLatin1Char(':'));
    if (colon <= 0)
        return false;
    bool isNumber = false;
    const ushort port = address.midRef(colon + 1).toUShort(&isNumber);
    return isNumber && port > 0;
}

} // namespace simulator
