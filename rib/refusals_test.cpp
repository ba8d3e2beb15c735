// Refusals by result code and client.
#include "rib/refusals.h"

#include "rib_codes.h"

#include <gtest/gtest.h>

namespace ribkit::rib {

namespace {

constexpr uint32_t all = refusal_counts::all_clients;

TEST(refusals, are_counted_by_result_and_client) {
    refusal_counts counts;
    counts.add(RIB_NO_ENTRY, RIB_CLIENT_FSPF);
    counts.add(RIB_NO_ENTRY, RIB_CLIENT_FSPF);
    counts.add(RIB_NO_ENTRY, RIB_CLIENT_MCAST);
    counts.add(RIB_HW_FULL, RIB_CLIENT_FSPF);
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, RIB_CLIENT_FSPF), 2U);
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, RIB_CLIENT_MCAST), 1U);
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, all), 3U);
    EXPECT_EQ(counts.of(RIB_HW_FULL, RIB_CLIENT_FSPF), 1U);
    EXPECT_EQ(counts.of(RIB_HW_FULL, RIB_CLIENT_MCAST), 0U);
}

TEST(refusals, of_nobody_known_are_in_the_sum_only) {
    refusal_counts counts;
    counts.add(RIB_BAD_PARAMETERS, all);
    EXPECT_EQ(counts.of(RIB_BAD_PARAMETERS, all), 1U);
}

TEST(refusals, of_clients_without_end_take_no_more_room) {
    refusal_counts counts;
    constexpr auto many = static_cast<uint32_t>(2 * refusal_counts::most_kinds);
    for (uint32_t client = 1; client <= many; client++) {
        counts.add(RIB_NO_ENTRY, client);
    }
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, all), many);
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, 1), 1U);
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, many), 0U);
    counts.add(RIB_NO_ENTRY, 1);
    EXPECT_EQ(counts.of(RIB_NO_ENTRY, 1), 2U);
}

} // namespace

} // namespace ribkit::rib
