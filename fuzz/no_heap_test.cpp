// What promises to take no memory takes none: whatever handles an accepted message, all texts, bitmaps and tokens,
// while every allocation of the library would fail and is noticed.
#include "diag/catalogue.h"
#include "fuzz/openers.h"
#include "fuzz/seeds.h"
#include "rib_mem.h"
#include "rib_wrap.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <string_view>
#include <vector>

namespace ribkit::fuzz {
namespace {

/// Whether the library asks for memory meanwhile. What the test itself and the C++ library take does not count.
template <class Work> bool asks_for_memory(const Work &work) {
    const testing::failing_allocation none(1, testing::failing_allocation::how::onwards);
    work();
    return none.happened();
}

TEST(no_heap, asking_for_memory_is_noticed) {
    EXPECT_TRUE(asks_for_memory([] { EXPECT_EQ(pool_alloc(pool_create(64, 8)), nullptr); }));
    EXPECT_TRUE(asks_for_memory([] {
        rib_token list{};
        EXPECT_NE(rib_token_alloc(&list, 4), 0U);
    }));
}

TEST(no_heap, is_touched_by_whatever_handles_a_message) {
    std::set<std::string_view> opened;
    for (const sample &s : samples()) {
        const opener &how = openers()[s.opener];
        if (how.row == nullptr) { // envelopes and images are made of memory
            continue;
        }
        std::vector<uint8_t> scratch(s.message.size());
        const accepted message{s.message.data(), scratch.data(), static_cast<uint32_t>(s.message.size())};
        testing::all_printed_by([&] {
            EXPECT_FALSE(asks_for_memory([&] {
                how.check(message.bytes, message.size, nullptr);
                open(how, message);
            })) << how.name;
        });
        opened.insert(how.name);
    }
    for (const opener &how : openers()) {
        EXPECT_TRUE(how.row == nullptr || opened.contains(how.name)) << how.name;
    }
}

TEST(no_heap, is_touched_by_texts) {
    for (const auto &vocabulary : diag::vocabularies) {
        std::array<char, 512> text{};
        for (uint32_t number = 0; number < 300; number++) {
            ASSERT_FALSE(asks_for_memory([&] { vocabulary.converter(number, text.data()); })) << vocabulary.name;
        }
    }
}

TEST(no_heap, is_touched_by_bitmaps_and_by_tokens_that_are_there) {
    std::array<uint8_t, 64> map{};
    uint32_t next = 0;
    rib_token list{};
    ASSERT_EQ(rib_token_alloc(&list, 2), 0U);
    testing::all_printed_by([&] {
        EXPECT_FALSE(asks_for_memory([&] {
            bmap_set(map.data(), map.size(), 5);
            bmap_next_set(map.data(), map.size(), 0, &next);
            bmap_count(map.data(), map.size());
            bmap_show(map.data(), map.size(), "map");
            rib_token_add(&list, 7);
            rib_token_match(&list, 7);
            rib_token_remove(&list, 7);
        }));
    });
    rib_token_release(&list);
}

} // namespace
} // namespace ribkit::fuzz
