// Requests wait equally long, so that whoever came first is due first; but identifiers begin anew some time.
#include "rib/service/modules/held_answers.h"

#include <algorithm>

namespace ribkit::rib {

bool held_answers::has_room(uint32_t sender) const {
    const auto found = of_sender_.find(sender);
    return all_.size() < most && (found == of_sender_.end() || found->second < most_of_one);
}

void held_answers::hold(waiting::id request, const held_answer &one) {
    size_t &count = of_sender_[one.sender];
    all_.emplace(request, one);
    count++;
}

void held_answers::count_off(uint32_t sender) {
    const auto found = of_sender_.find(sender);
    if (--found->second == 0) {
        of_sender_.erase(found);
    }
}

std::optional<held_answer> held_answers::take(waiting::id request) {
    const auto found = all_.find(request);
    if (found == all_.end()) {
        return {};
    }
    const held_answer one = found->second;
    all_.erase(found);
    count_off(one.sender);
    return one;
}

std::optional<held_answer> held_answers::take_any() { return all_.empty() ? std::nullopt : take(all_.begin()->first); }

std::optional<waiting::id> held_answers::overdue(uint64_t now) const {
    const auto found = std::find_if(all_.begin(), all_.end(), [&](const auto &one) { return one.second.due <= now; });
    return found == all_.end() ? std::nullopt : std::optional(found->first);
}

std::optional<uint64_t> held_answers::next_due() const {
    const auto first = std::min_element(
        all_.begin(), all_.end(), [](const auto &one, const auto &other) { return one.second.due < other.second.due; });
    return first == all_.end() ? std::nullopt : std::optional(first->second.due);
}

} // namespace ribkit::rib
