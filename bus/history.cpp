// A record of the history is a subtype and a text.
#include "bus/history.h"

#include "yelk.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace ribkit::bus {

namespace {

constexpr uint32_t event_id = 0x740000; ///< beside that of the wrappers
constexpr uint32_t event_subtype = 1;

struct event {
    uint32_t subtype = event_subtype;
    std::array<char, 160> text{};
};

} // namespace

void note_in_history(const std::string &line) noexcept {
    if (yelk_hist_event_subtype_check(event_id, event_subtype) != 0) {
        return;
    }
    event said;
    const size_t length = std::min(line.size(), said.text.size() - 1);
    std::memcpy(said.text.data(), line.data(), length);
    yelk_hist_event(event_id, static_cast<uint32_t>(sizeof said.subtype + length + 1), &said);
}

} // namespace ribkit::bus
