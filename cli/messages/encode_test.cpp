// The encode command: every example there and back, nothing written of what is refused.
#include "cli/messages/network_bytes.h"
#include "testing/golden.h"
#include "testing/run_command.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace ribkit::testing;

namespace ribkit::cli {

TEST(encode, every_example_comes_back) {
    size_t files = 0;
    for (const auto &file : std::filesystem::directory_iterator(RIBKIT_SOURCE_DIR "/examples/messages")) {
        const std::string golden = "cli/golden/decode/" + file.path().stem().string() + ".json";
        const std::vector<uint8_t> bytes = network_bytes(file_content(file.path()), byte_form::hex);
        const testing::outcome back = testing::run_command("encode " + golden);
        EXPECT_EQ(back.exit_code, 0) << golden;
        EXPECT_EQ(back.output, std::string(bytes.begin(), bytes.end())) << golden;
        const testing::outcome hex = testing::run_command("encode --hex < " + golden);
        EXPECT_EQ(network_bytes(hex.output, byte_form::hex), bytes) << golden;
        ++files;
    }
    EXPECT_GT(files, 20U);
}

TEST(encode, a_run_too_long_to_be_held_is_put_aside_and_comes_back) {
    const temporary_directory home;
    const std::string many = home.file("many");
    std::ofstream file(many, std::ios::binary);
    for (uint32_t i = 0; i < 400000; ++i) {
        file << std::string{'\0',
                            '\0',
                            '\0',
                            'a',
                            static_cast<char>(i >> 16),
                            static_cast<char>(i >> 8),
                            static_cast<char>(i),
                            'b',
                            '\1',
                            '\2',
                            '\3',
                            '\4',
                            '\0',
                            '\0',
                            '\0',
                            '\0'};
    }
    file.close();
    const testing::outcome back = testing::run_line(RIBKIT_COMMAND " decode --lines sync_gbl " + many +
                                                    " | " RIBKIT_COMMAND " encode | cmp - " + many);
    EXPECT_EQ(back.exit_code, 0) << back.output;
}

TEST(encode, writes_nothing_where_the_last_of_many_is_wrong) {
    const std::string good = R"({"message": "fib_vsan", "fields": {"latency": 1, "word_4": 2}})"
                             "\n";
    std::string many;
    for (int i = 0; i < 20000; ++i) {
        many += good;
    }
    const testing::input_file file(many + R"({"message": "fib_vsan", "fields": {"latency": 1}})");
    const temporary_directory home;
    const std::string out = home.file("out");
    EXPECT_EQ(testing::complaint("encode -o " + out + " " + file.path()),
              file.path() + ": [20000].fields.word_4: is missing\n");
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(testing::run_command("encode " + file.path() + " 2>/dev/null").output, "");
}

TEST(encode, a_template_encodes) {
    const testing::outcome start = testing::run_command("encode --template fcurt_update");
    EXPECT_EQ(start.exit_code, 0);
    const testing::input_file file(start.output);
    EXPECT_EQ(testing::run_command("encode " + file.path()).output.size(), 1020U);
    EXPECT_EQ(testing::run_command("decode rib_fcurt_update --lines < /dev/null").output, "");
}

TEST(encode, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(testing::complaint("encode nowhere.json"), "nowhere.json: cannot be read: No such file or directory\n");
    EXPECT_EQ(testing::complaint("encode --template fcurtt"),
              "fcurtt: no message has this name; near: fcurt, fclrt, fcmrt; ribkit decode --list names them all\n");
    const testing::input_file control("{\"message\": \"fib_vsan\", \"fields\": {\"\\u001b[31m\": 1}}");
    EXPECT_EQ(testing::complaint("encode " + control.path()),
              control.path() + ": [0].fields.\\x1b[31m: is unknown here\n");
    for (const char *arguments : {"a b", "--template fcurt a", "--template fcurt --hex", "--json a", "\"\""}) {
        testing::complaint(std::string("encode ") + arguments);
    }
    EXPECT_EQ(testing::run_command("encode /dev/null").exit_code, 0);
    EXPECT_EQ(testing::run_command("encode /dev/null").output, "");
}

} // namespace ribkit::cli
