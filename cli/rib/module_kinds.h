// The displays that a module is asked for.
#pragma once

#include "bus/module_link.h"
#include "cli/rib/record_filter.h"
#include "cli/rib/record_list.h"

#include <string_view>

namespace ribkit::cli {

struct module_kind {
    std::string_view display; ///< its short name
    filter_bits filters;      ///< what its records can be chosen by
    /// The records that are wanted. Throws std::runtime_error where the module refuses, or answers what is damaged.
    record_list (*read)(bus::module_link &link, const record_filter &wanted);
};

/// By the display's short name; null where modules have none such.
const module_kind *find_module_kind(std::string_view display);

} // namespace ribkit::cli
