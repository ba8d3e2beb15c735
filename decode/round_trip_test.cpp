// Every byte comes back: what is shown of a message as JSON, and encoded again, is that message. Tried with every
// golden message, every file of the corpora that a check accepts, and random messages of all kinds; RIBKIT_ALL=1 draws
// a hundred times as many.
#include "codec/witness/golden.h"
#include "codec/witness/naive_check.h"
#include "codec/witness/random_messages.h"
#include "decode/decoder.h"
#include "decode/encoder.h"
#include "decode/numbers.h"
#include "testing/guarded.h"

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>

namespace ribkit::decode {
namespace {

using bytes = std::vector<uint8_t>;

std::string decoded(const kind &what, std::span<const uint8_t> message, json_form form, bool offsets = false) {
    std::string text;
    output out([&](std::string_view piece) { text += piece; });
    json_writer json(out, form, offsets);
    decoder(what, nullptr, nullptr, &json).take(message, false);
    json.finish();
    out.flush();
    return text;
}

/// The messages, or what is wrong.
std::string encoded(std::string_view json, bytes &back) {
    try {
        json_reader in(json);
        encoder([&](const kind &, std::span<const uint8_t> message) {
            back.insert(back.end(), message.begin(), message.end());
        }).read(in);
        return "";
    } catch (const encode_error &error) {
        return error.what();
    }
}

void expect_back(const kind &what, std::span<const uint8_t> message, json_form form) {
    const testing::guarded copy{message};
    const std::string json = decoded(what, copy.bytes(), form);
    bytes back;
    ASSERT_EQ(encoded(json, back), "") << what.name << ": " << json;
    ASSERT_EQ(back, bytes(message.begin(), message.end())) << what.name << ": " << json;
}

/// Whether its check accepts it; then it has to come back.
bool comes_back(const kind &what, std::span<const uint8_t> message) {
    if (what.check(message.data(), static_cast<uint32_t>(message.size()), nullptr) != 0) {
        return false;
    }
    expect_back(what, message, json_form::array);
    expect_back(what, message, json_form::lines);
    return true;
}

size_t rounds() {
    const size_t most = RIBKIT_EMULATED ? 1000 : 10000;
    return std::getenv("RIBKIT_ALL") == nullptr ? most : RIBKIT_EMULATED ? 10 * most : 100 * most;
}

bytes file_bytes(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bytes noise(size_t size, std::mt19937 &random) {
    bytes all(size);
    for (uint8_t &byte : all) {
        byte = static_cast<uint8_t>(random() % 3 == 0 ? 0 : random());
    }
    return all;
}

void put(bytes &to, size_t at, uint32_t word) { witness::store_word(witness::order::big, to.data() + at, word); }

void append(bytes &to, const bytes &more) { to.insert(to.end(), more.begin(), more.end()); }

bytes random_message(const kind &what, std::mt19937 &random);

bytes update(size_t header, size_t count_at, const char *record, std::mt19937 &random) {
    bytes all = noise(header, random);
    const uint32_t most = random() % 4;
    uint32_t records = 0;
    for (uint32_t i = 0; i < most; ++i) {
        const bytes one = random_message(*find_kind(record), random);
        records += one.empty() ? 0 : 1;
        append(all, one);
    }
    put(all, count_at, records);
    return all;
}

bytes envelope(size_t head, std::mt19937 &random) {
    bytes all = noise(head, random);
    const bool known = head == 116 && random() % 2 == 0;
    if (known) {
        put(all, 112, random() % 2 == 0 ? 0x101 : 0x102);
        append(all, update(980, 16, "rib_fcurt", random));
        put(all, 116 + 12, random() % 241);
    } else {
        append(all, noise(random() % 50, random));
    }
    put(all, 4, static_cast<uint32_t>(all.size() - 112));
    return all;
}

bytes bud_image(std::mt19937 &random) {
    bytes all = noise(140, random);
    for (size_t list = 0; list < 32; ++list) {
        const uint32_t blocks = random() % 4 == 0 ? random() % 4 : 0;
        put(all, 12 + 4 * list, blocks);
        append(all, noise(size_t{4} * blocks, random));
    }
    return all;
}

bytes cont_image(std::mt19937 &random) {
    const uint32_t segments = random() % 5;
    bytes all = noise(size_t{12} + 12 * segments, random);
    put(all, 8, segments);
    return all;
}

/// Hops one behind the other, each with its labels.
bytes shown_route(std::mt19937 &random) {
    bytes all = noise(36, random);
    const uint32_t hops = random() % 4;
    put(all, 32, hops);
    for (uint32_t i = 0; i < hops; ++i) {
        const uint32_t labels = random() % 4;
        bytes hop = noise(8 + size_t{4} * labels, random);
        hop[1] = static_cast<uint8_t>(labels);
        append(all, hop);
    }
    return all;
}

bytes any_message(const kind &what, std::mt19937 &random) {
    const std::string_view name = what.name;
    if (name == "rib_fcurt_update") {
        bytes all = update(980, 16, "rib_fcurt", random);
        put(all, 12, random() % 241);
        return all;
    }
    return name == "rib_fcmrt_update"    ? update(16, 12, "rib_fcmrt", random)
           : name == "rib_fclrt_update"  ? update(16, 12, "rib_fclrt", random)
           : name == "rib_cmi_request"   ? envelope(116, random)
           : name == "rib_cmi_answer"    ? envelope(112, random)
           : name == "bud_image"         ? bud_image(random)
           : name == "cont_image"        ? cont_image(random)
           : name == "shown_ucast_route" ? shown_route(random)
           : name == "rib_register" || name == "module" || name == "in_mem"
               ? noise(1560, random)
               : witness::random_message(name, witness::order::big, random);
}

/// As long as it says; empty where its check refuses it.
bytes random_message(const kind &what, std::mt19937 &random) {
    bytes message = any_message(what, random);
    rib_check_report report{};
    message.resize(message_size(what, message, report));
    return message;
}

} // namespace

/// What stands at each path of a document.
void find_places(json_reader &in, const std::string &path, std::map<std::string, std::string> &places) {
    const char begin = in.peek();
    if (begin != '{' && begin != '[') {
        places[path] = in.value();
        return;
    }
    const char end = begin == '{' ? '}' : ']';
    in.expect(begin);
    for (size_t i = 0; in.peek() != end; ++i) {
        if (i != 0) {
            in.expect(',');
        }
        std::string step = std::to_string(i);
        if (begin == '{') {
            step = in.string();
            in.expect(':');
        }
        find_places(in, path + '/' + step, places);
    }
    in.expect(end);
}

uint32_t number_in(std::string_view digits, int base) {
    uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return number;
}

/// Whether what is shown of a field is what stands at its offset; of a byte only some bits may be shown.
bool stands_there(std::span<const uint8_t> message, size_t at, std::string_view shown) {
    const auto left = message.subspan(std::min(at, message.size()));
    const auto is = [&](size_t size, uint32_t number) {
        return left.size() >= size &&
               (size == 1 ? (left[0] & number) == number : load_number(left.data(), size) == number);
    };
    if (!shown.starts_with('"')) {
        return is(4, number_in(shown, 10)) || is(2, number_in(shown, 10)) || is(1, number_in(shown, 10));
    }
    const std::string_view text = shown.substr(1, shown.size() - 2);
    if (text.starts_with("0x")) {
        return is(4, number_in(text.substr(2), 16));
    }
    bool all = left.size() >= text.size() / 2;
    for (size_t i = 0; all && i < text.size() / 2; ++i) {
        const uint32_t byte = number_in(text.substr(2 * i, 2), 16);
        all = text.size() == 2 ? is(1, byte) : left[i] == byte;
    }
    return all;
}

TEST(round_trip, of_every_golden_message) {
    size_t back = 0;
    for (const witness::golden &vector : witness::load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden")) {
        const kind *what = find_kind(vector.message);
        bytes message = vector.source(witness::direction::ntoh, witness::order::big);
        if (what == nullptr) {
            continue;
        }
        rib_check_report report{};
        message.resize(std::max(message_size(*what, message, report), uint32_t{1}));
        back += comes_back(*what, message) ? 1 : 0;
    }
    EXPECT_GT(back, 100U);
}

TEST(round_trip, of_every_file_of_the_corpora_that_a_check_accepts) {
    std::map<std::string, size_t> back;
    for (const char *corpus : {"check", "engine"}) {
        for (const auto &file :
             std::filesystem::directory_iterator(std::string(RIBKIT_SOURCE_DIR "/fuzz/corpus/") + corpus)) {
            const bytes input = file_bytes(file.path());
            const auto message = std::span(input).subspan(std::min(input.size(), size_t{1}));
            for (const kind &what : kinds()) {
                back[what.name] += comes_back(what, message) ? 1 : 0;
            }
        }
    }
    for (const char *never : {"in_mem", "module"}) { // parts of messages, which are longer
        EXPECT_EQ(back[never], 0U) << never;
        back.erase(never);
    }
    for (const auto &[name, messages] : back) {
        EXPECT_NE(messages, 0U) << name;
    }
}

TEST(round_trip, of_random_messages_of_all_kinds) {
    std::mt19937 random(12);
    std::map<std::string, size_t> back;
    size_t all = 0;
    for (size_t tried = 0; all < rounds(); ++tried) {
        const kind &what = kinds()[tried % kinds().size()];
        const bytes message = random_message(what, random);
        const size_t came = !message.empty() && comes_back(what, message) ? 1 : 0;
        back[what.name] += came;
        all += came;
        ASSERT_FALSE(HasFatalFailure());
    }
    for (const auto &[name, messages] : back) {
        EXPECT_NE(messages, 0U) << name;
    }
}

TEST(round_trip, of_every_template) {
    for (const kind &what : kinds()) {
        const bytes message = empty_message(what);
        bytes back;
        EXPECT_EQ(encoded(template_of(what), back), "") << what.name;
        EXPECT_EQ(back, message) << what.name << ": " << template_of(what);
        EXPECT_TRUE(comes_back(what, message)) << what.name;
    }
}

TEST(offsets, are_where_what_is_shown_stands) {
    std::mt19937 random(9);
    std::map<std::string, size_t> compared;
    for (const kind &what : kinds()) {
        for (int i = 0; i < 20; ++i) {
            const bytes message = random_message(what, random);
            if (message.empty()) {
                continue;
            }
            const std::string json = decoded(what, message, json_form::lines, true);
            std::map<std::string, std::string> all;
            json_reader in{std::string_view(json)};
            find_places(in, "", all);
            for (const auto &[path, offset] : all) {
                if (!path.starts_with("/offsets/")) {
                    continue;
                }
                auto shown = all.find("/fields/" + path.substr(9));
                if (shown == all.end() && path.starts_with("/offsets/payload/")) {
                    shown = all.find("/fields/payload/fields/" + path.substr(17));
                }
                ASSERT_NE(shown, all.end()) << path << ": " << json;
                ASSERT_TRUE(stands_there(message, number_in(offset, 10), shown->second)) << path << ": " << json;
                compared[what.name]++;
            }
        }
    }
    EXPECT_EQ(compared.size(), kinds().size());
}

} // namespace ribkit::decode
