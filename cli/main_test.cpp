// What all commands have in common: help, mistakes on the command line, output that cannot be written.
#include "testing/golden.h"
#include "testing/run_command.h"
#include "testing/temporary_directory.h"

using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

/// What a command says on standard error whose standard output leads to `output`.
testing::outcome run_into(const std::string &output, const std::string &arguments) {
    return testing::run_command(arguments + " 2>&1 >" + output);
}

/// The kept digest of all messages: the last word of the list of fingerprints.
std::string all_wire_formats() {
    const std::string kept = file_content("codec/fingerprints.txt");
    return kept.substr(kept.size() - 9, 8);
}

} // namespace

TEST(main, output_that_is_lost_is_one_line_and_a_failure) {
    for (const char *arguments :
         {"show fcu examples/messages/fcu.hex", "show --list", "text rib_uuid 1", "text --list", "text --list --json",
          "lab examples/fabrics/small.toml", "lab --trace examples/fabrics/small.toml", "fabric", "--help",
          "text --help", "fabric --switches 200 --vsans 100"}) {
        const testing::outcome run = run_into("/dev/full", arguments);
        EXPECT_EQ(run.exit_code, 1) << arguments;
        EXPECT_EQ(run.output.substr(0, 41), "ribkit: standard output cannot be written") << arguments;
        EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
    }
    EXPECT_EQ(run_into("/dev/full", "text rib_uuid 1").output,
              "ribkit: standard output cannot be written: No space left on device\n");
    EXPECT_EQ(run_into("&-", "text rib_uuid 1").output,
              "ribkit: standard output cannot be written: Bad file descriptor\n");
    EXPECT_EQ(run_into("/dev/null", "text rib_uuid 1").exit_code, 0);
}

TEST(main, a_mistake_is_told_though_the_output_is_lost) {
    const testing::outcome run = run_into("/dev/full", "show fcu nowhere.hex");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.output, "nowhere.hex: cannot be read: No such file or directory\n");
}

TEST(main, inputs_without_end_or_reason_are_refused) {
    EXPECT_EQ(testing::complaint("show fcu /dev/zero"), "/dev/zero: holds more than 67108864 bytes\n");
    EXPECT_EQ(testing::complaint("lab /dev/zero"), "/dev/zero: holds more than 67108864 bytes\n");
    EXPECT_EQ(testing::complaint("show fcu - < examples"), "standard input: cannot be read: Is a directory\n");
    EXPECT_EQ(testing::complaint("lab --faults /dev/zero examples/fabrics/small.toml"),
              "/dev/zero: cannot be read: it is longer than 1 MiB\n");
    EXPECT_EQ(testing::complaint("lab --faults examples examples/fabrics/small.toml"),
              "examples: cannot be read: Is a directory\n");
    const std::string digits(100000, '7');
    EXPECT_LT(testing::complaint("lab --wait " + digits + " examples/fabrics/small.toml").size(), 400U);
    EXPECT_LT(testing::complaint("text uuid " + digits).size(), 400U);
    EXPECT_LT(testing::complaint(digits).size(), 400U);
    EXPECT_LT(testing::complaint("show " + digits).size(), 400U);
    EXPECT_LT(testing::complaint("lab " + digits).size(), 400U);
}

TEST(main, says_its_version) {
    const testing::outcome run = testing::run_command("--version");
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.output, "ribkit " RIBKIT_VERSION " (messages " + all_wire_formats() + ")\n");
}

TEST(main, every_help_has_an_example_that_runs_and_the_exit_codes) {
    for (const std::string name :
         {"lab", "rib", "client", "routes", "fabric", "show", "text", "manual", "completion"}) {
        const testing::outcome run = testing::run_command(name + " --help");
        EXPECT_EQ(run.exit_code, 0);
        const size_t example = run.output.find("\nExamples:\n  ribkit " + name + " ");
        ASSERT_NE(example, std::string::npos) << run.output;
        EXPECT_NE(run.output.find("\nExit codes:\n  0  "), std::string::npos) << run.output;
        EXPECT_NE(run.output.find("\n  1  "), std::string::npos) << run.output;
        EXPECT_NE(run.output.find("\n  2  "), std::string::npos) << run.output;
        if (name == "lab" || name == "show" || name == "text" || name == "manual" || name == "completion") {
            const size_t start = run.output.find("ribkit " + name, example) + 7;
            EXPECT_EQ(testing::run_command(run.output.substr(start, run.output.find('\n', start) - start)).exit_code,
                      0);
        }
    }
}

TEST(main, misspelt_words_have_near_ones) {
    EXPECT_EQ(testing::complaint("lba"),
              "ribkit: lba: no command has this name; near: lab; ribkit --help names them all\n");
    EXPECT_EQ(testing::complaint("fabrik x"),
              "ribkit: fabrik: no command has this name; near: fabric; ribkit --help names them all\n");
    EXPECT_EQ(testing::complaint("--versoin"),
              "ribkit: --versoin: no option has this name; near: --version; ribkit --help names them all\n");
    EXPECT_EQ(testing::complaint("lab --trcae examples/fabrics/small.toml"),
              "ribkit lab: --trcae: no option has this name; near: --trace; ribkit lab --help names them all\n");
    EXPECT_EQ(
        testing::complaint("routes --jsn=x"),
        "ribkit routes: --jsn: no option has this name; near: --vsan, --json; ribkit routes --help names them all\n");
    EXPECT_EQ(testing::complaint("lab -x examples/fabrics/small.toml"),
              "ribkit lab: -x: no option has this name; ribkit lab --help names them all\n");
    EXPECT_EQ(
        testing::complaint(""),
        "ribkit: the commands are lab, rib, module, client, routes, fabric, route, monitor, status, show, decode, "
        "encode, text, manual, completion (see ribkit --help)\n");
}

TEST(main, words_too_many_are_told_in_their_order) {
    EXPECT_EQ(testing::complaint("lab examples/fabrics/small.toml one"),
              "ribkit lab: one argument too many: one (see ribkit lab --help)\n");
    EXPECT_EQ(testing::complaint("lab examples/fabrics/small.toml one two three"),
              "ribkit lab: arguments too many: one two three (see ribkit lab --help)\n");
}

TEST(main, numbers_are_asked_for_with_their_limits) {
    const auto limits = [](const std::string &arguments, const std::string &option, const std::string &range) {
        const std::string name = arguments.substr(0, arguments.find(' '));
        for (const std::string value : {"-1", "x", "1.5", "0x10", "99999999999999999999", "1e3"}) {
            EXPECT_EQ(testing::complaint(arguments + " " + option + " " + value),
                      "ribkit " + name + ": " + option + ": takes a whole number from " + range + ", not " + value +
                          " (see ribkit " + name + " --help)\n");
        }
    };
    limits("lab examples/fabrics/small.toml", "--wait", "0 to 86400");
    limits("lab examples/fabrics/small.toml", "--message-size", "1140 to 1048576");
    limits("lab examples/fabrics/small.toml", "--vsan", "1 to 4095");
    limits("routes", "--vsan", "1 to 4095");
    limits("fabric", "--seed", "0 to 4294967295");
    limits("fabric", "--switches", "2 to 239");
    EXPECT_EQ(testing::complaint("routes --vsan ''"),
              "ribkit routes: --vsan: takes a whole number from 1 to 4095, not nothing (see ribkit routes --help)\n");
    EXPECT_EQ(testing::complaint("routes --vsan 4096"),
              "ribkit routes: --vsan: takes a whole number from 1 to 4095, not 4096 (see ribkit routes --help)\n");
}

TEST(main, what_runs_by_itself_has_a_bus_that_others_reach) {
    for (const std::string arguments :
         {"rib --bus local:", "client examples/fabrics/small.toml --bus local:", "routes --bus local:"}) {
        const std::string name = arguments.substr(0, arguments.find(' '));
        EXPECT_EQ(testing::complaint(arguments),
                  "ribkit " + name +
                      ": --bus: local: stays in this process, where nobody could reach it "
                      "(see ribkit " +
                      name + " --help)\n");
        EXPECT_NE(testing::complaint(arguments + "x"), "");
    }
}

TEST(main, an_option_behind_one_that_wants_a_file_is_no_file) {
    EXPECT_EQ(testing::complaint("text uuid 1 -o --json"),
              "ribkit text: --output: --json is no name of a file (./--json is) (see ribkit text --help)\n");
}

TEST(main, a_fabric_goes_to_its_file_or_is_told_of) {
    const testing::input_file file("");
    EXPECT_EQ(testing::run_command("fabric --seed 7 --output " + file.path()).output, "");
    const std::string written = file_content(file.path());
    EXPECT_EQ(written, testing::run_command("fabric --seed 7").output);
    EXPECT_EQ(written, testing::run_command("fabric --seed 7 --output -").output);
    EXPECT_NE(written, testing::run_command("fabric --seed 8").output);
    EXPECT_EQ(testing::run_command("fabric --output /dev/full 2>&1").output,
              "ribkit: /dev/full: cannot be written: No space left on device\n");
    EXPECT_EQ(testing::complaint("fabric --output /no/where"),
              "/no/where: cannot be written: No such file or directory\n");
    EXPECT_EQ(testing::complaint("fabric --output examples"), "examples: cannot be written: Is a directory\n");
}

} // namespace ribkit::cli
