// A pool and its model, given the same calls, whose results and displays are compared. And what else the pool's tests
// share.
#pragma once

#include "mem/pool/naive_pool.h"
#include "mem/pool/pool.h"
#include "rib_mem.h"
#include <cstdint>
#include <string>
#include <vector>

namespace ribkit::mem {

/// A timed trace line without its time.
std::string traced(const std::string &line);
std::string formatted(const char *format, const void *at);
uint32_t counted(const struct pool *pool);
bool zeros(const uint8_t *from, size_t size);

/// What must hold between a pool's list and its index at any time.
void expect_sound(const struct pool &pool);

/// The model's chunks stand where the pool's do.
class twin_pools {
  public:
    twin_pools(uint32_t chunk_size, uint32_t data_size)
        : model_(chunk_size, data_size, false), pool_(pool_create(chunk_size, data_size)) {}
    twin_pools(const twin_pools &) = delete;
    twin_pools &operator=(const twin_pools &) = delete;
    ~twin_pools() { pool_destroy(pool_); }

    void alloc();
    /// The nth allocation of memory fails, if there is one: no item, and nothing changed.
    void alloc_failing(size_t nth);
    /// Of an item, of what once was one, or of an address near one.
    void free(uint8_t *item);
    void free_any(uint32_t choice);
    void expect_same() const;

    [[nodiscard]] size_t live() const { return live_.size(); }
    [[nodiscard]] uint8_t *any(uint32_t choice) const { return live_[choice % live_.size()]; }

  private:
    void accept(uint8_t *item);
    [[nodiscard]] const naive::chunk *holder(const uint8_t *item) const;
    [[nodiscard]] std::string display() const;

    naive::pool model_;
    struct pool *pool_;
    std::vector<uint8_t *> live_;
};

} // namespace ribkit::mem
