// What passes to a terminal and what is escaped, at each border of the ranges.
#include "base/printable.h"

#include <gtest/gtest.h>

namespace ribkit::base {

using namespace std::string_view_literals;

TEST(printable, letters_of_every_language_pass) {
    for (const std::string_view text :
         {"fabric-1", "Gebäude Süd", "東京", "الرياض", "Ελλάδα", "🧀", " ~", "\u00a0\u2029\u202f\u2065\u206a"}) {
        EXPECT_EQ(printable(text), text);
        EXPECT_EQ(printable_lines(text), text);
    }
}

TEST(printable, control_characters_are_escaped) {
    EXPECT_EQ(printable("\0\x1b[2J\x1f \x7f"sv), "\\x00\\x1b[2J\\x1f \\x7f");
    EXPECT_EQ(printable("a\tb\nc\r"), "a\\x09b\\x0ac\\x0d");
    EXPECT_EQ(printable_lines("a\tb\nc\r"), "a\tb\nc\\x0d");
    EXPECT_EQ(printable("\u0080 \u009b31m \u009f"), "\\u0080 \\u009b31m \\u009f");
}

TEST(printable, what_turns_the_direction_of_writing_is_escaped) {
    // NOLINTBEGIN(misc-misleading-bidirectional)
    EXPECT_EQ(printable("\u202a\u202b\u202c\u202d\u202e"), "\\u202a\\u202b\\u202c\\u202d\\u202e");
    EXPECT_EQ(printable("\u2066\u2067\u2068\u2069"), "\\u2066\\u2067\\u2068\\u2069");
    // NOLINTEND(misc-misleading-bidirectional)
}

TEST(printable, bytes_that_are_no_utf_8_are_escaped) {
    EXPECT_EQ(printable("\x80 \xbf \xff \xfe"), "\\x80 \\xbf \\xff \\xfe");
    EXPECT_EQ(printable("\xc3"), "\\xc3") << "the rest is missing";
    EXPECT_EQ(printable("\xe6\x9d+"), "\\xe6\\x9d+");
    EXPECT_EQ(printable("\xc0\xaf \xc1\xbf"), "\\xc0\\xaf \\xc1\\xbf") << "longer than they need to be";
    EXPECT_EQ(printable("\xe0\x82\x9b"), "\\xe0\\x82\\x9b");
    EXPECT_EQ(printable("\xf0\x80\x82\x9b"), "\\xf0\\x80\\x82\\x9b");
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "half a pair";
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "behind the last character";
    EXPECT_EQ(printable("\xf4\x8f\xbf\xbf"), "\xf4\x8f\xbf\xbf");
}

TEST(one_line, is_short_and_cuts_no_character) {
    EXPECT_EQ(one_line("as it is"), "as it is");
    EXPECT_EQ(one_line(std::string(200, 'a')), std::string(200, 'a'));
    EXPECT_EQ(one_line(std::string("\"") + std::string(10 << 20, '7') + "\" is no number"),
              std::string("\"") + std::string(65, '7') + "..." + std::string(49, '7') + "\" is no number");
    for (const std::string &letter : {std::string("\u00e4"), std::string("\u6771"), std::string("\U0001f9c0")}) {
        std::string word;
        while (word.size() < 1000) {
            word += letter;
        }
        for (size_t shift = 0; shift < 4; shift++) {
            const std::string cut = one_line(std::string(shift, 'x') + word + "yz");
            EXPECT_EQ(cut.find('\\'), std::string::npos) << "half a character would be escaped: " << cut;
            EXPECT_NE(cut.find("..."), std::string::npos);
        }
    }
    std::string words;
    while (words.size() < 100000) {
        words += "word ";
    }
    EXPECT_LT(one_line(words).size(), 1000U);
    EXPECT_EQ(one_line(std::string(10 << 20, '\n')).size(), (66 + 50) * 4 + 3U);
    EXPECT_EQ(one_line(std::string(1000, '\x80')), "...") << "no character begins there";
}

} // namespace ribkit::base
