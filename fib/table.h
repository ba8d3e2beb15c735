// A module's table of one kind, ordered by key: entries are put in whole or not at all.
#pragma once

#include "fib/kinds.h"
#include "fib/rounds.h"
#include "fib/space.h"
#include "fib/word_block.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace ribkit::fib {

template <class Kind> class table {
  public:
    using key = typename Kind::key;
    using values = typename Kind::values;
    using fault = model::fib_fault<key>;

    struct entry {
        typename Kind::fixed what{};
        uint32_t merged = 0;   ///< the round in which it was named last
        uint32_t compared = 0; ///< ... by a comparison, or put in since: the RIB knows it
        word_block words{};
    };
    using entries = std::map<key, entry>;

    /// @param most entries
    /// @param shares what the VSANs have of this table and others; it must last
    table(uint32_t most, vsan_shares &shares) : most_(most), shares_(shares) {}
    table(const table &) = delete;
    table &operator=(const table &) = delete;

    /// Adds an entry, or puts it in place of that of its key. @return 0; RIB_BAD_PARAMETERS where there can be none
    /// such; RIB_HW_FULL, RIB_VSAN_TCAM_FULL or RIB_OUT_OF_MEMORY
    /// @param names whether a merge that goes on has named it
    uint32_t put(const key &where, const values &what, bool names);
    /// Removes an entry, where it is there.
    void remove(const key &where);
    /// Removes the entries of a VSAN, or all of them for VSAN 0. @return how many
    uint32_t remove_all(uint32_t vsan);

    /// Removes the entries of a VSAN, or of every one, that were not named since a merge began.
    /// @return how many; none where no merge goes on
    std::optional<uint32_t> end_merge(uint32_t vsan);

    /// Whether the entry of a key says just that. @return FIB_VERF_...
    uint32_t compare(const key &where, const values &what);
    /// Ends a comparison. @param extra those that were not named, appended
    /// @return how many entries were compared with; none where no comparison goes on. Throws std::bad_alloc
    std::optional<uint32_t> end_comparison(uint32_t vsan, std::vector<fault> &extra);

    [[nodiscard]] const entries &all() const { return entries_; }
    [[nodiscard]] static values read(const entry &held) { return Kind::read(held.what, held.words.words()); }
    [[nodiscard]] uint32_t count() const { return static_cast<uint32_t>(entries_.size()); }

    rounds merges;
    rounds comparisons;

  private:
    using place = typename entries::iterator;

    place seek(const key &where);
    uint32_t open(place hint, const key &where, const values &what, bool names);
    place erase(place gone);
    template <class Which> uint32_t remove_where(uint32_t vsan, Which which);
    [[nodiscard]] place first_of(uint32_t vsan);
    [[nodiscard]] bool is_of(place at, uint32_t vsan) const;

    uint32_t most_;
    vsan_shares &shares_;
    entries entries_;
    place next_ = entries_.end(); ///< of the next entry, where it comes in order
};

extern template class table<unicast>;
extern template class table<multicast>;
extern template class table<label>;

} // namespace ribkit::fib
