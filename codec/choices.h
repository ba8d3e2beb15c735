// What stands in a message is decided by one of its words in three messages: the cases as data, which the compiler
// compares with what converters and checks do.
#pragma once

#include "codec/messages/info.h"

#include <span>

namespace ribkit::codec {

enum class condition : uint8_t { any_bit, equal, otherwise };

struct choice_case {
    condition when;
    uint32_t operand;
    const layout *chosen;

    [[nodiscard]] constexpr bool holds(uint32_t word) const {
        return when == condition::any_bit ? (word & operand) != 0 : when == condition::otherwise || word == operand;
    }
};

/// The first case that holds is what is there; where none does, nothing is.
struct choice {
    const char *name;
    uint16_t offset;
    uint16_t by; // offset of the word that decides
    count_of count;
    std::span<const choice_case> cases;

    /// How long is what stands there; 0 where no case holds.
    [[nodiscard]] constexpr uint32_t size_for(uint32_t word) const {
        for (const choice_case &c : cases) {
            if (c.holds(word)) {
                return c.chosen->size;
            }
        }
        return 0;
    }
};

inline constexpr choice_case query_key_cases[] = {{condition::any_bit, 0x1111, &wire::verf_fcl_query},
                                                  {condition::any_bit, 0x2222, &wire::verf_fcm},
                                                  {condition::otherwise, 0, &wire::verf_fcu}};
inline constexpr choice_case key_cases[] = {{condition::any_bit, 0x1111, &wire::verf_fcl},
                                            {condition::any_bit, 0x2222, &wire::verf_fcm},
                                            {condition::otherwise, 0, &wire::verf_fcu}};
inline constexpr choice_case body_cases[] = {{condition::equal, 1, &wire::in_ha}, {condition::equal, 2, &wire::in_mem}};

inline constexpr choice verf_query_key{
    "key", wire::verf_query.at("key"), wire::verf_query.at("type"), {}, query_key_cases};
inline constexpr choice verf_info_keys{"key", wire::verf_info.size, wire::verf_info.at("type"),
                                       in::word(wire::verf_info.at("n_key")), key_cases};
inline constexpr choice in_info_body{"body", wire::in_info.size, wire::in_info.at("kind"), {}, body_cases};

constexpr bool keys_are_chosen_as_converted() {
    for (uint32_t bit = 0; bit < 32; ++bit) {
        for (const uint32_t type : {uint32_t{1} << bit, (uint32_t{1} << bit) - 1, ~(uint32_t{1} << bit)}) {
            if (verf_info_keys.size_for(type) != wire::size_of_key(type) ||
                verf_query_key.size_for(type) != wire::size_of_key(type)) {
                return false;
            }
        }
    }
    return true;
}

constexpr bool bodies_are_chosen_as_converted() {
    for (const uint32_t kind : {0U, 1U, 2U, 3U, 4U, 0x10001U, ~0U}) {
        if (in_info_body.size_for(kind) != wire::size_of_body(kind)) {
            return false;
        }
    }
    return true;
}

static_assert(keys_are_chosen_as_converted() && bodies_are_chosen_as_converted());

} // namespace ribkit::codec
