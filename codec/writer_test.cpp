// The writer against messages put together by hand, byte after byte, in buffers of every size.
#include "codec/messages/info.h"
#include "codec/messages/route.h"
#include "codec/writer.h"
#include "rib_check.h"
#include "rib_codec.h"
#include "rib_codes.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace ribkit::codec {
namespace {

using bytes = std::vector<uint8_t>;

/// The naive way: words appended one by one.
void append(bytes &to, uint32_t word) {
    for (const int shift : {24, 16, 8, 0}) {
        to.push_back(static_cast<uint8_t>(word >> shift));
    }
}

struct hop {
    uint32_t intf, domain;
};
struct route {
    uint32_t fcid, mask, metric;
    std::vector<hop> hops;
};

bytes by_hand(const std::vector<route> &routes) {
    bytes all;
    for (const uint32_t word : {12U, 7U, 4U, 0U, static_cast<uint32_t>(routes.size())}) {
        append(all, word);
    }
    all.resize(980);
    for (const route &r : routes) {
        for (const uint32_t word : {r.fcid, r.mask, 0U, 0U, 1U, r.metric, 9U, static_cast<uint32_t>(r.hops.size())}) {
            append(all, word);
        }
        for (const hop &h : r.hops) {
            append(all, h.intf);
            append(all, h.domain);
        }
    }
    return all;
}

/// As many whole routes as find room. @return how many
size_t by_name(writer<wire::fcurt_update> &update, const std::vector<route> &routes) {
    update.set<"uuid">(12U).set<"vsan">(7U).set<"oper">(4U);
    size_t written = 0;
    for (const route &r : routes) {
        const auto record = update.add<"route">();
        record.set<"fcid">(r.fcid).set<"mask">(r.mask).set<"action">(1U).set<"metric">(r.metric).set<"flag">(9U);
        for (const hop &h : r.hops) {
            record.add<"hop">().set<"intf">(h.intf).set<"domain">(h.domain);
        }
        if (!update.is_whole()) {
            update.take_back<"route">(record);
            break;
        }
        ++written;
    }
    return written;
}

std::vector<route> random_routes(std::mt19937 &random) {
    std::vector<route> routes(random() % 5);
    for (route &r : routes) {
        r = {static_cast<uint32_t>(random()), static_cast<uint32_t>(random()), static_cast<uint32_t>(random()), {}};
        r.hops.resize(random() % 4);
        for (hop &h : r.hops) {
            h = {static_cast<uint32_t>(random()), static_cast<uint32_t>(random())};
        }
    }
    return routes;
}

TEST(writer, writes_what_is_written_by_hand_as_far_as_there_is_room) {
    constexpr size_t guard = 16;
    std::mt19937 random(5);
    for (int round = 0; round < 40; ++round) {
        std::vector<route> routes = random_routes(random);
        const size_t whole = by_hand(routes).size();
        for (size_t capacity = 980; capacity <= whole + 8; ++capacity) {
            bytes buffer(capacity + guard, 0xee);
            writer<wire::fcurt_update> update(buffer.data() + 1, capacity); // of odd alignment
            std::vector<route> kept = routes;
            kept.resize(by_name(update, routes));
            EXPECT_EQ(kept.size() == routes.size(), capacity >= whole);
            EXPECT_TRUE(update.is_whole());
            const bytes expected = by_hand(kept);
            ASSERT_EQ(update.size(), expected.size());
            EXPECT_EQ(bytes(buffer.begin() + 1, buffer.begin() + 1 + static_cast<ptrdiff_t>(expected.size())),
                      expected);
            EXPECT_EQ(rib_check_fcurt_update(buffer.data() + 1, update.size(), nullptr), RIB_OK);
            EXPECT_EQ(buffer[0], 0xee);
            for (size_t at = 1 + capacity; at < buffer.size(); ++at) {
                ASSERT_EQ(buffer[at], 0xee) << at;
            }
        }
    }
}

TEST(writer, without_room_for_the_fixed_part_nothing_is_written) {
    bytes buffer(979, 0xee);
    writer<wire::fcurt_update> update(buffer);
    EXPECT_FALSE(update);
    EXPECT_FALSE(update.is_whole());
    update.set<"uuid">(1U).set<"oper">(2U);
    EXPECT_FALSE(update.add<"route">());
    update.add<"route">().set<"flag", "volatile">(1);
    update.take_back<"route">(update.add<"route">());
    EXPECT_EQ(update.size(), 0U);
    const writer<wire::registration> reg(buffer.data(), 87);
    reg.set_text<"name">("fspf").set_bytes<"name">(bytes{1, 2});
    EXPECT_FALSE(reg);
    EXPECT_EQ(buffer, bytes(979, 0xee));
}

// A message's size has 32 bits, the room that a caller has may have more.
TEST(writer, more_room_than_a_message_can_fill_is_room) {
    bytes buffer(wire::fcurt_update.size + wire::fcurt.size);
    const writer<wire::fcurt_update> update(buffer.data(), std::max(buffer.size(), size_t{UINT32_MAX} + buffer.size()));
    EXPECT_TRUE(update.add<"route">());
    EXPECT_EQ(update.size(), buffer.size());
}

TEST(writer, a_count_is_true_after_every_step) {
    bytes buffer(16 + 104 + 8 + 4);
    writer<wire::fclrt_update> update(buffer);
    const auto record = update.add<"route">();
    EXPECT_EQ(update.read().get<"n_route">(), 1U);
    const auto out = record.add<"intf">();
    EXPECT_EQ(record.read().get<"n_intf">(), 1U);
    EXPECT_TRUE(out.add<"push">().set<"label">(0x1234U));
    EXPECT_FALSE(out.add<"push">());
    EXPECT_FALSE(update.is_whole());
    EXPECT_EQ((out.read().get<"ctrl", "push">()), 1U);
    EXPECT_EQ(update.size(), buffer.size());
    EXPECT_EQ(rib_check_fclrt_update(buffer.data(), update.size(), nullptr), RIB_OK);
    EXPECT_FALSE(record.add<"intf">());
    record.take_back<"intf">(out);
    EXPECT_TRUE(update.is_whole());
    EXPECT_EQ(record.read().get<"n_intf">(), 0U);
    EXPECT_EQ(update.size(), 16U + 104U);
    EXPECT_EQ(rib_check_fclrt_update(buffer.data(), update.size(), nullptr), RIB_OK);
}

TEST(writer, a_bounded_list_is_full_at_its_bound_and_leaves_no_trace_of_what_was_taken_back) {
    bytes buffer(2000, 0xee);
    writer<wire::fcurt_update> update(buffer);
    for (uint32_t i = 1; i <= 240; ++i) {
        ASSERT_TRUE(update.add<"version">().set<"version">(i));
    }
    EXPECT_TRUE(update.is_whole());
    EXPECT_FALSE(update.add<"version">());
    EXPECT_FALSE(update.is_whole());
    EXPECT_EQ(update.read().get<"n_version">(), 240U);
    EXPECT_EQ(update.read().list<"version">()[239].get<"version">(), 240U);
    EXPECT_EQ(update.read().get<"n_route">(), 0U);
    EXPECT_EQ(update.size(), 980U);

    writer<wire::fclrt_update> labels(buffer);
    const auto record = labels.add<"route">();
    record.add<"match">().set<"label">(1U);
    const auto second = record.add<"match">().set<"label">(2U);
    record.take_back<"match">(second);
    EXPECT_EQ(record.read().get<"n_match">(), 1U);
    EXPECT_EQ(record.read().list<"match">()[1].get<"label">(), 0U);
    record.take_back<"match">(second); // it is gone already
    EXPECT_EQ(record.read().get<"n_match">(), 1U);
}

TEST(writer, a_byte_counts_to_255) {
    bytes buffer(4000);
    writer<wire::fclrt_intf> out(buffer);
    for (int i = 0; i < 255; ++i) {
        ASSERT_TRUE(out.add<"push">());
    }
    EXPECT_FALSE(out.add<"push">());
    EXPECT_EQ((out.read().get<"ctrl", "push">()), 255U);
    EXPECT_EQ(out.size(), 8U + 4U * 255U);
}

TEST(writer, the_byte_that_counts_stays_when_its_word_is_set) {
    bytes buffer(100);
    writer<wire::fclrt_intf> out(buffer);
    out.add<"push">();
    out.set<"ctrl">(0x02ffe000U).set<"ctrl", "use_ttl">(0).set<"intf">(5U);
    EXPECT_EQ(out.read().get<"ctrl">(), 0x0201a000U);
}

TEST(writer, a_count_that_was_written_over_leads_to_no_place_behind_the_buffer) {
    bytes buffer(100);
    const writer<wire::fclrt_intf> out(buffer);
    out.set_bytes<"ctrl">(bytes{0, 200, 0, 0});
    EXPECT_FALSE(out.add<"push">());
    EXPECT_EQ(out.size(), 8U);
}

TEST(writer, only_what_was_added_last_can_grow) {
    bytes buffer(4000);
    writer<wire::fclrt_update> update(buffer);
    const auto first = update.add<"route">();
    const auto inner = first.add<"intf">();
    const auto second = update.add<"route">();
    EXPECT_FALSE(first.add<"intf">());
    EXPECT_FALSE(inner.add<"push">());
    EXPECT_FALSE(update.is_whole());
    EXPECT_EQ(update.size(), 16U + 112U + 104U);
    EXPECT_TRUE(second.add<"intf">());
    update.take_back<"route">(first); // not the last
    EXPECT_EQ(update.read().get<"n_route">(), 2U);
    update.take_back<"route">(second);
    EXPECT_EQ(update.read().get<"n_route">(), 1U);
    EXPECT_EQ(update.size(), 16U + 112U);
    EXPECT_EQ(rib_check_fclrt_update(buffer.data(), update.size(), nullptr), RIB_OK);
}

TEST(writer, entries_that_overlap_are_written_in_order) {
    bytes buffer(36 + 8 + 20, 0xee);
    writer<wire::ucast_route> route(buffer);
    route.set<"fcid">(0x020000U).set<"mask">(0xff0000U);
    const auto first = route.add<"hop">().set<"intf">(1U).set<"ctrl", "domain">(0x65U);
    first.add<"label">().set<"label">(0x11111111U);
    route.add<"hop">().set<"intf">(2U).set<"ctrl", "domain">(0x66U);
    EXPECT_TRUE(route.is_whole());
    EXPECT_EQ(route.size(), 36U + 8U + 20U);
    EXPECT_FALSE(route.add<"hop">());
    const auto hops = view<wire::ucast_route>(buffer.data()).list<"hop">();
    EXPECT_EQ(hops.size(), 2U);
    EXPECT_EQ(hops[0].get<"intf">(), 1U);
    EXPECT_EQ((hops[1].get<"ctrl", "domain">()), 0x66U);
    EXPECT_EQ(hops[1].get<"intf">(), 2U);
}

TEST(writer, an_answer_of_many_tables_is_accepted) {
    bytes buffer(4 + 3 * 88);
    writer<wire::reg_info> clients(buffer);
    for (const uint32_t uuid : {12U, 39U, 64U}) {
        clients.add<"client">().set<"uuid">(uuid).set<"distance">(110U).set_text<"name">("client");
    }
    EXPECT_TRUE(clients.is_whole());
    EXPECT_EQ(rib_check_reg_info(buffer.data(), clients.size(), nullptr), RIB_OK);
    EXPECT_EQ(clients.read().list<"client">()[2].text<"name">(), "client");
    EXPECT_EQ(clients.read().list<"client">()[1].get<"uuid">(), 39U);
}

} // namespace
} // namespace ribkit::codec
