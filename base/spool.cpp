// The file is the system's own temporary one: it is gone with the process, however that ends.
#include "base/spool.h"

#include "base/text.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace ribkit::base {

namespace {

constexpr size_t most_held = size_t{4} << 20;

[[noreturn]] void fail() {
    throw std::runtime_error(joined("a temporary file cannot be used: ", std::strerror(errno)));
}

} // namespace

void spool::add(std::string_view text) {
    if (text.size() <= most_held - held_.size()) {
        held_ += text;
        return;
    }
    put_aside(held_);
    held_.clear();
    put_aside(text);
}

void spool::put_aside(std::string_view text) {
    if (!file_) {
        file_.reset(std::tmpfile());
    }
    if (!file_ || std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) {
        fail();
    }
}

void spool::hand_on(const std::function<void(std::string_view)> &take) {
    if (file_) {
        if (std::fflush(file_.get()) != 0 || std::fseek(file_.get(), 0, SEEK_SET) != 0) {
            fail();
        }
        std::array<char, 65536> piece{};
        size_t read = 0;
        while ((read = std::fread(piece.data(), 1, piece.size(), file_.get())) > 0) {
            take({piece.data(), read});
        }
        if (std::ferror(file_.get()) != 0) {
            fail();
        }
    }
    if (!held_.empty()) {
        take(held_);
    }
}

} // namespace ribkit::base
