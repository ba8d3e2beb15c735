// Everything that a route needs is obtained before anything of it counts; where one piece is missing, the others go
// back.
#include "tools/route_store.h"

#include "rib_codes.h"

#include <array>
#include <cstdio>
#include <new>

namespace ribkit {

namespace {

constexpr uint32_t records_a_chunk = 128;

uint32_t first_failure(uint32_t first, uint32_t second) { return first != RIB_OK ? first : second; }

uint8_t domain_of(const destination &to) { return static_cast<uint8_t>(to.fcid >> 16); }

uint8_t port_of(uint32_t if_index) { return static_cast<uint8_t>(if_index); }

} // namespace

route_store::route_store(const rib_spaces &spaces, bool trace)
    : spaces_(spaces), records_(pool_create(records_a_chunk, sizeof(route_record))), paths_(spaces.path_units),
      positions_(spaces, trace) {
    if (records_ == nullptr) {
        throw std::bad_alloc();
    }
}

uint32_t route_store::add(uint32_t vsan, const destination &to, uint32_t uuid, const route &what, route_record *&made) {
    uint32_t result = enter(vsan);
    if (result != RIB_OK) {
        return result;
    }
    made = static_cast<route_record *>(pool_alloc(records_));
    if (made == nullptr) {
        leave(vsan);
        return RIB_OUT_OF_MEMORY;
    }
    *made = {vsan, to, uuid, what.metric, what.flag, 0, 0, no_position};
    result = equip(*made, static_cast<uint32_t>(what.hops.size()));
    if (result != RIB_OK) {
        strip(*made);
        return result;
    }
    paths_.write(made->path, what.hops);
    add_ports(*made);
    vsan_store &owner = vsans_.at(vsan);
    owner.domains.add(domain_of(to));
    owner.routes++;
    return RIB_OK;
}

uint32_t route_store::replace(route_record &record, uint32_t uuid, const route &what) {
    const auto hops = static_cast<uint32_t>(what.hops.size());
    uint32_t path = record.path;
    uint32_t result = RIB_OK;
    if (hops != record.hops) {
        result = paths_.take(hops, path);
        if (result != RIB_OK) {
            return result;
        }
    }
    remove_ports(record);
    if (hops != record.hops) {
        result = paths_.give_back(record.hops, record.path);
    }
    paths_.write(path, what.hops);
    record = {record.vsan, record.to, uuid, what.metric, what.flag, hops, path, record.position};
    add_ports(record);
    return result;
}

uint32_t route_store::remove(route_record &record) {
    remove_ports(record);
    vsan_store &owner = vsans_.at(record.vsan);
    owner.domains.remove(domain_of(record.to));
    owner.routes--;
    return strip(record);
}

/// The VSAN has a segment from its first route to its last.
uint32_t route_store::enter(uint32_t vsan) {
    if (vsans_.contains(vsan)) {
        return RIB_OK;
    }
    uint32_t segment = 0;
    const uint32_t result = positions_.take_segment(segment);
    if (result == RIB_OK) {
        vsans_[vsan].segment = segment;
    }
    return result;
}

void route_store::leave(uint32_t vsan) {
    const auto found = vsans_.find(vsan);
    if (found->second.routes == 0) {
        positions_.give_back_segment(found->second.segment);
        vsans_.erase(found);
    }
}

/// Path units and a position, or as much of that as there is.
uint32_t route_store::equip(route_record &record, uint32_t hops) {
    const uint32_t result = paths_.take(hops, record.path);
    if (result != RIB_OK) {
        return result;
    }
    record.hops = hops;
    return positions_.take(vsans_.at(record.vsan).segment, record);
}

/// Gives back what the record has, then the record.
uint32_t route_store::strip(route_record &record) {
    const uint32_t vsan = record.vsan;
    uint32_t result = paths_.give_back(record.hops, record.path);
    if (record.position != no_position) {
        result = first_failure(result, positions_.give_back(vsans_.at(vsan).segment, record));
    }
    result = first_failure(result, pool_free(records_, &record));
    leave(vsan);
    return result;
}

void route_store::add_ports(const route_record &record) {
    for (const next_hop &hop : hops(record)) {
        ports_[hop.if_index >> 8].add(port_of(hop.if_index));
    }
}

void route_store::remove_ports(const route_record &record) {
    for (const next_hop &hop : hops(record)) {
        const auto found = ports_.find(hop.if_index >> 8);
        found->second.remove(port_of(hop.if_index));
        if (found->second.count() == 0) {
            ports_.erase(found);
        }
    }
}

bool route_store::uses_port(uint32_t if_index) const {
    const auto found = ports_.find(if_index >> 8);
    return found != ports_.end() && found->second.has(port_of(if_index));
}

uint32_t route_store::ports() const {
    uint32_t count = 0;
    for (const auto &[group, used] : ports_) {
        count += used.count();
    }
    return count;
}

rib_memory route_store::memory() const {
    rib_memory now{0, paths_.used(), 0, spaces_};
    pool_count(records_, &now.routes);
    for (const auto &[id, vsan] : vsans_) {
        now.positions += positions_.used(vsan.segment);
    }
    return now;
}

void route_store::show() const {
    std::array<char, 32> label{};
    std::puts("\nRoutes: pool");
    pool_show(records_);
    std::puts("\nPath units: buddy allocator");
    paths_.show();
    std::puts("\nHardware positions: a segment for each VSAN");
    positions_.show();
    std::puts("\nDomains reached, by segment and VSAN");
    for (const auto &[id, vsan] : vsans_) {
        std::snprintf(label.data(), label.size(), "%u: VSAN %u", vsan.segment, id);
        vsan.domains.show(label.data());
    }
    std::puts("\nPorts in use, by interface index");
    for (const auto &[group, used] : ports_) {
        std::snprintf(label.data(), label.size(), "0x%06xNN", group);
        used.show(label.data());
    }
}

} // namespace ribkit
