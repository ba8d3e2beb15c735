// Traces of what changes the RIB: registrations, verifications, update messages and their route records, and the state
// of a module's FIB. Everything is read as it stands in the send buffer.
#include "codec/messages/forms.h"
#include "codec/messages/route.h"
#include "diag/print.h"
#include "rib_trace.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

constexpr uint32_t fc_label_route = 4;     // matches an FC ID
constexpr uint32_t source_label_route = 1; // matches a source interface

struct label_entry {
    view<wire::label> entry;
    char *put(char *to) const { return put_label(to, entry); }
};

/// A name string of a message.
struct characters {
    std::string_view all;
    char *put(char *to) const {
        std::memcpy(to, all.data(), all.size());
        return to + all.size();
    }
};

template <typename List> void print_labels(const List &labels) {
    for (const auto label : labels) {
        print_row<" %s">(label_entry{label});
    }
}

void print_label_hops(view<wire::fclrt> route) {
    for (const auto hop : route.list<"intf">()) {
        print_row<"  %s Control %s\n">(text(rib_if_index_to_str, hop.get<"intf">()),
                                       text(rib_fclrt_ctrl_to_str, hop.area<"ctrl">().data()));
        print_row<"   push %u labels">(hop.get<"ctrl", "push">());
        print_labels(hop.list<"push">());
        std::putchar('\n');
    }
}

} // namespace

void rib_printf_reg(const void *msg) {
    const view<wire::registration> reg{msg};
    print_row<"%s %s sent RIB register uuid %u dist %u (size %u)\n">(
        stamp(), characters{reg.text<"name">()}, reg.get<"uuid">(), reg.get<"distance">(), reg.size());
}

void rib_printf_verf(const void *msg) {
    const view<wire::verify> verify{msg};
    if (!faces_operator(verify.get<"uuid">())) {
        print_row<"%s %s sent RIB %s (size %u)\n">(stamp(), text(rib_uuid_to_uc_str, verify.get<"uuid">()),
                                                   text(rib_verf_to_str, verify.get<"type">()), verify.size());
    }
}

void rib_printf_fclrt_update(uint32_t size, const void *msg) {
    const view<wire::fclrt_update> update{msg};
    if (!faces_operator(update.get<"uuid">())) {
        print_row<"%s %s sent RIB %s vsan %u for %u labels (size %u)\n">(
            stamp(), text(rib_uuid_to_uc_str, update.get<"uuid">()), text(rib_oper_to_str, update.get<"oper">()),
            update.get<"vsan">(), update.get<"n_route">(), size);
    }
}

void rib_printf_fcurt_update(uint32_t size, const void *msg) {
    const view<wire::fcurt_update> update{msg};
    if (!faces_operator(update.get<"uuid">())) {
        print_row<"%s %s sent RIB %s vsan %u for %u ucast (size %u)\n">(
            stamp(), text(rib_uuid_to_uc_str, update.get<"uuid">()), text(rib_oper_to_str, update.get<"oper">()),
            update.get<"vsan">(), update.get<"n_route">(), size);
    }
}

void rib_printf_fcmrt_update(uint32_t size, const void *msg) {
    const view<wire::fcmrt_update> update{msg};
    if (!faces_operator(update.get<"uuid">())) {
        print_row<"%s %s sent RIB %s vsan %u for %u mcast (size %u)\n">(
            stamp(), text(rib_uuid_to_uc_str, update.get<"uuid">()), text(rib_oper_to_str, update.get<"oper">()),
            update.get<"vsan">(), update.get<"n_route">(), size);
    }
}

void rib_printf_fib_state(const void *record) {
    const view<wire::fib_state> fib{record};
    print_row<"FIB in module %u is %s!\n">(fib.shown<"module">(), text(fib_state_to_str, fib.get<"state">()));
}

void rib_printf_fcurt(const void *msg, const void *record) {
    const view<wire::fcurt> route{record};
    if (faces_operator(view<wire::fcurt_update>(msg).get<"uuid">())) {
        return;
    }
    print_row<" %s fc id 0x%06x mask 0x%06x metric %u flag %s with %u interfaces\n">(
        text(rib_action_to_str, route.get<"action">()), route.get<"fcid">(), route.get<"mask">(), route.get<"metric">(),
        text(rib_fcurt_flag_to_str, route.get<"flag">()), route.get<"n_hop">());
    print_interfaces("  ", route.list<"hop">());
}

void rib_printf_fcmrt(const void *msg, const void *record) {
    const view<wire::fcmrt> route{record};
    if (faces_operator(view<wire::fcmrt_update>(msg).get<"uuid">())) {
        return;
    }
    print_row<" %s fc id 0x%06x mask 0x%06x with %u interfaces\n">(text(rib_action_to_str, route.get<"action">()),
                                                                   route.get<"fcid">(), route.get<"mask">(),
                                                                   route.get<"n_intf">());
    print_interfaces("  ", route.list<"intf">());
}

void rib_printf_fclrt(const void *msg, const void *record) {
    const view<wire::fclrt> route{record};
    const uint32_t type = route.get<"type">();
    if (faces_operator(view<wire::fclrt_update>(msg).get<"uuid">())) {
        return;
    }
    print_row<" %s">(text(rib_action_to_str, route.get<"action">()));
    if (type == fc_label_route) {
        print_row<" fc id 0x%06x mask 0x%06x">(route.get<"fcid">(), route.get<"mask">());
    }
    print_labels(route.list<"match">());
    if (type == source_label_route) {
        print_row<" %s">(text(rib_if_index_to_str, route.list<"src">()[0].get<"intf">()));
    }
    print_row<" with %u interfaces\n">(route.get<"n_intf">());
    print_label_hops(route);
}
