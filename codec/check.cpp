#include "codec/check.h"

#include "codec/check_odd.h"
#include "codec/check_overlap.h"

namespace ribkit {

uint32_t check(const layout &l, const char *name, const void *message, uint32_t size, rib_check_report *report) {
    return checker<uncounted>(name, static_cast<const uint8_t *>(message), size, report).check(l);
}

} // namespace ribkit
