#include "hostclient/dl_message_subscriber.h"

DlMessageSubscriber::DlMessageSubscriber() = default;
DlMessageSubscriber::~DlMessageSubscriber() = default;

void DlMessageSubscriber::messageWasLogged(const OrbLogMessage &) { }
void DlMessageSubscriber::statusChanged(const OrbItemId &) { }
void DlMessageSubscriber::valuesChanged(const OrbItemId &) { }
void DlMessageSubscriber::structureChanged(const OrbItemId &) { }
void DlMessageSubscriber::rawMessageReceived(const QString &) { }
