// Opening: what may be waited for, and what is a mistake of the user's.
#include "bus/service_handle.h"

#include "base/duration.h"
#include "base/input_error.h"
#include "base/stop_signals.h"
#include "base/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace ribkit::bus {

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

namespace {

bool may_come(int reason) { return reason == ECONNREFUSED || reason == EHOSTUNREACH; }

/// Why the bus is not there, and what the user can do about it.
std::string why_closed(int reason, const std::string &url) {
    if (!names_server(url) || !may_come(reason)) {
        return std::strerror(reason);
    }
    return reason == EHOSTUNREACH
               ? "the name of the host has no address"
               : base::joined(std::strerror(reason), "; nats-server starts a server, unix:DIRECTORY needs none");
}

/// The errno of opening, which is waiting, too; 0 where it is open.
int opened(const std::string &url, uint32_t &number, patience &waiting) {
    const patience::waiting counted(waiting);
    const auto limit = static_cast<uint32_t>(std::max(waiting.for_answer().count(), patience::milliseconds::rep{1}));
    return qip_open_within(url.c_str(), limit, &number) == 0 ? 0 : errno;
}

} // namespace

service_handle::service_handle(const std::string &url, patience &waiting) { open(url, waiting); }

service_handle::service_handle(const std::string &url, std::chrono::milliseconds allowed) {
    patience waiting(allowed);
    open(url, waiting);
}

void service_handle::open(const std::string &url, patience &waiting) {
    const auto allowed = waiting.seconds_left();
    bool told = false;
    for (int reason = opened(url, number_, waiting); reason != 0; reason = opened(url, number_, waiting)) {
        if (reason == EINVAL || (reason == EPROTONOSUPPORT && !names_server(url))) {
            throw base::input_error(
                base::joined(shown_url(url), ": ", reason == EINVAL ? "malformed URL" : "no such transport",
                             "; local:[NAME], unix:DIRECTORY, nats://HOST[:PORT][/FABRIC] or tls://..."));
        }
        if (reason == ENOTSUP) {
            throw base::input_error(base::joined(
                shown_url(url), ": other processes keep real time: no fault script with \"clock virtual\""));
        }
        const auto pause = may_come(reason) ? waiting.next_pause() : std::nullopt;
        if (!pause) {
            throw std::runtime_error(base::joined("cannot open ", shown_url(url), ": ", why_closed(reason, url)));
        }
        if (!told) {
            std::fprintf(stderr, "ribkit: waiting for a server at %s, for %s at most%s\n", shown_url(url).c_str(),
                         base::duration_text(allowed).c_str(),
                         reason == EHOSTUNREACH ? ": the name of the host has no address" : "");
            told = true;
        }
        base::sleep_stoppably(*pause); // nothing has begun yet that has to be ended in order
    }
}

void service_handle::close() {
    if (open_.exchange(0) != 0) {
        qip_close(number_);
    }
}

} // namespace ribkit::bus
