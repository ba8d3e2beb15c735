// Random 32-bit words that are the same with every C++ library; for tests and benchmarks.
#pragma once

#include <cstdint>
#include <random>

namespace ribkit::mem {

class random_words {
  public:
    explicit random_words(uint32_t seed) : engine_(seed) {}
    uint32_t operator()() { return static_cast<uint32_t>(engine_()); }

  private:
    std::mt19937 engine_;
};

} // namespace ribkit::mem
