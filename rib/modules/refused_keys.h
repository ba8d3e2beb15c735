// What a module did not take, and why: it is tried again when there is room. Of each table so much is remembered; where
// there is more, its whole VSAN is sent again.
#pragma once

#include "rib/modules/vsan_set.h"
#include "rib_codes.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <new>
#include <utility>

namespace ribkit::rib {

/// So many destinations at most are remembered as changed, and so many as failed, of a table. Where there are more, the
/// whole VSAN is sent.
inline constexpr size_t most_remembered = 65536;

template <class Kind> class refused_keys {
  public:
    using key = typename Kind::key;

    void add(const key &where, uint32_t code) noexcept {
        try {
            if (codes_.size() < most_remembered) {
                codes_[where] = code;
                return;
            }
        } catch (const std::bad_alloc &) { // as too many
        }
        crowded_.set(where.vsan);
    }
    void forget(const key &where) noexcept { codes_.erase(where); }
    void forget_vsan(uint32_t vsan) noexcept {
        std::erase_if(codes_, [&](const auto &one) { return one.first.vsan == vsan; });
    }
    void clear() noexcept {
        codes_.clear();
        crowded_.reset();
    }

    /// All is tried again. @param again called with each key. @return VSANs to be sent whole
    template <class Again> vsan_set take_all(Again again) noexcept {
        for (const auto &[where, code] : codes_) {
            again(where);
        }
        codes_.clear();
        return std::exchange(crowded_, {});
    }

    /// So many entries of a VSAN have left the module: as many are tried again, its own first.
    /// @param again called with each key
    /// @return a VSAN to be sent whole, as the only one; or none
    template <class Again> vsan_set take_some(uint32_t vsan, size_t count, Again again) noexcept {
        for (auto at = codes_.lower_bound(Kind::first_of(vsan));
             count != 0 && at != codes_.end() && at->first.vsan == vsan; count--) {
            again(at->first);
            at = codes_.erase(at);
        }
        for (auto at = codes_.begin(); count != 0 && at != codes_.end();) {
            if (vsan != 0 && at->second == RIB_VSAN_TCAM_FULL) { // no other VSAN's room helps
                ++at;
                continue;
            }
            again(at->first);
            at = codes_.erase(at);
            count--;
        }
        vsan_set whole;
        if (count != 0 && crowded_.any()) {
            const uint32_t other = crowded_[vsan] ? vsan : first_in(crowded_);
            crowded_.reset(other);
            whole.set(other);
        }
        return whole;
    }

  private:
    std::map<key, uint32_t> codes_;
    vsan_set crowded_; ///< of which more failed than is remembered
};

} // namespace ribkit::rib
