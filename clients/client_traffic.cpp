// The figures of several steps, or several clients, are those of all of them.
#include "clients/client_traffic.h"

namespace ribkit::clients {

client_traffic &client_traffic::operator+=(const client_traffic &more) {
    added += more.added;
    deleted += more.deleted;
    changed += more.changed;
    merged += more.merged;
    refused += more.refused;
    messages += more.messages;
    bytes_sent += more.bytes_sent;
    bytes_received += more.bytes_received;
    computing += more.computing;
    exchanging += more.exchanging;
    return *this;
}

} // namespace ribkit::clients
