// The walk of a check, compiled once for all messages: their plans are data.
#include "codec/checks/check.h"

#include "codec/checks/check_odd.h"
#include "codec/checks/check_overlap.h"

namespace ribkit::codec {

uint32_t check(const check_tables &tables, uint8_t plan, const char *name, const void *message, uint32_t size,
               rib_check_report *report) {
    return checker<uncounted>(tables, name, static_cast<const uint8_t *>(message), size, report).check(plan);
}

} // namespace ribkit::codec
