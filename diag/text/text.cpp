// The converters whose whole behaviour is their table.
#include "diag/text/client_rows.h"
#include "diag/text/fib_rows.h"
#include "diag/text/operation_rows.h"
#include "diag/text/packed_texts.h"
#include "diag/text/state_rows.h"
#include "rib_text.h"

#include <cstdio>

namespace ribkit::diag {

[[gnu::cold]] uintptr_t put_unknown(const char *fallback, uint32_t value, char *str) {
    return static_cast<uintptr_t>(std::sprintf(str, fallback, value));
}

uintptr_t put_packed(uint32_t value, char *str, const uint32_t *values, size_t count) {
    const char *const fallback = reinterpret_cast<const char *>(values + count);
    const char *text = fallback;
    for (; count != 0; --count) {
        text += std::strlen(text) + 1;
        if (*values++ == value) {
            std::strcpy(str, text);
            return reinterpret_cast<uintptr_t>(str);
        }
    }
    return put_unknown(fallback, value, str);
}

} // namespace ribkit::diag

using namespace ribkit::diag;

uintptr_t rib_rtn_to_str(uint32_t rtn, char *str) { return put_text<result_texts>(rtn, str); }
uintptr_t rib_uuid_to_str(uint32_t uuid, char *str) { return put_text<client_texts>(uuid, str); }
void rib_uuid_to_proto_str(uint32_t uuid, char *str) { put_text<client_proto_texts>(uuid, str); }
uintptr_t rib_fcroute_proto_to_str(uint32_t proto, char *str) { return put_text<fcroute_proto_texts>(proto, str); }
uintptr_t rib_fcroute_type_to_str(uint32_t type, char *str) { return put_text<fcroute_type_texts>(type, str); }
uintptr_t rib_fcroute_perm_to_str(uint32_t perm, char *str) { return put_text<fcroute_perm_texts>(perm, str); }

uintptr_t rib_fclrt_type_to_str(uint32_t value, char *str) { return put_text<fclrt_type_texts>(value, str); }
uintptr_t rib_fcmrt_type_to_str(uint32_t value, char *str) { return put_text<fcmrt_type_texts>(value, str); }
uintptr_t rib_fcurt_type_to_str(uint32_t value, char *str) { return put_text<fcurt_type_texts>(value, str); }
uintptr_t rib_query_to_str(uint32_t value, char *str) { return put_text<query_texts>(value, str); }
uintptr_t rib_oper_to_str(uint32_t value, char *str) { return put_text<oper_texts>(value, str); }
uintptr_t rib_action_to_str(uint32_t value, char *str) { return put_text<action_texts>(value, str); }
uintptr_t rib_route_type_to_str(uint32_t value, char *str) { return put_text<route_type_texts>(value, str); }
uintptr_t rib_sync_to_str(uint32_t value, char *str) { return put_text<sync_texts>(value, str); }

uintptr_t rib_sup_state_to_str(uint32_t value, char *str) { return put_text<sup_state_texts>(value, str); }
uintptr_t rib_mod_state_to_str(uint32_t value, char *str) { return put_text<mod_state_texts>(value, str); }
uintptr_t rib_mod_type_to_str(uint32_t value, char *str) { return put_text<mod_type_texts>(value, str); }
uintptr_t rib_vsan_state_to_str(uint32_t value, char *str) { return put_text<vsan_state_texts>(value, str); }
uintptr_t rib_vsan_state_chg_to_str(uint32_t value, char *str) { return put_text<vsan_state_chg_texts>(value, str); }
uintptr_t rib_vsan_bal_to_str(uint32_t value, char *str) { return put_text<vsan_bal_texts>(value, str); }
uintptr_t rib_vsan_iod_to_str(uint32_t value, char *str) { return put_text<vsan_iod_texts>(value, str); }
uintptr_t rib_pm_layer_to_str(uint32_t value, char *str) { return put_text<pm_layer_texts>(value, str); }
uintptr_t rib_pm_state_to_str(uint32_t value, char *str) { return put_text<pm_state_texts>(value, str); }
uintptr_t rib_pcm_event_to_str(uint32_t value, char *str) { return put_text<pcm_event_texts>(value, str); }
uintptr_t rib_mem_to_str(uint32_t value, char *str) { return put_text<mem_texts>(value, str); }
uintptr_t rib_in_to_str(uint32_t value, char *str) { return put_text<in_texts>(value, str); }
uintptr_t rib_verf_to_str(uint32_t value, char *str) { return put_text<verf_texts>(value, str); }
uintptr_t rib_test_type_to_str(uint32_t value, char *str) { return put_text<test_type_texts>(value, str); }
uintptr_t rib_cmi_msg_to_str(uint32_t value, char *str) { return put_text<cmi_msg_texts>(value, str); }
uintptr_t rib_time_op_to_str(uint32_t value, char *str) { return put_text<time_op_texts>(value, str); }

uintptr_t fib_state_to_str(uint32_t value, char *str) { return put_text<fib_state_texts>(value, str); }
uintptr_t fib_mod_type_to_str(uint32_t value, char *str) { return put_text<fib_mod_type_texts>(value, str); }
uintptr_t fib_verf_to_str(uint32_t value, char *str) { return put_text<fib_verf_texts>(value, str); }
uintptr_t fib_route_type_to_str(uint32_t value, char *str) { return put_text<fib_route_type_texts>(value, str); }
uintptr_t fib_reason_to_str(uint32_t value, char *str) { return put_text<fib_reason_texts>(value, str); }
uintptr_t fib_oper_to_str(uint32_t value, char *str) { return put_text<fib_oper_texts>(value, str); }
uintptr_t fib_iod_mode_to_str(uint32_t value, char *str) { return put_text<fib_iod_mode_texts>(value, str); }
uintptr_t fib_action_to_str(uint32_t value, char *str) { return put_text<fib_action_texts>(value, str); }
