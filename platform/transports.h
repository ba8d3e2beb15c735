// The transports that the table of URLs names. Each opens an endpoint, as open_endpoint does.
#pragma once

#include "platform/transport.h"
#include <string_view>

namespace ribkit::platform {

/// Joins the bus of the URL "local:NAME"; it lives as long as an endpoint is on it.
int open_local(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

/// unix: URLs: the processes of one machine, without a server.
int open_unix(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

/// nats: and tls: URLs: an address is a subject, answers go to the request's reply subject. Without the client library
/// it says what is missing, and fails with EPROTONOSUPPORT.
int open_nats(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

} // namespace ribkit::platform
