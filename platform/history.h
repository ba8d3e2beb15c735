// The debug history, for the platform's own events.
#pragma once

#include <string>

namespace ribkit::platform {

void record_event(std::string text);

} // namespace ribkit::platform
