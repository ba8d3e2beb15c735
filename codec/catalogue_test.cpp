// The catalogue is complete, its layouts change on purpose only, and the offset manual is what the layouts say.
#include "codec/catalogue.h"

#include "codec/manual.h"
#include "testing/golden.h"

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

using namespace ribkit::codec;
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

std::string fingerprints(const std::string &name, const layout &l) {
    char line[100];
    std::snprintf(line, sizeof line, "%s wire %08x description %08x\n", name.c_str(), wire_fingerprint(l),
                  description_fingerprint(l));
    return line;
}

TEST(catalogue, layouts_change_on_purpose_only) {
    std::string lines;
    for (const message &m : catalogue()) {
        lines += fingerprints(std::string(m.prefix).append("_").append(m.name), *m.wire);
    }
    for (const form &f : forms()) {
        lines += fingerprints(f.wire->name, *f.wire);
    }
    expect_golden("codec/fingerprints.txt", lines);
}

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

TEST(catalogue, wire_fingerprint_tells_everything_about_the_bytes) {
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

TEST(catalogue, wire_fingerprint_knows_no_name_and_no_split) {
    static constexpr layout renamed{"m", 8, {word(0, "n"), word(4, "y", meaning::label).says("rib_uuid")}};
    static constexpr layout run{"l", 8, {word(0, "n"), also(word(4, "x"))}};
    const layout *const words[] = {&plain, &renamed, &run};
    EXPECT_EQ(digests(words, wire_fingerprint).size(), 1U);
    static constexpr layout whole{"l", 8, {bytes(0, 8, "x")}};
    static constexpr layout halves{"l", 8, {bytes(0, 3, "x"), bytes(3, 5, "y")}};
    const layout *const carried[] = {&whole, &halves};
    EXPECT_EQ(digests(carried, wire_fingerprint).size(), 1U);
}

TEST(catalogue, description_fingerprint_tells_every_part_of_a_row) {
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

/// Every name of a layout's rows and parts, lists' entries included.
void for_each_row(const layout &l, const std::function<void(const row &)> &examine) {
    for (const row &r : l) {
        examine(r);
        if (r.entry != nullptr) {
            for_each_row(*r.entry, examine);
        }
    }
}

void for_each_row(const std::function<void(const row &)> &examine) {
    for (const message &m : catalogue()) {
        for_each_row(*m.wire, examine);
    }
    for (const form &f : forms()) {
        for_each_row(*f.wire, examine);
    }
}

bool is_identifier(std::string_view name) {
    return !name.empty() && name.front() >= 'a' && name.front() <= 'z' &&
           name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string_view::npos;
}

TEST(layouts, names_are_identifiers_and_the_nameless_say_where_they_stand) {
    for_each_row([](const row &r) {
        EXPECT_TRUE(is_identifier(r.name)) << r.name;
        for (const std::string_view kind : {"word_", "half_", "byte_", "bytes_"}) {
            if (std::string_view(r.name).starts_with(kind)) {
                EXPECT_EQ(r.name, std::string(kind) + std::to_string(r.offset));
            }
        }
        for (const row_part &p : r.parts) {
            EXPECT_TRUE(is_identifier(p.name)) << r.name;
        }
    });
}

void expect_vocabulary(std::string_view name) {
    static const std::string exports = '\n' + file_content("exports.txt");
    const std::string converter = '\n' + std::string(name) + "_to_str\n";
    EXPECT_TRUE(name.empty() || exports.find(converter) != std::string::npos) << name;
}

TEST(layouts, texts_are_those_of_an_exported_function) {
    for_each_row([](const row &r) {
        expect_vocabulary(r.vocabulary);
        for (const row_part &p : r.parts) {
            expect_vocabulary(p.vocabulary);
        }
    });
}

TEST(layouts, parts_do_not_overlap_but_where_a_word_is_read_in_two_ways) {
    for_each_row([](const row &r) {
        uint32_t taken = 0;
        for (const row_part &p : r.parts) {
            const uint32_t bits = ((uint32_t{1} << p.bits) - 1) << p.shift;
            EXPECT_TRUE((taken & bits) == 0 || std::string_view(p.name) == "domain") << r.name;
            taken |= bits;
        }
    });
}

TEST(manual, is_what_the_layouts_say) { expect_golden("docs/wire-formats.md", wire_formats()); }

} // namespace
