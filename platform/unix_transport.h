// unix: URLs: the processes of one machine, without a server.
#pragma once

#include "platform/transport.h"

namespace ribkit::platform {

int open_unix(std::string_view url, std::chrono::milliseconds server_limit, endpoint_ptr &opened);

} // namespace ribkit::platform
