// The checks on buffers that end at an inaccessible page, for every length of a small envelope.
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/guarded.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using ribkit::testing::guarded;
using check = uint32_t (*)(const void *, uint32_t, rib_check_report *);

std::string said(check function, uint32_t size, uint32_t length) {
    const guarded bytes{size};
    if (size >= 8) {
        for (uint32_t byte = 0; byte < 4; ++byte) {
            bytes.data()[4 + byte] = static_cast<uint8_t>(length >> (24 - 8 * byte));
        }
    }
    rib_check_report report{"untouched", "", 0, 0, 0, RIB_CHECK_COUNT};
    const uint32_t code = function(bytes.data(), size, &report);
    EXPECT_EQ(function(bytes.data(), size, nullptr), code);
    if (code == RIB_OK) {
        return report.message == std::string{"untouched"} ? "ok" : "ok, but reported";
    }
    char line[160];
    rib_check_report_str(&report, line, sizeof line);
    return (code == RIB_BAD_PARAMETERS ? "bad " : code == RIB_EXCESS_DATA ? "excess " : "?? ") + std::string{line};
}

TEST(cmi_check, tells_what_is_wrong) {
    EXPECT_EQ(said(rib_check_cmi_request, 116, 4), "ok");
    EXPECT_EQ(said(rib_check_cmi_answer, 112, 0), "ok");
    EXPECT_EQ(said(rib_check_cmi_request, 115, 3),
              "bad cmi request: fixed part at offset 0 ends at 116, but the bytes end at 115");
    EXPECT_EQ(said(rib_check_cmi_answer, 0, 0),
              "bad cmi answer: fixed part at offset 0 ends at 112, but the bytes end at 0");
    EXPECT_EQ(said(rib_check_cmi_request, 120, 9), "bad cmi request: length at offset 4 is 9, at most 8 allowed");
    EXPECT_EQ(said(rib_check_cmi_answer, 120, 7), "excess cmi answer: ends at 119, but the bytes end at 120");
    EXPECT_EQ(said(rib_check_cmi_request, 116, 0), "excess cmi request: ends at 112, but the bytes end at 116");
}

TEST(cmi_check, an_excess_is_reported_where_it_begins) {
    const guarded bytes{120};
    std::memset(bytes.data(), 0, 120);
    bytes.data()[7] = 5;
    rib_check_report report{};
    EXPECT_EQ(rib_check_cmi_request(bytes.data(), 120, &report), RIB_EXCESS_DATA);
    EXPECT_EQ(report.offset, 117U);
}

std::string model(uint32_t size, uint32_t length, uint32_t smallest) {
    if (size < smallest || uint64_t{length} + 112 > size) {
        return "bad";
    }
    return uint64_t{length} + 112 < size ? "excess" : "ok";
}

TEST(cmi_check, as_the_model) {
    std::mt19937 random{5};
    for (uint32_t size = 0; size < 140; ++size) {
        for (int step = 0; step < 20; ++step) {
            const uint32_t length = step < 12 ? size - 112 + static_cast<uint32_t>(step) - 6 : random();
            const auto first_word = [&](check function) {
                const std::string text = said(function, size, length);
                return text.substr(0, text.find(' '));
            };
            ASSERT_EQ(first_word(rib_check_cmi_request), model(size, length, 116)) << size << " " << length;
            ASSERT_EQ(first_word(rib_check_cmi_answer), model(size, length, 112)) << size << " " << length;
        }
    }
}

} // namespace
