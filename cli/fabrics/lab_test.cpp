// Whole runs of the command, as a user types them: their output, their files, their errors.
#include "testing/golden.h"
#include "testing/run_command.h"

#include <regex>

namespace ribkit::cli {
namespace {

/// Times of day and measured figures differ from run to run.
std::string steady(std::string text) {
    const std::pair<const char *, const char *> varying[] = {
        {"(^|\n)[0-9]{2}:[0-9]{2}:[0-9]{2} ", "$1HH:MM:SS "},
        {"[0-9]+ routes a second", "N routes a second"},
        {"((seconds[a-z_]*|routes_per_second)\": )[-+.e0-9]+", "$1N"},
        {"[0-9]+\\.[0-9]{6}", "S.SSSSSS"},
    };
    for (const auto &[pattern, shown] : varying) {
        text = std::regex_replace(text, std::regex(pattern), shown);
    }
    return text;
}

constexpr const char *small = "examples/fabrics/small.toml";

TEST(lab, the_small_fabric_prints_what_it_always_did) {
    const testing::outcome run = testing::run_command(std::string("lab --trace ") + small);
    EXPECT_EQ(run.exit_code, 0);
    testing::expect_golden("cli/golden/lab_small_trace.txt", steady(run.output));
    testing::expect_golden("cli/golden/lab_small.txt",
                           steady(testing::run_command(std::string("lab ") + small).output));
}

TEST(lab, the_small_fabric_as_json_is_the_same_run) {
    const testing::outcome run = testing::run_command(std::string("lab --json ") + small);
    EXPECT_EQ(run.exit_code, 0);
    testing::expect_golden("cli/golden/lab_small.json", steady(run.output));
}

TEST(lab, json_goes_to_a_file_beside_what_is_printed) {
    const testing::temporary_directory home;
    const std::string path = home.file("run.json");
    const testing::outcome run = testing::run_command("lab --json=" + path + " " + small);
    EXPECT_EQ(steady(run.output), steady(testing::run_command(std::string("lab ") + small).output));
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_TRUE(steady(text) == steady(testing::run_command(std::string("lab --json ") + small).output));
}

TEST(lab, tables_are_displayed_by_choice) {
    const auto routes = [](const std::string &options) {
        const std::string text = testing::run_command("lab --tables " + options).output;
        const std::regex row("\nfspf  ");
        return std::distance(std::sregex_iterator(text.begin(), text.end(), row), {});
    };
    EXPECT_EQ(routes(std::string("all ") + small), 8);
    EXPECT_EQ(routes(std::string("none ") + small), 0);
    EXPECT_EQ(routes(std::string("20 ") + small), 4);
    const testing::temporary_directory home;
    const std::string many = "- < " + home.file("many.toml");
    testing::run_command("fabric --switches 66 --vsans 1 --output " + home.file("many.toml"));
    EXPECT_EQ(routes("auto " + many), 0);
    EXPECT_EQ(routes("all " + many), 65);
    EXPECT_NE(testing::run_command("lab " + many).output.find("--tables all displays them"), std::string::npos);
}

TEST(lab, tables_are_chosen_by_a_word_or_a_vsan_of_the_fabric) {
    for (const std::string which : {"some", "20x", "99999999999", "-1"}) {
        EXPECT_EQ(testing::complaint("lab --tables=" + which + ' ' + small),
                  "--tables " + which + ": \"auto\", \"all\", \"none\" or the number of a VSAN\n");
    }
    EXPECT_EQ(testing::complaint(std::string("lab --tables 21 ") + small), "--tables 21: the fabric has no VSAN 21\n");
}

TEST(lab, smaller_messages_leave_the_same_tables) {
    const testing::outcome run =
        testing::run_command(std::string("lab --role fspf --tables all --message-size 1140 ") + small);
    const auto tables = [](const std::string &text) {
        const size_t at = text.find("\nD:direct");
        return text.substr(at, text.find("\nSummary") - at);
    };
    EXPECT_EQ(tables(run.output), tables(testing::run_command(std::string("lab --role fspf ") + small).output));
    EXPECT_NE(run.output.find("  8 routes added, in 3 messages\n"), std::string::npos);
}

TEST(lab, events_of_one_moment_are_one_change) {
    const testing::temporary_directory home;
    const std::string path = home.file("moments.toml");
    std::ofstream(path) << testing::file_content(small) << R"(
[[event]]
at = "8s"
link = "edge-1 fc1/2"
state = "down"
[[event]]
at = "8s"
link = "edge-1 fc1/2"
state = "up"
[[event]]
at = "8001ms"
link = "edge-1 fc1/2"
cost = 501
)";
    const std::string text = testing::run_command("lab --role fspf --tables none " + path).output;
    EXPECT_NE(text.find("at 8s: edge-1 fc1/2 - core-2 fc1/1 goes down\n"
                        "at 8s: edge-1 fc1/2 - core-2 fc1/1 comes up\n"
                        "  no route changed\n"
                        "at 8.001s: edge-1 fc1/2 - core-2 fc1/1 costs 501\n"
                        "  3 routes changed, in 1 message\n"),
              std::string::npos)
        << text;
}

TEST(lab, what_the_tables_are_made_of_is_displayed_on_request) {
    const std::string text = testing::run_command(std::string("lab --memory --tables none ") + small).output;
    const std::string plain = testing::run_command(std::string("lab --tables none ") + small).output;
    EXPECT_NE(text.find("Total 512, block size 8, # segments 2\n"), std::string::npos) << text;
    EXPECT_EQ(plain.find("# segments"), std::string::npos);
}

TEST(lab, a_rib_without_room_says_so_and_the_json_stays_whole) {
    const testing::temporary_directory home;
    const std::string path = home.file("tight.toml");
    testing::run_command("fabric --switches 20 --vsans 2 --output " + path);
    std::ofstream(path, std::ios::app) << "[rib]\npositions = 32\n";
    const testing::outcome run = testing::run_command("lab " + path + " 2>&1");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.output.find("vsan 2 is \"hw tcam/ssram full\": 8 routes accepted\n"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("\n  refused   11 of the routes sent\n"), std::string::npos) << run.output;
    const testing::outcome json = testing::run_command("lab --json " + path + " 2>/dev/null");
    EXPECT_EQ(json.exit_code, 1);
    EXPECT_EQ(json.output.substr(0, 15), "{\n  \"fabric\": {");
    EXPECT_EQ(json.output.find("cont_mv"), std::string::npos);
}

TEST(lab, every_route_of_the_largest_fabric_arrives) {
    const testing::outcome run = testing::run_command("fabric | " RIBKIT_COMMAND " lab -");
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_NE(run.output.find("3808 sent: 3808 added, 0 deleted, 0 changed; the RIB holds 3808\n"), std::string::npos);
}

TEST(lab, domains_that_no_link_reaches_are_told) {
    const testing::temporary_directory home;
    const std::string path = home.file("lonely.toml");
    std::ofstream(path) << testing::file_content(small) << "[[switch]]\nname = \"lonely\"\ndomain = 77\n";
    const std::string text = testing::run_command("lab --role fspf --tables none " + path).output;
    EXPECT_NE(text.find("at 0s: the fabric starts\n"
                        "  8 routes added, in 2 messages\n"
                        "  domain 77 (lonely) is unreachable in VSAN 1\n"
                        "  domain 77 (lonely) is unreachable in VSAN 20\n"
                        "at 2s:"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("lonely", text.find("at 2s:")), std::string::npos); // once
}

TEST(lab, envelopes_and_a_bus_with_a_name_change_nothing) {
    const std::string plain = steady(testing::run_command(std::string("lab ") + small).output);
    EXPECT_EQ(steady(testing::run_command(std::string("lab --envelopes --bus local:named ") + small).output), plain);
    EXPECT_NE(testing::run_command(std::string("lab --envelopes --trace ") + small)
                  .output.find("FSPF sent RIB update using cmi"),
              std::string::npos);
}

TEST(lab, a_rough_bus_gives_the_same_transcript_every_time_and_a_quiet_ones_tables) {
    const auto rough = [](const std::string &outputs) {
        return testing::run_command(std::string("lab --trace --wait 600 --faults examples/faults/rough.faults ") +
                                    small + outputs);
    };
    const testing::outcome run = rough(" 2>/dev/null");
    const testing::outcome errors = rough(" 2>&1 >/dev/null");
    EXPECT_EQ(run.exit_code, 0);
    testing::expect_golden("cli/golden/lab_rough_trace.txt", run.output);
    testing::expect_golden("cli/golden/lab_rough_errors.txt", errors.output);
    for (int again = 0; again < 5; again++) {
        EXPECT_EQ(rough(" 2>/dev/null").output, run.output) << "times and figures, too";
        EXPECT_EQ(rough(" 2>&1 >/dev/null").output, errors.output);
    }
    const auto tables = [](const std::string &text) {
        const size_t at = text.find("\nD:direct");
        return text.substr(at, text.find("\nSummary") - at);
    };
    EXPECT_EQ(tables(run.output), tables(testing::run_command(std::string("lab ") + small).output));
}

TEST(lab, a_rib_that_cannot_listen_and_one_that_is_never_heard_are_reported) {
    const testing::input_file deaf("fail listen 1 EACCES\n");
    const testing::outcome run = testing::run_command("lab --faults " + deaf.path() + " " + small + " 2>&1");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.output, "ribkit: the RIB cannot listen on local:: Permission denied\n");
    std::ofstream(deaf.path()) << "clock virtual\ndrop every 1\n";
    const testing::outcome silent =
        testing::run_command("lab --wait 5 --faults " + deaf.path() + " " + small + " 2>&1");
    EXPECT_EQ(silent.exit_code, 1);
    EXPECT_NE(silent.output.find("ribkit: no answer from the RIB: Connection timed out\n"), std::string::npos);
}

TEST(lab, computes_the_routes_of_another_switch_and_of_some_vsans) {
    const auto head = [](const std::string &options) {
        const testing::outcome run = testing::run_command("lab " + options + " " + small);
        EXPECT_EQ(run.exit_code, 0) << options;
        return run.output.substr(0, run.output.find('\n'));
    };
    const std::string begin = "small: 5 switches, 7 links; routes of ";
    EXPECT_EQ(head("--local edge-3"), begin + "edge-3 (domain 3) in VSAN 1 (production), 20 (backup)");
    EXPECT_EQ(head("--vsan 20"), begin + "edge-1 (domain 1) in VSAN 20 (backup)");
    EXPECT_EQ(head("--vsan 20 --vsan 1"), begin + "edge-1 (domain 1) in VSAN 1 (production), 20 (backup)");
    const std::string other =
        testing::run_command(std::string("lab --tables all --vsan 1 --local edge-3 ") + small).output;
    EXPECT_NE(other.find("fspf        1     010000 ff0000"), std::string::npos) << other;
    EXPECT_EQ(other.find("fspf        1     030000 ff0000"), std::string::npos) << "the local switch itself";
    EXPECT_EQ(testing::complaint(std::string("lab --local edge-9 ") + small),
              "--local edge-9: the fabric has no such switch; near: edge-1, edge-2, edge-3\n");
    EXPECT_EQ(testing::complaint(std::string("lab --vsan 1 --vsan 2 ") + small),
              "--vsan 2: the fabric has no VSAN 2\n");
}

TEST(lab, checks_without_a_run) {
    const testing::outcome run = testing::run_command(std::string("lab --check --real-time ") + small);
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.output,
              "small: 5 switches, 7 links; routes of edge-1 (domain 1) in VSAN 1 (production), 20 (backup)\n");
    EXPECT_EQ(testing::run_command(std::string("lab --check --bus nats://127.0.0.1:1 ") + small).exit_code, 0)
        << "nothing is opened";
    const testing::input_file damaged("name = \"x\"\nlocal = 3\n");
    EXPECT_EQ(testing::complaint("lab --check " + damaged.path()), testing::complaint("lab " + damaged.path()));
    const testing::input_file faults("seed x\n");
    EXPECT_EQ(testing::complaint("lab --check --faults " + faults.path() + " " + small),
              faults.path() + ":1: seed takes one number\n");
    EXPECT_EQ(testing::complaint(std::string("lab --check --tables 7 ") + small),
              "--tables 7: the fabric has no VSAN 7\n");
}

TEST(lab, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(testing::complaint(std::string("lab --bus pigeon: ") + small).substr(0, 26),
              "pigeon:: no such transport");
    EXPECT_EQ(testing::complaint(std::string("lab --faults nowhere ") + small),
              "nowhere: cannot be read: No such file or directory\n");
    EXPECT_EQ(testing::complaint(std::string("lab --faults CMakeLists.txt ") + small).substr(0, 15), "CMakeLists.txt:");
    EXPECT_EQ(testing::complaint(std::string("client --vsan 7 ") + small), "--vsan 7: the fabric has no VSAN 7\n");
    EXPECT_EQ(testing::complaint("rib --memory --json"),
              "--json alone leaves no room for --memory; --json=FILE does\n");
    EXPECT_EQ(testing::complaint("rib --tables some"),
              "--tables some: \"auto\", \"all\", \"none\" or the number of a VSAN\n");
    EXPECT_EQ(testing::complaint("client"), "ribkit client: FABRIC is required (see ribkit client --help)\n");
    EXPECT_EQ(testing::complaint("routes --bus unix:"),
              "unix:: malformed URL; local:[NAME], unix:DIRECTORY, nats://HOST[:PORT][/FABRIC] or tls://...\n");
    EXPECT_EQ(testing::complaint("lab nowhere.toml"), "nowhere.toml: cannot be read: No such file or directory\n");
    EXPECT_EQ(testing::complaint("lab - < CMakeLists.txt").substr(0, 17), "standard input:1:");
    EXPECT_EQ(testing::complaint(std::string("lab --tables 7 ") + small), "--tables 7: the fabric has no VSAN 7\n");
    EXPECT_EQ(testing::complaint(std::string("lab --tables some ") + small),
              "--tables some: \"auto\", \"all\", \"none\" or the number of a VSAN\n");
    EXPECT_EQ(testing::complaint(std::string("lab --json=/nowhere/x.json ") + small),
              "/nowhere/x.json: cannot be written: No such file or directory\n");
    EXPECT_EQ(testing::complaint("fabric --output /nowhere/x.toml"),
              "/nowhere/x.toml: cannot be written: No such file or directory\n");
    EXPECT_EQ(testing::complaint(std::string("lab --trace --json ") + small),
              "--json alone leaves no room for --trace; --json=FILE does\n");
    EXPECT_EQ(testing::complaint(std::string("lab --memory --json ") + small),
              "--json alone leaves no room for --memory; --json=FILE does\n");
    EXPECT_EQ(testing::complaint("lab"), "ribkit lab: FABRIC is required (see ribkit lab --help)\n");
    EXPECT_EQ(testing::complaint("fabric --shape star"),
              "ribkit fabric: --shape: star not in {core-edge,ring,mesh} (see ribkit fabric --help)\n");
    for (const char *arguments :
         {"", "labs", "lab --message-size 100 x", "lab --tabels all x", "fabric extra", "fabric --switches 1",
          "fabric --switches 240", "fabric --vsans 0", "fabric --shape star", "fabric --seed -1"}) {
        testing::complaint(arguments);
    }
}

TEST(lab, help_is_no_mistake) {
    for (const char *arguments : {"--help", "lab --help", "fabric --help"}) {
        EXPECT_EQ(testing::run_command(arguments).exit_code, 0);
    }
}

} // namespace
} // namespace ribkit::cli
