// The comparisons of a table with a module, one after the other: each begins, names what the module shall have, ends,
// and asks for the keys that the module has found different. What changes meanwhile is no difference: it is sent
// anyway, and so is not compared.
#pragma once

#include "rib/modules/module_update.h"
#include "rib/modules/refused_keys.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace ribkit::rib {

template <class Kind> class comparison_course {
  public:
    using key = typename Kind::key;
    enum class step : uint8_t { begin, names, end, ask };

    /// A table is to be compared.
    struct order {
        uint32_t vsan; ///< 0: all
        waiting::id asker;
    };

    /// Throws std::bad_alloc.
    void want(const order &one) { wanted_.push_back(one); }
    /// A request waits no longer.
    void forget(waiting::id asker) noexcept {
        std::erase_if(wanted_, [&](const order &one) { return one.asker == asker; });
        if (now_ && now_->of.asker == asker) {
            close();
        }
    }
    /// Nothing of it will come for now. @param told called with each that waits
    template <class Told> void disappoint(Told told) noexcept {
        for (const order &one : std::exchange(wanted_, {})) {
            told(one.asker);
        }
        if (now_ && !now_->closes) {
            told(now_->of.asker);
            close();
        }
    }
    /// The module's table of a VSAN, or of all, is given anew.
    void table_changes(uint32_t vsan) noexcept {
        if (now_ && (vsan == 0 || now_->of.vsan == 0 || now_->of.vsan == vsan)) {
            begin_again();
        }
    }
    /// The module is another one, or has lost its place: what was named is no matter any more.
    void begin_again() noexcept {
        if (now_ && now_->closes) {
            now_.reset();
        } else if (now_) {
            now_ = course{now_->of, ++last_, Kind::first_of(now_->of.vsan)};
        }
    }

    [[nodiscard]] bool is_wanted() const { return now_ || !wanted_.empty(); }
    [[nodiscard]] bool may_write() const {
        return now_ ? now_->at == stage::begin || has_names() || now_->at == stage::ask ||
                          (now_->at == stage::end && now_->owed == 0)
                    : !wanted_.empty();
    }
    /// Whether one goes on, which changes have to be told to.
    [[nodiscard]] bool goes_on() const { return now_.has_value(); }
    /// A destination changes, or may have. @return false where there are too many: it begins again
    bool touch(const key &where) noexcept {
        try {
            if (now_->touched.size() < most_remembered) {
                now_->touched.insert(named(Kind(), where));
                return true;
            }
        } catch (const std::bad_alloc &) { // as too many
        }
        begin_again();
        return false;
    }
    [[nodiscard]] bool is_touched(const any_key &where) const { return now_->touched.contains(where); }

    /// What may be written next: of the one that goes on, or of the next one, which begins with this.
    step next_step() {
        if (!now_) {
            now_ = course{wanted_.front(), ++last_, Kind::first_of(wanted_.front().vsan)};
            wanted_.erase(wanted_.begin());
        }
        return now_->at == stage::begin ? step::begin
               : has_names()            ? step::names
               : now_->at == stage::end ? step::end
                                        : step::ask;
    }
    // Of the one that goes on.
    [[nodiscard]] const order &now() const { return now_->of; }
    [[nodiscard]] uint32_t number() const { return now_->number; }
    [[nodiscard]] const key &next() const { return now_->next; }
    /// How many destinations were named.
    [[nodiscard]] uint32_t named_count() const { return now_->count; }
    /// Whether it is an answer to the one that goes on.
    [[nodiscard]] bool is_of_now(uint32_t number) const { return now_ && now_->number == number; }
    /// Whether nobody waits for it any more, and the module has only to be told that it is over.
    [[nodiscard]] bool closes() const { return now_->closes; }

    /// Its begin, its end or a question is on its way.
    void sent() noexcept {
        now_->at = now_->at == stage::begin ? stage::beginning : now_->at == stage::end ? stage::ending : stage::asking;
    }
    /// Names of an update that has not arrived, to be told once more.
    [[nodiscard]] const std::vector<key> &lost_names() const { return now_->lost; }
    /// An update that names so many of them from the end is on its way, or none, and those have no need to be named.
    void sent_lost_names(bool is_update, size_t count) noexcept {
        now_->owed += is_update ? 1 : 0;
        now_->lost.resize(now_->lost.size() - count);
    }
    /// They did not arrive. Throws std::bad_alloc.
    void lose_names(const std::vector<key> &names) { now_->lost.insert(now_->lost.end(), names.begin(), names.end()); }
    /// An update with so many names is on its way, or none.
    /// @param next the first destination that was not named; none: that was all
    void sent_names(uint32_t count, const std::optional<key> &next) noexcept {
        now_->owed += count != 0 ? 1 : 0;
        now_->count += count;
        now_->next = next.value_or(Kind::first_of(now_->of.vsan));
        now_->at = next ? stage::names : stage::end;
    }
    /// The module has taken what was said, or will not.
    void settle() noexcept {
        if (now_->at == stage::beginning) {
            now_->at = now_->closes ? stage::end : stage::names;
        } else if (now_->at == stage::ending && now_->closes) {
            now_.reset();
        } else if (now_->at == stage::ending) {
            now_->at = stage::ask;
        } else if (now_->owed != 0) {
            now_->owed--;
        }
    }
    /// The next question is about what follows.
    void ask_from(const key &next) noexcept {
        now_->next = next;
        now_->at = stage::ask;
    }
    /// It is over in the module, too.
    void finish() noexcept { now_.reset(); }
    /// It is over, and the module is to be told so where it has begun there.
    void close() noexcept {
        now_->closes = true;
        now_->touched.clear();
        now_->lost.clear();
        if (now_->at == stage::begin || now_->at == stage::ask || now_->at == stage::asking) {
            now_.reset();
        } else if (now_->at == stage::names) {
            now_->at = stage::end;
        }
    }

  private:
    enum class stage : uint8_t { begin, beginning, names, end, ending, ask, asking };
    struct course {
        order of;
        uint32_t number;
        key next; ///< the first that was not named, or asked for
        stage at = stage::begin;
        bool closes = false;
        size_t owed = 0;    ///< updates with names that were not answered
        uint32_t count = 0; ///< destinations that were named
        std::vector<key> lost{};
        std::set<any_key> touched{};
    };

    [[nodiscard]] bool has_names() const {
        return now_->at == stage::names || (now_->at == stage::end && !now_->lost.empty());
    }

    std::vector<order> wanted_; ///< in their order
    std::optional<course> now_;
    uint32_t last_ = 0; ///< the number of the last one
};

} // namespace ribkit::rib
