// The one line that a refused message or image is reported with.
#include "rib_check.h"

#include <cstdio>

int rib_check_report_str(const struct rib_check_report *report, char *str, uint32_t size) {
    const struct rib_check_report &r = *report;
    switch (r.rule) {
    case RIB_CHECK_SHORT:
        return std::snprintf(str, size, "%s: %s at offset %u ends at %u, but the bytes end at %u", r.message, r.field,
                             r.offset, r.found, r.allowed);
    case RIB_CHECK_EXCESS:
        return std::snprintf(str, size, "%s: ends at %u, but the bytes end at %u", r.message, r.allowed, r.found);
    default:
        return std::snprintf(str, size, "%s: %s at offset %u is %u, at most %u allowed", r.message, r.field, r.offset,
                             r.found, r.allowed);
    }
}
