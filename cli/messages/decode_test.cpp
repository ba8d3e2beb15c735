// The decode command: every example as it is shown, every way to hand bytes over, and all that can be wrong with them.
#include "cli/messages/network_bytes.h"
#include "decode/kinds.h"
#include "testing/golden.h"
#include "testing/run_command.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>

using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

/// What the files of examples/messages hold.
const std::map<std::string, std::string> examples = {
    {"db", "rib_db_info"},        {"db_total", "db_summary"},   {"dm", "dm_entry"},
    {"fcl", "rib_lbl_route"},     {"fcm", "rib_mcast_route"},   {"fcmrt", "rib_mcast_route"},
    {"fct", "rib_topo"},          {"fcu", "shown_ucast_route"}, {"fcurt", "shown_ucast_route"},
    {"in_ha", "in_ha"},           {"in_mem", "in_mem"},         {"node", "fib_node"},
    {"port", "fib_port"},         {"register", "rib_register"}, {"snmp_fcroute", "fcRouteEntry"},
    {"sync_fcl", "rib_sync_fcl"}, {"sync_fcm", "rib_sync_fcm"}, {"sync_fcu", "rib_sync_fcu"},
    {"sync_gbl", "sync_gbl"},     {"sys_port", "module"},       {"verf_fcl", "fib_verf_fcl"},
    {"verf_fcm", "fib_verf_fcm"}, {"verf_fcu", "fib_verf_fcu"}, {"verf_info", "rib_verf_info"},
    {"version", "rib_topo"},      {"vsan", "fib_vsan"}};

std::string path_of(const std::string &example) { return "examples/messages/" + example + ".hex"; }

std::string decoded(const std::string &arguments) {
    const testing::outcome run = testing::run_command("decode " + arguments);
    EXPECT_EQ(run.exit_code, 0) << arguments;
    return run.output;
}

const std::string one_route = "0000000e 00000001 00fffd01 00ffffff 00000001 01010001\n";

} // namespace

TEST(decode, shows_every_example_as_it_always_did) {
    size_t files = 0;
    for (const auto &file : std::filesystem::directory_iterator(RIBKIT_SOURCE_DIR "/examples/messages")) {
        const std::string name = file.path().stem();
        ASSERT_TRUE(examples.contains(name)) << name << ": which message is it?";
        const std::string arguments = examples.at(name) + " " + path_of(name);
        expect_golden("cli/golden/decode/" + name + ".txt", decoded(arguments));
        expect_golden("cli/golden/decode/" + name + ".json", decoded("--json " + arguments));
        ++files;
    }
    EXPECT_EQ(files, examples.size());
}

TEST(decode, the_list_names_every_message) {
    expect_golden("cli/golden/decode_list.txt", decoded("--list"));
    expect_golden("cli/golden/decode_list.json", decoded("--list --json"));
}

TEST(decode, offsets_say_where_fields_stand) {
    const testing::input_file file(one_route);
    EXPECT_EQ(decoded("--offsets mcast_route " + file.path()), "       0  rib_mcast_route\n"
                                                               "       0    uuid                14  mcast\n"
                                                               "       4    vsan                1\n"
                                                               "       8    fcid                0xfffd01\n"
                                                               "      12    mask                0xffffff\n"
                                                               "      16    n_intf              1\n"
                                                               "      20    intf[0]             16842753  fc1/1\n");
}

TEST(decode, offsets_stand_behind_the_fields_in_json) {
    const testing::input_file file(one_route + one_route);
    const std::string lines = decoded("--lines --offsets mcast_route " + file.path());
    EXPECT_NE(
        lines.find(R"("intf":[16842753]},"offsets":{"uuid":0,"vsan":4,"fcid":8,"mask":12,"n_intf":16,"intf":[20]}})"
                   "\n{"),
        std::string::npos)
        << lines;
    const testing::input_file json(decoded("--json --offsets mcast_route " + file.path()));
    EXPECT_EQ(testing::run_command("encode " + json.path()).output.size(), 2 * 24U);
}

TEST(decode, lines_are_a_message_each) {
    const testing::input_file file(one_route + one_route);
    const std::string line = R"({"message":"rib_mcast_route","fields":{"uuid":14,"uuid_text":"mcast","vsan":1,)"
                             R"("fcid":"0xfffd01","mask":"0xffffff","n_intf":1,"intf":[16842753]}})"
                             "\n";
    EXPECT_EQ(decoded("--lines mcast_route " + file.path()), line + line);
    EXPECT_EQ(decoded("--json --lines mcast_route " + file.path()), line + line);
}

TEST(decode, text_and_json_may_be_had_at_once) {
    const testing::input_file file(one_route);
    const temporary_directory home;
    const std::string json = home.file("json");
    EXPECT_EQ(decoded("--json=" + json + " mcast_route " + file.path()), decoded("mcast_route " + file.path()));
    EXPECT_EQ(file_content(json), decoded("--json mcast_route " + file.path()));
}

TEST(decode, bytes_may_be_hexadecimal_raw_or_come_from_standard_input) {
    const std::string expected = decoded("fcm_path /dev/null") + decoded("mcast_route " + path_of("fcm"));
    const std::vector<uint8_t> bytes = network_bytes(file_content(path_of("fcm")), byte_form::hex);
    const testing::input_file raw({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
    for (const std::string &arguments :
         {"rib_mcast_route " + path_of("fcm"), "mcast_route < " + path_of("fcm"), "mcast_route - < " + path_of("fcm"),
          "--hex mcast_route " + path_of("fcm"), "mcast_route " + raw.path(), "--raw mcast_route < " + raw.path()}) {
        EXPECT_EQ(decoded(arguments), expected) << arguments;
    }
}

TEST(decode, lines_of_any_length_are_read) {
    std::string digits;
    for (int i = 0; i < (RIBKIT_EMULATED ? 100000 : 400000); ++i) {
        digits += "0000000200000007";
    }
    const std::string sum = testing::run_line("printf '" + std::string("00000002 00000007' | ") +
                                              RIBKIT_COMMAND " decode vsan | tail -n +2 | md5sum")
                                .output;
    for (const std::string &text : {digits, "  " + digits + "\n", "0x" + digits, "00000002\t00000007 " + digits,
                                    digits + " # " + digits + digits + "\n0000000200000007\n"}) {
        const testing::input_file file(text);
        const testing::outcome run =
            testing::run_line(RIBKIT_COMMAND " decode vsan " + file.path() + " | tail -n 9 | tail -n +2 | md5sum");
        EXPECT_EQ(run.output, sum) << text.substr(0, 20);
        const testing::outcome count =
            testing::run_line(RIBKIT_COMMAND " decode --lines vsan " + file.path() + " | sort -u | wc -l");
        EXPECT_EQ(count.output, "1\n");
    }
    const testing::input_file copies(digits + "*2");
    EXPECT_EQ(testing::run_command("decode vsan " + copies.path() + " 2>&1 | tail -n 1").output,
              copies.path() + ":1: a number of more than 1048576 digits has copies\n");
}

TEST(decode, a_line_without_end_whose_bytes_begin_behind_a_colon_is_refused) {
    const testing::input_file endless("0000: " + std::string(3 << 20, '0'));
    const std::string complaint = endless.path() + ":1: a line of more than 1048576 characters\n";
    EXPECT_EQ(testing::complaint("decode --hex vsan " + endless.path()), complaint);
}

TEST(decode, nothing_is_an_empty_array_or_no_line) {
    EXPECT_EQ(decoded("fcurt /dev/null"), "");
    EXPECT_EQ(decoded("--json fcurt /dev/null"), "[]\n");
    EXPECT_EQ(decoded("--lines fcurt < /dev/null"), "");
    EXPECT_EQ(decoded("--guess --json /dev/null"), "[]\n");
}

TEST(decode, a_refused_message_is_shown_up_to_what_is_wrong) {
    const testing::input_file file(one_route + "0000000e 00000001 00fffd02 00ffffff ffffffff 01010001\n");
    const std::string line = file.path() +
                             ": message 2 at byte 24: rib_mcast_route: n_intf at offset 16 is 4294967295, "
                             "at most 1 allowed\n";
    const testing::outcome text = testing::run_command("decode mcast_route " + file.path() + " 2>&1");
    EXPECT_EQ(text.exit_code, 2);
    EXPECT_EQ(text.output, "rib_mcast_route\n"
                           "  uuid                14  mcast\n"
                           "  vsan                1\n"
                           "  fcid                0xfffd01\n"
                           "  mask                0xffffff\n"
                           "  n_intf              1\n"
                           "  intf[0]             16842753  fc1/1\n"
                           "\n"
                           "rib_mcast_route\n"
                           "  uuid                14  mcast\n"
                           "  vsan                1\n"
                           "  fcid                0xfffd02\n"
                           "  mask                0xffffff\n" +
                               line);
    const testing::outcome json =
        testing::run_command("decode --lines mcast_route " + file.path() + " 2>/dev/null | tail -1");
    EXPECT_EQ(json.output, R"({"message":"rib_mcast_route","fields":{"uuid":14,"uuid_text":"mcast","vsan":1,)"
                           R"("fcid":"0xfffd02","mask":"0xffffff"},)"
                           R"("refused":{"field":"n_intf","offset":16,"found":4294967295,"allowed":1}})"
                           "\n");
    const testing::outcome array =
        testing::run_command("decode --json mcast_route " + file.path() + " 2>/dev/null | tail -1");
    EXPECT_EQ(array.output, "]\n");
}

TEST(decode, a_message_cut_short_is_shown_up_to_the_last_whole_field) {
    const testing::input_file file("000001f4 0321");
    const testing::outcome run = testing::run_command("decode --lines vsan " + file.path() + " 2>&1");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.output,
              R"({"message":"fib_vsan","fields":{"latency":500,"latency_text":"500 ms"},)"
              R"("refused":{"field":"word_4","offset":4,"found":8,"allowed":6}})"
              "\n" +
                  file.path() +
                  ": message 1 at byte 0: fib_vsan: word_4 at offset 4 ends at 8, but the bytes end at 6\n");
}

TEST(decode, an_envelope_is_shown_with_what_it_carries) {
    const std::string head = "00000002 LENGTH 00000000 66737066 00*96 ";
    const auto envelope = [&](const std::string &length, const std::string &content) {
        std::string all = head + content;
        return testing::input_file(all.replace(all.find("LENGTH"), 6, length));
    };
    const std::string query = "0000000c 00000001 00000010 00000001 00020000 00ff0000";
    const input_file known = envelope("0000001c", "00000102 " + query);
    EXPECT_NE(decoded("--lines cmi_request " + known.path())
                  .find(R"("opcode":258,"payload":{"message":"rib_fcurt_query","fields":{"uuid":12,)"),
              std::string::npos);
    const input_file claim = envelope("00000018", "00000103 00000001 00000002 00000003 00000004 00000005");
    EXPECT_NE(decoded("--lines cmi_request " + claim.path())
                  .find(R"("opcode":259,"payload":{"message":"rib_claim","fields":{"settled":1,"started_high":2,)"),
              std::string::npos);
    const input_file unknown = envelope("0000001c", "00000000 " + query);
    EXPECT_NE(decoded("--lines cmi_request " + unknown.path()).find(R"("opcode":0,"payload":"0000000c00000001)"),
              std::string::npos);
    EXPECT_NE(decoded("--lines --carries fcurt_query cmi_request " + unknown.path())
                  .find(R"("payload":{"message":"rib_fcurt_query","fields":{"uuid":12,)"),
              std::string::npos);
    const input_file damaged = envelope("00000008", "00000102 0000000c");
    EXPECT_NE(decoded("--lines cmi_request " + damaged.path()).find(R"("payload":"0000000c")"), std::string::npos)
        << "is not what its operation code says";
    const testing::outcome refused =
        testing::run_command("decode --lines --carries fcurt_query cmi_request " + damaged.path() + " 2>&1");
    EXPECT_EQ(refused.exit_code, 2);
    EXPECT_NE(refused.output.find(R"("payload":{"message":"rib_fcurt_query","fields":{"uuid":12,"uuid_text":"fspf"}}},)"
                                  R"("refused":{"field":"type","offset":120,"found":124,"allowed":120}})"),
              std::string::npos)
        << refused.output;
}

TEST(decode, a_guess_names_whose_checks_accept_the_bytes) {
    const testing::input_file file(one_route);
    const std::string guesses = decoded("--guess " + file.path());
    EXPECT_NE(guesses.find("rib_mcast_route           1 message\n"), std::string::npos) << guesses;
    EXPECT_EQ(guesses.find("rib_fcurt "), std::string::npos) << guesses;
    EXPECT_EQ(decoded("--guess --json < " + file.path()).find("[\n  {\n    \"message\": \""), 0U);
}

TEST(decode, uses_of_our_services_stand_beside_their_words) {
    const testing::input_file file("00000000 00000001 00000014 00000007 00000009");
    const std::string line = decoded("--lines fcurt_rsp " + file.path());
    EXPECT_NE(line.find(R"("word_0":0,"word_0_use":"result: )"), std::string::npos) << line;
    EXPECT_NE(line.find(R"("word_4":1,"word_4_use":"oper: update","word_8":20,"word_8_use":"vsan",)"),
              std::string::npos)
        << line;
}

TEST(decode, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(testing::complaint("decode fcurtt"),
              "fcurtt: no message has this name; near: fcurt, fclrt, fcmrt; ribkit decode --list names "
              "them all\n");
    EXPECT_EQ(testing::complaint("decode"), "ribkit decode: MESSAGE is required (see ribkit decode --list)\n");
    EXPECT_EQ(testing::complaint("decode fcurt nowhere.hex"),
              "nowhere.hex: cannot be read: No such file or directory\n");
    EXPECT_EQ(testing::complaint("decode fcurt examples"), "examples: cannot be read: Is a directory\n");
    EXPECT_EQ(testing::complaint("decode --carries fcurt fcurt /dev/null"),
              "rib_fcurt carries no rib_fcurt: only an envelope carries a message\n");
    EXPECT_EQ(testing::complaint("decode --carries cmi_request cmi_request /dev/null"),
              "rib_cmi_request carries no rib_cmi_request: only an envelope carries a message\n");
    EXPECT_EQ(testing::complaint("decode --guess -- -x"), "ribkit decode: -x is no name of a file (./-x is)\n");
    EXPECT_EQ(testing::complaint("decode --guess --raw /dev/zero"), "/dev/zero: holds more than 67108864 bytes\n");
    const testing::input_file letters("# a route\n0000000c\n0000000g\n");
    EXPECT_EQ(testing::complaint("decode fcurt " + letters.path()),
              letters.path() + ":3: \"0000000g\" is no hexadecimal number\n");
    for (const char *arguments :
         {"--list fcurt", "--guess a b", "--hex --raw fcurt /dev/null", "fcurt a b",
          "--carries nothing cmi_request /dev/null", "--guess --offsets /dev/null", "\"\"", "--guess -x"}) {
        testing::complaint(std::string("decode ") + arguments);
    }
}

} // namespace ribkit::cli
