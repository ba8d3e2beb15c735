// Saved images that somebody may have damaged: what is accepted restores, and what is refused is named.
#include "mem/random_words.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_mem.h"
#include "testing/capture.h"
#include "testing/guarded.h"
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using ribkit::mem::random_words;
using ribkit::testing::guarded;
using ribkit::testing::printed_by;

namespace {

using bytes = std::vector<uint8_t>;
using check = uint32_t (*)(const void *, uint32_t, struct rib_check_report *);

std::string line(const struct rib_check_report &report) {
    char text[200] = "";
    const int length = rib_check_report_str(&report, text, sizeof text);
    EXPECT_EQ(static_cast<size_t>(length), std::string(text).size());
    return text;
}

void put(bytes &image, size_t at, uint32_t word) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        image[at++] = static_cast<uint8_t>(word >> shift);
    }
}

// Written out in network order: 64 units, 32 carved, free (13 at 3), (14 at 18), used (3 at 0), (2 at 16).
bytes golden_bud() {
    bytes image(140 + 16);
    put(image, 0, 64);
    put(image, 4, 32);
    put(image, 8, 32);
    put(image, 12 + 12 * 4, 1);
    put(image, 12 + 13 * 4, 1);
    put(image, 76 + 1 * 4, 1);
    put(image, 76 + 2 * 4, 1);
    put(image, 140, 3);
    put(image, 144, 18);
    put(image, 148, 16);
    put(image, 152, 0);
    return image;
}

bytes golden_cont() {
    bytes image(36);
    const uint32_t words[] = {64, 8, 2, 16, 0, 5, 32, 16, 0x12345678};
    for (size_t i = 0; i < 9; i++) {
        put(image, i * 4, words[i]);
    }
    return image;
}

TEST(image_check, reports_in_one_line) {
    const struct rib_check_report report = {"bud image", "free count", 12, 9, 4, RIB_CHECK_COUNT};
    const std::string expected = "bud image: free count at offset 12 is 9, at most 4 allowed";
    EXPECT_EQ(line(report), expected);
    char text[12];
    std::fill_n(text, sizeof text, 'x');
    EXPECT_EQ(static_cast<size_t>(rib_check_report_str(&report, text, 10)), expected.size());
    EXPECT_EQ(std::string(text), "bud image");
    EXPECT_EQ(text[10], 'x');
    EXPECT_EQ(static_cast<size_t>(rib_check_report_str(&report, nullptr, 0)), expected.size());
}

// Accepts the whole image and nothing shorter or longer, without looking past the end.
void expect_exact(check function, const bytes &image) {
    struct rib_check_report untouched = {"none", "none", 1, 2, 3, RIB_CHECK_COUNT};
    EXPECT_EQ(function(guarded(image).data(), static_cast<uint32_t>(image.size()), &untouched), RIB_OK);
    EXPECT_EQ(line(untouched), "none: none at offset 1 is 2, at most 3 allowed");
    for (size_t size = 0; size < image.size(); size++) {
        const guarded cut(std::span<const uint8_t>(image).first(size));
        struct rib_check_report report = {};
        ASSERT_EQ(function(cut.data(), static_cast<uint32_t>(size), &report), RIB_BAD_PARAMETERS) << size;
        ASSERT_GT(report.found, report.allowed) << size;
        ASSERT_EQ(function(cut.data(), static_cast<uint32_t>(size), nullptr), RIB_BAD_PARAMETERS);
    }
    for (size_t more = 1; more < 20; more++) {
        bytes longer = image;
        longer.resize(image.size() + more);
        struct rib_check_report report = {};
        ASSERT_EQ(function(guarded(longer).data(), static_cast<uint32_t>(longer.size()), &report), RIB_EXCESS_DATA);
        ASSERT_EQ(report.rule, RIB_CHECK_EXCESS);
        ASSERT_EQ(report.allowed, image.size());
        ASSERT_EQ(report.found, image.size() + more);
        ASSERT_EQ(function(longer.data(), static_cast<uint32_t>(longer.size()), nullptr), RIB_EXCESS_DATA);
    }
}

TEST(image_check, every_length_of_an_image) {
    ASSERT_NO_FATAL_FAILURE(expect_exact(bud_check_image, golden_bud()));
    ASSERT_NO_FATAL_FAILURE(expect_exact(bud_check_image, bytes(140)));
    ASSERT_NO_FATAL_FAILURE(expect_exact(cont_check_image, golden_cont()));
    ASSERT_NO_FATAL_FAILURE(expect_exact(cont_check_image, bytes(12)));
}

TEST(image_check, says_which_count_is_too_large) {
    struct rib_check_report report = {};
    for (size_t list = 0; list < 32; list++) {
        for (const uint32_t count : {UINT32_C(0xffffffff), UINT32_C(0x40000000), UINT32_C(5)}) {
            bytes image = golden_bud();
            put(image, 12 + list * 4, count);
            ASSERT_EQ(bud_check_image(image.data(), 156, &report), RIB_BAD_PARAMETERS);
        }
    }
    bytes image = golden_bud();
    put(image, 76, 9);
    EXPECT_EQ(bud_check_image(image.data(), 156, &report), RIB_BAD_PARAMETERS);
    EXPECT_EQ(line(report), "bud image: used count at offset 76 is 9, at most 2 allowed");
    EXPECT_EQ(bud_check_image(image.data(), 139, &report), RIB_BAD_PARAMETERS);
    EXPECT_EQ(line(report), "bud image: fixed part at offset 0 ends at 140, but the bytes end at 139");
    image = golden_cont();
    for (const uint32_t count : {UINT32_C(0xffffffff), UINT32_C(0x40000000), UINT32_C(3)}) {
        put(image, 8, count);
        EXPECT_EQ(cont_check_image(image.data(), 36, &report), RIB_BAD_PARAMETERS);
    }
    EXPECT_EQ(line(report), "cont image: segments at offset 8 is 3, at most 2 allowed");
    put(image, 8, 1);
    EXPECT_EQ(cont_check_image(image.data(), 36, &report), RIB_EXCESS_DATA);
    EXPECT_EQ(line(report), "cont image: ends at 24, but the bytes end at 36");
}

using convert = uint32_t (*)(const void *, void *);

void expect_round_trip(convert hton, convert ntoh, const bytes &network) {
    const guarded from(network);
    const guarded host(network.size());
    EXPECT_EQ(ntoh(from.data(), host.data()), network.size());
    uint32_t first = 0;
    std::copy_n(host.data(), 4, reinterpret_cast<uint8_t *>(&first));
    EXPECT_EQ(first, 64U);
    const guarded back(network.size());
    EXPECT_EQ(hton(host.data(), back.data()), network.size());
    EXPECT_TRUE(std::equal(network.begin(), network.end(), back.data()));
    EXPECT_EQ(hton(host.data(), host.data()), network.size());
    EXPECT_TRUE(std::equal(network.begin(), network.end(), host.data()));
}

TEST(image_check, conversion_pairs) {
    expect_round_trip(bud_image_hton, bud_image_ntoh, golden_bud());
    expect_round_trip(cont_image_hton, cont_image_ntoh, golden_cont());
}

TEST(image_check, an_image_of_the_switch_loads_here) {
    bytes image = golden_bud();
    struct bud *bud = bud_create(1);
    EXPECT_EQ(bud_image_ntoh(image.data(), image.data()), 156U);
    EXPECT_EQ(bud_deserialize(bud, image.data()), RIB_OK);
    EXPECT_EQ(bud_free(bud, 3, 0), RIB_OK);
    uint32_t index = 0;
    EXPECT_EQ(bud_alloc(bud, 14, &index), RIB_OK);
    EXPECT_EQ(index, 18U);
    bud_destroy(bud);
}

// What a check accepts, everything else handles: any indices, any records.
TEST(image_check, accepted_images_are_safe) {
    random_words random(47);
    for (uint32_t round = 0; round < RIBKIT_RANDOM_STEPS / 500; round++) {
        bytes image(140 + size_t{random() % 20} * 4);
        for (size_t i = 140; i < image.size(); i += 4) {
            put(image, i, random() % 4 == 0 ? random() : random() % 100);
            image[12 + size_t{random() % 32} * 4 + 3]++;
        }
        put(image, size_t{4} * (random() % 3), random() % 2 != 0 ? random() : random() % 100);
        const guarded exact(image);
        ASSERT_EQ(bud_check_image(exact.data(), static_cast<uint32_t>(image.size()), nullptr), RIB_OK);
        ASSERT_EQ(bud_image_ntoh(exact.data(), exact.data()), image.size());
        struct bud *bud = bud_create(100);
        ASSERT_EQ(bud_deserialize(bud, exact.data()), RIB_OK);
        for (uint32_t step = 0; step < 30; step++) {
            uint32_t index = 0;
            bud_alloc(bud, random() % 17, &index);
            bud_free(bud, random() % 17, random() % 100);
        }
        bud_destroy(bud);
    }
}

TEST(image_check, accepted_segments_are_safe) {
    random_words random(48);
    for (uint32_t round = 0; round < RIBKIT_RANDOM_STEPS / 2000; round++) {
        const uint32_t segments = random() % 5;
        bytes image(size_t{12} * (segments + 1));
        for (size_t i = 0; i < image.size(); i += 4) {
            put(image, i, random() % 4 == 0 ? random() : random() % 10);
        }
        put(image, 8, segments);
        const guarded exact(image);
        ASSERT_EQ(cont_check_image(exact.data(), static_cast<uint32_t>(image.size()), nullptr), RIB_OK);
        ASSERT_EQ(cont_image_ntoh(exact.data(), exact.data()), image.size());
        const struct cont_config config = {64, 8, 0};
        struct cont *cont = cont_create(&config, nullptr, nullptr, nullptr, 1);
        ASSERT_EQ(cont_deserialize(cont, exact.data(), static_cast<uint32_t>(image.size())), RIB_OK);
        printed_by([&] {
            for (uint32_t step = 0; step < 30; step++) {
                uint32_t position = 0;
                cont_alloc(cont, random() % 5, &position);
                cont_free(cont, random() % 5, random() % 10);
                const uint32_t sizes[] = {random() % 10, random() % 10, random(), random() % 10, random() % 10};
                cont_resize(cont, sizes);
            }
            cont_show(cont);
        });
        cont_destroy(cont);
    }
}

} // namespace
