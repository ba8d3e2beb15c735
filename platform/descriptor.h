// A file descriptor that closes itself.
#pragma once

#include <unistd.h>
#include <utility>

namespace ribkit::platform {

class descriptor {
  public:
    explicit descriptor(int number = -1) : number_(number) {}
    descriptor(descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    descriptor &operator=(descriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~descriptor() { reset(); }

    [[nodiscard]] int get() const { return number_; }
    [[nodiscard]] bool is_open() const { return number_ >= 0; }

    void reset() {
        if (number_ >= 0) {
            close(std::exchange(number_, -1));
        }
    }

  private:
    int number_;
};

} // namespace ribkit::platform
