// Which records an operator wants to see.
#pragma once

#include "cli/rib/words.h"
#include "codec/messages/fib.h"
#include "codec/messages/snmp.h"
#include "codec/view.h"
#include "protocol/uses.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ribkit::cli {

/// What is not said does not matter.
struct record_filter {
    std::optional<uint32_t> vsan;
    std::optional<address> to;   ///< with a mask that destination, without one all that the FC ID is in
    std::optional<uint32_t> via; ///< interface
    std::optional<uint32_t> owner;

    [[nodiscard]] bool takes(const model::destination &where) const {
        return !to || (to->mask ? to->mask == where.mask && to->fcid == where.fcid
                                : (to->fcid & where.mask) == (where.fcid & where.mask));
    }
};

/// What a filter can tell of a kind of record, as bits.
struct filter_bits {
    bool vsan = false, to = false, via = false, owner = false;
};

template <const codec::layout &L> constexpr bool has_field(std::string_view name, bool as_list = false) {
    for (const codec::row &r : L) {
        if (name == r.name && codec::is_list(r) == as_list) {
            return true;
        }
    }
    return false;
}

template <const codec::layout &L> constexpr filter_bits filters_of() {
    return {has_field<L>("vsan") || protocol::is_same(L, wire::vsan),
            has_field<L>("fcid") || has_field<L>("destination"),
            has_field<L>("intf") || has_field<L>("intf", true) || has_field<L>("hop", true) || has_field<L>("if_index"),
            has_field<L>("uuid")};
}

namespace filtered {

template <codec::field_called List, class View> bool any_via(View record, uint32_t via) {
    const auto ways = record.template list<List>();
    return std::any_of(ways.begin(), ways.end(), [&](auto way) { return way.template get<"intf">() == via; });
}

template <const codec::layout &L> uint32_t vsan_of(codec::view<L> record) {
    if constexpr (protocol::is_same(L, wire::vsan)) {
        return record.template get<"word_4", "vsan">();
    } else {
        return record.template get<"vsan">();
    }
}

template <const codec::layout &L> model::destination destination_of(codec::view<L> record) {
    constexpr uint32_t whole = 0xffffff;
    if constexpr (has_field<L>("destination")) {
        return {record.template get<"destination">(), record.template get<"mask">()};
    } else if constexpr (has_field<L>("mask")) {
        return {record.template get<"fcid">(), record.template get<"mask">()};
    } else {
        return {record.template get<"fcid">(), whole};
    }
}

template <const codec::layout &L> bool leaves_by(codec::view<L> record, uint32_t via) {
    if constexpr (has_field<L>("hop", true)) {
        return any_via<"hop">(record, via);
    } else if constexpr (has_field<L>("if_index")) {
        return record.template get<"if_index">() == via;
    } else if constexpr (has_field<L>("src")) {
        return record.template get<"src">() == via || any_via<"intf">(record, via);
    } else if constexpr (has_field<L>("intf", true)) {
        return any_via<"intf">(record, via);
    } else {
        return record.template get<"intf">() == via;
    }
}

} // namespace filtered

/// Whether a record is wanted, as far as it tells.
template <const codec::layout &L> bool is_wanted(const uint8_t *bytes, const record_filter &filter) {
    constexpr filter_bits tells = filters_of<L>();
    const codec::view<L> record(bytes);
    if constexpr (tells.owner) {
        if (filter.owner && record.template get<"uuid">() != *filter.owner) {
            return false;
        }
    }
    if constexpr (tells.vsan) {
        if (filter.vsan && filtered::vsan_of<L>(record) != *filter.vsan) {
            return false;
        }
    }
    if constexpr (tells.to) {
        if (!filter.takes(filtered::destination_of<L>(record))) {
            return false;
        }
    }
    if constexpr (tells.via) {
        return !filter.via || filtered::leaves_by<L>(record, *filter.via);
    }
    return true;
}

} // namespace ribkit::cli
