// What a display reads otherwise than its message is laid out, as a layout: so that a check can stand in front of it.
#pragma once

#include "codec/messages/info.h"

namespace ribkit::diag {

// What tables are written in.
using codec::layout;
using codec::list;
using codec::row;

/// A unicast table entry as it is displayed: its hops follow one another, each as long as its labels make it. (The
/// message's hops stand 8 bytes apart.)
constexpr row shown_row(const layout &route, size_t i) {
    return is_list(route[i]) ? list(route[i].offset, route[i].name, route[i].count, wire::fclrt_intf, 0) : route[i];
}
inline constexpr const layout &shown_ucast_route =
    codec::made_of<wire::ucast_route, shown_row, std::make_index_sequence<wire::ucast_route.rows.size()>>;

} // namespace ribkit::diag
