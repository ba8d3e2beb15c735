// The bus tells microseconds.
#include "bus/run_clock.h"

#include "ribkit_platform.h"

namespace ribkit::bus {

std::chrono::steady_clock::time_point run_now() {
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(qip_now()));
}

} // namespace ribkit::bus
