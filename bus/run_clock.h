// The time that a run takes: the bus's, so that a run under a virtual clock tells the same every time.
#pragma once

#include <chrono>

namespace ribkit::bus {

std::chrono::steady_clock::time_point run_now();

} // namespace ribkit::bus
