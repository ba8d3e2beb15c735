// The catalogue is complete, its layouts change on purpose only, and the offset manual is what the layouts say.
#include "catalogue/manual.h"
#include "catalogue/messages.h"
#include "catalogue/wire_digest.h"
#include "codec/fingerprint.h"
#include "codec/witness/naive_pairs.h"
#include "testing/golden.h"

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

using namespace ribkit;
using namespace ribkit::codec;
using ribkit::testing::expect_golden;
using ribkit::testing::file_content;

constexpr bool has_witness(const message &m) {
    return std::any_of(std::begin(witness::all_pairs), std::end(witness::all_pairs),
                       [&](const witness::pair &model) { return model.name == m.name; });
}
constexpr bool has_message(const witness::pair &model) {
    return std::any_of(std::begin(catalogue::messages), std::end(catalogue::messages),
                       [&](const message &m) { return m.name == model.name; });
}
static_assert(std::all_of(std::begin(catalogue::messages), std::end(catalogue::messages), has_witness),
              "a message has no naive converter");
static_assert(std::count_if(std::begin(witness::all_pairs), std::end(witness::all_pairs), has_message) ==
                  std::size(witness::all_pairs) - 2,
              "only the two management rows are no messages");

/// "rib_hton_fcurt" of "rib_fcurt".
std::string exported_name(std::string_view message, std::string_view what) {
    const size_t prefix = message.starts_with("rib_fib_") ? 8 : 4;
    std::string name(message.substr(0, prefix));
    name += what;
    name += message.substr(prefix - 1);
    return name;
}

/// The exported functions that are named after a message; what else has such a name is none of a message.
std::set<std::string> exported_functions() {
    const std::set<std::string> others = {"rib_check_report_str", "rib_check_cmi_request", "rib_check_cmi_answer",
                                          "bud_check_image", "cont_check_image"};
    std::set<std::string> functions;
    std::istringstream exports(file_content("exports.txt"));
    for (std::string name; std::getline(exports, name);) {
        for (const char *what : {"_hton_", "_ntoh_", "_check_"}) {
            if (name.find(what) != std::string::npos && name.find("_get_") == std::string::npos &&
                !others.contains(name)) {
                functions.insert(name);
            }
        }
    }
    return functions;
}

TEST(catalogue, has_a_row_for_every_exported_converter_and_check) {
    std::set<std::string> rows;
    for (const message &m : messages()) {
        for (const char *what : {"hton", "ntoh", "check"}) {
            rows.insert(exported_name(m.name, what));
        }
    }
    EXPECT_EQ(rows, exported_functions());
}

TEST(catalogue, finds_messages_with_and_without_prefix) {
    EXPECT_STREQ(find_message("rib_fcurt")->wire->name, "fcurt");
    EXPECT_STREQ(find_message("fcurt")->wire->name, "fcurt");
    EXPECT_STREQ(find_message("rib_fib_fcu_lb_rsp")->wire->name, "fcu_lb_rsp");
    EXPECT_EQ(find_message("fib_fcurt"), nullptr);
    EXPECT_EQ(find_message("rib_"), nullptr);
    EXPECT_EQ(find_message(""), nullptr);
}

std::string fingerprints(const message &m) {
    char line[100];
    std::snprintf(line, sizeof line, "%s wire %08x description %08x\n", m.name.data(), wire_fingerprint(*m.wire),
                  description_fingerprint(*m.wire));
    return line;
}

TEST(catalogue, layouts_change_on_purpose_only) {
    std::string lines;
    for (const message &m : messages()) {
        lines += fingerprints(m);
    }
    for (const message &f : forms()) {
        lines += fingerprints(f);
    }
    char all[40];
    std::snprintf(all, sizeof all, "all wire %08x\n", catalogue::wire_digest());
    expect_golden("codec/fingerprints.txt", lines + all);
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
    for (const message &m : messages()) {
        for_each_row(*m.wire, examine);
    }
    for (const message &f : forms()) {
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

TEST(manual, is_what_the_layouts_say) { expect_golden("docs/wire-formats.md", catalogue::wire_formats()); }

} // namespace
