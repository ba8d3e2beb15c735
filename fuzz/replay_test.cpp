// The kept corpora, without a fuzzer: every file is run once. An input that breaks something ends the test program.
#include "fuzz/inputs.h"
#include "fuzz/openers.h"
#include "fuzz/quiet.h"
#include "fuzz/seeds.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace {

namespace fs = std::filesystem;
using ribkit::fuzz::byte_vector;

std::vector<fs::path> corpus(const std::string &name) {
    std::vector<fs::path> files;
    for (const fs::directory_entry &entry : fs::directory_iterator(RIBKIT_SOURCE_DIR "/fuzz/corpus/" + name)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

byte_vector content(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(corpus, of_the_checks_runs) {
    const ribkit::fuzz::quiet silence;
    std::set<size_t> openers;
    for (const fs::path &file : corpus("check")) {
        const byte_vector input = content(file);
        EXPECT_EQ(check_input(input.data(), input.size()), 0) << file;
        openers.insert(input.empty() ? 0 : input[0] % ribkit::fuzz::openers().size());
    }
    EXPECT_EQ(openers.size(), ribkit::fuzz::openers().size())
        << "build/release/fuzz/write_seeds fuzz/corpus writes the missing ones";
}

TEST(corpus, of_the_engine_runs) {
    for (const fs::path &file : corpus("engine")) {
        const byte_vector input = content(file);
        EXPECT_EQ(engine_input(input.data(), input.size()), 0) << file;
    }
}

TEST(corpus, of_messages_by_name_runs) {
    for (const fs::path &file : corpus("decode")) {
        const byte_vector input = content(file);
        EXPECT_EQ(decode_input(input.data(), input.size()), 0) << file;
    }
    for (const fs::path &file : corpus("encode")) {
        const byte_vector input = content(file);
        EXPECT_EQ(encode_input(input.data(), input.size()), 0) << file;
    }
}

TEST(corpus, is_small) {
    size_t files = 0;
    uintmax_t bytes = 0;
    for (const char *name : {"check", "engine", "decode", "encode"}) {
        for (const fs::path &file : corpus(name)) {
            bytes += fs::file_size(file);
            ++files;
        }
    }
    EXPECT_LT(files, 450U);
    EXPECT_LT(bytes, 400000U);
}

TEST(inputs, of_no_byte_are_nothing) {
    EXPECT_EQ(check_input(nullptr, 0), 0);
    EXPECT_EQ(engine_input(nullptr, 0), 0);
    EXPECT_EQ(decode_input(nullptr, 0), 0);
    EXPECT_EQ(encode_input(nullptr, 0), 0);
}

} // namespace
