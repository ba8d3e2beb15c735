// The sums are kinds of their own, entered first; there are no more of them than result codes.
#include "rib/refusals.h"

#include <new>

namespace ribkit::rib {

void refusal_counts::add(uint32_t result, uint32_t client) noexcept {
    try {
        counts_[{result, all_clients}]++;
        const kind mine{result, client};
        if (client != all_clients && (counts_.size() < most_kinds || counts_.contains(mine))) {
            counts_[mine]++;
        }
    } catch (const std::bad_alloc &) {
        return;
    }
}

uint32_t refusal_counts::of(uint32_t result, uint32_t client) const {
    const auto found = counts_.find({result, client});
    return found == counts_.end() ? 0 : found->second;
}

} // namespace ribkit::rib
