#include "mem/contiguous.h"
#include "mem/random_words.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using ribkit::testing::failing_allocation;
using ribkit::testing::printed_by;

namespace {

using words = std::vector<uint32_t>;

// What the callbacks were told, one line each; the mask fails where it is asked to.
std::string told;
uint32_t masks_before_failure = 0xffffffff;

template <typename... Values> std::string text(const char *format, Values... values) {
    char line[200];
    std::snprintf(line, sizeof line, format, values...);
    return line;
}

uint32_t move(uint32_t destination, uint32_t source, uint32_t count) {
    told += text("move %u %u %u\n", destination, source, count);
    return 0x1234; // ignored
}

uint32_t mask(uint32_t segment, uint32_t first, uint32_t count) {
    told += text("mask %u %u %u\n", segment, first, count);
    return masks_before_failure-- == 0 ? 0xbad : 0;
}

struct cont *two_segments(uint32_t moves_allowed, cont_move_func move_func = move, cont_mask_func mask_func = mask) {
    const struct cont_config config = {64, 8, 2};
    const uint32_t sizes[] = {16, 32};
    told.clear();
    return cont_create(&config, sizes, move_func, mask_func, moves_allowed);
}

words image_of(const struct cont *cont) {
    uint8_t *buffer = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(cont_serialize(cont, &buffer, &length), RIB_OK);
    words image(length / 4);
    std::memcpy(image.data(), buffer, length);
    std::free(buffer);
    return image;
}

uint32_t restore(struct cont *cont, const words &image, uint32_t length) {
    return cont_deserialize(cont, reinterpret_cast<const uint8_t *>(image.data()), length);
}

uint32_t counted(const struct cont *cont, uint32_t segment) {
    uint32_t count = 77;
    EXPECT_EQ(cont_count(cont, segment, &count), RIB_OK);
    return count;
}

TEST(contiguous, lays_segments_out_one_after_the_other) {
    struct cont *cont = two_segments(0);
    EXPECT_EQ(image_of(cont), (words{64, 8, 2, 16, 0, 0, 32, 16, 16}));
    EXPECT_EQ(printed_by([&] { cont_show(cont); }),
              "\nTotal 64, block size 8, # segments 2\nSeg\tSize\tFirst\tFree\n---\t----\t-----\t----\n"
              "0\t10\t00000\t00000\n1\t20\t00010\t00010\n");
    EXPECT_EQ(cont_destroy(cont), RIB_OK);
    EXPECT_EQ(cont_destroy(nullptr), RIB_BAD_PARAMETERS);
    EXPECT_EQ(printed_by([] { cont_show(nullptr); }), "Bad contiguous descriptor!\n");
}

TEST(contiguous, configurations_that_do_not_hold_together) {
    const uint32_t sizes[100] = {};
    for (const struct cont_config config : {cont_config{63, 8, 2}, cont_config{0, 8, 0}, cont_config{8, 16, 1},
                                            cont_config{8, 8, 9}, cont_config{8, 0, 1}, cont_config{0, 0, 1}}) {
        EXPECT_EQ(cont_create(&config, sizes, move, mask, 1), nullptr) << config.total << " " << config.block_size;
    }
}

TEST(contiguous, sizes_that_do_not_fit_give_a_descriptor_that_refuses_all_work) {
    const std::array<std::array<uint32_t, 3>, 4> sizes = {{{15, 8, 8}, {8, 8, 12}, {64, 8, 0}, {8, 0xfffffff8, 16}}};
    for (const auto &wrong : sizes) {
        const struct cont_config config = {64, 8, 3};
        struct cont *cont = cont_create(&config, wrong.data(), move, mask, 1);
        ASSERT_NE(cont, nullptr);
        uint32_t out = 77;
        EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_BAD_PARAMETERS);
        EXPECT_EQ(out, 0xdeadbeef);
        EXPECT_EQ(cont_free(cont, 0, 0), RIB_BAD_PARAMETERS);
        EXPECT_EQ(cont_count(cont, 0, &out), RIB_BAD_PARAMETERS);
        EXPECT_EQ(out, 0U);
        EXPECT_EQ(cont_resize(cont, wrong.data()), RIB_OK);
        EXPECT_EQ(image_of(cont), (words{0, 0, 0}));
        cont_destroy(cont);
    }
}

TEST(contiguous, a_full_segment_takes_a_block_of_its_neighbour) {
    struct cont *cont = two_segments(1);
    uint32_t out = 77;
    for (uint32_t i = 0; i < 16; i++) {
        EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_OK);
        EXPECT_EQ(out, i);
    }
    uint32_t result = 77;
    EXPECT_EQ(printed_by([&] { result = cont_alloc(cont, 0, &out); }),
              "Start of cont_mv_up() seg 0 n_block 1 \nError! cont_mv_up 1 n_block called for segment 0\n"
              "Start of cont_mv_down() seg 0 n_block 1 \n"
              "\nTotal 64, block size 8, # segments 2\nSeg\tSize\tFirst\tFree\n---\t----\t-----\t----\n"
              "0\t18\t00000\t00010\n1\t18\t00018\t00018\nEnd of cont_mv_down() seg 0 n_block 1 \n");
    EXPECT_EQ(result, RIB_OK);
    EXPECT_EQ(out, 16U);
    EXPECT_EQ(told, "mask 0 16 8\n");
    EXPECT_EQ(image_of(cont), (words{64, 8, 2, 24, 0, 17, 24, 24, 24}));
    cont_destroy(cont);
}

TEST(contiguous, a_full_segment_stays_full_where_moves_are_not_allowed) {
    struct cont *cont = two_segments(0);
    uint32_t out = 77;
    for (uint32_t i = 0; i < 16; i++) {
        EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_OK);
    }
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_FAILED); }), "");
    EXPECT_EQ(out, 0xdeadbeef);
    EXPECT_EQ(counted(cont, 0), 16U);
    cont_destroy(cont);
}

TEST(contiguous, a_segment_of_no_positions_is_full) {
    const struct cont_config config = {16, 8, 2};
    const uint32_t sizes[] = {0, 16};
    struct cont *cont = cont_create(&config, sizes, nullptr, nullptr, 0);
    uint32_t out = 77;
    EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_FAILED);
    EXPECT_EQ(out, 0xdeadbeef);
    cont_destroy(cont);
}

TEST(contiguous, the_last_used_position_fills_the_hole) {
    for (const cont_move_func function : {move, static_cast<cont_move_func>(nullptr)}) {
        struct cont *cont = two_segments(0, function);
        uint32_t out = 77;
        for (uint32_t i = 0; i < 10; i++) {
            EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_OK);
        }
        EXPECT_EQ(cont_free(cont, 0, 3), RIB_OK);
        EXPECT_EQ(told, function != nullptr ? "move 3 9 1\n" : "");
        EXPECT_EQ(counted(cont, 0), 9U);
        told.clear();
        EXPECT_EQ(cont_free(cont, 0, 8), RIB_OK);
        EXPECT_EQ(told, "");
        EXPECT_EQ(counted(cont, 0), 8U);
        EXPECT_EQ(cont_free(cont, 0, 8), RIB_BAD_PARAMETERS);
        EXPECT_EQ(cont_free(cont, 1, 15), RIB_BAD_PARAMETERS);
        EXPECT_EQ(cont_free(cont, 1, 16), RIB_BAD_PARAMETERS);
        EXPECT_EQ(cont_free(cont, 2, 0), RIB_BAD_PARAMETERS);
        EXPECT_EQ(counted(cont, 0), 8U);
        cont_destroy(cont);
    }
}

TEST(contiguous, nothing_to_work_on) {
    uint32_t out = 77;
    struct cont *cont = two_segments(0);
    EXPECT_EQ(cont_alloc(cont, 0, nullptr), RIB_BAD_PARAMETERS);
    EXPECT_EQ(counted(cont, 0), 0U);
    EXPECT_EQ(cont_alloc(cont, 2, &out), RIB_BAD_PARAMETERS);
    EXPECT_EQ(out, 0xdeadbeef);
    out = 77;
    EXPECT_EQ(cont_alloc(nullptr, 0, &out), RIB_BAD_PARAMETERS);
    EXPECT_EQ(out, 0xdeadbeef);
    EXPECT_EQ(cont_free(nullptr, 0, 0), RIB_BAD_PARAMETERS);
    EXPECT_EQ(cont_count(nullptr, 0, &out), RIB_BAD_PARAMETERS);
    EXPECT_EQ(out, 0U);
    out = 77;
    EXPECT_EQ(cont_count(cont, 2, &out), RIB_BAD_PARAMETERS);
    EXPECT_EQ(out, 0U);
    EXPECT_EQ(cont_resize(nullptr, &out), RIB_BAD_PARAMETERS);
    uint8_t byte = 0;
    uint8_t *buffer = &byte;
    EXPECT_EQ(cont_serialize(nullptr, &buffer, &out), RIB_FAILED);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(cont_deserialize(nullptr, &byte, 12), RIB_FAILED);
    EXPECT_EQ(cont_deserialize(cont, nullptr, 12), RIB_FAILED);
    cont_destroy(cont);
}

TEST(contiguous, a_resize_stops_at_the_first_bad_size) {
    struct cont *cont = two_segments(0);
    const uint32_t sizes[] = {24, 23};
    const std::string printed = printed_by([&] { EXPECT_EQ(cont_resize(cont, sizes), RIB_BAD_PARAMETERS); });
    EXPECT_EQ(printed.substr(printed.rfind("Invalid")), "Invalid seg size 17 for seg 1 \n");
    EXPECT_EQ(image_of(cont), (words{64, 8, 2, 24, 0, 0, 24, 24, 24}));
    cont_destroy(cont);
}

TEST(contiguous, the_last_segment_keeps_its_size) {
    struct cont *cont = two_segments(0);
    const words before = image_of(cont);
    const uint32_t larger[] = {16, 40};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(cont_resize(cont, larger), RIB_FAILED); }),
              "Start of cont_mv_down() seg 1 n_block 1 \nError! cont_mv_down 1 n_block called for segment 1\n");
    const uint32_t smaller[] = {16, 24};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(cont_resize(cont, smaller), RIB_FAILED); }),
              "Start of cont_mv_up() seg 2 n_block 1 \n");
    EXPECT_EQ(image_of(cont), before);
    cont_destroy(cont);
}

TEST(contiguous, images) {
    struct cont *cont = two_segments(0);
    const words image = {80, 4, 2, 20, 0, 1, 24, 20, 22};
    EXPECT_EQ(restore(cont, image, 36), RIB_OK);
    EXPECT_EQ(image_of(cont), image);
    for (const uint32_t length : {0U, 12U, 25U, 35U, 37U}) {
        EXPECT_EQ(restore(cont, {81, 5, 2, 0, 0, 0, 0, 0, 0}, length), RIB_BAD_PARAMETERS);
        EXPECT_EQ(image_of(cont), (words{81, 5, 2, 20, 0, 1, 24, 20, 22}));
    }
    EXPECT_EQ(restore(cont, {64, 8, 0x40000000}, 12), RIB_BAD_PARAMETERS); // the size wraps to 12 in 32 bits
    uint32_t out = 77;
    EXPECT_EQ(cont_alloc(cont, 2, &out), RIB_BAD_PARAMETERS); // its records were never there
    uint8_t *buffer = nullptr;
    EXPECT_EQ(cont_serialize(cont, &buffer, &out), RIB_FAILED);
    EXPECT_EQ(restore(cont, {64, 8, 0}, 12), RIB_OK);
    EXPECT_EQ(image_of(cont), (words{64, 8, 0}));
    cont_destroy(cont);
}

TEST(contiguous, no_memory) {
    const struct cont_config config = {64, 8, 2};
    const uint32_t sizes[] = {16, 32};
    struct cont *cont = nullptr;
    uint32_t out = 77;
    uint32_t result = 0;
    uint8_t byte = 0;
    uint8_t *buffer = &byte;
    const auto failing = [](size_t nth, auto action) {
        const failing_allocation failure(nth);
        action();
    };
    failing(1, [&] { cont = cont_create(&config, sizes, move, mask, 1); });
    EXPECT_EQ(cont, nullptr);
    failing(2, [&] { cont = cont_create(&config, sizes, move, mask, 1); });
    ASSERT_NE(cont, nullptr);
    EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_BAD_PARAMETERS);
    EXPECT_EQ(image_of(cont), (words{0, 0, 0}));
    failing(1, [&] { result = cont_serialize(cont, &buffer, &out); });
    EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(out, 12U);
    const words image = {64, 8, 1, 8, 0, 3};
    EXPECT_EQ(restore(cont, image, 24), RIB_OK);
    EXPECT_EQ(counted(cont, 0), 3U);
    failing(1, [&] { result = restore(cont, image, 24); });
    EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    EXPECT_EQ(cont_count(cont, 0, &out), RIB_BAD_PARAMETERS);
    EXPECT_EQ(cont_resize(cont, sizes), RIB_OK);
    EXPECT_EQ(printed_by([&] { cont_show(cont); }),
              "\nTotal 64, block size 8, # segments 1\nSeg\tSize\tFirst\tFree\n---\t----\t-----\t----\n");
    cont_destroy(cont);
}

// The moves as they are described: each asks its neighbour's by calling it.
struct model {
    struct record {
        uint32_t size, first, free;
    };

    uint32_t total, block;
    bool movable;
    std::vector<record> seg;
    std::string printed;
    uint32_t masks_left = 0xffffffff;
    std::string calls;

    void show() {
        printed += text("\nTotal %u, block size %u, # segments %u\n", total, block, static_cast<uint32_t>(seg.size()));
        printed += "Seg\tSize\tFirst\tFree\n---\t----\t-----\t----\n";
        for (size_t i = 0; i < seg.size(); i++) {
            printed += text("%u\t%x\t%05x\t%05x\n", static_cast<uint32_t>(i), seg[i].size, seg[i].first, seg[i].free);
        }
    }

    uint32_t ask_mask(uint32_t s, uint32_t first, uint32_t count) {
        calls += text("mask %u %u %u\n", s, first, count);
        return masks_left-- == 0 ? 0xbad : 0;
    }

    uint32_t up(uint32_t s, uint32_t n) {
        printed += text("Start of cont_mv_up() seg %u n_block %u \n", s, n);
        if (s == 0) {
            printed += text("Error! cont_mv_up %u n_block called for segment 0\n", n);
            return RIB_FAILED;
        }
        if (s == seg.size()) {
            return RIB_FAILED;
        }
        const uint32_t there = (seg[s - 1].first + seg[s - 1].size - seg[s - 1].free) / block;
        if (n > there) {
            const uint32_t result = up(s - 1, n - there);
            if (result != 0) {
                return result;
            }
        }
        seg[s - 1].size -= n * block;
        if (const uint32_t r = ask_mask(s, seg[s].first - n * block, n * block); r != 0) {
            printed += text("cont_mv_up() error %x in mask_func for seg %u \n", r, s);
            return r;
        }
        if (const uint32_t m = std::min(n * block, seg[s].free - seg[s].first); m > 0) {
            calls += text("move %u %u %u\n", seg[s].first - n * block, seg[s].free - m, m);
        }
        seg[s] = {seg[s].size + n * block, seg[s].first - n * block, seg[s].free - n * block};
        show();
        printed += text("End of cont_mv_up() seg %u n_block %u \n", s, n);
        return 0;
    }

    uint32_t down(uint32_t s, uint32_t n) {
        printed += text("Start of cont_mv_down() seg %u n_block %u \n", s, n);
        if (s + 1 == seg.size()) {
            printed += text("Error! cont_mv_down %u n_block called for segment %u\n", n, s);
            return RIB_FAILED;
        }
        const uint32_t there = (seg[s + 1].first + seg[s + 1].size - seg[s + 1].free) / block;
        if (n > there) {
            const uint32_t result = down(s + 1, n - there);
            if (result != 0) {
                return result;
            }
        }
        record &next = seg[s + 1];
        const uint32_t used = next.free - next.first;
        const uint32_t nb = n * block;
        if (std::min(nb, used) > 0) {
            calls += text("move %u %u %u\n", used > nb ? next.free : next.first + nb, next.first, std::min(nb, used));
        }
        if (const uint32_t r = ask_mask(s, next.first, nb); r != 0) {
            printed += text("cont_mv_down() error %x in mask_func for seg %u \n", r, s);
            return r;
        }
        next = {next.size - nb, next.first + nb, next.free + nb};
        seg[s].size += nb;
        show();
        printed += text("End of cont_mv_down() seg %u n_block %u \n", s, n);
        return 0;
    }

    uint32_t alloc(uint32_t s, uint32_t *out) {
        *out = 0xdeadbeef;
        if (seg[s].free == seg[s].first + seg[s].size) {
            uint32_t result = movable ? up(s, 1) : RIB_FAILED;
            if (result != 0 && movable) {
                result = down(s, 1);
            }
            if (result != 0) {
                return result;
            }
        }
        *out = seg[s].free++;
        return 0;
    }

    uint32_t free(uint32_t s, uint32_t position) {
        if (position < seg[s].first || position >= seg[s].free) {
            return RIB_BAD_PARAMETERS;
        }
        seg[s].free--;
        if (position != seg[s].free) {
            calls += text("move %u %u 1\n", position, seg[s].free);
        }
        return 0;
    }

    uint32_t resize(const words &sizes) {
        for (uint32_t i = 0; i < seg.size(); i++) {
            if (sizes[i] % block != 0) {
                printed += text("Invalid seg size %x for seg %u \n", sizes[i], i);
                return RIB_BAD_PARAMETERS;
            }
            uint32_t result = 0;
            if (sizes[i] < seg[i].size) {
                result = up(i + 1, (seg[i].size - sizes[i]) / block);
            } else if (sizes[i] > seg[i].size) {
                result = down(i, (sizes[i] - seg[i].size) / block);
            }
            if (result != 0) {
                return result;
            }
        }
        return 0;
    }

    [[nodiscard]] words image() const {
        words all{total, block, static_cast<uint32_t>(seg.size())};
        for (const record &r : seg) {
            all.insert(all.end(), {r.size, r.first, r.free});
        }
        return all;
    }
};

void expect_sound(const struct cont &cont) {
    for (uint32_t i = 0; i < cont.segments; i++) {
        const ribkit::segment &s = cont.segment[i];
        ASSERT_LE(s.first, s.free);
        ASSERT_LE(s.free, s.first + s.size);
        ASSERT_EQ(s.size % cont.block_size, 0U);
        ASSERT_TRUE(i == 0 || cont.segment[i - 1].first + cont.segment[i - 1].size == s.first);
    }
}

// One random call on both; half of the sizes of a resize are moved between two segments, so that most are possible.
void random_step(struct cont *cont, model &expected, ribkit::random_words &random, uint32_t allocations) {
    const auto segments = static_cast<uint32_t>(expected.seg.size());
    const uint32_t s = random() % segments;
    uint32_t result = 0;
    uint32_t answer = 0;
    uint32_t out = 0;
    uint32_t position = 0;
    const uint32_t dice = random() % 1000;
    std::string printed;
    if (dice < allocations) {
        answer = expected.alloc(s, &position);
        const bool quiet = expected.printed.empty();
        const auto call = [&] { result = cont_alloc(cont, s, &out); };
        quiet ? call() : static_cast<void>(printed = printed_by(call));
        ASSERT_EQ(out, position);
    } else if (dice < 998) {
        position = expected.seg[s].first + random() % (expected.seg[s].free - expected.seg[s].first + 1);
        answer = expected.free(s, position);
        result = cont_free(cont, s, position);
    } else {
        words sizes;
        for (const model::record &r : expected.seg) {
            sizes.push_back(r.size);
        }
        const uint32_t moved = std::min(sizes[s], random() % 4 * expected.block);
        sizes[s] -= moved;
        sizes[random() % segments] += moved + (random() % 10 == 0 ? 1 : 0);
        answer = expected.resize(sizes);
        printed = printed_by([&] { result = cont_resize(cont, sizes.data()); });
    }
    ASSERT_EQ(result, answer);
    ASSERT_EQ(printed, expected.printed);
    ASSERT_EQ(told, expected.calls);
    expected.printed.clear();
    expected.calls.clear();
    told.clear();
}

void random_walk(uint32_t segments, uint32_t block, uint32_t steps, uint32_t seed, bool failing) {
    ribkit::random_words random(seed);
    model expected{0, block, true, {}, {}, 0xffffffff, {}};
    words sizes;
    for (uint32_t i = 0; i < segments; i++) {
        sizes.push_back(random() % 6 * block);
        expected.seg.push_back({sizes.back(), expected.total, expected.total});
        expected.total += sizes.back();
    }
    expected.total = std::max(expected.total, segments * block) + block;
    const struct cont_config config = {expected.total, block, segments};
    struct cont *cont = cont_create(&config, sizes.data(), move, mask, 1);
    told.clear();
    masks_before_failure = expected.masks_left = failing ? random() % 200 : 0xffffffff;
    for (uint32_t step = 0; step < steps; step++) {
        ASSERT_NO_FATAL_FAILURE(random_step(cont, expected, random, step / 500 % 4 == 0 ? 550 : 470)) << step;
        ASSERT_EQ(image_of(cont), expected.image()) << step;
        if (masks_before_failure > 0x80000000 && failing) {
            break; // the mask has failed: what follows is no longer laid out
        }
        ASSERT_NO_FATAL_FAILURE(expect_sound(*cont)) << step;
    }
    masks_before_failure = 0xffffffff;
    cont_destroy(cont);
}

TEST(contiguous, answers_as_described) {
    for (uint32_t segments = 1; segments <= 9; segments++) {
        for (const uint32_t block : {1U, 4U, 8U}) {
            ASSERT_NO_FATAL_FAILURE(random_walk(segments, block, RIBKIT_RANDOM_STEPS / 27, segments * block, false));
        }
    }
}

TEST(contiguous, answers_as_described_until_a_mask_fails) {
    for (uint32_t seed = 0; seed < 300; seed++) {
        ASSERT_NO_FATAL_FAILURE(random_walk(2 + seed % 5, 4, 5000, seed, true)) << seed;
    }
}

TEST(contiguous, a_long_chain_of_full_segments_needs_no_stack) {
    constexpr uint32_t segments = 100;
    const struct cont_config config = {segments + 1, 1, segments};
    words sizes(segments, 1);
    sizes.back() = 2;
    struct cont *cont = cont_create(&config, sizes.data(), nullptr, nullptr, 1);
    uint32_t out = 0;
    for (uint32_t i = 0; i < segments; i++) {
        ASSERT_EQ(cont_alloc(cont, i, &out), RIB_OK);
    }
    printed_by([&] { EXPECT_EQ(cont_alloc(cont, 0, &out), RIB_OK); });
    EXPECT_EQ(out, 1U);
    EXPECT_EQ(image_of(cont)[3], 2U);
    cont_destroy(cont);
}

} // namespace
