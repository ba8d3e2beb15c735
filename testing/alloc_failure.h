// Memory that fails on demand: in a test linked with ribkit_alloc_failure, the n-th malloc, calloc or realloc made
// through the linker's wrapped names (the code under test and the test itself, not the C++ library) returns null. With
// ribkit_new_failure the C++ library's, too, fails: std::bad_alloc.
#pragma once

#include <cstddef>

namespace ribkit::testing {

/// While it lives, the n-th allocation (from 1) fails, and with `onwards` every one after it. One at a time.
class failing_allocation {
  public:
    enum class how : unsigned char { once, onwards };

    explicit failing_allocation(size_t n, how often = how::once);
    failing_allocation(const failing_allocation &) = delete;
    failing_allocation &operator=(const failing_allocation &) = delete;
    ~failing_allocation();

    /// Whether the code under test got as far as an allocation that failed.
    [[nodiscard]] bool happened() const;

    /// The size of the allocation that failed last; 0 before one has.
    [[nodiscard]] static size_t size_refused();
};

/// Blocks that were obtained while a failing_allocation lived and have not been given back since. They stay reachable,
/// so that a leak checker does not report what a failed operation keeps by design.
size_t blocks_kept();

} // namespace ribkit::testing
