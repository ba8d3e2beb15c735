// Runs of the command in which an allocation fails: how such a run may end, and how all allocations have their turn.
#pragma once

#include "fuzz/child.h"
#include "testing/temporary_directory.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ribkit::fuzz {

using words = std::vector<std::string>;

/// A run with few allocations.
inline constexpr const char *tiny_fabric = RIBKIT_SOURCE_DIR "/fuzz/allocations/tiny.toml";

enum class how : unsigned char { once, onwards };

std::string content(const std::string &path);

/// Whether numbers are all that two outputs differ in, and with them the width of columns and whether it is one message
/// or several.
bool are_alike(const std::string &one, const std::string &other);

/// What a line about a failure has to say. Over a server the client library may not tell that it lacked memory.
enum class reason : unsigned char { memory, any };

/// What is wrong with the end of a program that lacked memory, whose output is `wanted` otherwise; empty: nothing.
std::string fault_of(const ending &end, const std::string &wanted, reason told = reason::memory);

/// The failing allocation in a child's environment, and what its library says of it.
class failing {
  public:
    explicit failing(uint64_t number = 0, how often = how::once) : number_(number), often_(often) {}

    [[nodiscard]] words settings() const;
    [[nodiscard]] how often() const { return often_; }
    /// Where the memory was asked for, and at the end how often.
    [[nodiscard]] std::string report() const { return content(file_); }
    [[nodiscard]] uint64_t allocations() const;
    /// To repeat it by hand.
    [[nodiscard]] std::string line(const words &command) const;

  private:
    testing::temporary_directory home_;
    std::string file_ = home_.file("report");
    uint64_t number_;
    how often_;
};

/// `ribkit ARGUMENTS`.
words ribkit(const words &arguments);

/// Tries every allocation in turn with `attempt`, which says what went wrong; stops after a few finds. Every 17th, or
/// with RIBKIT_ALL=1 in the environment each of them.
void sweep(uint64_t allocations, const std::function<std::string(const failing &)> &attempt);

/// Of a program that ends by itself, and may write a file.
void sweep_alone(const words &arguments, const std::string &file = "", reason told = reason::memory);

} // namespace ribkit::fuzz
