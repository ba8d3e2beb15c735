// What the modules' FIBs report: verification results, VSANs, ports, nodes.
#include "codec/messages/fib.h"
#include "diag/print.h"
#include "rib_show.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

constexpr uint32_t supervisor = 1; // module type

template <typename Entry> auto status_of(Entry entry) { return text(fib_verf_to_str, entry.template get<"status">()); }

using converter = uintptr_t(uint32_t value, char *str);

uintptr_t no_text(uint32_t /*value*/, char *str) {
    *str = '\0';
    return 0;
}

/// A column that stays blank where there is nothing to say.
text<converter, uint32_t> text_if(bool said, converter *convert, uint32_t value, int width) {
    return {said ? convert : no_text, value, width};
}

} // namespace

void fib_show_verf_fcu(uint32_t header, const void *record) {
    const view<wire::verf_fcu> entry{record};
    if (header != 0) {
        print_lines("\nVSAN    FC ID/Mask (H)   Status", "----    ------ ------    ------");
    }
    print_row<"%-4u    %06x %06x    %s\n">(entry.get<"vsan">(), entry.get<"fcid">(), entry.get<"mask">(),
                                           status_of(entry));
}

void fib_show_verf_fcm(uint32_t header, const void *record) {
    const view<wire::verf_fcm> entry{record};
    if (header != 0) {
        print_lines("\nVSAN    FC ID (H)    Status", "----    ---------    ------");
    }
    print_row<"%-4u    %06x       %s\n">(entry.get<"vsan">(), entry.get<"fcid">(), status_of(entry));
}

void fib_show_verf_fcl(uint32_t header, const void *record) {
    const view<wire::verf_fcl> entry{record};
    if (header != 0) {
        print_lines("\nVSAN    # Labels    Label 0 (H)    Label 1 (H)    Status",
                    "----    --------    -----------    -----------    ------");
    }
    print_row<"%-4u    %-8u    %08x       %08x       %s\n">(
        entry.get<"vsan">(), entry.get<"n_label">(), entry.get<"label_0">(), entry.get<"label_1">(), status_of(entry));
}

void fib_show_vsan(uint32_t header, const void *record) {
    const view<wire::vsan> entry{record};
    const uint32_t vsan = entry.get<"word_4", "vsan">();
    const bool iod_known = entry.get<"word_4", "iod_valid">() != 0 || vsan == 0;
    if (header != 0) {
        print_lines("\nVSAN    State        Load Balance    Latency(msec)    IOD        INTEROP_MODE4",
                    "----    ---------    ------------    -------------    --------   -------------");
    }
    print_row<"%-4u    %s    %s    %-13u    %s   %-13u\n">(
        vsan, text(rib_vsan_state_to_str, entry.get<"word_4", "state">(), 9),
        text_if(vsan != 0, rib_vsan_bal_to_str, entry.get<"word_4", "balance">(), 12), entry.get<"latency">(),
        text_if(iod_known, rib_vsan_iod_to_str, entry.get<"word_4", "iod">(), 8),
        entry.get<"word_4", "interop_mode_4">());
}

void fib_show_port(uint32_t header, const void *record) {
    const view<wire::port> port{record};
    if (header != 0) {
        print_lines("\nB:part of bundle   IOD:in order delivery mode   T:true   F:false",
                    "All fields in decimal except D Idx.", " D",
                    "Idx Interface        Mode     Status   VSAN Type Slot Port Chan B IOD",
                    "--- ---------------- -------- -------- ---- ---- ---- ---- ---- - ----");
    }
    print_row<"%s %s %s %s %-4u %-4u %-4u %-4u %-4u %s %s\n">(
        text(fib_d_idx_to_str, port.get<"d_idx">()), text(rib_if_index_to_str, port.get<"intf">(), 16),
        text(rib_pm_mode_to_str, port.get<"mode">(), 8), text(rib_pm_state_to_str, port.get<"status">(), 8),
        port.get<"vsan">(), port.get<"type">(), port.get<"slot">(), port.get<"port">(), port.get<"channel">(),
        truth{port.get<"bundle">() != 0}, text(fib_iod_mode_to_str, port.get<"iod">()));
}

void fib_show_node(uint32_t header, const void *record) {
    const view<wire::node> node{record};
    const uint32_t type = node.get<"type">();
    if (header != 0) {
        print_lines("\n        Node  Node                #",
                    "Module  (H)   Addr(H)  Type       Ports  Sup State     FIB State",
                    "------  ----  -------  ---------  -----  ------------  ---------");
    }
    print_row<"%-6u  %-4x  %-7x  %s  %-5u  %s  %s\n">(
        node.shown<"module">(), node.get<"node">(), node.get<"address">(), text(rib_mod_type_to_str, type, 9),
        node.get<"ports">(), text_if(type == supervisor, rib_mod_state_to_str, node.get<"sup_state">(), 12),
        text(fib_state_to_str, node.get<"fib_state">()));
}
