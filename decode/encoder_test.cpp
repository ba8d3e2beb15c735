// What encode takes and what it refuses, each refusal with its place in the JSON.
#include "decode/encoder.h"

#include "codec/bytes.h"
#include "decode/byte_buffer.h"
#include "decode/decoder.h"
#include "testing/alloc_failure.h"

#include <gtest/gtest.h>

namespace ribkit::decode {
namespace {

std::vector<uint8_t> encoded(std::string_view json) {
    std::vector<uint8_t> all;
    json_reader in(json);
    encoder([&](const kind &, std::span<const uint8_t> message) {
        all.insert(all.end(), message.begin(), message.end());
    }).read(in);
    return all;
}

std::string refusal_of(std::string_view json) {
    try {
        encoded(json);
        return "";
    } catch (const encode_error &error) {
        return error.what();
    }
}

std::string message(const std::string &name, const std::string &fields) {
    return R"({"message": ")" + name + R"(", "fields": {)" + fields + "}}";
}

uint32_t word(const std::vector<uint8_t> &bytes, size_t at) { return codec::be32(bytes.data() + at); }

const std::string vsan = R"("latency": 500, "word_4": 0)";
const std::string route = R"("uuid": 12, "vsan": 1, "fcid": "0x020000", "mask": "0xff0000")";
const std::string record = R"("fcid": "0x020000", "mask": "0xff0000", "rctl": 0, "rctl_mask": 0, "byte_10": 0,)"
                           R"("bytes_11": "0000000000", "action": 1, "metric": 1, "flag": 0)";

} // namespace

TEST(encoder, takes_an_array_or_one_message_behind_the_other) {
    const std::string one = message("fib_vsan", vsan);
    EXPECT_EQ(encoded(one).size(), 8U);
    EXPECT_EQ(encoded(one + "\n" + one + "\n").size(), 16U);
    EXPECT_EQ(encoded("[" + one + ", " + one + "]\n").size(), 16U);
    EXPECT_EQ(encoded("[]").size(), 0U);
    EXPECT_EQ(encoded(" \n").size(), 0U);
}

TEST(encoder, takes_members_in_any_order) {
    const std::vector<uint8_t> bytes = encoded(
        R"({"fields": {"body": {"sent_heartbeat": 6, "sup_state": 1, "switching_over": 2, "started_stateful": 3,)"
        R"("started_stateless": 4, "standby_existed": 5}, "kind": 1, "word_0": 9}, "message": "rib_in_info"})");
    ASSERT_EQ(bytes.size(), 32U);
    EXPECT_EQ(word(bytes, 0), 9U);
    EXPECT_EQ(word(bytes, 4), 1U);
    EXPECT_EQ(word(bytes, 8), 1U);
    EXPECT_EQ(word(bytes, 28), 6U);
    const std::vector<uint8_t> image = encoded(message(
        "bud_image",
        R"("used": [[7],[],[],[],[],[],[],[],[],[],[],[],[],[],[],[8]], "free":)"
        R"([[],[5, 6],[],[],[],[],[],[],[],[],[],[],[],[],[],[]], "carve_mark": 3, "free_space": 2, "total": 1)"));
    EXPECT_EQ(encoded(R"({"offsets": {"latency": 0}, "fields": {)" + vsan + R"(}, "message": "fib_vsan"})").size(), 8U);
    EXPECT_EQ(refusal_of(R"({"offsets": {} "message": "fib_vsan"})"),
              "[0]: is no JSON: ',' should stand where a string stands");
    ASSERT_EQ(image.size(), 156U);
    EXPECT_EQ(word(image, 16), 2U);
    EXPECT_EQ(word(image, 140), 5U);
    EXPECT_EQ(word(image, 148), 7U);
    EXPECT_EQ(word(image, 152), 8U);
}

TEST(encoder, counts_for_itself) {
    const std::vector<uint8_t> bytes = encoded(message("rib_mcast_route", route + R"(, "intf": [1, 2])"));
    ASSERT_EQ(bytes.size(), 28U);
    EXPECT_EQ(word(bytes, 16), 2U);
    const std::vector<uint8_t> hops = encoded(
        message("rib_fclrt_intf",
                R"("ctrl_pop": 1, "ctrl_use_up": 1, "ctrl_use_ttl": 0, "ctrl_dec_ttl": 1, "intf": 3, "push": [4])"));
    EXPECT_EQ(word(hops, 0), 0x0101a000U);
    EXPECT_EQ(refusal_of(message("rib_mcast_route", route + R"(, "n_intf": 3, "intf": [1, 2])")),
              "[0].fields.n_intf: is 3, but intf has 2 entries");
    EXPECT_EQ(refusal_of(message("rib_fclrt_intf", R"("ctrl": 65536, "intf": 3, "push": [])")),
              "[0].fields.ctrl_push: is 1, but push has 0 entries");
    EXPECT_EQ(refusal_of(message("rib_fclrt_intf", R"("ctrl_pop": 1, "ctrl_push": 2, "ctrl_use_up": 1,)"
                                                   R"("ctrl_use_ttl": 0, "ctrl_dec_ttl": 1, "intf": 3, "push": [4])")),
              "[0].fields.ctrl_push: is 2, but push has 1 entries");
    std::string answer = template_of(*find_kind("rib_cmi_answer"));
    answer.insert(answer.find("\"fields\": {") + 11, "\"length\": 5,");
    EXPECT_EQ(refusal_of(answer), "[0].fields.length: is 5, but payload has 0 bytes");
    EXPECT_EQ(
        refusal_of(message("rib_verf_info", R"("n_key": 1, "type": 0, "generated": 0, "completed": 0, "key": [])")),
        "[0].fields.n_key: is 1, but key has 0 entries");
}

TEST(encoder, takes_a_text_where_the_number_is_left_out) {
    const std::vector<uint8_t> bytes =
        encoded(message("rib_register", R"("uuid_text": "fspf", "distance": 110, "name_text": "f\u00e9\n")"));
    EXPECT_EQ(word(bytes, 0), 12U);
    EXPECT_EQ(word(bytes, 8), 0x66c3a90aU);
    EXPECT_EQ(word(bytes, 12), 0U);
    EXPECT_EQ(refusal_of(message("rib_register", R"("uuid_text": "nobody", "distance": 1, "name_text": "x")")),
              "[0].fields.uuid_text: \"nobody\" names no number, or more than one");
    EXPECT_EQ(refusal_of(message("rib_register",
                                 R"("uuid": 12, "distance": 1, "name_text": ")" + std::string(80, 'x') + "\"")),
              "[0].fields.name_text: has room for 79 bytes, none of them 0");
    EXPECT_EQ(refusal_of(message("rib_register", R"("uuid": 12, "distance": 1, "name_text": "a\u0000b")")),
              "[0].fields.name_text: has room for 79 bytes, none of them 0");
    EXPECT_EQ(word(encoded(message("fib_vsan", R"("latency_text": "500 ms", "word_4": 0)")), 0), 500U);
    for (const char *wrong : {"500 s", "500", "5x ms", "ms", "4294967296 ms", "0500 ms", ""}) {
        const std::string latency = std::string("\"") + wrong + "\"";
        EXPECT_EQ(refusal_of(message("fib_vsan", "\"latency_text\": " + latency + R"(, "word_4": 0)")),
                  "[0].fields.latency_text: " + latency + " names no number, or more than one");
    }
}

TEST(encoder, takes_no_text_for_a_word_that_a_text_does_not_tell_whole) {
    EXPECT_EQ(refusal_of(message("rib_fclrt_intf", R"("ctrl_text": "pop", "intf": 3, "push": [])")),
              "[0].fields.ctrl_text: \"pop\" names no number, or more than one");
}

TEST(encoder, takes_numbers_from_1_as_they_are_shown) {
    const std::string rest = R"(, "word_4": 0, "word_8": 0, "state": 1)";
    EXPECT_EQ(word(encoded(message("fib_state", R"("module_text": "3")" + rest)), 0), 2U);
    for (const char *wrong : {"0", "x", "03"}) {
        EXPECT_EQ(refusal_of(message("fib_state", std::string(R"("module_text": ")") + wrong + "\"" + rest)),
                  std::string("[0].fields.module_text: \"") + wrong + "\" names no number, or more than one");
    }
}

TEST(encoder, takes_a_word_or_all_its_parts) {
    const std::string parts = R"("latency": 0, "word_4_interop_mode_4": 0, "word_4_iod_valid": 1, "word_4_iod": 1,)"
                              R"("word_4_balance": 2, "word_4_state": 1)";
    EXPECT_EQ(word(encoded(message("fib_vsan", parts + R"(, "word_4_vsan": 20)")), 4), 0x03210014U);
    EXPECT_EQ(refusal_of(message("fib_vsan", parts)), "[0].fields.word_4: is missing");
    EXPECT_EQ(refusal_of(message("fib_vsan", vsan + R"(, "word_4_vsan": 1)")),
              "[0].fields.word_4_vsan: is 1, but in word_4 it is 0");
    EXPECT_EQ(refusal_of(message("fib_vsan", vsan + R"(, "word_4_iod": 2)")),
              "[0].fields.word_4_iod: takes a whole number from 0 to 1, not 2");
}

TEST(encoder, refuses_texts_that_disagree) {
    EXPECT_EQ(refusal_of(message("rib_mcast_route", route + R"(, "uuid_text": "mcast", "intf": [])")),
              "[0].fields.uuid_text: is \"mcast\", but uuid is \"fspf\"");
    EXPECT_EQ(refusal_of(message("fib_vsan", vsan + R"(, "word_4_state_text": "active")")),
              "[0].fields.word_4_state_text: is \"active\", but word_4 is \"no change\"");
    EXPECT_EQ(refusal_of(message("rib_fcurt_rsp", R"("word_0": 0, "word_4": 1, "word_4_use": "oper: remove",)"
                                                  R"("word_8": 0, "word_12": 0, "word_16": 0)")),
              "[0].fields.word_4_use: is \"oper: remove\", but word_4 is \"oper: update\"");
}

TEST(encoder, says_where_a_field_is_missing_unknown_or_there_twice) {
    const std::string good = message("fib_vsan", vsan);
    EXPECT_EQ(refusal_of("[" + good + "," + message("fib_vsan", "\"latency\": 1") + "]"),
              "[1].fields.word_4: is missing");
    EXPECT_EQ(refusal_of(good + message("fib_vsan", vsan + R"(, "colour": 1)")), "[1].fields.colour: is unknown here");
    EXPECT_EQ(refusal_of(message("fib_vsan", vsan + R"(, "a\u001b\n": 1)")),
              R"([0].fields.a\x1b\x0a: is unknown here)");
    EXPECT_EQ(refusal_of(message("fib_vsan", vsan + R"(, "latency": 500)")), "[0].fields.latency: stands twice");
    EXPECT_EQ(refusal_of(R"({"message": "fib_vsan", "message": "fib_vsan"})"), "[0].message: stands twice");
    EXPECT_EQ(refusal_of(R"({"fields": {}})"), "[0].message: is missing");
    EXPECT_EQ(refusal_of(R"({"message": "fib_vsan"})"), "[0].fields: is missing");
    EXPECT_EQ(refusal_of(R"({"message": "fib_vzan"})"), "[0].message: no message is called \"fib_vzan\"");
    EXPECT_EQ(refusal_of(R"({"message": "fib_vsan", "fields": {)" + vsan + R"(}, "refused": {}})"),
              "[0].refused: a refused message is not whole");
    EXPECT_EQ(refusal_of(R"({"message": "fib_vsan", "colour": 1})"), "[0].colour: is unknown here");
    EXPECT_EQ(refusal_of(R"({"fields": {}, "fields": {}})"), "[0].fields: stands twice");
    EXPECT_EQ(refusal_of(R"({"message": "fib_vsan", "fields": {)" + vsan + R"(}, "fields": {}})"),
              "[0].fields: stands twice");
    EXPECT_EQ(refusal_of(R"({"message": ")" + std::string(100, 'x') + "\"}"),
              "[0].message: no message is called \"" + std::string(80, 'x') + "...\"");
    EXPECT_EQ(refusal_of("{\"message\": \"\u00e4\x80\"}"), "[0].message: no message is called \"\u00e4\\x80\"");
    EXPECT_EQ(refusal_of(R"({"message": "rib_in_info", "fields": {"word_0": 0, "kind": 3, "body": {}}})"),
              "[0].fields.body: no body follows a message of this kind");
    const std::string inner = R"({"message": "rib_cmi_answer", "fields": {}})";
    EXPECT_NE(refusal_of(message("rib_cmi_request", R"("opcode": 0, "payload": )" + inner))
                  .find("payload.message: an envelope carries no envelope"),
              std::string::npos);
    const std::string update =
        R"("uuid": 12, "vsan": 1, "oper": 1, "version": [], "route": [{)" + record + R"(, "n_hop": 1, "hop": []}])";
    EXPECT_EQ(refusal_of("[" + good + "," + message("rib_fcurt_update", update) + "]"),
              "[1].fields.route[0].n_hop: is 1, but hop has 0 entries");
}

TEST(encoder, says_what_a_number_or_string_should_be) {
    for (const char *wrong : {"4294967296", "-1", "1.0", "1e3", "00", "\"1\"", "true", "null", "{}", "[]",
                              "99999999999999999999999999999999"}) {
        const std::string refused = refusal_of(message("fib_vsan", std::string(R"("word_4": 0, "latency": )") + wrong));
        EXPECT_EQ(refused.substr(0, 67), "[0].fields.latency: takes a whole number from 0 to 4294967295, not ")
            << wrong;
    }
    EXPECT_EQ(refusal_of(message("rib_mcast_route", R"("fcid": 2)")), "[0].fields.fcid: takes a string, not '2'");
    for (const char *wrong : {"020000", "0x", "0x123456789", "0x02000g", "0xg", "0X02", ""}) {
        EXPECT_EQ(refusal_of(message("rib_mcast_route", R"("fcid": ")" + std::string(wrong) + "\"")),
                  "[0].fields.fcid: takes \"0x\" and six or eight digits, not \"" + std::string(wrong) + "\"");
    }
    EXPECT_EQ(refusal_of(message("rib_fcurt", R"("bytes_11": "00")")),
              "[0].fields.bytes_11: takes the digits of 5 bytes");
    EXPECT_EQ(refusal_of(message("rib_fcurt", R"("bytes_11": "000000000000")")),
              "[0].fields.bytes_11: takes the digits of 5 bytes");
    EXPECT_EQ(refusal_of(message("rib_fcurt", R"("bytes_11": 5)")),
              "[0].fields.bytes_11: takes a string of hexadecimal digits, not '5'");
    for (const char *wrong : {"0g", "g0"}) {
        EXPECT_EQ(refusal_of(message("rib_fcurt", std::string(R"("bytes_11": ")") + wrong + "\"")),
                  "[0].fields.bytes_11: takes hexadecimal digits of whole bytes");
    }
    EXPECT_EQ(refusal_of(message("rib_fcurt", R"("bytes_11": "000")")),
              "[0].fields.bytes_11: takes hexadecimal digits of whole bytes");
    EXPECT_EQ(refusal_of(message("fib_port", R"("bundle": 1)")), "[0].fields.bundle: has no bits outside of 128");
}

TEST(encoder, refuses_too_many_entries) {
    const std::string query =
        R"("uuid": 0, "type": 0, "word_8": 0, "cursor": 0, "word_16": 0, "word_20": 0, "requested": 0)";
    EXPECT_EQ(refusal_of(message("rib_fclrt_query", query + R"(, "match": [1, 2, 3])")),
              "[0].fields.match[2]: is one too many: 2 are allowed");
    std::string labels = "0";
    for (int i = 0; i < 255; ++i) {
        labels += ",0";
    }
    EXPECT_EQ(refusal_of(message("rib_fclrt_intf", R"("intf": 0, "push": [)" + labels + "]")),
              "[0].fields.push[255]: is one too many: 255 are allowed");
    EXPECT_EQ(refusal_of(message("in_mem", R"("pool": [])")), "[0].fields.pool: has 0 entries, not 16");
    std::string paths = template_of(*find_kind("fib_fcu_path"));
    const size_t first = paths.find('{', paths.find("\"path\": ["));
    std::string path = paths.substr(first, paths.find('}', first) + 1 - first) + ",";
    for (int i = 0; i < 16; ++i) {
        paths.insert(first, path);
    }
    EXPECT_EQ(refusal_of(paths), "[0].fields.path[16]: is one too many: 16 are allowed");
    EXPECT_EQ(refusal_of(message("rib_mcast_route", route + R"(, "intf": [1, -2])")),
              "[0].fields.intf[1]: takes a whole number from 0 to 4294967295, not -2");
}

TEST(encoder, takes_bytes_that_are_not_carried_where_they_belong) {
    const std::string query =
        R"("uuid": 0, "type": 0, "word_8": 0, "cursor": 0, "word_16": 0, "word_20": 0, "requested": 0)";
    const std::vector<uint8_t> bytes =
        encoded(message("rib_fclrt_query", R"("bytes_32": "00000007", "match": [5], )" + query));
    EXPECT_EQ(word(bytes, 28), 5U);
    EXPECT_EQ(word(bytes, 32), 7U);
    EXPECT_EQ(refusal_of(message("rib_fclrt_query", query + R"(, "match": [], "bytes_32": "00000007")")),
              "[0].fields.bytes_32: is unknown here: the rest begins at 28");
    EXPECT_EQ(refusal_of(message("rib_fclrt_query", R"("bytes_32": "00000007", "bytes_28": "0000000000000007")")),
              "[0].fields.bytes_28: stands twice");
    for (const char *wrong : {"bytes_0", "bytes_", "bytes_028", "bytes_28x", "bytes_4294967296", "octets_28"}) {
        EXPECT_EQ(refusal_of(message("rib_fclrt_query", std::string("\"") + wrong + R"(": "00")")),
                  std::string("[0].fields.") + wrong + ": is unknown here");
    }
    EXPECT_EQ(refusal_of(message("fib_port", R"("bytes_5": "80")")),
              "[0].fields.bytes_5: has bits that the message carries");
}

TEST(encoder, takes_bytes_behind_the_last_hop_from_where_the_hops_end) {
    const std::string shown = R"("uuid": 0, "vsan": 0, "fcid": "0x0", "mask": "0x0", "rctl": 0, "rctl_mask": 0,)"
                              R"("byte_18": 0, "bytes_19": "0000000000", "cost": 0, "flag": 0, "hop": [], )";
    EXPECT_EQ(refusal_of(message("shown_ucast_route", shown + R"("bytes_40": "00")")),
              "[0].fields.bytes_40: is unknown here");
    EXPECT_EQ(refusal_of(message("rib_ucast_route", shown + R"("bytes_40": "00")")),
              "[0].fields.bytes_40: is unknown here: what is not carried begins at 36");
    EXPECT_EQ(refusal_of(message("rib_ucast_route", shown + R"("bytes_36": "00", "bytes_36": "00")")),
              "[0].fields.bytes_36: is unknown here");
}

TEST(encoder, refuses_what_is_no_json) {
    for (const char *wrong :
         {"[", "{", "[,]", "{]", "[{}", "{\"message\"}", "[]]", "[] x", "x", "{\"a", "[{\"fields\": {\"a\": [}}]",
          "{\"message\": \"\\ud800\"}", "{\"message\": \"\\x\"}", "{\"message\": \"a\nb\"}", "\"\""}) {
        const std::string refused = refusal_of(wrong);
        EXPECT_NE(refused, "") << wrong;
        EXPECT_EQ(refused.find('\n'), std::string::npos) << wrong;
    }
    EXPECT_EQ(refusal_of("{\"fields\": " + std::string(100000, '[')),
              "[0].fields: is too deep or too long to be kept until what it depends on is known");
    EXPECT_EQ(refusal_of(std::string(100000, '[')), "[0]: is no JSON: '{' should stand where an array stands");
}

TEST(json_reader, escaped_characters_are_what_they_stand_for) {
    json_reader in(R"("\u0041\u00E9\u20ac\ue000\ud83d\ude00\n\"" "plain")");
    EXPECT_EQ(in.string(), "A\xc3\xa9\xe2\x82\xac\xee\x80\x80\xf0\x9f\x98\x80\n\"");
    EXPECT_EQ(in.string(), "plain");
}

TEST(json_reader, takes_a_string_only_where_it_is_whole) {
    json_reader in(R"( "a"b")");
    EXPECT_FALSE(in.take_string("a\"b"));
    EXPECT_FALSE(in.take_string("b"));
    EXPECT_TRUE(in.take_string("a"));
    json_reader escaped(R"("a\nb" )");
    EXPECT_FALSE(escaped.take_string("a\nb"));
    EXPECT_EQ(escaped.string(), "a\nb");
}

TEST(json_reader, reads_a_number_alike_wherever_it_stands) {
    const auto read = [](const std::string &json, uint32_t most = UINT32_MAX) -> std::string {
        try {
            json_reader in(json);
            return std::to_string(in.number(most));
        } catch (const json_error &error) {
            return error.what();
        }
    };
    const std::string all = "takes a whole number from 0 to 4294967295, not ";
    const std::vector<std::pair<std::string, std::string>> known{
        {"0", "0"},           {"7", "7"},           {"4294967295", "4294967295"}, {"01", all + "01"},
        {"1.5", all + "1.5"}, {"1E3", all + "1E3"}, {"+1", all + "+1"},           {"4294967296", all + "4294967296"}};
    for (const auto &[json, number] : known) {
        EXPECT_EQ(read(json), number) << "at the end";
        EXPECT_EQ(read("\r\n\t " + json + "                    "), number) << "with more behind it";
    }
    EXPECT_EQ(read("8                    ", 7), "takes a whole number from 0 to 7, not 8");
    EXPECT_EQ(read("00000000000000000001"), all + "00000000000000000001");
    EXPECT_EQ(read(std::string(1000, '9')), all + std::string(80, '9'));
}

TEST(json_reader, says_what_is_wrong_with_a_string) {
    const auto refusal = [](std::string_view json) -> std::string {
        try {
            json_reader in(json);
            return std::string(in.string());
        } catch (const json_error &error) {
            return error.what();
        }
    };
    for (const char *half :
         {R"("\ud83d")", R"("\ud83dx")", R"("\ud83d\n")", R"("\ud83d\u0041")", R"("\ud83d\uf000")", R"("\ude00")"}) {
        EXPECT_EQ(refusal(half), "is no JSON: half a character is escaped") << half;
    }
    EXPECT_EQ(refusal(R"("\u00g1")"), "is no JSON: four hexadecimal digits are missing");
    EXPECT_EQ(refusal({"\0\"\"", 3}), "a byte of 0 is no JSON");
    constexpr size_t longest = size_t{1} << 20;
    EXPECT_EQ(refusal("\"\\n" + std::string(longest - 1, 'x') + '"').size(), longest);
    EXPECT_EQ(refusal("\"\\n" + std::string(longest, 'x') + '"'), "is too long a string");
}

TEST(json_reader, keeps_values_as_they_stand) {
    json_reader in(R"({"a\"b": [1, -2.5e3, true, null]} "x" null)");
    EXPECT_EQ(in.value(), R"({"a\"b":[1,-2.5e3,true,null]})");
    EXPECT_EQ(in.value(), R"("x")");
    EXPECT_EQ(in.value(), "null");
    for (const char *missing : {"", "]", "}", ",", ":", "[1, "}) {
        json_reader none{std::string_view(missing)};
        EXPECT_THROW(none.value(), json_error) << missing;
    }
}

TEST(encoder, reads_json_that_comes_in_single_characters) {
    const std::string json = decode::template_of(*find_kind("rib_fcurt_update"));
    size_t next = 0;
    json_reader in([&](char *to, size_t) {
        *to = json[std::min(next, json.size() - 1)];
        return next++ < json.size() ? size_t{1} : size_t{0};
    });
    std::vector<uint8_t> bytes;
    encoder([&](const kind &, std::span<const uint8_t> all) { bytes.assign(all.begin(), all.end()); }).read(in);
    EXPECT_EQ(bytes, empty_message(*find_kind("rib_fcurt_update")));
}

TEST(encoder, refuses_what_the_check_of_the_message_refuses) {
    const std::string hop = R"({"ctrl": 0, "intf": 0, "label": []})";
    const std::string refused = refusal_of(message(
        "rib_fcurt_info", R"("route": [{"uuid": 0, "vsan": 0, "fcid": "0x0", "mask": "0x0", "rctl": 0, "rctl_mask": 0,)"
                          R"("byte_18": 0, "bytes_19": "0000000000", "cost": 0, "flag": 0, "hop": [)" +
                              hop + "," + hop + "," + hop + "," + hop + "," + hop + R"(]},{"uuid": 0, "vsan": 0,)" +
                              R"("fcid": "0x0", "mask": "0x0", "rctl": 0, "rctl_mask": 0, "byte_18": 0,)" +
                              R"("bytes_19": "0000000000", "cost": 0, "flag": 0, "hop": [)" + hop + "]}]"));
    EXPECT_EQ(refused, "[0]: rib_fcurt_info: n_hop at offset 76 is 1, at most 0 allowed");
}

TEST(byte_buffer, keeps_what_it_has_where_it_cannot_grow) {
    byte_buffer bytes;
    bytes.append("kept", 4);
    {
        const testing::failing_allocation none(1, testing::failing_allocation::how::onwards);
        EXPECT_THROW(bytes.extend(100000), std::bad_alloc);
    }
    EXPECT_EQ(bytes.size(), 4U);
    bytes.append(" too", 4);
    EXPECT_EQ(std::memcmp(bytes.data(), "kept too", 8), 0);
}

TEST(json_text, is_cut_into_pieces_at_no_character) {
    std::string text;
    output out([&](std::string_view piece) { text += piece; });
    json_text json(out, true);
    std::string letters;
    for (size_t i = 0; i < 2000; ++i) {
        letters += i % 3 == 0 ? "\u00e4" : i % 3 == 1 ? "\U0001f9c0" : "\u6771";
    }
    for (const char *shift : {"", "x", "xy", "xyz"}) {
        text.clear();
        json.text(shift + letters);
        out.flush();
        EXPECT_EQ(text, "\"" + (shift + letters) + "\"");
    }
}

TEST(json_key, without_a_name_has_none) {
    EXPECT_EQ(json_key().name(), "");
    EXPECT_EQ(json_key("uuid").name(), "uuid");
}

TEST(json_text, tells_whole_numbers_that_are_measured_from_counts) {
    std::string text;
    output out([&](std::string_view piece) { text += piece; });
    json_text json(out, true);
    json.list(std::vector<double>{2, 2.5, 1e300}, [&](double number) { json.real(number); });
    out.flush();
    EXPECT_EQ(text, "[2.0,2.5,1e+300]");
}

TEST(escape, takes_only_what_is_a_character) {
    const std::string none = "\xef\xbf\xbd";
    EXPECT_EQ(as_utf8("\xf4\x8f\xbf\xbf\xee\x80\x80"), "\xf4\x8f\xbf\xbf\xee\x80\x80");
    EXPECT_EQ(as_utf8("\xf4\x90\x80\x80"), none + none + none + none) << "behind the last character";
    EXPECT_EQ(as_utf8("\xed\xa0\x80"), none + none + none) << "half a pair";
    EXPECT_EQ(as_utf8("\xe0\x80\x80"), none + none + none) << "longer than it needs to be";
    EXPECT_EQ(as_utf8("\xf0\x80\x80\x80"), none + none + none + none);
    EXPECT_EQ(as_utf8("\xc3"), none) << "the rest is missing";
}

} // namespace ribkit::decode
