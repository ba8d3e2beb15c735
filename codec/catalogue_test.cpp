// The catalogue is complete, its layouts change on purpose only, and the offset manual is what the layouts say.
#include "codec/catalogue.h"

#include "codec/manual.h"
#include "testing/golden.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

using namespace ribkit;
using ribkit::testing::expect_golden;
using ribkit::testing::file_content;

std::string exported_name(const message &m, const char *direction) {
    return std::string(m.prefix) + "_" + direction + "_" + m.name;
}

TEST(catalogue, has_a_row_for_every_exported_converter) {
    std::set<std::string> rows;
    for (const message &m : catalogue()) {
        rows.insert(exported_name(m, "hton"));
        rows.insert(exported_name(m, "ntoh"));
    }
    std::set<std::string> converters;
    std::istringstream exports(file_content("exports.txt"));
    for (std::string name; std::getline(exports, name);) {
        const bool converts = name.find("_hton_") != std::string::npos || name.find("_ntoh_") != std::string::npos;
        if (converts && name.find("_get_") == std::string::npos) {
            converters.insert(name);
        }
    }
    EXPECT_EQ(rows, converters);
}

TEST(catalogue, finds_messages_with_and_without_prefix) {
    EXPECT_STREQ(find_message("rib_fcurt")->wire->name, "fcurt");
    EXPECT_STREQ(find_message("fcurt")->wire->name, "fcurt");
    EXPECT_STREQ(find_message("rib_fib_fcu_lb_rsp")->wire->name, "fcu_lb_rsp");
    EXPECT_EQ(find_message("fib_fcurt"), nullptr);
    EXPECT_EQ(find_message("rib_"), nullptr);
    EXPECT_EQ(find_message(""), nullptr);
}

TEST(catalogue, layouts_change_on_purpose_only) {
    std::string lines;
    for (const message &m : catalogue()) {
        char line[80];
        std::snprintf(line, sizeof line, "%s_%s %08x\n", m.prefix, m.name, fingerprint(*m.wire));
        lines += line;
    }
    expect_golden("codec/fingerprints.txt", lines);
}

TEST(catalogue, fingerprint_tells_every_part_of_a_row) {
    static constexpr layout entry{"entry", 4, {word(0, "a")}};
    static constexpr layout other_entry{"entry", 4, {word(0, "b")}};
    static constexpr layout plain{"l", 8, {word(0, "n"), word(4, "x")}};
    static constexpr layout renamed{"l", 8, {word(0, "n"), word(4, "y")}};
    static constexpr layout carried{"l", 8, {word(0, "n"), bytes(4, 4, "x")}};
    static constexpr layout meant{"l", 8, {word(0, "n"), word(4, "x", meaning::label)}};
    static constexpr layout one{"l", 8, {word(0, "n"), list(4, "x", in::word(0), entry, 4, 1)}};
    static constexpr layout other{"l", 8, {word(0, "n"), list(4, "x", in::word(0), other_entry, 4, 1)}};
    static constexpr layout second{"l", 8, {word(0, "n"), list(4, "x", in::second_byte(0), entry, 4, 1)}};
    std::set<uint32_t> digests;
    for (const layout *l : {&plain, &renamed, &carried, &meant, &one, &other, &second}) {
        digests.insert(fingerprint(*l));
    }
    EXPECT_EQ(digests.size(), 7U);
}

TEST(manual, is_what_the_layouts_say) { expect_golden("docs/wire-formats.md", wire_formats()); }

} // namespace
