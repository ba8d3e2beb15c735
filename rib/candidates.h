// The candidates of a destination: few, so they are a list in the order of their ranks.
#pragma once

#include "rib/table.h"

#include <tuple>

namespace ribkit::rib {

/// Distance first, then cost, then identity.
template <class Kind> bool precedes(const typename table<Kind>::record &a, const typename table<Kind>::record &b) {
    if constexpr (Kind::has_candidates) {
        return std::tuple(a.of->distance, Kind::cost(a.what), a.of->uuid) <
               std::tuple(b.of->distance, Kind::cost(b.what), b.of->uuid);
    } else {
        return false;
    }
}

template <class Kind> void link(typename table<Kind>::record *&first, typename table<Kind>::record &one) {
    auto **at = &first;
    while (*at != nullptr && precedes<Kind>(**at, one)) {
        at = &(*at)->next;
    }
    one.next = *at;
    *at = &one;
}

template <class Kind> void unlink(typename table<Kind>::record *&first, const typename table<Kind>::record &one) {
    auto **at = &first;
    while (*at != &one) {
        at = &(*at)->next;
    }
    *at = one.next;
}

} // namespace ribkit::rib
