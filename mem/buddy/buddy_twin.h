// A buddy descriptor and its model, given the same calls; what each answers, counts, saves and shows is compared. And
// what else the buddy's tests share.
#pragma once

#include "mem/buddy/buddy.h"
#include "mem/buddy/naive_buddy.h"
#include "mem/random_words.h"
#include <cstdint>
#include <string>
#include <vector>

namespace ribkit::mem {

using words = std::vector<uint32_t>;

inline constexpr uint32_t none = 0xdeadbeef;

words saved_by(const struct bud *bud);
words saved_by(const naive::buddy &model);

/// What must hold inside a descriptor at any time.
void expect_sound(const struct bud &bud);

class twin_buddies {
  public:
    struct block {
        uint32_t size;
        uint32_t index;
    };

    explicit twin_buddies(uint32_t total);
    twin_buddies(const twin_buddies &) = delete;
    twin_buddies &operator=(const twin_buddies &) = delete;
    ~twin_buddies();

    /// With `failing` not 0 that allocation of memory fails, counted from 1.
    void alloc(uint32_t size, size_t failing = 0);
    void free(uint32_t size, uint32_t index);
    /// Frees one of the blocks that were allocated and not yet freed.
    void free_any(uint32_t choice);
    void restore(const words &image);
    void table(const words &table);
    void expect_same() const;
    void expect_same_displays() const;

    [[nodiscard]] const std::vector<block> &live() const { return live_; }
    [[nodiscard]] struct bud *product() const { return bud_; }
    [[nodiscard]] const naive::buddy &model() const { return model_; }

  private:
    naive::buddy model_;
    struct bud *bud_;
    std::vector<block> live_;
};

/// An image from its lists, in the order given.
words image_of(uint32_t total, uint32_t free_space, uint32_t carve_mark, const std::vector<twin_buddies::block> &free,
               const std::vector<twin_buddies::block> &used);

/// The index of a block that there is room for.
uint32_t alloc(struct bud *bud, uint32_t size);

struct walk_options {
    uint32_t total;
    uint32_t fill_percent; ///< of the units, about which the walk swings
    uint32_t nonsense;     ///< per mille
    uint32_t steps;
    uint32_t every; ///< steps between two comparisons
};

void random_step(twin_buddies &twins, random_words &random, const walk_options &options, uint32_t &used);
void random_walk(twin_buddies &twins, const walk_options &options);

} // namespace ribkit::mem
