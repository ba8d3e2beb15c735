// What is there before anything runs and stays until the process has ended: threads may still be in a call then, so
// that nothing may destroy it.
#pragma once

namespace ribkit::platform {

/// Holds one object that is never destroyed; to be `constinit`.
template <typename Object> union lasting {
    constexpr lasting() : it{} {}
    lasting(const lasting &) = delete;
    lasting &operator=(const lasting &) = delete;
    ~lasting() {} // NOLINT(modernize-use-equals-default): it would be deleted

    Object it;
};

} // namespace ribkit::platform
