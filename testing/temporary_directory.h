// Files of one test: a directory for them, or a single one.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

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

/// A file with this content; gone with the object.
class input_file {
  public:
    explicit input_file(std::string_view content) { std::ofstream(path_, std::ios::binary) << content; }

    [[nodiscard]] const std::string &path() const { return path_; }

  private:
    temporary_directory home_;
    std::string path_ = home_.file("input");
};

} // namespace ribkit::testing
