// A VSAN has a segment from its first route of any table to its last; ports are counted by the routes that use them.
#include "rib/hardware/hardware.h"

#include "rib_codes.h"
#include "rib_mem.h"

#include <array>
#include <cstdio>
#include <new>

namespace ribkit::rib {

uint32_t port_counts::add(std::span<const uint32_t> interfaces) {
    size_t done = 0;
    try {
        for (; done < interfaces.size(); done++) {
            uses_[interfaces[done]]++;
        }
    } catch (const std::bad_alloc &) {
        remove(interfaces.first(done));
        return RIB_OUT_OF_MEMORY;
    }
    return RIB_OK;
}

void port_counts::remove(std::span<const uint32_t> interfaces) {
    for (const uint32_t if_index : interfaces) {
        const auto found = uses_.find(if_index);
        if (--found->second == 0) {
            uses_.erase(found);
        }
    }
}

void port_counts::show() const {
    std::array<char, 32> label{};
    for (auto next = uses_.begin(); next != uses_.end();) {
        const uint32_t group = next->first >> 8;
        std::array<uint8_t, 32> members{};
        for (; next != uses_.end() && next->first >> 8 == group; ++next) {
            bmap_set(members.data(), members.size() - 1, next->first & 0xff);
        }
        std::snprintf(label.data(), label.size(), "0x%06xNN", group);
        bmap_show(members.data(), members.size(), label.data());
    }
}

uint32_t hardware::enter(uint32_t vsan, vsan_use *&made) {
    try {
        made = &vsans_.try_emplace(vsan).first->second;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    const uint32_t result = positions.take_segment(made->segment);
    if (result != RIB_OK) {
        vsans_.erase(vsan);
        made = nullptr;
    }
    return result;
}

void hardware::leave(uint32_t vsan) {
    const auto found = vsans_.find(vsan);
    if (found != vsans_.end() && found->second.is_empty()) {
        positions.give_back_segment(found->second.segment);
        vsans_.erase(found);
    }
}

vsan_use *hardware::find(uint32_t vsan) {
    const auto found = vsans_.find(vsan);
    return found == vsans_.end() ? nullptr : &found->second;
}

uint32_t hardware::places() const {
    uint32_t used = 0;
    for (const auto &[id, vsan] : vsans_) {
        used += positions.used(vsan.segment);
    }
    return used;
}

void hardware::show() const {
    std::array<char, 32> label{};
    std::puts("\nPath units: buddy allocator");
    paths.show();
    std::puts("\nHardware positions: a segment for each VSAN");
    positions.show();
    std::puts("\nDomains reached, by segment and VSAN");
    for (const auto &[id, vsan] : vsans_) {
        std::snprintf(label.data(), label.size(), "%u: VSAN %u", vsan.segment, id);
        vsan.domains.show(label.data());
    }
    std::puts("\nPorts in use, by interface index");
    ports.show();
}

} // namespace ribkit::rib
