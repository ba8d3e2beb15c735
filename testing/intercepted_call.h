// System calls that fail on demand, or before which something happens: in a test linked with ribkit_call_failure the
// calls that the code under test makes through the linker's wrapped names are looked at first.
#pragma once

#include <functional>
#include <string_view>

namespace ribkit::testing {

/// While it lives, an action runs before each call of this function, on whichever thread: what it returns is the errno
/// that the call fails with; 0 lets it go on. One at a time.
class intercepted_call {
  public:
    using action = std::function<int()>;

    intercepted_call(std::string_view function, action before);

    /// So many calls fail with this errno, the others go on.
    intercepted_call(std::string_view function, int error, int times = 1);

    intercepted_call(const intercepted_call &) = delete;
    intercepted_call &operator=(const intercepted_call &) = delete;
    ~intercepted_call();

    /// Calls that were made.
    [[nodiscard]] static int calls();
};

} // namespace ribkit::testing
