// The debug history: the latest events in a ring, kept cheaply all the time and printed when somebody asks what
// happened; and the debug print, silent until a level is set.
#include "platform/history.h"

#include "platform/clock.h"
#include "platform/references.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <set>
#include <string>
#include <utility>

const char yelk_dbg_modname[] = "ribkit";

namespace {

using namespace ribkit::platform;

struct event {
    time_point when;
    std::string text;
};

struct history {
    std::mutex lock;
    std::array<event, 1024> ring;
    uint32_t recorded = 0; // the latest event's number; event N stands at N modulo the ring's size
    std::set<std::pair<uint32_t, uint32_t>> off;
};

// Never destroyed: threads may still record when the process ends.
history &past() {
    static auto &kept = *new history;
    return kept;
}

std::atomic<uint32_t> debug_level{0};

template <typename... Values> std::string printed(const char *format, Values... values) {
    std::array<char, 96> line{};
    std::snprintf(line.data(), line.size(), format, values...);
    return line.data();
}

const char *kind_text(uint32_t kind) {
    switch (kind) {
    case YELK_QIP_RECEIVED:
        return "received";
    case YELK_QIP_SENT:
        return "sent";
    default:
        return "message event";
    }
}

} // namespace

void ribkit::platform::record_event(std::string text) {
    history &kept = past();
    const auto now = clock_now();
    const std::scoped_lock lock{kept.lock};
    ++kept.recorded;
    kept.ring[kept.recorded % kept.ring.size()] = {now, std::move(text)};
}

void yelk_hist_qip_event(uint32_t kind, const struct qip_ref *ref, uint32_t /*unused*/, uint32_t /*unused*/) {
    const message *letter = held(ref);
    if (letter == nullptr) {
        record_event(kind_text(kind));
    } else {
        record_event(printed("%s token %" PRIu32 " size %" PRIu32, kind_text(kind), letter->token, letter->size));
    }
}

int yelk_hist_event_subtype_check(uint32_t event_id, uint32_t subtype) {
    history &kept = past();
    const std::scoped_lock lock{kept.lock};
    return kept.off.contains({event_id, subtype}) ? 1 : 0;
}

void yelk_hist_event(uint32_t event_id, uint32_t length, const void *record_bytes) {
    constexpr uint32_t most_text = 1024;
    uint32_t subtype = 0;
    std::memcpy(&subtype, record_bytes, std::min<size_t>(length, sizeof subtype));
    if (yelk_hist_event_subtype_check(event_id, subtype) != 0) {
        return;
    }
    std::string text = printed("event %#" PRIx32 " subtype %" PRIu32, event_id, subtype);
    if (length > sizeof subtype) {
        const char *said = static_cast<const char *>(record_bytes) + sizeof subtype;
        text += ": ";
        text.append(said, strnlen(said, std::min<size_t>(length - sizeof subtype, most_text)));
    }
    while (text.ends_with('\n')) {
        text.pop_back();
    }
    record_event(std::move(text));
}

void yelk_hist_subtype_set(uint32_t event_id, uint32_t subtype, int on) {
    history &kept = past();
    const std::scoped_lock lock{kept.lock};
    if (on != 0) {
        kept.off.erase({event_id, subtype});
    } else {
        kept.off.insert({event_id, subtype});
    }
}

void yelk_hist_print(void) {
    history &kept = past();
    const auto now = clock_now();
    const std::scoped_lock lock{kept.lock};
    const auto size = static_cast<uint32_t>(kept.ring.size());
    for (uint32_t number = kept.recorded > size ? kept.recorded - size + 1 : 1; number <= kept.recorded; ++number) {
        const event &one = kept.ring[number % size];
        const std::chrono::duration<double> age = now - one.when;
        std::printf("%6" PRIu32 " %10.6f %s\n", number, std::max(age.count(), 0.0), one.text.c_str());
    }
}

void yelk_hist_clear(void) {
    history &kept = past();
    const std::scoped_lock lock{kept.lock};
    kept.recorded = 0;
}

void yelk_dbg_level_set(uint32_t level) { debug_level = level; }

int yelk_chk_int(uint32_t level, uint32_t /*unused*/, uint32_t /*unused*/, uint32_t /*unused*/) {
    return level != 0 && level <= debug_level ? 1 : 0;
}

int yapout(uint32_t /*unused*/, const char *modname, uint32_t /*unused*/, const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return std::printf("%s: %s", modname, text);
}
