// The latest changes of a table, from which another RIB could follow: a ring of entries with numbers that never end.
// Whoever asks for an entry that was overwritten is too far behind, and reads the table.
#pragma once

#include "model/system.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace ribkit::rib {

using model::log_index;
using model::logged_changes;

template <class Key> class sync_log {
  public:
    using entry = model::logged_change<Key>;

    /// @param first the number of the first entry
    explicit sync_log(uint32_t first = 0) : next_(first) {}

    void add(uint32_t time, uint32_t oper, uint32_t action, const Key &key) {
        ring_[log_index(next_)] = {next_, time, oper, action, key};
        next_++;
        held_ = std::min(held_ + 1, logged_changes);
    }

    /// The number that the next entry will have.
    [[nodiscard]] uint32_t next() const { return next_; }
    /// How many entries there are.
    [[nodiscard]] uint32_t held() const { return held_; }
    /// When the latest change was; 0 where there was none.
    [[nodiscard]] uint32_t time() const { return held_ == 0 ? 0 : ring_[log_index(next_ - 1)].time; }

    /// Whether whoever asks from this number on misses nothing.
    [[nodiscard]] bool reaches(uint32_t sequence) const { return next_ - sequence <= held_; }
    /// The entry of a number that is reached, and is not the next.
    [[nodiscard]] const entry &at(uint32_t sequence) const { return ring_[log_index(sequence)]; }

  private:
    static_assert((uint64_t{1} << 32) % logged_changes == 0, "the ring closes where the numbers do");

    std::array<entry, logged_changes> ring_{};
    uint32_t next_;
    uint32_t held_ = 0;
};

} // namespace ribkit::rib
