// Moments of a run as people write them: "3s", "250ms", "1.5s", "2m".
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace ribkit::base {

/// Nothing where the text is no duration, is finer than a millisecond or longer than a day.
std::optional<std::chrono::milliseconds> parse_duration(std::string_view text);

/// The shortest text that parse_duration reads back: "3s", "1.5s", "250ms".
std::string duration_text(std::chrono::milliseconds duration);

} // namespace ribkit::base
