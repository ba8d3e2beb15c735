// Contiguous segments and a model that moves them as they are described, on long random walks.
#include "mem/contiguous/contiguous.h"
#include "mem/contiguous/contiguous_rig.h"
#include "mem/random_words.h"
#include "testing/capture.h"
#include <algorithm>

using namespace ribkit::mem;
using namespace ribkit::testing;

namespace {

// The moves as they are described: each asks its neighbour's by calling it.
struct model {
    struct record {
        uint32_t size, first, free;
    };

    uint32_t total, block;
    bool movable;
    std::vector<record> seg;
    std::string printed;
    uint32_t masks_left = 0xffffffff;
    std::string calls;

    void show() {
        printed += text("\nTotal %u, block size %u, # segments %u\n", total, block, static_cast<uint32_t>(seg.size()));
        printed += "Seg\tSize\tFirst\tFree\n---\t----\t-----\t----\n";
        for (size_t i = 0; i < seg.size(); i++) {
            printed += text("%u\t%x\t%05x\t%05x\n", static_cast<uint32_t>(i), seg[i].size, seg[i].first, seg[i].free);
        }
    }

    uint32_t ask_mask(uint32_t s, uint32_t first, uint32_t count) {
        calls += text("mask %u %u %u\n", s, first, count);
        return masks_left-- == 0 ? 0xbad : 0;
    }

    uint32_t up(uint32_t s, uint32_t n) {
        printed += text("Start of cont_mv_up() seg %u n_block %u \n", s, n);
        if (s == 0) {
            printed += text("Error! cont_mv_up %u n_block called for segment 0\n", n);
            return RIB_FAILED;
        }
        if (s == seg.size()) {
            return RIB_FAILED;
        }
        const uint32_t there = (seg[s - 1].first + seg[s - 1].size - seg[s - 1].free) / block;
        if (n > there) {
            const uint32_t result = up(s - 1, n - there);
            if (result != 0) {
                return result;
            }
        }
        seg[s - 1].size -= n * block;
        if (const uint32_t r = ask_mask(s, seg[s].first - n * block, n * block); r != 0) {
            printed += text("cont_mv_up() error %x in mask_func for seg %u \n", r, s);
            return r;
        }
        if (const uint32_t m = std::min(n * block, seg[s].free - seg[s].first); m > 0) {
            calls += text("move %u %u %u\n", seg[s].first - n * block, seg[s].free - m, m);
        }
        seg[s] = {seg[s].size + n * block, seg[s].first - n * block, seg[s].free - n * block};
        show();
        printed += text("End of cont_mv_up() seg %u n_block %u \n", s, n);
        return 0;
    }

    uint32_t down(uint32_t s, uint32_t n) {
        printed += text("Start of cont_mv_down() seg %u n_block %u \n", s, n);
        if (s + 1 == seg.size()) {
            printed += text("Error! cont_mv_down %u n_block called for segment %u\n", n, s);
            return RIB_FAILED;
        }
        const uint32_t there = (seg[s + 1].first + seg[s + 1].size - seg[s + 1].free) / block;
        if (n > there) {
            const uint32_t result = down(s + 1, n - there);
            if (result != 0) {
                return result;
            }
        }
        record &next = seg[s + 1];
        const uint32_t used = next.free - next.first;
        const uint32_t nb = n * block;
        if (std::min(nb, used) > 0) {
            calls += text("move %u %u %u\n", used > nb ? next.free : next.first + nb, next.first, std::min(nb, used));
        }
        if (const uint32_t r = ask_mask(s, next.first, nb); r != 0) {
            printed += text("cont_mv_down() error %x in mask_func for seg %u \n", r, s);
            return r;
        }
        next = {next.size - nb, next.first + nb, next.free + nb};
        seg[s].size += nb;
        show();
        printed += text("End of cont_mv_down() seg %u n_block %u \n", s, n);
        return 0;
    }

    uint32_t alloc(uint32_t s, uint32_t *out) {
        *out = 0xdeadbeef;
        if (seg[s].free == seg[s].first + seg[s].size) {
            uint32_t result = movable ? up(s, 1) : RIB_FAILED;
            if (result != 0 && movable) {
                result = down(s, 1);
            }
            if (result != 0) {
                return result;
            }
        }
        *out = seg[s].free++;
        return 0;
    }

    uint32_t free(uint32_t s, uint32_t position) {
        if (position < seg[s].first || position >= seg[s].free) {
            return RIB_BAD_PARAMETERS;
        }
        seg[s].free--;
        if (position != seg[s].free) {
            calls += text("move %u %u 1\n", position, seg[s].free);
        }
        return 0;
    }

    uint32_t resize(const words &sizes) {
        for (uint32_t i = 0; i < seg.size(); i++) {
            if (sizes[i] % block != 0) {
                printed += text("Invalid seg size %x for seg %u \n", sizes[i], i);
                return RIB_BAD_PARAMETERS;
            }
            uint32_t result = 0;
            if (sizes[i] < seg[i].size) {
                result = up(i + 1, (seg[i].size - sizes[i]) / block);
            } else if (sizes[i] > seg[i].size) {
                result = down(i, (sizes[i] - seg[i].size) / block);
            }
            if (result != 0) {
                return result;
            }
        }
        return 0;
    }

    [[nodiscard]] words image() const {
        words all{total, block, static_cast<uint32_t>(seg.size())};
        for (const record &r : seg) {
            all.insert(all.end(), {r.size, r.first, r.free});
        }
        return all;
    }
};

void expect_sound(const struct cont &cont) {
    for (uint32_t i = 0; i < cont.segments; i++) {
        const ribkit::mem::segment &s = cont.segment[i];
        ASSERT_LE(s.first, s.free);
        ASSERT_LE(s.free, s.first + s.size);
        ASSERT_EQ(s.size % cont.block_size, 0U);
        ASSERT_TRUE(i == 0 || cont.segment[i - 1].first + cont.segment[i - 1].size == s.first);
    }
}

// One random call on both; half of the sizes of a resize are moved between two segments, so that most are possible.
void random_step(struct cont *cont, model &expected, random_words &random, uint32_t allocations, bool quiet) {
    const auto segments = static_cast<uint32_t>(expected.seg.size());
    const uint32_t s = random() % segments;
    uint32_t result = 0;
    uint32_t answer = 0;
    uint32_t out = 0;
    uint32_t position = 0;
    const uint32_t dice = random() % 1000;
    std::string printed;
    if (dice < allocations) {
        answer = expected.alloc(s, &position);
        const auto call = [&] { result = cont_alloc(cont, s, &out); };
        expected.printed.empty() ? call() : static_cast<void>(printed = printed_by(call));
        ASSERT_EQ(out, position);
    } else if (dice < 998) {
        position = expected.seg[s].first + random() % (expected.seg[s].free - expected.seg[s].first + 1);
        answer = expected.free(s, position);
        result = cont_free(cont, s, position);
    } else {
        words sizes;
        for (const model::record &r : expected.seg) {
            sizes.push_back(r.size);
        }
        const uint32_t moved = std::min(sizes[s], random() % 4 * expected.block);
        sizes[s] -= moved;
        sizes[random() % segments] += moved + (random() % 10 == 0 ? 1 : 0);
        answer = expected.resize(sizes);
        printed = printed_by([&] { result = cont_resize(cont, sizes.data()); });
    }
    ASSERT_EQ(result, answer);
    ASSERT_EQ(printed, quiet ? "" : expected.printed);
    ASSERT_EQ(told, expected.calls);
    expected.printed.clear();
    expected.calls.clear();
    told.clear();
}

struct walk {
    uint32_t segments, block, steps, seed;
    bool failing = false;
    bool quiet = false;
};

void random_walk(const walk &way) {
    const auto [segments, block, steps, seed, failing, quiet] = way;
    random_words random(seed);
    model expected{0, block, true, {}, {}, 0xffffffff, {}};
    words sizes;
    for (uint32_t i = 0; i < segments; i++) {
        sizes.push_back(random() % 6 * block);
        expected.seg.push_back({sizes.back(), expected.total, expected.total});
        expected.total += sizes.back();
    }
    expected.total = std::max(expected.total, segments * block) + block;
    const struct cont_config config = {expected.total, block, segments};
    struct cont *cont = cont_create(&config, sizes.data(), move, mask, 1);
    cont_quiet(cont, quiet ? 7 : 0);
    told.clear();
    masks_before_failure = expected.masks_left = failing ? random() % 200 : 0xffffffff;
    for (uint32_t step = 0; step < steps; step++) {
        ASSERT_NO_FATAL_FAILURE(random_step(cont, expected, random, step / 500 % 4 == 0 ? 550 : 470, quiet)) << step;
        ASSERT_EQ(image_of(cont), expected.image()) << step;
        if (masks_before_failure > 0x80000000 && failing) {
            break; // the mask has failed: what follows is no longer laid out
        }
        ASSERT_NO_FATAL_FAILURE(expect_sound(*cont)) << step;
    }
    masks_before_failure = 0xffffffff;
    cont_destroy(cont);
}

TEST(contiguous, answers_as_described) {
    for (uint32_t segments = 1; segments <= 9; segments++) {
        for (const uint32_t block : {1U, 4U, 8U}) {
            ASSERT_NO_FATAL_FAILURE(random_walk({segments, block, RIBKIT_RANDOM_STEPS / 27, segments * block}));
        }
    }
}

TEST(contiguous, answers_as_described_until_a_mask_fails) {
    for (uint32_t seed = 0; seed < 300; seed++) {
        ASSERT_NO_FATAL_FAILURE(random_walk({2 + seed % 5, 4, 5000, seed, true})) << seed;
    }
}

TEST(contiguous, answers_the_same_and_prints_nothing_when_quiet) {
    for (uint32_t seed = 0; seed < 40; seed++) {
        ASSERT_NO_FATAL_FAILURE(random_walk({2 + seed % 7, 4, 2000, seed, seed % 4 == 0, true})) << seed;
    }
}

} // namespace
