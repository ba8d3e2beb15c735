// The rows of the transports' bench, by what they measure.
#pragma once

namespace ribkit::platform {

/// A request and its answer through sockets of this machine.
void unix_rows();

/// Requests over a server: the message service against the client library's own request. A row for each size; without a
/// URL, or without the client library, it says so instead.
void nats_rows(const char *url);

/// What a flood of one sender does to another one's requests: in process, between processes, and over the server where
/// a URL is given.
void attack_rows(const char *server_url);

} // namespace ribkit::platform
