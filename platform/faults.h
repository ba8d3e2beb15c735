// The fault script in force, if any: asked by every call of the service and about every message that arrives.
#pragma once

#include "platform/fault_script.h"
#include <memory>

namespace ribkit::platform {

/// Puts a script in force from now on; null ends the one before. While no thread is in the service. False, and nothing
/// happens, where it wants the virtual clock and that cannot be had.
bool set_faults(std::unique_ptr<fault_script> script);

/// Null without a script.
fault_script *faults();

} // namespace ribkit::platform
