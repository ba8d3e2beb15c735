// Requests over a server: the message service against the client library's own request.
#pragma once

namespace ribkit::platform {

/// A row for each size; without a URL, or without the client library, says so instead.
void nats_rows(const char *url);

} // namespace ribkit::platform
