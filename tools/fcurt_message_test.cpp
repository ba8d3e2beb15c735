// Updates as bytes: what is written is read back, and no message is longer than allowed.
#include "tools/fcurt_message.h"

#include "rib_check.h"
#include "rib_codec.h"
#include "rib_codes.h"
#include "tools/random_routes.h"

#include <gtest/gtest.h>

namespace ribkit::tools {
namespace {

fcurt_update update_of(const route_table &table) {
    return {RIB_CLIENT_FSPF, 20, RIB_OPER_UPDATE_RSP, changes_between({}, table)};
}

std::vector<uint8_t> one_message(const fcurt_update &update) { return encode(update, SIZE_MAX).at(0).bytes; }

/// Two routes, with two hops and with none: 980 + 48 + 32 bytes.
std::vector<uint8_t> sample() {
    return one_message({RIB_CLIENT_FSPF,
                        20,
                        RIB_OPER_UPDATE_RSP,
                        {{RIB_ACTION_ADD, {0x020000, RIB_MASK_DOMAIN}, {500, RIB_FLAG_ACTIVE, {{7, 2}, {8, 3}}}},
                         {RIB_ACTION_DELETE, {0x030000, RIB_MASK_DOMAIN}, {}}}});
}

TEST(fcurt_message, every_field_has_its_place_in_network_order) {
    const std::vector<uint8_t> bytes = sample();
    ASSERT_EQ(bytes.size(), 1060U);
    const std::vector<uint8_t> header{0, 0, 0, 12, 0, 0, 0, 20, 0, 0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 2};
    EXPECT_TRUE(std::equal(header.begin(), header.end(), bytes.begin()));
    EXPECT_EQ(std::count(bytes.begin() + 20, bytes.begin() + 980, 0), 960);
    const std::vector<uint8_t> first{0, 2, 0, 0, 0, 0xff, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0xf4,
                                     0, 0, 0, 8, 0, 0,    0, 2, 0, 0, 0, 7, 0, 0, 0, 2, 0, 0, 0, 8, 0, 0, 0, 3};
    EXPECT_TRUE(std::equal(first.begin(), first.end(), bytes.begin() + 980));
    EXPECT_EQ(rib_sizeof_fcurt_update(bytes.data()), bytes.size());
}

TEST(fcurt_message, an_update_without_changes_needs_no_message) { EXPECT_TRUE(encode(fcurt_update{}, 2000).empty()); }

TEST(fcurt_message, messages_are_as_long_as_the_limit_allows) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; round++) {
        const fcurt_update update = update_of(random_table(random));
        const size_t limit = smallest_message_limit + random() % 600;
        fcurt_update together{update.uuid, update.vsan, update.oper, {}};
        const auto messages = encode(update, limit);
        for (size_t i = 0; i < messages.size(); i++) {
            const auto &[bytes, changes] = messages[i];
            EXPECT_LE(bytes.size(), limit);
            ASSERT_EQ(rib_check_fcurt_update(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr), RIB_OK);
            const fcurt_update part = decode_fcurt_update(bytes);
            EXPECT_EQ(part.changes.size(), changes);
            EXPECT_EQ(part.vsan, update.vsan);
            if (i > 0) {
                const size_t next = fcurt_record_size(part.changes.at(0).what.hops.size());
                EXPECT_GT(messages[i - 1].bytes.size() + next, limit);
            }
            together.changes.insert(together.changes.end(), part.changes.begin(), part.changes.end());
        }
        ASSERT_EQ(together.changes, update.changes) << "round " << round;
    }
}

TEST(fcurt_message, a_response_is_five_words) {
    const fcurt_response response{RIB_NO_ENTRY, RIB_OPER_UPDATE_RSP, 20, 3, 0x01020304};
    const auto bytes = encode(response);
    const std::array<uint8_t, 20> expected{0x40, 0x52, 0, 0x10, 0, 0, 0, 0x10, 0, 0, 0, 20, 0, 0, 0, 3, 1, 2, 3, 4};
    EXPECT_EQ(bytes, expected);
    EXPECT_EQ(decode_fcurt_response(bytes), response);
}

} // namespace
} // namespace ribkit::tools
