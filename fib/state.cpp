// Tables share what VSANs have of them; everything of the RIB's has one sequence of numbers.
#include "fib/state.h"

#include "model/flows.h"

#include <algorithm>
#include <new>

namespace ribkit::fib {

state::state(const fib_sizes &sizes)
    : shares_(sizes.per_vsan), unicast_(sizes.unicast, shares_), multicast_(sizes.multicast, shares_),
      label_(sizes.label, shares_), rewrites_(sizes.rewrite) {}

template <> const table<unicast> &state::entries() const { return unicast_; }
template <> const table<multicast> &state::entries() const { return multicast_; }
template <> const table<label> &state::entries() const { return label_; }
template <> table<unicast> &state::table_of() { return unicast_; }
template <> table<multicast> &state::table_of() { return multicast_; }
template <> table<label> &state::table_of() { return label_; }
template <> std::map<model::route_key, uint32_t> &state::differences_of<unicast>() { return unicast_differences_; }
template <> std::map<model::route_key, uint32_t> &state::differences_of<multicast>() { return multicast_differences_; }
template <> std::map<model::label_key, uint32_t> &state::differences_of<label>() { return label_differences_; }
template <> const std::map<model::route_key, uint32_t> &state::differences<unicast>() const {
    return unicast_differences_;
}
template <> const std::map<model::route_key, uint32_t> &state::differences<multicast>() const {
    return multicast_differences_;
}
template <> const std::map<model::label_key, uint32_t> &state::differences<label>() const { return label_differences_; }

/// Takes the number of a message. @return 0; RIB_LC_UPGRADING; RIB_INDEX_USED where a later one was taken
uint32_t state::admit(uint32_t sequence) {
    if (condition_.is_upgrading()) {
        return RIB_LC_UPGRADING;
    }
    if (sequence_ && !model::is_later(sequence, *sequence_)) {
        return RIB_INDEX_USED;
    }
    sequence_ = sequence;
    return RIB_OK;
}

namespace {

/// What is 0 changes nothing.
void change(model::vsan_attributes &known, const model::vsan_attributes &said) {
    known.state = said.state == model::vsan_state::no_change ? known.state : said.state;
    known.balance = said.balance == model::flow_balance{} ? known.balance : said.balance;
    known.in_order = said.in_order;
    known.latency = said.latency;
}

} // namespace

uint32_t state::take_vsans(uint32_t sequence, std::span<const std::pair<uint32_t, model::vsan_attributes>> vsans) {
    if (std::any_of(vsans.begin(), vsans.end(), [](const auto &one) { return one.first > RIB_LAST_VSAN; })) {
        return RIB_BAD_PARAMETERS;
    }
    if (const uint32_t refused = admit(sequence); refused != RIB_OK) {
        return refused;
    }
    try {
        for (const auto &[id, said] : vsans) {
            if (id == 0) {
                latency_of_all_ = said.latency;
            } else {
                change(vsans_[id], said);
            }
        }
        return RIB_OK;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
}

model::vsan_attributes state::vsan(uint32_t id) const {
    const auto found = vsans_.find(id);
    model::vsan_attributes known = found == vsans_.end() ? model::vsan_attributes{} : found->second;
    known.latency = known.latency != 0 ? known.latency : latency_of_all_;
    return known;
}

model::fib_answer state::take_rewrites(const model::fib_head &head, std::span<const rewrite> paths) {
    model::fib_answer answer{RIB_OK, head.oper, head.vsan, 0, head.sequence};
    const bool puts = head.oper == FIB_OPER_UPDATE;
    const bool removes_all = head.oper == FIB_OPER_REMOVE_ALL;
    if (!puts && !removes_all && head.oper != FIB_OPER_REMOVE) {
        answer.result = RIB_NOT_SUPPORTED;
    } else if (head.vsan > RIB_LAST_VSAN || (removes_all ? !paths.empty() : head.vsan == 0)) {
        answer.result = RIB_BAD_PARAMETERS;
    } else {
        answer.result = admit(head.sequence);
    }
    if (answer.result != RIB_OK) {
        return answer;
    }
    answer.accepted = removes_all ? rewrites_.remove_all(head.vsan) : 0;
    for (const rewrite &one : paths) {
        const uint32_t result = one.key.vsan != head.vsan ? RIB_BAD_PARAMETERS : puts ? rewrites_.put(one) : RIB_OK;
        if (result == RIB_OK && !puts) {
            rewrites_.remove(one.key);
        }
        answer.accepted += result == RIB_OK ? 1 : 0;
        answer.result = answer.result == RIB_OK ? result : answer.result;
    }
    return answer;
}

std::span<const uint32_t> state::way_of(const model::flow &flow) const {
    const auto *found = model::longest_match(flow.vsan, flow.destination, [&](const model::route_key &key) {
        const auto at = unicast_.all().find(key);
        return at == unicast_.all().end() ? nullptr : &at->second;
    });
    std::span<const uint32_t> ways = found == nullptr ? std::span<const uint32_t>{} : found->words.words();
    const uint32_t count = model::count_label_hops(ways);
    if (count == 0) {
        return {};
    }
    for (uint32_t before = model::chosen_way(flow, vsan(flow.vsan).balance, count); before > 0; before--) {
        model::take_label_hop(ways);
    }
    return model::take_label_hop(ways);
}

bool state::is_merging() const { return unicast_.merges.any() || multicast_.merges.any() || label_.merges.any(); }

model::fib_state state::now() const {
    const bool compares = unicast_.comparisons.any() || multicast_.comparisons.any() || label_.comparisons.any();
    return condition_.now(is_merging(), compares);
}

void state::lose() {
    condition_.lose();
    for (rounds *going : {&unicast_.merges, &unicast_.comparisons, &multicast_.merges, &multicast_.comparisons,
                          &label_.merges, &label_.comparisons}) {
        going->abort();
    }
}

} // namespace ribkit::fib
