// Three lists are one: a VSAN is met in the order of the numbers.
#include "rib/vsans.h"

#include <algorithm>
#include <optional>

namespace ribkit::rib {

namespace {

/// The first of a map's or a set's numbers from `first` on, or what is known already where that is smaller.
template <class Numbers, class Number>
std::optional<uint32_t> nearer(const Numbers &all, uint32_t first, std::optional<uint32_t> known, Number number) {
    const auto found = all.lower_bound(first);
    if (found == all.end()) {
        return known;
    }
    return known ? std::min(*known, number(*found)) : number(*found);
}

std::optional<uint32_t> next_vsan(const state &routes, const described_vsans &described, uint32_t first) {
    const auto by_key = [](const auto &entry) { return entry.first; };
    auto next = nearer(routes.vsans(), first, {}, by_key);
    next = nearer(described, first, next, by_key);
    return nearer(routes.suspended(), first, next, [](uint32_t vsan) { return vsan; });
}

} // namespace

model::vsan_attributes attributes_of(const state &routes, const described_vsans &described, uint32_t vsan) {
    const auto found = described.find(vsan);
    model::vsan_attributes known = found == described.end() ? model::vsan_attributes{} : found->second;
    if (routes.suspended().contains(vsan)) {
        known.state = model::vsan_state::suspended;
    }
    return known;
}

std::vector<std::pair<uint32_t, model::vsan_attributes>>
vsans_from(const state &routes, const described_vsans &described, uint32_t first, size_t most) {
    std::vector<std::pair<uint32_t, model::vsan_attributes>> found;
    auto next = next_vsan(routes, described, first);
    while (next && found.size() < most) {
        found.emplace_back(*next, attributes_of(routes, described, *next));
        next = next_vsan(routes, described, *next + 1);
    }
    return found;
}

} // namespace ribkit::rib
