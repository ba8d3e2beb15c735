// The rows of the catalogue, and the digests by which a test sees that a layout changed.
#include "codec/catalogue.h"

#include "codec/messages/forms.h"
#include "codec/messages/query.h"
#include "codec/messages/route.h"
#include "codec/messages/snmp.h"
#include "fib_codec.h"
#include "rib_codec.h"

#include <cstring>

namespace ribkit::codec {

static constexpr message messages[] = {
    {"rib", "fclrt_update", &wire::fclrt_update, rib_hton_fclrt_update, rib_ntoh_fclrt_update},
    {"rib", "fcmrt_update", &wire::fcmrt_update, rib_hton_fcmrt_update, rib_ntoh_fcmrt_update},
    {"rib", "fcurt_update", &wire::fcurt_update, rib_hton_fcurt_update, rib_ntoh_fcurt_update},
    {"rib", "fcurt", &wire::fcurt, rib_hton_fcurt, rib_ntoh_fcurt},
    {"rib", "fclrt", &wire::fclrt, rib_hton_fclrt, rib_ntoh_fclrt},
    {"rib", "fclrt_intf", &wire::fclrt_intf, rib_hton_fclrt_intf, rib_ntoh_fclrt_intf},
    {"rib", "fcmrt", &wire::fcmrt, rib_hton_fcmrt, rib_ntoh_fcmrt},
    {"rib", "fcurt_rsp", &wire::route_rsp, rib_hton_fcurt_rsp, rib_ntoh_fcurt_rsp},
    {"rib", "fclrt_rsp", &wire::route_rsp, rib_hton_fclrt_rsp, rib_ntoh_fclrt_rsp},
    {"rib", "fcmrt_rsp", &wire::route_rsp, rib_hton_fcmrt_rsp, rib_ntoh_fcmrt_rsp},
    {"rib", "fclrt_query", &wire::fclrt_query, rib_hton_fclrt_query, rib_ntoh_fclrt_query},
    {"rib", "fcurt_query", &wire::fcurt_query, rib_hton_fcurt_query, rib_ntoh_fcurt_query},
    {"rib", "fcmrt_query", &wire::fcmrt_query, rib_hton_fcmrt_query, rib_ntoh_fcmrt_query},
    {"rib", "lbl_route", &wire::lbl_route, rib_hton_lbl_route, rib_ntoh_lbl_route},
    {"rib", "ucast_route", &wire::ucast_route, rib_hton_ucast_route, rib_ntoh_ucast_route},
    {"rib", "mcast_route", &wire::mcast_route, rib_hton_mcast_route, rib_ntoh_mcast_route},
    {"rib", "topo", &wire::topo, rib_hton_topo, rib_ntoh_topo},
    {"rib", "sync_fcl", &wire::sync_fcl, rib_hton_sync_fcl, rib_ntoh_sync_fcl},
    {"rib", "sync_fcm", &wire::sync_fcm, rib_hton_sync_fcm, rib_ntoh_sync_fcm},
    {"rib", "sync_fcu", &wire::sync_fcu, rib_hton_sync_fcu, rib_ntoh_sync_fcu},
    {"rib", "sync_query", &wire::sync_query, rib_hton_sync_query, rib_ntoh_sync_query},
    {"rib", "sync_info", &wire::sync_info, rib_hton_sync_info, rib_ntoh_sync_info},
    {"rib", "verify", &wire::verify, rib_hton_verify, rib_ntoh_verify},
    {"rib", "reg_query", &wire::reg_query, rib_hton_reg_query, rib_ntoh_reg_query,
     "A receiver reads it as it arrived: rib_ntoh_reg_query converts nothing."},
    {"rib", "dm_query", &wire::dm_query, rib_hton_dm_query, rib_ntoh_dm_query},
    {"rib", "sys_query", &wire::sys_query, rib_hton_sys_query, rib_ntoh_sys_query},
    {"rib", "db_query", &wire::db_query, rib_hton_db_query, rib_ntoh_db_query},
    {"rib", "in_query", &wire::in_query, rib_hton_in_query, rib_ntoh_in_query},
    {"rib", "test_info", &wire::test_info, rib_hton_test_info, rib_ntoh_test_info},
    {"rib", "node_query", &wire::node_query, rib_hton_node_query, rib_ntoh_node_query},
    {"rib", "test_query", &wire::test_query, rib_hton_test_query, rib_ntoh_test_query},
    {"rib", "register", &wire::registration, rib_hton_register, rib_ntoh_register},
    {"rib", "fclrt_info", &wire::fclrt_info, rib_hton_fclrt_info, rib_ntoh_fclrt_info},
    {"rib", "fcmrt_info", &wire::fcmrt_info, rib_hton_fcmrt_info, rib_ntoh_fcmrt_info},
    {"rib", "fcurt_info", &wire::fcurt_info, rib_hton_fcurt_info, rib_ntoh_fcurt_info},
    {"rib", "db_info", &wire::db_info, rib_hton_db_info, rib_ntoh_db_info},
    {"rib", "dm_info", &wire::dm_info, rib_hton_dm_info, rib_ntoh_dm_info,
     "rib_ntoh_dm_info converts the count that stands in its destination and nothing else; entries are read as they "
     "arrived."},
    {"rib", "in_info", &wire::in_info, rib_hton_in_info, rib_ntoh_in_info,
     "Behind the two words a body is carried unchanged: 24 bytes of kind 1, 192 of kind 2, none of any other. "
     "rib_hton_in_info returns the kind."},
    {"rib", "reg_info", &wire::reg_info, rib_hton_reg_info, rib_ntoh_reg_info},
    {"rib", "sys_info", &wire::sys_info, rib_hton_sys_info, rib_ntoh_sys_info},
    {"rib", "node_info", &wire::node, rib_hton_node_info, rib_ntoh_node_info},
    {"rib", "verf_query", &wire::verf_query, rib_hton_verf_query, rib_ntoh_verf_query,
     "The key is a verf_fcl, whose word at 8 is then the cursor, where the low half of the type has a bit of 0x1111, "
     "else a verf_fcm where it has one of "
     "0x2222, else a verf_fcu; the rest of its room is not touched."},
    {"rib", "verf_info", &wire::verf_info, rib_hton_verf_info, rib_ntoh_verf_info,
     "n_key keys follow: verf_fcl where the low half of the type has a bit of 0x1111, else verf_fcm where it has one "
     "of 0x2222, else verf_fcu."},
    {"fib", "fcl_update", &wire::fib_update, fib_hton_fcl_update, fib_ntoh_fcl_update},
    {"fib", "fcm_update", &wire::fib_update, fib_hton_fcm_update, fib_ntoh_fcm_update},
    {"fib", "fcu_update", &wire::fib_update, fib_hton_fcu_update, fib_ntoh_fcu_update},
    {"fib", "fcu_path", &wire::fcu_path, fib_hton_fcu_path, fib_ntoh_fcu_path,
     "The kind is computed: on the wire a number (8 special, 6 well-known, 7 dd.ff.ff, 4 else), in host order a flag "
     "(0x08000000 well-known, 0x01000000 special, 0x02000000 area or port mask, 0x04000000 else; a word whose low byte "
     "is 0 on the wire stays)."},
    {"fib", "fcl_path", &wire::fcl_path, fib_hton_fcl_path, fib_ntoh_fcl_path},
    {"fib", "fcm_path", &wire::fcm_path, fib_hton_fcm_path, fib_ntoh_fcm_path},
    {"fib", "fcl_rsp", &wire::fib_rsp, fib_hton_fcl_rsp, fib_ntoh_fcl_rsp},
    {"fib", "fcm_rsp", &wire::fib_rsp, fib_hton_fcm_rsp, fib_ntoh_fcm_rsp},
    {"fib", "fcu_rsp", &wire::fib_rsp, fib_hton_fcu_rsp, fib_ntoh_fcu_rsp},
    {"fib", "sync", &wire::fib_sync, fib_hton_sync, fib_ntoh_sync},
    {"fib", "verf_fcu", &wire::verf_fcu, fib_hton_verf_fcu, fib_ntoh_verf_fcu},
    {"fib", "verf_fcm", &wire::verf_fcm, fib_hton_verf_fcm, fib_ntoh_verf_fcm},
    {"fib", "verf_fcl", &wire::verf_fcl, fib_hton_verf_fcl, fib_ntoh_verf_fcl},
    {"fib", "fcu_rsp_path", &wire::fcu_rsp_path, fib_hton_fcu_rsp_path, fib_ntoh_fcu_rsp_path},
    {"fib", "fcm_rsp_path", &wire::fcm_rsp_path, fib_hton_fcm_rsp_path, fib_ntoh_fcm_rsp_path},
    {"fib", "fcl_rsp_path", &wire::fcl_rsp_path, fib_hton_fcl_rsp_path, fib_ntoh_fcl_rsp_path},
    {"fib", "node", &wire::node, fib_hton_node, fib_ntoh_node},
    {"fib", "port", &wire::port, fib_hton_port, fib_ntoh_port},
    {"fib", "vsan", &wire::vsan, fib_hton_vsan, fib_ntoh_vsan},
    {"fib", "vsan_update", &wire::vsan_update, fib_hton_vsan_update, fib_ntoh_vsan_update},
    {"fib", "vsan_rewrite_update", &wire::vsan_rewrite_update, fib_hton_vsan_rewrite_update,
     fib_ntoh_vsan_rewrite_update},
    {"fib", "vsan_rewrite_path", &wire::vsan_rewrite_path, fib_hton_vsan_rewrite_path, fib_ntoh_vsan_rewrite_path},
    {"fib", "vsan_rewrite_rsp", &wire::vsan_rewrite_rsp, fib_hton_vsan_rewrite_rsp, fib_ntoh_vsan_rewrite_rsp},
    {"rib_fib", "fcu_lb_query", &wire::fcu_lb_query, rib_fib_hton_fcu_lb_query, rib_fib_ntoh_fcu_lb_query},
    {"rib_fib", "fcu_lb_rsp", &wire::fcu_lb_rsp, rib_fib_hton_fcu_lb_rsp, rib_fib_ntoh_fcu_lb_rsp},
};

std::span<const message> catalogue() { return messages; }

static constexpr form all_forms[] = {
    {&wire::cmi_envelope, "Content follows: a request has its operation code in front of it, an answer begins at 112."},
    {&wire::fib_state},
    {&wire::vsan_query},
    {&wire::in_ha, "The body of a rib_in_info of kind 1. Flags are true where they are 1."},
    {&wire::in_mem, "The body of a rib_in_info of kind 2."},
    {&wire::sync_gbl, "The state of a synchronisation log."},
    {&wire::fc_route_entry, "A row of the SNMP route table, which fcRouteEntry_hton and fcRouteEntry_ntoh convert."},
    {&wire::fc_route_flow_stat_entry,
     "A row of the SNMP flow statistics, which fcRouteFlowStatEntry_hton and fcRouteFlowStatEntry_ntoh convert."},
};

std::span<const form> forms() { return all_forms; }

const message *find_message(const char *name) {
    for (const message &m : messages) {
        const size_t prefix = std::strlen(m.prefix);
        const bool whole = std::strncmp(name, m.prefix, prefix) == 0 && name[prefix] == '_';
        if (std::strcmp(name, m.name) == 0 || (whole && std::strcmp(name + prefix + 1, m.name) == 0)) {
            return &m;
        }
    }
    return nullptr;
}

namespace {

/// FNV-1a.
struct digest {
    uint32_t value = 2166136261U;
    void byte(uint8_t b) { value = (value ^ b) * 16777619U; }
    void number(uint32_t n) {
        for (int shift = 0; shift < 32; shift += 8) {
            byte(static_cast<uint8_t>(n >> shift));
        }
    }
    void text(const char *t) {
        for (; *t != '\0'; ++t) {
            byte(static_cast<uint8_t>(*t));
        }
        byte(0);
    }
};

/// What a row does to the message, one word, half or byte after another: how the rows are split does not matter.
void add_wire(digest &d, const row &r) {
    if (is_list(r)) {
        for (const unsigned n : {static_cast<unsigned>(r.kind), static_cast<unsigned>(r.count.where), r.count.at + 0U,
                                 r.offset + 0U, r.stride + 0U, r.bound + 0U, wire_fingerprint(*r.entry)}) {
            d.number(n);
        }
        return;
    }
    const uint32_t unit = r.kind == row_kind::words  ? 4
                          : r.kind == row_kind::half ? 2
                          : r.kind == row_kind::name ? r.size
                                                     : 1;
    for (uint32_t at = r.offset; at < r.end(); at += unit) {
        for (const uint32_t n : {static_cast<uint32_t>(r.kind), at, unit, uint32_t{r.mask}}) {
            d.number(n);
        }
    }
}

} // namespace

uint32_t wire_fingerprint(const layout &l) {
    digest d;
    d.number(l.size);
    for (const row &r : l) {
        add_wire(d, r);
    }
    return d.value;
}

uint32_t description_fingerprint(const layout &l) {
    digest d;
    d.number(wire_fingerprint(l));
    d.text(l.name);
    for (const row &r : l) {
        for (const char *text : {r.name, r.vocabulary, r.unit}) {
            d.text(text);
        }
        d.byte(static_cast<uint8_t>(r.means));
        d.byte(r.shown_more);
        for (const row_part &p : r.parts) {
            d.text(p.name);
            d.text(p.vocabulary);
            d.byte(p.shift);
            d.byte(p.bits);
        }
        d.number(r.entry != nullptr ? description_fingerprint(*r.entry) : 0);
    }
    return d.value;
}

} // namespace ribkit::codec
