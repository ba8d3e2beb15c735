// The command's own `time` and `gettimeofday`, which the library's time stamps read: under the virtual clock of a fault
// script they tell its time, from midnight on, so that a run prints the same whenever it is made.
#include "ribkit_platform.h"

#include <ctime>
#include <sys/time.h>

namespace {

constexpr uint64_t in_a_second = 1'000'000; // microseconds

/// 00:00:00 of a day early in the calendar, as local times are told.
time_t midnight() {
    tm day{};
    day.tm_year = 70;
    day.tm_mday = 2;
    day.tm_isdst = -1;
    return mktime(&day);
}

timeval now() {
    uint64_t passed = 0;
    if (qip_virtual_time(&passed) == 0) {
        static const time_t start = midnight();
        return {start + static_cast<time_t>(passed / in_a_second), static_cast<suseconds_t>(passed % in_a_second)};
    }
    timespec real{};
    clock_gettime(CLOCK_REALTIME, &real);
    return {real.tv_sec, static_cast<suseconds_t>(real.tv_nsec / 1000)};
}

} // namespace

extern "C" {

time_t time(time_t *also) noexcept {
    const time_t seconds = now().tv_sec;
    if (also != nullptr) {
        *also = seconds;
    }
    return seconds;
}

int gettimeofday(timeval *__restrict to, void *__restrict /*zone*/) noexcept {
    *to = now();
    return 0;
}
}
