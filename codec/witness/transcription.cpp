// Reads transcription.txt.
#include "codec/witness/transcription.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace ribkit::witness {

namespace {

std::optional<transcribed> parse(std::istringstream &words) {
    transcribed field{};
    std::string width;
    if (!(words >> field.offset >> width >> field.kind >> field.name)) {
        return std::nullopt;
    }
    if (width != "-") {
        field.width = std::stoul(width);
    }
    for (std::string detail; words >> detail;) {
        const size_t equals = detail.find('=');
        if (equals == std::string::npos) {
            return std::nullopt;
        }
        field.details[detail.substr(0, equals)] = detail.substr(equals + 1);
    }
    return field;
}

} // namespace

std::map<std::string, std::vector<transcribed>> load_transcription(const std::string &path) {
    std::map<std::string, std::vector<transcribed>> all;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string message;
        if (!(words >> message) || message.starts_with('#') || message == "note") {
            continue;
        }
        const std::optional<transcribed> field = parse(words);
        if (!field) {
            throw std::runtime_error(std::string(path).append(": not a field: ").append(line));
        }
        all[message].push_back(*field);
    }
    return all;
}

} // namespace ribkit::witness
