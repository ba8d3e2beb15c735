// What is written to a module: the second half of module_lane.cpp, which alone includes it. What an update says is read
// from the tables when it is written, so that a route that changed twice is sent once, as it is then.
#pragma once

#include "rib/modules/module_lane.h"
#include "rib_codes.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ribkit::rib {

/// A label route that tells which labels a unicast route pushes is no entry of its own.
inline bool is_entry(const label::key &where) { return where.type != RIB_ROUTE_FC_LABEL || where.match_count != 0; }
inline bool is_entry(const model::route_key & /*where*/) { return true; }

/// Adds a route to an update, or where it is null a destination without one.
template <class Kind>
added add_route(update_sink &to, const state &routes, const typename Kind::key &where,
                const typename table<Kind>::record *route) {
    if (route == nullptr) {
        return to.add(module_path<Kind>{where, nullptr});
    }
    const auto what = routes.routes<Kind>().read(*route);
    module_path<Kind> path{where, &what};
    if constexpr (Kind::id == table_id::unicast) {
        const auto *labels = routes.labels_for(where);
        path.labels = labels == nullptr ? path.labels : routes.routes<label>().read(*labels).hops;
    }
    return to.add(path);
}

/// Whether an update names routes that it changes.
constexpr bool names_routes(uint32_t oper) {
    return oper == FIB_OPER_UPDATE || oper == FIB_OPER_MERGE || oper == FIB_OPER_REMOVE;
}

/// Whether an update removes routes that it does not name.
constexpr bool removes_unnamed(uint32_t oper) { return oper == FIB_OPER_END_MERGE || oper == FIB_OPER_REMOVE_ALL; }

template <class Kind> bool module_lane<Kind>::may_tell_changes() const {
    return !pending_.empty() && merges_.allows_changes();
}

/// Not while the module is given what it has not been given yet: that is no difference.
template <class Kind> bool module_lane<Kind>::may_compare() const {
    const auto withdraws = [](const flight &one) { return one.oper == FIB_OPER_REMOVE_ALL; };
    return comparisons_.may_write() && !merges_.is_wanted() && withdrawn_.none() &&
           std::none_of(flights_.begin(), flights_.end(), withdraws) &&
           (comparisons_.goes_on() || pending_.size() < most_remembered / 2);
}

template <class Kind> bool module_lane<Kind>::has_work() const {
    return withdrawn_.any() || merges_.may_write() || may_tell_changes() || may_compare();
}

/// Whoever had the last turn waits where somebody else has something to say.
template <class Kind> auto module_lane<Kind>::next_turn() const -> turn {
    const bool others_wait = merges_.may_write() || may_compare();
    if (may_tell_changes() && (last_turn_ != turn::changes || !others_wait)) {
        return turn::changes;
    }
    return merges_.may_write() ? turn::merge : turn::comparison;
}

template <class Kind> bool module_lane<Kind>::write(update_sink &to, uint32_t sequence) {
    flight made{.sequence = sequence, .oper = 0, .vsan = 0};
    flights_.reserve(flights_.size() + 1);
    try {
        last_turn_ = next_turn();
        if (withdrawn_.any()) {
            write_withdrawal(to, made);
        } else if (last_turn_ == turn::merge) {
            write_merge(to, made);
        } else if (last_turn_ == turn::comparison) {
            write_comparison(to, made);
        } else {
            write_changes(to, made);
        }
    } catch (const std::bad_alloc &) {
        if (last_turn_ == turn::changes) { // the others go on where they were
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

template <class Kind> void module_lane<Kind>::write_merge(update_sink &to, flight &made) {
    const auto next = merges_.next_step();
    if (next == merge_course<Kind>::step::routes) {
        write_routes(to, made);
        return;
    }
    made.oper = next == merge_course<Kind>::step::begin ? FIB_OPER_BEGIN_MERGE : FIB_OPER_END_MERGE;
    made.vsan = merges_.vsan();
    made.merge = merges_.number();
    to.begin({Kind::id, made.oper, made.vsan, made.sequence});
    merges_.sent_mark();
}

template <class Kind> void module_lane<Kind>::write_withdrawal(update_sink &to, flight &made) {
    made.oper = FIB_OPER_REMOVE_ALL;
    made.vsan = first_in(withdrawn_);
    to.begin({Kind::id, made.oper, made.vsan, made.sequence});
    withdrawn_.reset(made.vsan);
}

/// Goes through what the module shall have of a VSAN, or of all, from a destination on.
/// @param take called with each; it returns whether to go on
/// @return where it did not; none: that was all
template <class Kind>
template <class Take>
std::optional<typename Kind::key> module_lane<Kind>::each_route(uint32_t vsan, const key &from, Take take) const {
    const auto &all = routes_.routes<Kind>().all();
    auto at = all.lower_bound(from);
    while (at != all.end() && (vsan == 0 || at->first.vsan == vsan)) {
        if (routes_.suspended().contains(at->first.vsan)) {
            at = all.lower_bound(Kind::first_of(at->first.vsan + 1));
            continue;
        }
        if (is_entry(at->first) && !take(at->first, at->second)) {
            return at->first;
        }
        ++at;
    }
    return {};
}

/// The next routes of a merge, of one VSAN. Those that failed before are tried again with it.
template <class Kind> void module_lane<Kind>::write_routes(update_sink &to, flight &made) {
    const auto next = each_route(merges_.vsan(), merges_.next(), [&](const key &where, const route_record *route) {
        const entry one{where, 0, merges_.number()};
        const added result = put(to, made, FIB_OPER_MERGE, one, route);
        if (result != added::no_room) {
            refused_.forget(where);
        }
        if (result == added::never) {
            fail(one, made.sequence, RIB_HW_FULL);
        }
        return result != added::no_room;
    });
    merges_.sent_routes(made.keys.size(), next);
}

/// Changes of one VSAN that are said the same way. What is not said, since its VSAN has left, leaves the room that it
/// was to have, or has made by a removal whose answer was lost, to others.
template <class Kind> void module_lane<Kind>::write_changes(update_sink &to, flight &made) {
    while (!pending_.empty()) {
        const entry one = pending_.front();
        if (routes_.suspended().contains(one.where.vsan)) {
            flight none{};
            tell(none, pending_.pop(none.more), RIB_OK);
            merges_.settle_one(one.merge);
            found_room(one.where.vsan, 1);
            continue;
        }
        const auto *route = wanted(one.where);
        const bool merges = merges_.is_behind(one.where);
        const uint32_t oper = route == nullptr ? FIB_OPER_REMOVE : merges ? FIB_OPER_MERGE : FIB_OPER_UPDATE;
        const added result = put(to, made, oper, one, route);
        if (result == added::no_room) {
            return;
        }
        pending_.pop(made.more);
        if (result == added::never) {
            tell(made, one, RIB_HW_FULL);
            merges_.settle_one(one.merge);
            fail(one, made.sequence, RIB_HW_FULL);
        }
    }
}

template <class Kind> void module_lane<Kind>::write_comparison(update_sink &to, flight &made) {
    using step = typename comparison_course<Kind>::step;
    const step next = comparisons_.next_step();
    made.vsan = comparisons_.now().vsan;
    if (next == step::names) {
        write_names(to, made);
    } else if (next == step::ask) {
        made.oper = FIB_OPER_VERIFY;
        made.is_question = true;
        to.ask(named(Kind(), comparisons_.next()), made.sequence);
        comparisons_.sent();
    } else {
        made.oper = next == step::begin ? FIB_OPER_BEGIN_VERIFY : FIB_OPER_END_VERIFY;
        to.begin({Kind::id, made.oper, made.vsan, made.sequence});
        if (next == step::end || touch_all()) {
            comparisons_.sent();
        }
    }
    made.comparison = comparisons_.number();
    made.keys.clear(); // nobody waits for each of them
}

/// What is on its way is no difference if it is not there.
/// @return false where it is too much: the comparison begins again
template <class Kind> bool module_lane<Kind>::touch_all() noexcept {
    bool all = true;
    const auto touch = [&](const key &where) { all = all && comparisons_.touch(where); };
    pending_.each(touch);
    for (const flight &one : flights_) {
        for (const entry &of : one.keys) {
            touch(of.where);
        }
    }
    return all;
}

/// The next routes that are compared, of one VSAN.
template <class Kind> void module_lane<Kind>::write_names(update_sink &to, flight &made) {
    if (!comparisons_.lost_names().empty()) {
        write_lost_names(to, made);
        return;
    }
    const auto next = each_route(made.vsan, comparisons_.next(), [&](const key &where, const route_record *route) {
        return put_name(to, made, where, route) != added::no_room;
    });
    comparisons_.sent_names(static_cast<uint32_t>(made.names.size()), next);
}

/// Those whose update has not arrived. What has gone since has no name.
template <class Kind> void module_lane<Kind>::write_lost_names(update_sink &to, flight &made) {
    const auto &lost = comparisons_.lost_names();
    size_t count = 0;
    while (count < lost.size()) {
        const key where = lost[lost.size() - 1 - count];
        const route_record *route = wanted(where);
        if (route != nullptr && put_name(to, made, where, route) == added::no_room) {
            break;
        }
        count++;
    }
    comparisons_.sent_lost_names(!made.names.empty(), count);
}

/// Names a route that is compared. What cannot be said is not there.
template <class Kind>
added module_lane<Kind>::put_name(update_sink &to, flight &made, const key &where, const route_record *route) {
    const any_key name = named(Kind(), where);
    if (comparisons_.is_touched(name)) {
        return added::yes;
    }
    const added result = put(to, made, FIB_OPER_VERIFY, {where}, route);
    if (result == added::yes) {
        made.names.push_back(where);
    } else if (result == added::never) {
        requests_.find(comparisons_.now().asker, name, FIB_VERF_NOT_IN_FIB);
    }
    return result;
}

/// Adds a route to an update, which it begins where nothing is in it. What no message can say is as if the module had
/// no room.
template <class Kind>
added module_lane<Kind>::put(update_sink &to, flight &made, uint32_t oper, const entry &one,
                             const route_record *route) {
    if (made.keys.empty()) {
        made.oper = oper;
        made.vsan = one.where.vsan;
        to.begin({Kind::id, oper, made.vsan, made.sequence});
    } else if (made.oper != oper || made.vsan != one.where.vsan) {
        return added::no_room;
    }
    made.keys.push_back(one);
    const added result = add_route<Kind>(to, routes_, one.where, route);
    if (result == added::yes) {
        return result;
    }
    made.keys.pop_back();
    return made.keys.empty() ? added::never : result;
}

} // namespace ribkit::rib
