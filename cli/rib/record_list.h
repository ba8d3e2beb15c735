// Records of one kind, one behind the other in one piece of memory, since a RIB may have very many.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::cli {

class record_list {
  public:
    void add(std::span<const uint8_t> record) {
        bytes_.insert(bytes_.end(), record.begin(), record.end());
        ends_.push_back(bytes_.size());
    }

    [[nodiscard]] size_t size() const { return ends_.size(); }
    [[nodiscard]] bool empty() const { return ends_.empty(); }
    [[nodiscard]] std::span<const uint8_t> operator[](size_t i) const {
        const size_t begin = i == 0 ? 0 : ends_[i - 1];
        return std::span(bytes_).subspan(begin, ends_[i] - begin);
    }

    bool operator==(const record_list &) const = default;

  private:
    std::vector<uint8_t> bytes_;
    std::vector<size_t> ends_;
};

} // namespace ribkit::cli
