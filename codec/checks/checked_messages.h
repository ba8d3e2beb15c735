// What the exported checks call their messages in a report, and which layout they check; the names one behind the
// other, so that none needs an address that is filled in when the library is loaded.
#pragma once

#include "codec/checks/check_core.h"
#include "codec/fingerprint.h"

#include <algorithm>
#include <string_view>

namespace ribkit::codec {

struct checked_message {
    std::string_view name;
    uint8_t plan;
    uint32_t wire; ///< the digest of what happens to its bytes
};

template <const layout &L> consteval checked_message is(std::string_view name) {
    return {name, core_checks::plan<L>(), wire_fingerprint(L)};
}

inline constexpr checked_message checked_messages[] = {
    is<wire::fclrt_update>("rib_fclrt_update"),
    is<wire::fcmrt_update>("rib_fcmrt_update"),
    is<wire::fcurt_update>("rib_fcurt_update"),
    is<wire::fcurt>("rib_fcurt"),
    is<wire::fclrt>("rib_fclrt"),
    is<wire::fclrt_intf>("rib_fclrt_intf"),
    is<wire::fcmrt>("rib_fcmrt"),
    is<wire::route_rsp>("rib_fcurt_rsp"),
    is<wire::route_rsp>("rib_fclrt_rsp"),
    is<wire::route_rsp>("rib_fcmrt_rsp"),
    is<wire::fclrt_query>("rib_fclrt_query"),
    is<wire::fcurt_query>("rib_fcurt_query"),
    is<wire::fcmrt_query>("rib_fcmrt_query"),
    is<wire::lbl_route>("rib_lbl_route"),
    is<wire::ucast_route>("rib_ucast_route"),
    is<wire::mcast_route>("rib_mcast_route"),
    is<wire::topo>("rib_topo"),
    is<wire::sync_fcl>("rib_sync_fcl"),
    is<wire::sync_fcm>("rib_sync_fcm"),
    is<wire::sync_fcu>("rib_sync_fcu"),
    is<wire::sync_query>("rib_sync_query"),
    is<wire::sync_info>("rib_sync_info"),
    is<wire::verify>("rib_verify"),
    is<wire::reg_query>("rib_reg_query"),
    is<wire::dm_query>("rib_dm_query"),
    is<wire::sys_query>("rib_sys_query"),
    is<wire::db_query>("rib_db_query"),
    is<wire::in_query>("rib_in_query"),
    is<wire::test_info>("rib_test_info"),
    is<wire::node_query>("rib_node_query"),
    is<wire::test_query>("rib_test_query"),
    is<wire::registration>("rib_register"),
    is<wire::fclrt_info>("rib_fclrt_info"),
    is<wire::fcmrt_info>("rib_fcmrt_info"),
    is<wire::fcurt_info>("rib_fcurt_info"),
    is<wire::db_info>("rib_db_info"),
    is<wire::dm_info>("rib_dm_info"),
    is<wire::in_info>("rib_in_info"),
    is<wire::reg_info>("rib_reg_info"),
    is<wire::sys_info>("rib_sys_info"),
    is<wire::node>("rib_node_info"),
    is<wire::verf_query>("rib_verf_query"),
    is<wire::verf_info>("rib_verf_info"),
    is<wire::fib_update>("fib_fcl_update"),
    is<wire::fib_update>("fib_fcm_update"),
    is<wire::fib_update>("fib_fcu_update"),
    is<wire::fcu_path>("fib_fcu_path"),
    is<wire::fcl_path>("fib_fcl_path"),
    is<wire::fcm_path>("fib_fcm_path"),
    is<wire::fib_rsp>("fib_fcl_rsp"),
    is<wire::fib_rsp>("fib_fcm_rsp"),
    is<wire::fib_rsp>("fib_fcu_rsp"),
    is<wire::fib_sync>("fib_sync"),
    is<wire::verf_fcu>("fib_verf_fcu"),
    is<wire::verf_fcm>("fib_verf_fcm"),
    is<wire::verf_fcl>("fib_verf_fcl"),
    is<wire::fcu_rsp_path>("fib_fcu_rsp_path"),
    is<wire::fcm_rsp_path>("fib_fcm_rsp_path"),
    is<wire::fcl_rsp_path>("fib_fcl_rsp_path"),
    is<wire::node>("fib_node"),
    is<wire::port>("fib_port"),
    is<wire::vsan>("fib_vsan"),
    is<wire::vsan_update>("fib_vsan_update"),
    is<wire::vsan_rewrite_update>("fib_vsan_rewrite_update"),
    is<wire::vsan_rewrite_path>("fib_vsan_rewrite_path"),
    is<wire::vsan_rewrite_rsp>("fib_vsan_rewrite_rsp"),
    is<wire::fcu_lb_query>("rib_fib_fcu_lb_query"),
    is<wire::fcu_lb_rsp>("rib_fib_fcu_lb_rsp"),
};

// Never defined: a check whose message has no row does not compile.
void no_checked_message_has_this_name();

/// A name as an argument of a template.
struct message_name {
    template <size_t Size> consteval message_name(const char (&literal)[Size]) {
        std::copy(literal, literal + Size, text);
    }
    char text[32] = {};
};

constexpr size_t number_of(const message_name &wanted) {
    size_t number = 0;
    while (number < std::size(checked_messages) && checked_messages[number].name != wanted.text) {
        ++number;
    }
    if (number == std::size(checked_messages)) {
        no_checked_message_has_this_name();
    }
    return number;
}

/// The bytes of the first names, each with its terminator.
constexpr size_t size_of_names(size_t count) {
    size_t size = 0;
    for (size_t i = 0; i < count; ++i) {
        size += checked_messages[i].name.size() + 1;
    }
    return size;
}

struct packed_names {
    consteval packed_names() {
        char *to = text;
        for (const checked_message &message : checked_messages) {
            to = std::copy(message.name.begin(), message.name.end(), to) + 1;
        }
    }
    char text[size_of_names(std::size(checked_messages))] = {};
};

inline constexpr packed_names checked_names;

} // namespace ribkit::codec
