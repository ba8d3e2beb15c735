// The displays of multicast routes, version lists, domain maps and management rows, as kept outputs and against a
// second formatter.
#include "diag/show/show_fixture.h"
#include "diag/text/expected_texts.h"
#include "rib_show.h"

#include <cstring>

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class ShowTable : public printing_test {};

record multicast(uint32_t uuid, uint32_t fc_id, std::initializer_list<uint32_t> interfaces) {
    return record{uuid, 20, fc_id, 0xffffff, static_cast<uint32_t>(interfaces.size())}.words(interfaces);
}

record version_list(uint32_t uuid, uint32_t count) {
    record list{uuid, 4095, count};
    for (uint32_t i = 0; i < count; ++i) {
        list.word(0x1000 + i);
    }
    return list;
}

/// A domain map: the present domains, and those of them (or not) that are direct.
record domain_map(uint32_t vsan, std::initializer_list<uint32_t> present, std::initializer_list<uint32_t> direct) {
    std::vector<uint32_t> bits(64);
    for (const uint32_t domain : present) {
        bits[domain / 8] |= 1U << domain % 8;
    }
    for (const uint32_t domain : direct) {
        bits[32 + domain / 8] |= 1U << domain % 8;
    }
    record map{vsan};
    for (const uint32_t byte : bits) {
        map.byte(byte);
    }
    return map;
}

void show_fcm(uint32_t header, const record &route) {
    const uint32_t length = rib_show_fcm(header, route.data());
    EXPECT_EQ(length, route.size());
}

void show_fcmrt(uint32_t header, uint32_t row, uint32_t option, const record &route) {
    const uint32_t length = rib_show_fcmrt(header, row, option, route.data());
    EXPECT_EQ(length, route.size()) << "whatever is printed";
}

} // namespace

TEST_F(ShowTable, GoldenFcm) {
    expect_golden_output("rib_show_fcm", [] {
        label("header, no interfaces");
        show_fcm(1, multicast(14, 0xfffd01, {}));
        label("interfaces");
        show_fcm(0, multicast(28, 0xfffd02, {0x1000, 0, 0x2000}));
        label("FC ID 0 is the distribution tree");
        show_fcm(0, multicast(12, 0, {0x1000}));
        label("only a whole word of 0 is");
        show_fcm(0, multicast(12, 0x1000000, {}));
    });
}

TEST_F(ShowTable, GoldenFcmrt) {
    expect_golden_output("rib_show_fcmrt", [] {
        const record route = multicast(14, 0xabfffd02, {0x1000, 0, 0x2000});
        label("header and row");
        show_fcmrt(1, 1, 0, route);
        label("row");
        show_fcmrt(0, 1, 0, route);
        label("a header flag of 2 is none");
        show_fcmrt(2, 1, 0, route);
        label("row and interfaces");
        show_fcmrt(0, 1, 64, route);
        label("any other option lists nothing");
        show_fcmrt(0, 1, 65, route);
        show_fcmrt(0, 1, 192, route);
        label("a row flag of 2 has interfaces and no row, nor a header");
        show_fcmrt(1, 2, 64, route);
        label("a row flag of 0 has nothing");
        show_fcmrt(1, 0, 64, route);
    });
}

TEST_F(ShowTable, GoldenFct) {
    expect_golden_output("rib_show_fct", [] {
        label("header, no versions");
        rib_show_fct(1, version_list(12, 0).data());
        for (const uint32_t count : {1, 7, 8, 9, 16, 17, 100}) {
            label((std::to_string(count) + " versions").c_str());
            rib_show_fct(0, version_list(22, count).data());
        }
    });
}

TEST_F(ShowTable, GoldenSnmpFcroute) {
    expect_golden_output("rib_show_snmp_fcroute", [] {
        label("header");
        const fcRouteEntry first = {1, 0x1000000, 3, 0x010203, 0xffff00, 1, 10, 1, 1, 99};
        rib_show_snmp_fcroute(1, &first);
        label("the widest values");
        const fcRouteEntry widest = {4095, 0, 6, 0xffffff, 0xffffff, 239, 0xffffffff, 2, 2, 0};
        rib_show_snmp_fcroute(0, &widest);
        label("unknown values");
        const fcRouteEntry unknown = {0xffffffff, 1,          0x12345678, 0xffffffff, 0,
                                      0xffffffff, 0xffffffff, 0x12345678, 0x12345678, 0};
        rib_show_snmp_fcroute(0, &unknown);
    });
}

TEST_F(ShowTable, GoldenDm) {
    expect_golden_output("rib_show_dm", [] {
        label("header, no domains");
        rib_show_dm(1, domain_map(1, {}, {5}).data());
        label("every bit position of a byte");
        rib_show_dm(0, domain_map(4095, {0, 1, 2, 3, 4, 5, 6, 7}, {0, 2, 4, 6}).data());
        label("no domain above 239");
        rib_show_dm(0, domain_map(20, {8, 100, 238, 239, 240, 255}, {100, 239, 240}).data());
        label("only domains above 239");
        rib_show_dm(0, domain_map(20, {240}, {240}).data());
    });
}

TEST_F(ShowTable, AgreesWithASecondFormatterOnRandomMulticastRoutes) {
    random_fields random(73);
    for (int i = 0; i < random_rounds; ++i) {
        const uint32_t n_intf = random.below(2) * random.below(20);
        record route{random.word(), random.word(), random.below(4) == 0 ? 0 : random.word(), random.word(), n_intf};
        route.add(random.words(n_intf));
        const uint8_t *bytes = route.data();
        std::string interfaces;
        for (size_t entry = 0; entry < n_intf; ++entry) {
            interfaces += render("    {i0@w20}\n", bytes + 4 * entry);
        }
        ASSERT_EQ(printed_by([&] { show_fcm(0, route); }),
                  render(word_at(bytes, 8) == 0 ? "{t10:rib_uuid@w0}    {d4@w4}    dist tree        {d0@w16}\n"
                                                : "{t10:rib_uuid@w0}    {d4@w4}    {x6@w8} {x6@w12}    {d0@w16}\n",
                         bytes) +
                      interfaces);
        const uint32_t row = random.below(3);
        const uint32_t option = random.below(2) == 0 ? 64 : random.word();
        ASSERT_EQ(printed_by([&] { show_fcmrt(0, row, option, route); }),
                  (row == 1 ? render("{d4@w4}        0x{x2@b9}{x2@b10}{x2@b11}        {d0@w16}\n", bytes) : "") +
                      (option == 64 && row != 0 ? interfaces : ""));
    }
}

TEST_F(ShowTable, AgreesWithASecondFormatterOnRandomVersionLists) {
    random_fields random(74);
    for (int i = 0; i < random_rounds; ++i) {
        const uint32_t count = random.below(2) * random.below(241);
        const record list = record{random.word(), random.word(), count}.add(random.words(count));
        std::string text = render("{t10:rib_uuid@w0}  {d4@w4}  {d0@w8}\n", list.data());
        for (size_t entry = 0; entry < count; ++entry) {
            text += (entry != 0 && (entry & 7) == 0 ? "\n  " : "") + render("{x8@w12} ", list.data() + 4 * entry);
        }
        ASSERT_EQ(printed_by([&] { rib_show_fct(0, list.data()); }), text + (count != 0 ? "\n" : ""));
    }
}

TEST_F(ShowTable, AgreesWithASecondFormatterOnRandomSnmpRoutes) {
    random_fields random(75);
    for (int i = 0; i < random_rounds; ++i) {
        const record row = random.words(10);
        fcRouteEntry entry{};
        fcRouteEntry network{};
        std::memcpy(&network, row.data(), sizeof network);
        fcRouteEntry_ntoh(&network, &entry);
        ASSERT_EQ(printed_by([&] { rib_show_snmp_fcroute(0, &entry); }),
                  render("{d4@w0} {x6@w12} {x6@w16} {t6:rib_fcroute_proto@w8} {d6@w20} {t0:rib_fcroute_type@w28} "
                         "{t8:rib_fcroute_perm@w32} {X8@w24} {i0@w4}\n",
                         row.data()));
    }
}

TEST_F(ShowTable, AgreesWithASecondFormatterOnRandomDomainMaps) {
    random_fields random(76);
    for (int i = 0; i < random_rounds / 4; ++i) {
        record map{random.word()};
        for (int byte = 0; byte < 64; ++byte) {
            map.byte(random.below(3) * random.byte());
        }
        std::string text;
        for (uint32_t domain = 0; domain < 240; ++domain) {
            const auto holds = [&](size_t from) { return (map.data()[from + domain / 8] >> domain % 8 & 1) != 0; };
            if (holds(4)) {
                text += render("{d4@w0}        ", map.data()) + (holds(36) ? "T" : "F") + "             0x" +
                        digits(domain, 16, 2) + "(" + digits(domain, 10) + ")\n";
            }
        }
        ASSERT_EQ(printed_by([&] { rib_show_dm(0, map.data()); }), text);
    }
}
