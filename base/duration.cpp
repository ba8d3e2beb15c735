// Durations are read digit by digit: whole milliseconds stay exact, and nothing depends on the locale.
#include "base/duration.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace ribkit::base {

namespace {

struct unit {
    std::string_view name;
    int64_t milliseconds;
};

constexpr std::array units{unit{"ms", 1}, unit{"s", 1000}, unit{"m", 60'000}};
constexpr int64_t one_day = int64_t{24} * 60 * 60 * 1000;
constexpr size_t most_digits = 8; // a day in milliseconds

bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string_view take_digits(std::string_view &text) {
    const auto end = std::find_if_not(text.begin(), text.end(), is_digit);
    const auto digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

int64_t number(std::string_view digits) {
    int64_t value = 0;
    for (const char digit : digits) {
        value = value * 10 + (digit - '0');
    }
    return value;
}

int64_t power_of_ten(size_t exponent) {
    int64_t value = 1;
    for (size_t i = 0; i < exponent; i++) {
        value *= 10;
    }
    return value;
}

} // namespace

std::optional<std::chrono::milliseconds> parse_duration(std::string_view text) {
    const std::string_view whole = take_digits(text);
    std::string_view fraction;
    if (!whole.empty() && text.starts_with('.')) {
        text.remove_prefix(1);
        fraction = take_digits(text);
        if (fraction.empty()) {
            return {};
        }
    }
    const auto *const found = std::find_if(units.begin(), units.end(), [&](const unit &u) { return u.name == text; });
    if (whole.empty() || found == units.end() || whole.size() > most_digits || fraction.size() > most_digits) {
        return {};
    }
    const int64_t parts = number(fraction) * found->milliseconds;
    const int64_t scale = power_of_ten(fraction.size());
    const int64_t total = number(whole) * found->milliseconds + parts / scale;
    if (parts % scale != 0 || total > one_day) {
        return {};
    }
    return std::chrono::milliseconds(total);
}

std::string duration_text(std::chrono::milliseconds duration) {
    const int64_t total = duration.count();
    if (total % 1000 == 0) {
        return std::to_string(total / 1000) + "s";
    }
    if (total < 1000) {
        return std::to_string(total) + "ms";
    }
    std::string fraction = std::to_string(1000 + total % 1000).substr(1);
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return std::to_string(total / 1000) + "." + fraction + "s";
}

} // namespace ribkit::base
