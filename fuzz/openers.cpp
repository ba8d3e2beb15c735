// One row for each thing that can be received. Where an update's records are walked, this is how a receiver does it.
#include "fuzz/openers.h"

#include "codec/catalogue.h"
#include "fib_codec.h"
#include "rib_codec.h"
#include "rib_mem.h"
#include "rib_show.h"
#include "rib_trace.h"
#include "rib_wrap.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace ribkit::codec;

namespace ribkit::fuzz {

namespace {

uint32_t word(const uint8_t *bytes, size_t at) {
    bytes += at;
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | uint32_t{bytes[3]};
}

/// Keeps the read that made a value which nobody needs.
void use(uint32_t value) { asm volatile("" : : "r"(value)); }

template <typename Each> void each(const uint8_t *first, uint32_t count, size_t stride, Each show) {
    for (uint32_t i = 0; i < count; ++i) {
        show(first + stride * i);
    }
}

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// Updates with their records.

using record_converter = uint32_t (*)(const void *, void *);

/// Converts header and records as a receiver does, from one buffer into the other or in place.
void receive_update(const accepted &m, void (*header)(const void *, void *), record_converter record, size_t first,
                    uint32_t count, bool in_place) {
    if (in_place) {
        std::memcpy(m.scratch, m.bytes, m.size);
    }
    const uint8_t *source = in_place ? m.scratch : m.bytes;
    header(source, m.scratch);
    size_t at = first;
    for (; count != 0; --count) {
        at += record(source + at, m.scratch + at);
    }
    require(at == m.size);
}

void read_unicast(const uint8_t *update, const uint8_t *record) {
    use(rib_ntoh_fcurt_get_fcid(record) + rib_ntoh_fcurt_get_action(record) + rib_ntoh_fcurt_get_metric(record) +
        rib_ntoh_fcurt_get_flag(record));
    each(record + 32, rib_ntoh_fcurt_get_n_hop(record), 8,
         [](const uint8_t *hop) { use(rib_ntoh_fcurt_route_get_intf(hop) + rib_ntoh_fcurt_route_get_domain(hop)); });
    rib_printf_fcurt(update, record);
}

/// @return the record's length
size_t read_label(const uint8_t *update, const uint8_t *record) {
    use(rib_ntoh_fclrt_get_type(record) + rib_ntoh_fclrt_get_vsan(record) + rib_ntoh_fclrt_get_action(record) +
        rib_ntoh_fclrt_get_n_match(record) + rib_ntoh_fclrt_get_n_src(record) + rib_ntoh_fclrt_get_src(record));
    size_t at = 104;
    for (uint32_t left = rib_ntoh_fclrt_get_n_intf(record); left != 0; --left) {
        use(rib_ntoh_fclrt_intf_get_intf(record + at));
        at += 8 + 4 * (rib_ntoh_fclrt_intf_get_ctrl(record + at) >> 16 & 0xff);
    }
    rib_printf_fclrt(update, record);
    return at;
}

void fcurt_update(const accepted &m) {
    require(rib_sizeof_fcurt_update(m.bytes) == m.size);
    std::array<uint32_t, 240> versions;
    rib_ntoh_fcurt_update_get_version(m.bytes, versions.data());
    for (uint32_t i = 0; i < rib_ntoh_fcurt_update_get_n_version(m.bytes); ++i) {
        rib_show_version(versions.at(i), i, rib_ntoh_fcurt_update_get_n_version(m.bytes));
    }
    rib_printf_fcurt_update(m.size, m.bytes);
    const uint32_t count = rib_ntoh_fcurt_update_get_n_route(m.bytes);
    size_t at = 980;
    for (uint32_t i = 0; i < count; ++i) {
        read_unicast(m.bytes, m.bytes + at);
        at += 32 + size_t{8} * rib_ntoh_fcurt_get_n_hop(m.bytes + at);
    }
    receive_update(m, rib_ntoh_fcurt_update, rib_ntoh_fcurt, 980, count, false);
    receive_update(m, rib_ntoh_fcurt_update, rib_ntoh_fcurt, 980, count, true);
}

void fclrt_update(const accepted &m) {
    require(rib_sizeof_fclrt_update(m.bytes) == m.size);
    rib_printf_fclrt_update(m.size, m.bytes);
    const uint32_t count = rib_ntoh_fclrt_update_get_n_route(m.bytes);
    size_t at = 16;
    for (uint32_t i = 0; i < count; ++i) {
        at += read_label(m.bytes, m.bytes + at);
    }
    receive_update(m, rib_ntoh_fclrt_update, rib_ntoh_fclrt, 16, count, false);
    receive_update(m, rib_ntoh_fclrt_update, rib_ntoh_fclrt, 16, count, true);
}

void fcmrt_update(const accepted &m) {
    require(rib_sizeof_fcmrt_update(m.bytes) == m.size);
    rib_printf_fcmrt_update(m.size, m.bytes);
    const uint32_t count = word(m.bytes, 12);
    size_t at = 16;
    for (uint32_t i = 0; i < count; ++i) {
        rib_printf_fcmrt(m.bytes, m.bytes + at);
        at += 16 + size_t{4} * word(m.bytes, at + 12);
    }
    receive_update(m, rib_ntoh_fcmrt_update, rib_ntoh_fcmrt, 16, count, false);
    receive_update(m, rib_ntoh_fcmrt_update, rib_ntoh_fcmrt, 16, count, true);
}

// Table entries.

void show_unicast(const uint8_t *entry) {
    require(rib_show_fcu(1, entry) == rib_show_fcurt(1, entry));
    rib_show_fcu(0, entry);
}

void show_multicast(const uint8_t *entry) {
    rib_show_fcm(1, entry);
    rib_show_fcmrt(1, 1, 64, entry);
    rib_show_fcmrt(0, 2, 64, entry);
}

/// @return the entry's length
uint32_t show_label(const uint8_t *entry) {
    require(rib_show_fcl(1, 0, entry) == rib_show_fcl(0, 0x110, entry));
    return rib_show_fcl(0, 0, entry);
}

void fclrt_info(const accepted &m) {
    uint32_t at = 4;
    for (uint32_t left = word(m.bytes, 0); left != 0; --left) {
        at += show_label(m.bytes + at);
    }
    require(at == m.size);
}

void topo(const accepted &m) {
    rib_show_fct(1, m.bytes);
    const uint32_t count = word(m.bytes, 8);
    for (uint32_t i = 0; i < count; ++i) {
        rib_show_version(word(m.bytes, 12 + size_t{4} * i), i, count);
    }
}

// Queries and answers.

void fclrt_query(const accepted &m) {
    rib_printf_fcl_query(m.bytes);
    std::memcpy(m.scratch, m.bytes, m.size);
    rib_next_fclrt_query(m.scratch, m.scratch);
}

void verf_query(const accepted &m) {
    rib_printf_verf_query(m.bytes);
    std::memcpy(m.scratch, m.bytes, m.size);
    rib_next_verf_query(m.scratch, m.scratch);
}

void in_info(const accepted &m) {
    const uint32_t kind = word(m.bytes, 4);
    if (kind == 1) {
        rib_show_in_ha(m.bytes + 8);
    } else if (kind == 2) {
        rib_show_in_mem(m.bytes + 8);
    }
}

void verf_info(const accepted &m) {
    rib_show_verf_info(1, m.bytes);
    const uint32_t type = word(m.bytes, 4);
    const bool labels = (type & 0x1111) != 0;
    const bool multicast = (type & 0x2222) != 0;
    each(m.bytes + 16, word(m.bytes, 0),
         labels      ? 32
         : multicast ? 12
                     : 16,
         [&](const uint8_t *key) {
             labels ? fib_show_verf_fcl(1, key) : multicast ? fib_show_verf_fcm(1, key) : fib_show_verf_fcu(1, key);
         });
}

void db_info(const accepted &m) {
    each(m.bytes + 8, word(m.bytes, 0), 20, [&m](const uint8_t *vsan) {
        rib_show_db(1, m.bytes, vsan);
        rib_show_db_total(1, vsan);
    });
}

void sys_info(const accepted &m) {
    uint32_t header = 1;
    each(m.bytes + 4, word(m.bytes, 0), 1560, [&header](const uint8_t *module) {
        fib_show_node(1, module);
        rib_show_sys_port(&header, module);
    });
}

void node(const accepted &m) {
    fib_show_node(1, m.bytes);
    rib_printf_fib_state(m.bytes);
}

void registration(const accepted &m) {
    rib_printf_reg(m.bytes);
    rib_show_register(1, m.bytes);
}

// Envelopes and images.

void cmi_request(const accepted &m) {
    uint32_t opcode = 0;
    uint32_t length = 0;
    const uint8_t *payload = nullptr;
    require(rib_wrap_cmi_recv(m.bytes, m.size, &opcode, &payload, &length) == 0);
    std::memcpy(m.scratch, payload, length);
}

void cmi_answer(const accepted &m) { std::memcpy(m.scratch, m.bytes + 112, word(m.bytes, 4)); }

void bud_image(const accepted &m) {
    require(bud_image_ntoh(m.bytes, m.scratch) == m.size);
    struct bud *bud = bud_create(16);
    if (bud != nullptr && bud_deserialize(bud, m.scratch) == 0) {
        bud_show(bud);
        for (uint32_t size = 1; size <= BUD_SIZES; ++size) {
            bud_show_free(bud, size);
        }
        uint8_t *image = nullptr;
        uint32_t length = 0;
        require(bud_serialize(bud, &image, &length) != 0 || length == m.size);
        std::free(image);
    }
    bud_destroy(bud);
    std::memcpy(m.scratch, m.bytes, m.size);
    require(bud_image_ntoh(m.scratch, m.scratch) == m.size && bud_image_hton(m.scratch, m.scratch) == m.size);
}

void cont_image(const accepted &m) {
    require(cont_image_ntoh(m.bytes, m.scratch) == m.size);
    const cont_config config{16, 16, 1};
    const uint32_t sizes[] = {16};
    struct cont *cont = cont_create(&config, sizes, nullptr, nullptr, 0);
    if (cont != nullptr && cont_deserialize(cont, m.scratch, m.size) == 0) {
        cont_show(cont);
        uint8_t *image = nullptr;
        uint32_t length = 0;
        require(cont_serialize(cont, &image, &length) != 0 || length == m.size);
        std::free(image);
    }
    cont_destroy(cont);
    std::memcpy(m.scratch, m.bytes, m.size);
    require(cont_image_ntoh(m.scratch, m.scratch) == m.size && cont_image_hton(m.scratch, m.scratch) == m.size);
}

void nothing(const accepted & /*m*/) {}

/// A function that takes the message alone.
template <void (*Function)(const void *)> void traced(const accepted &m) { Function(m.bytes); }
/// A display with a header flag.
template <void (*Function)(uint32_t, const void *)> void shown(const accepted &m) {
    Function(1, m.bytes);
    Function(0, m.bytes);
}
/// A display of each of the entries that are counted in one word.
template <void (*Function)(uint32_t, const void *), size_t Count, size_t First, size_t Stride>
void each_shown(const accepted &m) {
    each(m.bytes + First, word(m.bytes, Count), Stride, [](const uint8_t *entry) { Function(1, entry); });
}

constexpr opener all_openers[] = {
    {"rib_fclrt_update", rib_check_fclrt_update, fclrt_update},
    {"rib_fcmrt_update", rib_check_fcmrt_update, fcmrt_update},
    {"rib_fcurt_update", rib_check_fcurt_update, fcurt_update},
    {"rib_fcurt", rib_check_fcurt, [](const accepted &m) { read_unicast(m.bytes, m.bytes); }},
    {"rib_fclrt", rib_check_fclrt, [](const accepted &m) { require(read_label(m.bytes, m.bytes) == m.size); }},
    {"rib_fclrt_intf", rib_check_fclrt_intf, nothing},
    {"rib_fcmrt", rib_check_fcmrt, [](const accepted &m) { rib_printf_fcmrt(m.bytes, m.bytes); }},
    {"rib_fcurt_rsp", rib_check_fcurt_rsp, nothing},
    {"rib_fclrt_rsp", rib_check_fclrt_rsp, nothing},
    {"rib_fcmrt_rsp", rib_check_fcmrt_rsp, nothing},
    {"rib_fclrt_query", rib_check_fclrt_query, fclrt_query},
    {"rib_fcurt_query", rib_check_fcurt_query, traced<rib_printf_fcu_query>},
    {"rib_fcmrt_query", rib_check_fcmrt_query, traced<rib_printf_fcm_query>},
    {"rib_lbl_route", rib_check_lbl_route, [](const accepted &m) { require(show_label(m.bytes) == m.size); }},
    {"rib_ucast_route", rib_check_ucast_route, [](const accepted &m) { show_unicast(m.bytes); }},
    {"rib_mcast_route", rib_check_mcast_route, [](const accepted &m) { show_multicast(m.bytes); }},
    {"rib_topo", rib_check_topo, topo},
    {"rib_sync_fcl", rib_check_sync_fcl, shown<rib_show_sync_fcl>},
    {"rib_sync_fcm", rib_check_sync_fcm, shown<rib_show_sync_fcm>},
    {"rib_sync_fcu", rib_check_sync_fcu, shown<rib_show_sync_fcu>},
    {"rib_sync_query", rib_check_sync_query, nothing},
    {"rib_sync_info", rib_check_sync_info, nothing},
    {"rib_verify", rib_check_verify, traced<rib_printf_verf>},
    {"rib_reg_query", rib_check_reg_query, traced<rib_printf_reg_query>},
    {"rib_dm_query", rib_check_dm_query, traced<rib_printf_dm_query>},
    {"rib_sys_query", rib_check_sys_query, traced<rib_printf_sys_query>},
    {"rib_db_query", rib_check_db_query, traced<rib_printf_db_query>},
    {"rib_in_query", rib_check_in_query, traced<rib_printf_in_query>},
    {"rib_test_info", rib_check_test_info, nothing},
    {"rib_node_query", rib_check_node_query, traced<rib_printf_node_query>},
    {"rib_test_query", rib_check_test_query, traced<rib_printf_test_query>},
    {"rib_register", rib_check_register, registration},
    {"rib_fclrt_info", rib_check_fclrt_info, fclrt_info},
    {"rib_fcmrt_info", rib_check_fcmrt_info,
     [](const accepted &m) { each(m.bytes + 4, word(m.bytes, 0), 20, show_multicast); }},
    {"rib_fcurt_info", rib_check_fcurt_info,
     [](const accepted &m) { each(m.bytes + 8, word(m.bytes, 0), 36, show_unicast); }},
    {"rib_db_info", rib_check_db_info, db_info},
    {"rib_dm_info", rib_check_dm_info, each_shown<rib_show_dm, 0, 4, 68>},
    {"rib_in_info", rib_check_in_info, in_info},
    {"rib_reg_info", rib_check_reg_info, each_shown<rib_show_register, 0, 4, 88>},
    {"rib_sys_info", rib_check_sys_info, sys_info},
    {"rib_node_info", rib_check_node_info, node},
    {"rib_verf_query", rib_check_verf_query, verf_query},
    {"rib_verf_info", rib_check_verf_info, verf_info},
    {"fib_fcl_update", fib_check_fcl_update, nothing},
    {"fib_fcm_update", fib_check_fcm_update, nothing},
    {"fib_fcu_update", fib_check_fcu_update, nothing},
    {"fib_fcu_path", fib_check_fcu_path, nothing},
    {"fib_fcl_path", fib_check_fcl_path, nothing},
    {"fib_fcm_path", fib_check_fcm_path, nothing},
    {"fib_fcl_rsp", fib_check_fcl_rsp, nothing},
    {"fib_fcm_rsp", fib_check_fcm_rsp, nothing},
    {"fib_fcu_rsp", fib_check_fcu_rsp, nothing},
    {"fib_sync", fib_check_sync, nothing},
    {"fib_verf_fcu", fib_check_verf_fcu, shown<fib_show_verf_fcu>},
    {"fib_verf_fcm", fib_check_verf_fcm, shown<fib_show_verf_fcm>},
    {"fib_verf_fcl", fib_check_verf_fcl, shown<fib_show_verf_fcl>},
    {"fib_fcu_rsp_path", fib_check_fcu_rsp_path, each_shown<fib_show_verf_fcu, 16, 20, 16>},
    {"fib_fcm_rsp_path", fib_check_fcm_rsp_path, each_shown<fib_show_verf_fcm, 16, 20, 12>},
    {"fib_fcl_rsp_path", fib_check_fcl_rsp_path, each_shown<fib_show_verf_fcl, 16, 20, 32>},
    {"fib_node", fib_check_node, node},
    {"fib_port", fib_check_port, shown<fib_show_port>},
    {"fib_vsan", fib_check_vsan, shown<fib_show_vsan>},
    {"fib_vsan_update", fib_check_vsan_update, each_shown<fib_show_vsan, 4, 8, 8>},
    {"fib_vsan_rewrite_update", fib_check_vsan_rewrite_update, nothing},
    {"fib_vsan_rewrite_path", fib_check_vsan_rewrite_path,
     [](const accepted &m) { require(rib_vsan_rewrite_key_compare(m.bytes, m.bytes) == 0); }},
    {"fib_vsan_rewrite_rsp", fib_check_vsan_rewrite_rsp, nothing},
    {"rib_fib_fcu_lb_query", rib_fib_check_fcu_lb_query, nothing},
    {"rib_fib_fcu_lb_rsp", rib_fib_check_fcu_lb_rsp, nothing},
    {"cmi_request", rib_check_cmi_request, cmi_request},
    {"cmi_answer", rib_check_cmi_answer, cmi_answer},
    {"bud_image", bud_check_image, bud_image},
    {"cont_image", cont_check_image, cont_image},
};

} // namespace

std::span<const opener> openers() { return all_openers; }

const opener *find_opener(std::string_view name) {
    const auto *found = std::find_if(std::begin(all_openers), std::end(all_openers),
                                     [name](const opener &candidate) { return candidate.name == name; });
    return found == std::end(all_openers) ? nullptr : found;
}

void open(const opener &how, const accepted &message) {
    how.read(message);
    if (const ribkit::codec::message *m = find_message(std::string(how.name).c_str()); m != nullptr) {
        m->to_host(message.bytes, message.scratch);
        std::memcpy(message.scratch, message.bytes, message.size);
        m->to_host(message.scratch, message.scratch);
    }
}

} // namespace ribkit::fuzz
