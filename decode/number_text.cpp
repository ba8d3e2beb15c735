// Numbers and their texts.
#include "decode/number_text.h"

#include "decode/numbers.h"
#include "diag/compose.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace ribkit::decode {

namespace {

using codec::meaning;
using source = number_text::source;

char *put_decimal(char *to, uint32_t number) { return std::to_chars(to, to + 10, number).ptr; }

/// Names of interfaces are dear, and the same ones come again and again.
struct remembered_name {
    uint32_t interface = 0;
    uint8_t size = 0;
    std::array<char, number_text::room - 1> text;
};

char *put_interface(char *to, uint32_t interface) {
    static thread_local std::array<remembered_name, 256> names;
    remembered_name &name = names[(interface ^ interface >> 16) % names.size()];
    if (name.size == 0 || name.interface != interface) {
        rib_if_index_to_str(interface, name.text.data());
        name.interface = interface;
        name.size = static_cast<uint8_t>(std::strlen(name.text.data()));
    }
    std::memcpy(to, name.text.data(), name.size);
    return to + name.size;
}

/// "2023-11-14T22:13:20Z", the same in every zone; a time that has not come yet has none.
char *put_time(char *to, uint32_t seconds) {
    if (seconds == 0) {
        return to;
    }
    constexpr uint32_t day = 86400;
    const std::chrono::year_month_day date(std::chrono::sys_days(std::chrono::days(seconds / day)));
    const uint32_t rest = seconds % day;
    return to + std::sprintf(to, "%04d-%02u-%02uT%02u:%02u:%02uZ", static_cast<int>(date.year()),
                             static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), rest / 3600,
                             rest / 60 % 60, rest % 60);
}

char *put_control(char *to, uint32_t word) {
    std::array<uint8_t, 4> bytes{};
    store_word(bytes.data(), word);
    return to + rib_fclrt_ctrl_to_str(bytes.data(), to);
}

std::optional<uint32_t> decimal(std::string_view digits) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() ? std::optional(number) : std::nullopt;
}

std::optional<uint32_t> in_vocabulary(const diag::vocabulary &words, std::string_view text) {
    std::optional<uint32_t> found;
    for (const diag::text_row &row : words.rows) {
        if (text == row.text) {
            if (found) {
                return {};
            }
            found = row.value;
        }
    }
    return found;
}

} // namespace

char *number_text::put(char *to, uint32_t number) const {
    switch (from) {
    case source::none:
        break;
    case source::vocabulary:
        words->converter(number, to);
        return to + std::strlen(to);
    case source::control:
        return put_control(to, number);
    case source::flags:
        return to + rib_fcurt_flag_to_str(number, to);
    case source::interface:
        return put_interface(to, number);
    case source::time:
        return put_time(to, number);
    case source::from_one:
        return put_decimal(to, number + 1);
    case source::unit:
        to = put_decimal(to, number);
        return to + std::sprintf(to, " %s", unit);
    }
    return to;
}

std::string number_text::of(uint32_t number) const {
    std::array<char, room> text;
    return {text.data(), put(text.data(), number)};
}

std::optional<uint32_t> number_text::number_of(std::string_view text) const {
    std::optional<uint32_t> found;
    if (from == source::vocabulary) {
        found = in_vocabulary(*words, text);
    } else if (from == source::from_one) {
        found = decimal(text);
        found = found && *found != 0 ? std::optional(*found - 1) : std::nullopt;
    } else if (from == source::unit) {
        found = decimal(text.substr(0, text.find(' ')));
    }
    return found && of(*found) == text ? found : std::nullopt;
}

number_text text_of(const char *vocabulary) {
    const std::string_view name = vocabulary;
    if (name.empty()) {
        return {};
    }
    if (name == "rib_fclrt_ctrl") {
        return {source::control};
    }
    if (name == "rib_fcurt_flag") {
        return {source::flags};
    }
    return {source::vocabulary, diag::vocabulary_of(name)};
}

number_text text_of(const codec::row &r) {
    if (*r.vocabulary != '\0') {
        return text_of(r.vocabulary);
    }
    if (r.shown_more != 0) {
        return {source::from_one};
    }
    if (*r.unit != '\0') {
        return {source::unit, nullptr, r.unit};
    }
    return r.means == meaning::interface ? number_text{source::interface}
           : r.means == meaning::time    ? number_text{source::time}
                                         : number_text{};
}

char *put_label_text(char *to, uint32_t word) {
    std::array<uint8_t, 4> bytes{};
    store_word(bytes.data(), word);
    return diag::put_label(to, codec::view<wire::label>(bytes.data()));
}

char *put_positions(char *to, std::span<const uint8_t> map) {
    const auto is_set = [&](size_t bit) { return bit < 8 * map.size() && (map[bit / 8] >> bit % 8 & 1) != 0; };
    const char *const begin = to;
    for (size_t bit = 0; bit < 8 * map.size(); ++bit) {
        if (!is_set(bit)) {
            continue;
        }
        const size_t first = bit;
        while (is_set(bit + 1)) {
            ++bit;
        }
        to = to == begin ? to : to + std::sprintf(to, ", ");
        to += first == bit ? std::sprintf(to, "%zu", first) : std::sprintf(to, "%zu-%zu", first, bit);
    }
    return to;
}

} // namespace ribkit::decode
