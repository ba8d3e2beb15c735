// An output of which a test says when somebody reads it.
#pragma once

#include <array>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace ribkit::testing {

class filled_pipe {
  public:
    /// @param full whether it takes nothing more
    explicit filled_pipe(bool full = true) {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0) {
            return;
        }
        fcntl(ends_[1], F_SETFL, O_NONBLOCK);
        const std::string page(4096, '.');
        while (full && write(ends_[1], page.data(), page.size()) > 0) {
        }
        fcntl(ends_[1], F_SETFL, 0);
    }
    filled_pipe(const filled_pipe &) = delete;
    filled_pipe &operator=(const filled_pipe &) = delete;
    ~filled_pipe() {
        close(ends_[0]);
        close(ends_[1]);
    }

    [[nodiscard]] int way_in() const { return ends_[1]; }

    /// Waits until something is there.
    [[nodiscard]] std::string read_some() const {
        std::array<char, 4096> block{};
        const ssize_t size = read(ends_[0], block.data(), block.size());
        return {block.data(), static_cast<size_t>(size < 0 ? 0 : size)};
    }

    /// What is there.
    [[nodiscard]] std::string read_all() const {
        std::string all;
        fcntl(ends_[0], F_SETFL, O_NONBLOCK);
        for (std::string part = read_some(); !part.empty(); part = read_some()) {
            all += part;
        }
        fcntl(ends_[0], F_SETFL, 0);
        return all;
    }

    void empty() const { static_cast<void>(read_all()); }

  private:
    std::array<int, 2> ends_{-1, -1};
};

} // namespace ribkit::testing
