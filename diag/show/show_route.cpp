// Routes with next hops: the unicast table in the RIB's and in the protocol's view, and the label table. A hop is 8
// bytes (control record, domain bits, interface) and 4 for each label; its lines are the same in all three displays but
// for the domain and the form of the labels.
#include "codec/messages/sync.h"
#include "diag/display_layouts.h"
#include "diag/print.h"
#include "rib_show.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

enum class hop_labels : uint8_t { words, stack_entries };

struct hop_form {
    bool shown;
    bool with_domain;
    hop_labels labels;
};

using hop_view = view<wire::fclrt_intf>;
using hop_list = decltype(view<wire::lbl_route>(nullptr).list<"intf">());

char *put_label_word(char *to, view<wire::label> label) { return put_hex(to, label.get<"label">(), 8); }

/// "    %s  Control  %s\n      Labels", or "    %s  Labels" where the labels are stack entries; then "  %s" for each.
void show_labels(gathered &out, hop_view hop, hop_labels form) {
    char *end = put_interface(put(out.next(), "    "), hop.get<"intf">());
    if (form == hop_labels::words) {
        end = put(end, "  Control  ");
        end = put(end + rib_fclrt_ctrl_to_str(hop.area<"ctrl">().data(), end), "\n    ");
    }
    out.add_up_to(put(end, "  Labels"));
    for (const auto label : hop.list<"push">()) {
        char *to = put(out.next(), "  ");
        out.add_up_to((form == hop_labels::words ? put_label_word : put_label)(to, label));
    }
    out.add_up_to(put_char(out.next(), '\n'));
}

/// "    %s\n" or "    %s  Domain  %s\n"
void show_plain(gathered &out, hop_view hop, bool with_domain) {
    char *end = put_interface(put(out.next(), "    "), hop.get<"intf">());
    if (with_domain) {
        end = put_domain(put(end, "  Domain  "), hop.as<wire::ucast_hop>().get<"ctrl", "domain">());
    }
    out.add_up_to(put_char(end, '\n'));
}

/// Shows the hops of a record and returns its length: it ends with the last one.
uint32_t show_hops(const uint8_t *record, hop_list hops, hop_form form) {
    gathered out;
    auto hop = hops.begin();
    for (; hop != hops.end(); ++hop) {
        if (form.shown && !(*hop).list<"push">().empty()) {
            show_labels(out, *hop, form.labels);
        } else if (form.shown) {
            show_plain(out, *hop, form.with_domain);
        }
    }
    return static_cast<uint32_t>(hop.at() - record);
}

/// The clients whose routes lead through domains.
bool routes_by_domain(uint32_t uuid) {
    return uuid == RIB_CLIENT_FSPF || uuid == RIB_CLIENT_CONFIG || uuid == RIB_CLIENT_TEST;
}

constexpr uint32_t no_hops_options = 0x110;

} // namespace

uint32_t rib_show_fcu(uint32_t header, const void *record) {
    const view<shown_ucast_route> route{record};
    const uint32_t uuid = route.get<"uuid">();
    if (header != 0) {
        print_lines("\nD:direct  R:remote  P:permanent  V:volatile  A:active  N:non-active",
                    "W:rewrite reason    UP:user priority         TTL:time to live", "T:true    F:false",
                    "All fields in hex except VSAN, # Next Hops and Cost.",
                    "                                                  # Next",
                    "Service     VSAN   FC ID/Mask    RCtl/Mask  Flags  Hops  Cost   W  Reason",
                    "----------  ----  ------ ------  ---- ----  -----  ----  -----  -  ------");
    }
    print_row<"%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n">(
        text(rib_uuid_to_str, uuid, 10), route.get<"vsan">(), route.get<"fcid">(), route.get<"mask">(),
        route.get<"rctl">(), route.get<"rctl_mask">(), text(rib_fcurt_flag_to_str, route.get<"flag">()),
        route.get<"n_hop">(), route.get<"cost">(), truth{route.get<"byte_18", "rewrite">() != 0},
        text(fib_reason_to_str, route.get<"byte_18", "reason">(), 12));
    return show_hops(route.data(), route.list<"hop">(), {true, routes_by_domain(uuid), hop_labels::words});
}

uint32_t rib_show_fcurt(uint32_t header, const void *record) {
    const view<shown_ucast_route> route{record};
    const uint32_t uuid = route.get<"uuid">();
    if (header != 0) {
        print_lines("\nD:direct  R:remote  P:permanent  V:volatile  A:active  N:non-active",
                    "                                                          # Next",
                    "Protocol  VSAN       FC ID/Mask        RCtl/Mask    Flags  Hops  Cost",
                    "--------  ----    -------- --------    ---- ----    -----  ----  ----");
    }
    print_row<"%s  %-4u    %s %s    0x%02x 0x%02x    %s  %-4u  %u\n">(
        text(rib_uuid_to_proto_str, uuid, 8), route.get<"vsan">(), text(fc_id_to_str, route.get<"fcid">()),
        text(fc_id_to_str, route.get<"mask">()), route.get<"rctl">(), route.get<"rctl_mask">(),
        text(rib_fcurt_flag_to_str, route.get<"flag">()), route.get<"n_hop">(), route.get<"cost">());
    return show_hops(route.data(), route.list<"hop">(), {true, routes_by_domain(uuid), hop_labels::stack_entries});
}

uint32_t rib_show_fcl(uint32_t header, uint32_t options, const void *record) {
    const view<wire::lbl_route> route{record};
    const auto match = route.list<"match">();
    if (header != 0) {
        print_lines("\nM:# matched labels  N:# next hops  UP:user priority  TTL:time to live",
                    "T:true              F:false", "All fields in hex except VSAN, M and N.",
                    "                                        Second   First          Source",
                    "Service    Type      VSAN  FC ID/Mask   Label 1  Label 0  M  N  Intf",
                    "---------- --------- ---- ------ ------ -------- -------- -- -- ----");
    }
    print_row<"%s %s %-4u %06x %06x %08x %08x %-2u %-2u %s\n">(
        text(rib_uuid_to_str, route.get<"uuid">(), 10), text(rib_route_type_to_str, route.get<"type">(), 9),
        route.get<"vsan">(), route.get<"fcid">(), route.get<"mask">(), match[1].get<"label">(), match[0].get<"label">(),
        route.get<"n_match">(), route.get<"n_intf">(), text(rib_if_index_to_str, route.get<"src">()));
    return show_hops(route.data(), route.list<"intf">(), {(options & no_hops_options) == 0, false, hop_labels::words});
}
