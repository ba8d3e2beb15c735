// Damaged files: handed to the parsers themselves, many of them, and to the command, some. RIBKIT_ALL=1 tries a hundred
// times as many; RIBKIT_SEED=N draws others.
#include "fuzz/child.h"
#include "fuzz/mutation.h"
#include "fuzz/text_seeds.h"
#include "testing/temporary_directory.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace ribkit::fuzz {
namespace {

constexpr size_t less = RIBKIT_EMULATED ? 10 : 1; // a process takes long to begin there

size_t rounds(size_t usual) { return (std::getenv("RIBKIT_ALL") == nullptr ? usual : 100 * usual) / less; }

uint32_t seed() {
    const char *given = std::getenv("RIBKIT_SEED");
    return given == nullptr ? 1 : static_cast<uint32_t>(std::strtoul(given, nullptr, 10));
}

const uint8_t *bytes(const std::string &text) { return reinterpret_cast<const uint8_t *>(text.data()); }

class texts {
  public:
    explicit texts(const text_parser &parser) : seeds_(seeds_of(parser)), random_(seed()) {}

    std::string next() {
        const std::string &first = seeds_[random_() % seeds_.size()];
        return mutated(first, seeds_[random_() % seeds_.size()], random_);
    }

  private:
    std::vector<std::string> seeds_;
    std::mt19937 random_;
};

TEST(corpus, of_texts_runs) {
    for (const text_parser &parser : text_parsers) {
        for (const std::string &text : seeds_of(parser)) {
            EXPECT_EQ(parser.parse(bytes(text), text.size()), 0);
        }
        EXPECT_EQ(parser.parse(nullptr, 0), 0);
    }
}

TEST(mutated_texts, are_read_or_refused) {
    for (const text_parser &parser : text_parsers) {
        texts all(parser);
        for (size_t left = rounds(1000); left > 0; left--) {
            const std::string text = all.next();
            ASSERT_EQ(parser.parse(bytes(text), text.size()), 0);
        }
    }
}

/// What a command has to do with any file: take it, or refuse it in one line; and need little.
std::string fault_of(const ending &end) {
    constexpr long most_kilobytes = 300 * 1024;
    const auto lines = std::count(end.errors.begin(), end.errors.end(), '\n');
    if (!end.in_time || end.signal != 0) {
        return "no orderly end";
    }
    if (end.most_memory > most_kilobytes) {
        return std::to_string(end.most_memory) + " KiB";
    }
    if (end.exit_code == 0) {
        return lines == 0 ? "" : "success with complaints";
    }
    return end.exit_code == 2 && lines == 1 ? "" : "no refusal in one line";
}

void mutate_file(const char *parser_name, const std::vector<std::string> &command, size_t times) {
    const testing::temporary_directory home;
    const std::string file = home.file("mutated");
    texts all(*std::find_if(text_parsers.begin(), text_parsers.end(),
                            [&](const text_parser &one) { return std::string(one.name) == parser_name; }));
    std::vector<std::string> words{RIBKIT_COMMAND};
    words.insert(words.end(), command.begin(), command.end());
    words.push_back(file);
    for (size_t left = rounds(times); left > 0 && !::testing::Test::HasFailure(); left--) {
        const std::string text = all.next();
        std::ofstream(file, std::ios::binary) << text;
        const ending end = child(words).end();
        EXPECT_EQ(fault_of(end), "") << shown(end) << "\nof the file\n" << text;
    }
}

TEST(mutated_files, of_fabrics_are_taken_or_refused) { mutate_file("fabric", {"lab"}, 100); }

TEST(mutated_files, of_records_are_shown_or_refused) {
    for (const char *kind : {"fcu", "fcm", "fct", "db", "verf_info", "register", "version"}) {
        mutate_file("bytes", {"show", kind}, 20);
    }
}

} // namespace
} // namespace ribkit::fuzz
