// The bus tells microseconds.
#include "tools/run_clock.h"

#include "ribkit_platform.h"

namespace ribkit::tools {

std::chrono::steady_clock::time_point run_now() {
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(qip_now()));
}

} // namespace ribkit::tools
