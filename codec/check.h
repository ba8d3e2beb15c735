// Whether bytes in network form may be converted: one walk over the layouts that the converters are made of. A count
// must fit its array, every entry the bytes there are, and at the end no byte may remain.
#pragma once

#include "codec/layout.h"
#include "rib_check.h"

namespace ribkit {

/// @return 0, RIB_BAD_PARAMETERS or RIB_EXCESS_DATA; the report, which may be null, is filled where it is not 0
uint32_t check(const layout &l, const char *name, const void *message, uint32_t size, rib_check_report *report);

} // namespace ribkit
