// The C++ library's allocations by malloc, whose name the linker wraps here: they fail on demand, too. Those of arrays
// are named as well: a sanitizer's runtime has its own for whatever is not.
#include <cstdlib>
#include <new>

void *operator new(size_t size) {
    void *block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc{};
    }
    return block;
}

void *operator new(size_t size, const std::nothrow_t & /*unused*/) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}

void *operator new[](size_t size) { return operator new(size); }

void *operator new[](size_t size, const std::nothrow_t &as) noexcept { return operator new(size, as); }

void operator delete(void *block) noexcept { std::free(block); }

void operator delete(void *block, size_t /*size*/) noexcept { std::free(block); }

void operator delete(void *block, const std::nothrow_t & /*unused*/) noexcept { std::free(block); }

void operator delete[](void *block) noexcept { std::free(block); }

void operator delete[](void *block, size_t /*size*/) noexcept { std::free(block); }

void operator delete[](void *block, const std::nothrow_t & /*unused*/) noexcept { std::free(block); }
