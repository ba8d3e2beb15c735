// What the parsers of texts are tried with: the kept corpora and the examples.
#pragma once

#include "fuzz/inputs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace ribkit::fuzz {

struct text_parser {
    const char *name; ///< of its corpus, and of its fuzzer
    int (*parse)(const uint8_t *data, size_t size);
    std::vector<const char *> examples; ///< folders of the tree
};

inline const std::vector<text_parser> text_parsers{
    {"fabric", fabric_input, {"examples/fabrics", "fuzz/allocations"}},
    {"faults", faults_input, {"examples/faults"}},
    {"bytes", bytes_input, {"examples/messages"}},
    {"words", words_input, {}},
};

inline std::string file_content(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// In the same order everywhere.
inline std::vector<std::filesystem::path> files_in(const std::string &folder) {
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(RIBKIT_SOURCE_DIR "/" + folder)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

inline std::vector<std::string> seeds_of(const text_parser &parser) {
    std::vector<std::string> texts;
    for (const auto &file : files_in("fuzz/corpus/" + std::string(parser.name))) {
        texts.push_back(file_content(file));
    }
    for (const char *folder : parser.examples) {
        for (const auto &file : files_in(folder)) {
            texts.push_back(file_content(file));
        }
    }
    return texts;
}

} // namespace ribkit::fuzz
