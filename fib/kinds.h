// The kinds of entries that a module has. An entry is some words of the same meaning in each, and words of any number
// behind them: ways out of the switch, or the interfaces of a group.
#pragma once

#include "model/fib.h"
#include "rib_codes.h"

#include <array>
#include <cstdint>
#include <span>

namespace ribkit::fib {

/// A kind, as table<Kind> needs it: its types, and what is different from the other kinds.
struct unicast {
    using key = model::route_key;
    using values = model::fib_unicast;

    /// All that an entry says but its words.
    struct fixed {
        uint32_t kind;
        std::array<uint8_t, model::fib_carried> carried;
        uint32_t metric;
        uint32_t flag;

        bool operator==(const fixed &) const = default;
    };

    static key first_of(uint32_t vsan) { return {vsan, {0, 0}}; }
    static fixed fixed_of(const values &what) { return {what.kind, what.carried, what.metric, what.flag}; }
    static std::span<const uint32_t> words_of(const values &what) { return what.ways; }
    static values read(const fixed &what, std::span<const uint32_t> words) {
        return {what.kind, what.carried, what.metric, what.flag, words};
    }
    /// Whether there can be such an entry.
    static bool is_sound(const key &where, const values &what);
};

struct multicast {
    using key = model::multicast_key;
    using values = model::fib_multicast;

    struct fixed {
        bool operator==(const fixed &) const = default;
    };

    static key first_of(uint32_t vsan) { return {vsan, {0, 0}}; }
    static fixed fixed_of(const values & /*what*/) { return {}; }
    static std::span<const uint32_t> words_of(const values &what) { return what.members; }
    static values read(const fixed & /*what*/, std::span<const uint32_t> words) { return words; }
    static bool is_sound(const key & /*where*/, const values & /*what*/) { return true; }
};

struct label {
    using key = model::label_key;
    using values = model::fib_label;
    using fixed = multicast::fixed;

    static key first_of(uint32_t vsan) { return {.vsan = vsan}; }
    static fixed fixed_of(const values & /*what*/) { return {}; }
    static std::span<const uint32_t> words_of(const values &what) { return what.ways; }
    static values read(const fixed & /*what*/, std::span<const uint32_t> words) { return {words}; }
    static bool is_sound(const key &where, const values &what);
};

} // namespace ribkit::fib
