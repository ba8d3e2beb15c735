// A digest tells what it is there to tell, and nothing else.
#include "codec/fingerprint.h"

#include <gtest/gtest.h>
#include <set>

namespace {

using namespace ribkit::codec;

template <size_t N> std::set<uint32_t> digests(const layout *const (&all)[N], uint32_t (*digest)(const layout &)) {
    std::set<uint32_t> different;
    for (const layout *l : all) {
        different.insert(digest(*l));
    }
    return different;
}

constexpr layout entry{"entry", 4, {word(0, "a")}};
constexpr layout other_entry{"entry", 4, {bytes(0, 4, "a")}};
constexpr layout plain{"l", 8, {word(0, "n"), word(4, "x")}};

TEST(fingerprint, of_the_wire_tells_everything_about_the_bytes) {
    static constexpr layout carried{"l", 8, {word(0, "n"), bytes(4, 4, "x")}};
    static constexpr layout masks{"l", 5, {word(0, "n"), masked(4, 0x80, "x")}};
    static constexpr layout other_mask{"l", 5, {word(0, "n"), masked(4, 0x40, "x")}};
    static constexpr layout one{"l", 8, {word(0, "n"), list(4, "x", in::word(0), entry, 4, 1)}};
    static constexpr layout other{"l", 8, {word(0, "n"), list(4, "x", in::word(0), other_entry, 4, 1)}};
    static constexpr layout second{"l", 8, {word(0, "n"), list(4, "x", in::second_byte(0), entry, 4, 1)}};
    static constexpr layout open{"l", 4, {word(0, "n"), list(4, "x", in::word(0), entry, 4)}};
    static constexpr layout apart{"l", 4, {word(0, "n"), list(4, "x", in::word(0), entry, 8)}};
    const layout *const all[] = {&plain, &carried, &masks, &other_mask, &one, &other, &second, &open, &apart};
    EXPECT_EQ(digests(all, wire_fingerprint).size(), 9U);
}

TEST(fingerprint, of_the_wire_knows_no_name_and_no_split) {
    static constexpr layout renamed{"m", 8, {word(0, "n"), word(4, "y", meaning::label).says("rib_uuid")}};
    static constexpr layout run{"l", 8, {word(0, "n"), also(word(4, "x"))}};
    const layout *const words[] = {&plain, &renamed, &run};
    EXPECT_EQ(digests(words, wire_fingerprint).size(), 1U);
    static constexpr layout whole{"l", 8, {bytes(0, 8, "x")}};
    static constexpr layout halves{"l", 8, {bytes(0, 3, "x"), bytes(3, 5, "y")}};
    const layout *const carried[] = {&whole, &halves};
    EXPECT_EQ(digests(carried, wire_fingerprint).size(), 1U);
}

TEST(fingerprint, of_the_description_tells_every_part_of_a_row) {
    static constexpr row_part low[] = {part("low", 0, 4)};
    static constexpr row_part wider[] = {part("low", 0, 5)};
    static constexpr layout renamed{"l", 8, {word(0, "n"), word(4, "y")}};
    static constexpr layout meant{"l", 8, {word(0, "n"), word(4, "x", meaning::label)}};
    static constexpr layout says{"l", 8, {word(0, "n"), word(4, "x").says("rib_uuid")}};
    static constexpr layout measured{"l", 8, {word(0, "n"), word(4, "x").in("ms")}};
    static constexpr layout from_one{"l", 8, {word(0, "n"), word(4, "x").shown_plus_one()}};
    static constexpr layout split{"l", 8, {word(0, "n"), word(4, "x").split(low)}};
    static constexpr layout more{"l", 8, {word(0, "n"), word(4, "x").split(wider)}};
    const layout *const all[] = {&plain, &renamed, &meant, &says, &measured, &from_one, &split, &more};
    EXPECT_EQ(digests(all, description_fingerprint).size(), 8U);
}

} // namespace
