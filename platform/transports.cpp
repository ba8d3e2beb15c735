// The transports of this program and no more: a further one is a row here.
#include "platform/transports.h"

#include <array>
#include <cerrno>

namespace ribkit::platform {

namespace {

struct transport {
    std::string_view scheme;
    int (*open)(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);
};

constexpr std::array transports{
    transport{"local", open_local},
    transport{"nats", open_nats},
    transport{"tls", open_nats},
    transport{"unix", open_unix},
};

} // namespace

int open_endpoint(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened) {
    const size_t colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0) {
        return EINVAL;
    }
    for (const transport &one : transports) {
        if (url.substr(0, colon) == one.scheme) {
            return one.open(url, server_limit, opened);
        }
    }
    return EPROTONOSUPPORT;
}

} // namespace ribkit::platform
