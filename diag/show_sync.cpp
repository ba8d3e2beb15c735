// The synchronisation logs of the three route tables, and their state. An entry of a certain index is a marker: it has
// a count in place of an operation.
#include "diag/fields.h"
#include "diag/print.h"
#include "rib_show.h"

using namespace ribkit::diag;

namespace {

constexpr uint32_t marker = 128;

auto time_of(const fields &entry) { return text(time_word_to_str, entry.word(8)); }
auto oper_of(const fields &entry) { return text(fib_oper_to_str, entry.word(12), 6); }
auto action_of(const fields &entry) { return text(fib_action_to_str, entry.word(16), 6); }

} // namespace

void rib_show_sync_fcu(uint32_t header, const void *record) {
    const fields entry{record};
    if (header != 0) {
        print_lines("\nIdx  Seq (H)   Oper    Action  VSAN  FC ID/Mask(H)  Time",
                    "---  --------  ------  ------  ----  ------ ------  ----");
    }
    if (entry.word(0) == marker) {
        print_row<"%-3u  %08x  %-35u  %s\n">(marker, entry.word(4), entry.word(12), time_of(entry));
    } else {
        print_row<"%-3u  %08x  %s  %s  %-4u  %06x %06x  %s\n">(entry.word(0), entry.word(4), oper_of(entry),
                                                               action_of(entry), entry.word(20), entry.word(24),
                                                               entry.word(28), time_of(entry));
    }
}

void rib_show_sync_fcm(uint32_t header, const void *record) {
    const fields entry{record};
    if (header != 0) {
        print_lines("\nIdx  Seq (H)   Oper    Action  VSAN FC ID(H) Time",
                    "---  --------  ------  ------  ----  ------  ----");
    }
    if (entry.word(0) == marker) {
        print_row<"%-3u  %08x  %-28u  %s\n">(marker, entry.word(4), entry.word(12), time_of(entry));
    } else {
        print_row<"%-3u  %08x  %s  %s  %-4u  %06x  %s\n">(entry.word(0), entry.word(4), oper_of(entry),
                                                          action_of(entry), entry.word(20), entry.word(24),
                                                          time_of(entry));
    }
}

void rib_show_sync_fcl(uint32_t header, const void *record) {
    const fields entry{record};
    if (header != 0) {
        print_lines("\nAll field in hex except Idx, VSAN and Time\n",
                    "Idx Seq (H)  Oper   Action Type      VSAN  FC ID/Mask   Label 0  Label 1",
                    "--- -------- ------ ------ --------- ---- ------ ------ -------- --------",
                    "  Time                     Interface", "  ------------------------ ---------");
    }
    if (entry.word(0) == marker) {
        print_row<"%-3u %08x %u\n">(marker, entry.word(4), entry.word(12));
        print_row<"  %s\n">(time_of(entry));
    } else {
        print_row<"%-3u %08x %s %s %s %-4u %06x %06x %08x %08x\n">(
            entry.word(0), entry.word(4), oper_of(entry), action_of(entry),
            text(rib_route_type_to_str, entry.word(20), 9), entry.word(24), entry.word(28), entry.word(32),
            entry.word(40), entry.word(44));
        print_row<"  %s %s\n">(time_of(entry), text(rib_if_index_to_str, entry.word(48)));
    }
}

void rib_show_sync_gbl(uint32_t header, const void *record) {
    const fields log{record};
    if (header != 0) {
        print_lines("", "Idx     Seq (H)     Next    Time", "----    --------    ----    ----");
    }
    print_row<"%-4u    %08x    %-4u    %s\n">(log.word(0), log.word(4), log.word(12), time_of(log));
}
