// Input is read whole, up to a limit, so that a mistake can be named by its line.
#include "base/input_file.h"

#include "base/input_error.h"
#include "base/text.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace ribkit::base {

namespace {

constexpr size_t largest_input = size_t{64} << 20;

void close_file(std::FILE *file) { std::fclose(file); }

} // namespace

std::string input_title(const std::string &path) { return path == "-" ? "standard input" : path; }

std::string read_input(const std::string &path) {
    const bool named = path != "-";
    const std::unique_ptr<std::FILE, void (*)(std::FILE *)> file(
        named ? std::fopen(path.c_str(), "rb") : stdin, named ? close_file : [](std::FILE *) {});
    std::string content;
    std::array<char, 65536> part{};
    size_t read = 0;
    while (file && content.size() <= largest_input &&
           (read = std::fread(part.data(), 1, part.size(), file.get())) > 0) {
        content.append(part.data(), read);
    }
    if (!file || std::ferror(file.get()) != 0) {
        throw input_error(joined(input_title(path), ": cannot be read: ", std::strerror(errno)));
    }
    if (content.size() > largest_input) {
        throw input_error(joined(input_title(path), ": holds more than ", largest_input, " bytes"));
    }
    return content;
}

} // namespace ribkit::base
