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

void played_module::restart() {
    last_ = 0;
    all_.clear();
    named_.clear();
    merging_.clear();
}

bool played_module::is_in_merge(const module_head &head) const {
    const auto found = merging_.find(head.table);
    return found != merging_.end() && (found->second == 0 || found->second == head.vsan);
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
    } else if (!is_in_merge(head)) {
        said.result = RIB_NO_ENTRY;
    } else if (head.oper == FIB_OPER_END_MERGE) {
        merging_.erase(head.table);
        said.accepted = remove(head.table, head.vsan, true);
    }
}

verdict played_module::take(const played_update &update) {
    verdict said;
    const module_head &head = update.head;
    if (last_ != 0 && !model::is_later(head.sequence, last_)) {
        said.result = RIB_INDEX_USED;
        return said;
    }
    last_ = head.sequence;
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
            any_key name = where;
            name.second.to.mask = head.table == table_id::multicast ? 0 : name.second.to.mask;
            said.named.insert(name);
        } else {
            all_[where] = what;
            if (head.oper == FIB_OPER_MERGE) {
                named_.insert(where);
            }
        }
    }
    return said;
}

} // namespace ribkit::rib
