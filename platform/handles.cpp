// Handles are looked up on every call: they are spread over many small lists, each with a lock of its own, so that
// threads on different handles do not meet.
#include "platform/handles.h"

#include "platform/lasting.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace ribkit::platform {

namespace {

struct alignas(64) handle_list {
    std::mutex lock;
    std::vector<std::pair<uint32_t, endpoint_ptr>> open;

    auto find(uint32_t handle) {
        return std::find_if(open.begin(), open.end(), [=](const auto &one) { return one.first == handle; });
    }
};

constinit lasting<std::array<handle_list, 64>> lists;

handle_list &list_of(uint32_t handle) { return lists.it[handle % lists.it.size()]; }

std::atomic<uint32_t> last_handle{0};

} // namespace

uint32_t add_handle(endpoint_ptr opened) {
    for (;;) {
        const uint32_t handle = std::max(++last_handle, 1U); // never 0
        handle_list &list = list_of(handle);
        const std::scoped_lock lock{list.lock};
        if (list.find(handle) == list.open.end()) {
            list.open.emplace_back(handle, std::move(opened));
            return handle;
        }
    }
}

endpoint_ptr find_handle(uint32_t handle) {
    handle_list &list = list_of(handle);
    const std::scoped_lock lock{list.lock};
    const auto found = list.find(handle);
    return found == list.open.end() ? nullptr : found->second;
}

endpoint_ptr remove_handle(uint32_t handle) {
    handle_list &list = list_of(handle);
    const std::scoped_lock lock{list.lock};
    const auto found = list.find(handle);
    if (found == list.open.end()) {
        return nullptr;
    }
    endpoint_ptr removed = std::move(found->second);
    list.open.erase(found);
    return removed;
}

} // namespace ribkit::platform
