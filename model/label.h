// Label routes as values: frames that carry labels, or come in at an interface, or go to a destination, leave through
// interfaces with labels pushed on them.
#pragma once

#include "model/routes.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::model {

/// A frame is matched by at most so many labels.
inline constexpr size_t most_match_labels = 2;
/// ... and by at most so many interfaces that it came in at.
inline constexpr size_t most_sources = 16;

/// What frames a label route is for. What is no part of the type's key is 0.
struct label_key {
    uint32_t vsan = 0;
    uint32_t type = 0;    ///< RIB_ROUTE_...: by source, by labels alone, by destination
    uint32_t source = 0;  ///< interface, of RIB_ROUTE_SRC_LABEL
    destination to{0, 0}; ///< of RIB_ROUTE_FC_LABEL
    uint32_t match_count = 0;
    std::array<uint32_t, most_match_labels> match{}; ///< label words

    bool operator==(const label_key &) const = default;
    bool operator<(const label_key &other) const {
        return std::tie(vsan, type, source, to, match_count, match) <
               std::tie(other.vsan, other.type, other.source, other.to, other.match_count, other.match);
    }
};

/// The next key that a label route can have: the last digit goes on, or the one in front of it does, and it begins
/// anew.
constexpr label_key key_after(const label_key &last) {
    label_key next = last;
    for (uint32_t i = next.match_count; i-- > 0;) {
        if (++next.match[i] != 0) {
            return next;
        }
    }
    if (next.match_count < most_match_labels) {
        next.match_count++;
        return next;
    }
    next.match_count = 0;
    if (next.type == RIB_ROUTE_SRC_LABEL && ++next.source != 0) {
        return next;
    }
    if (next.type == RIB_ROUTE_FC_LABEL && (++next.to.mask != 0 || ++next.to.fcid != 0)) {
        return next;
    }
    next.to = {0, 0};
    return ++next.type > RIB_ROUTE_FC_LABEL ? label_key{last.vsan + 1} : next;
}

/// How many labels a control word pushes.
constexpr uint32_t pushed_labels(uint32_t ctrl) { return ctrl >> 16 & 0xff; }

/// A control word: so many labels come off, so many are pushed, and the time to live goes down where some were there.
constexpr uint32_t label_control(uint32_t pops, uint32_t pushes) {
    constexpr uint32_t decreases = 1U << 13;
    return pops << 24 | pushes << 16 | (pops != 0 ? decreases : 0);
}

/// A label as a frame is matched by it: the rest of its word is not compared.
constexpr uint32_t matched_label(uint32_t label) { return label << 12; }

/// A label as it is pushed; the last of a stack says so.
constexpr uint32_t pushed_label(uint32_t label, bool is_last) {
    constexpr uint32_t hops_to_live = 64;
    return label << 12 | (is_last ? 1U << 8 : 0) | hops_to_live;
}

/// Takes the first hop off the words of several: its control word, its interface, its labels.
constexpr std::span<const uint32_t> take_label_hop(std::span<const uint32_t> &hops) {
    const std::span<const uint32_t> first = hops.first(2 + pushed_labels(hops[0]));
    hops = hops.subspan(first.size());
    return first;
}

constexpr uint32_t count_label_hops(std::span<const uint32_t> hops) {
    uint32_t count = 0;
    while (!hops.empty()) {
        take_label_hop(hops);
        count++;
    }
    return count;
}

struct label_route {
    std::vector<uint32_t> sources; ///< interfaces; the first is the key's where the type is by source
    std::vector<uint32_t> hops;    ///< one after the other as take_label_hop has them

    bool operator==(const label_route &) const = default;
};

/// There is no changing a part of it: adding replaces.
constexpr uint32_t action_between(const label_route & /*before*/, const label_route & /*after*/) {
    return RIB_ACTION_ADD;
}

/// What a label route says, where its words stand with somebody else.
struct label_values {
    std::span<const uint32_t> sources;
    std::span<const uint32_t> hops;

    label_values() = default;
    label_values(std::span<const uint32_t> from, std::span<const uint32_t> ways) : sources(from), hops(ways) {}
    label_values(const label_route &what) // NOLINT(google-explicit-constructor)
        : sources(what.sources), hops(what.hops) {}
};

/// One record of a label update.
struct label_change {
    uint32_t action; ///< RIB_ACTION_...
    label_key key;
    label_values what;
};

} // namespace ribkit::model
