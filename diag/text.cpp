// The converters whose whole behaviour is their table.
#include "diag/client_rows.h"
#include "rib_text.h"

#include <cstdio>

namespace ribkit {

[[gnu::cold]] uintptr_t put_unknown(const char *fallback, uint32_t value, char *str) {
    return static_cast<uintptr_t>(std::sprintf(str, fallback, value));
}

} // namespace ribkit

using namespace ribkit;

uintptr_t rib_rtn_to_str(uint32_t rtn, char *str) { return put_text(result_texts, rtn, str); }
uintptr_t rib_uuid_to_str(uint32_t uuid, char *str) { return put_text(client_texts, uuid, str); }
void rib_uuid_to_proto_str(uint32_t uuid, char *str) { put_text(client_proto_texts, uuid, str); }
uintptr_t rib_fcroute_proto_to_str(uint32_t proto, char *str) { return put_text(fcroute_proto_texts, proto, str); }
uintptr_t rib_fcroute_type_to_str(uint32_t type, char *str) { return put_text(fcroute_type_texts, type, str); }
uintptr_t rib_fcroute_perm_to_str(uint32_t perm, char *str) { return put_text(fcroute_perm_texts, perm, str); }
