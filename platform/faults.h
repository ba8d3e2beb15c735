// The fault script in force, if any: asked by every call of the service and about every message that arrives. One comes
// and goes while no thread is in the service.
#pragma once

#include "platform/fault_script.h"
#include <string>

namespace ribkit::platform {

/// Puts a file's script in force; else says what is wrong, as it follows "FILE:", and the one before stays.
std::string load_faults(const char *file);

void end_faults();

/// Null without a script.
fault_script *faults();

} // namespace ribkit::platform
