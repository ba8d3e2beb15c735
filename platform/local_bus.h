// The bus within one process: whoever listens at an address is found in a table, and messages go from the sender's
// thread straight into the listener's mailbox.
#pragma once

#include "platform/transport.h"
#include <string_view>

namespace ribkit::platform {

/// Joins the bus of the URL "local:NAME"; it lives as long as an endpoint is on it.
int open_local(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

} // namespace ribkit::platform
