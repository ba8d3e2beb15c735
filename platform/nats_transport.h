// The bus over a NATS server: an address is a subject, answers go to the request's reply subject.
#pragma once

#include "platform/transport.h"
#include <string_view>

namespace ribkit::platform {

/// Connects; without the client library it says what is missing, and fails with EPROTONOSUPPORT.
int open_nats(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

} // namespace ribkit::platform
