// Text on its way out: put together in one room, and handed on in large pieces.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <string_view>

namespace ribkit::decode {

class output {
  public:
    using taker = std::function<void(std::string_view)>;
    static constexpr size_t longest_piece = 4096;

    /// @param take called with what has been gathered
    explicit output(taker take) : take_(std::move(take)) {}

    /// Room for a piece, which `commit` takes up to its end.
    char *room() {
        if (gathered_.size() - used_ < longest_piece) {
            flush();
        }
        return gathered_.data() + used_;
    }
    void commit(const char *end) { used_ = static_cast<size_t>(end - gathered_.data()); }

    void append(std::string_view text) {
        while (!text.empty()) {
            const std::string_view piece = text.substr(0, longest_piece);
            commit(std::copy(piece.begin(), piece.end(), room()));
            text.remove_prefix(piece.size());
        }
    }

    /// Hands on what there is.
    void flush() {
        if (used_ != 0) {
            take_({gathered_.data(), used_});
            used_ = 0;
        }
    }

  private:
    taker take_;
    std::array<char, 65536> gathered_;
    size_t used_ = 0;
};

inline char *put(char *to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

} // namespace ribkit::decode
