// Rows of the SNMP route table against the rules written once more in another shape, at and around every border.
#include "rib_snmp.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

constexpr uint32_t masks[] = {0xff0000, 0xffff00, 0xffffff};

fcRouteEntry row(uint32_t destination, uint32_t mask) { return {1, 7, 3, destination, mask, 5, 10, 1, 1, 99}; }

uint32_t checked(uint32_t destination, uint32_t mask) {
    fcRouteEntry entry = row(destination, mask);
    return fcRouteEntry_is_valid(FC_ROUTE_CHECK, &entry);
}

fcRouteEntry repaired(uint32_t destination, uint32_t mask) {
    fcRouteEntry entry = row(destination, mask);
    EXPECT_EQ(fcRouteEntry_is_valid(FC_ROUTE_REPAIR, &entry), 1u);
    return entry;
}

uint32_t checked_static(const fcRouteEntry &entry) {
    fcRouteEntry copy = entry;
    const uint32_t result = fcRouteEntry_is_valid(FC_ROUTE_CHECK_STATIC, &copy);
    EXPECT_EQ(std::memcmp(&copy, &entry, sizeof copy), 0) << "a check changes nothing";
    return result;
}

uint32_t class_of(uint32_t destination) {
    const fcRouteEntry entry = row(destination, 0);
    uint32_t result = 77;
    fcRouteEntry_route_type_get(&entry, &result);
    return result;
}

// The rules once more, a step at a time and in another shape: a verdict for each range, found from the top.
struct range {
    uint32_t first;
    char kind; // 'd' domains, 'h' single addresses, 'x' none
    uint32_t replacement;
};

range range_of(uint32_t destination) {
    const range ranges[] = {{0x1000000, 'h', 0}, {0xffffff, 'h', 0},        {0xfffc00, 'x', 0xffffff},
                            {0xfffb00, 'h', 0},  {0xf00000, 'x', 0xfffb00}, {0x010000, 'd', 0},
                            {0, 'x', 0x010000}};
    for (const range &candidate : ranges) {
        if (destination >= candidate.first) {
            return candidate;
        }
    }
    return {};
}

bool model_mask(uint32_t mask) { return std::find(std::begin(masks), std::end(masks), mask) != std::end(masks); }

uint32_t model_valid(uint32_t operation, fcRouteEntry &entry) {
    const range where = range_of(entry.destination);
    if (operation == 1) {
        if (entry.vsan == 0 || entry.vsan > 4095 || where.kind == 'x') {
            return 0;
        }
        return where.kind == 'd' ? model_mask(entry.mask) : entry.mask == 0xffffff;
    }
    if (operation == 2) {
        entry.vsan = entry.vsan == 0 ? 1 : entry.vsan;
        entry.destination = where.kind == 'x' ? where.replacement : entry.destination;
        if (entry.destination == 0x010000 || where.kind == 'd') {
            entry.mask = model_mask(entry.mask) ? entry.mask : 0xff0000;
        } else {
            entry.mask = 0xffffff;
        }
        return 1;
    }
    if (operation == 3) {
        const bool wrong = entry.vsan == 0 || entry.vsan > 4095 || entry.protocol != 3 || where.kind != 'd' ||
                           (entry.destination << 16) == 0xffff0000 || !model_mask(entry.mask) || entry.domain == 0 ||
                           entry.domain > 239;
        return wrong ? 0 : 1;
    }
    return 1;
}

// Values at and around every border.
uint32_t interesting(std::mt19937 &random) {
    constexpr uint32_t borders[] = {0,        1,        3,        239,      4095,     0xff0000,  0xffff00, 0xffffff,
                                    0x010000, 0xf00000, 0xfffb00, 0xfffc00, 0x05ffff, 0x1000000, 0xefffff, 0x80000000};
    const uint32_t pick = random();
    return pick % 8 == 7 ? random() : borders[pick / 8 % std::size(borders)] + random() % 3 - 1;
}

uint32_t network_word(const void *bytes, size_t word) {
    uint8_t at[4];
    std::memcpy(at, static_cast<const uint8_t *>(bytes) + 4 * word, 4);
    return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
}

} // namespace

TEST(SnmpCheck, DomainAddressesTakeThreeMasks) {
    for (const uint32_t destination : {0x010000u, 0x010203u, 0xefffffu}) {
        for (const uint32_t mask : masks) {
            EXPECT_EQ(checked(destination, mask), 1u) << std::hex << destination << '/' << mask;
        }
        for (const uint32_t mask : {0u, 0xfff000u, 0xfffffeu, 0xffffffffu}) {
            EXPECT_EQ(checked(destination, mask), 0u) << std::hex << destination << '/' << mask;
        }
    }
}

TEST(SnmpCheck, SingleAddressesTakeTheFullMaskOnly) {
    for (const uint32_t destination : {0xfffb00u, 0xfffb05u, 0xfffbffu, 0xffffffu, 0x1000000u, 0xffffffffu}) {
        EXPECT_EQ(checked(destination, 0xffffff), 1u) << std::hex << destination;
        EXPECT_EQ(checked(destination, 0xffff00), 0u) << std::hex << destination;
    }
}

TEST(SnmpCheck, NoRouteLeadsToTheOtherRanges) {
    for (const uint32_t destination :
         {0u, 0x123u, 0xffffu, 0xf00000u, 0xf12345u, 0xfffaffu, 0xfffc00u, 0xfffc01u, 0xfffffeu}) {
        for (const uint32_t mask : masks) {
            EXPECT_EQ(checked(destination, mask), 0u) << std::hex << destination << '/' << mask;
        }
    }
}

TEST(SnmpCheck, VsanIsOneTo4095) {
    for (const auto &[vsan, valid] : {std::pair{0u, 0u}, {1u, 1u}, {4095u, 1u}, {4096u, 0u}, {0xffffffffu, 0u}}) {
        fcRouteEntry entry = row(0x010203, 0xffff00);
        entry.vsan = vsan;
        EXPECT_EQ(fcRouteEntry_is_valid(FC_ROUTE_CHECK, &entry), valid) << vsan;
        EXPECT_EQ(fcRouteEntry_is_valid(FC_ROUTE_CHECK_STATIC, &entry), valid) << vsan;
    }
}

TEST(SnmpRepair, MovesADestinationToTheNextRangeAndFitsTheMask) {
    struct {
        uint32_t destination, mask, new_destination, new_mask;
    } const cases[] = {
        {0x000123, 0x00ffff, 0x010000, 0xff0000}, {0x00ffff, 0xffff00, 0x010000, 0xffff00},
        {0xf12345, 0xff0000, 0xfffb00, 0xffffff}, {0xf00000, 0xffffff, 0xfffb00, 0xffffff},
        {0xfffaff, 0, 0xfffb00, 0xffffff},        {0xfffc00, 0xffff00, 0xffffff, 0xffffff},
        {0xfffffe, 0xffff00, 0xffffff, 0xffffff}, {0xffffff, 0xff0000, 0xffffff, 0xffffff},
        {0xfffb77, 0xff0000, 0xfffb77, 0xffffff}, {0x12345678, 0xff0000, 0x12345678, 0xffffff},
        {0x010000, 0xfff000, 0x010000, 0xff0000}, {0xefffff, 0xffffff, 0xefffff, 0xffffff},
    };
    for (const auto &expected : cases) {
        const fcRouteEntry entry = repaired(expected.destination, expected.mask);
        EXPECT_EQ(entry.destination, expected.new_destination) << std::hex << expected.destination;
        EXPECT_EQ(entry.mask, expected.new_mask) << std::hex << expected.destination;
    }
}

TEST(SnmpRepair, LeavesAVsanAboveTheLimit) {
    fcRouteEntry entry = row(0x010203, 0xffff00);
    entry.vsan = 0;
    EXPECT_EQ(fcRouteEntry_is_valid(FC_ROUTE_REPAIR, &entry), 1u);
    EXPECT_EQ(entry.vsan, 1u);
    entry.vsan = 5000;
    EXPECT_EQ(fcRouteEntry_is_valid(FC_ROUTE_REPAIR, &entry), 1u);
    EXPECT_EQ(entry.vsan, 5000u);
}

TEST(SnmpStatic, RefusesOneThingAtATime) {
    const fcRouteEntry good = {1, 7, 3, 0x05ff00, 0xffff00, 239, 10, 1, 1, 0};
    EXPECT_EQ(checked_static(good), 1u);
    const auto with = [&](uint32_t fcRouteEntry::*field, uint32_t value) {
        fcRouteEntry entry = good;
        entry.*field = value;
        return checked_static(entry);
    };
    EXPECT_EQ(with(&fcRouteEntry::protocol, 4), 0u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0x05ffff), 0u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0x05feff), 1u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0x00ffff), 0u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0x010000), 1u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0xeffffe), 1u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0xf00000), 0u);
    EXPECT_EQ(with(&fcRouteEntry::destination, 0xfffb05), 0u);
    EXPECT_EQ(with(&fcRouteEntry::mask, 0xfff000), 0u);
    EXPECT_EQ(with(&fcRouteEntry::domain, 0), 0u);
    EXPECT_EQ(with(&fcRouteEntry::domain, 1), 1u);
    EXPECT_EQ(with(&fcRouteEntry::domain, 240), 0u);
}

TEST(SnmpCheck, OtherOperationsCheckNothing) {
    for (const uint32_t operation : {0u, 4u, 0xffffffffu}) {
        fcRouteEntry entry = {};
        EXPECT_EQ(fcRouteEntry_is_valid(operation, &entry), 1u);
        EXPECT_EQ(entry.vsan, 0u);
    }
}

TEST(SnmpCheck, AgreesWithAModelOnRandomRows) {
    std::mt19937 random(81);
    for (int i = 0; i < 200000; ++i) {
        fcRouteEntry entry = {};
        for (uint32_t fcRouteEntry::*field : {&fcRouteEntry::vsan, &fcRouteEntry::protocol, &fcRouteEntry::destination,
                                              &fcRouteEntry::mask, &fcRouteEntry::domain, &fcRouteEntry::cost}) {
            entry.*field = interesting(random);
        }
        entry.vsan = random() % 4 != 0 ? 1 : entry.vsan;
        entry.protocol = random() % 4 != 0 ? 3 : entry.protocol;
        fcRouteEntry expected = entry;
        const uint32_t operation = random() % 5;
        const uint32_t verdict = model_valid(operation, expected);
        EXPECT_EQ(fcRouteEntry_is_valid(operation, &entry), verdict);
        ASSERT_EQ(std::memcmp(&entry, &expected, sizeof entry), 0)
            << "operation " << operation << std::hex << " destination " << expected.destination;
    }
}

TEST(SnmpClass, FollowsTheRanges) {
    for (const auto &[destination, expected] : {std::pair{0u, 0u},
                                                {0xffffu, 0u},
                                                {0x010000u, 256u},
                                                {0xefffffu, 256u},
                                                {0xf00000u, 0u},
                                                {0xfffaffu, 0u},
                                                {0xfffb00u, 16u},
                                                {0xfffbffu, 16u},
                                                {0xfffc00u, 0u},
                                                {0xfffffdu, 0u},
                                                {0xffffffu, 16u},
                                                {0x1000000u, 0u}}) {
        EXPECT_EQ(class_of(destination), expected) << std::hex << destination;
    }
}

TEST(SnmpDefaults, FourWordsOfTen) {
    fcRouteEntry entry = {21, 22, 23, 24, 25, 26, 27, 28, 29, 30};
    fcRouteEntry_set_defaults(&entry);
    const fcRouteEntry expected = {21, 22, 23, 24, 25, 1, 10, 1, 1, 30};
    EXPECT_EQ(std::memcmp(&entry, &expected, sizeof entry), 0);
}

TEST(SnmpConvert, RouteEntryIsTenBigEndianWords) {
    ASSERT_EQ(sizeof(fcRouteEntry), 40u);
    std::mt19937 random(82);
    for (int i = 0; i < 1000; ++i) {
        uint32_t words[10];
        for (uint32_t &word : words) {
            word = random();
        }
        fcRouteEntry host;
        std::memcpy(&host, words, sizeof host);
        fcRouteEntry network;
        fcRouteEntry_hton(&host, &network);
        for (size_t word = 0; word < 10; ++word) {
            ASSERT_EQ(network_word(&network, word), words[word]) << word;
        }
        fcRouteEntry back = network;
        fcRouteEntry_ntoh(&back, &back);
        ASSERT_EQ(std::memcmp(&back, &host, sizeof host), 0);
        fcRouteEntry_hton(&back, &back);
        ASSERT_EQ(std::memcmp(&back, &network, sizeof host), 0) << "in place";
    }
}

TEST(SnmpConvert, FlowStatisticsLeaveThreeWordsAndNameTheDestinationFirstOnTheWayOut) {
    ASSERT_EQ(sizeof(fcRouteFlowStatEntry), 68u);
    std::mt19937 random(83);
    for (int i = 0; i < 1000; ++i) {
        fcRouteFlowStatEntry host;
        for (uint32_t &word : host.word) {
            word = random();
        }
        fcRouteFlowStatEntry network;
        std::memset(&network, 0x5a, sizeof network);
        fcRouteFlowStatEntry_hton(&network, &host);
        fcRouteFlowStatEntry back;
        std::memset(&back, 0xa5, sizeof back);
        fcRouteFlowStatEntry_ntoh(&network, &back);
        for (size_t word = 0; word < 17; ++word) {
            const bool carried = word != 1 && word != 2 && word != 4;
            ASSERT_EQ(network_word(&network, word), carried ? host.word[word] : 0x5a5a5a5a) << word;
            ASSERT_EQ(back.word[word], carried ? host.word[word] : 0xa5a5a5a5) << word;
        }
    }
}

TEST(SnmpProtocol, OfEveryClient) {
    for (uint32_t uuid = 0; uuid < 1000; ++uuid) {
        const uint32_t expected = uuid == 12   ? 4
                                  : uuid == 13 ? 5
                                  : uuid == 14 ? 6
                                  : uuid == 39 ? 3
                                  : uuid == 17 ? 2
                                  : uuid == 21 ? 2
                                               : 1;
        EXPECT_EQ(fcRouteProto_from_uuid(uuid), expected) << uuid;
    }
    EXPECT_EQ(fcRouteProto_from_uuid(16), 1u) << "Port Manager is local by name, and other here";
}
