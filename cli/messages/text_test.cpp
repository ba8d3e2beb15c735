// Every text of every vocabulary through the command, and names that nothing has.
#include "cli/messages/text.h"

#include "base/near_names.h"
#include "base/text.h"
#include "diag/catalogue.h"
#include "testing/golden.h"
#include "testing/run_command.h"

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

std::string printed(const std::string &arguments) {
    const testing::outcome run = testing::run_command("text " + arguments);
    EXPECT_EQ(run.exit_code, 0) << arguments;
    return run.output;
}

} // namespace

TEST(text_command, lists_are_what_they_always_were) {
    expect_golden("cli/golden/text_list.txt", printed("--list"));
    expect_golden("cli/golden/text_list.json", printed("--list --json"));
}

TEST(text_command, every_row_is_what_its_value_prints) {
    for (const vocabulary &words : vocabularies) {
        std::string arguments(words.name);
        std::string expected;
        for (const text_row &row : words.rows) {
            arguments += base::joined(' ', row.value, " 0x", std::hex, row.value);
            expected += base::joined(row.value, "  ", row.text, "\n0x", std::hex, row.value, "  ", row.text, '\n');
        }
        if (!words.rows.empty()) {
            EXPECT_EQ(printed(arguments), expected);
        }
    }
}

TEST(text_command, a_value_without_a_row_has_its_fallback) {
    EXPECT_EQ(printed("rib_uuid 0 12 99"), "0  client 0??\n12  fspf\n99  client 99??\n");
    EXPECT_EQ(printed("fib_d_idx 0xFFFF 0X40 4294967295"), "0xFFFF  ...\n0X40  040\n4294967295  ffffffff\n");
}

TEST(text_command, a_composed_text_is_printed) {
    EXPECT_EQ(printed("rib_fcurt_flag 0 13"), "0  R P N\n13  D V A\n");
    EXPECT_EQ(printed("rib_uuid_to_uc 17 12"), printed("uuid_to_uc 17 12"));
    EXPECT_EQ(printed("rib_uuid_to_uc 12"), "12  FSPF\n");
    EXPECT_EQ(printed("rib_fcurt_flag --list"), "rib_fcurt_flag\n  every       (composed)\n");
}

TEST(text_command, a_vocabulary_is_listed_alone) {
    EXPECT_EQ(printed("--list rib_vsan_bal"),
              "rib_vsan_bal\n  1           SID/DID\n  2           SID/DID/OXID\n  other       %xh??\n");
    EXPECT_EQ(printed("vsan_bal --list"), printed("--list rib_vsan_bal"));
}

TEST(text_command, a_vocabulary_without_values_is_listed) {
    EXPECT_EQ(printed("rib_uuid"), printed("--list rib_uuid"));
    EXPECT_EQ(printed("uuid --json"), printed("--list rib_uuid --json"));
}

TEST(text_command, a_text_has_its_numbers) {
    EXPECT_EQ(printed("rib_uuid fspf"), "12  fspf\n");
    EXPECT_EQ(printed("rib_uuid FSPF 0x27 rib"), "12  fspf\n0x27  rib-config\n10  rib\n") << "the whole text first";
    EXPECT_EQ(printed("rib_uuid 'port man'"), "16  Port Manager\n");
    for (const vocabulary &words : vocabularies) {
        for (const text_row &row : words.rows) {
            const auto found = texts_of(words, {row.text});
            EXPECT_TRUE(std::any_of(found.begin(), found.end(),
                                    [&](const value_text &one) {
                                        return one.value == row.value && one.text == row.text &&
                                               one.written == shown(row.value);
                                    }))
                << words.name << ' ' << row.text;
        }
    }
}

TEST(text_command, a_text_that_several_numbers_have_has_them_all) {
    constexpr text_row rows[] = {{1, "first"}, {2, "First half"}, {0x100, "first"}};
    vocabulary words("rib_order", without_result<rib_uuid_to_uc_str>);
    words.rows = rows;
    const auto numbers = [&](const std::string &wanted) {
        std::vector<std::string> written;
        for (const value_text &found : texts_of(words, {wanted})) {
            written.push_back(found.written);
        }
        return written;
    };
    EXPECT_EQ(numbers("first"), (std::vector<std::string>{"1", "0x100"}));
    EXPECT_EQ(numbers("half"), std::vector<std::string>{"2"});
    EXPECT_EQ(numbers("irst"), (std::vector<std::string>{"1", "2", "0x100"}));
}

TEST(text_command, a_result_of_the_system_has_its_errno_behind_it) {
    EXPECT_EQ(printed("rtn 0x80520016"), "0x80520016  80520016h??  EINVAL: Invalid argument\n");
    EXPECT_EQ(printed("rib_rtn 0x8052006b"),
              "0x8052006b  8052006bh??  ENOTCONN: Transport endpoint is not connected\n");
    EXPECT_EQ(
        printed("rib_rtn 0x80520000 0x8052ffff 0x80530016 0x40520001"),
        "0x80520000  80520000h??\n0x8052ffff  8052ffffh??\n0x80530016  80530016h??\n0x40520001  bad parameters\n");
    EXPECT_EQ(printed("rib_uuid 0x80520016"), "0x80520016  client 2152857622??\n");
    EXPECT_EQ(printed("rtn 0x80520016 --json"),
              "[\n  {\n    \"value\": 2152857622,\n    \"text\": \"80520016h??\",\n    \"errno\": \"EINVAL\",\n"
              "    \"errno_text\": \"Invalid argument\"\n  }\n]\n");
}

TEST(text_command, texts_are_json_too) {
    EXPECT_EQ(printed("--json uuid 0xc 99"), "[\n  {\n    \"value\": 12,\n    \"text\": \"fspf\"\n  },\n"
                                             "  {\n    \"value\": 99,\n    \"text\": \"client 99??\"\n  }\n]\n");
    EXPECT_EQ(printed("--json --list rib_fcurt_flag"),
              "[\n  {\n    \"vocabulary\": \"rib_fcurt_flag\",\n    \"texts\": [],\n    \"other\": null\n  }\n]\n");
}

TEST(text_command, a_prefix_may_be_left_out_where_one_is_meant) {
    EXPECT_EQ(find_vocabulary("uuid"), vocabulary_of("rib_uuid"));
    EXPECT_EQ(find_vocabulary("iod_mode"), vocabulary_of("fib_iod_mode"));
    EXPECT_EQ(find_vocabulary("rib_oper"), vocabulary_of("rib_oper"));
    EXPECT_EQ(find_vocabulary("oper"), nullptr);
    EXPECT_EQ(find_vocabulary("rib_uuid_to_str"), vocabulary_of("rib_uuid"));
    EXPECT_EQ(find_vocabulary("rib_uuid_to_uc_str"), vocabulary_of("rib_uuid_to_uc"));
    EXPECT_EQ(find_vocabulary("iod_mode_to_str"), vocabulary_of("fib_iod_mode"));
    EXPECT_EQ(find_vocabulary("rib_uuid_to_str_"), nullptr);
    EXPECT_EQ(find_vocabulary("_to_str"), nullptr);
    EXPECT_EQ(find_vocabulary("rib_"), nullptr);
    EXPECT_EQ(find_vocabulary(""), nullptr);
}

TEST(text_command, mistakes_are_one_line_and_exit_2) {
    EXPECT_EQ(testing::complaint("text oper 1"),
              "oper: no vocabulary has this name; near: rib_oper, fib_oper; ribkit text --list names them all\n");
    EXPECT_EQ(testing::complaint("text colour 1"),
              "colour: no vocabulary has this name; ribkit text --list names them all\n");
    EXPECT_EQ(testing::complaint("text --list rib_ink"),
              "rib_ink: no vocabulary has this name; near: rib_in; ribkit text --list names them all\n");
    for (const char *value : {"xyz", "0x", "12x", "1.5", "4294967296", "0x100000000", "\"\"", "\" 1\"", "+1", "0x-1"}) {
        const std::string bare = value[0] == '"' ? std::string(value).substr(1, std::string(value).size() - 2) : value;
        EXPECT_EQ(testing::complaint(std::string("text rib_uuid 1 ") + value),
                  '"' + bare + "\" is no number from 0 to 0xffffffff, and no text of rib_uuid\n");
    }
    EXPECT_EQ(testing::complaint("text rib_uuid fspx"),
              "\"fspx\" is no number from 0 to 0xffffffff, and no text of rib_uuid; near: fspf\n");
    EXPECT_EQ(testing::complaint("text rib_fcurt_flag D"),
              "\"D\" is no number from 0 to 0xffffffff, and no text of rib_fcurt_flag\n");
    EXPECT_EQ(testing::complaint("text"),
              "ribkit text: either a VOCABULARY, with or without a VALUE, or --list (see ribkit text "
              "--help)\n");
    EXPECT_EQ(testing::complaint("text '' 12"), testing::complaint("text"));
    for (const char *arguments : {"", "--json", "''", "--list rib_uuid 12", "rib_uuid -1", "--lost"}) {
        testing::complaint(std::string("text ") + arguments);
    }
    EXPECT_EQ(testing::run_command("text --help").exit_code, 0);
}

TEST(near_names, those_that_hold_the_wanted_or_differ_by_two_letters) {
    const std::vector<std::string_view> names = {"abcd", "abxy", "wxyz", "prefix_abcd", "ab"};
    const auto near = [&](std::string_view wanted) { return base::near_names(wanted, names); };
    using found = std::vector<std::string_view>;
    EXPECT_EQ(near("abcd"), (found{"abcd", "abxy", "prefix_abcd", "ab"}));
    EXPECT_EQ(near("bacd"), found{"abcd"}) << "two replaced";
    EXPECT_EQ(near("abcdef"), found{"abcd"}) << "two removed";
    EXPECT_EQ(near("wz"), (found{"wxyz", "ab"})) << "two added";
    EXPECT_EQ(near("zzzzzzzz"), found{});
}

} // namespace ribkit::cli
