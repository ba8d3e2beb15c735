// Hexadecimal text as people and programs write it, and the mistakes in it, by line.
#include "cli/messages/network_bytes.h"

#include "base/input_error.h"
#include "base/text.h"

#include <gtest/gtest.h>

namespace ribkit::cli {
namespace {

using bytes = std::vector<uint8_t>;

bytes hex(std::string_view text) { return network_bytes(text, byte_form::hex); }

/// "LINE: what is wrong"
std::string mistake(std::string_view text) {
    try {
        hex(text);
        return "none";
    } catch (const base::line_error &error) {
        return base::joined(error.line, ": ", error.what());
    }
}

TEST(network_bytes, numbers_are_whole_bytes_however_they_are_written) {
    const bytes expected{0x01, 0x02, 0xab, 0xcd};
    for (const char *text : {"0102abcd", "01 02 AB CD", "0x0102 0XabCD", "\t0102\r\nabcd\r\n", " 01 # one\n#\n02abcd#",
                             "0102abcd\n\n", "0102\v\fabcd"}) {
        EXPECT_EQ(hex(text), expected) << text;
        EXPECT_EQ(network_bytes(text, byte_form::detected), expected) << text;
    }
    EXPECT_EQ(hex(""), bytes{});
    EXPECT_EQ(hex("\n# only this"), bytes{});
}

TEST(network_bytes, a_number_may_be_repeated) {
    EXPECT_EQ(hex("0a*3 0b"), (bytes{10, 10, 10, 11}));
    EXPECT_EQ(hex("0x0102*2"), (bytes{1, 2, 1, 2}));
    EXPECT_EQ(hex("00*1048576").size(), 1048576);
}

TEST(network_bytes, a_dump_is_read_without_its_offsets_and_characters) {
    EXPECT_EQ(hex("00000000: 0102 abcd  ..#1\n00000004: ff       .\n"), (bytes{1, 2, 0xab, 0xcd, 0xff}));
    EXPECT_EQ(hex("10:01"), bytes{1});
    EXPECT_EQ(hex("10:"), bytes{});
    EXPECT_EQ(hex("01 # 02: 03"), bytes{1}) << "an offset comes first";
}

TEST(network_bytes, mistakes_name_their_line) {
    EXPECT_EQ(mistake("01\n\n # 02\n030"), "4: \"030\" has an odd number of digits");
    EXPECT_EQ(mistake("0x1"), "1: \"0x1\" has an odd number of digits");
    EXPECT_EQ(mistake("00\n0g"), "2: \"0g\" is no hexadecimal number");
    for (const char *number : {"0x", "x00", "00*", "00*0", "00*-1", "00*1x", "00*1048577", "00*99999999999", "*2",
                               "00*2*2", "00,", "\xe4"}) {
        EXPECT_EQ(mistake(number), base::joined("1: \"", base::printable(number), "\" is no hexadecimal number"));
    }
}

TEST(network_bytes, have_a_limit_that_a_short_line_does_not_pass) {
    std::string line = "00\n01";
    for (int i = 0; i < 1000; i++) {
        line += " 00*1048576";
    }
    EXPECT_EQ(mistake(line), "2: more than 67108864 bytes");
    const std::string number(4096, '0');
    EXPECT_EQ(mistake(number + "*1048576"), "1: more than 67108864 bytes");
    EXPECT_EQ(mistake(number + "*32767 00*2049"), "1: more than 67108864 bytes");
    EXPECT_EQ(hex(number + "*32767 00*2048").size(), size_t{64} << 20);
}

TEST(network_bytes, a_mistake_of_any_length_is_told_shortly) {
    const std::string told = mistake(std::string(10 << 20, '0') + "x");
    EXPECT_LT(told.size(), 300U);
    EXPECT_EQ(told.substr(0, 8), "1: \"0000");
    EXPECT_EQ(told.substr(told.size() - 30), "000x\" is no hexadecimal number");
}

TEST(network_bytes, control_characters_are_no_text) {
    using namespace std::string_view_literals;
    EXPECT_EQ(network_bytes("00\0"sv, byte_form::detected), (bytes{'0', '0', 0}));
    EXPECT_EQ(network_bytes("00\x0e"sv, byte_form::detected), (bytes{'0', '0', 14}));
    EXPECT_EQ(network_bytes("00\x7f"sv, byte_form::detected), (bytes{'0', '0', 127}));
    EXPECT_EQ(network_bytes("0000"sv, byte_form::raw), (bytes{'0', '0', '0', '0'}));
    EXPECT_THROW(network_bytes("00\0"sv, byte_form::hex), base::line_error);
    EXPECT_THROW(network_bytes("\xff\xff"sv, byte_form::detected), base::line_error) << "could be letters of a comment";
}

} // namespace
} // namespace ribkit::cli
