// Times, interface names and column widths as text: what every trace and display line is stamped and padded with.
#include "diag/compose.h"
#include "if_index.h"
#include "rib_text.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/time.h>

using ribkit::diag::put_char;

namespace {

constexpr int widest_column = 40;
constexpr size_t calendar_text = 25; // characters, the newline included
constexpr uint8_t last_known_type = 80;

char digit(int value) { return static_cast<char>('0' + value); }

/// Three letters of `names`, and a blank.
char *put_name(char *to, const char *names, int which) {
    std::memcpy(to, names + ptrdiff_t{3} * which, 3);
    return put_char(to + 3, ' ');
}

constexpr uint32_t not_looked = 0xffffffff;
std::atomic<uint32_t> zone_looked_at = not_looked; // the second, where no TZ names the zone

/// The calendar of a time as localtime tells it, and as cheaply as can be. Where TZ names the zone, the library sees at
/// every call whether it is still the same. Where nothing names it, the library would look at the zone's file at every
/// call, which costs more than a whole row of a display: here it does so once a second.
const tm *local_time(time_t when, tm &room) {
    if (std::getenv("TZ") != nullptr) {
        zone_looked_at.store(not_looked, std::memory_order_relaxed);
        return localtime(&when);
    }
    const auto now = static_cast<uint32_t>(time(nullptr));
    if (zone_looked_at.load(std::memory_order_relaxed) == now) {
        return localtime_r(&when, &room);
    }
    const tm *local = localtime(&when);
    zone_looked_at.store(now, std::memory_order_relaxed);
    return local;
}

void cut_newline(char *str) {
    const size_t length = std::strlen(str);
    if (length != 0 && str[length - 1] == '\n') {
        str[length - 1] = '\0';
    }
}

char *put_two(char *to, int value) { return put_char(put_char(to, digit(value / 10)), digit(value % 10)); }

/// "Tue Nov 14 22:13:20 2023"
char *put_calendar(char *to, const tm &local) {
    const int year = local.tm_year + 1900;
    to = put_name(to, "SunMonTueWedThuFriSat", local.tm_wday);
    to = put_name(to, "JanFebMarAprMayJunJulAugSepOctNovDec", local.tm_mon);
    to = put_char(put_two(to, local.tm_mday), ' ');
    if (local.tm_mday < 10) {
        to[-3] = ' ';
    }
    to = put_char(put_two(to, local.tm_hour), ':');
    to = put_char(put_two(to, local.tm_min), ':');
    to = put_char(put_two(to, local.tm_sec), ' ');
    return put_two(put_two(to, year / 100), year % 100);
}

/// Years of fewer or more digits, as the C library writes them; cut to the buffer.
void put_strange_calendar(char *str, const tm &local) {
    const char *calendar = asctime(&local);
    const size_t length = calendar != nullptr ? strnlen(calendar, calendar_text) : 0;
    if (length != 0) {
        std::memcpy(str, calendar, length);
    }
    str[length] = '\0';
    cut_newline(str);
}

} // namespace

// The hour and the minute are left out: the line tells a moment within a burst of messages.
int rib_time_str(char *str) {
    timeval now{};
    gettimeofday(&now, nullptr);
    const auto micro = static_cast<unsigned>(now.tv_usec);
    return std::sprintf(str, "%03u:%03u:%03u", static_cast<unsigned>(now.tv_sec % 60), micro / 1000, micro % 1000);
}

int rib_time_stamp_str(char *str) {
    tm room{};
    const tm *local = local_time(time(nullptr), room);
    return std::sprintf(str, "%02u:%02u:%02u", static_cast<unsigned>(local->tm_hour),
                        static_cast<unsigned>(local->tm_min), static_cast<unsigned>(local->tm_sec));
}

// The text of ctime, of which a display needs one for every row: written by hand where the year has four digits.
void rib_time_to_str(const time_t *t, char *str) {
    tm room{};
    const tm *local = local_time(*t, room);
    if (local == nullptr) {
        *str = '\0';
        return;
    }
    if (local->tm_year >= 1000 - 1900 && local->tm_year <= 9999 - 1900) {
        *put_calendar(str, *local) = '\0';
    } else {
        put_strange_calendar(str, *local);
    }
}

void rib_if_index_to_str(uint32_t if_index, char *str) {
    if (if_index == 0) {
        std::strcpy(str, "null intf");
        return;
    }
    uint8_t type = 0;
    if_index_get_type(if_index, &type); // the type alone decides, whatever the service answers
    if (type > last_known_type) {
        std::sprintf(str, "%08xh??", if_index);
        return;
    }
    sprintf_if_index(str, if_index);
    cut_newline(str);
}

void rib_str_len_set(char *str, int len) {
    const int width = len < widest_column ? len : widest_column;
    int kept = 0;
    while (kept < width && str[kept] != '\0') {
        ++kept;
    }
    for (; kept < width; ++kept) {
        str[kept] = ' ';
    }
    str[width] = '\0';
}
