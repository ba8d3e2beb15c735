// The messages that the benchmarks convert, in host form.
#pragma once

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
};

constexpr uint32_t update_header = 980;

/// A unicast update of `routes` records; the hops of each come from `hops(i)`.
template <class Hops> sample fcurt_update(uint32_t routes, Hops &&hops) {
    size_t size = update_header;
    for (uint32_t i = 0; i < routes; ++i) {
        size += 32 + 8 * hops(i);
    }
    sample update(size);
    std::mt19937 random(1);
    for (size_t i = 0; i < size / 4; ++i) {
        update.words()[i] = random();
    }
    update.words()[3] = 0;
    update.words()[4] = routes;
    for (uint32_t i = 0, at = update_header / 4; i < routes; ++i) {
        update.words()[at + 7] = hops(i);
        at += 8 + 2 * hops(i);
    }
    return update;
}

/// A label route with 16 interfaces of 3 labels, in host form.
inline sample label_route() {
    sample route(104 + 16 * 20);
    std::mt19937 random(4);
    for (size_t i = 0; i < route.size / 4; ++i) {
        route.words()[i] = random();
    }
    route.words()[5] = 2;
    route.words()[6] = 16;
    route.words()[7] = 16;
    for (size_t i = 0; i < 16; ++i) {
        route.words()[26 + 5 * i] = 0x00030000;
    }
    return route;
}

/// A unicast path with 16 paths of 3 hops, in host form.
inline sample unicast_path() {
    sample path(348);
    std::mt19937 random(5);
    for (size_t i = 0; i < path.size / 4; ++i) {
        path.words()[i] = random();
    }
    path.words()[6] = 16;
    for (size_t i = 0; i < 16; ++i) {
        path.words()[7 + 5 * i] = 0x00030000;
    }
    return path;
}

} // namespace ribkit::bench
