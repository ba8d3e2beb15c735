// What changes is remembered by its key; what an update says is read from the tables when it is written, so that a
// route that changed twice is sent once, as it is then. What was lost on its way is sent again in the same manner.
#include "rib/modules/module_lane.h"

#include "rib_codes.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ribkit::rib {

namespace {

template <class Set> uint32_t first_in(const Set &some) {
    uint32_t at = 0;
    while (!some[at]) {
        at++;
    }
    return at;
}

/// Whether an update has paths.
constexpr bool names_routes(uint32_t oper) {
    return oper == FIB_OPER_UPDATE || oper == FIB_OPER_MERGE || oper == FIB_OPER_REMOVE;
}

/// A label route that tells which labels a unicast route pushes is no entry of its own.
bool is_entry(const label::key &where) { return where.type != RIB_ROUTE_FC_LABEL || where.match_count != 0; }
bool is_entry(const model::route_key & /*where*/) { return true; }

} // namespace

template <class Kind> void module_lane<Kind>::change(const key &where, waiting::id asker) noexcept {
    if (routes_.suspended().contains(where.vsan)) {
        return;
    }
    failed_.erase(where);
    if (asker != 0) {
        requests_.owe(asker);
        remember({where, asker});
    } else if (!comes_anyway(where)) {
        remember({where});
    }
}

template <class Kind> void module_lane<Kind>::send_whole(uint32_t vsan) noexcept {
    withdrawn_.reset(vsan);
    whole_.set(vsan);
}

template <class Kind> void module_lane<Kind>::withdraw(uint32_t vsan) noexcept {
    withdrawn_.set(vsan);
    whole_.reset(vsan);
    std::erase_if(failed_, [&](const auto &one) { return one.first.vsan == vsan; });
}

template <class Kind> void module_lane<Kind>::restart() noexcept {
    std::vector<flight> lost = std::exchange(flights_, {});
    failed_.clear();
    crowded_.reset();
    withdrawn_.reset();
    merge_.reset();
    whole_.reset().set(0);
    pending_.keep_asked();
    for (const flight &one : lost) {
        remember_askers(one);
    }
}

template <class Kind> void module_lane<Kind>::retry() noexcept {
    for (const auto &[where, code] : failed_) {
        remember({where});
    }
    failed_.clear();
    whole_ |= std::exchange(crowded_, {});
}

template <class Kind> bool module_lane<Kind>::has_work() const {
    return withdrawn_.any() || may_merge() || may_tell_changes();
}

template <class Kind> bool module_lane<Kind>::write(update_sink &to, uint32_t sequence) {
    flight made{.sequence = sequence, .oper = 0, .vsan = 0};
    flights_.reserve(flights_.size() + 1);
    try {
        merges_next_ = may_merge() && (!merges_next_ || !may_tell_changes());
        if (withdrawn_.any()) {
            write_withdrawal(to, made);
        } else if (merges_next_) {
            write_merge(to, made);
        } else {
            write_changes(to, made);
        }
    } catch (const std::bad_alloc &) {
        if (!merges_next_) { // a merge goes on where it was
            send_again(made, RIB_OK);
        }
        throw;
    }
    if (made.oper == 0 || (names_routes(made.oper) && made.keys.empty())) {
        return false;
    }
    flights_.push_back(std::move(made));
    return true;
}

template <class Kind> bool module_lane<Kind>::settle(uint32_t sequence, const verdict &said) noexcept {
    const auto found =
        std::find_if(flights_.begin(), flights_.end(), [&](const flight &one) { return one.sequence == sequence; });
    if (found == flights_.end()) {
        return false;
    }
    const flight over = std::move(*found);
    flights_.erase(found);
    const bool has_no_merge = said.result == RIB_NO_ENTRY && over.oper == FIB_OPER_MERGE;
    if (has_no_merge) {
        send_whole(merge_ ? merge_->vsan : over.vsan);
        merge_.reset();
    }
    if (said.what == verdict::fate::given_up) {
        send_again(over, RIB_TIMEOUT);
    } else if (said.result == RIB_LC_UPGRADING) {
        send_again(over, RIB_LC_UPGRADING);
    } else if (said.result == RIB_INDEX_USED || has_no_merge ||
               (said.what == verdict::fate::damaged && !names_routes(over.oper))) {
        send_again(over, RIB_OK);
    } else {
        take(over, said);
    }
    return true;
}

template <class Kind> void module_lane<Kind>::disappoint(uint32_t code) noexcept {
    pending_.forget_askers(
        [&](const key &where, waiting::id asker) { requests_.settle(asker, counted(Kind(), where), code); });
    for (flight &one : flights_) {
        for (entry &of : one.keys) {
            tell(one, of, code);
            of.asker = 0;
        }
        one.more.clear();
    }
}

template <class Kind> void module_lane<Kind>::tell_owed(waiting::id asker) const noexcept {
    const auto tell = [&](const key &where, waiting::id of) {
        if (of == asker) {
            requests_.tell(asker, counted(Kind(), where), RIB_TIMEOUT);
        }
    };
    pending_.each_asked(tell);
    for (const flight &one : flights_) {
        for (const entry &of : one.keys) {
            tell(of.where, of.asker);
        }
        for (const auto &[where, of] : one.more) {
            tell(where, of);
        }
    }
}

/// Null where the module shall have none.
template <class Kind> auto module_lane<Kind>::wanted(const key &where) const -> const typename table<Kind>::record * {
    const auto &all = routes_.routes<Kind>().all();
    const auto found = all.find(where);
    return found == all.end() ? nullptr : found->second;
}

/// Whether a merge will name a destination if it is there by then.
template <class Kind> bool module_lane<Kind>::comes_anyway(const key &where) const {
    if (whole_[0] || whole_[where.vsan]) {
        return true;
    }
    if (!merge_ || (merge_->vsan != 0 && merge_->vsan != where.vsan)) {
        return false;
    }
    const bool has_begun = merge_->now != stage::begin && merge_->now != stage::beginning;
    return !has_begun || (merge_->now == stage::routes && !(where < merge_->next));
}

/// What there is no room to remember comes with its VSAN.
template <class Kind> void module_lane<Kind>::remember(const entry &one) noexcept {
    if (pending_.size() < most_remembered || one.asker != 0 || pending_.contains(one.where)) {
        try {
            pending_.add(one);
            return;
        } catch (const std::bad_alloc &) {
            requests_.settle(one.asker, counted(Kind(), one.where), RIB_OUT_OF_MEMORY);
        }
    }
    whole_.set(one.where.vsan);
    end_in_merge(one);
}

template <class Kind> void module_lane<Kind>::end_in_merge(const entry &one) noexcept {
    if (merge_ && merge_->number == one.merge) {
        merge_->owed--;
    }
}

/// Only what somebody waits for.
template <class Kind> void module_lane<Kind>::remember_askers(const flight &lost) noexcept {
    for (const entry &one : lost.keys) {
        if (one.asker != 0) {
            remember(one);
        }
    }
    for (const auto &[where, asker] : lost.more) {
        remember({where, asker});
    }
}

/// @param code what those are told who wait for it; RIB_OK: they go on waiting
template <class Kind> void module_lane<Kind>::send_again(const flight &lost, uint32_t code) noexcept {
    if (code == RIB_OK) {
        remember_askers(lost);
    }
    for (const entry &one : lost.keys) {
        if (code != RIB_OK) {
            tell(lost, one, code);
        }
        remember({one.where, 0, one.merge});
    }
    if (lost.oper == FIB_OPER_REMOVE_ALL && routes_.suspended().contains(lost.vsan)) {
        withdrawn_.set(lost.vsan);
    } else if (merge_ && lost.merge == merge_->number) {
        merge_->now = lost.oper == FIB_OPER_BEGIN_MERGE ? stage::begin : stage::end;
    }
}

template <class Kind> void module_lane<Kind>::take(const flight &of, const verdict &said) noexcept {
    const uint32_t result = said.what == verdict::fate::damaged            ? RIB_MISSING_RESPONSE
                            : said.result == RIB_OK && !said.named.empty() ? RIB_FAILED
                                                                           : said.result;
    size_t taken = 0;
    for (const entry &one : of.keys) {
        const bool failed = result != RIB_OK && (said.named.empty() || said.named.contains(named(Kind(), one.where)));
        tell(of, one, failed ? result : RIB_OK);
        end_in_merge(one);
        if (failed) {
            fail(one, of.sequence, result);
        } else {
            taken++;
        }
    }
    if (merge_ && of.merge == merge_->number && of.oper == FIB_OPER_BEGIN_MERGE) {
        merge_->now = stage::routes;
    } else if (merge_ && of.merge == merge_->number) {
        merge_.reset();
    }
    if (of.oper == FIB_OPER_REMOVE) {
        found_room(of.vsan, taken);
    } else if (!names_routes(of.oper)) {
        found_room(of.vsan, said.accepted);
    }
}

template <class Kind> void module_lane<Kind>::tell(const flight &of, const entry &one, uint32_t code) noexcept {
    const any_key route = counted(Kind(), one.where);
    if (one.asker != 0) {
        requests_.settle(one.asker, route, code);
    }
    for (const auto &[where, asker] : of.more) {
        if (where == one.where) {
            requests_.settle(asker, route, code);
        }
    }
}

/// What has changed since is no failure of what it is now.
template <class Kind> void module_lane<Kind>::fail(const entry &one, uint32_t sequence, uint32_t code) noexcept {
    const key &where = one.where;
    const auto has_it = [&](const flight &other) {
        return other.sequence - sequence < UINT32_MAX / 2 && other.sequence != sequence &&
               std::any_of(other.keys.begin(), other.keys.end(), [&](const entry &of) { return of.where == where; });
    };
    if (pending_.contains(where) || std::any_of(flights_.begin(), flights_.end(), has_it)) {
        return;
    }
    try {
        if (failed_.size() < most_remembered) {
            failed_[where] = code;
            return;
        }
    } catch (const std::bad_alloc &) { // as too many
    }
    crowded_.set(where.vsan);
}

/// Tries what failed again, first of the VSAN that has room now.
template <class Kind> void module_lane<Kind>::found_room(uint32_t vsan, size_t count) noexcept {
    const auto take_some = [&](auto at, auto is_it) {
        while (count != 0 && at != failed_.end() && is_it(*at) >= 0) {
            const bool goes = is_it(*at) > 0;
            if (goes) {
                remember({at->first});
                count--;
            }
            at = goes ? failed_.erase(at) : std::next(at);
        }
    };
    take_some(failed_.lower_bound(Kind::first_of(vsan)),
              [&](const auto &one) { return one.first.vsan == vsan ? 1 : -1; });
    take_some(failed_.begin(), [&](const auto &one) { return vsan == 0 || one.second != RIB_VSAN_TCAM_FULL ? 1 : 0; });
    if (count != 0 && crowded_.any()) {
        const uint32_t other = crowded_[vsan] ? vsan : first_in(crowded_);
        crowded_.reset(other);
        whole_.set(other);
    }
}

template <class Kind> bool module_lane<Kind>::may_merge() const {
    return merge_ ? merge_->now == stage::begin || merge_->now == stage::routes ||
                        (merge_->now == stage::end && merge_->owed == 0)
                  : whole_.any();
}

/// The end of a merge would remove what was not named in time.
template <class Kind> bool module_lane<Kind>::may_tell_changes() const {
    return !pending_.empty() && !(merge_ && merge_->now == stage::ending);
}

template <class Kind> void module_lane<Kind>::open_merge() {
    const uint32_t vsan = first_in(whole_);
    merge_.emplace(merge{.vsan = vsan, .number = ++merges_, .next = Kind::first_of(vsan)});
    if (vsan == 0) {
        whole_.reset();
    }
    whole_.reset(vsan);
}

template <class Kind> void module_lane<Kind>::write_merge(update_sink &to, flight &made) {
    if (!merge_) {
        open_merge();
    }
    if (merge_->now == stage::routes) {
        write_routes(to, made);
        return;
    }
    const bool begins = merge_->now == stage::begin;
    made.oper = begins ? FIB_OPER_BEGIN_MERGE : FIB_OPER_END_MERGE;
    made.vsan = merge_->vsan;
    made.merge = merge_->number;
    to.begin({Kind::id, made.oper, made.vsan, made.sequence});
    merge_->now = begins ? stage::beginning : stage::ending;
}

template <class Kind> void module_lane<Kind>::write_withdrawal(update_sink &to, flight &made) {
    made.oper = FIB_OPER_REMOVE_ALL;
    made.vsan = first_in(withdrawn_);
    to.begin({Kind::id, made.oper, made.vsan, made.sequence});
    withdrawn_.reset(made.vsan);
}

/// The next routes of a merge, of one VSAN.
template <class Kind> void module_lane<Kind>::write_routes(update_sink &to, flight &made) {
    const auto &all = routes_.routes<Kind>().all();
    auto at = all.lower_bound(merge_->next);
    const auto is_over = [&] { return at == all.end() || (merge_->vsan != 0 && at->first.vsan != merge_->vsan); };
    while (!is_over()) {
        const entry one{at->first, 0, merge_->number};
        if (routes_.suspended().contains(one.where.vsan)) {
            at = all.lower_bound(Kind::first_of(one.where.vsan + 1));
            continue;
        }
        const added result = is_entry(one.where) ? put(to, made, FIB_OPER_MERGE, one, at->second) : added::yes;
        if (result == added::no_room) {
            break;
        }
        if (result == added::never) {
            fail(one, made.sequence, RIB_HW_FULL);
        }
        ++at;
    }
    if (is_over()) {
        merge_->now = stage::end;
    } else {
        merge_->next = at->first;
    }
    merge_->owed += made.keys.size();
}

/// Whether a merge goes on that has passed the destination: whatever is said of it has to be named. One that it will
/// come to must not be: it may be gone by then.
template <class Kind> bool module_lane<Kind>::is_behind_merge(const key &where) const {
    return merge_ && (merge_->vsan == 0 || merge_->vsan == where.vsan) &&
           (merge_->now == stage::end || (merge_->now == stage::routes && where < merge_->next));
}

/// Changes of one VSAN that are said the same way.
template <class Kind> void module_lane<Kind>::write_changes(update_sink &to, flight &made) {
    while (!pending_.empty()) {
        const entry one = pending_.front();
        if (routes_.suspended().contains(one.where.vsan)) {
            flight none{};
            tell(none, pending_.pop(none.more), RIB_OK);
            end_in_merge(one);
            continue;
        }
        const auto *route = wanted(one.where);
        const bool merges = is_behind_merge(one.where);
        const uint32_t oper = route == nullptr ? FIB_OPER_REMOVE : merges ? FIB_OPER_MERGE : FIB_OPER_UPDATE;
        const added result = put(to, made, oper, one, route);
        if (result == added::no_room) {
            return;
        }
        pending_.pop(made.more);
        if (result == added::never) {
            tell(made, one, RIB_HW_FULL);
            end_in_merge(one);
            fail(one, made.sequence, RIB_HW_FULL);
        }
    }
}

/// Adds a route to an update, which it begins where nothing is in it. What no message can say is as if the module had
/// no room.
template <class Kind>
added module_lane<Kind>::put(update_sink &to, flight &made, uint32_t oper, const entry &one,
                             const typename table<Kind>::record *route) {
    if (made.keys.empty()) {
        made.oper = oper;
        made.vsan = one.where.vsan;
        to.begin({Kind::id, oper, made.vsan, made.sequence});
    } else if (made.oper != oper || made.vsan != one.where.vsan) {
        return added::no_room;
    }
    made.keys.push_back(one);
    const added result = add(to, one.where, route);
    if (result == added::yes) {
        return result;
    }
    made.keys.pop_back();
    return made.keys.empty() ? added::never : result;
}

template <class Kind>
added module_lane<Kind>::add(update_sink &to, const key &where, const typename table<Kind>::record *route) const {
    if (route == nullptr) {
        return to.add(module_path<Kind>{where, nullptr});
    }
    const auto what = routes_.routes<Kind>().read(*route);
    module_path<Kind> path{where, &what};
    if constexpr (Kind::id == table_id::unicast) {
        const auto *labels = routes_.labels_for(where);
        path.labels = labels == nullptr ? path.labels : routes_.routes<label>().read(*labels).hops;
    }
    return to.add(path);
}

template class module_lane<unicast>;
template class module_lane<multicast>;
template class module_lane<label>;

} // namespace ribkit::rib
