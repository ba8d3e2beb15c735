// What is printed as JSON, read by another reader of it: every kind of message, and names of any bytes.
#include "decode/decoder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>

namespace ribkit::cli {
namespace {

std::string decoded(const decode::kind &what, std::span<const uint8_t> bytes, decode::json_form form) {
    std::string text;
    decode::output out([&](std::string_view piece) { text += piece; });
    decode::json_writer json(out, form);
    decode::decoder(what, nullptr, nullptr, &json).take(bytes, false);
    json.finish();
    out.flush();
    return text;
}

} // namespace

TEST(decode_json, of_every_kind_is_json_and_indented_as_all_json_here) {
    for (const decode::kind &what : decode::kinds()) {
        const std::string text = decoded(what, decode::empty_message(what), decode::json_form::array);
        const auto read = nlohmann::ordered_json::parse(text);
        EXPECT_EQ(read.at(0).at("message"), what.name);
        EXPECT_EQ(nlohmann::ordered_json::parse(decoded(what, decode::empty_message(what), decode::json_form::lines)),
                  read.at(0));
        EXPECT_EQ(nlohmann::json::parse(decode::template_of(what)).at("message"), what.name);
    }
}

TEST(decode_json, of_damaged_messages_is_json) {
    std::mt19937 random(3);
    size_t refused = 0;
    for (int i = 0; i < 20000; ++i) {
        const decode::kind &what = decode::kinds()[random() % decode::kinds().size()];
        std::vector<uint8_t> bytes = decode::empty_message(what);
        for (uint32_t changes = random() % 4; changes != 0 && !bytes.empty(); --changes) {
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random() % 2 == 0 ? random() : random() % 4);
        }
        bytes.resize(random() % 2 == 0 ? bytes.size() : random() % (bytes.size() + 1));
        const auto read = nlohmann::json::parse(decoded(what, bytes, decode::json_form::array));
        refused += !read.empty() && read.back().contains("refused") ? 1 : 0;
    }
    EXPECT_GT(refused, 1000U);
}

TEST(decode_json, names_of_any_bytes_are_escaped) {
    const decode::kind &what = *decode::find_kind("rib_register");
    std::mt19937 random(4);
    for (int i = 0; i < 10000; ++i) {
        std::vector<uint8_t> bytes(88);
        std::string name;
        for (uint32_t left = random() % 79; left != 0; --left) {
            name += static_cast<char>(random() % 3 == 0 ? 0x80 + random() % 0x80 : 1 + random() % 0x7f);
        }
        std::copy(name.begin(), name.end(), bytes.begin() + what.wire->size - 80);
        const auto read = nlohmann::json::parse(decoded(what, bytes, decode::json_form::lines));
        const std::string text = read.at("fields").at("name_text");
        const auto plain = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
        if (std::all_of(name.begin(), name.end(), plain)) {
            EXPECT_EQ(text, name);
        }
        EXPECT_EQ(read.dump().find('\n'), std::string::npos);
    }
}

TEST(decode_json, a_name_of_letters_of_any_language_stands_as_it_is) {
    const decode::kind &what = *decode::find_kind("rib_register");
    for (const std::string name : {"caf\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "a\"b\\c\t\x7f"}) {
        std::vector<uint8_t> bytes(88);
        std::copy(name.begin(), name.end(), bytes.begin() + 8);
        const auto read = nlohmann::json::parse(decoded(what, bytes, decode::json_form::lines));
        EXPECT_EQ(read.at("fields").at("name_text"), name);
    }
    for (const std::string bad : {"\xc3", "\xe2\x82", "\xed\xa0\x80", "\xf8\x88\x80\x80", "\xc0\xaf"}) {
        std::vector<uint8_t> bytes(88);
        std::copy(bad.begin(), bad.end(), bytes.begin() + 8);
        const auto read = nlohmann::json::parse(decoded(what, bytes, decode::json_form::lines));
        EXPECT_EQ(read.at("fields").at("name_text").get<std::string>().substr(0, 3), "\xef\xbf\xbd");
    }
}

} // namespace ribkit::cli
