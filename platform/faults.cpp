#include "platform/faults.h"

#include "platform/clock.h"
#include <atomic>

namespace ribkit::platform {

namespace {

std::atomic<fault_script *> in_force{nullptr};

} // namespace

bool set_faults(std::unique_ptr<fault_script> script) {
    if (!set_virtual_clock(script != nullptr && script->virtual_clock_line() != 0)) {
        return false;
    }
    const std::unique_ptr<fault_script> before{in_force.exchange(script.release())};
    return true;
}

fault_script *faults() { return in_force.load(std::memory_order_acquire); }

} // namespace ribkit::platform
