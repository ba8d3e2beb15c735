// A new list is made whole before it takes the place of another.
#include "rib/versions.h"

#include "rib_codes.h"

#include <new>
#include <utility>

namespace ribkit::rib {

uint32_t version_lists::add(const version_key &of, std::span<const uint32_t> versions) {
    try {
        std::vector<uint32_t> list(versions.begin(), versions.end());
        const auto at = lists_.find(of);
        if (at != lists_.end()) {
            at->second = std::move(list);
            return RIB_OK;
        }
        if (lists_.size() == most) {
            return RIB_HW_FULL;
        }
        lists_.emplace(of, std::move(list));
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
    return RIB_OK;
}

uint32_t version_lists::remove(const version_key &of, uint32_t &removed) {
    const auto found = lists_.find(of);
    if (found == lists_.end()) {
        return RIB_NO_ENTRY;
    }
    removed = static_cast<uint32_t>(found->second.size());
    lists_.erase(found);
    return RIB_OK;
}

} // namespace ribkit::rib
