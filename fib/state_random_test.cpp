// A module's state beside a model that shares nothing with it: random updates of all kinds, of few keys, so that they
// meet; answers and the module's state are compared after each, everything that is held every hundredth time.
// RIBKIT_ALL=1 asks a hundred times as often.
#include "fib/naive_fib.h"
#include "fib/update.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace ribkit::fib {
namespace {

class asker {
  public:
    explicit asker(uint32_t seed) : random_(seed) {}

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }
    bool once_in(uint32_t times) { return below(times) == 0; }
    template <class Some> auto one_of(const Some &some) {
        return std::data(some)[below(static_cast<uint32_t>(std::size(some)))];
    }

    naive_update update() {
        naive_update asked{below(3), oper(), once_in(100) ? 4095 + below(3) : below(5), 0, {}};
        const bool names_paths = (asked.oper & 0x223) != 0;
        asked.vsan += names_paths && asked.vsan == 0 && !once_in(50) ? 1 : 0;
        sequence_ += once_in(100) ? -below(3) : 1 + below(3);
        asked.sequence = sequence_;
        if (names_paths != once_in(60)) {
            for (uint32_t more = below(5); more > 0; more--) {
                asked.paths.push_back(path(asked.table));
            }
        }
        return asked;
    }

  private:
    uint32_t oper() {
        constexpr uint32_t often[] = {0x1, 0x1, 0x1, 0x20, 0x20, 0x2, 0x200, 0x200};
        constexpr uint32_t rare[] = {0x4, 0x10, 0x40, 0x100, 0x400, 0x10, 0x40, 0x100, 0x400};
        return once_in(100) ? 1U << below(17) : once_in(4) ? one_of(rare) : one_of(often);
    }

    naive_path path(uint32_t table) {
        naive_path one;
        const uint32_t fcid = (1 + below(4)) << 16;
        one.key = {fcid, 0xff0000};
        if (table == 0) {
            one.fixed = {below(2), below(2), below(2), below(2), below(2), below(2), below(2)};
        } else if (table == 2) {
            const uint32_t type = once_in(100) ? below(9) : 1U << below(3);
            const uint32_t labels = once_in(100) ? 3 : type == 2 ? 1 + below(2) : below(3);
            one.key = {type,
                       type == 1 && !once_in(50) ? 1 + below(2) : 0,
                       type == 4 ? fcid : 0,
                       type == 4 ? 0xff0000U : 0,
                       labels,
                       labels > 0 ? 0x1000 * (1 + below(2)) : 0,
                       labels > 1 ? 0x2000U : 0};
        }
        one.ways.resize(once_in(100) ? 17 : once_in(20) ? 16 : below(4));
        for (word_list &way : one.ways) {
            way = table == 1 ? word_list{below(3)} : this->way();
        }
        return one;
    }

    word_list way() {
        const uint32_t labels = once_in(100) ? 4 : once_in(3) ? below(4) : 0;
        word_list way{labels << 16 | below(2) << 5, below(3)};
        way.resize(2 + labels, 0x1000 * below(3));
        return way;
    }

    std::mt19937 random_;
    uint32_t sequence_ = 0xffffff00; // numbers go on at 0
};

word_list joined(const naive_path &path) {
    word_list all;
    for (const word_list &way : path.ways) {
        all.insert(all.end(), way.begin(), way.end());
    }
    return all;
}

template <class Kind> typename Kind::key key_of(uint32_t vsan, const word_list &w) {
    if constexpr (std::is_same_v<Kind, label>) {
        return {vsan, w[0], w[1], {w[2], w[3]}, w[4], {w[5], w[6]}};
    } else {
        return {vsan, {w[0], w[1]}};
    }
}

word_list words_of(const model::route_key &key) { return {key.vsan, key.to.fcid, key.to.mask}; }
word_list words_of(const model::label_key &key) {
    return {key.vsan, key.type, key.source, key.to.fcid, key.to.mask, key.match_count, key.match[0], key.match[1]};
}

template <class Kind> typename Kind::values values_of(const naive_path &path, const word_list &ways) {
    if constexpr (std::is_same_v<Kind, unicast>) {
        const auto byte = [&](size_t at) { return static_cast<uint8_t>(path.fixed[at]); };
        return {path.fixed[0], {byte(1), byte(2), byte(3), byte(4)}, path.fixed[5], path.fixed[6], ways};
    } else {
        return {ways};
    }
}

word_list fixed_words(const model::fib_unicast &what) {
    return {what.kind, what.carried[0], what.carried[1], what.carried[2], what.carried[3], what.metric, what.flag};
}
word_list fixed_words(const model::fib_multicast & /*what*/) { return {}; }
word_list fixed_words(const model::fib_label & /*what*/) { return {}; }

template <class Kind> word_list answer_of(state &fib, const naive_update &asked) {
    update_work<Kind> work(fib, {asked.oper, asked.vsan, asked.sequence}, static_cast<uint32_t>(asked.paths.size()));
    for (const naive_path &path : asked.paths) {
        const word_list ways = joined(path);
        work.take(key_of<Kind>(asked.vsan, path.key), values_of<Kind>(path, ways));
    }
    const auto answer = work.end();
    EXPECT_EQ(answer.said.oper, asked.oper);
    EXPECT_EQ(answer.said.vsan, asked.vsan);
    EXPECT_EQ(answer.said.sequence, asked.sequence);
    word_list all{answer.said.result, answer.said.accepted};
    for (const auto &[status, key] : answer.faults) {
        const word_list named = words_of(key);
        all.push_back(status);
        all.insert(all.end(), named.begin(), named.end());
    }
    return all;
}

template <class Kind> std::vector<word_list> all_of(const state &fib) {
    std::vector<word_list> all;
    for (const auto &[key, held] : fib.entries<Kind>().all()) {
        const auto what = table<Kind>::read(held);
        word_list line = words_of(key);
        const word_list fixed = fixed_words(what);
        const auto ways = Kind::words_of(what);
        line.insert(line.end(), fixed.begin(), fixed.end());
        line.insert(line.end(), ways.begin(), ways.end());
        all.push_back(line);
    }
    std::sort(all.begin(), all.end(), by_words());
    return all;
}

class both {
  public:
    both(const fib_sizes &sizes)
        : real_(sizes), naive_({{sizes.unicast, sizes.multicast, sizes.label}, sizes.per_vsan}) {}

    void ask(const naive_update &asked) {
        const word_list expected = naive_.update(asked);
        const word_list answered = asked.table == 0   ? answer_of<unicast>(real_, asked)
                                   : asked.table == 1 ? answer_of<multicast>(real_, asked)
                                                      : answer_of<label>(real_, asked);
        EXPECT_EQ(answered, expected) << shown(asked) << "answered" << shown(answered) << "\nexpected"
                                      << shown(expected);
        results_.insert(expected[0]);
        expect_same_state();
    }
    void meet(asker &asking) {
        const uint32_t what = asking.below(6);
        if (what == 0) {
            naive_.lose();
            real_.lose();
        } else if (what < 4) {
            naive_.reach();
            real_.reach();
        } else {
            naive_.set_upgrading(what == 4 && asking.once_in(3));
            real_.set_upgrading(naive_.state() == 7);
        }
        expect_same_state();
    }
    void expect_same_tables() const {
        EXPECT_EQ(all_of<unicast>(real_), naive_.all(0));
        EXPECT_EQ(all_of<multicast>(real_), naive_.all(1));
        EXPECT_EQ(all_of<label>(real_), naive_.all(2));
    }
    [[nodiscard]] const std::set<uint32_t> &results() const { return results_; }
    [[nodiscard]] const std::set<uint32_t> &states() const { return states_; }

  private:
    void expect_same_state() {
        EXPECT_EQ(static_cast<uint32_t>(real_.now()), naive_.state());
        states_.insert(naive_.state());
    }

    state real_;
    naive_fib naive_;
    std::set<uint32_t> results_;
    std::set<uint32_t> states_;
};

uint32_t requests() {
    const uint32_t usual = RIBKIT_EMULATED ? 1000 : 10000;
    return std::getenv("RIBKIT_ALL") == nullptr ? usual : 100 * usual;
}

void compare(both &tried) {
    const char *text = std::getenv("RIBKIT_SEED");
    const uint32_t seed = text == nullptr ? 1 : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
    asker asking(seed);
    for (uint32_t i = 1; i <= requests() && !::testing::Test::HasFailure(); i++) {
        if (asking.once_in(50)) {
            tried.meet(asking);
        } else {
            tried.ask(asking.update());
        }
        if (i % 100 == 0) {
            tried.expect_same_tables();
        }
        EXPECT_FALSE(::testing::Test::HasFailure()) << "request " << i << ", RIBKIT_SEED=" << seed;
    }
}

TEST(fib_random, does_what_a_list_of_everything_does) {
    both tried({});
    compare(tried);
    EXPECT_EQ(tried.results(), (std::set<uint32_t>{RIB_OK, RIB_BAD_PARAMETERS, RIB_NOT_SUPPORTED, RIB_INDEX_USED,
                                                   RIB_NO_ENTRY, RIB_LC_UPGRADING}));
    if (!RIBKIT_EMULATED) {
        EXPECT_EQ(tried.states(), (std::set<uint32_t>{0, 2, 3, 4, 5, 7}))
            << "all but ready, which is over soon, and exited";
    }
}

TEST(fib_random, does_so_where_the_tables_are_nearly_full) {
    both tried({.unicast = 9, .multicast = 8, .label = 20, .per_vsan = 12});
    compare(tried);
    EXPECT_TRUE(tried.results().contains(RIB_HW_FULL));
    EXPECT_TRUE(tried.results().contains(RIB_VSAN_TCAM_FULL));
}

} // namespace
} // namespace ribkit::fib
