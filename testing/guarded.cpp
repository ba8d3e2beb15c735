// A mapping of whole pages between two that cannot be touched.
#include "testing/guarded.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace ribkit::testing {

guarded::guarded(size_t size, edge where) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t room = (size + page - 1) / page * page;
    mapped_ = room + 2 * page;
    void *map = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    map_ = static_cast<uint8_t *>(map);
    if (map == MAP_FAILED || (room != 0 && mprotect(map_ + page, room, PROT_READ | PROT_WRITE) != 0)) {
        std::perror("testing/guarded");
        std::abort();
    }
    bytes_ = {where == edge::after ? map_ + page + room - size : map_ + page, size};
    std::fill(bytes_.begin(), bytes_.end(), uint8_t{0xa5});
}

guarded::guarded(std::span<const uint8_t> content, edge where) : guarded(content.size(), where) {
    std::copy(content.begin(), content.end(), bytes_.begin());
}

guarded::~guarded() { munmap(map_, mapped_); }

} // namespace ribkit::testing
