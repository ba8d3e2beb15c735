// The debug history, for the platform's own events.
#pragma once

#include <string_view>

namespace ribkit::platform {

/// Where memory is short the text is cut to what its place in the history holds.
void record_event(std::string_view text) noexcept;

} // namespace ribkit::platform
