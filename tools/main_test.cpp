// What all commands have in common: output that cannot be written is one line and a failure.
#include "testing/golden.h"
#include "tools/run_command.h"

namespace ribkit::testing {
namespace {

/// What a command says on standard error whose standard output leads to `output`.
outcome run_into(const std::string &output, const std::string &arguments) {
    return run_command(arguments + " 2>&1 >" + output);
}

} // namespace

TEST(main, output_that_is_lost_is_one_line_and_a_failure) {
    for (const char *arguments :
         {"show fcu examples/messages/fcu.hex", "show --list", "text rib_uuid 1", "text --list", "text --list --json",
          "lab examples/fabrics/small.toml", "fabric", "--help", "text --help", "fabric --switches 200 --vsans 100"}) {
        const outcome run = run_into("/dev/full", arguments);
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
    const outcome run = run_into("/dev/full", "show fcu nowhere.hex");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.output, "nowhere.hex: cannot be read: No such file or directory\n");
}

TEST(main, a_fabric_goes_to_its_file_or_is_told_of) {
    const input_file file("");
    EXPECT_EQ(run_command("fabric --seed 7 --output " + file.path()).output, "");
    const std::string written = file_content(file.path());
    EXPECT_EQ(written, run_command("fabric --seed 7").output);
    EXPECT_EQ(written, run_command("fabric --seed 7 --output -").output);
    EXPECT_NE(written, run_command("fabric --seed 8").output);
    EXPECT_EQ(run_command("fabric --output /dev/full 2>&1").output,
              "ribkit: /dev/full: cannot be written: No space left on device\n");
    EXPECT_EQ(complaint("fabric --output /no/where"), "/no/where: cannot be written: No such file or directory\n");
    EXPECT_EQ(complaint("fabric --output examples"), "examples: cannot be written: Is a directory\n");
}

} // namespace ribkit::testing
