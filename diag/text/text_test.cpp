// Every vocabulary against texts typed by hand, in buffers that end where the text may.
#include "diag/catalogue.h"
#include "diag/text/expected_texts.h"
#include "testing/guarded.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

struct outcome {
    std::string text;
    uintptr_t result;
    const char *buffer;
};

/// Converts into a buffer that ends in an inaccessible page exactly where the text may end at the latest.
outcome convert(const vocabulary &words, uint32_t value, size_t room) {
    static guarded buffer{RIB_TEXT_SIZE};
    char *str = reinterpret_cast<char *>(buffer.data()) + RIB_TEXT_SIZE - room;
    std::fill(buffer.bytes().begin(), buffer.bytes().end(), uint8_t{0xa5});
    const uintptr_t result = words.converter(value, str);
    return {str, result, str};
}

const expected_texts *hand_typed(std::string_view name) {
    for (const expected_texts &table : all_expected_texts()) {
        if (table.name == name) {
            return &table;
        }
    }
    return nullptr;
}

bool returns_nothing(std::string_view name) { return name == "rib_uuid_to_proto"; }

void expect_text(const vocabulary &words, const expected_texts &table, uint32_t value) {
    const std::string text = table.of(value);
    const outcome got = convert(words, value, text.size() + 1);
    ASSERT_EQ(got.text, text) << words.name << " of " << value;
    if (!returns_nothing(words.name)) {
        const bool known = table.rows.count(value) != 0;
        ASSERT_EQ(got.result, known ? reinterpret_cast<uintptr_t>(got.buffer) : text.size()) << words.name << value;
    }
}

/// Values without a row: all bits and neighbours of the rows, and random ones.
std::set<uint32_t> strangers(const expected_texts &table) {
    std::set<uint32_t> values = {0, 1, 3, 0x7fffffff, 0x80000000, 0xffffffff, 0xfffffffe};
    for (int bit = 0; bit < 32; ++bit) {
        values.insert(uint32_t{1} << bit);
    }
    std::mt19937 random(51);
    for (const auto &[value, text] : table.rows) {
        values.insert({value - 1, value + 1, value | 0x80000000, value | value << 1, value << 16, ~value,
                       static_cast<uint32_t>(random())});
    }
    for (const auto &[value, text] : table.rows) {
        values.erase(value);
    }
    return values;
}

} // namespace

TEST(Text, EveryRowOfEveryVocabulary) {
    for (const expected_texts &table : all_expected_texts()) {
        const vocabulary *words = vocabulary_of(table.name);
        ASSERT_NE(words, nullptr) << table.name;
        for (const auto &[value, text] : table.rows) {
            if (table.name != "rib_pm_mode") {
                expect_text(*words, table, value);
            }
        }
    }
}

TEST(Text, EveryFallbackOfEveryVocabulary) {
    for (const expected_texts &table : all_expected_texts()) {
        for (const uint32_t value : strangers(table)) {
            expect_text(*vocabulary_of(table.name), table, value);
        }
    }
}

// A known text leaves every byte behind its terminator alone.
TEST(Text, TouchesNothingBehindTheText) {
    for (const expected_texts &table : all_expected_texts()) {
        for (const auto &[value, text] : table.rows) {
            char buffer[64];
            std::fill(std::begin(buffer), std::end(buffer), '#');
            vocabulary_of(table.name)->converter(value, buffer + 8);
            EXPECT_EQ(std::string(buffer, 8), "########");
            EXPECT_EQ(std::string(buffer + 8, text.size() + 1), std::string(text.c_str(), text.size() + 1));
            EXPECT_EQ(std::count(buffer + 9 + text.size(), buffer + 64, '#'), 55 - static_cast<long>(text.size()))
                << table.name << ' ' << text;
        }
    }
}

TEST(Text, TheSizeHoldsEveryText) {
    for (const expected_texts &table : all_expected_texts()) {
        EXPECT_LE(table.of(0xfffffff7).size() + 1, size_t{RIB_TEXT_SIZE}) << table.name;
        for (const auto &[value, text] : table.rows) {
            EXPECT_LE(text.size() + 1, size_t{RIB_TEXT_SIZE}) << text;
        }
    }
}

TEST(Text, RowCounts) {
    const auto count = [](std::string_view name) { return vocabulary_of(name)->rows.size(); };
    EXPECT_EQ(count("rib_rtn"), 22u);
    EXPECT_EQ(count("rib_uuid"), 22u);
    EXPECT_EQ(count("rib_fclrt_type"), 33u);
    for (const expected_texts &table : all_expected_texts()) {
        EXPECT_EQ(count(table.name), table.rows.size()) << table.name;
    }
}

// The catalogue is complete: every exported converter of a number is in it, and has a hand-typed list.
TEST(Text, CatalogueNamesEveryExportedConverter) {
    const std::set<std::string> of_records = {"rib_fclrt_ctrl", "rib_time", "rib_if_index", "fib_vsan"};
    const std::set<std::string> composed = {"rib_uuid_to_uc", "rib_fcurt_flag", "rib_pm_mode"};
    std::ifstream exports(RIBKIT_SOURCE_DIR "/exports.txt");
    size_t converters = 0;
    for (std::string line; std::getline(exports, line);) {
        const std::string name = line.substr(0, line.size() < 4 ? 0 : line.size() - 4);
        const std::string base =
            name.size() > 3 && name.substr(name.size() - 3) == "_to" ? name.substr(0, name.size() - 3) : name;
        if (line.size() < 8 || line.substr(line.size() - 4) != "_str" || name.find("_to") == std::string::npos ||
            of_records.count(base) != 0) {
            continue;
        }
        ++converters;
        ASSERT_NE(vocabulary_of(base), nullptr) << line;
        EXPECT_TRUE(composed.count(base) != 0 || hand_typed(base) != nullptr) << line;
    }
    EXPECT_EQ(converters, std::size(vocabularies));
    EXPECT_EQ(vocabulary_of("rib_nothing"), nullptr);
}

// What looks like a slip and is not.
TEST(Text, Traps) {
    const auto text = [](const char *name, uint32_t value) {
        return convert(*vocabulary_of(name), value, RIB_TEXT_SIZE).text;
    };
    EXPECT_EQ(text("rib_rtn", 1), "1h??") << "no library code without its base";
    EXPECT_EQ(text("rib_rtn", 0x40520000), "40520000h??");
    EXPECT_EQ(text("rib_rtn", 0x40520014), "40520014h??") << "numbers 20 to 27 have no text";
    EXPECT_EQ(text("rib_rtn", 0x4052001b), "4052001bh??");
    EXPECT_EQ(text("rib_rtn", 0x4052001d), "4052001dh??") << "numbers 29 to 32 have no text";
    EXPECT_EQ(text("rib_rtn", 0x40520020), "40520020h??");
    EXPECT_EQ(text("rib_rtn", 0x80520002), "80520002h??") << "failures of the platform have no text";
    EXPECT_EQ(text("rib_rtn", 0xffffffff), "ffffffffh??");
    EXPECT_EQ(text("rib_uuid", 66), "client 66??") << "the operator has no name";
    EXPECT_EQ(text("rib_uuid", 4294967295), "client 4294967295??");
    EXPECT_EQ(text("rib_uuid", 13), "fcmpls") << "as a client";
    EXPECT_EQ(text("rib_uuid_to_proto", 13), "fc-mpls") << "as a protocol";
    EXPECT_EQ(text("rib_uuid", 25), "Line card Manager") << "two spellings of card manager";
    EXPECT_EQ(text("rib_uuid", 41), "VSAN manager") << "two spellings of manager";
    EXPECT_EQ(text("rib_uuid_to_proto", 25), "unknown");
    EXPECT_EQ(text("rib_uuid_to_proto", 0), "unknown");
    EXPECT_EQ(text("rib_fclrt_type", 0x4f), "4fh??") << "matched queries know no all-labels";
    EXPECT_EQ(text("rib_fclrt_type", 0x40f), "40fh??");
    EXPECT_EQ(text("rib_fclrt_type", 0x1f), "query all-labels");
    EXPECT_EQ(text("fib_route_type", 0xf0000), "all-label") << "the modules' spelling";
    EXPECT_EQ(text("rib_query", 0x20), "20h??") << "a bit without a text";
    EXPECT_EQ(text("rib_oper", 0x800), "800h??") << "a bit without a text";
    EXPECT_EQ(text("rib_fcmrt_type", 0x80), "80h??") << "a bit without a text";
    EXPECT_EQ(text("rib_action", 0xc), "change flag and metric") << "the one combined value";
    EXPECT_EQ(text("rib_action", 0x3), "3h??");
    EXPECT_EQ(text("rib_sync", 3), "3h?? sync log");
    EXPECT_EQ(text("rib_mod_type", 3), "3h??") << "a hole in the numbers";
    EXPECT_EQ(text("rib_pm_layer", 7), "7h??");
    EXPECT_EQ(text("rib_pm_layer", 99), "unknown");
    EXPECT_EQ(text("rib_pm_state", 3), "3h??") << "values, not bits";
    EXPECT_EQ(text("rib_in", 0), "data 0h??");
    EXPECT_EQ(text("rib_verf", 0x30), "verify 30h??");
    EXPECT_EQ(text("fib_mod_type", 2), "FIB 2h??");
    EXPECT_EQ(text("fib_verf", 3), "3h??");
    EXPECT_EQ(text("fib_route_type", 0x30000), "30000h??");
    EXPECT_EQ(text("fib_d_idx", 5), "005");
    EXPECT_EQ(text("fib_d_idx", 0x1234), "1234");
    EXPECT_EQ(text("fib_d_idx", 0xffffffff), "ffffffff");
}
