// Handles are looked up on every call and opened rarely: readers share the lock.
#include "platform/handles.h"

#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace ribkit::platform {

namespace {

struct handle_table {
    std::shared_mutex lock;
    std::unordered_map<uint32_t, endpoint_ptr> open;
    uint32_t next = 1;
};

// Never destroyed: threads may still be in a call when the process ends.
handle_table &handles() {
    static auto &table = *new handle_table;
    return table;
}

} // namespace

uint32_t add_handle(endpoint_ptr opened) {
    handle_table &table = handles();
    const std::scoped_lock lock{table.lock};
    while (table.next == 0 || table.open.contains(table.next)) {
        ++table.next;
    }
    table.open.emplace(table.next, std::move(opened));
    return table.next++;
}

endpoint_ptr find_handle(uint32_t handle) {
    handle_table &table = handles();
    const std::shared_lock lock{table.lock};
    const auto found = table.open.find(handle);
    return found == table.open.end() ? nullptr : found->second;
}

endpoint_ptr remove_handle(uint32_t handle) {
    handle_table &table = handles();
    const std::scoped_lock lock{table.lock};
    auto node = table.open.extract(handle);
    return node.empty() ? nullptr : std::move(node.mapped());
}

} // namespace ribkit::platform
