// What the rows of the catalogue do not say: readers of fields, steps from key to key, displays of parts. Where an
// update's records are walked, this is how a receiver does it.
#include "fuzz/openers.h"

#include "catalogue/messages.h"
#include "codec/messages/route.h"
#include "codec/view.h"
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

/// Keeps the read that made a value which nobody needs.
void use(uint32_t value) { asm volatile("" : : "r"(value)); }

/// Shows each entry of a list.
template <typename Entries, typename Show> void each(const Entries &entries, Show show) {
    for (const auto entry : entries) {
        show(entry.data());
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
    each(view<wire::fcurt>(record).list<"hop">(),
         [](const uint8_t *hop) { use(rib_ntoh_fcurt_route_get_intf(hop) + rib_ntoh_fcurt_route_get_domain(hop)); });
    rib_printf_fcurt(update, record);
}

/// @return the record's length
size_t read_label(const uint8_t *update, const uint8_t *record) {
    use(rib_ntoh_fclrt_get_type(record) + rib_ntoh_fclrt_get_vsan(record) + rib_ntoh_fclrt_get_action(record) +
        rib_ntoh_fclrt_get_n_match(record) + rib_ntoh_fclrt_get_n_src(record) + rib_ntoh_fclrt_get_src(record));
    size_t at = wire::fclrt.size;
    for (uint32_t left = rib_ntoh_fclrt_get_n_intf(record); left != 0; --left) {
        use(rib_ntoh_fclrt_intf_get_intf(record + at));
        at += view<wire::fclrt_intf>(record + at).size();
    }
    rib_printf_fclrt(update, record);
    return at;
}

void fcurt_update(const accepted &m) {
    std::array<uint32_t, 240> versions;
    rib_ntoh_fcurt_update_get_version(m.bytes, versions.data());
    for (uint32_t i = 0; i < rib_ntoh_fcurt_update_get_n_version(m.bytes); ++i) {
        rib_show_version(versions.at(i), i, rib_ntoh_fcurt_update_get_n_version(m.bytes));
    }
    const uint32_t count = rib_ntoh_fcurt_update_get_n_route(m.bytes);
    size_t at = wire::fcurt_update.size;
    for (uint32_t i = 0; i < count; ++i) {
        read_unicast(m.bytes, m.bytes + at);
        at += view<wire::fcurt>(m.bytes + at).size();
    }
    receive_update(m, rib_ntoh_fcurt_update, rib_ntoh_fcurt, wire::fcurt_update.size, count, false);
    receive_update(m, rib_ntoh_fcurt_update, rib_ntoh_fcurt, wire::fcurt_update.size, count, true);
}

void fclrt_update(const accepted &m) {
    const uint32_t count = rib_ntoh_fclrt_update_get_n_route(m.bytes);
    size_t at = wire::fclrt_update.size;
    for (uint32_t i = 0; i < count; ++i) {
        at += read_label(m.bytes, m.bytes + at);
    }
    receive_update(m, rib_ntoh_fclrt_update, rib_ntoh_fclrt, wire::fclrt_update.size, count, false);
    receive_update(m, rib_ntoh_fclrt_update, rib_ntoh_fclrt, wire::fclrt_update.size, count, true);
}

void fcmrt_update(const accepted &m) {
    const uint32_t count = view<wire::fcmrt_update>(m.bytes).get<"n_route">();
    size_t at = wire::fcmrt_update.size;
    for (uint32_t i = 0; i < count; ++i) {
        rib_printf_fcmrt(m.bytes, m.bytes + at);
        at += view<wire::fcmrt>(m.bytes + at).size();
    }
    receive_update(m, rib_ntoh_fcmrt_update, rib_ntoh_fcmrt, wire::fcmrt_update.size, count, false);
    receive_update(m, rib_ntoh_fcmrt_update, rib_ntoh_fcmrt, wire::fcmrt_update.size, count, true);
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
    uint32_t at = wire::fclrt_info.size;
    for (uint32_t left = view<wire::fclrt_info>(m.bytes).get<"n_route">(); left != 0; --left) {
        at += show_label(m.bytes + at);
    }
    require(at == m.size);
}

void topo(const accepted &m) {
    const auto versions = view<wire::topo>(m.bytes).list<"version">();
    for (uint32_t i = 0; i < versions.size(); ++i) {
        rib_show_version(versions[i].get<"version">(), i, versions.size());
    }
}

// Queries and answers.

void fclrt_query(const accepted &m) {
    std::memcpy(m.scratch, m.bytes, m.size);
    rib_next_fclrt_query(m.scratch, m.scratch);
}

void verf_query(const accepted &m) {
    std::memcpy(m.scratch, m.bytes, m.size);
    rib_next_verf_query(m.scratch, m.scratch);
}

void db_info(const accepted &m) {
    each(view<wire::db_info>(m.bytes).list<"vsan">(), [](const uint8_t *vsan) { rib_show_db_total(1, vsan); });
}

void sys_info(const accepted &m) {
    each(view<wire::sys_info>(m.bytes).list<"module">(), [](const uint8_t *module) { fib_show_node(1, module); });
}

void node(const accepted &m) { rib_printf_fib_state(m.bytes); }

// Envelopes and images.

void cmi_request(const accepted &m) {
    uint32_t opcode = 0;
    uint32_t length = 0;
    const uint8_t *payload = nullptr;
    require(rib_wrap_cmi_recv(m.bytes, m.size, &opcode, &payload, &length) == 0);
    std::memcpy(m.scratch, payload, length);
}

void cmi_answer(const accepted &m) {
    std::memcpy(m.scratch, m.bytes + wire::cmi_envelope.at("opcode"),
                view<wire::cmi_envelope>(m.bytes).get<"length">());
}

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

/// What is read of a message beyond what its row of the catalogue names.
struct more_readers {
    std::string_view name;
    void (*read)(const accepted &);
};

constexpr more_readers readers[] = {
    {"rib_fclrt_update", fclrt_update},
    {"rib_fcmrt_update", fcmrt_update},
    {"rib_fcurt_update", fcurt_update},
    {"rib_fcurt", [](const accepted &m) { read_unicast(m.bytes, m.bytes); }},
    {"rib_fclrt", [](const accepted &m) { require(read_label(m.bytes, m.bytes) == m.size); }},
    {"rib_fclrt_query", fclrt_query},
    {"rib_lbl_route", [](const accepted &m) { require(show_label(m.bytes) == m.size); }},
    {"rib_ucast_route", [](const accepted &m) { show_unicast(m.bytes); }},
    {"rib_mcast_route", [](const accepted &m) { show_multicast(m.bytes); }},
    {"rib_topo", topo},
    {"rib_fclrt_info", fclrt_info},
    {"rib_fcmrt_info",
     [](const accepted &m) { each(view<wire::fcmrt_info>(m.bytes).list<"route">(), show_multicast); }},
    {"rib_fcurt_info", [](const accepted &m) { each(view<wire::fcurt_info>(m.bytes).list<"route">(), show_unicast); }},
    {"rib_db_info", db_info},
    {"rib_sys_info", sys_info},
    {"rib_node_info", node},
    {"rib_verf_query", verf_query},
    {"fib_node", node},
    {"fib_vsan_rewrite_path", [](const accepted &m) { require(rib_vsan_rewrite_key_compare(m.bytes, m.bytes) == 0); }},
};

consteval auto reader_of(std::string_view name) {
    for (const more_readers &more : readers) {
        if (more.name == name) {
            return more.read;
        }
    }
    return +[](const accepted & /*m*/) {};
}

constexpr opener others[] = {
    {"cmi_request", rib_check_cmi_request, cmi_request, nullptr},
    {"cmi_answer", rib_check_cmi_answer, cmi_answer, nullptr},
    {"bud_image", bud_check_image, bud_image, nullptr},
    {"cont_image", cont_check_image, cont_image, nullptr},
};

consteval auto make_openers() {
    std::array<opener, std::size(others) + std::size(catalogue::messages)> all{};
    auto *next = std::copy(std::begin(others), std::end(others), all.begin());
    for (const message &m : catalogue::messages) {
        *next++ = {m.name, m.check, reader_of(m.name), &m};
    }
    return all;
}

constexpr auto all_openers = make_openers();

// A reader of no message is a slip of the pen.
static_assert(std::all_of(std::begin(readers), std::end(readers), [](const more_readers &more) {
    return std::any_of(std::begin(catalogue::messages), std::end(catalogue::messages),
                       [&](const message &m) { return m.name == more.name; });
}));

} // namespace

std::span<const opener> openers() { return all_openers; }

const opener *find_opener(std::string_view name) {
    const auto *found = std::find_if(std::begin(all_openers), std::end(all_openers),
                                     [name](const opener &candidate) { return candidate.name == name; });
    return found == std::end(all_openers) ? nullptr : found;
}

static void open_as(const message &row, const accepted &m) {
    if (row.size != nullptr) {
        require(row.size(m.bytes) == m.size);
    }
    if (row.trace != nullptr) {
        row.trace(m.bytes, m.size, m.bytes);
    }
    for (uint32_t header : {1, 0}) {
        if (row.show != nullptr) {
            row.show(&header, m.bytes);
        }
    }
    row.to_host(m.bytes, m.scratch);
    std::memcpy(m.scratch, m.bytes, m.size);
    row.to_host(m.scratch, m.scratch);
}

void open(const opener &how, const accepted &message) {
    how.read(message);
    if (how.row != nullptr) {
        open_as(*how.row, message);
    }
}

} // namespace ribkit::fuzz
