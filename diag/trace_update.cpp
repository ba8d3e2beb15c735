// Traces of what changes the RIB: registrations, verifications, update messages and their route records, and the state
// of a module's FIB. Everything is read as it stands in the send buffer.
#include "diag/compose.h"
#include "diag/fields.h"
#include "diag/print.h"
#include "rib_trace.h"

using namespace ribkit::diag;

namespace {

constexpr uint32_t fc_label_route = 4;     // matches an FC ID
constexpr uint32_t source_label_route = 1; // matches a source interface
constexpr size_t first_label_hop = 104;
constexpr size_t name_size = 80;

struct label_entry {
    uint32_t word;
    char *put(char *to) const { return put_label(to, word); }
};

/// A name string of a message; a terminator may be missing.
struct name_string {
    const uint8_t *name;
    char *put(char *to) const {
        const size_t length = strnlen(reinterpret_cast<const char *>(name), name_size);
        std::memcpy(to, name, length);
        return to + length;
    }
};

void print_labels(const fields &record, size_t offset, uint32_t count) {
    for (uint32_t label = 0; label < count; ++label) {
        print_row<" %s">(label_entry{record.word(offset + size_t{4} * label)});
    }
}

void print_label_hops(const fields &route, uint32_t count) {
    size_t hop = first_label_hop;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t pushed = route.byte(hop + 1);
        print_row<"  %s Control %s\n">(text(rib_if_index_to_str, route.word(hop + 4)),
                                       text(rib_fclrt_ctrl_to_str, route.at(hop)));
        print_row<"   push %u labels">(pushed);
        print_labels(route, hop + 8, pushed);
        std::putchar('\n');
        hop += 8 + 4 * pushed;
    }
}

} // namespace

void rib_printf_reg(const void *msg) {
    const fields reg{msg};
    print_row<"%s %s sent RIB register uuid %u dist %u (size %u)\n">(stamp(), name_string{reg.at(8)}, reg.word(0),
                                                                     reg.word(4), 88U);
}

void rib_printf_verf(const void *msg) {
    const fields verify{msg};
    if (!faces_operator(verify.word(0))) {
        print_row<"%s %s sent RIB %s (size %u)\n">(stamp(), text(rib_uuid_to_uc_str, verify.word(0)),
                                                   text(rib_verf_to_str, verify.word(8)), 12U);
    }
}

void rib_printf_fclrt_update(uint32_t size, const void *msg) {
    const fields update{msg};
    if (!faces_operator(update.word(0))) {
        print_row<"%s %s sent RIB %s vsan %u for %u labels (size %u)\n">(
            stamp(), text(rib_uuid_to_uc_str, update.word(0)), text(rib_oper_to_str, update.word(8)), update.word(4),
            update.word(12), size);
    }
}

void rib_printf_fcurt_update(uint32_t size, const void *msg) {
    const fields update{msg};
    if (!faces_operator(update.word(0))) {
        print_row<"%s %s sent RIB %s vsan %u for %u ucast (size %u)\n">(
            stamp(), text(rib_uuid_to_uc_str, update.word(0)), text(rib_oper_to_str, update.word(8)), update.word(4),
            update.word(16), size);
    }
}

void rib_printf_fcmrt_update(uint32_t size, const void *msg) {
    const fields update{msg};
    if (!faces_operator(update.word(0))) {
        print_row<"%s %s sent RIB %s vsan %u for %u mcast (size %u)\n">(
            stamp(), text(rib_uuid_to_uc_str, update.word(0)), text(rib_oper_to_str, update.word(8)), update.word(4),
            update.word(12), size);
    }
}

// Modules are shown counted from 1.
void rib_printf_fib_state(const void *record) {
    const fields fib{record};
    print_row<"FIB in module %u is %s!\n">(fib.word(0) + 1, text(fib_state_to_str, fib.word(12)));
}

void rib_printf_fcurt(const void *msg, const void *record) {
    const fields route{record};
    if (faces_operator(fields(msg).word(0))) {
        return;
    }
    print_row<" %s fc id 0x%06x mask 0x%06x metric %u flag %s with %u interfaces\n">(
        text(rib_action_to_str, route.word(16)), route.word(0), route.word(4), route.word(20),
        text(rib_fcurt_flag_to_str, route.word(24)), route.word(28));
    print_interfaces("  ", route, 32, 8, route.word(28));
}

void rib_printf_fcmrt(const void *msg, const void *record) {
    const fields route{record};
    if (faces_operator(fields(msg).word(0))) {
        return;
    }
    print_row<" %s fc id 0x%06x mask 0x%06x with %u interfaces\n">(text(rib_action_to_str, route.word(8)),
                                                                   route.word(0), route.word(4), route.word(12));
    print_interfaces("  ", route, 16, 4, route.word(12));
}

void rib_printf_fclrt(const void *msg, const void *record) {
    const fields route{record};
    const uint32_t type = route.word(0);
    if (faces_operator(fields(msg).word(0))) {
        return;
    }
    print_row<" %s">(text(rib_action_to_str, route.word(16)));
    if (type == fc_label_route) {
        print_row<" fc id 0x%06x mask 0x%06x">(route.word(8), route.word(12));
    }
    print_labels(route, 32, route.word(20));
    if (type == source_label_route) {
        print_row<" %s">(text(rib_if_index_to_str, route.word(40)));
    }
    print_row<" with %u interfaces\n">(route.word(28));
    print_label_hops(route, route.word(28));
}
