// Interface names and numbers, one of every kind, and back.
#include "rib_text.h"
#include "ribkit_platform.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

std::string name_of(uint32_t if_index) {
    char text[64];
    rib_if_index_to_str(if_index, text);
    return text;
}

uint32_t parsed(const std::string &name) {
    uint32_t index = 0;
    return if_index_parse(name.c_str(), &index) == 0 ? index : 0;
}

TEST(interface_names, one_of_every_kind) {
    const std::pair<uint32_t, const char *> rows[] = {
        {0x01010001, "fc1/1"},   {0x01ff00ff, "fc255/255"}, {0x02000003, "port-channel 3"},
        {0x03000000, "vsan0"},   {0x03000fff, "vsan4095"},  {0x04000000, "mgmt0"},
        {0x05000000, "sup-fc0"}, {0x06000007, "loopback7"}, {0x0700000c, "fc-tunnel12"}};
    for (const auto &[index, name] : rows) {
        EXPECT_EQ(name_of(index), name);
        EXPECT_EQ(parsed(name), index);
        uint8_t type = 0;
        EXPECT_EQ(if_index_get_type(index, &type), 0);
        EXPECT_EQ(type, index >> 24);
    }
}

TEST(interface_names, null_and_unknown) {
    EXPECT_EQ(name_of(0), "null intf");
    for (const uint32_t index :
         {0x00000001U, 0x01000001U, 0x01010000U, 0x02000000U, 0x02010001U, 0x03001000U, 0x08000001U, 0xff000000U}) {
        uint8_t type = 0;
        EXPECT_NE(if_index_get_type(index, &type), 0) << index;
        EXPECT_GT(type, 80);
        char expected[16];
        std::snprintf(expected, sizeof expected, "%08xh??", index);
        EXPECT_EQ(name_of(index), expected);
        char printed[64];
        sprintf_if_index(printed, index);
        EXPECT_STREQ(printed, expected);
    }
}

TEST(interface_names, only_the_printed_form_is_parsed) {
    for (const char *name : {"",
                             "fc",
                             "fc1",
                             "fc1/",
                             "fc0/1",
                             "fc1/0",
                             "fc256/1",
                             "fc1/65536",
                             "fc01/1",
                             "fc1/1 ",
                             " fc1/1",
                             "fc1/+1",
                             "fc 1/1",
                             "FC1/1",
                             "fc1/1x",
                             "port-channel3",
                             "port-channel  3",
                             "vsan4096",
                             "vsan-1",
                             "vsan4294967297",
                             "mgmt",
                             "null intf",
                             "08000001h??",
                             "fc-tunnel"}) {
        uint32_t index = 77;
        EXPECT_NE(if_index_parse(name, &index), 0) << name;
        EXPECT_EQ(index, 77U);
    }
}

TEST(interface_names, random_round_trip) {
    std::mt19937 random{11};
    uint32_t known = 0;
    for (int step = 0; step < 50000; ++step) {
        const uint32_t bits = random();
        const uint32_t index = (bits >> 24 & 7) << 24 | (bits & (bits & 0x10000000 ? 0xff0fff : 0xfff));
        uint8_t type = 0;
        if (if_index_get_type(index, &type) == 0) {
            ++known;
            ASSERT_EQ(parsed(name_of(index)), index);
        } else {
            ASSERT_EQ(parsed(name_of(index)), 0U);
        }
    }
    EXPECT_GT(known, 10000U);
}

} // namespace
