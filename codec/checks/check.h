// Whether bytes in network form may be converted: a count must fit its array, every entry the bytes there are, and at
// the end no byte may remain.
#pragma once

#include "codec/checks/check_table.h"
#include "rib_check.h"

namespace ribkit::codec {

/// @return 0, RIB_BAD_PARAMETERS or RIB_EXCESS_DATA; the report, which may be null, is filled where it is not 0
uint32_t check(const check_tables &tables, uint8_t plan, const char *name, const void *message, uint32_t size,
               rib_check_report *report);

/// The check of what is no message of its own.
template <const layout &L>
uint32_t check(const char *name, const void *message, uint32_t size, rib_check_report *report) {
    using own = checked_layouts<L>;
    return check(own::tables, own::template plan<L>(), name, message, size, report);
}

} // namespace ribkit::codec
