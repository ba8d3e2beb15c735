// Everything that a route needs is obtained before anything of it counts; where one piece is missing, the others go
// back.
#include "rib/route_store.h"

#include "rib_codes.h"

#include <array>
#include <cstdio>
#include <new>

namespace ribkit::rib {

namespace {

constexpr uint32_t records_a_chunk = 128;

uint32_t first_failure(uint32_t first, uint32_t second) { return first != RIB_OK ? first : second; }

uint8_t domain_of(const model::destination &to) { return static_cast<uint8_t>(to.fcid >> 16); }

/// The hops of a record for which there is a path, so that there are no more than a block of units.
class path_hops {
  public:
    explicit path_hops(protocol::record_view record) {
        for (const auto hop : record.list<"hop">()) {
            all_[count_++] = {hop.get<"intf">(), hop.get<"domain">()};
        }
    }
    [[nodiscard]] std::span<const model::next_hop> all() const { return std::span(all_).first(count_); }

  private:
    std::array<model::next_hop, unit_block> all_;
    size_t count_ = 0;
};

} // namespace

route_store::route_store(const rib_spaces &spaces, const move_display &shown)
    : spaces_(spaces), records_(pool_create(records_a_chunk, sizeof(route_record))), paths_(spaces.path_units),
      positions_(spaces, shown) {
    if (records_ == nullptr) {
        throw std::bad_alloc();
    }
}

uint32_t route_store::add(const model::route_key &key, uint32_t uuid, protocol::record_view what, route_record *&made) {
    const auto &[vsan, to] = key;
    uint32_t result = enter(vsan);
    if (result != RIB_OK) {
        return result;
    }
    made = static_cast<route_record *>(pool_alloc(records_.get()));
    if (made == nullptr) {
        leave(vsan);
        return RIB_OUT_OF_MEMORY;
    }
    *made = {vsan, to, uuid, what.get<"metric">(), what.get<"flag">(), 0, 0, no_position};
    result = equip(*made, what);
    if (result != RIB_OK) {
        strip(*made);
        return result;
    }
    vsan_store &owner = vsans_.at(vsan);
    owner.domains.add(domain_of(to));
    owner.routes++;
    return RIB_OK;
}

uint32_t route_store::replace(route_record &record, uint32_t uuid, protocol::record_view what) {
    const uint32_t count = what.get<"n_hop">();
    uint32_t path = record.path;
    uint32_t result = count == record.hops ? RIB_OK : paths_.take(count, path);
    if (result != RIB_OK) {
        return result;
    }
    const path_hops ways(what);
    result = add_ports(ways.all());
    if (result != RIB_OK) {
        if (count != record.hops) {
            paths_.give_back(count, path);
        }
        return result;
    }
    remove_ports(hops(record));
    if (count != record.hops) {
        result = paths_.give_back(record.hops, record.path);
    }
    paths_.write(path, ways.all());
    record = {record.vsan, record.to, uuid, what.get<"metric">(), what.get<"flag">(), count, path, record.position};
    return result;
}

uint32_t route_store::remove(route_record &record) {
    remove_ports(hops(record));
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
    try {
        vsans_.try_emplace(vsan);
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    const uint32_t result = positions_.take_segment(vsans_.at(vsan).segment);
    if (result != RIB_OK) {
        vsans_.erase(vsan);
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

/// Path units, ports and a position, or as much of that as there is.
uint32_t route_store::equip(route_record &record, protocol::record_view what) {
    const uint32_t count = what.get<"n_hop">();
    uint32_t result = paths_.take(count, record.path);
    if (result != RIB_OK) {
        return result;
    }
    const path_hops ways(what);
    record.hops = count;
    paths_.write(record.path, ways.all());
    result = positions_.take(vsans_.at(record.vsan).segment, record);
    return result == RIB_OK ? add_ports(ways.all()) : result;
}

/// Gives back what the record has, then the record.
uint32_t route_store::strip(route_record &record) {
    const uint32_t vsan = record.vsan;
    uint32_t result = paths_.give_back(record.hops, record.path);
    if (record.position != no_position) {
        result = first_failure(result, positions_.give_back(vsans_.at(vsan).segment, record));
    }
    result = first_failure(result, pool_free(records_.get(), &record));
    leave(vsan);
    return result;
}

/// All of them, or none.
uint32_t route_store::add_ports(std::span<const model::next_hop> hops) {
    size_t done = 0;
    try {
        for (; done < hops.size(); done++) {
            ports_[hops[done].if_index]++;
        }
    } catch (const std::bad_alloc &) {
        remove_ports(hops.first(done));
        return RIB_OUT_OF_MEMORY;
    }
    return RIB_OK;
}

void route_store::remove_ports(std::span<const model::next_hop> hops) {
    for (const model::next_hop &hop : hops) {
        const auto found = ports_.find(hop.if_index);
        if (--found->second == 0) {
            ports_.erase(found);
        }
    }
}

bool route_store::uses_port(uint32_t if_index) const { return ports_.contains(if_index); }

rib_memory route_store::memory() const {
    rib_memory now{0, paths_.used(), 0, spaces_};
    pool_count(records_.get(), &now.routes);
    for (const auto &[id, vsan] : vsans_) {
        now.positions += positions_.used(vsan.segment);
    }
    return now;
}

void route_store::show() const {
    std::array<char, 32> label{};
    std::puts("\nRoutes: pool");
    pool_show(records_.get());
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
    show_ports();
}

/// Bitmaps of the last byte, which is the port's.
void route_store::show_ports() const {
    std::array<char, 32> label{};
    for (auto next = ports_.begin(); next != ports_.end();) {
        const uint32_t group = next->first >> 8;
        std::array<uint8_t, 32> members{};
        for (; next != ports_.end() && next->first >> 8 == group; ++next) {
            bmap_set(members.data(), members.size() - 1, next->first & 0xff);
        }
        std::snprintf(label.data(), label.size(), "0x%06xNN", group);
        bmap_show(members.data(), members.size(), label.data());
    }
}

} // namespace ribkit::rib
