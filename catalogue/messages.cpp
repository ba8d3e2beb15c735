// The catalogue's rows for whoever goes through them at run time.
#include "catalogue/messages.h"

#include <algorithm>
#include <array>

using ribkit::codec::message;

namespace {

template <size_t N> constexpr std::array<message, N> plain(const ribkit::catalogue::row (&rows)[N]) {
    std::array<message, N> all{};
    std::copy(std::begin(rows), std::end(rows), all.begin());
    return all;
}

constexpr auto all_messages = plain(ribkit::catalogue::messages);
constexpr auto all_forms = plain(ribkit::catalogue::forms);

/// Without "rib_", "fib_" or "rib_fib_".
std::string_view short_name(std::string_view name) {
    constexpr std::string_view both = "rib_fib_";
    return name.substr(name.starts_with(both) ? both.size() : name.find('_') + 1);
}

} // namespace

std::span<const message> ribkit::codec::messages() { return all_messages; }

std::span<const message> ribkit::codec::forms() { return all_forms; }

const message *ribkit::codec::find_message(std::string_view name) {
    const auto *found = std::find_if(all_messages.begin(), all_messages.end(),
                                     [name](const message &m) { return m.name == name || short_name(m.name) == name; });
    return found == all_messages.end() ? nullptr : found;
}
