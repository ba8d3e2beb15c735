// What is put aside until it is known to be good: a little in memory, more of it in a file without a name.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace ribkit::base {

class spool {
  public:
    /// Throws std::runtime_error where there is no room for it; so does `hand_on`.
    void add(std::string_view text);
    /// All of it, in pieces.
    void hand_on(const std::function<void(std::string_view)> &take);

  private:
    struct closer {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };

    void put_aside(std::string_view text);

    std::string held_;
    std::unique_ptr<std::FILE, closer> file_;
};

} // namespace ribkit::base
