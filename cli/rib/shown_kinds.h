// The displays that a running RIB is asked for: which questions are asked, and what is made of the answers.
#pragma once

#include "bus/rib_link.h"
#include "cli/rib/record_filter.h"
#include "cli/rib/record_list.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ribkit::cli {

struct shown_kind {
    std::string_view display; ///< its short name
    filter_bits filters;      ///< what its records can be chosen by
    /// The records that are wanted. Throws as clients::ask_checked does.
    record_list (*read)(bus::rib_link &link, const record_filter &wanted);
};

/// A row for every display.
std::span<const shown_kind> shown_kinds();

/// By the display's short name; null where there is none.
const shown_kind *find_shown_kind(std::string_view display);

/// The active unicast routes, as rib_show_fcu displays them.
record_list read_active_routes(bus::rib_link &link, const record_filter &wanted);

} // namespace ribkit::cli
