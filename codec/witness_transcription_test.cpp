// The transcription against the naive converters: it is played field by field, and has to say the same.
#include "codec/witness/naive.h"
#include "codec/witness/random_messages.h"
#include "codec/witness/transcription.h"

#include <gtest/gtest.h>

namespace {

using namespace ribkit::witness;

constexpr unsigned scale = RIBKIT_EMULATED ? 1 : 10;

const std::map<std::string, std::vector<transcribed>> &layouts() {
    static const auto all = load_transcription(RIBKIT_SOURCE_DIR "/codec/witness/transcription.txt");
    return all;
}

uint32_t hexadecimal(const std::string &text) { return static_cast<uint32_t>(std::stoul(text, nullptr, 16)); }

/// A number of the message that a detail such as "12.word" names, as its loops and choices see it.
number named_number(const transfer &m, const std::string &where) {
    return where.ends_with(".second_byte") ? m.second_byte(std::stoul(where)) : m.count(std::stoul(where));
}

/// Plays the lines of one message.
class player {
  public:
    explicit player(transfer outermost) : outermost_(outermost) {}

    /// @return the size of what was converted
    size_t play(const std::string &message, transfer m) {
        size_t end = 0;
        for (const transcribed &field : layouts().at(message)) {
            if (field.kind == "size") {
                continue;
            }
            end = field.offset + play_field(m, field);
        }
        return end;
    }

  private:
    size_t play_field(transfer &m, const transcribed &field) {
        if (field.kind == "list") {
            return play_list(m, field);
        }
        if (field.kind == "choice") {
            return play_choice(m, field);
        }
        play_plain(m, field);
        return *field.width;
    }

    void play_plain(transfer &m, const transcribed &field) {
        if (field.kind == "word") {
            m.word(field.offset);
        } else if (field.kind == "half") {
            m.half(field.offset);
        } else if (field.kind == "bytes") {
            m.bytes(field.offset, *field.width);
        } else if (field.kind == "masked") {
            const uint32_t mask = hexadecimal(field.details.at("mask"));
            m.put_byte(field.offset, static_cast<uint8_t>(m.source_byte(field.offset) & mask));
        } else if (field.kind == "zero") {
            m.zero(field.offset, *field.width);
        } else if (field.kind == "name") {
            play_name(m, field);
        } else if (field.kind == "record") {
            play(field.details.at("of"), m.at(field.offset));
        } else {
            ASSERT_TRUE(field.kind == "gap" || field.kind == "translated") << field.kind;
        }
    }

    static void play_name(transfer &m, const transcribed &field) {
        m.zero(field.offset, *field.width);
        for (size_t i = 0; i < std::stoul(field.details.at("most")) && m.source_byte(field.offset + i) != 0; ++i) {
            m.bytes(field.offset + i, 1);
        }
    }

    size_t play_list(transfer &m, const transcribed &field) {
        const std::string &count = field.details.at("count");
        const bool counted = count.find('.') != std::string::npos;
        const size_t entries = counted ? named_number(m, count)() : std::stoul(count);
        const std::string &stride = field.details.at("stride");
        size_t at = field.offset;
        for (size_t i = 0; i < entries; ++i) {
            const size_t size = play_entry(m, at, field.details.at("of"), stride);
            at += stride == "own" ? size : std::stoul(stride);
        }
        if (field.width && at < field.offset + *field.width) {
            m.zero(at, field.offset + *field.width - at);
        }
        return std::max(at - field.offset, field.width.value_or(0));
    }

    size_t play_entry(transfer &m, size_t at, const std::string &what, const std::string &stride) {
        if (what == "word") {
            m.word(at);
            return 4;
        }
        if (what == "bytes") {
            m.bytes(at, std::stoul(stride));
            return 4;
        }
        return play(what, m.at(at));
    }

    size_t play_choice(transfer &m, const transcribed &field) {
        std::string by = field.details.at("by");
        const size_t colon = by.find(':');
        const transfer &holder = colon == std::string::npos ? m : outermost_;
        by = colon == std::string::npos ? by : by.substr(colon + 1);
        const uint32_t word = holder.count(std::stoul(by))();
        const std::string what = chosen(field, by.ends_with("low_half") ? word & 0xffff : word);
        if (what == "nothing") {
            return 0;
        }
        if (what.starts_with("bytes")) {
            m.bytes(field.offset, std::stoul(what.substr(5)));
            return std::stoul(what.substr(5));
        }
        const size_t size = play(what, m.at(field.offset));
        return field.width.value_or(size);
    }

    static std::string chosen(const transcribed &field, uint32_t value) {
        for (const auto &[condition, what] : field.details) {
            const bool bits = condition.starts_with('&') && (value & hexadecimal(condition.substr(1))) != 0;
            if (bits || condition == std::to_string(value)) {
                return what;
            }
        }
        return field.details.at("else");
    }

    transfer outermost_;
};

TEST(transcription, has_every_message_and_no_hole) {
    for (const pair &model : pairs()) {
        EXPECT_EQ(layouts().count(std::string(model.name)), 1U) << model.name;
    }
    for (const auto &[message, fields] : layouts()) {
        ASSERT_EQ(fields.front().kind, "size") << message;
        size_t end = 0;
        bool open = false;
        for (size_t i = 1; i < fields.size(); ++i) {
            EXPECT_EQ(fields[i].offset, end) << message << ' ' << fields[i].name;
            EXPECT_FALSE(open) << message << ": an open list must come last";
            end += fields[i].width.value_or(0);
            open = !fields[i].width;
        }
        EXPECT_EQ(fields.front().width.value_or(0), end) << message;
    }
}

/// Order matters where counts exceed their room, and not everything that is sent is received: sending from one buffer
/// into another, in both byte orders, is what is played.
TEST(transcription, says_what_the_naive_converters_send) {
    std::mt19937 random(13);
    for (const pair &model : pairs()) {
        for (unsigned round = 0; round < 20 * scale; ++round) {
            const order host = round % 2 == 0 ? order::little : order::big;
            const std::vector<uint8_t> message = random_message(model.name, host, random);
            std::vector<uint8_t> expected(message.size(), 0xa5);
            std::vector<uint8_t> played(message.size(), 0xa5);
            convert(model, direction::hton, host, message, expected);
            buffers memory{message, played};
            const transfer m(direction::hton, host, memory);
            player(m).play(std::string(model.name), m);
            if (layouts().at(std::string(model.name))[1].kind == "translated") {
                std::copy_n(expected.begin(), 4, played.begin());
            }
            ASSERT_EQ(played, expected) << model.name << ", round " << round;
        }
    }
}

} // namespace
