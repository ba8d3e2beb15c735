// The hand-written transcription of all layouts (transcription.txt, which explains its format), line by line.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ribkit::witness {

struct transcribed {
    size_t offset;
    std::optional<size_t> width; ///< none where a count or a choice decides
    std::string kind, name;
    std::map<std::string, std::string> details;
};

/// The fields of every message and of every entry without a converter of its own, in the order of the file. The line
/// that states the size comes first. @throws std::runtime_error naming the line
std::map<std::string, std::vector<transcribed>> load_transcription(const std::string &path);

} // namespace ribkit::witness
