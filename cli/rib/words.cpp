// The platform names interfaces, the vocabularies clients.
#include "cli/rib/words.h"

#include "base/input_error.h"
#include "base/near_names.h"
#include "base/text.h"
#include "diag/text/client_rows.h"
#include "rib_text.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iomanip>
#include <iterator>
#include <string_view>
#include <vector>

namespace ribkit::cli {

namespace {

constexpr uint32_t last_address = 0xffffff;

std::optional<uint32_t> number_of(std::string_view text) {
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    const char *end = text.data() + text.size();
    uint32_t value = 0;
    const auto [stopped, error] = std::from_chars(text.data() + (hex ? 2 : 0), end, value, hex ? 16 : 10);
    return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

std::string hex_of(uint32_t number) { return base::joined("0x", std::hex, std::setw(6), std::setfill('0'), number); }

} // namespace

uint32_t number_in(const std::string &text, const std::string &what, uint32_t most) {
    const auto number = number_of(text);
    if (!number || *number > most) {
        throw base::input_error(
            base::joined('"', text, "\" is no ", what, ": a number from 0 to 0x", std::hex, most, " is"));
    }
    return *number;
}

address address_in(const std::string &text) {
    const size_t slash = text.find('/');
    address found{number_in(text.substr(0, slash), "FC ID", last_address), {}};
    if (slash != std::string::npos) {
        found.mask = number_in(text.substr(slash + 1), "mask", last_address);
    }
    return found;
}

model::destination destination_in(const std::string &text) {
    const address found = address_in(text);
    const model::destination to{found.fcid, found.mask.value_or(last_address)};
    if ((to.fcid & ~to.mask) != 0) {
        throw base::input_error(base::joined(text, ": the FC ID has bits outside of the mask"));
    }
    return to;
}

std::string destination_text(const model::destination &to) {
    return base::joined(hex_of(to.fcid), '/', hex_of(to.mask));
}

uint32_t interface_in(const std::string &text) {
    uint32_t if_index = 0;
    if (if_index_parse(text.c_str(), &if_index) != 0) {
        throw base::input_error(
            base::joined('"', text, "\" is no interface: names are such as fc1/1 and port-channel 3"));
    }
    return if_index;
}

std::string interface_text(uint32_t if_index) {
    std::array<char, 128> text{};
    rib_if_index_to_str(if_index, text.data());
    return text.data();
}

uint32_t client_in(const std::string &text) {
    if (const auto number = number_of(text); number && *number <= RIBKIT_LAST_CLIENT) {
        return *number;
    }
    const auto *const found = std::find_if(std::begin(diag::client_rows), std::end(diag::client_rows),
                                           [&](const diag::text_row &row) { return row.text == text; });
    if (found == std::end(diag::client_rows)) {
        std::vector<std::string_view> names;
        std::transform(std::begin(diag::client_rows), std::end(diag::client_rows), std::back_inserter(names),
                       [](const diag::text_row &row) { return row.text; });
        throw base::input_error(base::no_such_name(text, "client", names, "ribkit text rib_uuid"));
    }
    return found->value;
}

std::string client_text(uint32_t uuid) {
    std::array<char, 64> text{};
    rib_uuid_to_str(uuid, text.data());
    return text.data();
}

} // namespace ribkit::cli
