// Opening: what may be waited for, and what is a mistake of the user's.
#include "tools/service_handle.h"

#include "tools/input_error.h"
#include "tools/pauses.h"
#include "tools/stop_signals.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace ribkit {

std::string shown_url(const std::string &url) {
    const size_t scheme = url.find("://");
    if (scheme == std::string::npos) {
        return url;
    }
    const size_t host = scheme + 3;
    const size_t at = url.rfind('@'); // no host, fabric or queue has one
    return at == std::string::npos || at < host ? url : url.substr(0, host) + url.substr(at + 1);
}

bool names_server(const std::string &url) { return url.starts_with("nats:") || url.starts_with("tls:"); }

service_handle::service_handle(const std::string &url, std::chrono::milliseconds patience) {
    pauses waiting(patience);
    while (qip_open(url.c_str(), &number_) != 0) {
        const int reason = errno;
        if (reason == EINVAL || (reason == EPROTONOSUPPORT && !names_server(url))) {
            throw input_error(joined(shown_url(url), ": ", reason == EINVAL ? "malformed URL" : "no such transport",
                                     "; local:[NAME], nats://HOST[:PORT][/FABRIC] or tls://..."));
        }
        if (reason == ENOTSUP) {
            throw input_error(
                joined(shown_url(url), ": a server keeps real time: no fault script with \"clock virtual\""));
        }
        const auto pause = reason == ECONNREFUSED ? waiting.next() : std::nullopt;
        if (!pause) {
            throw std::system_error(reason, std::generic_category(), "cannot open " + shown_url(url));
        }
        if (waiting.first()) {
            std::fprintf(stderr, "ribkit: waiting for a server at %s\n", shown_url(url).c_str());
        }
        sleep_stoppably(*pause); // nothing has begun yet that has to be ended in order
    }
}

void service_handle::close() {
    if (open_.exchange(false)) {
        qip_close(number_);
    }
}

} // namespace ribkit
