// What an operation does stands in one table; the rest is counting.
#include "fib/update.h"

#include <new>

namespace ribkit::fib {

namespace {

struct operation {
    uint32_t oper;
    task does;
};

constexpr operation operations[] = {
    {FIB_OPER_UPDATE, task::put},
    {FIB_OPER_REMOVE, task::remove},
    {FIB_OPER_REMOVE_ALL, task::remove_all},
    {FIB_OPER_BEGIN_MERGE, task::begin_merge},
    {FIB_OPER_MERGE, task::merge},
    {FIB_OPER_END_MERGE, task::end_merge},
    {FIB_OPER_BEGIN_VERIFY, task::begin_comparison},
    {FIB_OPER_VERIFY, task::compare},
    {FIB_OPER_END_VERIFY, task::end_comparison},
};

/// How a key is named whose path had this result.
uint32_t status_of(uint32_t result) {
    switch (result) {
    case RIB_HW_FULL:
    case RIB_VSAN_TCAM_FULL:
        return FIB_VERF_NOT_IN_HW;
    case RIB_BAD_PARAMETERS:
        return FIB_VERF_BAD_IN_FIB;
    default:
        return FIB_VERF_NOT_IN_FIB;
    }
}

} // namespace

task task_of(uint32_t oper) {
    for (const operation &one : operations) {
        if (one.oper == oper) {
            return one.does;
        }
    }
    return task::none;
}

template <class Kind>
update_work<Kind>::update_work(state &fib, const model::fib_head &head, uint32_t paths)
    : fib_(fib), table_(fib.table_of<Kind>()),
      task_(task_of(head.oper)), answer_{{RIB_OK, head.oper, head.vsan, 0, head.sequence}, {}} {
    refused_ = judge(paths);
    if (refused_ == RIB_OK) {
        refused_ = fib_.admit(head.sequence);
    }
    if (refused_ == RIB_OK && (task_ == task::merge || task_ == task::compare) &&
        !(task_ == task::merge ? table_.merges : table_.comparisons).covers(head.vsan)) {
        refused_ = RIB_NO_ENTRY;
    }
}

/// Whether the head makes sense.
template <class Kind> uint32_t update_work<Kind>::judge(uint32_t paths) const {
    if (task_ == task::none) {
        return RIB_NOT_SUPPORTED;
    }
    const uint32_t least = has_paths(task_) ? 1 : 0;
    const bool sound =
        answer_.said.vsan >= least && answer_.said.vsan <= RIB_LAST_VSAN && (has_paths(task_) || paths == 0);
    return sound ? RIB_OK : RIB_BAD_PARAMETERS;
}

template <class Kind> void update_work<Kind>::take(const key &where, const values &what) {
    const uint32_t result = refused_ != RIB_OK ? refused_ : take_one(where, what);
    answer_.said.accepted += result == RIB_OK ? 1 : 0;
    if (result != RIB_OK) {
        answer_.said.result = answer_.said.result == RIB_OK ? result : answer_.said.result;
        answer_.faults.push_back({status_of(result), where});
    }
}

template <class Kind> uint32_t update_work<Kind>::take_one(const key &where, const values &what) {
    switch (task_) {
    case task::remove:
        table_.remove(where);
        return RIB_OK;
    case task::compare:
        return compare(where, what);
    default:
        return table_.put(where, what, task_ == task::merge);
    }
}

/// A difference is named and is no failure.
template <class Kind> uint32_t update_work<Kind>::compare(const key &where, const values &what) {
    const uint32_t status = table_.compare(where, what);
    if (status != FIB_VERF_CONSISTENT) {
        answer_.faults.push_back({status, where});
        keep_difference(where, status);
        answer_.said.accepted--; // what take counts
    }
    return RIB_OK;
}

template <class Kind> table_answer<Kind> update_work<Kind>::end() {
    if (refused_ == RIB_OK && !has_paths(task_)) {
        refused_ = perform();
    }
    if (refused_ != RIB_OK) {
        answer_.said.result = refused_;
    } else if (!fib_.is_merging() && (task_ == task::put || task_ == task::end_merge)) {
        fib_.condition_.load();
    }
    return std::move(answer_);
}

/// What has no paths.
template <class Kind> uint32_t update_work<Kind>::perform() {
    try {
        switch (task_) {
        case task::begin_merge:
            table_.merges.begin(answer_.said.vsan);
            return RIB_OK;
        case task::end_merge:
            return finish_merge();
        case task::begin_comparison:
            table_.comparisons.begin(answer_.said.vsan);
            forget_differences();
            return RIB_OK;
        case task::end_comparison:
            return finish_comparison();
        default:
            answer_.said.accepted = table_.remove_all(answer_.said.vsan);
            return RIB_OK;
        }
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
}

template <class Kind> uint32_t update_work<Kind>::finish_merge() {
    const auto removed = table_.end_merge(answer_.said.vsan);
    answer_.said.accepted = removed.value_or(0);
    return removed ? RIB_OK : RIB_NO_ENTRY;
}

template <class Kind> uint32_t update_work<Kind>::finish_comparison() {
    const auto compared = table_.end_comparison(answer_.said.vsan, answer_.faults);
    answer_.said.accepted = compared.value_or(0);
    for (const auto &[status, where] : answer_.faults) {
        keep_difference(where, status);
    }
    return compared ? RIB_OK : RIB_NO_ENTRY;
}

template <class Kind> void update_work<Kind>::keep_difference(const key &where, uint32_t status) {
    auto &kept = fib_.differences_of<Kind>();
    if (kept.size() < most_differences) {
        kept[where] = status;
    }
}

/// Those of the VSAN that is compared.
template <class Kind> void update_work<Kind>::forget_differences() {
    const uint32_t vsan = answer_.said.vsan;
    std::erase_if(fib_.differences_of<Kind>(), [vsan](const auto &one) { return vsan == 0 || one.first.vsan == vsan; });
}

template class update_work<unicast>;
template class update_work<multicast>;
template class update_work<label>;

} // namespace ribkit::fib
