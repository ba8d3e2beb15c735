// Each use is of a word that its message has, and has one name in it.
#include "protocol/uses.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace ribkit::protocol {
namespace {

TEST(uses, are_of_words_that_there_are) {
    for (const word_use &one : word_uses) {
        const auto row = std::find_if(one.message->begin(), one.message->end(),
                                      [&](const codec::row &r) { return std::string_view(r.name) == one.word; });
        ASSERT_NE(row, one.message->end()) << one.message->name << ' ' << one.word;
        EXPECT_TRUE(row->size == 4 || row->size == 1) << one.message->name << ' ' << one.word;
    }
}

TEST(uses, are_told_apart) {
    std::set<std::pair<const codec::layout *, std::string_view>> words;
    std::set<std::pair<const codec::layout *, std::string_view>> names;
    for (const word_use &one : word_uses) {
        EXPECT_TRUE(words.emplace(one.message, one.word).second) << one.message->name << ' ' << one.word;
        EXPECT_TRUE(names.emplace(one.message, one.use).second) << one.message->name << ' ' << one.use;
    }
}

TEST(uses, find_the_word_that_has_them) {
    EXPECT_EQ((use<wire::route_rsp, "accepted">.str()), "word_12");
    EXPECT_EQ((use<wire::fcurt_query, "mask">.str()), "word_20");
    EXPECT_STREQ(use_of(wire::route_rsp, "word_0")->use, "result");
    EXPECT_STREQ(use_of(wire::route_rsp, "word_0")->vocabulary, "rib_rtn");
    EXPECT_EQ(use_of(wire::route_rsp, "word_1"), nullptr);
    EXPECT_EQ(use_of(wire::fib_sync, "byte_1"), nullptr);
}

} // namespace
} // namespace ribkit::protocol
