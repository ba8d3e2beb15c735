// Every number that has a text, by name: for tools and tests that loop over all vocabularies. A vocabulary is named as
// its converter without "_to_str". Nothing in the core needs this list.
#pragma once

#include "diag/text/client_rows.h"
#include "diag/text/fib_rows.h"
#include "diag/text/operation_rows.h"
#include "diag/text/state_rows.h"
#include "rib_text.h"

#include <span>
#include <string_view>

namespace ribkit::diag {

struct vocabulary {
    std::string_view name;
    uintptr_t (*converter)(uint32_t value, char *str); ///< its result is the convention's, or 0 where there is none
    const char *fallback;           ///< printf format of a value without a row; null where every value is composed
    std::span<const text_row> rows; ///< empty where the text is composed

    constexpr vocabulary(std::string_view named, uintptr_t (*to_text)(uint32_t, char *))
        : name(named), converter(to_text), fallback(nullptr) {}

    template <size_t Count>
    constexpr vocabulary(std::string_view named, uintptr_t (*to_text)(uint32_t, char *), const text_table<Count> &table)
        : name(named), converter(to_text), fallback(table.fallback()), rows(table.begin(), table.end()) {}
};

template <auto *Converter> uintptr_t without_result(uint32_t value, char *str) {
    Converter(value, str);
    return 0;
}

inline constexpr vocabulary vocabularies[] = {
    {"rib_rtn", rib_rtn_to_str, result_texts},
    {"rib_uuid", rib_uuid_to_str, client_texts},
    {"rib_uuid_to_uc", without_result<rib_uuid_to_uc_str>},
    {"rib_uuid_to_proto", without_result<rib_uuid_to_proto_str>, client_proto_texts},
    {"rib_fcroute_proto", rib_fcroute_proto_to_str, fcroute_proto_texts},
    {"rib_fcroute_type", rib_fcroute_type_to_str, fcroute_type_texts},
    {"rib_fcroute_perm", rib_fcroute_perm_to_str, fcroute_perm_texts},
    {"rib_fclrt_type", rib_fclrt_type_to_str, fclrt_type_texts},
    {"rib_fcmrt_type", rib_fcmrt_type_to_str, fcmrt_type_texts},
    {"rib_fcurt_type", rib_fcurt_type_to_str, fcurt_type_texts},
    {"rib_query", rib_query_to_str, query_texts},
    {"rib_oper", rib_oper_to_str, oper_texts},
    {"rib_action", rib_action_to_str, action_texts},
    {"rib_route_type", rib_route_type_to_str, route_type_texts},
    {"rib_sync", rib_sync_to_str, sync_texts},
    {"rib_fcurt_flag", without_result<rib_fcurt_flag_to_str>},
    {"rib_sup_state", rib_sup_state_to_str, sup_state_texts},
    {"rib_mod_state", rib_mod_state_to_str, mod_state_texts},
    {"rib_mod_type", rib_mod_type_to_str, mod_type_texts},
    {"rib_vsan_state", rib_vsan_state_to_str, vsan_state_texts},
    {"rib_vsan_state_chg", rib_vsan_state_chg_to_str, vsan_state_chg_texts},
    {"rib_vsan_bal", rib_vsan_bal_to_str, vsan_bal_texts},
    {"rib_vsan_iod", rib_vsan_iod_to_str, vsan_iod_texts},
    {"rib_pm_layer", rib_pm_layer_to_str, pm_layer_texts},
    {"rib_pm_state", rib_pm_state_to_str, pm_state_texts},
    {"rib_pm_mode", rib_pm_mode_to_str, pm_mode_texts},
    {"rib_pcm_event", rib_pcm_event_to_str, pcm_event_texts},
    {"rib_mem", rib_mem_to_str, mem_texts},
    {"rib_in", rib_in_to_str, in_texts},
    {"rib_verf", rib_verf_to_str, verf_texts},
    {"rib_test_type", rib_test_type_to_str, test_type_texts},
    {"rib_cmi_msg", rib_cmi_msg_to_str, cmi_msg_texts},
    {"rib_time_op", rib_time_op_to_str, time_op_texts},
    {"fib_state", fib_state_to_str, fib_state_texts},
    {"fib_mod_type", fib_mod_type_to_str, fib_mod_type_texts},
    {"fib_verf", fib_verf_to_str, fib_verf_texts},
    {"fib_route_type", fib_route_type_to_str, fib_route_type_texts},
    {"fib_reason", fib_reason_to_str, fib_reason_texts},
    {"fib_oper", fib_oper_to_str, fib_oper_texts},
    {"fib_iod_mode", fib_iod_mode_to_str, fib_iod_mode_texts},
    {"fib_action", fib_action_to_str, fib_action_texts},
    {"fib_d_idx", fib_d_idx_to_str, fib_d_idx_texts},
};

/// Null where there is none of that name.
constexpr const vocabulary *vocabulary_of(std::string_view name) {
    for (const vocabulary &candidate : vocabularies) {
        if (candidate.name == name) {
            return &candidate;
        }
    }
    return nullptr;
}

} // namespace ribkit::diag
