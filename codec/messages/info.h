// Questions about the RIB's state and their answers, registrations, verification.
#pragma once

#include "codec/messages/fib.h"
#include "codec/messages/sync.h"

namespace ribkit::wire {

inline constexpr layout verify{"verify", 12, {words(0, 3, "words")}};
/// A receiver reads this query as it arrived: only its sender converts it.
inline constexpr layout reg_query{"reg_query", 12, {words(0, 3, "words")}};
/// The domain, system, database and internal queries.
inline constexpr layout state_query{"state_query", 16, {words(0, 4, "words")}};
inline constexpr layout test_info{"test_info", 8, {words(0, 2, "words")}};
inline constexpr layout node_query{"node_query", 8, {word(0, "word 0"), bytes(4, 2, "module, type"), zero(6, 2)}};
inline constexpr layout test_query{"test_query", 48, {words(0, 2, "words"), bytes(8, 40, "body")}};
inline constexpr layout registration{
    "register", 88, {word(0, "uuid", meaning::client), word(4, "distance"), bytes(8, 80, "name")}};

inline constexpr layout fclrt_info{
    "fclrt_info", 4, {word(0, "n_route", meaning::count), list(4, "route", in::word(0), lbl_route, 0)}};
/// Entries stand as far apart as their fixed part is long: what follows it is overwritten by the next entry.
inline constexpr layout fcmrt_info{
    "fcmrt_info", 4, {word(0, "n_route", meaning::count), list(4, "route", in::word(0), mcast_route, 20)}};
/// As fcmrt_info.
inline constexpr layout fcurt_info{
    "fcurt_info", 8, {word(0, "n_route", meaning::count), gap(4, 4), list(8, "route", in::word(0), ucast_route, 36)}};

inline constexpr layout db_summary{"db_summary", 20, {words(0, 5, "words")}};
inline constexpr layout db_info{
    "db_info", 8, {word(0, "n_vsan", meaning::count), gap(4, 4), list(8, "vsan", in::word(0), db_summary, 20)}};

inline constexpr layout dm_entry{"dm_entry", 68, {word(0, "vsan", meaning::vsan), bytes(4, 64, "domain maps")}};
/// A receiver converts the count that stands in its destination, and reads the entries as they arrived.
inline constexpr layout dm_info{
    "dm_info", 4, {word(0, "n_vsan", meaning::count), list(4, "vsan", in::word(0), dm_entry, 68)}};

/// What follows depends on the kind: see odd.h.
inline constexpr layout in_info{"in_info", 8, {word(0, "word 0"), word(4, "kind")}};

/// The bytes behind the two words of an in_info, carried unchanged.
constexpr uint32_t size_of_body(uint32_t kind) { return kind == 1 ? 24 : kind == 2 ? 192 : 0; }

inline constexpr layout reg_entry{
    "reg_entry", 88, {word(0, "uuid", meaning::client), word(4, "distance"), name(8, 80, 7, "name")}};
inline constexpr layout reg_info{
    "reg_info", 4, {word(0, "n_client", meaning::count), list(4, "client", in::word(0), reg_entry, 88)}};

inline constexpr layout module_entry{
    "module", 1560, {list(0, "node", 1, node, 16), bytes(16, 4, "ports"), gap(20, 4), list(24, "port", 64, port, 24)}};
inline constexpr layout sys_info{
    "sys_info", 4, {word(0, "n_module", meaning::count), list(4, "module", in::word(0), module_entry, 1560)}};

/// The key is of the table that the low half of the type names: see odd.h.
inline constexpr layout verf_query{
    "verf_query", 52, {words(0, 3, "words"), word(12, "type"), bytes(16, 32, "key"), word(48, "requested")}};
/// Keys follow, of the table that the low half of the type names: see odd.h.
inline constexpr layout verf_info{
    "verf_info", 16, {word(0, "n_key", meaning::count), word(4, "type"), words(8, 2, "words 8")}};

/// The key that the low half of a verification's type names.
constexpr const layout &key_of(uint32_t type) {
    return (type & 0x1111) != 0 ? verf_fcl : (type & 0x2222) != 0 ? verf_fcm : verf_fcu;
}

constexpr uint32_t size_of_key(uint32_t type) {
    return (type & 0x1111) != 0 ? verf_fcl.size : (type & 0x2222) != 0 ? verf_fcm.size : verf_fcu.size;
}

} // namespace ribkit::wire
