// The numbers and their texts, kind by kind; those that are composed are composed here in another way.
#include "diag/text/expected_texts.h"

#include <stdexcept>

namespace ribkit::diag {

namespace {

expected_texts labels() {
    expected_texts table{"rib_fclrt_type", {}};
    const std::map<uint32_t, std::string> kinds = {
        {0x1, "src-label"}, {0x2, "1-label"}, {0x4, "2-labels"}, {0x8, "fc+label"}, {0xf, "all-labels"}};
    for (const auto &[kind, text] : kinds) {
        table.rows[0x10 | kind] = "query " + text;
        table.rows[0x20 | kind] = "query vsan " + text;
        table.rows[0x100 | kind] = "query " + text + " vault";
        table.rows[0x200 | kind] = "query vsan " + text + " vault";
        table.rows[0x1000 | kind] = "show " + text;
        if (kind != 0xf) {
            table.rows[0x40 | kind] = "query matched " + text;
            table.rows[0x400 | kind] = "query matched " + text + " vault";
        }
    }
    return table;
}

std::map<uint32_t, std::string> from(uint32_t first, const std::vector<std::string> &texts) {
    std::map<uint32_t, std::string> rows;
    for (const std::string &text : texts) {
        rows[first++] = text;
    }
    return rows;
}

std::map<uint32_t, std::string> bits(const std::vector<std::string> &texts) {
    std::map<uint32_t, std::string> rows;
    uint32_t bit = 1;
    for (const std::string &text : texts) {
        if (!text.empty()) {
            rows[bit] = text;
        }
        bit <<= 1;
    }
    return rows;
}

std::map<uint32_t, std::string> with(std::map<uint32_t, std::string> rows, uint32_t value, const std::string &text) {
    rows[value] = text;
    return rows;
}

std::vector<expected_texts> clients_and_results() {
    return {
        {"rib_rtn",
         {{0, "ok"},
          {0x40520001, "bad parameters"},
          {0x40520002, "not supported"},
          {0x40520003, "out of memory"},
          {0x40520004, "no database"},
          {0x40520005, "empty list"},
          {0x40520006, "empty table"},
          {0x40520007, "missing device"},
          {0x40520008, "missing response"},
          {0x40520009, "timeout"},
          {0x4052000a, "hw access error"},
          {0x4052000b, "hw tcam/ssram full"},
          {0x4052000c, "sw bug"},
          {0x4052000d, "failed"},
          {0x4052000e, "index used"},
          {0x4052000f, "flow existed"},
          {0x40520010, "no entry"},
          {0x40520011, "excess qip data"},
          {0x40520012, "lc upgrading"},
          {0x40520013, "not in hw"},
          {0x4052001c, "vsan tcam full"},
          {0x40520021, "object is owned by another app"}}},
        {"rib_uuid",
         {{10, "rib"},          {12, "fspf"},
          {13, "fcmpls"},       {14, "mcast"},
          {16, "Port Manager"}, {17, "flogi"},
          {19, "rscn"},         {21, "tlport"},
          {22, "fcdomain"},     {25, "Line card Manager"},
          {26, "snmpd"},        {28, "Port Channel Manager"},
          {36, "fcs"},          {39, "rib-config"},
          {41, "VSAN manager"}, {62, "LC Process Manager"},
          {64, "rib-test"},     {67, "span"},
          {119, "fc-tunnel"},   {159, "rlir"},
          {180, "ozel"},        {428, "brin"}},
         "client ",
         number::decimal,
         "??"},
        {"rib_uuid_to_proto",
         {{10, "default"},
          {12, "fspf"},
          {13, "fc-mpls"},
          {14, "mcast"},
          {16, "local"},
          {17, "local"},
          {21, "local"},
          {22, "dm ctrl"},
          {39, "static"},
          {64, "test"}},
         "unknown",
         number::none,
         ""},
        {"rib_fcroute_proto", from(1, {"other", "local", "static", "fspf", "mpls", "mcast"})},
        {"rib_fcroute_type", from(1, {"direct", "remote"})},
        {"rib_fcroute_perm", from(1, {"perm", "volatile"})},
    };
}

std::vector<expected_texts> operations() {
    return {
        labels(),
        {"rib_fcmrt_type", bits({"query all", "query vsan", "query matched", "query vault", "query all using cmi",
                                 "query vsan using cmi", "query matched using cmi", "", "show"})},
        {"rib_fcurt_type", bits({"query all",
                                 "query topo version",
                                 "query active",
                                 "query mine",
                                 "query route non-blocked",
                                 "query topo version non-blocked",
                                 "query config vault",
                                 "query data vault",
                                 "query vsan all",
                                 "query matched",
                                 "query vsan active",
                                 "query vsan/fc_id/mask",
                                 "query vsan all using cmi",
                                 "query matched using cmi",
                                 "query all using cmi",
                                 "query mine using cmi",
                                 "query temporal shifted",
                                 "show temporal shifted",
                                 "",
                                 "",
                                 "show all",
                                 "show topo version",
                                 "show active",
                                 "show mine"})},
        {"rib_query", bits({"query", "query non-blocked", "query vault", "query using cmi", "query vsan", "",
                            "query vsan vault", "query vsan using cmi", "show"})},
        {"rib_oper", bits({"update", "remove", "remove all", "merge", "update with response", "remove with response",
                           "remove all with response", "merge with response", "update using cmi", "add version",
                           "delete version", "", "restore", "suspend", "resume", "replay", "verify"})},
        {"rib_action", with(bits({"add", "delete", "change flag", "change metric", "add ucast+label",
                                  "delete ucast+label", "add label", "delete label", "add fc+label", "delete fc+label",
                                  "add label-tunnel", "delete label-tunnel", "delete group"}),
                            0xc, "change flag and metric")},
        {"rib_route_type",
         with(bits({"src-label", "label", "fc+label", "", "mcast", "", "", "", "ucast", "ucast+lbl"}), 0, "unknown")},
        {"rib_sync", from(0, {"label sync log", "mcast sync log", "ucast sync log"}), "", number::hex, "h?? sync log"},
    };
}

std::vector<expected_texts> states() {
    return {
        {"rib_sup_state", from(0, {"unknown", "active", "standby", "cold standby", "offline"})},
        {"rib_mod_state", from(0, {"active", "standby", "cold standby"})},
        {"rib_mod_type", {{0, "line card"}, {1, "sup"}, {2, "ilc"}, {4, "sup hybrid"}, {5, "ips"}, {255, "unknown"}}},
        {"rib_vsan_state", from(0, {"no change", "active", "suspended", "unconfig", "config"})},
        {"rib_vsan_state_chg", from(0, {"no change", "to suspended", "to active"})},
        {"rib_vsan_bal", from(1, {"SID/DID", "SID/DID/OXID"})},
        {"rib_vsan_iod", from(0, {"disabled", "enabled"})},
        {"rib_pm_layer", with(from(1, {"fc", "ethernet", "virt fc", "inband", "eobc", "mgmt"}), 99, "unknown")},
        {"rib_pm_state", with(bits({"up", "down", "testing", "trunking"}), 255, "all")},
        {"rib_pcm_event", from(0, {"none", "create", "delete", "change", "state change", "mode change"})},
        {"rib_mem",
         from(1, {"ack", "domain reach", "dist tree", "label", "mcast", "active route", "topo", "ucast+label", "ucast",
                  "qip ref", "registry", "track", "sys attr", "verify", "vsan attr", "pending"})},
        {"rib_in",
         from(1, {"ha", "memory pool", "label ack q", "mcast ack q", "ucast ack q", "apps ack q", "pending list",
                  "switchover log"}),
         "data "},
        {"rib_verf",
         bits({"", "", "", "", "verify rib label with vault", "verify rib mcast with vault",
               "verify rib ucast with vault", "", "verify rib label with fib", "verify rib mcast with fib",
               "verify rib ucast with fib", "", "clear verify label report", "clear verify mcast report",
               "clear verify ucast report"}),
         "verify "},
        {"rib_test_type", from(1, {"disable eng debug", "enable eng debug", "query eng debug"})},
        {"rib_cmi_msg", from(1, {"get", "get next", "set", "delete"})},
        {"rib_time_op", from(1, {"started", "stopped", "expired"})},
    };
}

std::vector<expected_texts> modules() {
    return {
        {"fib_state",
         from(0, {"offline", "ready", "loading", "verifying", "active", "isolated", "exited", "upgrading"})},
        {"fib_mod_type", from(0, {"FIB", "sFIB"}), "FIB "},
        {"fib_verf",
         with(bits({"not in rib in vault", "in rib not in vault", "duplicate in vault", "bad param in vault",
                    "not in rib in fib", "in rib not in fib", "duplicate in fib", "bad param in fib",
                    "not in rib/fib in hw", "in rib/fib not in hw", "duplicate in hw", "bad param in hw"}),
              0, "consistent")},
        {"fib_route_type",
         {{0, "unknown"},
          {0x100, "drop"},
          {0x200, "lbl drop"},
          {0x400, "fc drop"},
          {0x1000, "sof"},
          {0x2000, "SOFi2"},
          {0x4000, "SOFn2"},
          {0x8000, "SOF F"},
          {0x10000, "src-label"},
          {0x20000, "1-label"},
          {0x40000, "2-labels"},
          {0x80000, "fc+label"},
          {0xf0000, "all-label"},
          {0x100000, "mcast"},
          {0x1000000, "xlink srv"},
          {0x2000000, "local"},
          {0x4000000, "ucast"},
          {0x8000000, "wka"}}},
        {"fib_reason",
         from(0, {"normal frm", "bad class", "bad did", "bad sid", "login req", "temp no Nx", "perm no Nx",
                  "bad length", "fab busy", "hw error", "bad version", "ttl failed", "bad mpls op", "TL els",
                  "drop plogi acc", "RSVP frames", "zoned out fcpcmds", "non Readonly frames"})},
        {"fib_oper",
         {{0x1, "update"},
          {0x2, "remove"},
          {0x4, "remove all"},
          {0x10, "begin to merge"},
          {0x20, "merge"},
          {0x40, "end of merge"},
          {0x100, "begin to verify"},
          {0x200, "verify"},
          {0x400, "end of verify"},
          {0x1000, "clear adj stats"},
          {0x2000, "set adj stats"},
          {0x4000, "clear port stats"},
          {0x8000, "set port stats"}}},
        {"fib_iod_mode", from(0, {"idle", "edge", "core", "block", "blocking", "drain", "draining"})},
        {"fib_action", from(0, {"del+free", "add", "delete", "check"})},
        {"fib_d_idx", {{0xffff, "..."}, {0xdeadbeef, "..."}}, "", number::hex3, ""},
    };
}

} // namespace

std::string digits(uint64_t value, unsigned base, size_t width, char fill) {
    std::string text;
    do {
        text.insert(text.begin(), "0123456789abcdef"[value % base]);
        value /= base;
    } while (value != 0);
    return text.size() < width ? std::string(width - text.size(), fill) + text : text;
}

std::string expected_texts::of(uint32_t value) const {
    if (const auto row = rows.find(value); row != rows.end()) {
        return row->second;
    }
    switch (form) {
    case number::none:
        return before + after;
    case number::decimal:
        return before + digits(value, 10) + after;
    case number::hex3:
        return before + digits(value, 16, 3) + after;
    default:
        return before + digits(value, 16) + after;
    }
}

const std::vector<expected_texts> &all_expected_texts() {
    static const std::vector<expected_texts> all = [] {
        std::vector<expected_texts> joined;
        for (auto &part : {clients_and_results(), operations(), states(), modules()}) {
            joined.insert(joined.end(), part.begin(), part.end());
        }
        return joined;
    }();
    return all;
}

const expected_texts &expected(const std::string &name) {
    for (const expected_texts &candidate : all_expected_texts()) {
        if (candidate.name == name) {
            return candidate;
        }
    }
    throw std::invalid_argument(name);
}

} // namespace ribkit::diag
