// Questions about the RIB's state and their answers, registrations, verification.
#pragma once

#include "codec/messages/fib.h"
#include "codec/messages/sync.h"

namespace ribkit::wire {

inline constexpr layout verify{"verify",
                               12,
                               {word(0, "uuid", meaning::client).says("rib_uuid"), also(word(4, "word_4")),
                                also(word(8, "type").says("rib_verf"))}};
/// A receiver reads this query as it arrived: only its sender converts it.
inline constexpr layout reg_query{"reg_query",
                                  12,
                                  {word(0, "uuid", meaning::client).says("rib_uuid"),
                                   also(word(4, "query").says("rib_query")), also(word(8, "requested"))}};
inline constexpr layout dm_query{"dm_query",
                                 16,
                                 {word(0, "uuid", meaning::client).says("rib_uuid"),
                                  also(word(4, "query").says("rib_query")), also(word(8, "word_8")),
                                  also(word(12, "requested"))}};
inline constexpr layout db_query{"db_query",
                                 16,
                                 {word(0, "uuid", meaning::client).says("rib_uuid"),
                                  also(word(4, "query").says("rib_query")), also(word(8, "word_8")),
                                  also(word(12, "requested"))}};
inline constexpr layout sys_query{"sys_query",
                                  16,
                                  {word(0, "uuid", meaning::client).says("rib_uuid"),
                                   also(word(4, "query").says("rib_query")), also(word(8, "word_8")),
                                   also(word(12, "word_12"))}};
inline constexpr layout in_query{"in_query",
                                 16,
                                 {word(0, "uuid", meaning::client).says("rib_uuid"),
                                  also(word(4, "query").says("rib_query")), also(word(8, "structure").says("rib_in")),
                                  also(word(12, "word_12"))}};
inline constexpr layout test_info{"test_info", 8, {word(0, "word_0"), also(word(4, "word_4"))}};
inline constexpr layout node_query{"node_query",
                                   8,
                                   {word(0, "uuid", meaning::client).says("rib_uuid"),
                                    bytes(4, 1, "module").shown_plus_one(),
                                    also(bytes(5, 1, "type").says("rib_mod_type")), zero(6, 2)}};
inline constexpr layout test_query{"test_query",
                                   48,
                                   {word(0, "uuid", meaning::client).says("rib_uuid"),
                                    also(word(4, "type").says("rib_test_type")), bytes(8, 40, "bytes_8")}};
inline constexpr layout registration{
    "register",
    88,
    {word(0, "uuid", meaning::client).says("rib_uuid"), word(4, "distance"), bytes(8, 80, "name", meaning::text)}};

inline constexpr layout fclrt_info{
    "fclrt_info", 4, {word(0, "n_route", meaning::count), list(4, "route", in::word(0), lbl_route, 0)}};
/// Entries stand as far apart as their fixed part is long: what follows it is overwritten by the next entry.
inline constexpr layout fcmrt_info{
    "fcmrt_info", 4, {word(0, "n_route", meaning::count), list(4, "route", in::word(0), mcast_route, 20)}};
/// As fcmrt_info.
inline constexpr layout fcurt_info{
    "fcurt_info", 8, {word(0, "n_route", meaning::count), gap(4, 4), list(8, "route", in::word(0), ucast_route, 36)}};

inline constexpr layout db_summary{"db_summary",
                                   20,
                                   {word(0, "vsan", meaning::vsan), also(word(4, "modified", meaning::time)),
                                    also(word(8, "ucast", meaning::count)), also(word(12, "mcast", meaning::count)),
                                    also(word(16, "label", meaning::count))}};
inline constexpr layout db_info{"db_info",
                                8,
                                {word(0, "n_vsan", meaning::count), gap(4, 4, "created", meaning::time),
                                 list(8, "vsan", in::word(0), db_summary, 20)}};

inline constexpr layout dm_entry{"dm_entry",
                                 68,
                                 {word(0, "vsan", meaning::vsan), bytes(4, 32, "present", meaning::domains),
                                  also(bytes(36, 32, "direct", meaning::domains))}};
/// A receiver converts the count that stands in its destination, and reads the entries as they arrived.
inline constexpr layout dm_info{
    "dm_info", 4, {word(0, "n_vsan", meaning::count), list(4, "vsan", in::word(0), dm_entry, 68)}};

/// What follows depends on the kind: see odd.h.
inline constexpr layout in_info{"in_info", 8, {word(0, "word_0"), word(4, "kind").says("rib_in")}};

/// The bytes behind the two words of an in_info, carried unchanged.
constexpr uint32_t size_of_body(uint32_t kind) { return kind == 1 ? 24 : kind == 2 ? 192 : 0; }

/// The bodies of an in_info: the high-availability state, and the memory pools.
inline constexpr layout in_ha{"in_ha",
                              24,
                              {word(0, "sup_state").says("rib_sup_state"), word(4, "switching_over"),
                               also(word(8, "started_stateful")), also(word(12, "started_stateless")),
                               also(word(16, "standby_existed")), also(word(20, "sent_heartbeat"))}};
inline constexpr layout in_pool{
    "in_pool", 12, {word(0, "pool").says("rib_mem"), word(4, "data_size"), word(8, "n_data")}};
inline constexpr layout in_mem{"in_mem", 192, {list(0, "pool", 16, in_pool, in_pool.size)}};
static_assert(in_ha.size == size_of_body(1) && in_mem.size == size_of_body(2));

inline constexpr layout reg_entry{
    "reg_entry", 88, {word(0, "uuid", meaning::client).says("rib_uuid"), word(4, "distance"), name(8, 80, 7, "name")}};
inline constexpr layout reg_info{
    "reg_info", 4, {word(0, "n_client", meaning::count), list(4, "client", in::word(0), reg_entry, 88)}};

inline constexpr layout module_entry{
    "module",
    1560,
    {list(0, "node", 1, node, 16), bytes(16, 4, "ports", meaning::ports), gap(20, 4), list(24, "port", 64, port, 24)}};
inline constexpr layout sys_info{
    "sys_info", 4, {word(0, "n_module", meaning::count), list(4, "module", in::word(0), module_entry, 1560)}};

/// The key is of the table that the low half of the type names: see odd.h.
inline constexpr layout verf_query{"verf_query",
                                   52,
                                   {word(0, "uuid", meaning::client).says("rib_uuid"), also(word(4, "word_4")),
                                    also(word(8, "query").says("rib_query")), word(12, "type").says("rib_verf"),
                                    bytes(16, 32, "key"), word(48, "requested")}};
/// Keys follow, of the table that the low half of the type names: see odd.h.
inline constexpr layout verf_info{"verf_info",
                                  16,
                                  {word(0, "n_key", meaning::count), word(4, "type").says("rib_verf"),
                                   word(8, "generated", meaning::time), also(word(12, "completed", meaning::time))}};

/// The key that the low half of a verification's type names.
constexpr const layout &key_of(uint32_t type) {
    return (type & 0x1111) != 0 ? verf_fcl : (type & 0x2222) != 0 ? verf_fcm : verf_fcu;
}

constexpr uint32_t size_of_key(uint32_t type) {
    return (type & 0x1111) != 0 ? verf_fcl.size : (type & 0x2222) != 0 ? verf_fcm.size : verf_fcu.size;
}

} // namespace ribkit::wire
