// The synchronisation logs of the three route tables, and their state. An entry of a certain index is a marker: it has
// a count in place of an operation.
#include "codec/messages/sync.h"
#include "diag/print.h"
#include "rib_show.h"

using namespace ribkit;
using namespace ribkit::diag;

namespace {

constexpr uint32_t marker = 128;

template <typename Entry> auto time_of(Entry entry) { return text(time_word_to_str, entry.template get<"time">()); }
template <typename Entry> auto oper_of(Entry entry) { return text(fib_oper_to_str, entry.template get<"oper">(), 6); }
template <typename Entry> auto action_of(Entry entry) {
    return text(fib_action_to_str, entry.template get<"action">(), 6);
}

} // namespace

void rib_show_sync_fcu(uint32_t header, const void *record) {
    const view<wire::sync_fcu> entry{record};
    if (header != 0) {
        print_lines("\nIdx  Seq (H)   Oper    Action  VSAN  FC ID/Mask(H)  Time",
                    "---  --------  ------  ------  ----  ------ ------  ----");
    }
    if (entry.get<"index">() == marker) {
        print_row<"%-3u  %08x  %-35u  %s\n">(marker, entry.get<"sequence">(), entry.get<"oper">(), time_of(entry));
    } else {
        print_row<"%-3u  %08x  %s  %s  %-4u  %06x %06x  %s\n">(
            entry.get<"index">(), entry.get<"sequence">(), oper_of(entry), action_of(entry), entry.get<"vsan">(),
            entry.get<"fcid">(), entry.get<"mask">(), time_of(entry));
    }
}

void rib_show_sync_fcm(uint32_t header, const void *record) {
    const view<wire::sync_fcm> entry{record};
    if (header != 0) {
        print_lines("\nIdx  Seq (H)   Oper    Action  VSAN FC ID(H) Time",
                    "---  --------  ------  ------  ----  ------  ----");
    }
    if (entry.get<"index">() == marker) {
        print_row<"%-3u  %08x  %-28u  %s\n">(marker, entry.get<"sequence">(), entry.get<"oper">(), time_of(entry));
    } else {
        print_row<"%-3u  %08x  %s  %s  %-4u  %06x  %s\n">(entry.get<"index">(), entry.get<"sequence">(), oper_of(entry),
                                                          action_of(entry), entry.get<"vsan">(), entry.get<"fcid">(),
                                                          time_of(entry));
    }
}

void rib_show_sync_fcl(uint32_t header, const void *record) {
    const view<wire::sync_fcl> entry{record};
    if (header != 0) {
        print_lines("\nAll field in hex except Idx, VSAN and Time\n",
                    "Idx Seq (H)  Oper   Action Type      VSAN  FC ID/Mask   Label 0  Label 1",
                    "--- -------- ------ ------ --------- ---- ------ ------ -------- --------",
                    "  Time                     Interface", "  ------------------------ ---------");
    }
    if (entry.get<"index">() == marker) {
        print_row<"%-3u %08x %u\n">(marker, entry.get<"sequence">(), entry.get<"oper">());
        print_row<"  %s\n">(time_of(entry));
    } else {
        print_row<"%-3u %08x %s %s %s %-4u %06x %06x %08x %08x\n">(
            entry.get<"index">(), entry.get<"sequence">(), oper_of(entry), action_of(entry),
            text(rib_route_type_to_str, entry.get<"type">(), 9), entry.get<"vsan">(), entry.get<"fcid">(),
            entry.get<"mask">(), entry.get<"label_0">(), entry.get<"label_1">());
        print_row<"  %s %s\n">(time_of(entry), text(rib_if_index_to_str, entry.get<"intf">()));
    }
}

void rib_show_sync_gbl(uint32_t header, const void *record) {
    const view<wire::sync_gbl> log{record};
    if (header != 0) {
        print_lines("", "Idx     Seq (H)     Next    Time", "----    --------    ----    ----");
    }
    print_row<"%-4u    %08x    %-4u    %s\n">(log.get<"index">(), log.get<"sequence">(), log.get<"next">(),
                                              time_of(log));
}
