// Merges, and comparisons: what was named since one began can be told from what was not, without touching the entries
// where it begins. Each begin opens another round, and an entry remembers in which it was named last.
#pragma once

#include <cstdint>
#include <map>

namespace ribkit::fib {

/// The rounds of a table.
class rounds {
  public:
    /// Begins, or begins again, for a VSAN; 0 for every VSAN, which ends what goes on. Throws std::bad_alloc.
    void begin(uint32_t vsan) {
        if (vsan == 0) {
            open_.clear();
        }
        open_[vsan] = current_ + 1;
        current_++;
    }
    /// Whether one goes on that a VSAN is in.
    [[nodiscard]] bool covers(uint32_t vsan) const { return open_.contains(vsan) || open_.contains(0); }
    /// Ends what was begun for just this VSAN, or for every one. @return the round that it began; 0 where none goes on
    uint32_t end(uint32_t vsan) {
        const auto found = open_.find(vsan);
        if (found == open_.end()) {
            return 0;
        }
        const uint32_t began = found->second;
        open_.erase(found);
        return began;
    }
    void abort() { open_.clear(); }

    [[nodiscard]] bool any() const { return !open_.empty(); }
    /// What is named now remembers this.
    [[nodiscard]] uint32_t current() const { return current_; }

  private:
    std::map<uint32_t, uint32_t> open_; ///< where each began, by VSAN
    uint32_t current_ = 0;
};

} // namespace ribkit::fib
