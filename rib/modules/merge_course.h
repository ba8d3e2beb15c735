// The merges of a table with a module, one after the other: each begins, names the routes in the order of their keys,
// and ends once all of them were answered; what the module has beside them is gone then.
#pragma once

#include "rib/modules/vsan_set.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ribkit::rib {

template <class Kind> class merge_course {
  public:
    using key = typename Kind::key;
    enum class step : uint8_t { begin, routes, end };

    /// All routes of a VSAN shall come, or of all VSANs where it is 0.
    void want(uint32_t vsan) noexcept { wanted_.set(vsan); }
    void want(const vsan_set &vsans) noexcept { wanted_ |= vsans; }
    void unwant(uint32_t vsan) noexcept { wanted_.reset(vsan); }
    /// Nothing is known of the module: everything shall come, from the beginning.
    void restart() noexcept {
        now_.reset();
        wanted_.reset().set(0);
    }
    /// The module knows of no merge: it begins again.
    /// @param vsan which it was about, as far as that is known elsewhere
    void begin_again(uint32_t vsan) noexcept {
        want(now_ ? now_->vsan : vsan);
        now_.reset();
    }

    /// Those of all VSANs wait, or do not any more.
    void set_held(bool held) noexcept { held_ = held; }
    [[nodiscard]] bool is_held() const { return held_; }

    /// Whether anything is to be merged, now or later.
    [[nodiscard]] bool is_wanted() const { return now_ || wanted_.any(); }
    [[nodiscard]] bool goes_on() const { return now_.has_value(); }
    [[nodiscard]] bool may_write() const {
        return now_ ? now_->at == stage::begin || now_->at == stage::routes ||
                          (now_->at == stage::end && now_->owed == 0)
                    : wanted_.any() && !held_;
    }
    /// Whether changes may be told beside it: its end would remove what was not named in time.
    [[nodiscard]] bool allows_changes() const { return !now_ || now_->at != stage::ending; }
    /// Whether a merge will name a destination if it is there by then.
    [[nodiscard]] bool will_name(const key &where) const {
        if (wanted_[0] || wanted_[where.vsan]) {
            return true;
        }
        const bool has_begun = now_ && now_->at != stage::begin && now_->at != stage::beginning;
        return is_about(where) && (!has_begun || (now_->at == stage::routes && !(where < now_->next)));
    }
    /// Whether one goes on that has passed the destination: whatever is said of it has to be named. One that it will
    /// come to must not be: it may be gone by then.
    [[nodiscard]] bool is_behind(const key &where) const {
        return is_about(where) && (now_->at == stage::end || (now_->at == stage::routes && where < now_->next));
    }

    /// What may be written next: of the one that goes on, or of the next one, which begins with this.
    step next_step() noexcept {
        if (!now_) {
            const uint32_t vsan = first_in(wanted_);
            now_.emplace(merge{vsan, ++last_, stage::begin, Kind::first_of(vsan), 0});
            wanted_ = vsan == 0 ? vsan_set{} : wanted_;
            wanted_.reset(vsan);
        }
        return now_->at == stage::begin ? step::begin : now_->at == stage::routes ? step::routes : step::end;
    }
    // Of the one that goes on.
    [[nodiscard]] uint32_t vsan() const { return now_->vsan; }
    [[nodiscard]] uint32_t number() const { return now_->number; }
    [[nodiscard]] const key &next() const { return now_->next; }
    /// Its begin or its end is on its way.
    void sent_mark() noexcept { now_->at = now_->at == stage::begin ? stage::beginning : stage::ending; }
    /// So many routes are on their way.
    /// @param next the first that is not; none: that was all
    void sent_routes(size_t count, const std::optional<key> &next) noexcept {
        now_->owed += count;
        now_->next = next.value_or(now_->next);
        now_->at = next ? stage::routes : stage::end;
    }

    /// One of the routes of a merge will be owed no more.
    void settle_one(uint32_t number) noexcept {
        if (now_ && now_->number == number) {
            now_->owed--;
        }
    }
    /// The module has answered the begin or the end of a merge.
    void settle_mark(uint32_t number, bool begins) noexcept {
        if (now_ && now_->number == number && begins) {
            now_->at = stage::routes;
        } else if (now_ && now_->number == number) {
            now_.reset();
        }
    }
    /// ... or that was lost.
    void repeat_mark(uint32_t number, bool begins) noexcept {
        if (now_ && now_->number == number) {
            now_->at = begins ? stage::begin : stage::end;
        }
    }

  private:
    enum class stage : uint8_t { begin, beginning, routes, end, ending };
    struct merge {
        uint32_t vsan; ///< 0: all
        uint32_t number;
        stage at;
        key next;    ///< the first that has not been sent
        size_t owed; ///< routes that were not answered
    };

    [[nodiscard]] bool is_about(const key &where) const {
        return now_ && (now_->vsan == 0 || now_->vsan == where.vsan);
    }

    vsan_set wanted_; ///< 0: all of them
    std::optional<merge> now_;
    uint32_t last_ = 0; ///< the number of the last one
    bool held_ = false;
};

} // namespace ribkit::rib
