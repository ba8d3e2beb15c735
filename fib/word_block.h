// The words of an entry, in a block of their own.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

namespace ribkit::fib {

class word_block {
  public:
    /// Puts other words in place of these. Throws std::bad_alloc, and nothing has changed then.
    void assign(std::span<const uint32_t> words) {
        if (words.size() != size_) {
            block_ = std::make_unique_for_overwrite<uint32_t[]>(words.size());
            size_ = static_cast<uint32_t>(words.size());
        }
        std::copy(words.begin(), words.end(), block_.get());
    }
    [[nodiscard]] std::span<const uint32_t> words() const { return {block_.get(), size_}; }

  private:
    std::unique_ptr<uint32_t[]> block_;
    uint32_t size_ = 0;
};

} // namespace ribkit::fib
