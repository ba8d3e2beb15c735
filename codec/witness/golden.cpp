// Reads the golden vectors' text.
#include "codec/witness/golden.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace ribkit::witness {

namespace {

constexpr uint8_t filler = 0x5c;

class reader {
  public:
    explicit reader(std::string path) : path_(std::move(path)) {}

    std::vector<golden> read() {
        std::ifstream file(path_);
        for (std::string line; std::getline(file, line);) {
            ++line_;
            take(line.substr(0, line.find('#')));
        }
        if (found_.empty()) {
            fail("no vectors");
        }
        for (const golden &vector : found_) {
            if (!vector.hton && !vector.ntoh) {
                fail("no direction: " + vector.message + ", " + vector.title);
            }
        }
        return std::move(found_);
    }

  private:
    [[noreturn]] void fail(const std::string &why) const {
        throw std::runtime_error(path_ + ":" + std::to_string(line_) + ": " + why);
    }

    void take(const std::string &line) {
        std::istringstream words(line);
        std::string first;
        if (!(words >> first)) {
            return;
        }
        std::string rest;
        std::getline(words >> std::ws, rest);
        if (first == "message") {
            message_ = rest.substr(0, rest.find(' '));
        } else if (first == "case") {
            found_.push_back({});
            found_.back().message = message_;
            found_.back().title = rest;
        } else if (found_.empty()) {
            fail("no case yet");
        } else {
            take_into(found_.back(), first, rest, line);
        }
    }

    void take_into(golden &vector, const std::string &first, const std::string &rest, const std::string &line) {
        if (first == "hton" || first == "ntoh" || first == "both") {
            vector.hton = first != "ntoh";
            vector.ntoh = first != "hton";
            vector.apart = !rest.starts_with("in place");
            vector.in_place = !rest.starts_with("apart");
        } else if (first == "returns") {
            vector.returns = static_cast<uint32_t>(std::stoul(rest, nullptr, 0));
        } else {
            row(vector, line);
        }
    }

    void row(golden &vector, const std::string &line) {
        std::vector<std::vector<golden::cell>> columns;
        const size_t x = line.find('x');
        std::istringstream parts(x == std::string::npos ? line : line.substr(x + 1));
        for (std::string part; std::getline(parts, part, '|');) {
            columns.push_back(cells(part));
        }
        if (columns.size() == 2) {
            columns.push_back(columns[1]);
        }
        if (columns.size() != 3 || columns[0].size() != columns[1].size() || columns[0].size() != columns[2].size()) {
            fail("columns differ");
        }
        const std::array<std::vector<golden::cell> *, 3> forms{&vector.little, &vector.network, &vector.big};
        for (size_t left = x == std::string::npos ? 1 : std::stoul(line); left > 0; --left) {
            for (size_t i = 0; i < 3; ++i) {
                forms.at(i)->insert(forms.at(i)->end(), columns[i].begin(), columns[i].end());
            }
        }
    }

    std::vector<golden::cell> cells(const std::string &text) {
        std::vector<golden::cell> all;
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            const size_t star = word.find('*');
            const std::string byte = word.substr(0, star);
            const size_t times = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1));
            if (byte.size() != 2 || (byte != ".." && byte.find_first_not_of("0123456789abcdef") != std::string::npos)) {
                fail("not a byte: " + word);
            }
            all.insert(all.end(), times,
                       byte == ".." ? golden::kept : static_cast<golden::cell>(std::stoi(byte, nullptr, 16)));
        }
        return all;
    }

    std::string path_;
    size_t line_ = 0;
    std::string message_;
    std::vector<golden> found_;
};

} // namespace

std::vector<uint8_t> golden::source(direction way, order host) const {
    std::vector<uint8_t> bytes;
    for (const cell value : way == direction::hton ? host_form(host) : network) {
        bytes.push_back(value == kept ? filler : static_cast<uint8_t>(value));
    }
    return bytes;
}

void golden::expect(direction way, order host, std::span<uint8_t> destination) const {
    const std::vector<cell> &form = way == direction::hton ? network : host_form(host);
    for (size_t i = 0; i < form.size(); ++i) {
        if (form[i] != kept) {
            destination[i] = static_cast<uint8_t>(form[i]);
        }
    }
}

std::vector<golden> load_goldens(const std::string &path) {
    namespace fs = std::filesystem;
    if (!fs::is_directory(path)) {
        return reader(path).read();
    }
    std::vector<std::string> files;
    for (const fs::directory_entry &entry : fs::directory_iterator(path)) {
        if (entry.path().extension() == ".txt" && entry.path().filename() != "README.txt") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    std::vector<golden> all;
    for (const std::string &file : files) {
        const std::vector<golden> more = reader(file).read();
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

} // namespace ribkit::witness
