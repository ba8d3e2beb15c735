// Times, interface names and column widths as text: what every trace and display line is stamped and padded with.
#include "if_index.h"
#include "rib_text.h"

#include <cstdio>
#include <cstring>
#include <sys/time.h>

namespace {

constexpr int widest_column = 40;
constexpr size_t calendar_text = 25; // characters, the newline included
constexpr uint8_t last_known_type = 80;

void cut_newline(char *str) {
    const size_t length = std::strlen(str);
    if (length != 0 && str[length - 1] == '\n') {
        str[length - 1] = '\0';
    }
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
    const time_t now = time(nullptr);
    const tm *local = localtime(&now);
    return std::sprintf(str, "%02u:%02u:%02u", static_cast<unsigned>(local->tm_hour),
                        static_cast<unsigned>(local->tm_min), static_cast<unsigned>(local->tm_sec));
}

// A year that the calendar cannot write leaves an empty text; one of five digits still fits.
void rib_time_to_str(const time_t *t, char *str) {
    const char *calendar = ctime(t);
    const size_t length = calendar != nullptr ? strnlen(calendar, calendar_text) : 0;
    std::memcpy(str, calendar, length);
    str[length] = '\0';
    cut_newline(str);
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
    if (width > 0) {
        const size_t kept = strnlen(str, static_cast<size_t>(width));
        std::memset(str + kept, ' ', static_cast<size_t>(width) - kept);
    }
    str[width] = '\0';
}
