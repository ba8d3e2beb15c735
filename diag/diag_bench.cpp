// What a text and a display row cost, beside what a compiler's switch and one bare printf of the same row cost in the
// same run. Rows go to /dev/null; the report goes to standard error.
#include "codec/bytes.h"
#include "diag/switch_peer.h"
#include "if_index.h"
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

/// 64 records of `words` words whose fields look like those of a route.
struct records {
    explicit records(std::initializer_list<uint32_t> words) {
        std::mt19937 random(2);
        for (size_t at = 0; at < count; ++at) {
            for (const uint32_t word : words) {
                const uint32_t value = word == client   ? clients[random() % clients.size()]
                                       : word == moment ? 1690000000 + random() % 10000000
                                                        : word;
                for (int shift = 24; shift >= 0; shift -= 8) {
                    bytes.push_back(static_cast<uint8_t>(value >> shift));
                }
            }
        }
        stride = words.size() * 4;
    }

    [[nodiscard]] const uint8_t *at(size_t i) const { return bytes.data() + i % count * stride; }

    static constexpr uint32_t client = 0xc11e1177; // stands for some client's identity
    static constexpr uint32_t moment = 0x713e713e; // and for some time of 2023
    static constexpr size_t count = 64;
    std::vector<uint8_t> bytes;
    size_t stride;
};

using display = void (*)(const uint8_t *record);
using bare_printf = void (*)(const uint8_t *record, const char *name);

/// A display beside one printf of the same format whose texts are already finished.
void compare_rows(const char *what, size_t rows, const records &table, display ours, bare_printf peer) {
    std::vector<std::string> names;
    for (size_t i = 0; i < records::count; ++i) {
        char name[41];
        rib_uuid_to_str(ribkit::codec::be32(table.at(i)), name);
        rib_str_len_set(name, 10);
        names.emplace_back(name);
    }
    compare(
        what, rows,
        [&](size_t times) {
            for (size_t i = 0; i < times; ++i) {
                ours(table.at(i));
            }
        },
        [&](size_t times) {
            for (size_t i = 0; i < times; ++i) {
                peer(table.at(i), names[i % records::count].c_str());
            }
        });
}

uint32_t word(const uint8_t *record, size_t offset) { return ribkit::codec::be32(record + offset); }

constexpr uint32_t some = records::client;

void compare_unicast() {
    const records plain({some, 20, 0x010203, 0xffff00, 0x06ff2300, 0, 500, 0xd, 0});
    compare_rows(
        "rib_show_fcu, 1 million rows", 1000000, plain, [](const uint8_t *r) { rib_show_fcu(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n", name, word(r, 4), word(r, 8),
                        word(r, 12), r[16], r[17], "D V A", word(r, 32), word(r, 24), "T", "bad sid     ");
        });
    compare_rows(
        "rib_show_fcurt", 200000, plain, [](const uint8_t *r) { rib_show_fcurt(0, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%s  %-4u    %s %s    0x%02x 0x%02x    %s  %-4u  %u\n", "fspf    ", word(r, 4), "0x010203",
                        "0xffff00", r[16], r[17], "D V A", word(r, 32), word(r, 24));
        });
    const records two_hops(
        {12, 20, 0x010203, 0xffff00, 0x06ff2300, 0, 500, 0xd, 2, 0x00000020, 0x1000000, 0x000000e0, 0x1001000});
    compare_rows(
        "rib_show_fcu, two domains", 200000, two_hops, [](const uint8_t *r) { rib_show_fcu(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n    %s  Domain  %s\n    %s  "
                        "Domain  %s\n",
                        name, word(r, 4), word(r, 8), word(r, 12), r[16], r[17], "D V A", word(r, 32), word(r, 24), "T",
                        "bad sid     ", "fc8/1", "0x01(1)", "fc8/2", "0x07(7)");
        });
    const records labels(
        {12, 20, 0x010203, 0xffff00, 0x06ff2300, 0, 500, 0xd, 1, 0x0103a000, 0x1000000, 0x11000, 0x12000, 0x22fff});
    compare_rows(
        "rib_show_fcu, a hop of three labels", 200000, labels, [](const uint8_t *r) { rib_show_fcu(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s  %-4u  %06x %06x    %02x %02x    %s  %-4u  %-5u  %s  %s\n    %s  Control  %s\n      "
                        "Labels  %08x  %08x  %08x\n",
                        name, word(r, 4), word(r, 8), word(r, 12), r[16], r[17], "D V A", word(r, 32), word(r, 24), "T",
                        "bad sid     ", "fc8/1", "push=3 pop=1 use_UP=T use_TTL=F dec_TTL=T", word(r, 44), word(r, 48),
                        word(r, 52));
        });
}

void compare_tables() {
    const records label({some, 4, 20, 0x1000000, 0x010203, 0xffff00, 2, 0, 0x11000, 0x22fff});
    compare_rows(
        "rib_show_fcl", 200000, label, [](const uint8_t *r) { rib_show_fcl(0, 0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s %s %-4u %06x %06x %08x %08x %-2u %-2u %s\n", name, "fc+label ", word(r, 8), word(r, 16),
                        word(r, 20), word(r, 36), word(r, 32), word(r, 24), word(r, 28), "fc8/1");
        });
    const records multicast({some, 20, 0xfffd01, 0xffffff, 0});
    compare_rows(
        "rib_show_fcm", 200000, multicast, [](const uint8_t *r) { rib_show_fcm(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s    %-4u    %06x %06x    %u\n", name, word(r, 4), word(r, 8), word(r, 12), word(r, 16));
        });
    const records three({some, 20, 0xfffd01, 0xffffff, 3, 0x1000000, 0x1001000, 0x1002000});
    compare_rows(
        "rib_show_fcm, three interfaces", 200000, three, [](const uint8_t *r) { rib_show_fcm(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s    %-4u    %06x %06x    %u\n    %s\n    %s\n    %s\n", name, word(r, 4), word(r, 8),
                        word(r, 12), word(r, 16), "fc8/1", "fc8/2", "fc8/3");
        });
    const records versions({some, 20, 4, 0x1001, 0x1002, 0x1003, 0x1004});
    compare_rows(
        "rib_show_fct, four versions", 200000, versions, [](const uint8_t *r) { rib_show_fct(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%s  %-4u  %u\n%08x %08x %08x %08x \n", name, word(r, 4), word(r, 8), word(r, 12), word(r, 16),
                        word(r, 20), word(r, 24));
        });
}

void compare_times() {
    const records log({1, 0xabc, records::moment, 1, 1, 20, 0x010203, 0xffff00});
    compare_rows(
        "rib_show_sync_fcu", 200000, log, [](const uint8_t *r) { rib_show_sync_fcu(0, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%-3u  %08x  %s  %s  %-4u  %06x %06x  %s\n", word(r, 0), word(r, 4), "update", "add   ",
                        word(r, 20), word(r, 24), word(r, 28), "Tue Nov 14 22:13:20 2023");
        });
    const records database({20, records::moment, 100, 200, 300});
    compare_rows(
        "rib_show_db", 200000, database, [](const uint8_t *r) { rib_show_db(0, nullptr, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%-5u    %8u    %8u    %8u    %s\n", word(r, 0), word(r, 8), word(r, 12), word(r, 16),
                        "Tue Nov 14 22:13:20 2023");
        });
}

void compare_states() {
    const records registered({some, 100});
    compare_rows(
        "rib_show_register", 200000, registered, [](const uint8_t *r) { rib_show_register(0, r); },
        [](const uint8_t *r, const char *name) {
            std::printf("%-4u        %-8u        %s\n", word(r, 0), word(r, 4), name);
        });
    const records port({0x01020304, 0x01000005, 0x1000000, 4, 20, 1});
    compare_rows(
        "fib_show_port", 200000, port, [](const uint8_t *r) { fib_show_port(0, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%s %s %s %s %-4u %-4u %-4u %-4u %-4u %s %s\n", "005", "fc8/1           ", "E       ",
                        "up      ", word(r, 16), r[0], r[1], r[2], r[3], "F", "edge");
        });
    const records node({0x00010000, 0x00200401, 0xff0401, 4});
    compare_rows(
        "fib_show_node", 200000, node, [](const uint8_t *r) { fib_show_node(0, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%-6u  %-4x  %-7x  %s  %-5u  %s  %s\n", r[0] + 1U, 0x401U, word(r, 8), "sup      ", 32U,
                        "active      ", "active");
        });
    const records vsan({500, 0x0321000a});
    compare_rows(
        "fib_show_vsan", 200000, vsan, [](const uint8_t *r) { fib_show_vsan(0, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%-4u    %s    %s    %-13u    %s   %-13u\n", 10U, "active   ", "SID/DID/OXID", word(r, 0),
                        "enabled ", 0U);
        });
    const records status({0x10, 20, 0x010203, 0xffff00});
    compare_rows(
        "fib_show_verf_fcu", 200000, status, [](const uint8_t *r) { fib_show_verf_fcu(0, r); },
        [](const uint8_t *r, const char * /*name*/) {
            std::printf("%-4u    %06x %06x    %s\n", word(r, 4), word(r, 8), word(r, 12), "not in rib in fib");
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
