// The fault script in force, if any: asked by every call of the service and about every message that arrives.
#pragma once

#include "platform/fault_script.h"
#include <memory>
#include <string>

namespace ribkit::platform {

/// Puts a file's script in force; else says what is wrong, as it follows "FILE:", and the one before stays.
std::string load_faults(const char *file);

void end_faults();

/// Null without a script. It stays whole while it is asked, even where another one takes its place meanwhile.
std::shared_ptr<fault_script> faults();

} // namespace ribkit::platform
