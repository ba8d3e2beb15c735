// What this project's services put into words that the messages leave open: the one table that the services write and
// read by, and that is shown beside such a word. It enters no layout.
//
//     response.set<use<wire::route_rsp, "accepted">>(5);
#pragma once

#include "codec/messages/fib.h"
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
    // Where the structure is a result code: to whom it was said; 0 for anybody.
    {&wire::in_query, "word_12", "client", "rib_uuid"},
    // What a structure without a body holds, how many; of a result code how often it was said.
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
    // Towards a module: how many paths follow the head; what became of them, and of which update the answer is.
    {&wire::fib_update, "word_0", "oper", "fib_oper"},
    {&wire::fib_update, "word_4", "vsan"},
    {&wire::fib_update, "word_8", "n_path"},
    {&wire::fib_update, "word_12", "sequence"},
    {&wire::fib_rsp, "word_0", "result", "rib_rtn"},
    {&wire::fib_rsp, "word_4", "oper", "fib_oper"},
    {&wire::fib_rsp, "word_8", "vsan"},
    {&wire::fib_rsp, "word_12", "accepted"},
    {&wire::fib_rsp, "word_16", "sequence"},
    {&wire::fcu_rsp_path, "word_0", "result", "rib_rtn"},
    {&wire::fcu_rsp_path, "word_4", "oper", "fib_oper"},
    {&wire::fcu_rsp_path, "word_8", "vsan"},
    {&wire::fcu_rsp_path, "word_12", "sequence"},
    {&wire::fcm_rsp_path, "word_0", "result", "rib_rtn"},
    {&wire::fcm_rsp_path, "word_4", "oper", "fib_oper"},
    {&wire::fcm_rsp_path, "word_8", "vsan"},
    {&wire::fcm_rsp_path, "word_12", "sequence"},
    {&wire::fcl_rsp_path, "word_0", "result", "rib_rtn"},
    {&wire::fcl_rsp_path, "word_4", "oper", "fib_oper"},
    {&wire::fcl_rsp_path, "word_8", "vsan"},
    {&wire::fcl_rsp_path, "word_12", "sequence"},
    // Of the first four bytes that a unicast route carries those without a name (the mask of R_CTL is "special"), and
    // what it says of itself.
    {&wire::fcu_path, "byte_12", "rctl"},
    {&wire::fcu_path, "byte_14", "rewrite"},
    {&wire::fcu_path, "byte_15", "more"},
    {&wire::fcu_path, "word_16", "metric"},
    {&wire::fcu_path, "word_20", "flag"},
    {&wire::fcm_path, "bytes_0", "fcid", "", true},
    {&wire::fcm_path, "word_4", "mask", "", true},
    {&wire::fcl_path, "word_0", "type", "fib_route_type"},
    {&wire::fcl_path, "word_4", "source"}, // interface
    {&wire::fcl_path, "word_8", "fcid", "", true},
    {&wire::fcl_path, "word_12", "mask", "", true},
    {&wire::verf_fcl, "word_8", "type", "fib_route_type"},
    {&wire::verf_fcl, "word_12", "fcid_or_source", "", true},
    {&wire::verf_fcl, "word_16", "mask", "", true},
    {&wire::verf_fcl_query, "word_12", "fcid_or_source", "", true},
    {&wire::verf_fcl_query, "word_16", "mask", "", true},
    // A path's first word is a control word, whose count of labels is that of its hops; of a unicast path it has the
    // next domain, too.
    {&wire::path_slot, "word_4", "intf"},
    // Which FIB speaks: its module, from 0; another instance after each start; the last message of the RIB that it
    // took.
    {&wire::fib_sync, "byte_0", "module"},
    {&wire::fib_sync, "word_4", "instance"},
    {&wire::fib_sync, "word_8", "sequence"},
    {&wire::fib_sync, "word_12", "entries"},
    {&wire::vsan_update, "word_0", "sequence"},
    // Which frames change their VSAN: of a VSAN, from an interface, between addresses; to what.
    {&wire::vsan_rewrite_update, "word_0", "oper", "fib_oper"},
    {&wire::vsan_rewrite_update, "word_4", "vsan"},
    {&wire::vsan_rewrite_update, "word_8", "n_path"},
    {&wire::vsan_rewrite_update, "word_12", "sequence"},
    {&wire::vsan_rewrite_path, "word_0", "vsan"},
    {&wire::vsan_rewrite_path, "word_4", "intf"},
    {&wire::vsan_rewrite_path, "word_8", "new_vsan"},
    {&wire::vsan_rewrite_path, "bytes_16", "source", "", true},
    {&wire::vsan_rewrite_path, "word_20", "source_mask", "", true},
    {&wire::vsan_rewrite_path, "bytes_24", "to", "", true},
    {&wire::vsan_rewrite_path, "word_28", "to_mask", "", true},
    {&wire::vsan_rewrite_path, "word_32", "new_source", "", true},
    {&wire::vsan_rewrite_path, "word_36", "new_to", "", true},
    {&wire::vsan_rewrite_rsp, "word_0", "result", "rib_rtn"},
    {&wire::vsan_rewrite_rsp, "word_4", "oper", "fib_oper"},
    {&wire::vsan_rewrite_rsp, "word_8", "vsan"},
    {&wire::vsan_rewrite_rsp, "word_12", "accepted"},
    {&wire::vsan_rewrite_rsp, "word_16", "sequence"},
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
