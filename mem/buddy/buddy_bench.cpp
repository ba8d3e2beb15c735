// The buddy allocator against walked lists, from a thousand units to a quarter of a million.
#include "bench/harness.h"
#include "mem/buddy/naive_buddy.h"
#include "mem/mem_bench.h"
#include "rib_mem.h"
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace ribkit::bench;

namespace ribkit::mem {

namespace {

struct our_buddy {
    struct bud *bud;
    explicit our_buddy(uint32_t units) : bud(bud_create(units)) {}
    our_buddy(const our_buddy &) = delete;
    our_buddy &operator=(const our_buddy &) = delete;
    ~our_buddy() { bud_destroy(bud); }
    uint32_t alloc(uint32_t size, uint32_t *index) const { return bud_alloc(bud, size, index); }
    void free(uint32_t size, uint32_t index) const { bud_free(bud, size, index); }

    [[nodiscard]] uint8_t *image() const {
        uint8_t *buffer = nullptr;
        uint32_t length = 0;
        bud_serialize(bud, &buffer, &length);
        return buffer;
    }
    void restore(const uint8_t *image) const { bud_deserialize(bud, image); }
};

struct naive_buddy {
    naive::buddy buddy;
    explicit naive_buddy(uint32_t units) : buddy(units) {}
    uint32_t alloc(uint32_t size, uint32_t *index) { return buddy.alloc(size, index); }
    void free(uint32_t size, uint32_t index) { buddy.free(size, index); }

    [[nodiscard]] uint8_t *image() const {
        auto *words = static_cast<uint32_t *>(std::malloc(size_t{4} * buddy.image_words()));
        buddy.save(words);
        return reinterpret_cast<uint8_t *>(words);
    }
    void restore(const uint8_t *image) { buddy.restore(reinterpret_cast<const uint32_t *>(image)); }
};

// Blocks of 1 to 16 units come and go at random, about 65 % of the units used.
template <class Buddy> class mix {
  public:
    explicit mix(uint32_t units) : buddy_(units), wanted_(units / 100 * 65) { steps(units < 4096 ? 4096 : units / 2); }

    void step() {
        seed_ = seed_ * UINT64_C(6364136223846793005) + UINT64_C(1442695040888963407);
        const auto dice = static_cast<uint32_t>(seed_ >> 33);
        if ((dice >> 8 & 7) < (used_ < wanted_ ? 5U : 3U)) {
            const uint32_t size = (dice & 15) + 1;
            uint32_t index = 0;
            if (buddy_.alloc(size, &index) == 0) {
                live_.push_back({size, index});
                used_ += size;
            }
        } else if (!live_.empty()) {
            block &chosen = live_[(seed_ >> 32) * live_.size() >> 32];
            buddy_.free(chosen.size, chosen.index);
            used_ -= chosen.size;
            chosen = live_.back();
            live_.pop_back();
        }
    }

    void steps(uint32_t count) {
        for (uint32_t i = 0; i < count; i++) {
            step();
        }
    }

    Buddy &buddy() { return buddy_; }

  private:
    struct block {
        uint32_t size;
        uint32_t index;
    };

    Buddy buddy_;
    uint32_t wanted_;
    uint32_t used_ = 0;
    uint64_t seed_ = 9;
    std::vector<block> live_;
};

void row(uint32_t units, double bound, uint32_t steps, int rounds) {
    mix<our_buddy> ours(units);
    mix<naive_buddy> theirs(units);
    const std::string what = "random mix at 65 %, " + std::to_string(units / 1024) + "K units";
    print_row(what,
              compare(
                  steps, [&] { ours.steps(steps); }, [&] { theirs.steps(steps); }, rounds),
              bound);
}

void image_rows(uint32_t units) {
    mix<our_buddy> ours(units);
    mix<naive_buddy> theirs(units);
    const auto save = [](auto &mix) {
        uint8_t *image = mix.buddy().image();
        keep(image);
        std::free(image);
    };
    print_row("image saved, 256K units",
              compare(
                  1, [&] { save(ours); }, [&] { save(theirs); }),
              0.125);
    uint8_t *image = ours.buddy().image();
    print_row("image restored, 256K units",
              compare(
                  1, [&] { ours.buddy().restore(image); }, [&] { theirs.buddy().restore(image); }));
    std::free(image);
}

void flatness() {
    mix<our_buddy> largest(1U << 18);
    mix<our_buddy> smallest(1U << 10);
    print_row("256K units against 1K units, both ours",
              compare(
                  1000, [&] { largest.steps(1000); }, [&] { smallest.steps(1000); }),
              1.4);
}

} // namespace

void buddy_rows() {
    heading("buddy against the walked lists, one call", "op");
    row(1U << 10, 0.45, 1000, 60);
    row(1U << 14, 0.10, 1000, 60);
    row(1U << 16, 0.02, 200, 30);
    row(1U << 18, 0.01, 50, 30);
    flatness();
    image_rows(1U << 18);
}

} // namespace ribkit::mem
