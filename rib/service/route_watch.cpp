// Lines of the trace, and of the history.
#include "rib/service/route_watch.h"

#include "bus/history.h"
#include "rib_trace.h"

namespace ribkit::rib {

void route_watch::vsan_changed(uint32_t vsan, bool suspended) {
    bus::note_in_history("rib: vsan ", vsan, suspended ? " is suspended" : " is active again");
    followed_.vsan_changed(vsan, suspended);
}

void route_watch::moved(uint32_t vsan, const model::destination &what, uint32_t from, uint32_t to) {
    if (traces_) {
        rib_printf_time("RIB moves vsan %u fc id 0x%06x mask 0x%06x from position 0x%05x to 0x%05x\n", vsan, what.fcid,
                        what.mask, from, to);
    }
}

void route_watch::owned(uint32_t segment, uint32_t first, uint32_t count) {
    if (traces_) {
        rib_printf_time("RIB hardware positions 0x%05x to 0x%05x now belong to segment %u\n", first, first + count - 1,
                        segment);
    }
}

} // namespace ribkit::rib
