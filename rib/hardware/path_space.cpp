// Blocks of units come from the buddy allocator, which takes the lowest that fit: the table stays short.
#include "rib/hardware/path_space.h"

#include "rib_codes.h"

#include <algorithm>
#include <array>
#include <new>

namespace ribkit::rib {

path_space::path_space(uint32_t units) : blocks_(bud_create(units)) {
    if (blocks_ == nullptr) {
        throw std::bad_alloc();
    }
}

uint32_t path_space::take(uint32_t hops, uint32_t &path) {
    if (hops == 0) {
        return RIB_OK;
    }
    uint32_t result = bud_alloc(blocks_, hops, &path);
    if (result == RIB_OK) {
        result = hold(hops, path);
        if (result != RIB_OK) {
            bud_free(blocks_, hops, path);
        }
    }
    return result;
}

uint32_t path_space::give_back(uint32_t hops, uint32_t path) {
    if (hops == 0) {
        return RIB_OK;
    }
    let_go(hops, path);
    return bud_free(blocks_, hops, path);
}

uint32_t path_space::reserve(uint32_t units, uint32_t *blocks) {
    for (uint32_t done = 0; done < units; done += unit_block) {
        const uint32_t result = bud_alloc(blocks_, std::min(units - done, unit_block), blocks + done / unit_block);
        if (result != RIB_OK) {
            release(done, blocks);
            return result;
        }
    }
    return RIB_OK;
}

uint32_t path_space::release(uint32_t units, const uint32_t *blocks) {
    uint32_t result = RIB_OK;
    for (uint32_t done = 0; done < units; done += unit_block) {
        const uint32_t one = bud_free(blocks_, std::min(units - done, unit_block), blocks[done / unit_block]);
        result = result == RIB_OK ? one : result;
    }
    return result;
}

uint32_t path_space::hold(uint32_t hops, uint32_t path) {
    const size_t number = path / unit_block;
    try {
        if (number >= chunks_.size()) {
            chunks_.resize(number + 1);
        }
        if (chunks_[number] == nullptr) {
            chunks_[number] = std::make_unique<chunk>();
        }
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    chunks_[number]->used += hops;
    return RIB_OK;
}

void path_space::let_go(uint32_t hops, uint32_t path) {
    std::unique_ptr<chunk> &left = chunks_[path / unit_block];
    left->used -= hops;
    if (left->used == 0) {
        left.reset();
    }
    while (!chunks_.empty() && chunks_.back() == nullptr) {
        chunks_.pop_back();
    }
    if (chunks_.empty()) {
        chunks_.shrink_to_fit();
    }
}

void path_space::write(uint32_t path, std::span<const model::next_hop> hops) {
    if (!hops.empty()) {
        std::copy(hops.begin(), hops.end(), chunks_[path / unit_block]->units.begin() + path % unit_block);
    }
}

std::span<const model::next_hop> path_space::read(uint32_t path, uint32_t hops) const {
    return hops == 0 ? std::span<const model::next_hop>()
                     : std::span(chunks_[path / unit_block]->units).subspan(path % unit_block, hops);
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

} // namespace ribkit::rib
