// The C library's clock as the tests see it: time() and gettimeofday() of this program can be stopped, the
// time zone can be another, and calls of localtime() are counted.
#pragma once

#include <ctime>
#include <string>

namespace ribkit::testing {

/// While it lives, the time of day stands still at `seconds` and `microseconds` since the epoch.
class stopped_clock {
  public:
    explicit stopped_clock(time_t seconds, long microseconds = 0);
    stopped_clock(const stopped_clock &) = delete;
    stopped_clock &operator=(const stopped_clock &) = delete;
    ~stopped_clock();
};

/// While it lives, the local time zone is `zone`, in the form of the variable TZ ("UTC0",
/// "CET-1CEST,M3.5.0,M10.5.0/3").
class local_zone {
  public:
    explicit local_zone(const std::string &zone);
    local_zone(const local_zone &) = delete;
    local_zone &operator=(const local_zone &) = delete;
    ~local_zone();

  private:
    bool was_set_;
    std::string before_;
};

/// How often localtime() was called, which looks at the zone's file where no TZ names the zone.
int zone_looks();

} // namespace ribkit::testing
