// How to reach a server: what the URL and the environment say, put into the client library's options.
#pragma once

#include <chrono>
#include <nats/nats.h>
#include <string>
#include <string_view>

namespace ribkit::platform {

inline constexpr std::chrono::milliseconds longest_server_limit{5000};

struct nats_place {
    std::string server; ///< the URL for the client library; may hold a password, so it is never printed
    std::string prefix; ///< of every subject: the fabric's name, "rib" without one
    std::string name;   ///< that we send under: of the URL, the user's, or made up
    std::string queue;  ///< of the ordinary addresses; empty where every listener is given every message
    std::chrono::milliseconds server_limit = longest_server_limit; ///< that the server may take to answer, each time
};

/// Takes "nats://[USER:PASSWORD@|TOKEN@]HOST[:PORT][/FABRIC][?name=NAME][&queue=NAME]" apart, and finds a name; false
/// where it is malformed.
bool parse_nats_url(std::string_view url, nats_place &place);

/// Server, reconnecting for ever with growing pauses, sending at once, and what the environment adds: RIBKIT_NATS_USER
/// and RIBKIT_NATS_PASSWORD, RIBKIT_NATS_TOKEN, RIBKIT_NATS_CREDENTIALS (a file); RIBKIT_NATS_CA, RIBKIT_NATS_CERT and
/// RIBKIT_NATS_KEY (files), each of which asks for TLS, as the scheme tls does. 0 or an errno.
int set_nats_options(natsOptions *options, const nats_place &place);

/// Whether the name of the server's host has an address. Asks the system, which may ask others.
bool is_resolved(const nats_place &place);

/// Whether the identity is proven by a signature, of which each connection has its own.
bool is_identity_signed();

/// What a failure of the client library means here.
int errno_of(natsStatus status);

} // namespace ribkit::platform
