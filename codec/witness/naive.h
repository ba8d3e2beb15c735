// Naive converters of every message, sizes, readers, steps and comparisons: an opinion that shares nothing with the
// library's layouts, for the tests and the fuzzers to compare it with.
#pragma once

#include "codec/witness/transfer.h"

#include <array>
#include <string_view>
#include <vector>

namespace ribkit::witness {

// One function a message; the result is what the exported function of that direction returns, 0 where it returns
// nothing.
// Updates and route records.
uint32_t route_update(transfer m); ///< of the label and the multicast table
uint32_t fcurt_update(transfer m);
uint32_t fcurt(transfer m);
uint32_t table_rsp(transfer m); ///< of all three tables
uint32_t fclrt(transfer m);
uint32_t fclrt_intf(transfer m);
uint32_t fcmrt(transfer m);
// Queries and synchronisation.
uint32_t fclrt_query(transfer m);
uint32_t fcurt_query(transfer m);
uint32_t fcmrt_query(transfer m);
uint32_t ucast_route(transfer m);
uint32_t lbl_route(transfer m);
uint32_t mcast_route(transfer m);
uint32_t topo(transfer m);
uint32_t sync_fcl(transfer m);
uint32_t sync_fcm(transfer m);
uint32_t sync_fcu(transfer m);
uint32_t sync_query(transfer m);
uint32_t sync_info(transfer m);
// Information, registration, verification.
uint32_t verify(transfer m);
uint32_t reg_query(transfer m);
uint32_t state_query(transfer m); ///< domains, system, database, internals
uint32_t test_info(transfer m);
uint32_t node_query(transfer m);
uint32_t test_query(transfer m);
uint32_t registration(transfer m);
uint32_t fclrt_info(transfer m);
uint32_t fcmrt_info(transfer m);
uint32_t fcurt_info(transfer m);
uint32_t db_info(transfer m);
uint32_t dm_info(transfer m);
uint32_t in_info(transfer m);
uint32_t reg_info(transfer m);
uint32_t sys_info(transfer m);
uint32_t verf_query(transfer m);
uint32_t verf_info(transfer m);
// RIB to FIB.
uint32_t fib_update(transfer m); ///< of all three tables
uint32_t fcu_path(transfer m);
uint32_t fcl_path(transfer m);
uint32_t fcm_path(transfer m);
uint32_t fib_rsp(transfer m); ///< of all three tables
uint32_t sync(transfer m);
uint32_t verf_fcu(transfer m);
uint32_t verf_fcm(transfer m);
uint32_t verf_fcl(transfer m);
uint32_t fcu_rsp_path(transfer m);
uint32_t fcm_rsp_path(transfer m);
uint32_t fcl_rsp_path(transfer m);
uint32_t node(transfer m);
uint32_t port(transfer m);
uint32_t vsan(transfer m);
uint32_t vsan_update(transfer m);
uint32_t vsan_rewrite_update(transfer m);
uint32_t vsan_rewrite_path(transfer m);
uint32_t vsan_rewrite_rsp(transfer m);
uint32_t fcu_lb_query(transfer m);
uint32_t fcu_lb_rsp(transfer m);
// Rows of the management tables.
uint32_t route_entry(transfer m);
uint32_t flow_stat_entry(transfer m);

/// What the exported functions of a pair return.
enum class returns : uint8_t { nothing, size, kind /* the sending one only */ };

struct pair {
    std::string_view name; ///< the exported names without "hton_" and "ntoh_" ("rib_fcurt"), or without "_hton"
    uint32_t (*convert)(transfer);
    returns result = returns::nothing;

    [[nodiscard]] bool returns_value(direction way) const {
        return result == returns::size || (result == returns::kind && way == direction::hton);
    }
};

/// Every pair of the library, once.
std::span<const pair> pairs();
const pair *find_pair(std::string_view name);

struct outcome {
    uint32_t result;
    size_t reach; ///< bytes from the start of the buffers that the conversion needs
};

/// Converts. @throws past_the_end where it would leave the buffers, which then hold a part of the result
outcome convert(const pair &what, direction way, order host, std::span<const uint8_t> src, std::span<uint8_t> dst);

// Whole updates in network form. @throws past_the_end
uint32_t sizeof_fclrt_update(std::span<const uint8_t> msg);
uint32_t sizeof_fcmrt_update(std::span<const uint8_t> msg);
uint32_t sizeof_fcurt_update(std::span<const uint8_t> msg);
/// The versions of a unicast update, zeroes up to 240.
std::vector<uint32_t> versions(std::span<const uint8_t> msg);

// Keys. The steps change their argument and return a result code.
struct fcm_key {
    uint32_t vsan, fcid;
    bool operator==(const fcm_key &) const = default;
};
struct fcu_key {
    uint32_t vsan, fcid, mask;
    bool operator==(const fcu_key &) const = default;
};
uint32_t rib_next(fcm_key &key);
uint32_t fib_next(fcm_key &key);
uint32_t next_fcu(fcu_key &key);
uint32_t next_fcroute(fcu_key &key);
int32_t rib_compare(const fcm_key &a, const fcm_key &b);
int32_t fib_compare(const fcm_key &a, const fcm_key &b);
int32_t compare(const fcu_key &a, const fcu_key &b);
uint32_t oper_to_fib(uint32_t oper);
int32_t compare_rewrite_keys(const uint8_t *a, const uint8_t *b);
/// Steps a query in network form; `cursor` and `label` are the offsets of its two words.
void next_query(uint8_t *cur, uint8_t *next, size_t cursor, size_t label);

} // namespace ribkit::witness
