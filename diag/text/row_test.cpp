// Rows beside printf: the same format, the same characters.
#include "diag/print.h"
#include "testing/capture.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace ribkit::diag;
using ribkit::testing::printed_by;

namespace {

template <row_format Format, typename... Values> std::string row(Values... values) {
    char text[1024];
    return {text, put_row<Format>(text, values...)};
}

template <typename... Values> std::string printf_row(const char *format, Values... values) {
    char text[1024];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// Numbers around every length, decimal and hexadecimal, and random ones.
std::vector<uint32_t> numbers() {
    std::vector<uint32_t> all = {0, 0x7fffffff, 0x80000000, 0xffffffff};
    for (const uint32_t base : {10U, 16U}) {
        for (uint64_t power = 1; power <= 0xffffffff; power *= base) {
            all.insert(all.end(), {static_cast<uint32_t>(power) - 1, static_cast<uint32_t>(power)});
        }
    }
    std::mt19937 random(57);
    for (int i = 0; i < 50; ++i) {
        all.push_back(static_cast<uint32_t>(random()) >> random() % 32);
    }
    return all;
}

template <row_format Format> void expect_as_printf() {
    for (const uint32_t number : numbers()) {
        EXPECT_EQ(row<Format>(number), printf_row(Format.text, number)) << Format.text;
    }
}

template <row_format... Formats> void expect_all_as_printf() { (expect_as_printf<Formats>(), ...); }

} // namespace

TEST(Row, NumbersStandAsPrintfPutsThem) {
    expect_all_as_printf<"%u", "%x", "%4u|", "%-4u|", "%04u|", "%8u|", "%-8x|", "%-13u|", "%-35u|", "%35u|", "%02x",
                         "%06x", "%08x", "%010x", "<%3x>", "%-1u", "%1x">();
}

TEST(Row, TextStandsAroundValues) {
    EXPECT_EQ(row<"">(), "");
    EXPECT_EQ(row<"no value\n">(), "no value\n");
    EXPECT_EQ(row<"%u%u%u">(1U, 2U, 3U), "123");
    EXPECT_EQ(row<"a %u b %-3x| c %s\n">(1U, 0xfU, truth{true}), "a 1 b f  | c T\n");
    EXPECT_EQ(row<"%s%s">(truth{false}, truth{true}), "FT");
}

TEST(Row, TextsAreCutAndPaddedInTheirPlace) {
    EXPECT_EQ(row<"<%s>">(text(rib_uuid_to_str, 28U)), "<Port Channel Manager>");
    EXPECT_EQ(row<"<%s>">(text(rib_uuid_to_str, 28U, 10)), "<Port Chann>");
    EXPECT_EQ(row<"<%s>">(text(rib_uuid_to_str, 10U, 10)), "<rib       >");
    EXPECT_EQ(row<"<%s%s>">(text(rib_uuid_to_str, 10U, 4), text(rib_uuid_to_str, 12U, 0)), "<rib >");
}

TEST(Row, InterfaceNamesMayHave127Characters) {
    static_assert(text_room == 127 + 1);
    const std::string name(127, 'x');
    const auto longest = [](const std::string *value, char *str) { std::strcpy(str, value->c_str()); };
    void (*convert)(const std::string *, char *) = longest;
    EXPECT_EQ(printed_by([&] { print_row<"%s">(text(convert, &name)); }), name);
    EXPECT_EQ(printed_by([&] { print_row<"%s %s">(text(convert, &name), text(convert, &name)); }), name + " " + name);
}
