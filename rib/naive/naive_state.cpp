// One list, and a loop over it wherever something is wanted. What a change does is seen by comparing what was active
// before with what is active afterwards.
#include "rib/naive/naive_state.h"

#include "rib_codes.h"

#include <algorithm>
#include <tuple>

namespace ribkit::rib {

namespace {

constexpr uint32_t cause_change = 0, cause_restore = 1, cause_replay = 2;
constexpr uint32_t most_ways = 16; // but for members
constexpr uint32_t most_sources = 16;

uint32_t vsan_of(const naive_route &route) { return route.what.key[0]; }

/// More than a route of the table can have.
bool has_too_much(size_t table, const naive_record &record) {
    return (table != naive_multicast && record.interfaces > most_ways) ||
           (table == naive_label && record.carried.size() > most_sources);
}

/// What a module would be told to do because of an operation; where it is told nothing else, to update.
uint32_t told_to_modules(uint32_t oper) {
    constexpr uint32_t fib_update = 1, fib_remove = 2, fib_remove_all = 4, fib_merge = 0x20;
    return removes(oper)            ? fib_remove
           : removes_all(oper)      ? fib_remove_all
           : oper == RIB_OPER_MERGE ? fib_merge
                                    : fib_update;
}

/// Actions that delete are every second bit, but for the changes of unicast routes.
bool is_deletion(size_t table, uint32_t action) {
    const bool is_change = table == naive_unicast && (action & 0xc) != 0;
    return !is_change && (action & 0xaa2) != 0;
}

} // namespace

words naive_state::update(const naive_request &asked) {
    now_ = asked.now;
    uint32_t result = judge(asked);
    uint32_t accepted = 0;
    if (result == RIB_OK) {
        for (const naive_record &record : asked.records) {
            const uint32_t one = apply(asked, record);
            accepted += one == RIB_OK ? 1 : 0;
            result = result == RIB_OK ? one : result;
        }
        if (asked.records.empty()) {
            result = finish(asked, accepted);
        }
    }
    const size_t held =
        count([&](const naive_route &route) { return route.table == asked.table && vsan_of(route) == asked.vsan; });
    return {result, asked.oper, asked.vsan, accepted, static_cast<uint32_t>(held)};
}

uint32_t naive_state::apply(const naive_request &asked, const naive_record &record) {
    if (removes(asked.oper) || deletes(asked.table, record)) {
        return remove(asked, record.key);
    }
    if (adds(asked.table, record)) {
        return add(asked, record);
    }
    return is_group(asked.table, record) ? remove_group(asked, record) : change(asked, record);
}

uint32_t naive_state::add(const naive_request &asked, const naive_record &record) {
    naive_route *mine = find(asked.table, record.key, asked.uuid);
    if (mine == nullptr) {
        if (const uint32_t full = room_for(asked, record); full != RIB_OK) {
            return full;
        }
    } else if (has_too_much(asked.table, record)) {
        return RIB_BAD_PARAMETERS;
    }
    naive_units::blocks taken;
    const bool stays = mine != nullptr && mine->what.interfaces == record.interfaces;
    if (stays) {
        taken = mine->units;
    } else if (const uint32_t full = take_room(asked, record, taken); full != RIB_OK) {
        return full;
    } else if (mine != nullptr) {
        units_.give_back(mine->units);
    }
    const bool marks = merges(asked.oper);
    touch(asked, record.key, adding(asked.table, record.key), [&] {
        if (mine == nullptr) {
            routes_.push_back({asked.table, asked.uuid, record, marks, taken});
        } else {
            *mine = {asked.table, asked.uuid, record, marks || mine->marked, taken};
        }
    });
    return RIB_OK;
}

/// Units for the ways, and a place where there is no route of the key yet. @return 0, or why there is none
uint32_t naive_state::take_room(const naive_request &asked, const naive_record &record, naive_units::blocks &taken) {
    if (!units_.take(record.interfaces, taken)) {
        return RIB_HW_FULL;
    }
    if (active(asked.table, record.key) == nullptr && !has_place_in(asked.vsan)) {
        units_.give_back(taken);
        return RIB_HW_FULL;
    }
    return RIB_OK;
}

/// @return 0, or why a new route finds no room
uint32_t naive_state::room_for(const naive_request &asked, const naive_record &record) const {
    const bool is_new = active(asked.table, record.key) == nullptr;
    if (asked.table != naive_unicast && !is_new) {
        return RIB_OBJECT_OWNED;
    }
    const auto quota = quotas_.find(asked.uuid);
    if (quota != quotas_.end() &&
        count([&](const naive_route &route) { return route.uuid == asked.uuid; }) >= quota->second) {
        return RIB_HW_FULL;
    }
    if (const auto used = vsans(); !used.contains(asked.vsan) && used.size() >= most_vsans_) {
        return RIB_VSAN_TCAM_FULL;
    }
    if (has_too_much(asked.table, record)) {
        return RIB_BAD_PARAMETERS;
    }
    return RIB_OK;
}

/// In a block that the VSAN has begun, or in one that nobody needs.
bool naive_state::has_place_in(uint32_t vsan) const {
    constexpr size_t block = 8;
    const auto used = destinations();
    size_t taken = 0;
    for (const auto &[id, some] : used) {
        taken += (some.size() + block - 1) / block;
    }
    const auto own = used.find(vsan);
    return taken < blocks_ || (own != used.end() && own->second.size() % block != 0);
}

uint32_t naive_state::remove(const naive_request &asked, const words &key) {
    naive_route *mine = find(asked.table, key, asked.uuid);
    if (mine == nullptr) {
        return missing(asked, key);
    }
    units_.give_back(mine->units);
    touch(asked, key, deleting(asked.table, key), [&] { routes_.erase(routes_.begin() + (mine - routes_.data())); });
    return RIB_OK;
}

uint32_t naive_state::missing(const naive_request &asked, const words &key) const {
    return active(asked.table, key) != nullptr ? RIB_OBJECT_OWNED : RIB_NO_ENTRY;
}

uint32_t naive_state::remove_group(const naive_request &asked, const naive_record &group) {
    const auto in_group = [&](const naive_route &route) {
        return route.table == naive_multicast && vsan_of(route) == asked.vsan &&
               (route.what.key[1] & group.key[2]) == group.key[1];
    };
    const auto is_mine = [&](const naive_route &route) { return in_group(route) && route.uuid == asked.uuid; };
    if (count(is_mine) == 0) {
        return count(in_group) != 0 ? RIB_OBJECT_OWNED : RIB_NO_ENTRY;
    }
    remove_each(asked, is_mine);
    return RIB_OK;
}

uint32_t naive_state::change(const naive_request &asked, const naive_record &record) {
    naive_route *mine = find(asked.table, record.key, asked.uuid);
    if (mine == nullptr) {
        return missing(asked, record.key);
    }
    touch(asked, record.key, record.action, [&] {
        mine->what.flag = (record.action & RIB_ACTION_CHANGE_FLAG) != 0 ? record.flag : mine->what.flag;
        mine->what.metric = (record.action & RIB_ACTION_CHANGE_METRIC) != 0 ? record.metric : mine->what.metric;
    });
    return RIB_OK;
}

/// What an operation does that names no routes.
uint32_t naive_state::finish(const naive_request &asked, uint32_t &accepted) {
    const auto is_mine = [&](const naive_route &route) {
        return route.table == asked.table && vsan_of(route) == asked.vsan && route.uuid == asked.uuid;
    };
    if (merges(asked.oper)) {
        accepted = remove_each(asked, [&](const naive_route &route) { return is_mine(route) && !route.marked; });
        for (naive_route &route : routes_) {
            route.marked = route.marked && !is_mine(route);
        }
    } else if (removes_all(asked.oper)) {
        accepted = remove_each(asked, is_mine);
    } else if (asked.oper == RIB_OPER_REPLAY) {
        accepted = replay(asked);
    } else if (is_about_states(asked.oper)) {
        suspend(asked.vsan, asked.oper == RIB_OPER_SUSPEND);
    } else if (asked.oper == RIB_OPER_ADD_VERSION) {
        versions_[{asked.uuid, asked.vsan}] = asked.versions;
        accepted = static_cast<uint32_t>(asked.versions.size());
    } else if (asked.oper == RIB_OPER_DELETE_VERSION) {
        const auto found = versions_.find({asked.uuid, asked.vsan});
        if (found == versions_.end()) {
            return RIB_NO_ENTRY;
        }
        accepted = static_cast<uint32_t>(found->second.size());
        versions_.erase(found);
    } else if (asked.oper == RIB_OPER_VERIFY) {
        told_.push_back({asked.vsan, 2 + static_cast<uint32_t>(asked.table)});
    }
    return RIB_OK;
}

/// In the order of their keys. @return how many
uint32_t naive_state::remove_each(const naive_request &asked, const condition &which) {
    const std::vector<naive_route> all = in_order(which);
    for (const naive_route &route : all) {
        remove(asked, route.what.key);
    }
    return static_cast<uint32_t>(all.size());
}

uint32_t naive_state::replay(const naive_request &asked) {
    const std::vector<naive_route> all = in_order([&](const naive_route &route) {
        return route.table == asked.table && vsan_of(route) == asked.vsan && route.uuid == asked.uuid;
    });
    for (const naive_route &route : all) {
        tell(cause_replay, asked.oper, adding(asked.table, route.what.key), line(route));
    }
    return static_cast<uint32_t>(all.size());
}

void naive_state::suspend(uint32_t vsan, bool on) {
    if (on == suspended_.contains(vsan)) {
        return;
    }
    if (on) {
        suspended_.insert(vsan);
    } else {
        suspended_.erase(vsan);
    }
    told_.push_back({vsan, on ? 1U : 0U});
}

// Whoever is active may be another one afterwards, for every destination.
void naive_state::set_distance(uint32_t uuid, std::optional<uint32_t> distance, uint32_t now) {
    now_ = now;
    const auto before = in_order([&](const naive_route &route) {
        return route.table == naive_unicast && active(route.table, route.what.key) == &route;
    });
    if (distance) {
        distances_[uuid] = *distance;
    } else {
        distances_.erase(uuid);
    }
    for (const naive_route &was : before) {
        const naive_route *is = active(was.table, was.what.key);
        if (is->uuid != was.uuid) {
            changed_[vsan_of(was)] = now;
            tell(cause_change, 0, RIB_ACTION_CHANGE_FLAG, line(*find(was.table, was.what.key, was.uuid)));
            tell(cause_change, 0, RIB_ACTION_CHANGE_FLAG, line(*is));
        }
    }
}

/// Does something to the sender's route of a key, and tells who is concerned.
void naive_state::touch(const naive_request &asked, const words &key, uint32_t action,
                        const std::function<void()> &work) {
    const uint32_t cause = asked.oper == RIB_OPER_RESTORE ? cause_restore : cause_change;
    const auto tell_other = [&](const naive_route &route) {
        tell(cause, asked.oper, RIB_ACTION_CHANGE_FLAG, line(route));
    };
    const naive_route *mine = find(asked.table, key, asked.uuid);
    const words as_it_was = mine == nullptr ? words{} : line(*mine);
    const naive_route *first = active(asked.table, key);
    const bool had = first != nullptr;
    const uint32_t before = had ? first->uuid : 0;
    work();
    mine = find(asked.table, key, asked.uuid);
    tell(cause, asked.oper, action, mine == nullptr ? as_it_was : line(*mine));
    const naive_route *now = active(asked.table, key);
    if (had && before != asked.uuid && now->uuid != before) {
        tell_other(*find(asked.table, key, before));
    }
    if (now != nullptr && now->uuid != asked.uuid && !(had && now->uuid == before)) {
        tell_other(*now);
    }
    changed_[asked.vsan] = asked.now;
}

void naive_state::tell(uint32_t cause, uint32_t oper, uint32_t action, words route) {
    if (cause != cause_replay) {
        const size_t table = route[0];
        const size_t key = table == naive_label ? 8 : 3;
        words entry{logged_[table]++, now_, told_to_modules(oper), is_deletion(table, action) ? 2U : 1U};
        entry.insert(entry.end(), route.begin() + 1, route.begin() + 1 + static_cast<ptrdiff_t>(key));
        logs_[table].push_back(entry);
        if (logs_[table].size() > 128) {
            logs_[table].pop_front();
        }
    }
    route.insert(route.begin(), {cause, oper, action});
    told_.push_back(std::move(route));
}

} // namespace ribkit::rib
