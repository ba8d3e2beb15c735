// The wrapped names count allocations under a lock, and the armed one fails.
#include "testing/alloc_failure.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>

// The linker's names: a call of malloc arrives at __wrap_malloc, and __real_malloc is the C library's.
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *block, size_t size);
void __wrap_free(void *block);
}

namespace ribkit::testing {

namespace {

std::mutex lock; // of all that follows: several threads may allocate
bool armed = false;
size_t allocations = 0;
size_t failing = 0;
size_t refused = 0;
failing_allocation::how often_failing = failing_allocation::how::once;
std::array<void *, 4096> kept{};
size_t kept_count = 0;

bool fails(size_t size) {
    const std::scoped_lock locked{lock};
    if (!armed) {
        return false;
    }
    allocations++;
    const bool does =
        allocations == failing || (allocations > failing && often_failing == failing_allocation::how::onwards);
    refused = does ? size : refused;
    return does;
}

void *keep(void *block) {
    const std::scoped_lock locked{lock};
    if (armed && block != nullptr && kept_count < kept.size()) {
        kept[kept_count++] = block;
    }
    return block;
}

void let_go(const void *block) {
    const std::scoped_lock locked{lock};
    void **end = kept.data() + kept_count;
    void **found = std::find(kept.data(), end, block);
    if (found != end) {
        *found = kept[--kept_count];
        kept[kept_count] = nullptr;
    }
}

} // namespace

failing_allocation::failing_allocation(size_t n, how often) {
    const std::scoped_lock locked{lock};
    allocations = 0;
    refused = 0;
    failing = n;
    often_failing = often;
    armed = true;
}

failing_allocation::~failing_allocation() {
    const std::scoped_lock locked{lock};
    armed = false;
}

bool failing_allocation::happened() const {
    const std::scoped_lock locked{lock};
    return allocations >= failing;
}

size_t failing_allocation::size_refused() { return refused; }

size_t blocks_kept() { return kept_count; }

} // namespace ribkit::testing

using namespace ribkit::testing;

void *__wrap_malloc(size_t size) { return fails(size) ? nullptr : keep(__real_malloc(size)); }

void *__wrap_calloc(size_t count, size_t size) {
    return fails(count * size) ? nullptr : keep(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size) {
    if (fails(size)) {
        return nullptr;
    }
    let_go(block);
    return keep(__real_realloc(block, size));
}

void __wrap_free(void *block) {
    let_go(block);
    __real_free(block);
}
