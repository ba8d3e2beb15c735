// URL and environment; nothing here prints, because both hold secrets.
#include "platform/nats/nats_options.h"

#include "platform/names.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <netdb.h>
#include <optional>
#include <random>
#include <system_error>
#include <unistd.h>

namespace ribkit::platform {

namespace {

const char *setting(const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

// What is wrong with a file is said as an errno here: the client library has one answer for everything.
int unreadable_file() {
    for (const char *name : {"RIBKIT_NATS_CREDENTIALS", "RIBKIT_NATS_CA", "RIBKIT_NATS_CERT", "RIBKIT_NATS_KEY"}) {
        const char *file = setting(name);
        if (file != nullptr && access(file, R_OK) != 0) {
            return errno;
        }
    }
    return 0;
}

// 50 ms, doubled with every attempt, 5 s at most.
// A connection that nothing comes over, because its server hangs or because memory failed the client library's reader,
// is made anew within ten seconds.
constexpr int64_t ping_every = 3000; // milliseconds
constexpr int most_pings_out = 2;

int64_t pause_before(natsConnection * /*connection*/, int attempts, void * /*closure*/) {
    return std::min<int64_t>(int64_t{50} << std::min(attempts, 7), 5000);
}

natsStatus first_failure(std::initializer_list<natsStatus> results) {
    const auto *const failed =
        std::find_if(results.begin(), results.end(), [](natsStatus one) { return one != NATS_OK; });
    return failed == results.end() ? NATS_OK : *failed;
}

natsStatus set_identity(natsOptions *options) {
    const char *user = setting("RIBKIT_NATS_USER");
    const char *password = setting("RIBKIT_NATS_PASSWORD");
    const char *token = setting("RIBKIT_NATS_TOKEN");
    const char *file = setting("RIBKIT_NATS_CREDENTIALS");
    return first_failure({
        user == nullptr ? NATS_OK : natsOptions_SetUserInfo(options, user, password == nullptr ? "" : password),
        token == nullptr ? NATS_OK : natsOptions_SetToken(options, token),
        file == nullptr ? NATS_OK : natsOptions_SetUserCredentialsFromFiles(options, file, nullptr),
    });
}

// The client library checks that the server's certificate names the host.
natsStatus set_tls(natsOptions *options, const nats_place &place) {
    const char *authority = setting("RIBKIT_NATS_CA");
    const char *certificate = setting("RIBKIT_NATS_CERT");
    const char *key = setting("RIBKIT_NATS_KEY");
    if (key != nullptr && certificate == nullptr) {
        return NATS_INVALID_ARG;
    }
    if (!place.server.starts_with("tls") && authority == nullptr && certificate == nullptr) {
        return NATS_OK;
    }
    const char *signing = key == nullptr ? certificate : key;
    return first_failure({
        natsOptions_SetSecure(options, true),
        authority == nullptr ? NATS_OK : natsOptions_LoadCATrustedCertificates(options, authority),
        certificate == nullptr ? NATS_OK : natsOptions_LoadCertificatesChain(options, certificate, signing),
    });
}

bool is_port(std::string_view text) {
    uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc{} && end == text.data() + text.size() && port != 0;
}

struct host_and_port {
    std::string_view host; ///< an IPv6 address without its brackets
    std::string_view port; ///< with its colon; empty where it is left out
};

// Of "nats://IDENTITY@HOST:PORT"; an IPv6 address stands in brackets.
std::optional<host_and_port> server_parts(std::string_view server) {
    server.remove_prefix(server.find("://") + 3);
    server.remove_prefix(server.rfind('@') + 1); // npos + 1 is 0
    const bool bracketed = server.starts_with('[');
    const size_t bracket = bracketed ? server.find(']') : 0;
    if (bracket == std::string_view::npos) {
        return std::nullopt;
    }
    const size_t end = std::min(server.find(':', bracket), server.size());
    const std::string_view host = server.substr(0, end);
    return host_and_port{bracketed && host.size() == bracket + 1 ? host.substr(1, bracket - 1) : host,
                         server.substr(end)};
}

bool names_server(std::string_view server) {
    const auto parts = server_parts(server);
    return parts && !parts->host.empty() && (parts->port.empty() || is_port(parts->port.substr(1)));
}

// "name=NAME" and "queue=NAME", each once, in any order.
bool parse_query(std::string_view query, nats_place &place) {
    for (bool more = true; more;) {
        const size_t end = query.find('&');
        const std::string_view one = query.substr(0, end);
        const size_t equals = std::min(one.find('='), one.size());
        const std::string_view key = one.substr(0, equals);
        const std::string_view value = one.substr(std::min(equals + 1, one.size()));
        if (key != "name" && key != "queue") {
            return false;
        }
        std::string &wanted = key == "name" ? place.name : place.queue;
        if (!wanted.empty() || !is_name(value)) {
            return false;
        }
        wanted = value;
        more = end != std::string_view::npos;
        query.remove_prefix(more ? end + 1 : query.size());
    }
    return true;
}

// Nobody else's, so that handles that say nothing of themselves take turns, too.
std::string made_up_name() {
    std::random_device random;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "anonymous-%08x%08x", random(), random());
    return text.data();
}

// The user whom the server knows us as, where he is called as a sender may be.
std::string name_of_user(std::string_view server) {
    const size_t start = server.find("://") + 3;
    const size_t at = server.rfind('@');
    const bool has_identity = at != std::string_view::npos;
    const std::string_view identity = has_identity ? server.substr(start, at - start) : std::string_view{};
    const size_t colon = identity.find(':');
    const char *variable = setting("RIBKIT_NATS_USER");
    const std::string_view user = colon != std::string_view::npos        ? identity.substr(0, colon)
                                  : !has_identity && variable != nullptr ? std::string_view{variable}
                                                                         : std::string_view{};
    return is_name(user) ? std::string{user} : made_up_name();
}

} // namespace

bool parse_nats_url(std::string_view url, nats_place &place) {
    const size_t question = url.find('?');
    const bool has_query = question != std::string_view::npos;
    const std::string_view query = has_query ? url.substr(question + 1) : std::string_view{};
    url = url.substr(0, question);
    const size_t slashes = url.find("://");
    if (slashes == std::string_view::npos) {
        return false;
    }
    const size_t path = url.find('/', slashes + 3);
    place.server = url.substr(0, path);
    const std::string_view fabric = path == std::string_view::npos ? std::string_view{} : url.substr(path + 1);
    place.prefix = fabric.empty() ? "rib" : fabric;
    place.name.clear();
    place.queue.clear();
    if (!names_server(place.server) || !is_name(place.prefix) || (has_query && !parse_query(query, place))) {
        return false;
    }
    if (place.name.empty()) {
        place.name = name_of_user(place.server);
    }
    return true;
}

int set_nats_options(natsOptions *options, const nats_place &place) {
    if (const int error = unreadable_file(); error != 0) {
        return error;
    }
    return errno_of(first_failure({
        natsOptions_SetURL(options, place.server.c_str()),
        natsOptions_SetName(options, "ribkit"),
        natsOptions_SetSendAsap(options, true),
        natsOptions_SetTimeout(options, place.server_limit.count()),
        natsOptions_SetMaxReconnect(options, -1),
        natsOptions_SetPingInterval(options, ping_every),
        natsOptions_SetMaxPingsOut(options, most_pings_out),
        natsOptions_SetCustomReconnectDelay(options, pause_before, nullptr),
        set_identity(options),
        set_tls(options, place),
    }));
}

bool is_resolved(const nats_place &place) {
    const std::string host{server_parts(place.server).value_or(host_and_port{}).host};
    addrinfo *found = nullptr;
    const int failure = getaddrinfo(host.c_str(), nullptr, nullptr, &found);
    if (failure == 0) {
        freeaddrinfo(found);
    }
    constexpr std::array unknown{EAI_NONAME, EAI_AGAIN, EAI_NODATA};
    return std::find(unknown.begin(), unknown.end(), failure) == unknown.end();
}

bool is_identity_signed() { return setting("RIBKIT_NATS_CREDENTIALS") != nullptr; }

int errno_of(natsStatus status) {
    switch (status) {
    case NATS_OK:
        return 0;
    case NATS_NO_SERVER:
        return ECONNREFUSED;
    case NATS_CONNECTION_AUTH_FAILED:
    case NATS_NOT_PERMITTED:
        return EACCES;
    case NATS_MAX_PAYLOAD:
        return EMSGSIZE;
    case NATS_NO_MEMORY:
        return ENOMEM;
    case NATS_TIMEOUT:
        return ETIMEDOUT;
    case NATS_CONNECTION_CLOSED:
    case NATS_CONNECTION_DISCONNECTED:
    case NATS_STALE_CONNECTION:
    case NATS_IO_ERROR:
    case NATS_NO_RESPONDERS:
        return ENOTCONN;
    case NATS_ADDRESS_MISSING:
    case NATS_INVALID_ARG:
        return EINVAL;
    case NATS_SSL_ERROR:
    case NATS_PROTOCOL_ERROR: // also an end where an answer was due
    case NATS_SECURE_CONNECTION_WANTED:
    case NATS_SECURE_CONNECTION_REQUIRED:
        return EPROTO;
    default:
        return EIO;
    }
}

} // namespace ribkit::platform
