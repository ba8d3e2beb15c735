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
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
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
    alignas(history) static std::byte room[sizeof(history)];
    static auto &kept = *new (room) history;
    return kept;
}

std::atomic<uint32_t> debug_level{0};

template <typename... Values> void record_line(const char *format, Values... values) {
    std::array<char, 1200> line{};
    std::snprintf(line.data(), line.size(), format, values...);
    std::string_view text{line.data()};
    while (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    record_event(text);
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

void ribkit::platform::record_event(std::string_view text) noexcept {
    history &kept = past();
    const auto now = clock_now();
    const std::scoped_lock lock{kept.lock};
    ++kept.recorded;
    event &latest = kept.ring[kept.recorded % kept.ring.size()];
    latest.when = now;
    try {
        latest.text = text;
    } catch (const std::bad_alloc &) {
        latest.text = text.substr(0, latest.text.capacity());
    }
}

void yelk_hist_qip_event(uint32_t kind, const struct qip_ref *ref, uint32_t /*unused*/, uint32_t /*unused*/) {
    const message *letter = held(ref);
    if (letter == nullptr) {
        record_event(kind_text(kind));
    } else {
        record_line("%s token %" PRIu32 " size %" PRIu32, kind_text(kind), letter->token, letter->size);
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
    const bool has_text = length > sizeof subtype;
    const char *said = has_text ? static_cast<const char *>(record_bytes) + sizeof subtype : "";
    const size_t size = has_text ? strnlen(said, std::min<size_t>(length - sizeof subtype, most_text)) : 0;
    record_line("event %#" PRIx32 " subtype %" PRIu32 "%s%.*s", event_id, subtype, has_text ? ": " : "",
                static_cast<int>(size), said);
}

void yelk_hist_subtype_set(uint32_t event_id, uint32_t subtype, int on) {
    history &kept = past();
    const std::scoped_lock lock{kept.lock};
    if (on != 0) {
        kept.off.erase({event_id, subtype});
    } else {
        try {
            kept.off.insert({event_id, subtype});
        } catch (const std::bad_alloc &) {
            return; // no word from this function: the events go on being recorded
        }
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
