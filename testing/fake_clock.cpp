// This program's own time() and gettimeofday() stand before the C library's.
#include "testing/fake_clock.h"

#include <cstdlib>
#include <sys/time.h>

namespace {

timeval stopped_at;
bool stopped = false;
int localtime_calls = 0;

timeval now() {
    timespec real{};
    clock_gettime(CLOCK_REALTIME, &real);
    timeval running{};
    running.tv_sec = real.tv_sec;
    running.tv_usec = static_cast<suseconds_t>(real.tv_nsec / 1000);
    return stopped ? stopped_at : running;
}

} // namespace

namespace ribkit::testing {

stopped_clock::stopped_clock(time_t seconds, long microseconds) {
    stopped_at.tv_sec = seconds;
    stopped_at.tv_usec = static_cast<suseconds_t>(microseconds);
    stopped = true;
}

stopped_clock::~stopped_clock() { stopped = false; }

local_zone::local_zone(const std::string &zone) : was_set_(std::getenv("TZ") != nullptr) {
    before_ = was_set_ ? std::getenv("TZ") : "";
    setenv("TZ", zone.c_str(), 1);
    tzset();
}

local_zone::~local_zone() {
    was_set_ ? setenv("TZ", before_.c_str(), 1) : unsetenv("TZ");
    tzset();
}

int zone_looks() { return localtime_calls; }

} // namespace ribkit::testing

// These stand before the C library's in every program that links this file.
time_t time(time_t *out) noexcept {
    const time_t seconds = now().tv_sec;
    if (out != nullptr) {
        *out = seconds;
    }
    return seconds;
}

tm *localtime(const time_t *when) noexcept {
    static tm local;
    ++localtime_calls;
    tzset();
    return localtime_r(when, &local);
}

int gettimeofday(timeval *out, void * /*zone*/) noexcept {
    *out = now();
    return 0;
}
