// A check looks at each word a few times, whatever the message says: its steps are counted for messages made to cost
// much, of every kind, and grow as the message does.
#include "codec/checks/check_core.h"
#include "codec/checks/check_odd.h"
#include "codec/checks/check_overlap.h"
#include "codec/message.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace ribkit::codec;

struct counted {
    uint64_t n = 0;
    void step() { ++n; }
};

using byte_vector = std::vector<uint8_t>;

/// How large the counts of a message are made, by the depth of their layout: a number, or as many as fit.
struct counts {
    static constexpr uint32_t that_fit = UINT32_MAX;
    uint32_t outer, inner;
};

/// Fills bytes with entries of a layout, one behind the other, their counts as wanted.
class costly {
  public:
    costly(size_t size, uint32_t filler, counts wanted) : bytes(size), wanted_(wanted) {
        for (size_t at = 0; at + 4 <= size; at += 4) {
            store32<std::endian::big>(&bytes[at], filler);
        }
    }

    /// @return where the entry ends
    size_t put(const layout &l, size_t at, size_t depth = 0) {
        size_t end = at + l.size;
        if (end > bytes.size()) {
            return bytes.size();
        }
        for (const row &r : l) {
            if (is_list(r) && r.count.where != count_in::constant) {
                const uint32_t n = count(r, bytes.size() - end, depth);
                store(r.count, at, n);
                end = std::max(end, put_entries(r, at + r.offset, n, depth + 1));
            }
        }
        return end;
    }

    byte_vector bytes;

  private:
    counts wanted_;

    [[nodiscard]] uint32_t count(const row &r, size_t left, size_t depth) const {
        const uint32_t n = depth == 0 ? wanted_.outer : wanted_.inner;
        const uint32_t fit = static_cast<uint32_t>(left / (r.stride != 0 ? r.stride : r.entry->size));
        const uint32_t all = r.count.where == count_in::second_byte ? 255 : r.bound != 0 ? r.bound : fit;
        return std::min(n, all);
    }

    void store(count_of count, size_t at, uint32_t n) {
        if (count.where == count_in::word) {
            store32<std::endian::big>(&bytes[at + count.at], n);
        } else {
            bytes[at + count.at + 1] = static_cast<uint8_t>(n);
        }
    }

    size_t put_entries(const row &r, size_t first, uint32_t n, size_t depth) {
        size_t at = first;
        size_t end = first;
        const bool overlap = depth > 1 && r.stride != 0; // where filling all would take far too long
        for (uint32_t i = 0; i < n && at < bytes.size() && !overlap; ++i) {
            end = put(*r.entry, at, depth);
            at = r.stride != 0 ? at + r.stride : end;
        }
        return std::max(at, depth == 1 ? end : at);
    }
};

template <const layout &...L> constexpr std::array<uint8_t, sizeof...(L)> plans_of(layouts<L...> /*all*/) {
    return {core_checks::plan<L>()...};
}

uint64_t steps(const message &m, const byte_vector &bytes) {
    static constexpr auto plans = plans_of(all_layouts{});
    checker<counted> c(core_checks::tables, "", bytes.data(), bytes.size(), nullptr);
    c.check(plans[m.kernel]);
    return c.steps.n;
}

constexpr uint32_t numbers[] = {0, 1, 2, 3, 16, 255, 4096, 0x00010000, 0x00030003, counts::that_fit};

uint64_t worst_of_made(const message &m, size_t size) {
    uint64_t worst = 0;
    for (const uint32_t outer : {1U, 16U, counts::that_fit}) {
        for (const uint32_t inner : numbers) {
            for (const uint32_t filler : {0U, 0x00030003U}) {
                costly made(size, filler, {outer, inner});
                made.put(*m.wire, 0);
                worst = std::max(worst, steps(m, made.bytes));
            }
        }
    }
    return worst;
}

uint64_t worst_at_random(const message &m, size_t size) {
    std::mt19937 random{23};
    uint64_t worst = 0;
    for (int round = 0; round < 4; ++round) {
        costly made(size, 0, {0, 0});
        const uint32_t kinds = 1 + random() % 4;
        for (size_t at = 0; at + 4 <= size; at += 4) {
            const uint32_t fit = static_cast<uint32_t>((size - at) / 36);
            store32<std::endian::big>(&made.bytes[at], std::min(numbers[random() % 10 / kinds], fit));
        }
        worst = std::max(worst, steps(m, made.bytes));
    }
    return worst;
}

bool has_list(const layout &l) {
    return std::any_of(l.begin(), l.end(), [](const row &r) { return is_list(r); });
}

uint64_t worst(const message &m, size_t size) {
    return has_list(*m.wire) ? std::max(worst_of_made(m, size), worst_at_random(m, size)) : steps(m, byte_vector(size));
}

class checks_of : public ::testing::TestWithParam<message> {};

TEST_P(checks_of, sixteen_times_the_bytes_take_sixteen_times_the_steps) {
    constexpr size_t small = 64UL << 10;
    constexpr size_t large = 1UL << 20;
    const uint64_t of_small = worst(GetParam(), small);
    const uint64_t of_large = worst(GetParam(), large);
    EXPECT_LE(of_large, 17 * of_small);
    EXPECT_LE(of_small, small);
    EXPECT_LE(of_large, large);
}

std::string name_of(const ::testing::TestParamInfo<message> &row) { return std::string(row.param.name); }

INSTANTIATE_TEST_SUITE_P(messages, checks_of, ::testing::ValuesIn(messages().begin(), messages().end()), name_of);

TEST(costly, messages_make_every_open_list_walk) {
    for (const message &m : messages()) {
        const row &last = *(m.wire->end() - 1);
        const bool walked = is_open(last) && (last.stride == 0 || last.entry == &ribkit::wire::ucast_route);
        if (walked) {
            EXPECT_GT(worst_of_made(m, 64 << 10), (64U << 10) / 200) << m.name;
        }
    }
}

} // namespace
