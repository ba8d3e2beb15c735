// Blocks of units come from the buddy allocator, which takes the lowest that fit: the table stays short.
#include "tools/path_space.h"

#include "rib_codes.h"

#include <algorithm>
#include <array>
#include <new>

namespace ribkit {

path_space::path_space(uint32_t units) : blocks_(bud_create(units)) {
    if (blocks_ == nullptr) {
        throw std::bad_alloc();
    }
}

uint32_t path_space::take(uint32_t hops, uint32_t &path) {
    if (hops == 0) {
        return RIB_OK;
    }
    const uint32_t result = bud_alloc(blocks_, hops, &path);
    if (result == RIB_OK && units_.size() < size_t{path} + hops) {
        units_.resize(size_t{path} + hops);
    }
    return result;
}

uint32_t path_space::give_back(uint32_t hops, uint32_t path) {
    return hops == 0 ? RIB_OK : bud_free(blocks_, hops, path);
}

void path_space::write(uint32_t path, std::span<const next_hop> hops) {
    if (!hops.empty()) {
        std::copy(hops.begin(), hops.end(), units_.begin() + path);
    }
}

std::span<const next_hop> path_space::read(uint32_t path, uint32_t hops) const {
    return hops == 0 ? std::span<const next_hop>() : std::span(units_).subspan(path, hops);
}

uint32_t path_space::used() const {
    std::array<uint32_t, BUD_SIZES> blocks{};
    bud_used_count(blocks_, blocks.data());
    uint32_t units = 0;
    for (uint32_t i = 0; i < BUD_SIZES; i++) {
        units += blocks[i] * (i + 1);
    }
    return units;
}

} // namespace ribkit
