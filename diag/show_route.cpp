// Routes with next hops: the unicast table in the RIB's and in the protocol's view, and the label table. A hop is 8
// bytes (control record, domain bits, interface) and 4 for each label; its lines are the same in all three displays but
// for the domain and the form of the labels.
#include "diag/compose.h"
#include "diag/fields.h"
#include "diag/print.h"
#include "rib_show.h"

using namespace ribkit::diag;

namespace {

enum class hop_labels : uint8_t { words, stack_entries };

struct hop_view {
    bool shown;
    bool with_domain;
    hop_labels labels;
};

char *put_label_word(char *to, uint32_t label) { return put_hex(to, label, 8); }

/// "    %s  Control  %s\n      Labels", or "    %s  Labels" where the labels are stack entries; then "  %s" for each.
void show_labels(gathered &out, const fields &hop, hop_labels form) {
    char *end = put_interface(put(out.next(), "    "), hop.word(4));
    if (form == hop_labels::words) {
        end = put(end, "  Control  ");
        end = put(end + rib_fclrt_ctrl_to_str(hop.at(0), end), "\n    ");
    }
    out.add_up_to(put(end, "  Labels"));
    for (size_t label = 8; label < 8 + size_t{4} * hop.byte(1); label += 4) {
        char *to = put(out.next(), "  ");
        out.add_up_to((form == hop_labels::words ? put_label_word : put_label)(to, hop.word(label)));
    }
    out.add_up_to(put_char(out.next(), '\n'));
}

/// "    %s\n" or "    %s  Domain  %s\n"
void show_plain(gathered &out, const fields &hop, bool with_domain) {
    char *end = put_interface(put(out.next(), "    "), hop.word(4));
    if (with_domain) {
        end = put_domain(put(end, "  Domain  "), (hop.byte(2) & 0x1f) << 3 | hop.byte(3) >> 5);
    }
    out.add_up_to(put_char(end, '\n'));
}

/// Shows `count` hops from offset `end` and returns the offset behind the last one: the record's length.
uint32_t show_hops(const fields &record, uint32_t end, uint32_t count, hop_view view) {
    gathered out;
    for (uint32_t i = 0; i < count; ++i) {
        const fields hop{record.at(end)};
        if (view.shown && hop.byte(1) != 0) {
            show_labels(out, hop, view.labels);
        } else if (view.shown) {
            show_plain(out, hop, view.with_domain);
        }
        end += 8 + 4 * hop.byte(1);
    }
    return end;
}

/// The clients whose routes lead through domains.
bool routes_by_domain(uint32_t uuid) {
    return uuid == RIB_CLIENT_FSPF || uuid == RIB_CLIENT_CONFIG || uuid == RIB_CLIENT_TEST;
}

constexpr uint32_t rewrite_bit = 0x20; // of the rewrite byte; its low 5 bits are the reason
constexpr uint32_t no_hops_options = 0x110;

} // namespace

uint32_t rib_show_fcu(uint32_t header, const void *record) {
    const fields route{record};
    const uint32_t uuid = route.word(0);
    if (header != 0) {
        print_lines("\nD:direct  R:remote  P:permanent  V:volatile  A:active  N:non-active",
                    "W:rewrite reason    UP:user priority         TTL:time to live", "T:true    F:false",
                    "All fields in hex except VSAN, # Next Hops and Cost.",
                    "                                                  # Next",
                    "Service     VSAN   FC ID/Mask    RCtl/Mask  Flags  Hops  Cost   W  Reason",
                    "----------  ----  ------ ------  ---- ----  -----  ----  -----  -  ------");
    }
    print_row<"%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n">(
        text(rib_uuid_to_str, uuid, 10), route.word(4), route.word(8), route.word(12), route.byte(16), route.byte(17),
        text(rib_fcurt_flag_to_str, route.word(28)), route.word(32), route.word(24),
        truth{(route.byte(18) & rewrite_bit) != 0}, text(fib_reason_to_str, route.byte(18) & 0x1f, 12));
    return show_hops(route, 36, route.word(32), {true, routes_by_domain(uuid), hop_labels::words});
}

uint32_t rib_show_fcurt(uint32_t header, const void *record) {
    const fields route{record};
    const uint32_t uuid = route.word(0);
    if (header != 0) {
        print_lines("\nD:direct  R:remote  P:permanent  V:volatile  A:active  N:non-active",
                    "                                                          # Next",
                    "Protocol  VSAN       FC ID/Mask        RCtl/Mask    Flags  Hops  Cost",
                    "--------  ----    -------- --------    ---- ----    -----  ----  ----");
    }
    print_row<"%s  %-4u    %s %s    0x%02x 0x%02x    %s  %-4u  %u\n">(
        text(rib_uuid_to_proto_str, uuid, 8), route.word(4), text(fc_id_to_str, route.word(8)),
        text(fc_id_to_str, route.word(12)), route.byte(16), route.byte(17), text(rib_fcurt_flag_to_str, route.word(28)),
        route.word(32), route.word(24));
    return show_hops(route, 36, route.word(32), {true, routes_by_domain(uuid), hop_labels::stack_entries});
}

uint32_t rib_show_fcl(uint32_t header, uint32_t options, const void *record) {
    const fields route{record};
    if (header != 0) {
        print_lines("\nM:# matched labels  N:# next hops  UP:user priority  TTL:time to live",
                    "T:true              F:false", "All fields in hex except VSAN, M and N.",
                    "                                        Second   First          Source",
                    "Service    Type      VSAN  FC ID/Mask   Label 1  Label 0  M  N  Intf",
                    "---------- --------- ---- ------ ------ -------- -------- -- -- ----");
    }
    print_row<"%s %s %-4u %06x %06x %08x %08x %-2u %-2u %s\n">(
        text(rib_uuid_to_str, route.word(0), 10), text(rib_route_type_to_str, route.word(4), 9), route.word(8),
        route.word(16), route.word(20), route.word(36), route.word(32), route.word(24), route.word(28),
        text(rib_if_index_to_str, route.word(12)));
    return show_hops(route, 40, route.word(28), {(options & no_hops_options) == 0, false, hop_labels::words});
}
