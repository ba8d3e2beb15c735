// What the RIB answers of itself passes the check of its message, and is read as it was meant.
#include "protocol/system_messages.h"

#include "rib_check.h"
#include "rib_codes.h"

#include <gtest/gtest.h>

namespace ribkit::protocol {
namespace {

using checker = uint32_t (*)(const void *, uint32_t, rib_check_report *);

void expect_sound(checker check, std::span<const uint8_t> message) {
    rib_check_report why{};
    EXPECT_EQ(check(message.data(), static_cast<uint32_t>(message.size()), &why), RIB_OK) << why.field;
}

uint32_t word_at(std::span<const uint8_t> message, size_t at) {
    return uint32_t{message[at]} << 24 | uint32_t{message[at + 1]} << 16 | uint32_t{message[at + 2]} << 8 |
           message[at + 3];
}

TEST(system_messages, vsans_with_their_counts) {
    const std::vector<model::vsan_summary> vsans{{1, 100, 2, 3, 4}, {4095, 0, 5, 0, 0}};
    const bytes message = database_info(77, vsans);
    EXPECT_EQ(message.size(), 48U);
    expect_sound(rib_check_db_info, message);
    EXPECT_EQ(word_at(message, 4), 77U);
    EXPECT_EQ(summaries_of(codec::view<wire::db_info>(message.data())), vsans);
    expect_sound(rib_check_db_info, database_info(77, {}));
}

TEST(system_messages, domains) {
    std::vector<model::domain_reach> vsans(2);
    vsans[0].vsan = 1;
    vsans[0].present[3] = 0x80;
    vsans[1].vsan = 2;
    vsans[1].direct[31] = 1;
    const bytes message = domain_info(vsans);
    expect_sound(rib_check_dm_info, message);
    EXPECT_EQ(message.size(), 4U + 2 * 68);
    EXPECT_EQ(message[4 + 4 + 3], 0x80);
    EXPECT_EQ(reach_of(codec::view<wire::dm_info>(message.data())), vsans);
}

TEST(system_messages, registrations_with_short_names) {
    const std::vector<model::registration> clients{{12, 110, "fspf"}, {22, 10, "fcdomain"}};
    const bytes message = registration_info(clients);
    expect_sound(rib_check_reg_info, message);
    EXPECT_EQ(registrations_of(codec::view<wire::reg_info>(message.data())),
              (std::vector<model::registration>{{12, 110, "fspf"}, {22, 10, "fcdomai"}}));
}

TEST(system_messages, states_of_vsans) {
    const std::vector<std::pair<uint32_t, model::vsan_attributes>> vsans{
        {1, {}}, {20, {model::vsan_state::suspended, model::flow_balance::source_and_destination, true, 2000}}};
    const bytes message = vsan_info(vsans);
    expect_sound(fib_check_vsan_update, message);
    EXPECT_EQ(word_at(message, 12), 0x02210001U);
    EXPECT_EQ(word_at(message, 16), 2000U);
    EXPECT_EQ(word_at(message, 20), 0x03120014U);
    EXPECT_EQ(vsans_of(codec::view<wire::vsan_update>(message.data())), vsans);
}

TEST(system_messages, structures_of_the_rib_s_own) {
    const model::availability now{1, false, true, false, true, false};
    const bytes state = availability_info(now);
    expect_sound(rib_check_in_info, state);
    EXPECT_EQ(state.size(), 32U);
    EXPECT_EQ(availability_of(codec::view<wire::in_info>(state.data())), now);
    std::array<model::memory_pool, model::memory_pools> pools{};
    for (uint32_t i = 0; i < pools.size(); i++) {
        pools[i] = {i + 1, i * 8, i * 100};
    }
    const bytes memory = memory_info(pools);
    expect_sound(rib_check_in_info, memory);
    EXPECT_EQ(memory.size(), 200U);
    EXPECT_EQ(pools_of(codec::view<wire::in_info>(memory.data())), pools);
    const bytes waiting = internal_info(7, 3);
    expect_sound(rib_check_in_info, waiting);
    EXPECT_EQ(word_at(waiting, 0), 3U);
    EXPECT_EQ(word_at(waiting, 4), 7U);
}

TEST(system_messages, a_few_words) {
    expect_sound(rib_check_test_info, test_info(2, true));
    EXPECT_EQ(word_at(test_info(2, true), 4), 1U);
    expect_sound(rib_check_verf_info, verification_info({0x400, 5, 6}, {}, 10));
    EXPECT_EQ(word_at(verification_info({0x400, 5, 6}, {}, 10), 12), 6U);
    expect_sound(rib_fib_check_fcu_lb_rsp, flow_info(0, 0x01010001));
    expect_sound(rib_check_sync_info, log_position(9, 3));
    EXPECT_EQ(word_at(log_position(9, 3), 0), 9U);
}

TEST(system_messages, logs_end_with_a_marker) {
    const model::route_key key{20, {0x010000, 0xff0000}};
    const std::vector<model::logged_change<model::route_key>> changes{{128, 1000, 1, 2, key}, {129, 1001, 2, 1, key}};
    const bytes unicast = unicast_log(changes, 130);
    ASSERT_EQ(unicast.size(), 96U);
    for (size_t at = 0; at < unicast.size(); at += 32) {
        expect_sound(rib_check_sync_fcu, std::span(unicast).subspan(at, 32));
    }
    EXPECT_EQ(word_at(unicast, 0), 0U);
    EXPECT_EQ(word_at(unicast, 4), 128U);
    EXPECT_EQ(word_at(unicast, 32), 1U);
    EXPECT_EQ(word_at(unicast, 20), 20U);
    EXPECT_EQ(word_at(unicast, 28), 0xff0000U);
    EXPECT_EQ(word_at(unicast, 64), model::log_marker);
    EXPECT_EQ(word_at(unicast, 68), 130U);
    EXPECT_EQ(word_at(unicast, 72), 1001U);
    EXPECT_EQ(word_at(unicast, 76), 2U);
    EXPECT_EQ(multicast_log(changes, 130).size(), 84U);
    const std::vector<model::logged_change<model::label_key>> labels{
        {5, 1000, 1, 1, {20, 1, 0x01010001, {0, 0}, 2, {7, 8}}}};
    const bytes label = label_log(labels, 6);
    ASSERT_EQ(label.size(), 104U);
    EXPECT_EQ(word_at(label, 44), 8U);
    EXPECT_EQ(word_at(label, 48), 0x01010001U);
}

} // namespace
} // namespace ribkit::protocol
