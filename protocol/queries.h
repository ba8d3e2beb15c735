// The questions that a client asks of the RIB, as values: written by clients, read by the RIB. Bytes that are read have
// passed the check of their message.
#pragma once

#include "codec/messages/forms.h"
#include "codec/messages/query.h"
#include "codec/view.h"
#include "model/label.h"
#include "model/multicast.h"
#include "model/system.h"
#include "rib_codes.h"
#include "ribkit_rib.h"

#include <array>
#include <cstdint>
#include <tuple>

namespace ribkit::protocol {

template <const codec::layout &L> using bytes_of = std::array<uint8_t, L.size>;

static_assert(RIBKIT_FCURT_QUERY_SIZE == wire::fcurt_query.size); // what the C header says in numbers

/// Asks for unicast routes from a key on, of that key from an owner on. The owner fits beside the VSAN.
struct unicast_query {
    uint32_t uuid;      ///< who asks
    uint32_t type;      ///< as rib_fcurt_type_to_str has it
    uint32_t requested; ///< routes at most
    model::route_key from;
    uint32_t owner = 0;

    bool operator==(const unicast_query &) const = default;
};

struct multicast_query {
    uint32_t uuid;
    uint32_t type; ///< as rib_fcmrt_type_to_str has it
    uint32_t requested;
    model::multicast_key from;

    bool operator==(const multicast_query &) const = default;
};

struct label_query {
    uint32_t uuid;
    uint32_t type; ///< as rib_fclrt_type_to_str has it
    uint32_t requested;
    /// A type of 0 is in front of all others; what is read has that of the kind of routes where it was 0, and is 0 only
    /// where that is any.
    model::label_key from;

    bool operator==(const label_query &) const = default;
};

bytes_of<wire::fcurt_query> encode(const unicast_query &query);
bytes_of<wire::fcmrt_query> encode(const multicast_query &query);
bytes_of<wire::fclrt_query> encode(const label_query &query);
unicast_query read(codec::view<wire::fcurt_query> query);
multicast_query read(codec::view<wire::fcmrt_query> query);
label_query read(codec::view<wire::fclrt_query> query);

/// The next place where a unicast query can start: the next owner of the same key.
struct unicast_place {
    model::route_key key;
    uint32_t owner;

    bool operator==(const unicast_place &) const = default;
    bool operator<(const unicast_place &other) const { return std::tie(key, owner) < std::tie(other.key, other.owner); }
};
unicast_place place_after(const unicast_place &last);

/// Asks for entries of a list of the RIB's state: VSANs, domains, modules, clients.
struct list_query {
    uint32_t uuid;
    uint32_t query;     ///< as rib_query_to_str has it
    uint32_t requested; ///< entries at most
    uint32_t first = 0; ///< VSAN, or module; clients have none

    bool operator==(const list_query &) const = default;
};

/// @tparam L wire::db_query, dm_query, vsan_query, sys_query or reg_query
template <const codec::layout &L> bytes_of<L> encode(const list_query &query);
template <const codec::layout &L> list_query read_list_query(codec::view<L> query);

/// Whether a number is a result code of a refusal.
constexpr bool is_result(uint32_t number) { return number >= RIB_BAD_PARAMETERS; }

/// Asks for a structure of the RIB's own, or how often it has refused something.
struct internal_query {
    uint32_t uuid;
    uint32_t query;
    uint32_t structure;  ///< as rib_in_to_str has it, or a result code
    uint32_t client = 0; ///< to whom that was said; 0: to anybody

    bool operator==(const internal_query &) const = default;
};
bytes_of<wire::in_query> encode(const internal_query &query);
internal_query read(codec::view<wire::in_query> query);

struct node_query {
    uint32_t uuid;
    uint8_t module; ///< from 0
    uint8_t type;   ///< as rib_mod_type_to_str has it

    bool operator==(const node_query &) const = default;
};
bytes_of<wire::node_query> encode(const node_query &query);
node_query read(codec::view<wire::node_query> query);

/// Asks for a test of the RIB, or for a comparison of a table.
struct simple_request {
    uint32_t uuid;
    uint32_t type; ///< as rib_test_type_to_str, or as rib_verf_to_str has it

    bool operator==(const simple_request &) const = default;
};
bytes_of<wire::test_query> encode_test(const simple_request &request);
simple_request read(codec::view<wire::test_query> request);
bytes_of<wire::verify> encode_verify(const simple_request &request);
simple_request read(codec::view<wire::verify> request);

// Comparisons of each table with the modules, as rib_verf_to_str has them.
inline constexpr uint32_t compared_labels = 0x100;
inline constexpr uint32_t compared_multicast = 0x200;
inline constexpr uint32_t compared_unicast = 0x400;

/// Asks what a comparison has found, from a key on. Keys of the unicast and the multicast table are a VSAN and a
/// destination; of the latter masks do not travel.
struct verify_query {
    uint32_t uuid;
    uint32_t query;
    uint32_t type; ///< as rib_verf_to_str has it
    uint32_t requested;
    model::label_key from{};

    bool operator==(const verify_query &) const = default;
};
bytes_of<wire::verf_query> encode(const verify_query &query);
verify_query read(codec::view<wire::verf_query> query);

/// Asks for the latest changes of a table.
struct log_query {
    uint32_t uuid;
    uint32_t log;      ///< as rib_sync_to_str has it
    uint32_t sequence; ///< of the first change that is wanted

    bool operator==(const log_query &) const = default;
};
bytes_of<wire::sync_query> encode(const log_query &query);
log_query read(codec::view<wire::sync_query> query);

/// Asks which way a flow goes.
struct flow_query {
    uint32_t uuid;
    model::flow flow;

    bool operator==(const flow_query &) const = default;
};
bytes_of<wire::fcu_lb_query> encode(const flow_query &query);
flow_query read(codec::view<wire::fcu_lb_query> query);

bytes_of<wire::registration> encode(const model::registration &said);
model::registration read(codec::view<wire::registration> said);

} // namespace ribkit::protocol
