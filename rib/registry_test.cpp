// Registrations come, are repeated, say something else, and are forgotten.
#include "rib/registry.h"

#include "rib_codes.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

TEST(registry, a_client_is_known_until_it_is_not_heard_of) {
    registry clients;
    EXPECT_EQ(clients.take({12, 7, "fspf"}, 100), RIB_OK);
    EXPECT_EQ(*clients.find(12), (registration{12, 7, "fspf"}));
    EXPECT_FALSE(clients.forget_one(129));
    const auto lost = clients.forget_one(130);
    ASSERT_TRUE(lost);
    EXPECT_EQ(*lost, (registration{12, 7, "fspf"}));
    EXPECT_EQ(clients.find(12), nullptr);
    EXPECT_FALSE(clients.forget_one(1000));
}

TEST(registry, a_repetition_keeps_it_and_may_change_it) {
    registry clients;
    for (uint64_t now = 0; now <= 100; now += registration_repeated) {
        EXPECT_EQ(clients.take({12, static_cast<uint32_t>(now), "fspf"}, now), RIB_OK);
        EXPECT_FALSE(clients.forget_one(now));
    }
    EXPECT_EQ(clients.all(), (std::vector<registration>{{12, 100, "fspf"}}));
    EXPECT_EQ(clients.size(), 1U);
    EXPECT_FALSE(clients.forget_one(129));
    EXPECT_TRUE(clients.forget_one(130));
}

TEST(registry, those_that_are_lost_are_told_one_by_one) {
    registry clients;
    for (const uint32_t client : {22U, 12U, 14U}) {
        EXPECT_EQ(clients.take({client, 1, ""}, client), RIB_OK);
    }
    EXPECT_EQ(clients.forget_one(46)->client, 12U);
    EXPECT_EQ(clients.forget_one(46)->client, 14U);
    EXPECT_FALSE(clients.forget_one(46));
    EXPECT_EQ(clients.all(), (std::vector<registration>{{22, 1, ""}}));
}

TEST(registry, a_name_is_cut_and_printable) {
    registry clients;
    EXPECT_EQ(clients.take({5, 1, "static routes"}, 0), RIB_OK);
    EXPECT_EQ(clients.take({6, 1, "a\n\x7f\xff"}, 0), RIB_OK);
    EXPECT_EQ(clients.all(), (std::vector<registration>{{5, 1, "static "}, {6, 1, "a???"}}));
}

TEST(registry, one_too_many_is_refused_and_the_others_may_repeat) {
    registry clients;
    for (uint32_t client = 0; client < most_registrations; client++) {
        ASSERT_EQ(clients.take({client, 1, "x"}, 0), RIB_OK);
    }
    EXPECT_EQ(clients.take({most_registrations, 1, "x"}, 0), RIB_HW_FULL);
    EXPECT_EQ(clients.take({3, 2, "x"}, 1), RIB_OK);
    EXPECT_EQ(clients.all()[3].distance, 2U);
    EXPECT_EQ(clients.size(), most_registrations);
}

TEST(registry, history_says_who_came_and_who_went) {
    EXPECT_EQ(line_of_registration({12, 7, "fspf"}), "rib: client 12 (fspf) registered, distance 7");
    EXPECT_EQ(line_of_registration({12, 7, ""}), "rib: client 12 registered, distance 7");
    EXPECT_EQ(line_of_loss({12, 7, ""}),
              "rib: client 12 was not heard of for 30 s: it is forgotten, with the distance that it registered");
}

} // namespace
} // namespace ribkit::rib
