// The messages that the benchmarks convert, in host form.
#pragma once

#include "codec/messages/fib.h"
#include "codec/messages/route.h"
#include "codec/view.h"

#include <cstdint>
#include <random>
#include <vector>

namespace ribkit::bench {

/// Aligned for the peers, which lay structures over it; longer than the message by a lane.
struct sample {
    std::vector<uint64_t> room;
    size_t size = 0;
    explicit sample(size_t bytes) : room(bytes / 8 + 8), size(bytes) {}
    [[nodiscard]] uint8_t *data() { return reinterpret_cast<uint8_t *>(room.data()); }
    [[nodiscard]] uint32_t *words() { return reinterpret_cast<uint32_t *>(room.data()); }
    /// The message, to set what must not be left to chance.
    template <const codec::layout &L> [[nodiscard]] codec::writable_view<L, std::endian::native> as() {
        return codec::writable_view<L, std::endian::native>(room.data());
    }
};

/// So many bytes of which only the seed is known.
inline sample random_sample(size_t bytes, uint32_t seed) {
    sample message(bytes);
    std::mt19937 random(seed);
    for (size_t i = 0; i < bytes / 4; ++i) {
        message.words()[i] = static_cast<uint32_t>(random());
    }
    return message;
}

/// A unicast update of `routes` records; the hops of each come from `hops(i)`.
template <class Hops> sample fcurt_update(uint32_t routes, Hops &&hops) {
    size_t size = wire::fcurt_update.size;
    for (uint32_t i = 0; i < routes; ++i) {
        size += wire::fcurt.size + wire::fcurt_hop.size * hops(i);
    }
    sample update = random_sample(size, 1);
    const auto message = update.as<wire::fcurt_update>();
    message.set<"n_version">(0U).set<"n_route">(routes);
    uint32_t i = 0;
    for (const auto route : message.list<"route">()) {
        route.set<"n_hop">(hops(i++));
    }
    return update;
}

/// A label route with 16 interfaces of 3 labels, in host form.
inline sample label_route() {
    constexpr uint32_t interfaces = 16;
    constexpr uint32_t labels = 3;
    sample route =
        random_sample(wire::fclrt.size + interfaces * (wire::fclrt_intf.size + labels * wire::label.size), 4);
    const auto message = route.as<wire::fclrt>();
    message.set<"n_match">(2U).set<"n_src">(16U).set<"n_intf">(interfaces);
    for (const auto intf : message.list<"intf">()) {
        intf.set<"ctrl">(0U).set<"ctrl", "push">(labels);
    }
    return route;
}

/// A unicast path with 16 paths of 3 hops, in host form.
inline sample unicast_path() {
    sample path = random_sample(wire::fcu_path.size, 5);
    const auto message = path.as<wire::fcu_path>();
    message.set<"n_path">(16U);
    for (const auto way : message.list<"path">()) {
        way.set<"path">(0U).set<"path", "n_hop">(3);
    }
    return path;
}

} // namespace ribkit::bench
