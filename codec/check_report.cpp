// The one line that a refused message or image is reported with.
#include "rib_check.h"

#include <cstdio>

int rib_check_report_str(const struct rib_check_report *report, char *str, uint32_t size) {
    return std::snprintf(str, size, "%s: %s at offset %u is %u, at most %u allowed", report->message, report->field,
                         report->offset, report->found, report->allowed);
}
