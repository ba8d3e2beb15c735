// Drawings of fabrics: everything that is in the file is in the picture, and no name breaks out of its quotation marks.
#include "tools/fabric_dot.h"

#include "testing/golden.h"
#include "tools/fabric_file.h"
#include "tools/run_command.h"

namespace ribkit::testing {
namespace {

std::string drawing_of_pair(const std::string &name, const std::string &vsan, const std::string &link) {
    return fabric_dot(parse_fabric("name = '" + name + "'\nlocal = \"b\"\n[[vsan]]\nid = 1\nname = '" + vsan +
                                       "'\n[[vsan]]\nid = 7\n[[switch]]\nname = \"a\"\ndomain = 1\n"
                                       "[[switch]]\nname = \"b\"\ndomain = 2\n[[link]]\n"
                                       "ends = [\"a fc1/1\", \"b port-channel 3\"]\n" +
                                       link,
                                   "f.toml"));
}

} // namespace

TEST(fabric_dot, of_the_sample_is_as_it_was) {
    const outcome run = run_command("fabric --dot examples/fabrics/small.toml");
    EXPECT_EQ(run.exit_code, 0);
    expect_golden("tools/golden/fabric_small.dot", run.output);
    EXPECT_EQ(run_command("fabric --dot - < examples/fabrics/small.toml").output, run.output);
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

TEST(fabric_dot, of_a_generated_fabric_has_its_switches_and_links) {
    const std::string options = "--shape ring --switches 9 --vsans 2 --seed 5";
    const std::string drawn = run_command("fabric --dot " + options).output;
    const input_file generated(run_command("fabric " + options).output);
    EXPECT_EQ(drawn, run_command("fabric --dot " + generated.path()).output);
    size_t links = 0;
    for (size_t at = drawn.find(" -- "); at != std::string::npos; at = drawn.find(" -- ", at + 1)) {
        links++;
    }
    EXPECT_EQ(links, 9U);
}

TEST(fabric_dot, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(complaint("fabric f.toml"), "ribkit fabric: FABRIC requires --dot (see ribkit fabric --help)\n");
    EXPECT_EQ(complaint("fabric --dot --seed 4 f.toml"),
              "ribkit fabric: FABRIC excludes --seed (see ribkit fabric --help)\n");
    EXPECT_EQ(complaint("fabric --dot f.toml"), "f.toml: cannot be read: No such file or directory\n");
    const input_file file(file_content("examples/fabrics/small.toml"));
    EXPECT_EQ(complaint("fabric --dot " + file.path() + " -o " + file.path()),
              file.path() + ": is read by this command, and so not written\n");
}

} // namespace ribkit::testing
