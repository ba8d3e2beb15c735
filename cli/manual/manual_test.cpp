// Manual pages and completion, as the command prints them.
#include "testing/run_command.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace ribkit::cli {
namespace {

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The words that may stand behind what is typed; the first is the endings of files.
std::vector<std::string> completed(const std::string &typed) {
    std::vector<std::string> words = lines_of(testing::run_command("completion words -- " + typed).output);
    std::transform(words.begin(), words.end(), words.begin(),
                   [](const std::string &line) { return line.substr(0, line.find('\t')); });
    return words;
}

bool offers(const std::vector<std::string> &words, const std::string &word) {
    return std::find(words.begin() + 1, words.end(), word) != words.end();
}

using words = std::vector<std::string>;

std::vector<std::string> command_names() {
    words names = completed("''");
    names.erase(names.begin());
    return names;
}

} // namespace

TEST(manual, every_command_has_a_page_that_says_it_all) {
    const words names = command_names();
    EXPECT_GT(names.size(), 12U);
    const std::string all = testing::run_command("manual --all").output;
    for (const std::string &name : names) {
        const std::string page = testing::run_command("manual " + name).output;
        EXPECT_NE(all.find(page), std::string::npos) << name;
        for (const char *head : {"Synopsis", "Description", "Options", "Exit status", "Examples", "See also"}) {
            EXPECT_NE(page.find(std::string("\n## ") + head + "\n\n"), std::string::npos) << name << ": " << head;
        }
        EXPECT_NE(page.find("```sh\nribkit " + name + " "), std::string::npos) << page;
    }
}

TEST(manual, every_value_is_explained) {
    for (const std::string &name : command_names()) {
        const std::string page = testing::run_command("manual " + name).output;
        for (const std::string &line : lines_of(page)) {
            const size_t from = line.rfind("` ", line.find(": "));
            if (line.starts_with("- `-") && from != std::string::npos) {
                const std::string value = line.substr(from + 2, line.find(':', from) - from - 2);
                EXPECT_NE(page.find("\n- `" + value + "`: "), std::string::npos) << name << ": " << line;
            }
        }
    }
}

TEST(manual, help_and_page_name_the_same_options) {
    for (const std::string &name : command_names()) {
        const std::string help = testing::run_command(name + " --help").output;
        const words offered = completed(name + " -");
        const std::string page = testing::run_command("manual " + name).output;
        EXPECT_GT(offered.size(), 1U);
        for (auto option = offered.begin() + 1; option != offered.end(); ++option) {
            EXPECT_NE(help.find(*option), std::string::npos) << name << ' ' << *option;
            EXPECT_NE(page.find("`" + *option + "`"), std::string::npos) << name << ' ' << *option;
        }
    }
}

TEST(manual, says_what_goes_with_what) {
    const std::string page = testing::run_command("manual show").output;
    EXPECT_NE(page.find("- `--module` NUMBER: what this module has, and not what the RIB has, 1 to 256 (only with "
                        "--bus; not with --list, FILE, --hex, --raw, --envelopes)\n"),
              std::string::npos)
        << page;
    const std::string lab = testing::run_command("manual lab").output;
    EXPECT_NE(lab.find("- `--wait` SECONDS: how long a server, the RIB and its answers are waited for, together, 0 to "
                       "86400 (default 30)\n"),
              std::string::npos);
    EXPECT_NE(lab.find("\n## Environment\n\n- `RIBKIT_FABRIC`: FABRIC, where none is given\n"), std::string::npos);
    EXPECT_NE(lab.find("- `*.toml`: a fabric: ribkit-fabric(5)\n- `*.faults`: "), std::string::npos);
}

TEST(manual, a_page_of_no_command_has_near_ones) {
    EXPECT_EQ(testing::complaint("manual lba"),
              "ribkit: lba: no command has this name; near: lab; ribkit --help names them all\n");
    EXPECT_EQ(testing::complaint("manual lab --all"),
              "ribkit manual: --all excludes COMMAND (see ribkit manual --help)\n");
    EXPECT_NE(testing::complaint("completion csh"), "");
}

TEST(completion, words_stand_where_the_parser_takes_them) {
    EXPECT_EQ(completed("mo"), (words{"", "module", "monitor"}));
    EXPECT_EQ(completed("--v"), (words{"", "--version"}));
    EXPECT_EQ(completed("nothing ''"), (words{""}));
    EXPECT_EQ(completed("lab ''"), (words{".toml"}));
    EXPECT_EQ(completed("lab --faults ''"), (words{".faults"}));
    EXPECT_EQ(completed("lab --role=m"), (words{"", "--role=mcast"}));
    EXPECT_EQ(completed("lab --trace=m"), (words{""}));
    EXPECT_EQ(completed("show --json=x"), (words{"*"}));
    EXPECT_EQ(completed("show fcu ''"), (words{".hex .bin"}));
    EXPECT_EQ(completed("encode ''"), (words{".json"}));
    EXPECT_EQ(completed("show -- --l"), (words{""}));
    EXPECT_EQ(completed("text rib_uuid fspf mca"), (words{"", "mcast"})) << "the last argument is repeated";
    EXPECT_TRUE(offers(completed("routes ''"), "--vsan")) << "no argument is left";
    EXPECT_EQ(completed("routes x"), (words{""}));
    EXPECT_EQ(completed("routes -- ''"), (words{""})) << "behind -- there are no options";
    EXPECT_EQ(completed("show -- fcu ''"), (words{".hex .bin"}));
    EXPECT_TRUE(offers(completed("lab - ''"), "--role")) << "- is a file";
    EXPECT_EQ(completed("lab --nothing ''"), (words{".toml"})) << "whatever it is, it may be written down";
    EXPECT_EQ(completed("lab --nothing=x"), (words{""}));
    EXPECT_EQ(completed("lab --role=fspf ''"), (words{".toml"})) << "it has its value";
    EXPECT_EQ(completed("lab --role fspf ''"), (words{".toml"}));
    EXPECT_EQ(completed(""), completed("''"));
}

TEST(completion, options_that_do_not_go_together_are_not_offered) {
    EXPECT_TRUE(offers(completed("show --"), "--hex"));
    EXPECT_FALSE(offers(completed("show --hex --"), "--hex"));
    EXPECT_FALSE(offers(completed("show --hex --"), "--raw"));
    EXPECT_FALSE(offers(completed("show fcu --bus unix:x --"), "--hex"));
    EXPECT_TRUE(offers(completed("lab --role fspf --"), "--role")) << "it may be repeated";
    EXPECT_FALSE(offers(completed("show --list ''"), "fcu"));
}

TEST(completion, values_are_known_by_their_kind) {
    EXPECT_EQ(completed("manual mo"), (words{"", "module", "monitor"}));
    EXPECT_EQ(completed("route l"), (words{"", "load"}));
    EXPECT_EQ(completed("show fcu --owner fsp"), (words{"", "fspf"}));
    EXPECT_TRUE(offers(completed("text rib_uuid ''"), "fspf"));
    EXPECT_EQ(completed("text nothing fsp"), (words{""})) << "of no vocabulary";
    EXPECT_EQ(completed("lab --tables ''"), (words{"", "auto", "all", "none"}));
    EXPECT_EQ(completed("lab --vsan ''"), (words{""})) << "of no fabric";
}

TEST(completion, values_are_those_of_the_fabric_that_is_named) {
    EXPECT_EQ(completed("lab examples/fabrics/small.toml --local core"), (words{"", "core-1", "core-2"}));
    EXPECT_EQ(completed("lab examples/fabrics/small.toml --vsan ''"), (words{"", "1", "20"}));
    EXPECT_EQ(completed("lab examples/fabrics/small.toml --tables ''"), (words{"", "auto", "all", "none", "1", "20"}));
    EXPECT_EQ(completed("lab nowhere.toml --local ''"), (words{""}));
    EXPECT_EQ(completed("lab --local ''"), (words{""}));
    EXPECT_EQ(testing::run_line("RIBKIT_FABRIC=examples/fabrics/small.toml " RIBKIT_COMMAND
                                " completion words -- lab --local edge-3")
                  .output,
              "\nedge-3\tdomain 3\n");
}

TEST(completion, every_known_word_is_taken) {
    for (const std::string &kind : completed("show ''")) {
        if (!kind.empty()) {
            const std::string complaint = testing::run_command("show " + kind + " /dev/null 2>&1").output;
            EXPECT_EQ(complaint, "/dev/null: holds no bytes\n") << kind;
        }
    }
    for (const std::string &name : completed("text ''")) {
        if (!name.empty()) {
            EXPECT_EQ(testing::run_command("text " + name + " >/dev/null").exit_code, 0) << name;
        }
    }
}

} // namespace ribkit::cli
