// The open handles of this process. A number is not given out again before all others were.
#pragma once

#include "platform/transport.h"
#include <cstdint>

namespace ribkit::platform {

uint32_t add_handle(endpoint_ptr opened);

/// Null where no such handle is open. The endpoint outlives a close for as long as a call is in it.
endpoint_ptr find_handle(uint32_t handle);

/// Takes the handle out; null where no such handle is open.
endpoint_ptr remove_handle(uint32_t handle);

} // namespace ribkit::platform
