// Contiguous segments on cases small enough to be followed by hand: layout, moves, masks, images.
#include "mem/contiguous/contiguous_rig.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <array>
#include <cstdlib>

using namespace ribkit::mem;
using namespace ribkit::testing;

namespace {

struct cont *two_segments(uint32_t moves_allowed, cont_move_func move_func = move, cont_mask_func mask_func = mask) {
    const struct cont_config config = {64, 8, 2};
    const uint32_t sizes[] = {16, 32};
    told.clear();
    return cont_create(&config, sizes, move_func, mask_func, moves_allowed);
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

TEST(contiguous, as_many_segments_as_positions_hold_together) {
    const struct cont_config config = {2, 1, 2};
    const uint32_t sizes[] = {1, 1};
    struct cont *cont = cont_create(&config, sizes, move, mask, 0);
    ASSERT_NE(cont, nullptr);
    EXPECT_EQ(image_of(cont), (words{2, 1, 2, 1, 0, 0, 1, 1, 1}));
    cont_destroy(cont);
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

TEST(contiguous, a_gap_that_a_failing_mask_left_stays) {
    struct cont *cont = two_segments(0);
    const auto resized = [cont](words sizes, uint32_t masks) {
        uint32_t result = 0;
        masks_before_failure = masks;
        told.clear();
        printed_by([&] { result = cont_resize(cont, sizes.data()); });
        masks_before_failure = 0xffffffff;
        return result;
    };
    EXPECT_EQ(resized({8, 40}, 0), 0xbadU);
    EXPECT_EQ(told, "mask 1 8 8\n");
    EXPECT_EQ(image_of(cont), (words{64, 8, 2, 8, 0, 0, 32, 16, 16}));
    EXPECT_EQ(resized({0, 40}, 9), RIB_OK);
    EXPECT_EQ(told, "mask 1 8 8\n"); // in front of what the segment has, not behind what its neighbour has
    EXPECT_EQ(image_of(cont), (words{64, 8, 2, 0, 0, 0, 40, 8, 8}));
    EXPECT_EQ(resized({8, 32}, 9), RIB_OK);
    EXPECT_EQ(told, "mask 0 8 8\n");
    EXPECT_EQ(image_of(cont), (words{64, 8, 2, 8, 0, 0, 32, 16, 16}));
    cont_destroy(cont);
}

TEST(contiguous, quiet_suppresses_what_moves_print_until_it_is_taken_back) {
    struct cont *cont = two_segments(0);
    const uint32_t wider[] = {24, 24};
    const uint32_t odd[] = {23, 24};
    const uint32_t last[] = {24, 32};
    const uint32_t before[] = {16, 32};
    cont_quiet(nullptr, 1);
    cont_quiet(cont, 1);
    EXPECT_EQ(printed_by([&] {
                  EXPECT_EQ(cont_resize(cont, wider), RIB_OK);
                  EXPECT_EQ(cont_resize(cont, last), RIB_FAILED); // it has nobody to take from
                  EXPECT_EQ(cont_resize(cont, odd), RIB_BAD_PARAMETERS);
                  EXPECT_EQ(restore(cont, image_of(cont), 36), RIB_OK);
                  masks_before_failure = 0;
                  EXPECT_EQ(cont_resize(cont, before), 0xbadU);
                  masks_before_failure = 0xffffffff;
              }),
              "");
    EXPECT_NE(printed_by([&] { cont_show(cont); }), "");
    cont_quiet(cont, 0);
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(cont_resize(cont, odd), RIB_BAD_PARAMETERS); }),
              "Invalid seg size 17 for seg 0 \n");
    cont_destroy(cont);
}

TEST(contiguous, a_count_is_refused_from_the_number_of_segments_on) {
    struct cont *cont = two_segments(0);
    const words image = {80, 4, 3, 20, 0, 1, 24, 20, 22, 4, 44, 44};
    EXPECT_EQ(restore(cont, image, 48), RIB_OK);
    uint32_t segments = 0;
    for (uint32_t used = 0; cont_count(cont, segments, &used) == RIB_OK;) {
        segments++;
    }
    EXPECT_EQ(segments, 3U);
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

TEST(contiguous, a_refused_image_leaves_the_segments_that_it_names) {
    const cont_config config{12, 4, 3};
    const uint32_t sizes[] = {4, 4, 4};
    struct cont *cont = cont_create(&config, sizes, nullptr, nullptr, 0);
    const words fewer = {12, 4, 1};
    EXPECT_EQ(cont_deserialize(cont, reinterpret_cast<const uint8_t *>(fewer.data()), 12), RIB_BAD_PARAMETERS);
    uint32_t count = 0;
    EXPECT_EQ(cont_count(cont, 0, &count), RIB_OK);
    EXPECT_EQ(cont_count(cont, 1, &count), RIB_BAD_PARAMETERS);
    cont_destroy(cont);
}

TEST(contiguous, gives_back_all_memory) {
    const size_t before = blocks_kept();
    const failing_allocation none_fails(SIZE_MAX);
    struct cont *cont = two_segments(0);
    uint8_t *image = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(cont_serialize(cont, &image, &length), RIB_OK);
    EXPECT_EQ(cont_deserialize(cont, image, length), RIB_OK);
    std::free(image);
    cont_destroy(cont);
    EXPECT_EQ(blocks_kept(), before);
}

} // namespace
