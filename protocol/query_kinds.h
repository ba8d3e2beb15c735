// What each type of a query means: one row a type of the three route tables, and of the kinds that queries of the RIB's
// state have. Services decide by these rows, and the documents are written from them; the texts are the vocabularies'.
#pragma once

#include "rib_codes.h"

#include <cstdint>
#include <span>

namespace ribkit::protocol {

/// What an answer is made of.
enum class answer_form : uint8_t {
    routes,   ///< an update message with whole routes
    entries,  ///< an info message; an entry with hops or interfaces stands in one of its own
    versions, ///< topology versions
    none
};

/// Which routes are meant.
enum class chosen_routes : uint8_t { all, active, mine };
/// Which keys are.
enum class chosen_keys : uint8_t {
    all,     ///< from the query's key on
    vsan,    ///< of the query's VSAN, from its key on
    holding, ///< of the query's VSAN, those that the query's FC ID is in; the mask is the first one wanted
    exact    ///< the query's
};

struct query_kind {
    uint32_t type;
    answer_form form = answer_form::routes;
    chosen_keys keys = chosen_keys::all;
    chosen_routes routes = chosen_routes::all;
    bool in_envelope = false; ///< is answered only there
    uint32_t refused = 0;     ///< the result code, where it is not answered at all
};

constexpr query_kind in_envelope(query_kind kind) {
    kind.in_envelope = true;
    return kind;
}
constexpr query_kind of_the_vault(uint32_t type) { return {type, answer_form::none, {}, {}, false, RIB_NO_DATABASE}; }
constexpr query_kind unsupported(uint32_t type) { return {type, answer_form::none, {}, {}, false, RIB_NOT_SUPPORTED}; }

inline constexpr query_kind unicast_kinds[] = {
    {0x1},
    {0x2, answer_form::versions},
    {0x4, answer_form::routes, chosen_keys::all, chosen_routes::active},
    {0x8, answer_form::routes, chosen_keys::all, chosen_routes::mine},
    {0x10},
    {0x20, answer_form::versions},
    of_the_vault(0x40),
    of_the_vault(0x80),
    {0x100, answer_form::routes, chosen_keys::vsan},
    {0x200, answer_form::routes, chosen_keys::holding},
    {0x400, answer_form::routes, chosen_keys::vsan, chosen_routes::active},
    {0x800, answer_form::routes, chosen_keys::exact},
    in_envelope({0x1000, answer_form::routes, chosen_keys::vsan}),
    in_envelope({0x2000, answer_form::routes, chosen_keys::holding}),
    in_envelope({0x4000}),
    in_envelope({0x8000, answer_form::routes, chosen_keys::all, chosen_routes::mine}),
    unsupported(0x10000),
    unsupported(0x20000),
    {0x100000, answer_form::entries},
    {0x200000, answer_form::versions},
    {0x400000, answer_form::entries, chosen_keys::all, chosen_routes::active},
    {0x800000, answer_form::entries, chosen_keys::all, chosen_routes::mine},
};

/// Whether a type of unicast query is one to be shown, which is answered with info messages.
constexpr bool is_shown(uint32_t unicast_type) { return (unicast_type & 0xf00000) != 0; }

inline constexpr query_kind multicast_kinds[] = {
    {0x1},
    {0x2, answer_form::routes, chosen_keys::vsan},
    {0x4, answer_form::routes, chosen_keys::exact},
    of_the_vault(0x8),
    in_envelope({0x10}),
    in_envelope({0x20, answer_form::routes, chosen_keys::vsan}),
    in_envelope({0x40, answer_form::routes, chosen_keys::exact}),
    {0x100, answer_form::entries},
};

/// The low four bits of a label query's type say which routes; the others are a scope.
inline constexpr uint32_t label_routes_mask = 0xf;
inline constexpr uint32_t label_routes_by_source = 0x1;
inline constexpr uint32_t label_routes_one_label = 0x2;
inline constexpr uint32_t label_routes_two_labels = 0x4;
inline constexpr uint32_t label_routes_by_fcid = 0x8;
inline constexpr uint32_t label_routes_all = 0xf;

/// By scope; a scope with the exact key has no "all labels".
inline constexpr query_kind label_scopes[] = {
    {0x10},
    {0x20, answer_form::routes, chosen_keys::vsan},
    {0x40, answer_form::routes, chosen_keys::exact},
    of_the_vault(0x100),
    of_the_vault(0x200),
    of_the_vault(0x400),
    {0x1000, answer_form::entries},
};

constexpr bool is_label_kind(uint32_t routes, bool one_key) {
    return routes == label_routes_by_source || routes == label_routes_one_label || routes == label_routes_two_labels ||
           routes == label_routes_by_fcid || (routes == label_routes_all && !one_key);
}

/// Of queries of the RIB's state. What of a VSAN is asked is answered about the query's alone.
inline constexpr query_kind state_kinds[] = {
    {0x1},
    {0x2},
    of_the_vault(0x4),
    in_envelope({0x8}),
    {0x10, answer_form::routes, chosen_keys::vsan},
    of_the_vault(0x40),
    in_envelope({0x80, answer_form::routes, chosen_keys::vsan}),
    {0x100},
};

/// Null where there is no such type.
constexpr const query_kind *find_kind(std::span<const query_kind> kinds, uint32_t type) {
    for (const query_kind &kind : kinds) {
        if (kind.type == type) {
            return &kind;
        }
    }
    return nullptr;
}

constexpr const query_kind *find_label_kind(uint32_t type) {
    const query_kind *scope = find_kind(label_scopes, type & ~label_routes_mask);
    const bool one_key = (type & 0x440) != 0;
    return scope != nullptr && is_label_kind(type & label_routes_mask, one_key) ? scope : nullptr;
}

/// The result code of a query that is not answered: 0, or why not.
constexpr uint32_t refusal_of(const query_kind *kind, bool came_in_envelope) {
    return kind == nullptr                          ? RIB_NOT_SUPPORTED
           : kind->refused != RIB_OK                ? kind->refused
           : kind->in_envelope && !came_in_envelope ? RIB_BAD_PARAMETERS
                                                    : RIB_OK;
}

} // namespace ribkit::protocol
