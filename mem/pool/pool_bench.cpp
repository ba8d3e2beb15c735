// Pools against their peers, from few items to very many.
#include "bench/harness.h"
#include "mem/mem_bench.h"
#include "mem/pool/naive_pool.h"
#include "rib_mem.h"
#include <cstdlib>
#include <memory_resource>
#include <string>
#include <vector>

#if __has_include(<boost/pool/pool.hpp>)
#include <boost/pool/pool.hpp>
#define RIBKIT_HAS_BOOST_POOL 1
#endif

using namespace ribkit::bench;

namespace ribkit::mem {

namespace {

template <class Heap> struct one_by_one {
    void fill(std::vector<void *> &live, size_t items) {
        while (live.size() < items) {
            live.push_back(static_cast<Heap *>(this)->alloc());
        }
    }
};

constexpr uint32_t item_size = 24;
constexpr uint32_t chunk_size = 64;

struct our_pool : one_by_one<our_pool> {
    struct pool *pool = pool_create(chunk_size, item_size);
    our_pool() = default;
    our_pool(const our_pool &) = delete;
    our_pool &operator=(const our_pool &) = delete;
    ~our_pool() { pool_destroy(pool); }
    void *alloc() const { return pool_alloc(pool); }
    void free(void *item) const { pool_free(pool, item); }
};

struct c_heap : one_by_one<c_heap> {
    static void *alloc() { return std::calloc(1, item_size); }
    static void free(void *item) { std::free(item); }
};

struct naive_chunks {
    naive::pool pool{chunk_size, item_size};
    void fill(std::vector<void *> &live, size_t items) {
        pool.fill(static_cast<uint32_t>(items / chunk_size), [&](void *item) { live.push_back(item); });
    }
    void *alloc() { return pool.alloc(); }
    void free(void *item) { pool.free(static_cast<uint8_t *>(item)); }
};

struct pmr_pool : one_by_one<pmr_pool> {
    std::pmr::unsynchronized_pool_resource pool;
    void *alloc() { return pool.allocate(item_size, alignof(void *)); }
    void free(void *item) { pool.deallocate(item, item_size, alignof(void *)); }
};

#if defined(RIBKIT_HAS_BOOST_POOL)
struct boost_pool : one_by_one<boost_pool> {
    boost::pool<> pool{item_size};
    void *alloc() { return pool.malloc(); }
    void free(void *item) { pool.free(item); }
};
#endif

// Items come and go at random; about `items` of them live.
template <class Heap> class churn {
  public:
    explicit churn(size_t items, uint32_t first_steps) : items_(items) {
        live_.reserve(items * 2);
        heap_.fill(live_, items);
        steps(first_steps);
    }
    churn(const churn &) = delete;
    churn &operator=(const churn &) = delete;
    ~churn() {
        for (void *item : live_) {
            heap_.free(item);
        }
    }

    void step() {
        seed_ = seed_ * UINT64_C(6364136223846793005) + UINT64_C(1442695040888963407);
        const auto dice = static_cast<uint32_t>(seed_ >> 33);
        if ((dice & 1) != 0 ? live_.size() < items_ + items_ / 16 : live_.size() < items_ - items_ / 16) {
            live_.push_back(heap_.alloc());
            return;
        }
        void *&chosen = live_[(seed_ >> 32) * live_.size() >> 32];
        heap_.free(chosen);
        chosen = live_.back();
        live_.pop_back();
    }

    void steps(uint32_t count) {
        for (uint32_t i = 0; i < count; i++) {
            step();
        }
    }

  private:
    Heap heap_;
    size_t items_;
    uint64_t seed_ = 7;
    std::vector<void *> live_;
};

template <class Peer> void row(const char *peer, uint32_t items, double bound, uint32_t steps = 1000, int rounds = 60) {
    churn<our_pool> ours(items, steps * 200);
    churn<Peer> theirs(items, steps * 200);
    const std::string what = "churn of " + std::to_string(items / 1024) + "K items, " + peer;
    print_row(what,
              compare(
                  steps, [&] { ours.steps(steps); }, [&] { theirs.steps(steps); }, rounds),
              bound);
}

} // namespace

void pool_rows() {
    heading("pool, 24-byte items in chunks of 64, one call", "op");
    row<c_heap>("calloc/free", 1U << 10, 2.5);
    row<c_heap>("calloc/free", 1U << 16, 2.2);
    row<c_heap>("calloc/free", 1U << 20, 2.0);
    for (const uint32_t items : {1U << 10, 1U << 16, 1U << 20}) {
        row<pmr_pool>("std::pmr pool", items, 1);
#if defined(RIBKIT_HAS_BOOST_POOL)
        row<boost_pool>("boost::pool (not cleared)", items, no_bound);
#else
        missing_row("boost::pool", "not installed");
#endif
    }
    row<naive_chunks>("chunks walked", 1U << 10, no_bound);
    row<naive_chunks>("chunks walked", 1U << 16, no_bound, 100, 20);
    row<naive_chunks>("chunks walked", 1U << 20, 0.002, 20, 20);
}

} // namespace ribkit::mem
