// Unicast updates put together and taken apart byte after byte, for tests: nothing here knows the layouts.
#pragma once

#include "model/routes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::testing {

struct fcurt_update {
    uint32_t uuid = 0;
    uint32_t vsan = 0;
    uint32_t oper = 0;
    std::vector<model::route_change> changes;
};

inline void append_word(std::vector<uint8_t> &bytes, uint32_t word) {
    for (const int shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<uint8_t>(word >> shift));
    }
}

inline uint32_t word_at(std::span<const uint8_t> bytes, size_t at) {
    return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

inline std::vector<uint8_t> literal_update(const fcurt_update &update) {
    std::vector<uint8_t> bytes;
    const auto routes = static_cast<uint32_t>(update.changes.size());
    for (const uint32_t word : {update.uuid, update.vsan, update.oper, 0U, routes}) {
        append_word(bytes, word);
    }
    bytes.resize(980);
    for (const auto &[action, to, what] : update.changes) {
        const auto hops = static_cast<uint32_t>(what.hops.size());
        for (const uint32_t word : {to.fcid, to.mask, 0U, 0U, action, what.metric, what.flag, hops}) {
            append_word(bytes, word);
        }
        for (const model::next_hop &hop : what.hops) {
            append_word(bytes, hop.if_index);
            append_word(bytes, hop.domain);
        }
    }
    return bytes;
}

/// Of an update without versions that is whole.
inline fcurt_update literal_contents(std::span<const uint8_t> bytes) {
    fcurt_update update{word_at(bytes, 0), word_at(bytes, 4), word_at(bytes, 8), {}};
    size_t at = 980;
    for (uint32_t left = word_at(bytes, 16); left > 0; left--) {
        model::route what{word_at(bytes, at + 20), word_at(bytes, at + 24), {}};
        const model::destination to{word_at(bytes, at), word_at(bytes, at + 4)};
        const uint32_t action = word_at(bytes, at + 16);
        const uint32_t hops = word_at(bytes, at + 28);
        at += 32;
        for (uint32_t hop = 0; hop < hops; hop++, at += 8) {
            what.hops.push_back({word_at(bytes, at), word_at(bytes, at + 4)});
        }
        update.changes.push_back({action, to, what});
    }
    return update;
}

} // namespace ribkit::testing
