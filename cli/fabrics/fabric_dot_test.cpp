// Drawings of fabrics: everything that is in the file is in the picture, and no name breaks out of its quotation marks.
#include "lab/fabric_dot.h"

#include "lab/files/fabric_file.h"
#include "testing/golden.h"
#include "testing/run_command.h"
#include "testing/temporary_directory.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

/// What Graphviz accepts as an undirected graph, as far as drawings use it: statements of attributes, nodes and edges.
class graph_reader {
  public:
    explicit graph_reader(std::string_view text) : left_(text) {}

    bool is_graph() {
        bool sound = take("graph") && identifier() && take("{");
        while (sound && !take("}")) {
            sound = statement();
        }
        return sound && left_.find_first_not_of(" \n") == std::string_view::npos;
    }

  private:
    bool take(std::string_view word) {
        left_.remove_prefix(std::min(left_.find_first_not_of(" \n"), left_.size()));
        const bool is_next = left_.starts_with(word);
        left_.remove_prefix(is_next ? word.size() : 0);
        return is_next;
    }

    bool identifier() {
        if (!take("\"")) {
            const auto end = std::find_if_not(left_.begin(), left_.end(),
                                              [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
            const auto size = static_cast<size_t>(end - left_.begin());
            left_.remove_prefix(size);
            return size != 0;
        }
        size_t at = 0;
        while (at < left_.size() && left_[at] != '"' && left_[at] != '\n') {
            at += left_[at] == '\\' ? 2 : 1;
        }
        left_.remove_prefix(std::min(at, left_.size()));
        return take("\"");
    }

    bool value() { return identifier() && take("=") && identifier(); }

    bool attributes() {
        bool sound = value();
        while (sound && take(",")) {
            sound = value();
        }
        return sound && take("]");
    }

    bool statement() {
        bool sound = identifier();
        if (take("=")) {
            return sound && identifier() && take(";");
        }
        sound = sound && (!take("--") || identifier());
        return sound && (!take("[") || attributes()) && take(";");
    }

    std::string_view left_;
};

bool is_graphviz_here() { return std::system("command -v dot >/dev/null") == 0; }

/// What an SVG's text stands for.
std::string without_entities(std::string text) {
    for (const auto &[entity, letter] : {std::pair{"&quot;", "\""},
                                         {"&lt;", "<"},
                                         {"&gt;", ">"},
                                         {"&#45;", "-"},
                                         {"&#39;", "'"},
                                         {"&#160;", "\u00a0"},
                                         {"&amp;", "&"}}) {
        for (size_t at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1)) {
            text.replace(at, std::string_view(entity).size(), letter);
        }
    }
    return text;
}

/// The text below the picture that Graphviz makes of a drawing, which is its first.
std::string title_in_picture(const std::string &drawing) {
    const testing::input_file file(drawing);
    const testing::outcome run = testing::run_line("dot -Tsvg " + file.path() + " 2>&1");
    EXPECT_EQ(run.exit_code, 0) << run.output;
    EXPECT_EQ(run.output.find("Warning"), std::string::npos) << run.output;
    const size_t start = run.output.find('>', run.output.find("<text ")) + 1;
    return without_entities(run.output.substr(start, run.output.find("</text>", start) - start));
}

/// Two switches and a link, with a name of any bytes.
lab::fabric named(const std::string &name) {
    lab::fabric f;
    f.name = name;
    f.add_vsan({7, "x\"];evil"}, 1);
    f.add_switch("node", 1, 1);
    f.add_switch("b-1.c_d", 2, 1);
    f.set_local("node", 1);
    f.add_link({{"node fc1/1", "b-1.c_d port-channel 3"}, 500, true, {}}, 1);
    return f;
}

std::string drawing_of_pair(const std::string &name, const std::string &vsan, const std::string &link) {
    return lab::fabric_dot(lab::parse_fabric("name = '" + name + "'\nlocal = \"b\"\n[[vsan]]\nid = 1\nname = '" + vsan +
                                                 "'\n[[vsan]]\nid = 7\n[[switch]]\nname = \"a\"\ndomain = 1\n"
                                                 "[[switch]]\nname = \"b\"\ndomain = 2\n[[link]]\n"
                                                 "ends = [\"a fc1/1\", \"b port-channel 3\"]\n" +
                                                 link,
                                             "f.toml"));
}

} // namespace

TEST(fabric_dot, of_the_sample_is_as_it_was) {
    const testing::outcome run = testing::run_command("fabric --dot examples/fabrics/small.toml");
    EXPECT_EQ(run.exit_code, 0);
    expect_golden("cli/golden/fabric_small.dot", run.output);
    EXPECT_TRUE(graph_reader(run.output).is_graph());
    EXPECT_EQ(testing::run_command("fabric --dot - < examples/fabrics/small.toml").output, run.output);
}

TEST(fabric_dot, tells_cost_interfaces_state_and_vsans_of_a_link) {
    const std::string drawn = drawing_of_pair("pair", "", "cost = 77\nstate = \"down\"\nvsans = [7]\n");
    EXPECT_NE(drawn.find("  \"a\" [label=\"a\\ndomain 1\"];\n  \"b\" [label=\"b\\ndomain 2\", peripheries=2];\n"
                         "  \"a\" -- \"b\" [label=\"77\\nVSAN 7\", taillabel=\"fc1/1\", headlabel=\"port-channel 3\", "
                         "style=dashed];\n}\n"),
              std::string::npos)
        << drawn;
    EXPECT_EQ(drawing_of_pair("pair", "", "").find("dashed"), std::string::npos);
}

TEST(fabric_dot, names_stay_in_their_quotation_marks) {
    const std::string drawn = drawing_of_pair("say \"hi\" \\N & \u202eso", "x\"];evil", "");
    EXPECT_EQ(drawn.substr(0, drawn.find('\n', 16)), "graph fabric {\n  label=\"say \\\"hi\\\" \\\\N &amp; "
                                                     "\\\\u202eso: 2 switches, 1 link; routes of b (domain 2) in "
                                                     "VSAN 1 (x\\\"];evil), 7\";");
}

TEST(fabric_dot, is_a_graph_whatever_its_name_is) {
    const std::pair<std::string, std::string> shown[] = {
        {"say \"hi\"", "say \"hi\""},
        {"\"", "\""},
        {"\\", "\\"},
        {"\\\"", "\\\""},
        {"\\N \\G \\l", "\\N \\G \\l"},
        {"a & b &amp; <b>c</b>", "a & b &amp; <b>c</b>"},
        {"Z\u00fcrich \u6771\u4eac", "Z\u00fcrich \u6771\u4eac"},
        {"two\nlines\r\n", "two\\x0alines\\x0d\\x0a"},
        {"no \xff UTF-8", "no \\xff UTF-8"},
        {"// # /* */ ]; }", "// # /* */ ]; }"},
    };
    for (const auto &[name, text] : shown) {
        SCOPED_TRACE(name);
        const std::string drawn = lab::fabric_dot(named(name));
        EXPECT_TRUE(graph_reader(drawn).is_graph()) << drawn;
        if (is_graphviz_here()) {
            EXPECT_EQ(title_in_picture(drawn),
                      text + ": 2 switches, 1 link; routes of node (domain 1) in VSAN 7 (x\"];evil)");
        }
    }
    for (const char *wrong : {"graph g {", "graph g { a; } }", "graph g { a = \"b\\\"; }", "graph g { a -- ; }",
                              "graph g { a [b]; }", "graph g { a [b=\"c\"d\"]; }", "graph g { \"a\nb\"; }", "g { }"}) {
        EXPECT_FALSE(graph_reader(wrong).is_graph()) << wrong;
    }
}

TEST(fabric_dot, of_a_generated_fabric_has_its_switches_and_links) {
    const std::string options = "--shape ring --switches 9 --vsans 2 --seed 5";
    const std::string drawn = testing::run_command("fabric --dot " + options).output;
    EXPECT_TRUE(graph_reader(drawn).is_graph());
    const testing::input_file generated(testing::run_command("fabric " + options).output);
    EXPECT_EQ(drawn, testing::run_command("fabric --dot " + generated.path()).output);
    size_t links = 0;
    for (size_t at = drawn.find(" -- "); at != std::string::npos; at = drawn.find(" -- ", at + 1)) {
        links++;
    }
    EXPECT_EQ(links, 9U);
}

TEST(fabric_dot, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(testing::complaint("fabric f.toml"), "ribkit fabric: FABRIC requires --dot (see ribkit fabric --help)\n");
    EXPECT_EQ(testing::complaint("fabric --dot --seed 4 f.toml"),
              "ribkit fabric: FABRIC excludes --seed (see ribkit fabric --help)\n");
    EXPECT_EQ(testing::complaint("fabric --dot f.toml"), "f.toml: cannot be read: No such file or directory\n");
    const testing::input_file file(file_content("examples/fabrics/small.toml"));
    EXPECT_EQ(testing::complaint("fabric --dot " + file.path() + " -o " + file.path()),
              file.path() + ": is read by this command, and so not written\n");
}

} // namespace ribkit::cli
