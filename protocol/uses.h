// What this project's services put into words that the messages leave open: the one table that the services write and
// read by, and that is shown beside such a word. It enters no layout.
//
//     response.set<use<wire::route_rsp, "accepted">>(5);
#pragma once

#include "codec/messages/forms.h"
#include "codec/messages/query.h"
#include "codec/messages/route.h"
#include "codec/view.h"

#include <string_view>

namespace ribkit::protocol {

struct word_use {
    const codec::layout *message;
    const char *word;
    const char *use;
    const char *vocabulary = ""; ///< where its numbers have texts
    bool is_address = false;
};

inline constexpr word_use word_uses[] = {
    // Of the answer to an update or to a registration, and to what the RIB cannot use.
    {&wire::route_rsp, "word_0", "result", "rib_rtn"},
    {&wire::route_rsp, "word_4", "oper", "rib_oper"}, // of the update; 0 where it was too short to tell
    {&wire::route_rsp, "word_8", "vsan"},             // of the update; 0 likewise
    {&wire::route_rsp, "word_12", "accepted"},        // records that took effect
    {&wire::route_rsp, "word_16", "held"},            // routes that the RIB now holds for this VSAN
    // Where a query of routes starts. In a unicast query the VSAN has 12 bits; the 20 above them are the identity of
    // the first owner whose candidate for the first key is wanted.
    {&wire::fcurt_query, "word_12", "vsan"},
    {&wire::fcurt_query, "word_16", "fcid", "", true},
    {&wire::fcurt_query, "word_20", "mask", "", true},
    {&wire::fcmrt_query, "word_4", "vsan"},
    {&wire::fcmrt_query, "word_12", "fcid", "", true},
    {&wire::fcmrt_query, "word_16", "mask", "", true},
    // The cursor is the type of the first route, where it is not that of the query; a route that matches a source has
    // that interface in the place of an FC ID.
    {&wire::fclrt_query, "word_8", "vsan"},
    {&wire::fclrt_query, "word_16", "fcid_or_source", "", true},
    {&wire::fclrt_query, "word_20", "mask", "", true},
    // The first VSAN or module of a list.
    {&wire::db_query, "word_8", "vsan"},
    {&wire::dm_query, "word_8", "vsan"},
    {&wire::vsan_query, "word_8", "vsan"},
    {&wire::sys_query, "word_8", "module"},
    {&wire::sys_query, "word_12", "requested"},
    // What a structure without a body holds, how many.
    {&wire::in_info, "word_0", "count"},
    {&wire::test_info, "word_0", "type", "rib_test_type"},
    {&wire::test_info, "word_4", "enabled"},
    // A log of changes, and the number of the first that is wanted; how far the log goes, and how many it has.
    {&wire::sync_query, "word_0", "uuid", "rib_uuid"},
    {&wire::sync_query, "word_4", "log", "rib_sync"},
    {&wire::sync_query, "word_8", "sequence"},
    {&wire::sync_info, "word_0", "next"},
    {&wire::sync_info, "word_4", "held"},
    // A flow: bytes_4 are S_ID, D_ID and OX_ID. What it goes out by.
    {&wire::fcu_lb_query, "word_0", "uuid", "rib_uuid"},
    {&wire::fcu_lb_query, "word_12", "vsan"},
    {&wire::fcu_lb_rsp, "word_0", "result", "rib_rtn"},
    {&wire::fcu_lb_rsp, "word_4", "intf"},
};

/// Whether both are the same message. By their names, since under sanitizers addresses are no constants.
constexpr bool is_same(const codec::layout &one, const codec::layout &other) {
    return std::string_view(one.name) == other.name;
}

/// Null where there is none.
constexpr const word_use *use_of(const codec::layout &message, std::string_view word) {
    for (const word_use &known : word_uses) {
        if (is_same(*known.message, message) && word == known.word) {
            return &known;
        }
    }
    return nullptr;
}

namespace names_of_uses {

// Not constexpr: naming this while a program is compiled is the error message.
void message_has_no_such_use();

consteval std::string_view word_of(const codec::layout &message, std::string_view wanted) {
    for (const word_use &known : word_uses) {
        if (is_same(*known.message, message) && wanted == known.use) {
            return known.word;
        }
    }
    message_has_no_such_use();
    return {};
}

template <const codec::layout &L, codec::field_called Use> consteval auto field_for() {
    constexpr std::string_view word = word_of(L, Use.str());
    char name[word.size() + 1]{};
    for (size_t i = 0; i < word.size(); ++i) {
        name[i] = word[i];
    }
    return codec::field_called<word.size() + 1>(name);
}

} // namespace names_of_uses

/// The word of a message that has this use, for views and writers.
template <const codec::layout &L, codec::field_called Use>
inline constexpr auto use = names_of_uses::field_for<L, Use>();

} // namespace ribkit::protocol
