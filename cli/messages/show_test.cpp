// Every display from a file: the examples as they print, every way to hand them over, and all that can be wrong with
// them.
#include "cli/messages/show.h"

#include "base/input_error.h"
#include "base/text.h"
#include "rib_codes.h"
#include "rib_show.h"
#include "testing/capture.h"
#include "testing/golden.h"
#include "testing/guarded.h"
#include "testing/run_command.h"
#include "testing/temporary_directory.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

std::string example_path(const display &kind) { return "examples/messages/" + std::string(kind.short_name()) + ".hex"; }

std::vector<uint8_t> example(const display &kind) {
    return network_bytes(file_content(example_path(kind)), byte_form::hex);
}

const display &display_of(std::string_view name) { return *find_display(name); }

std::string as_text(std::span<const uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

/// Where the records of `bytes` begin, and where the last one ends.
std::vector<size_t> boundaries(const display &kind, std::span<const uint8_t> bytes) {
    std::vector<size_t> all{0};
    rib_check_report report{};
    while (all.back() < bytes.size()) {
        const uint32_t size = record_size(kind, bytes.subspan(all.back()), report);
        if (size == 0) {
            ADD_FAILURE() << kind.name << ": record " << all.size() << " is refused";
            break;
        }
        all.push_back(all.back() + size);
    }
    return all;
}

struct shown {
    std::string output;
    std::string complaint; ///< empty where there was none
};

/// What is shown of bytes behind which nothing can be read.
shown show(const display &kind, std::span<const uint8_t> bytes) {
    const guarded copy{bytes};
    shown result;
    result.output = printed_by([&] {
        try {
            show_records(kind, copy.bytes(), "FILE");
        } catch (const base::input_error &error) {
            result.complaint = error.what();
        }
    });
    return result;
}

} // namespace

TEST(show, every_display_prints_its_example_as_it_always_did) {
    for (const display &kind : displays()) {
        const std::string name(kind.short_name());
        const testing::outcome run = testing::run_command("show " + name + " " + example_path(kind));
        EXPECT_EQ(run.exit_code, 0) << name;
        expect_golden("cli/golden/show/" + name + ".txt", run.output);
    }
}

TEST(show, as_json_records_are_messages_as_decode_has_them) {
    for (const display &kind : displays()) {
        const std::string name(kind.short_name());
        const std::string arguments = "show " + name + " " + example_path(kind);
        expect_golden("cli/golden/decode/" + name + ".json", testing::run_command(arguments + " --json").output);
    }
    const temporary_directory home;
    const std::string path = home.file("json");
    EXPECT_EQ(testing::run_command("show fcm examples/messages/fcm.hex --json=" + path).output,
              file_content("cli/golden/show/fcm.txt"));
    EXPECT_EQ(file_content(path), file_content("cli/golden/decode/fcm.json"));
}

TEST(show, a_refused_record_ends_the_array_as_far_as_it_is_understood) {
    const testing::input_file file("000001f4 00000321 000001f5 0322");
    const std::string why = file.path() + ": record 2 at byte 8: fib_vsan: word_4 at offset 4 ends at 8, but the bytes "
                                          "end at 6\n";
    const testing::outcome text = testing::run_command("show vsan " + file.path() + " 2>&1");
    EXPECT_EQ(text.output.substr(text.output.size() - std::min(why.size(), text.output.size())), why);
    const testing::outcome json = testing::run_command("show vsan --json " + file.path() + " 2>/dev/null");
    EXPECT_EQ(json.exit_code, 2);
    EXPECT_EQ(json.output, testing::run_command("decode fib_vsan --json " + file.path() + " 2>/dev/null").output);
    const testing::outcome said = testing::run_command("show vsan --json " + file.path() + " 2>&1 >/dev/null");
    EXPECT_EQ(said.output, why);
}

TEST(show, every_display_that_reads_network_bytes_has_a_row) {
    std::istringstream header(file_content("include/rib_show.h"));
    std::set<std::string> declared;
    for (std::string line; std::getline(header, line);) {
        const size_t name = line.find(' ') + 1;
        if (line.starts_with("void ") || line.starts_with("uint32_t ")) {
            declared.insert(line.substr(name, line.find('(') - name));
        }
    }
    EXPECT_EQ(declared.erase("rib_show_p"), 1) << "reads addresses";
    std::set<std::string> rows;
    for (const display &kind : displays()) {
        rows.insert(std::string(kind.name));
        EXPECT_EQ(&display_of(kind.name), &kind);
        EXPECT_EQ(&display_of(kind.short_name()), &kind);
    }
    EXPECT_EQ(rows, declared);
}

TEST(show, the_list_names_every_display) {
    expect_golden("cli/golden/show_list.txt", testing::run_command("show --list").output);
    expect_golden("cli/golden/show_list.json", testing::run_command("show --list --json").output);
}

TEST(show, the_checked_record_is_what_the_display_steps_over) {
    const std::map<std::string_view, uint32_t (*)(const void *)> lengths = {
        {"fcu", [](const void *record) { return rib_show_fcu(0, record); }},
        {"fcl", [](const void *record) { return rib_show_fcl(0, 0, record); }},
        {"fcm", [](const void *record) { return rib_show_fcm(0, record); }},
        {"fcurt", [](const void *record) { return rib_show_fcurt(0, record); }},
        {"fcmrt", [](const void *record) { return rib_show_fcmrt(0, 1, 64, record); }},
    };
    for (const auto &[name, length] : lengths) {
        const std::vector<uint8_t> bytes = example(display_of(name));
        const std::vector<size_t> at = boundaries(display_of(name), bytes);
        ASSERT_GE(at.size(), 3);
        for (size_t i = 0; i + 1 < at.size(); i++) {
            printed_by([&, function = length] { EXPECT_EQ(function(&bytes[at[i]]), at[i + 1] - at[i]) << i; });
        }
    }
}

// Of examples with damaged counts: what is said to end before the bytes do is a whole record, and no byte of it is too
// many.
TEST(show, where_a_record_ends_is_where_its_check_accepts_it) {
    std::mt19937 random(7);
    size_t shorter = 0;
    for (const display &kind : displays()) {
        for (int round = 0; round < 300; round++) {
            std::vector<uint8_t> bytes = example(kind);
            bytes[random() % bytes.size()] ^= static_cast<uint8_t>(1U << random() % 8);
            rib_check_report report{};
            const uint32_t size = record_size(kind, guarded(bytes).bytes(), report);
            if (size != 0) {
                ASSERT_EQ(kind.check(bytes.data(), size, nullptr), RIB_OK) << kind.name;
                shorter += size < bytes.size() ? 1 : 0;
            }
        }
    }
    EXPECT_GT(shorter, 1000U);
}

TEST(show, a_file_may_be_hexadecimal_raw_or_standard_input) {
    const display &kind = display_of("fcu");
    const std::string expected = testing::run_command("show fcu " + example_path(kind)).output;
    const testing::input_file raw(as_text(example(kind)));
    for (const std::string &arguments :
         {"rib_show_fcu " + example_path(kind), "fcu < " + example_path(kind), "fcu - < " + example_path(kind),
          "--hex fcu " + example_path(kind), "fcu " + raw.path(), "fcu < " + raw.path(), "--raw fcu " + raw.path()}) {
        const testing::outcome run = testing::run_command("show " + arguments);
        EXPECT_EQ(run.exit_code, 0) << arguments;
        EXPECT_EQ(run.output, expected) << arguments;
    }
}

TEST(show, heads_stand_once_in_front_of_the_first_row) {
    const std::string output = show(display_of("sys_port"), example(display_of("sys_port"))).output;
    EXPECT_EQ(output.substr(0, 5), "\nB:pa") << "though the first module has no ports";
    EXPECT_EQ(output.find("B:part", 6), std::string::npos);
}

TEST(show, every_truncation_is_refused_and_only_whole_records_are_shown) {
    for (const display &kind : displays()) {
        const std::vector<uint8_t> bytes = example(kind);
        const std::vector<size_t> ends = boundaries(kind, bytes);
        for (size_t length = 1; length < bytes.size(); length++) {
            const auto next = std::upper_bound(ends.begin(), ends.end(), length);
            const size_t whole = *std::prev(next);
            const std::span<const uint8_t> records(bytes.data(), whole);
            const shown cut = show(kind, {bytes.data(), length});
            if (whole == length) {
                EXPECT_EQ(cut.complaint, "") << kind.name << ' ' << length;
                continue;
            }
            const std::string begin = base::joined("FILE: record ", next - ends.begin(), " at byte ", whole, ": ");
            ASSERT_EQ(cut.complaint.substr(0, begin.size()), begin) << kind.name << ' ' << length;
            ASSERT_EQ(cut.output, whole == 0 ? "" : show(kind, records).output) << kind.name << ' ' << length;
        }
    }
}

TEST(show, no_display_reads_outside_what_its_check_accepts) {
    constexpr int rounds = 300;
    std::mt19937 random(20);
    size_t accepted = 0;
    for (const display &kind : displays()) {
        const std::vector<uint8_t> bytes = example(kind);
        for (int round = 0; round < rounds; round++) {
            std::vector<uint8_t> changed = bytes;
            for (uint32_t changes = random() % 4 + 1; changes != 0; changes--) {
                changed[random() % changed.size()] = static_cast<uint8_t>(random() % 3 == 0 ? random() : random() % 5);
            }
            changed.resize(random() % 3 == 0 ? random() % changed.size() + 1 : changed.size());
            accepted += show(kind, changed).complaint.empty() ? 1 : 0;
        }
    }
    EXPECT_GT(accepted, displays().size() * rounds / 10);
    EXPECT_LT(accepted, displays().size() * rounds * 9 / 10);
}

TEST(show, a_bad_record_is_one_line_behind_those_before_it) {
    const std::string good = "0000000e 00000001 00fffd01 00ffffff 00000001 01010001\n";
    const testing::input_file file(good + "0000000e 00000001 00fffd02 00ffffff ffffffff 01010001\n");
    const testing::outcome run = testing::run_command("show fcm " + file.path() + " 2>&1");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.output, "\nService       VSAN    FC ID/Mask(H)    # Interfaces\n"
                          "----------    ----    ------ ------    ------------\n"
                          "mcast         1       fffd01 ffffff    1\n"
                          "    fc1/1\n" +
                              file.path() +
                              ": record 2 at byte 24: rib_mcast_route: n_intf at offset 16 is 4294967295, "
                              "at most 1 allowed\n");
}

TEST(show, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(testing::complaint("show fcx"),
              "fcx: no display has this name; near: fcu, fcl, fcm, fct; ribkit show --list names them all\n");
    EXPECT_EQ(testing::complaint("show p"), "p: no display has this name; near: snmp_fcroute, dm, db, sys_port, port; "
                                            "ribkit show --list names them all\n");
    EXPECT_EQ(testing::complaint("show fcu nowhere.hex"), "nowhere.hex: cannot be read: No such file or directory\n");
    EXPECT_EQ(testing::complaint("show fcu examples"), "examples: cannot be read: Is a directory\n");
    EXPECT_EQ(testing::complaint("show fcu < /dev/null"), "standard input: holds no bytes\n");
    EXPECT_EQ(testing::complaint("show --raw fcu < /dev/null"), "standard input: holds no bytes\n");
    EXPECT_EQ(testing::complaint("show fib_show_vsan /dev/null"), "/dev/null: holds no bytes\n");
    EXPECT_EQ(testing::complaint("show"), "ribkit show: KIND is required (see ribkit show --list)\n");
    const testing::input_file comments("# nothing\n\n");
    EXPECT_EQ(testing::complaint("show fcu " + comments.path()), comments.path() + ": holds no bytes\n");
    const testing::input_file odd("# a route\n0000000c\n0001f4 00012 \n");
    EXPECT_EQ(testing::complaint("show vsan " + odd.path()),
              odd.path() + ":3: \"00012\" has an odd number of digits\n");
    const testing::input_file letters("0000000c 0000000g\n");
    EXPECT_EQ(testing::complaint("show vsan " + letters.path()),
              letters.path() + ":1: \"0000000g\" is no hexadecimal number\n");
    const testing::input_file cut("000001f4 0321");
    EXPECT_EQ(testing::complaint("show vsan < " + cut.path()),
              "standard input: record 1 at byte 0: fib_vsan: word_4 at offset 4 ends at 8, but the bytes "
              "end at 6\n");
    for (const char *arguments : {"--list fcu", "--list fcu x", "--json", "--json=x fcu y", "\"\"", "--hex --raw fcu x",
                                  "fcu x y", "--hax fcu", "FCU"}) {
        testing::complaint(std::string("show ") + arguments);
    }
    EXPECT_EQ(testing::run_command("show --help").exit_code, 0);
}

} // namespace ribkit::cli
