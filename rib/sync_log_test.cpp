// A log is read from any number on, as long as nothing behind it was overwritten.
#include "rib/sync_log.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

using log = sync_log<uint32_t>;

void fill(log &changes, uint32_t count) {
    for (uint32_t i = 0; i < count; i++) {
        changes.add(1000 + i, 1, 2, i);
    }
}

/// The keys from a number on.
std::vector<uint32_t> keys_from(const log &changes, uint32_t sequence) {
    std::vector<uint32_t> keys;
    for (; sequence != changes.next(); sequence++) {
        EXPECT_EQ(changes.at(sequence).sequence, sequence);
        keys.push_back(changes.at(sequence).key);
    }
    return keys;
}

TEST(sync_log, is_empty_at_first) {
    const log changes;
    EXPECT_EQ(changes.next(), 0U);
    EXPECT_EQ(changes.held(), 0U);
    EXPECT_EQ(changes.time(), 0U);
    EXPECT_TRUE(changes.reaches(0));
    EXPECT_FALSE(changes.reaches(1));
    EXPECT_FALSE(changes.reaches(UINT32_MAX));
}

TEST(sync_log, tells_all_that_came_since) {
    log changes;
    fill(changes, 5);
    EXPECT_EQ(changes.held(), 5U);
    EXPECT_EQ(changes.time(), 1004U);
    EXPECT_TRUE(changes.reaches(0));
    EXPECT_EQ(keys_from(changes, 3), (std::vector<uint32_t>{3, 4}));
    EXPECT_TRUE(changes.reaches(5));
    EXPECT_FALSE(changes.reaches(6));
    EXPECT_EQ(changes.at(3), (log::entry{3, 1003, 1, 2, 3}));
    EXPECT_EQ(log_index(3), 3U);
}

TEST(sync_log, who_is_further_behind_than_the_ring_is_told_so) {
    log changes;
    fill(changes, 300);
    EXPECT_EQ(changes.held(), logged_changes);
    EXPECT_FALSE(changes.reaches(300 - logged_changes - 1));
    EXPECT_TRUE(changes.reaches(300 - logged_changes));
    EXPECT_EQ(keys_from(changes, 300 - logged_changes).size(), logged_changes);
    EXPECT_EQ(log_index(299), 43U);
}

TEST(sync_log, numbers_never_end) {
    log changes(UINT32_MAX - 2);
    fill(changes, 200);
    EXPECT_EQ(changes.next(), 197U);
    EXPECT_FALSE(changes.reaches(68));
    EXPECT_TRUE(changes.reaches(69));
    EXPECT_EQ(keys_from(changes, 69).front(), 72U);

    log short_one(UINT32_MAX - 2);
    fill(short_one, 5);
    EXPECT_TRUE(short_one.reaches(UINT32_MAX - 2));
    EXPECT_FALSE(short_one.reaches(UINT32_MAX - 3));
    EXPECT_EQ(keys_from(short_one, UINT32_MAX - 2), (std::vector<uint32_t>{0, 1, 2, 3, 4}));
}

} // namespace
} // namespace ribkit::rib
