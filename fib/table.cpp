// Updates mostly come in the order of their keys, so that the next entry's place is tried first.
#include "fib/table.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace ribkit::fib {

template <class Kind> typename table<Kind>::place table<Kind>::seek(const key &where) {
    const bool is_before_next = next_ == entries_.end() || !(next_->first < where);
    const bool is_behind_last = next_ == entries_.begin() || std::prev(next_)->first < where;
    return is_before_next && is_behind_last ? next_ : entries_.lower_bound(where);
}

template <class Kind> uint32_t table<Kind>::put(const key &where, const values &what, bool names) {
    if (!Kind::is_sound(where, what)) {
        return RIB_BAD_PARAMETERS;
    }
    const place at = seek(where);
    if (at == entries_.end() || !(at->first == where)) {
        return open(at, where, what, names);
    }
    try {
        at->second.words.assign(Kind::words_of(what));
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    at->second.what = Kind::fixed_of(what);
    at->second.merged = names ? merges.current() : at->second.merged;
    at->second.compared = comparisons.current();
    next_ = std::next(at);
    return RIB_OK;
}

template <class Kind> uint32_t table<Kind>::open(place hint, const key &where, const values &what, bool names) {
    if (entries_.size() >= most_) {
        return RIB_HW_FULL;
    }
    if (const uint32_t result = shares_.take(where.vsan); result != RIB_OK) {
        return result;
    }
    try {
        entry made{Kind::fixed_of(what), names ? merges.current() : 0, comparisons.current(), {}};
        made.words.assign(Kind::words_of(what));
        next_ = std::next(entries_.emplace_hint(hint, where, std::move(made)));
        return RIB_OK;
    } catch (const std::bad_alloc &) {
        shares_.give_back(where.vsan);
        return RIB_OUT_OF_MEMORY;
    }
}

template <class Kind> void table<Kind>::remove(const key &where) {
    const place at = seek(where);
    if (at != entries_.end() && at->first == where) {
        erase(at);
    }
}

template <class Kind> typename table<Kind>::place table<Kind>::erase(place gone) {
    shares_.give_back(gone->first.vsan);
    next_ = entries_.erase(gone);
    return next_;
}

template <class Kind> typename table<Kind>::place table<Kind>::first_of(uint32_t vsan) {
    return vsan == 0 ? entries_.begin() : entries_.lower_bound(Kind::first_of(vsan));
}

template <class Kind> bool table<Kind>::is_of(place at, uint32_t vsan) const {
    return at != entries_.end() && (vsan == 0 || at->first.vsan == vsan);
}

/// @return how many
template <class Kind> template <class Which> uint32_t table<Kind>::remove_where(uint32_t vsan, Which which) {
    uint32_t removed = 0;
    for (place at = first_of(vsan); is_of(at, vsan);) {
        if (which(at->second)) {
            at = erase(at);
            removed++;
        } else {
            ++at;
        }
    }
    return removed;
}

template <class Kind> uint32_t table<Kind>::remove_all(uint32_t vsan) {
    return remove_where(vsan, [](const entry &) { return true; });
}

template <class Kind> std::optional<uint32_t> table<Kind>::end_merge(uint32_t vsan) {
    const uint32_t began = merges.end(vsan);
    if (began == 0) {
        return {};
    }
    return remove_where(vsan, [began](const entry &one) { return one.merged < began; });
}

template <class Kind> uint32_t table<Kind>::compare(const key &where, const values &what) {
    const place at = seek(where);
    if (at == entries_.end() || !(at->first == where)) {
        return FIB_VERF_NOT_IN_FIB;
    }
    next_ = std::next(at);
    entry &held = at->second;
    held.compared = comparisons.current();
    const auto has = held.words.words();
    const auto wanted = Kind::words_of(what);
    const bool same =
        held.what == Kind::fixed_of(what) && std::equal(has.begin(), has.end(), wanted.begin(), wanted.end());
    return same ? FIB_VERF_CONSISTENT : FIB_VERF_BAD_IN_FIB;
}

template <class Kind> std::optional<uint32_t> table<Kind>::end_comparison(uint32_t vsan, std::vector<fault> &extra) {
    const uint32_t began = comparisons.end(vsan);
    if (began == 0) {
        return {};
    }
    uint32_t count = 0;
    for (place at = first_of(vsan); is_of(at, vsan); ++at, count++) {
        if (at->second.compared < began) {
            extra.push_back({FIB_VERF_NOT_IN_RIB, at->first});
        }
    }
    return count;
}

template class table<unicast>;
template class table<multicast>;
template class table<label>;

} // namespace ribkit::fib
