// What a module's FIB is doing: a function of what has happened to it, so that no order of events leaves it in a state
// that is not true.
#pragma once

#include "model/fib.h"

namespace ribkit::fib {

class condition {
  public:
    /// The RIB has heard of the module and answered.
    void reach() { reached_ = has_been_reached_ = true; }
    /// The RIB cannot be reached any more.
    void lose() { reached_ = false; }
    /// Entries came in, other than by a merge that goes on, or the last merge has ended.
    void load() { loaded_ = true; }
    void set_upgrading(bool upgrading) { upgrading_ = upgrading; }
    void exit() { exited_ = true; }

    [[nodiscard]] bool is_upgrading() const { return upgrading_; }

    /// @param merges whether a merge goes on
    /// @param compares ... a comparison
    [[nodiscard]] model::fib_state now(bool merges, bool compares) const {
        using enum model::fib_state;
        if (exited_ || upgrading_) {
            return exited_ ? exited : upgrading;
        }
        if (!reached_) {
            return has_been_reached_ ? isolated : offline;
        }
        return merges ? loading : compares ? verifying : loaded_ ? active : ready;
    }

  private:
    bool reached_ = false;
    bool has_been_reached_ = false;
    bool loaded_ = false;
    bool upgrading_ = false;
    bool exited_ = false;
};

} // namespace ribkit::fib
