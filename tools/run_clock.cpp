#include "tools/run_clock.h"

#include "ribkit_platform.h"

namespace ribkit {

std::chrono::steady_clock::time_point run_now() {
    using clock = std::chrono::steady_clock;
    uint64_t passed = 0;
    return qip_virtual_time(&passed) == 0 ? clock::time_point(std::chrono::microseconds(passed)) : clock::now();
}

} // namespace ribkit
