// What a module does with an update, said as directly as possible.
#include "rib/naive/played_module.h"

#include "model/fib.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::rib {

words words_of(const module_path<unicast> &path) {
    words all{1, path.what->metric, path.what->flag};
    for (const model::next_hop &hop : path.what->hops) {
        all.insert(all.end(), {hop.if_index, hop.domain});
    }
    all.push_back(UINT32_MAX);
    all.insert(all.end(), path.labels.begin(), path.labels.end());
    return all;
}

words words_of(const module_path<multicast> &path) {
    words all{1};
    all.insert(all.end(), path.what->members.begin(), path.what->members.end());
    return all;
}

words words_of(const module_path<label> &path) {
    words all{1};
    all.insert(all.end(), path.what->hops.begin(), path.what->hops.end());
    return all;
}

namespace {

constexpr size_t most_told = 3; ///< keys in an answer

bool is_of(const any_key &one, const module_head &head) {
    return one.first == head.table && (head.vsan == 0 || one.second.vsan == head.vsan);
}

any_key name_of(any_key where) {
    where.second.to.mask = where.first == table_id::multicast ? 0 : where.second.to.mask;
    return where;
}

} // namespace

void played_module::restart() {
    last_ = 0;
    all_.clear();
    named_.clear();
    merging_.clear();
    compared_.clear();
    comparing_.clear();
    differences_.clear();
}

bool played_module::is_in(const vsan_by_table &those, const module_head &head) {
    const auto found = those.find(head.table);
    return found != those.end() && (found->second == 0 || found->second == head.vsan);
}

void played_module::compare(const played_update &update, verdict &said) {
    const module_head &head = update.head;
    if (head.oper == FIB_OPER_BEGIN_VERIFY) {
        comparing_[head.table] = head.vsan;
        std::erase_if(compared_, [&](const any_key &one) { return one.first == head.table; });
        std::erase_if(differences_, [&](const auto &one) { return is_of(one.first, head); });
    } else if (!is_in(comparing_, head)) {
        said.result = RIB_NO_ENTRY;
    } else if (head.oper == FIB_OPER_END_VERIFY) {
        comparing_.erase(head.table);
        find_extra(head);
    }
    for (const auto &[where, what] : update.paths) {
        const auto held = all_.find(where);
        compared_.insert(where);
        if (held == all_.end() || held->second != what) {
            differences_[name_of(where)] = held == all_.end() ? FIB_VERF_NOT_IN_FIB : FIB_VERF_BAD_IN_FIB;
        }
    }
}

void played_module::find_extra(const module_head &head) {
    for (const auto &[where, what] : all_) {
        if (is_of(where, head) && !compared_.contains(where)) {
            differences_[name_of(where)] = FIB_VERF_NOT_IN_RIB;
        }
    }
}

verdict played_module::tell_differences(const any_key &from) const {
    verdict said;
    for (auto at = differences_.lower_bound(from);
         at != differences_.end() && at->first.first == from.first && said.found.size() < most_told; ++at) {
        said.found.emplace_back(*at);
    }
    return said;
}

uint32_t played_module::remove(table_id table, uint32_t vsan, bool unnamed_only) {
    return static_cast<uint32_t>(std::erase_if(all_, [&](const auto &one) {
        return one.first.first == table && (vsan == 0 || one.first.second.vsan == vsan) &&
               !(unnamed_only && named_.contains(one.first));
    }));
}

void played_module::merge(const module_head &head, verdict &said) {
    if (head.oper == FIB_OPER_BEGIN_MERGE) {
        merging_[head.table] = head.vsan;
        std::erase_if(named_, [&](const any_key &one) { return one.first == head.table; });
    } else if (!is_in(merging_, head)) {
        said.result = RIB_NO_ENTRY;
    } else if (head.oper == FIB_OPER_END_MERGE) {
        merging_.erase(head.table);
        said.accepted = remove(head.table, head.vsan, true);
    }
}

verdict played_module::take(const played_update &update) {
    verdict said;
    const module_head &head = update.head;
    if (update.asks) {
        return tell_differences(*update.asks);
    }
    if (last_ != 0 && !model::is_later(head.sequence, last_)) {
        said.result = RIB_INDEX_USED;
        return said;
    }
    last_ = head.sequence;
    if (head.oper >= FIB_OPER_BEGIN_VERIFY) {
        compare(update, said);
        return said;
    }
    if (head.oper == FIB_OPER_REMOVE_ALL) {
        said.accepted = remove(head.table, head.vsan, false);
    } else if (head.oper != FIB_OPER_UPDATE && head.oper != FIB_OPER_REMOVE) {
        merge(head, said);
    }
    for (const auto &[where, what] : update.paths) {
        const bool is_new = !all_.contains(where);
        const auto held = [&](const auto &one) { return one.first.first == head.table; };
        if (said.result == RIB_NO_ENTRY) {
            break;
        }
        if (what.empty()) {
            all_.erase(where);
        } else if (is_new && static_cast<size_t>(std::count_if(all_.begin(), all_.end(), held)) >= room_) {
            said.result = RIB_HW_FULL;
            said.named.insert(name_of(where));
        } else {
            all_[where] = what;
            compared_.insert(where);
            if (head.oper == FIB_OPER_MERGE) {
                named_.insert(where);
            }
        }
    }
    return said;
}

} // namespace ribkit::rib
