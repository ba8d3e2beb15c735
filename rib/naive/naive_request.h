// Requests to the naive model, and what of them makes sense whatever is held.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ribkit::rib {

/// Numbers in a row: a key, what a route says, what is told about a route.
using words = std::vector<uint32_t>;

/// The order of keys: number by number. What `<` of vectors does on a big-endian machine depends on the library.
struct by_number {
    bool operator()(const words &a, const words &b) const {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
    }
};

/// The tables, in the order of the numbers that logs give them.
inline constexpr size_t naive_label = 0, naive_multicast = 1, naive_unicast = 2;

/// A record of an update, and a route without its owner. Of a table that has no metric and flag they are 0.
struct naive_record {
    uint32_t action = 0;
    words key; ///< the VSAN first; then FC ID and mask, or type, source, FC ID, mask, number of labels, two labels
    uint32_t metric = 0;
    uint32_t flag = 0;
    words carried;           ///< of a unicast route: what it carries unread; of a label route: its sources
    words ways;              ///< next hops, members, or hops with their labels
    uint32_t interfaces = 0; ///< how many ways there are
};

struct naive_request {
    size_t table;
    uint32_t uuid;
    uint32_t vsan;
    uint32_t oper;
    words versions;
    bool in_envelope;
    uint32_t now;
    std::vector<naive_record> records;
};

// What an operation asks for, with response or without.
bool updates(uint32_t oper);
bool merges(uint32_t oper);
bool removes(uint32_t oper);
bool removes_all(uint32_t oper);
bool is_about_versions(uint32_t oper);
bool is_about_states(uint32_t oper);
/// Whether records belong to it.
inline bool has_records(uint32_t oper) { return updates(oper) || merges(oper) || removes(oper); }

// What a record of a table asks for.
bool adds(size_t table, const naive_record &record);
bool deletes(size_t table, const naive_record &record);
bool changes(size_t table, const naive_record &record);
bool is_group(size_t table, const naive_record &record);

/// The action that adds a route of that key, and says of which kind it is.
uint32_t adding(size_t table, const words &key);
inline uint32_t deleting(size_t table, const words &key) { return 2 * adding(table, key); }

/// @return 0, or why the request is refused as a whole
uint32_t judge(const naive_request &asked);

} // namespace ribkit::rib
