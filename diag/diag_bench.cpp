// What a text and a display row cost, beside what a compiler's switch and one bare printf of the same row cost in the
// same run. Rows go to /dev/null; the report goes to standard error.
#include "codec/messages/info.h"
#include "codec/writer.h"
#include "diag/display_layouts.h"
#include "diag/switch_peer.h"
#include "if_index.h"
#include "rib_codes.h"
#include "rib_show.h"
#include "rib_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

// The bench's own interface service: as cheap as a service can be, so that it hides nothing.
int if_index_get_type(uint32_t /*if_index*/, uint8_t *type) {
    *type = 1;
    return 0;
}

int sprintf_if_index(char *str, uint32_t if_index) {
    const char name[] = {
        'f', 'c', static_cast<char>('1' + (if_index >> 20) % 9), '/', static_cast<char>('1' + (if_index >> 12) % 9),
        '\0'};
    std::copy(std::begin(name), std::end(name), str);
    return sizeof name - 1;
}

using namespace ribkit;
using namespace ribkit::codec;
using ribkit::diag::shown_ucast_route;

namespace {

using clock_type = std::chrono::steady_clock;
using action = std::function<void(size_t times)>;

double once(const action &run, size_t times) {
    const auto start = clock_type::now();
    run(times);
    return std::chrono::duration<double, std::nano>(clock_type::now() - start).count() / static_cast<double>(times);
}

struct figures {
    double ours; // ns
    double peer;
    [[nodiscard]] double ratio() const { return ours / peer; }
};

/// Ours and the peer in turns, in slices short enough to find quiet moments; the best of each.
figures measure(size_t times, const action &ours, const action &peer) {
    constexpr size_t slices = 100;
    figures best{once(ours, times / slices), once(peer, times / slices)};
    for (size_t slice = 1; slice < slices; ++slice) {
        best.ours = std::min(best.ours, once(ours, times / slices));
        best.peer = std::min(best.peer, once(peer, times / slices));
    }
    return best;
}

void print(const std::string &what, const figures &found) {
    std::fprintf(stderr, "%-50s %8.1f ns   peer %8.1f ns   ratio %.2f\n", what.c_str(), found.ours, found.peer,
                 found.ratio());
}

void compare(const char *what, size_t times, const action &ours, const action &peer) {
    print(what, measure(times, ours, peer));
}

constexpr std::array<uint32_t, 22> clients = {10, 12, 13, 14, 16, 17, 19, 21,  22,  25,  26,
                                              28, 36, 39, 41, 62, 64, 67, 119, 159, 180, 428};

action texts_of(uintptr_t (*convert)(uint32_t, char *), const std::vector<uint32_t> &values) {
    return [convert, values](size_t times) {
        char text[RIB_TEXT_SIZE];
        for (size_t i = 0; i < times; ++i) {
            convert(values[i & 4095], text);
            asm volatile("" ::"r"(text) : "memory");
        }
    };
}

figures text_figures(const std::vector<uint32_t> &values) {
    return measure(4000000, texts_of(rib_uuid_to_str, values), texts_of(ribkit::diag::client_by_switch, values));
}

/// Clients that nothing foretells, all in turn, and one and the same: of these the one that suits the switch best.
void compare_texts() {
    std::mt19937 random(1);
    std::vector<uint32_t> mixed(4096);
    std::vector<uint32_t> in_turn(4096);
    for (size_t i = 0; i < 4096; ++i) {
        mixed[i] = clients[random() % clients.size()];
        in_turn[i] = clients[i % clients.size()];
    }
    print("client name, random", text_figures(mixed));
    print("client name, in turn", text_figures(in_turn));
    std::vector<std::pair<figures, uint32_t>> constant;
    constant.reserve(clients.size());
    for (const uint32_t client : clients) {
        constant.emplace_back(text_figures(std::vector<uint32_t>(4096, client)), client);
    }
    const auto &[worst, client] = *std::max_element(constant.begin(), constant.end(), [](const auto &a, const auto &b) {
        return a.first.ratio() < b.first.ratio();
    });
    char name[RIB_TEXT_SIZE];
    rib_uuid_to_str(client, name);
    print(std::string("client name, always the same; worst: ") + name, worst);
}

/// Records that `fill(record, client, moment)` writes, of some client and some time of 2023.
template <const layout &L> struct records {
    template <class Fill> explicit records(Fill fill, uint32_t always = any) {
        std::mt19937 random(2);
        for (size_t i = 0; i < count; ++i) {
            const uint32_t client = always == any ? clients[random() % clients.size()] : always;
            const writer<L> record(rooms[i]);
            fill(record, client, 1690000000 + random() % 10000000);
            char name[RIB_TEXT_SIZE];
            rib_uuid_to_str(client, name);
            rib_str_len_set(name, 10);
            names.emplace_back(name);
        }
    }

    [[nodiscard]] const uint8_t *at(size_t i) const { return rooms[i % count].data(); }

    static constexpr uint32_t any = 0;
    static constexpr size_t count = 64;
    std::array<std::array<uint8_t, L.size + 64>, count> rooms{};
    std::vector<std::string> names;
};

using display = void (*)(const uint8_t *record);
template <const layout &L> using bare_printf = void (*)(view<L> record, const char *name);

/// A display beside one printf of the same format whose texts are already finished.
template <const layout &L>
void compare_rows(const char *what, size_t rows, const records<L> &table, display ours,
                  std::type_identity_t<bare_printf<L>> peer) {
    compare(
        what, rows,
        [&](size_t times) {
            for (size_t i = 0; i < times; ++i) {
                ours(table.at(i));
            }
        },
        [&](size_t times) {
            for (size_t i = 0; i < times; ++i) {
                peer(view<L>(table.at(i)), table.names[i % records<L>::count].c_str());
            }
        });
}

void write_route(const writer<shown_ucast_route> &route, uint32_t client) {
    route.set<"uuid">(client).set<"vsan">(20U).set<"fcid">(0x010203U);
    route.set<"mask">(0xffff00U).set<"cost">(500U);
    route.set<"rctl">(uint8_t{6}).set<"rctl_mask">(uint8_t{0xff}).set<"byte_18">(uint8_t{0x23}).set<"flag">(0xdU);
}

void compare_unicast() {
    const records<shown_ucast_route> plain([](const writer<shown_ucast_route> &route, uint32_t client,
                                              uint32_t /*moment*/) { write_route(route, client); });
    compare_rows(
        "rib_show_fcu, 1 million rows", 1000000, plain, [](const uint8_t *r) { rib_show_fcu(0, r); },
        [](view<shown_ucast_route> r, const char *name) {
            std::printf("%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n", name, r.get<"vsan">(),
                        r.get<"fcid">(), r.get<"mask">(), r.get<"rctl">(), r.get<"rctl_mask">(), "D V A",
                        r.get<"n_hop">(), r.get<"cost">(), "T", "bad sid     ");
        });
    compare_rows(
        "rib_show_fcurt", 200000, plain, [](const uint8_t *r) { rib_show_fcurt(0, r); },
        [](view<shown_ucast_route> r, const char * /*name*/) {
            std::printf("%s  %-4u    %s %s    0x%02x 0x%02x    %s  %-4u  %u\n", "fspf    ", r.get<"vsan">(), "0x010203",
                        "0xffff00", r.get<"rctl">(), r.get<"rctl_mask">(), "D V A", r.get<"n_hop">(), r.get<"cost">());
        });
    const records<shown_ucast_route> two_hops(
        [](const writer<shown_ucast_route> &route, uint32_t client, uint32_t /*moment*/) {
            write_route(route, client);
            route.add<"hop">().set<"ctrl">(1U << 5).set<"intf">(0x1000000U);
            route.add<"hop">().set<"ctrl">(7U << 5).set<"intf">(0x1001000U);
        },
        RIB_CLIENT_FSPF);
    compare_rows(
        "rib_show_fcu, two domains", 200000, two_hops, [](const uint8_t *r) { rib_show_fcu(0, r); },
        [](view<shown_ucast_route> r, const char *name) {
            std::printf("%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n    %s  Domain  %s\n    %s  "
                        "Domain  %s\n",
                        name, r.get<"vsan">(), r.get<"fcid">(), r.get<"mask">(), r.get<"rctl">(), r.get<"rctl_mask">(),
                        "D V A", r.get<"n_hop">(), r.get<"cost">(), "T", "bad sid     ", "fc8/1", "0x01(1)", "fc8/2",
                        "0x07(7)");
        });
    const records<shown_ucast_route> labels(
        [](const writer<shown_ucast_route> &route, uint32_t client, uint32_t /*moment*/) {
            write_route(route, client);
            const auto hop = route.add<"hop">();
            hop.set<"ctrl", "pop">(1).set<"ctrl", "use_up">(1).set<"ctrl", "dec_ttl">(1).set<"intf">(0x1000000U);
            for (const uint32_t word : {0x11000U, 0x12000U, 0x22fffU}) {
                hop.add<"push">().set<"label">(word);
            }
        },
        RIB_CLIENT_FSPF);
    compare_rows(
        "rib_show_fcu, a hop of three labels", 200000, labels, [](const uint8_t *r) { rib_show_fcu(0, r); },
        [](view<shown_ucast_route> r, const char *name) {
            const auto pushed = (*r.list<"hop">().begin()).list<"push">();
            std::printf("%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n    %s  Control  %s\n      "
                        "Labels  %08x  %08x  %08x\n",
                        name, r.get<"vsan">(), r.get<"fcid">(), r.get<"mask">(), r.get<"rctl">(), r.get<"rctl_mask">(),
                        "D V A", r.get<"n_hop">(), r.get<"cost">(), "T", "bad sid     ", "fc8/1",
                        "push=3 pop=1 use_UP=T use_TTL=F dec_TTL=T", pushed[0].get<"label">(), pushed[1].get<"label">(),
                        pushed[2].get<"label">());
        });
}

void compare_tables() {
    const records<wire::lbl_route> label(
        [](const writer<wire::lbl_route> &route, uint32_t client, uint32_t /*moment*/) {
            route.set<"uuid">(client).set<"type">(4U).set<"vsan">(20U);
            route.set<"src">(0x1000000U).set<"fcid">(0x010203U).set<"mask">(0xffff00U);
            route.add<"match">().set<"label">(0x11000U);
            route.add<"match">().set<"label">(0x22fffU);
        });
    compare_rows(
        "rib_show_fcl", 200000, label, [](const uint8_t *r) { rib_show_fcl(0, 0, r); },
        [](view<wire::lbl_route> r, const char *name) {
            std::printf("%s %s %-4u %06x %06x %08x %08x %-2u %-2u %s\n", name, "fc+label ", r.get<"vsan">(),
                        r.get<"fcid">(), r.get<"mask">(), r.list<"match">()[1].get<"label">(),
                        r.list<"match">()[0].get<"label">(), r.get<"n_match">(), r.get<"n_intf">(), "fc8/1");
        });
    const records<wire::mcast_route> multicast(
        [](const writer<wire::mcast_route> &route, uint32_t client, uint32_t /*moment*/) {
            route.set<"uuid">(client).set<"vsan">(20U).set<"fcid">(0xfffd01U).set<"mask">(0xffffffU);
        });
    compare_rows(
        "rib_show_fcm", 200000, multicast, [](const uint8_t *r) { rib_show_fcm(0, r); },
        [](view<wire::mcast_route> r, const char *name) {
            std::printf("%s    %-4u    %06x %06x    %u\n", name, r.get<"vsan">(), r.get<"fcid">(), r.get<"mask">(),
                        r.get<"n_intf">());
        });
    const records<wire::mcast_route> three(
        [](const writer<wire::mcast_route> &route, uint32_t client, uint32_t /*moment*/) {
            route.set<"uuid">(client).set<"vsan">(20U).set<"fcid">(0xfffd01U).set<"mask">(0xffffffU);
            for (const uint32_t interface : {0x1000000U, 0x1001000U, 0x1002000U}) {
                route.add<"intf">().set<"intf">(interface);
            }
        });
    compare_rows(
        "rib_show_fcm, three interfaces", 200000, three, [](const uint8_t *r) { rib_show_fcm(0, r); },
        [](view<wire::mcast_route> r, const char *name) {
            std::printf("%s    %-4u    %06x %06x    %u\n    %s\n    %s\n    %s\n", name, r.get<"vsan">(),
                        r.get<"fcid">(), r.get<"mask">(), r.get<"n_intf">(), "fc8/1", "fc8/2", "fc8/3");
        });
    const records<wire::topo> versions([](const writer<wire::topo> &list, uint32_t client, uint32_t /*moment*/) {
        list.set<"uuid">(client).set<"vsan">(20U);
        for (uint32_t version = 0x1001; version <= 0x1004; ++version) {
            list.add<"version">().set<"version">(version);
        }
    });
    compare_rows(
        "rib_show_fct, four versions", 200000, versions, [](const uint8_t *r) { rib_show_fct(0, r); },
        [](view<wire::topo> r, const char *name) {
            std::printf("%s  %-4u  %u\n%08x %08x %08x %08x \n", name, r.get<"vsan">(), r.get<"n_version">(),
                        r.list<"version">()[0].get<"version">(), r.list<"version">()[1].get<"version">(),
                        r.list<"version">()[2].get<"version">(), r.list<"version">()[3].get<"version">());
        });
}

void compare_times() {
    const records<wire::sync_fcu> log([](const writer<wire::sync_fcu> &entry, uint32_t /*client*/, uint32_t moment) {
        entry.set<"index">(1U).set<"sequence">(0xabcU).set<"time">(moment).set<"oper">(1U);
        entry.set<"action">(1U).set<"vsan">(20U).set<"fcid">(0x010203U).set<"mask">(0xffff00U);
    });
    compare_rows(
        "rib_show_sync_fcu", 200000, log, [](const uint8_t *r) { rib_show_sync_fcu(0, r); },
        [](view<wire::sync_fcu> r, const char * /*name*/) {
            std::printf("%-3u  %08x  %s  %s  %-4u  %06x %06x  %s\n", r.get<"index">(), r.get<"sequence">(), "update",
                        "add   ", r.get<"vsan">(), r.get<"fcid">(), r.get<"mask">(), "Tue Nov 14 22:13:20 2023");
        });
    const records<wire::db_summary> database(
        [](const writer<wire::db_summary> &entry, uint32_t /*client*/, uint32_t moment) {
            entry.set<"vsan">(20U).set<"modified">(moment).set<"ucast">(100U);
            entry.set<"mcast">(200U).set<"label">(300U);
        });
    compare_rows(
        "rib_show_db", 200000, database, [](const uint8_t *r) { rib_show_db(0, nullptr, r); },
        [](view<wire::db_summary> r, const char * /*name*/) {
            std::printf("%-5u    %8u    %8u    %8u    %s\n", r.get<"vsan">(), r.get<"ucast">(), r.get<"mcast">(),
                        r.get<"label">(), "Tue Nov 14 22:13:20 2023");
        });
}

void compare_states() {
    const records<wire::registration> registered(
        [](const writer<wire::registration> &entry, uint32_t client, uint32_t /*moment*/) {
            entry.set<"uuid">(client).set<"distance">(100U);
        });
    compare_rows(
        "rib_show_register", 200000, registered, [](const uint8_t *r) { rib_show_register(0, r); },
        [](view<wire::registration> r, const char *name) {
            std::printf("%-4u        %-8u        %s\n", r.get<"uuid">(), r.get<"distance">(), name);
        });
    const records<wire::port> port([](const writer<wire::port> &entry, uint32_t /*client*/, uint32_t /*moment*/) {
        entry.set<"type">(uint8_t{1})
            .set<"slot">(uint8_t{2})
            .set<"port">(uint8_t{3})
            .set<"channel">(uint8_t{4})
            .set<"status">(uint8_t{1});
        entry.set<"d_idx">(uint16_t{5}).set<"intf">(0x1000000U).set<"mode">(4U).set<"vsan">(20U).set<"iod">(1U);
    });
    compare_rows(
        "fib_show_port", 200000, port, [](const uint8_t *r) { fib_show_port(0, r); },
        [](view<wire::port> r, const char * /*name*/) {
            std::printf("%s %s %s %s %-4u %-4u %-4u %-4u %-4u %s %s\n", "005", "fc8/1           ", "E       ",
                        "up      ", r.get<"vsan">(), r.get<"type">(), r.get<"slot">(), r.get<"port">(),
                        r.get<"channel">(), "F", "edge");
        });
    const records<wire::node> node([](const writer<wire::node> &entry, uint32_t /*client*/, uint32_t /*moment*/) {
        entry.set<"type">(uint8_t{1}).set<"ports">(uint16_t{32}).set<"node">(uint16_t{0x401});
        entry.set<"address">(0xff0401U).set<"fib_state">(4U);
    });
    compare_rows(
        "fib_show_node", 200000, node, [](const uint8_t *r) { fib_show_node(0, r); },
        [](view<wire::node> r, const char * /*name*/) {
            std::printf("%-6u  %-4x  %-7x  %s  %-5u  %s  %s\n", r.shown<"module">(), 0x401U, r.get<"address">(),
                        "sup      ", 32U, "active      ", "active");
        });
    const records<wire::vsan> vsan([](const writer<wire::vsan> &entry, uint32_t /*client*/, uint32_t /*moment*/) {
        entry.set<"latency">(500U).set<"word_4">(0x0321000aU);
    });
    compare_rows(
        "fib_show_vsan", 200000, vsan, [](const uint8_t *r) { fib_show_vsan(0, r); },
        [](view<wire::vsan> r, const char * /*name*/) {
            std::printf("%-4u    %s    %s    %-13u    %s   %-13u\n", 10U, "active   ", "SID/DID/OXID",
                        r.get<"latency">(), "enabled ", 0U);
        });
    const records<wire::verf_fcu> status(
        [](const writer<wire::verf_fcu> &entry, uint32_t /*client*/, uint32_t /*moment*/) {
            entry.set<"status">(0x10U).set<"vsan">(20U).set<"fcid">(0x010203U).set<"mask">(0xffff00U);
        });
    compare_rows(
        "fib_show_verf_fcu", 200000, status, [](const uint8_t *r) { fib_show_verf_fcu(0, r); },
        [](view<wire::verf_fcu> r, const char * /*name*/) {
            std::printf("%-4u    %06x %06x    %s\n", r.get<"vsan">(), r.get<"fcid">(), r.get<"mask">(),
                        "not in rib in fib");
        });
}

} // namespace

int main() {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        std::perror("/dev/null");
        return 1;
    }
    compare_texts();
    compare_unicast();
    compare_tables();
    compare_states();
    for (const char *zone : {"", ":/etc/localtime", "Europe/Paris"}) {
        std::fprintf(stderr, *zone == '\0' ? "without TZ\n" : "TZ=%s\n", zone);
        *zone == '\0' ? unsetenv("TZ") : setenv("TZ", zone, 1);
        compare_times();
    }
    return 0;
}
