// A directory for the files of one test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace ribkit::testing {

/// Removed with all that is in it.
class temporary_directory {
  public:
    temporary_directory() {
        std::string name = (std::filesystem::temp_directory_path() / "ribkit-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        path_ = name;
    }
    temporary_directory(const temporary_directory &) = delete;
    temporary_directory &operator=(const temporary_directory &) = delete;
    ~temporary_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string file(const std::string &name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

} // namespace ribkit::testing
