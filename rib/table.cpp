// One route at a time: found or given its place, ranked among the candidates, told.
#include "rib/table.h"

#include "rib/candidates.h"
#include "rib/naive/table_sweeps.h"
#include "rib_codes.h"

#include <iterator>
#include <new>

namespace ribkit::rib {

namespace {

constexpr uint32_t records_a_chunk = 128;

uint32_t first_failure(uint32_t first, uint32_t second) { return first != RIB_OK ? first : second; }

uint8_t domain_of(const model::destination &to) { return static_cast<uint8_t>(to.fcid >> 16); }

} // namespace

template <class Kind>
table<Kind>::table(hardware &behind, effects *out)
    : behind_(behind), out_(out), records_(pool_create(records_a_chunk, sizeof(record))) {
    if (records_ == nullptr) {
        throw std::bad_alloc();
    }
}

template <class Kind> table<Kind>::~table() {
    for (const auto &[where, first] : index_) {
        Kind::forget(first->what); // a kind that has something to forget has no candidates
    }
}

template <class Kind> uint32_t table<Kind>::put(turn &by, const key &where, const values &what, bool marks) {
    const place at = seek(where);
    const bool is_there = at != index_.end() && at->first == where;
    if (record *mine = is_there ? own(at, by) : nullptr; mine != nullptr) {
        return replace(by, at, *mine, what, marks);
    }
    if (is_there && !Kind::has_candidates) {
        return RIB_OBJECT_OWNED;
    }
    if (!by.sender->has_room()) {
        return RIB_HW_FULL;
    }
    return is_there ? join(by, at, what, marks) : open(by, at, where, what, marks);
}

template <class Kind> uint32_t table<Kind>::remove(turn &by, const key &where) {
    place at = index_.find(where);
    record *mine = at == index_.end() ? nullptr : own(at, by);
    return mine == nullptr ? missing(at) : remove_at(by, at, *mine);
}

template <class Kind> uint32_t table<Kind>::alter(turn &by, const key &where, uint32_t action, const values &what) {
    if constexpr (Kind::has_candidates) {
        const place at = index_.find(where);
        record *mine = at == index_.end() ? nullptr : own(at, by);
        if (mine == nullptr) {
            return missing(at);
        }
        Kind::alter(mine->what, action, what);
        rank(by, at, *mine, mine, action);
        return RIB_OK;
    } else {
        return RIB_BAD_PARAMETERS;
    }
}

template <class Kind> void table<Kind>::rank_again(uint32_t uuid, uint32_t now) {
    for (auto at = index_.begin(); rivals_ != 0 && at != index_.end(); ++at) {
        for (record *one = at->second; at->second->next != nullptr && one != nullptr; one = one->next) {
            if (one->of->uuid == uuid) {
                turn by{at->first.vsan, one->of, cause::change, 0, now, behind_.find(at->first.vsan)};
                rank(by, at, *one, nullptr, 0);
                break;
            }
        }
    }
}

template <class Kind> auto table<Kind>::find(const key &where, uint32_t uuid) const -> const record * {
    const auto at = index_.find(where);
    const record *one = at == index_.end() ? nullptr : at->second;
    while (one != nullptr && one->of->uuid != uuid) {
        one = one->next;
    }
    return one;
}

template <class Kind> uint32_t table<Kind>::count() const { return static_cast<uint32_t>(index_.size()) + rivals_; }

/// As lower_bound. Routes come in the order of their keys mostly, so that the place behind the last is tried first.
template <class Kind> auto table<Kind>::seek(const key &where) -> place {
    const bool is_behind = next_ == index_.begin() || std::prev(next_)->first < where;
    const bool is_before = next_ == index_.end() || !(next_->first < where);
    const place at = is_behind && is_before ? next_ : index_.lower_bound(where);
    next_ = at != index_.end() && at->first == where ? std::next(at) : at;
    return at;
}

template <class Kind> auto table<Kind>::own(place at, const turn &by) const -> record * {
    record *one = at->second;
    while (one != nullptr && one->of != by.sender) {
        one = one->next;
    }
    return one;
}

/// Why the sender has no route there.
template <class Kind> uint32_t table<Kind>::missing(place at) const {
    return at == index_.end() ? RIB_NO_ENTRY : RIB_OBJECT_OWNED;
}

/// The first route of a destination. The place in the index comes first: once there is a route, nothing can fail.
template <class Kind>
uint32_t table<Kind>::open(turn &by, place hint, const key &where, const values &what, bool marks) {
    place at;
    try {
        at = index_.emplace_hint(hint, where, nullptr);
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    record *made = nullptr;
    uint32_t result = make(by, where, what, made);
    if (result == RIB_OK) {
        result = behind_.positions.take(by.use->segment, *made);
        if (result != RIB_OK) {
            Kind::give_back(behind_, made->what);
            pool_free(records_.get(), made);
        }
    }
    if (result != RIB_OK) {
        index_.erase(at);
        return result;
    }
    at->second = made;
    if constexpr (Kind::id == table_id::unicast) {
        by.use->domains.add(domain_of(where.to));
    }
    count(by, 1);
    made->what.marked = marks;
    tell(by, where, *made, Kind::action_adding(where));
    return RIB_OK;
}

/// One more candidate.
template <class Kind> uint32_t table<Kind>::join(turn &by, place at, const values &what, bool marks) {
    record *made = nullptr;
    const uint32_t result = make(by, at->first, what, made);
    if (result != RIB_OK) {
        return result;
    }
    record *behind_first = at->second->next;
    made->next = behind_first;
    at->second->next = made;
    rivals_++;
    count(by, 1);
    made->what.marked = marks;
    rank(by, at, *made, made, Kind::action_adding(at->first));
    return RIB_OK;
}

/// A route without a place.
template <class Kind> uint32_t table<Kind>::make(turn &by, const key &where, const values &what, record *&made) {
    if (by.use == nullptr) {
        if (const uint32_t result = behind_.enter(by.vsan, by.use); result != RIB_OK) {
            return result;
        }
    }
    made = static_cast<record *>(pool_alloc(records_.get()));
    if (made == nullptr) {
        return RIB_OUT_OF_MEMORY;
    }
    static_cast<placed &>(*made) = {by.vsan, Kind::destination_of(where), no_position};
    made->of = by.sender;
    const uint32_t result = Kind::store(behind_, made->what, what);
    if (result != RIB_OK) {
        pool_free(records_.get(), made);
    }
    return result;
}

template <class Kind> uint32_t table<Kind>::replace(turn &by, place at, record &mine, const values &what, bool marks) {
    const uint32_t result = Kind::replace(behind_, mine.what, what);
    if (result == RIB_OK) {
        mine.what.marked |= marks;
        rank(by, at, mine, &mine, Kind::action_adding(at->first));
    }
    return result;
}

/// Removes a route, and leaves the place at the next destination.
template <class Kind> uint32_t table<Kind>::remove_at(turn &by, place &at, record &mine) {
    const place here = at++;
    tell(by, here->first, mine, Kind::action_deleting(here->first));
    unlink<Kind>(here->second, mine);
    uint32_t result = RIB_OK;
    if (here->second == nullptr) {
        result = behind_.positions.give_back(by.use->segment, mine);
        if constexpr (Kind::id == table_id::unicast) {
            by.use->domains.remove(domain_of(mine.to));
        }
        next_ = next_ == here ? at : next_;
        index_.erase(here);
    } else {
        rivals_--;
        if (mine.is_active()) {
            behind_.positions.hand_over(mine, *here->second);
            tell(by, here->first, *here->second, RIB_ACTION_CHANGE_FLAG);
        }
    }
    count(by, -1);
    result = first_failure(result, Kind::give_back(behind_, mine.what));
    return first_failure(result, pool_free(records_.get(), &mine));
}

/// Puts a route where its rank is, and tells what has come of it.
/// @param sent the route that the sender has named, of which this is told; null where nobody has
template <class Kind> void table<Kind>::rank(turn &by, place at, record &one, const record *sent, uint32_t action) {
    record *before = at->second;
    if (before->next != nullptr) {
        unlink<Kind>(at->second, one);
        link<Kind>(at->second, one);
    }
    record *now = at->second;
    if (before != now) {
        behind_.positions.hand_over(*before, *now);
    }
    if (sent != nullptr) {
        tell(by, at->first, *sent, action);
    }
    if (before != now && before != sent) {
        tell(by, at->first, *before, RIB_ACTION_CHANGE_FLAG);
    }
    if (before != now && now != sent) {
        tell(by, at->first, *now, RIB_ACTION_CHANGE_FLAG);
    }
}

template <class Kind> void table<Kind>::count(turn &by, uint32_t more) {
    by.sender->routes[static_cast<size_t>(Kind::id)] += more;
    by.use->routes[static_cast<size_t>(Kind::id)] += more;
}

template <class Kind> void table<Kind>::tell(turn &by, const key &where, const record &route, uint32_t action) {
    if (by.why != cause::replay) {
        by.use->changed = by.now;
    }
    if (out_ != nullptr) {
        out_->told(route_event<Kind>{by.why, by.oper, action, where, route.of->uuid, read(route)});
    }
}

template class table<unicast>;
template class table<multicast>;
template class table<label>;

} // namespace ribkit::rib
