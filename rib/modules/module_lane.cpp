// What changes is remembered by its key; what was lost on its way is sent again in the same manner.
#include "rib/modules/module_lane.h"

#include "rib/modules/module_lane_writing.h"
#include "rib_codes.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ribkit::rib {

template <class Kind> void module_lane<Kind>::change(const key &where, waiting::id asker) noexcept {
    if (routes_.suspended().contains(where.vsan)) {
        return;
    }
    refused_.forget(where);
    if (asker != 0) {
        requests_.owe(asker);
        remember({where, asker});
    } else if (!merges_.will_name(where)) {
        remember({where});
    }
}

template <class Kind> void module_lane<Kind>::send_whole(uint32_t vsan) noexcept {
    withdrawn_.reset(vsan);
    merges_.want(vsan);
    comparisons_.table_changes(vsan);
}

template <class Kind> void module_lane<Kind>::withdraw(uint32_t vsan) noexcept {
    withdrawn_.set(vsan);
    merges_.unwant(vsan);
    refused_.forget_vsan(vsan);
    comparisons_.table_changes(vsan);
}

template <class Kind> void module_lane<Kind>::compare(uint32_t vsan, waiting::id asker) noexcept {
    requests_.owe(asker);
    try {
        comparisons_.want({vsan, asker});
    } catch (const std::bad_alloc &) {
        requests_.settle(asker, RIB_OUT_OF_MEMORY);
    }
}

template <class Kind> void module_lane<Kind>::restart() noexcept {
    std::vector<flight> lost = std::exchange(flights_, {});
    refused_.clear();
    withdrawn_.reset();
    merges_.restart();
    comparisons_.begin_again();
    pending_.keep_asked();
    for (const flight &one : lost) {
        remember_askers(one);
    }
}

template <class Kind> void module_lane<Kind>::retry() noexcept {
    merges_.want(refused_.take_all([&](const key &where) { remember({where}); }));
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
    if (over.comparison != 0) {
        settle_comparison(over, said);
        return false;
    }
    const bool repeats = said.what == verdict::fate::damaged && !names_routes(over.oper);
    if (has_no_merge) {
        merges_.begin_again(over.vsan);
    }
    if (said.what == verdict::fate::given_up) {
        send_again(over, RIB_TIMEOUT);
    } else if (said.result == RIB_LC_UPGRADING) {
        send_again(over, RIB_LC_UPGRADING);
    } else if (said.result == RIB_INDEX_USED || has_no_merge || repeats) {
        send_again(over, RIB_OK);
    } else {
        take(over, said);
    }
    return repeats;
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
    comparisons_.disappoint([&](waiting::id asker) { requests_.settle(asker, code); });
}

template <class Kind> void module_lane<Kind>::give_up(waiting::id asker) noexcept {
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
    comparisons_.forget(asker);
}

/// Null where the module shall have none.
template <class Kind> auto module_lane<Kind>::wanted(const key &where) const -> const route_record * {
    const auto &all = routes_.routes<Kind>().all();
    const auto found = all.find(where);
    return found == all.end() ? nullptr : found->second;
}

/// What there is no room to remember comes with its VSAN.
template <class Kind> void module_lane<Kind>::remember(const entry &one) noexcept {
    if (comparisons_.goes_on()) {
        comparisons_.touch(one.where);
    }
    if (pending_.size() < most_remembered || one.asker != 0 || pending_.contains(one.where)) {
        try {
            pending_.add(one);
            return;
        } catch (const std::bad_alloc &) {
            requests_.settle(one.asker, counted(Kind(), one.where), RIB_OUT_OF_MEMORY);
        }
    }
    merges_.want(one.where.vsan);
    comparisons_.table_changes(one.where.vsan);
    merges_.settle_one(one.merge);
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
    } else {
        merges_.repeat_mark(lost.merge, lost.oper == FIB_OPER_BEGIN_MERGE);
    }
    if (removes_unnamed(lost.oper)) { // if it has arrived, nobody will tell how much room it has made
        retry();
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
        merges_.settle_one(one.merge);
        if (failed) {
            fail(one, of.sequence, result);
        } else {
            taken++;
        }
    }
    merges_.settle_mark(of.merge, of.oper == FIB_OPER_BEGIN_MERGE);
    if (of.oper == FIB_OPER_REMOVE) {
        found_room(of.vsan, taken);
    } else if (removes_unnamed(of.oper)) {
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
    if (!pending_.contains(where) && std::none_of(flights_.begin(), flights_.end(), has_it)) {
        refused_.add(where, code);
    }
}

/// Tries what failed again, first of the VSAN that has room now.
template <class Kind> void module_lane<Kind>::found_room(uint32_t vsan, size_t count) noexcept {
    merges_.want(refused_.take_some(vsan, count, [&](const key &where) { remember({where}); }));
}

/// A module that has lost its place, or knows of no comparison, begins again.
template <class Kind> void module_lane<Kind>::settle_comparison(const flight &of, const verdict &said) noexcept {
    if (!comparisons_.is_of_now(of.comparison)) {
        return;
    }
    const uint32_t result = said.what == verdict::fate::given_up  ? RIB_TIMEOUT
                            : said.what == verdict::fate::damaged ? RIB_MISSING_RESPONSE
                                                                  : said.result;
    if (result == RIB_INDEX_USED && !of.names.empty()) {
        repeat_names(of);
    } else if (result == RIB_INDEX_USED || result == RIB_NO_ENTRY) {
        comparisons_.begin_again();
    } else if (result == RIB_OK && of.is_question) {
        take_findings(said);
    } else {
        const bool fails = result != RIB_OK && !comparisons_.closes();
        const waiting::id asker = comparisons_.now().asker;
        comparisons_.settle();
        if (fails) {
            requests_.settle(asker, result);
            comparisons_.close();
        }
    }
}

template <class Kind> void module_lane<Kind>::repeat_names(const flight &lost) noexcept {
    comparisons_.settle();
    try {
        if (!comparisons_.closes()) {
            comparisons_.lose_names(lost.names);
        }
    } catch (const std::bad_alloc &) {
        comparisons_.begin_again();
    }
}

/// The next question is about what is behind them, until there is nothing more of the VSAN.
template <class Kind> void module_lane<Kind>::take_findings(const verdict &said) noexcept {
    const auto [vsan, asker] = comparisons_.now();
    any_key last = named(Kind(), comparisons_.next());
    bool goes_on = !said.found.empty();
    for (auto at = said.found.begin(); at != said.found.end() && goes_on; ++at) {
        const auto &[where, status] = *at;
        const bool is_of_it = vsan == 0 || where.second.vsan == vsan;
        if (where < last) { // it has been told already
            requests_.tell(asker, RIB_MISSING_RESPONSE);
        }
        goes_on =
            is_of_it && !(where < last) && (comparisons_.is_touched(where) || requests_.find(asker, where, status));
        last = where;
    }
    if (goes_on) {
        comparisons_.ask_from(key_behind(Kind(), last));
        return;
    }
    requests_.count_named(asker, comparisons_.named_count());
    requests_.settle(asker, RIB_OK);
    comparisons_.finish();
}

template class module_lane<unicast>;
template class module_lane<multicast>;
template class module_lane<label>;

} // namespace ribkit::rib
