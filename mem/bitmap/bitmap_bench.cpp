// Bitmaps against loops over bytes and other libraries' sets of bits.
#include "bench/harness.h"
#include "mem/byte_loops.h"
#include "mem/mem_bench.h"
#include "mem/random_words.h"
#include "rib_mem.h"
#include <algorithm>
#include <string>
#include <vector>

#if __has_include(<boost/dynamic_bitset.hpp>)
#include <boost/dynamic_bitset.hpp>
#define RIBKIT_HAS_DYNAMIC_BITSET 1
#endif
#if defined(RIBKIT_HAS_ROARING)
#include <roaring/roaring.h>
#endif

using namespace ribkit::bench;

namespace ribkit::mem {

namespace {

using bytes = std::vector<uint8_t>;

bytes noise(uint32_t seed, size_t size) {
    random_words random(seed);
    bytes map(size + 1);
    std::generate(map.begin(), map.end(), [&] { return static_cast<uint8_t>(random()); });
    return map;
}

template <class Ours, class Peer> void row(const std::string &what, double bound, Ours ours, Peer peer) {
    print_row(what, compare(1, ours, peer), bound);
}

void bytewise_rows(const std::string &size, uint32_t length, double bound) {
    const bytes a = noise(1, length);
    const bytes b = noise(2, length);
    const bytes same = a;
    bytes out = noise(3, length);
    const auto both = [&](const char *name, auto ours, auto peer) {
        row(
            name + size, bound, [&] { keep(ours(a.data(), b.data(), length, out.data())); },
            [&] { peer(a.data(), b.data(), length, out.data()); });
    };
    both("or", bmap_or, loop_or);
    both("to_set", bmap_to_set, loop_to_set);
    both("to_clr", bmap_to_clr, loop_to_clr);
    row(
        "or in place" + size, bound, [&] { bmap_or(out.data(), b.data(), length, out.data()); },
        [&] { loop_or(out.data(), b.data(), length, out.data()); });
    row(
        "is_same" + size, bound, [&] { keep(bmap_is_same(a.data(), same.data(), length)); },
        [&] { keep(loop_is_same(a.data(), same.data(), length)); });
    row(
        "init" + size, no_bound, [&] { bmap_init(out.data(), length); }, [&] { loop_init(out.data(), length); });
}

void search_rows(const std::string &size, uint32_t length, double count_bound, double search_bound) {
    const bytes a = noise(1, length);
    row(
        "count" + size, count_bound, [&] { keep(bmap_count(a.data(), length)); },
        [&] { keep(loop_count(a.data(), length)); });
    bytes map(length);
    map.back() = 0x80;
    uint32_t position = 0;
    row(
        "next_set over an empty stretch" + size, search_bound,
        [&] { keep(bmap_next_set(map.data(), length, 0, &position)); },
        [&] { keep(loop_next_set(map.data(), length, 0, &position)); });
    bytes full(length, 0xff);
    full.back() = 0x7f;
    const auto claim = [&](auto next) {
        keep(next(full.data(), length, 0, &position));
        full.back() = 0x7f;
    };
    row(
        "next_clr over a full stretch" + size, search_bound, [&] { claim(bmap_next_clr); },
        [&] { claim(loop_next_clr); });
    const auto walk = [&](auto next) {
        for (uint32_t at = 0; next(a.data(), length, at, &position) == 0; at = position + 1) {
            keep(position);
        }
    };
    row(
        "next_set through a dense map" + size, no_bound, [&] { walk(bmap_next_set); }, [&] { walk(loop_next_set); });
}

void single_rows(const std::string &size, uint32_t length) {
    bytes map = noise(4, length);
    const auto each = [&](auto function) {
        for (uint32_t position = 0; position < length * 8; position += 7) {
            function(map.data(), length, position);
        }
    };
    row(
        "set" + size, 1, [&] { each(bmap_set); }, [&] { each(loop_set); });
    row(
        "clr" + size, 1, [&] { each(bmap_clr); }, [&] { each(loop_clr); });
    const auto ask = [&](auto function) {
        for (uint32_t position = 0; position < length * 8; position += 7) {
            keep(function(map.data(), length, position));
        }
    };
    row(
        "is_set" + size, 1, [&] { ask(bmap_is_set); }, [&] { ask(loop_is_set); });
}

#if defined(RIBKIT_HAS_DYNAMIC_BITSET)
void dynamic_bitset_rows(uint32_t length) {
    const bytes a = noise(1, length);
    const bytes b = noise(2, length);
    bytes out(length);
    boost::dynamic_bitset<uint64_t> left(size_t{length} * 8);
    boost::dynamic_bitset<uint64_t> right(left.size());
    for (uint32_t i = 0; i < length * 8; i++) {
        left[i] = bmap_is_set(a.data(), length, i) != 0;
        right[i] = bmap_is_set(b.data(), length, i) != 0;
    }
    row(
        "count, boost::dynamic_bitset", no_bound, [&] { keep(bmap_count(a.data(), length)); },
        [&] { keep(left.count()); });
    row(
        "or, boost::dynamic_bitset", no_bound, [&] { bmap_or(out.data(), b.data(), length, out.data()); },
        [&] { keep((left |= right).size()); });
    boost::dynamic_bitset<uint64_t> empty(left.size());
    empty[empty.size() - 1] = true;
    bytes map(length);
    map.back() = 0x80;
    uint32_t position = 0;
    row(
        "search, boost::dynamic_bitset", no_bound, [&] { keep(bmap_next_set(map.data(), length, 0, &position)); },
        [&] { keep(empty.find_first()); });
}
#endif

#if defined(RIBKIT_HAS_ROARING)
void roaring_rows(uint32_t length) {
    const bytes a = noise(1, length);
    const bytes b = noise(2, length);
    bytes out(length);
    roaring_bitmap_t *left = roaring_bitmap_create();
    roaring_bitmap_t *right = roaring_bitmap_create();
    for (uint32_t i = 0; i < length * 8; i++) {
        if (bmap_is_set(a.data(), length, i) != 0) {
            roaring_bitmap_add(left, i);
        }
        if (bmap_is_set(b.data(), length, i) != 0) {
            roaring_bitmap_add(right, i);
        }
    }
    row(
        "count of a range, CRoaring", no_bound, [&] { keep(bmap_count(a.data(), length)); },
        [&] { keep(roaring_bitmap_range_cardinality(left, 0, uint64_t{length} * 8 - 3)); });
    row(
        "or, CRoaring", no_bound, [&] { bmap_or(a.data(), b.data(), length, out.data()); },
        [&] { roaring_bitmap_or_inplace(left, right); });
    roaring_bitmap_free(left);
    roaring_bitmap_free(right);
}
#endif

} // namespace

void bitmap_rows() {
    heading("bitmap against the byte loop", "op");
    bytewise_rows(", 4 KiB", 4096, 0.10);
    search_rows(", 4 KiB", 4096, 0.02, 0.125);
    bytewise_rows(", 32 bytes", 32, 1);
    search_rows(", 32 bytes", 32, 1, 1);
    single_rows(", 32 bytes", 32);
#if defined(RIBKIT_HAS_DYNAMIC_BITSET)
    dynamic_bitset_rows(4096);
#else
    missing_row("boost::dynamic_bitset", "not installed");
#endif
#if defined(RIBKIT_HAS_ROARING)
    roaring_rows(4096);
#else
    missing_row("CRoaring", "not installed");
#endif
}

} // namespace ribkit::mem
