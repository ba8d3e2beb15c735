// What happens to the routes, told to those who want to know: the logs, the listeners, the modules,
// and whoever reads the trace.
#pragma once

#include "rib/change_logs.h"
#include "rib/effects.h"
#include "rib/modules/modules.h"
#include "rib/service/notices.h"

#include <cstdint>

namespace ribkit::rib {

class route_watch final : public effects {
  public:
    /// What is referred to must last.
    /// @param traces print a line for all that moves in the hardware
    route_watch(change_logs &logs, notices &listeners, modules &followed, bool traces)
        : logs_(logs), listeners_(listeners), followed_(followed), traces_(traces) {}

    /// What happens from now on does so at this time, in seconds since 1970.
    void set_time(uint32_t now) { now_ = now; }

    void told(const route_event<unicast> &change) override { tell(change); }
    void told(const route_event<multicast> &change) override { tell(change); }
    void told(const route_event<label> &change) override { tell(change); }
    void vsan_changed(uint32_t vsan, bool suspended) override;
    void compare(table_id table, uint32_t vsan) override { followed_.compare(table, vsan); }
    void moved(uint32_t vsan, const model::destination &what, uint32_t from, uint32_t to) override;
    void owned(uint32_t segment, uint32_t first, uint32_t count) override;

  private:
    template <class Kind> void tell(const route_event<Kind> &change) {
        logs_.enter(change, now_);
        listeners_.tell(change);
        followed_.told(change);
    }

    change_logs &logs_;
    notices &listeners_;
    modules &followed_;
    bool traces_;
    uint32_t now_ = 0;
};

} // namespace ribkit::rib
