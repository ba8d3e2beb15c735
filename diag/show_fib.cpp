// What the modules' FIBs report: verification results, VSANs, ports, nodes.
#include "diag/fields.h"
#include "diag/print.h"
#include "rib_show.h"

using namespace ribkit::diag;

namespace {

constexpr uint32_t supervisor = 1; // module type

auto status_of(const fields &entry) { return text(fib_verf_to_str, entry.word(0)); }

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
    const fields entry{record};
    if (header != 0) {
        print_lines("\nVSAN    FC ID/Mask (H)   Status", "----    ------ ------    ------");
    }
    print_row<"%-4u    %06x %06x    %s\n">(entry.word(4), entry.word(8), entry.word(12), status_of(entry));
}

void fib_show_verf_fcm(uint32_t header, const void *record) {
    const fields entry{record};
    if (header != 0) {
        print_lines("\nVSAN    FC ID (H)    Status", "----    ---------    ------");
    }
    print_row<"%-4u    %06x       %s\n">(entry.word(4), entry.word(8), status_of(entry));
}

void fib_show_verf_fcl(uint32_t header, const void *record) {
    const fields entry{record};
    if (header != 0) {
        print_lines("\nVSAN    # Labels    Label 0 (H)    Label 1 (H)    Status",
                    "----    --------    -----------    -----------    ------");
    }
    print_row<"%-4u    %-8u    %08x       %08x       %s\n">(entry.word(4), entry.word(20), entry.word(24),
                                                            entry.word(28), status_of(entry));
}

void fib_show_vsan(uint32_t header, const void *record) {
    const fields entry{record};
    const uint32_t vsan = entry.half(6);
    const uint32_t flags = entry.byte(4);
    const bool iod_known = (flags & 0x2) != 0 || vsan == 0;
    if (header != 0) {
        print_lines("\nVSAN    State        Load Balance    Latency(msec)    IOD        INTEROP_MODE4",
                    "----    ---------    ------------    -------------    --------   -------------");
    }
    print_row<"%-4u    %s    %s    %-13u    %s   %-13u\n">(
        vsan, text(rib_vsan_state_to_str, entry.byte(5) & 0xf, 9),
        text_if(vsan != 0, rib_vsan_bal_to_str, entry.byte(5) >> 4, 12), entry.word(0),
        text_if(iod_known, rib_vsan_iod_to_str, flags & 0x1, 8), flags >> 2 & 1);
}

void fib_show_port(uint32_t header, const void *record) {
    const fields port{record};
    if (header != 0) {
        print_lines("\nB:part of bundle   IOD:in order delivery mode   T:true   F:false",
                    "All fields in decimal except D Idx.", " D",
                    "Idx Interface        Mode     Status   VSAN Type Slot Port Chan B IOD",
                    "--- ---------------- -------- -------- ---- ---- ---- ---- ---- - ----");
    }
    print_row<"%s %s %s %s %-4u %-4u %-4u %-4u %-4u %s %s\n">(
        text(fib_d_idx_to_str, port.half(6)), text(rib_if_index_to_str, port.word(8), 16),
        text(rib_pm_mode_to_str, port.word(12), 8), text(rib_pm_state_to_str, port.byte(4), 8), port.word(16),
        port.byte(0), port.byte(1), port.byte(2), port.byte(3), truth{(port.byte(5) & 0x80) != 0},
        text(fib_iod_mode_to_str, port.word(20)));
}

void fib_show_node(uint32_t header, const void *record) {
    const fields node{record};
    const uint32_t type = node.byte(1);
    if (header != 0) {
        print_lines("\n        Node  Node                #",
                    "Module  (H)   Addr(H)  Type       Ports  Sup State     FIB State",
                    "------  ----  -------  ---------  -----  ------------  ---------");
    }
    print_row<"%-6u  %-4x  %-7x  %s  %-5u  %s  %s\n">(
        node.byte(0) + 1, node.half(6), node.word(8), text(rib_mod_type_to_str, type, 9), node.half(4),
        text_if(type == supervisor, rib_mod_state_to_str, node.byte(2), 12), text(fib_state_to_str, node.word(12)));
}
