// The C++ library's allocations by malloc, whose name the linker wraps here: they fail on demand, too.
#include <cstdlib>
#include <new>

void *operator new(size_t size) {
    void *block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc{};
    }
    return block;
}

void operator delete(void *block) noexcept { std::free(block); }

void operator delete(void *block, size_t /*size*/) noexcept { std::free(block); }
