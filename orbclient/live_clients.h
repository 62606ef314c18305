#pragma once

class OrbClient;

// Which clients may be called. Objects keep a bare pointer to the client that made them and live as long as the
// process, longer than a client may; before an object calls its client, it asks here.
//
// Guarded by the interpreter lock, but for the one operation that says so.

namespace orbclient
{

/// A module works through the client from now on. Modules may share one: it is then added more than once.
void addLiveClient(OrbClient *client);

/// A module no longer works through the client.
void removeLiveClient(OrbClient *client);

/// A client for the time of one call from Python; null when no module works through it any more, and for null.
class LiveClient
{
public:
    explicit LiveClient(OrbClient *client);
    ~LiveClient();
    LiveClient(const LiveClient &) = delete;
    LiveClient &operator=(const LiveClient &) = delete;

    operator OrbClient *() const { return client; }
    OrbClient *operator->() const { return client; }

private:
    OrbClient *client;
};

/// No client is live any more until another one is added. For a host whose interpreter does not end when it should, on
/// any thread but the interpreter's and without the lock: what a script calls from now on fails. Waits for a call that
/// is under way, but not for long; false when it still is.
bool withdrawClients();

} // namespace orbclient
