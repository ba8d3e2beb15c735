// Stands in for the transport where the client library was not there when this library was built.
#include "platform/transports.h"

#include <cerrno>
#include <cstdio>

namespace ribkit::platform {

int open_nats(std::string_view /*url*/, std::chrono::milliseconds /*server_limit*/, endpoint_ptr & /*opened*/) {
    std::fputs("nats: built without the NATS client library (Debian package libnats-dev)\n", stderr);
    return EPROTONOSUPPORT;
}

} // namespace ribkit::platform
