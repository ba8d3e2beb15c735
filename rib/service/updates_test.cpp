// Update messages of the three tables, whole and damaged.
#include "rib/service/updates.h"

#include "protocol/table_messages.h"
#include "rib/service/answers.h"
#include "rib_codes.h"
#include "rib_show.h"
#include "testing/capture.h"
#include "testing/guarded.h"
#include "testing/literal_updates.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

using bytes = std::vector<uint8_t>;

constexpr model::destination two{0x020000, RIB_MASK_DOMAIN};
constexpr model::destination three{0x030000, RIB_MASK_DOMAIN};
const model::route near{500, RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE, {{0x01010001, 2}}};

bytes words(std::initializer_list<uint32_t> all) {
    bytes made;
    for (const uint32_t word : all) {
        testing::append_word(made, word);
    }
    return made;
}

bytes ucast(std::vector<model::route_change> changes, uint32_t oper = RIB_OPER_UPDATE_RSP) {
    return testing::literal_update({RIB_CLIENT_FSPF, 1, oper, std::move(changes)});
}

/// Two routes with members, then one without.
bytes mcast(uint32_t action = RIB_ACTION_ADD) {
    return words({RIB_CLIENT_MCAST, 1, RIB_OPER_UPDATE, 2,                        // header
                  0xfffff1, 0xffffff, action, 3, 0x1010001, 0x1010002, 0x1010003, // a group
                  0, 0, action, 0});                                              // the distribution tree
}

/// By source and label, popping one and pushing two through one interface, nothing through the other.
bytes labels(uint32_t record_vsan = 1) {
    bytes made = words({RIB_CLIENT_FCMPLS, 1, RIB_OPER_UPDATE, 1,                                   // header
                        RIB_ROUTE_SRC_LABEL, record_vsan, 0x020304, 0xffff00, RIB_ACTION_ADD_LABEL, // type to action
                        1, 2, 2, 0x5140, 0, 0x1010001, 0x1010002}); // counts, match, sources
    made.resize(16 + 104);
    const bytes hops = words({0x01020000, 0x1020001, 0x6140, 0x7140, 0, 0x1020002});
    made.insert(made.end(), hops.begin(), hops.end());
    return made;
}

class updates : public ::testing::Test {
  protected:
    template <class Kind> protocol::fcurt_response take(const bytes &message, const update_origin &from = {}) {
        return take_update<Kind>(rib, testing::guarded(message).bytes(), from);
    }

    /// At any byte the answer says what the header tells, and nothing has changed.
    template <class Kind> void expect_cut_is_refused(const bytes &whole, size_t header) {
        const auto before = rib.memory().routes;
        const uint32_t oper = testing::word_at(whole, 8);
        for (size_t length = 0; length < whole.size(); length++) {
            const testing::guarded cut(std::span<const uint8_t>(whole).first(length));
            const bool is_told = length >= header;
            EXPECT_EQ(take_update<Kind>(rib, cut.bytes()),
                      (protocol::fcurt_response{RIB_BAD_PARAMETERS, is_told ? oper : 0, is_told ? 1U : 0U, 0,
                                                is_told ? rib.held(Kind::id, 1) : 0}))
                << length;
        }
        EXPECT_EQ(rib.memory().routes, before);
    }

    /// A count, where it is one too large or much.
    template <class Kind> void expect_count_is_refused(const bytes &whole, size_t at) {
        for (const uint32_t count : {testing::word_at(whole, at) + 1, 0x20000000U, 0x7fffffffU, 0xffffffffU}) {
            bytes wrong = whole;
            const bytes word = words({count});
            std::copy(word.begin(), word.end(), wrong.begin() + static_cast<ptrdiff_t>(at));
            EXPECT_EQ(take<Kind>(wrong).result, RIB_BAD_PARAMETERS) << count << " at " << at;
        }
        EXPECT_EQ(rib.memory().routes, 0U);
    }

    state rib;
};

TEST_F(updates, a_unicast_route_is_read_whole) {
    model::route what = near;
    bytes message = ucast({{RIB_ACTION_ADD, {0x0203ff, 0xffff00}, near}});
    for (uint8_t i = 0; i < 8; i++) {
        message[980 + 8 + i] = what.carried[i] = static_cast<uint8_t>(0xa0 + i);
    }
    EXPECT_EQ(take<unicast>(message), (protocol::fcurt_response{RIB_OK, RIB_OPER_UPDATE_RSP, 1, 1, 1}));
    EXPECT_EQ(active_routes(rib), (model::held_routes{{{1, {0x020300, 0xffff00}}, {RIB_CLIENT_FSPF, what}}}));
}

TEST_F(updates, a_multicast_route_is_read_whole) {
    EXPECT_EQ(take<multicast>(mcast()), (protocol::fcurt_response{RIB_OK, RIB_OPER_UPDATE, 1, 2, 2}));
    const auto &table = rib.routes<multicast>();
    const auto *group = table.find({1, {0xfffff1, 0xffffff}}, RIB_CLIENT_MCAST);
    ASSERT_NE(group, nullptr);
    const auto members = table.read(*group).members;
    EXPECT_EQ((std::vector<uint32_t>{members.begin(), members.end()}),
              (std::vector<uint32_t>{0x1010001, 0x1010002, 0x1010003}));
    EXPECT_NE(table.find({1, {0, 0}}, RIB_CLIENT_MCAST), nullptr);
    EXPECT_EQ(take<multicast>(mcast(RIB_ACTION_DELETE)).held, 0U);
}

TEST_F(updates, a_label_route_is_read_whole) {
    EXPECT_EQ(take<label>(labels()), (protocol::fcurt_response{RIB_OK, RIB_OPER_UPDATE, 1, 1, 1}));
    const model::label_key key{1, RIB_ROUTE_SRC_LABEL, 0x1010001, {0, 0}, 1, {0x5140, 0}};
    const auto *route = rib.routes<label>().find(key, RIB_CLIENT_FCMPLS);
    ASSERT_NE(route, nullptr);
    const auto what = rib.routes<label>().read(*route);
    EXPECT_EQ((std::vector<uint32_t>{what.sources.begin(), what.sources.end()}),
              (std::vector<uint32_t>{0x1010001, 0x1010002}));
    EXPECT_EQ((std::vector<uint32_t>{what.hops.begin(), what.hops.end()}),
              (std::vector<uint32_t>{0x01020000, 0x1020001, 0x6140, 0x7140, 0, 0x1020002}));
    EXPECT_EQ(take<label>(labels(2)).result, RIB_BAD_PARAMETERS) << "a record of another VSAN";
}

TEST_F(updates, a_label_route_of_more_hops_than_there_can_be_is_refused) {
    bytes message = labels();
    message.resize(16 + 104);
    for (uint32_t i = 0; i < 40; i++) {
        const bytes hop = words({0, i});
        message.insert(message.end(), hop.begin(), hop.end());
        message[16 + 31] = static_cast<uint8_t>(i + 1);
        EXPECT_EQ(take<label>(message).result, i < 16 ? RIB_OK : RIB_BAD_PARAMETERS) << i;
    }
}

TEST_F(updates, versions_come_with_the_header) {
    bytes message = ucast({}, RIB_OPER_ADD_VERSION);
    message[12 + 3] = 2;
    message[20 + 3] = 7;
    message[24 + 3] = 9;
    EXPECT_EQ(take<unicast>(message), (protocol::fcurt_response{RIB_OK, RIB_OPER_ADD_VERSION, 1, 2, 0}));
    EXPECT_EQ(rib.versions().all().at({RIB_CLIENT_FSPF, 1}), (std::vector<uint32_t>{7, 9}));
}

TEST_F(updates, what_is_cut_is_refused_with_what_its_header_tells) {
    take<unicast>(ucast({{RIB_ACTION_ADD, two, near}}));
    expect_cut_is_refused<unicast>(ucast({{RIB_ACTION_DELETE, two, near}}), 980);
    expect_cut_is_refused<multicast>(mcast(), 16);
    expect_cut_is_refused<label>(labels(), 16);
}

TEST_F(updates, counts_that_disagree_with_the_size_are_refused) {
    const bytes two_routes = ucast({{RIB_ACTION_ADD, two, near}, {RIB_ACTION_ADD, three, near}});
    for (const size_t at : {size_t{16}, size_t{980 + 28}, size_t{980 + 40 + 28}}) {
        expect_count_is_refused<unicast>(two_routes, at);
    }
    for (const size_t at : {size_t{12}, size_t{16 + 12}, size_t{16 + 28 + 12}}) {
        expect_count_is_refused<multicast>(mcast(), at);
    }
    for (const size_t at : {size_t{12}, size_t{16 + 28}}) {
        expect_count_is_refused<label>(labels(), at);
    }
    bytes versions = two_routes;
    versions[15] = 241;
    EXPECT_EQ(take<unicast>(versions).result, RIB_BAD_PARAMETERS);
    bytes more = two_routes;
    more.push_back(0);
    EXPECT_EQ(take<unicast>(more).result, RIB_EXCESS_DATA);
    EXPECT_EQ(rib.memory().routes, 0U);
    versions[15] = 240;
    EXPECT_EQ(take<unicast>(versions).result, RIB_OK);
}

TEST_F(updates, only_those_who_may_speak_for_the_client_are_heard) {
    std::vector<uint32_t> asked;
    const update_origin nobody{.may_speak = [&](uint32_t client) {
        asked.push_back(client);
        return false;
    }};
    EXPECT_EQ(take<unicast>(ucast({{RIB_ACTION_ADD, two, near}}), nobody).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(take<multicast>(mcast(), nobody).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(asked, (std::vector<uint32_t>{RIB_CLIENT_FSPF, RIB_CLIENT_MCAST}));
    EXPECT_EQ(rib.memory().routes, 0U);
}

TEST_F(updates, an_update_by_envelope_comes_in_one) {
    const bytes message = ucast({{RIB_ACTION_ADD, two, near}}, RIB_OPER_UPDATE_CMI);
    EXPECT_EQ(take<unicast>(message).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(take<unicast>(message, {.in_envelope = true}).result, RIB_OK);
}

TEST(entry, displays_its_route) {
    const model::route wide{1000, RIB_FLAG_ACTIVE, {{0x01010001, 0x65}, {0x01010002, 239}}, {0x22, 0xff, 0x21}};
    const auto entry = protocol::ucast_entry({20, two}, {RIB_CLIENT_FSPF, wide});
    uint32_t length = 0;
    const std::string text = testing::printed_by([&] { length = rib_show_fcu(0, entry.data()); });
    EXPECT_EQ(length, 52U);
    EXPECT_TRUE(text.starts_with("fspf        20    020000 ff0000    22 ff    R P A  2     1000   T  ")) << text;
    EXPECT_TRUE(text.ends_with("    fc1/1  Domain  0x65(101)\n"
                               "    fc1/2  Domain  0xef(239)\n"))
        << text;
    EXPECT_EQ(testing::printed_by([&] {
                  EXPECT_EQ(rib_show_fcu(0, protocol::ucast_entry({20, two}, {RIB_CLIENT_FSPF, {}}).data()), 36U);
              }).find("fc1/"),
              std::string::npos);
}

} // namespace
} // namespace ribkit::rib
