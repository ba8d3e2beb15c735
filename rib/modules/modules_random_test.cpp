// The follower beside modules that are as plain as can be: random requests, updates that are lost, late, twice or
// overtaken, modules that restart, fall silent, are full. In the end each module has just the active routes, as far as
// it has room; every request that waited was answered once, with what its routes have met with.
#include "rib/modules/modules.h"
#include "rib/naive/played_module.h"
#include "rib/naive/random_requests.h"
#include "rib/naive/state_seen.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

template <class Kind, class Made> void add_expected(const state &routes, played_module::entries &all, Made made) {
    for (const auto &[where, active] : routes.routes<Kind>().all()) {
        const auto what = routes.routes<Kind>().read(*active);
        if (!routes.suspended().contains(where.vsan)) {
            all[counted(Kind(), where)] = words_of(made(where, what));
        }
    }
}

/// What a module shall have in the end.
played_module::entries expected_of(const state &routes) {
    played_module::entries all;
    add_expected<label>(routes, all, [](const auto &where, const auto &what) {
        return module_path<label>{where, &what};
    });
    std::erase_if(all, [](const auto &one) {
        return one.first.second.type == RIB_ROUTE_FC_LABEL && one.first.second.match_count == 0;
    });
    add_expected<multicast>(routes, all, [](const auto &where, const auto &what) {
        return module_path<multicast>{where, &what};
    });
    add_expected<unicast>(routes, all, [&](const auto &where, const auto &what) {
        const auto *labels = routes.labels_for(where);
        return module_path<unicast>{
            where, &what, labels == nullptr ? std::span<const uint32_t>() : routes.routes<label>().read(*labels).hops};
    });
    return all;
}

/// What a request has met with, by the modules: each code that one of its routes was given while it waited.
struct waiting_one {
    uint32_t accepted;
    std::set<any_key> changed;
    std::set<uint32_t> codes{RIB_OK};
    std::set<any_key> missed{};
    bool compares = false;
};

/// The keys of one request, as they are told.
class told_keys final : public effects {
  public:
    void told(const route_event<unicast> &change) override {
        if ((change.what.flag & RIB_FLAG_ACTIVE) != 0) {
            keys.insert(counted(unicast(), change.key));
        }
        next.told(change);
    }
    void told(const route_event<multicast> &change) override {
        keys.insert(counted(multicast(), change.key));
        next.told(change);
    }
    void told(const route_event<label> &change) override {
        keys.insert(counted(label(), change.key));
        keys.insert(counted(unicast(), {change.key.vsan, change.key.to}));
        next.told(change);
    }
    void vsan_changed(uint32_t vsan, bool suspended) override { next.vsan_changed(vsan, suspended); }
    void compare(table_id table, uint32_t vsan) override {
        compares = true;
        next.compare(table, vsan);
    }

    explicit told_keys(modules &behind) : next(behind) {}
    modules &next;
    std::set<any_key> keys;
    bool compares = false;
};

class fabric_of_modules {
  public:
    fabric_of_modules(uint32_t seed, size_t room) : asking_(seed), room_(room) {
        for (uint32_t number = 1; number <= 3; number++) {
            played_.emplace(number, room);
            follower_.enter(number, 0);
        }
    }

    void step() {
        switch (asking_.below(12)) {
        case 0:
        case 1:
        case 2:
            ask();
            break;
        case 3:
            trouble();
            break;
        case 4:
            if (!waiting_.empty() && asking_.once_in(30)) {
                give_up(std::next(waiting_.begin(), asking_.below(static_cast<uint32_t>(waiting_.size())))->first);
            }
            break;
        default:
            move(1 + asking_.below(3));
        }
        hear_answers();
    }

    /// Everything arrives from now on.
    void settle_down() {
        for (auto &[number, feed] : follower_.all()) {
            feed.set_condition(module_condition::serving);
        }
        for (int round = 0; round < 100000 && !is_done(); round++) {
            for (uint32_t number = 1; number <= 3; number++) {
                send(number);
                deliver(number, 0);
            }
        }
        EXPECT_TRUE(is_done());
        hear_answers();
        EXPECT_TRUE(waiting_.empty());
        EXPECT_EQ(follower_.requests().size(), 0U);
    }

    void expect_all_there() {
        const auto expected = expected_of(routes_);
        for (const auto &[number, module] : played_) {
            if (room_ == SIZE_MAX) {
                EXPECT_TRUE(module.all() == expected) << number;
            }
            for (const table_id table : {table_id::label, table_id::multicast, table_id::unicast}) {
                const auto of_table = [&](const auto &one) { return one.first.first == table; };
                const auto held = std::count_if(module.all().begin(), module.all().end(), of_table);
                const auto wanted = std::count_if(expected.begin(), expected.end(), of_table);
                EXPECT_EQ(static_cast<size_t>(held), std::min(room_, static_cast<size_t>(wanted)));
            }
            for (const auto &[where, what] : module.all()) {
                const auto found = expected.find(where);
                ASSERT_NE(found, expected.end());
                EXPECT_EQ(what, found->second);
            }
        }
    }

    /// Damages the module's tables behind the RIB's back, and lets all be compared: just that is found.
    void damage_and_compare() {
        std::map<any_key, uint32_t> damaged;
        for (const table_id table : {table_id::label, table_id::multicast, table_id::unicast}) {
            const waiting::id id = follower_.begin();
            waiting_[id].compares = true;
            begun_.insert(id);
            refused_[id] = false;
            damaged = damage(table);
            follower_.compare(table, 0);
            follower_.end({RIB_OK, RIB_OPER_VERIFY, 0});
            std::optional<waiting::done> done;
            for (int round = 0; round < 10000 && !(done = follower_.take_done()); round++) {
                for (uint32_t number = 1; number <= 3; number++) {
                    send(number);
                    deliver(number, 0);
                }
            }
            ASSERT_TRUE(done && done->found);
            EXPECT_TRUE(done->found->complete);
            EXPECT_EQ(done->found->keys, damaged);
            EXPECT_EQ(done->answer.result, damaged.empty() ? RIB_OK : RIB_FAILED);
            found_ += damaged.size();
            waiting_.erase(id);
        }
    }

    std::set<uint32_t> results;
    [[nodiscard]] size_t compared() const { return compared_; }
    [[nodiscard]] size_t found() const { return found_; }

  private:
    /// Of one module, so that each key is found once. @return what is found
    std::map<any_key, uint32_t> damage(table_id table) {
        std::map<any_key, uint32_t> damaged;
        played_module::entries &all = played_.at(1 + asking_.below(3)).behind_the_back();
        const auto name = [](any_key key) {
            key.second.to.mask = key.first == table_id::multicast ? 0 : key.second.to.mask;
            return key;
        };
        for (auto at = all.lower_bound({table, {}}); at != all.end() && at->first.first == table;) {
            if (damaged.contains(name(at->first)) || !asking_.once_in(4)) {
                ++at;
            } else if (asking_.once_in(2)) {
                damaged[name(at->first)] = FIB_VERF_NOT_IN_FIB;
                at = all.erase(at);
            } else {
                damaged[name(at->first)] = FIB_VERF_BAD_IN_FIB;
                at->second[0]++;
                ++at;
            }
        }
        for (uint32_t fcid = 1; fcid < 8; fcid++) {
            const any_key extra{table, {.vsan = 1, .to = {fcid, 0xffffff}}};
            if (table != table_id::label && !damaged.contains(name(extra)) && all.emplace(extra, words{1}).second) {
                damaged[name(extra)] = FIB_VERF_NOT_IN_RIB;
            }
        }
        return damaged;
    }

    struct on_its_way {
        played_update update;
        bool was_given_up = false;
    };

    void ask() {
        naive_request asked = asking_.request();
        if (asking_.once_in(20)) {
            asked.oper = RIB_OPER_VERIFY;
            asked.records.clear();
        }
        keys_.keys.clear();
        keys_.compares = false;
        const waiting::id id = follower_.begin();
        const words answer = answer_of(routes_, asked);
        waiting_[id] = {answer[3], keys_.keys};
        waiting_[id].compares = keys_.compares;
        begun_.insert(id);
        for (const auto &[number, feed] : follower_.all()) {
            if (const uint32_t code = code_of(feed.condition()); code != RIB_OK) {
                met(id, code, keys_.keys);
            }
        }
        follower_.end({answer[0] == RIB_OK ? RIB_OK : RIB_SW_BUG, answer[1], answer[2], answer[3], answer[4]});
        refused_[id] = answer[0] != RIB_OK;
    }

    void met(waiting::id id, uint32_t code, const std::set<any_key> &keys) {
        waiting_one &one = waiting_.at(id);
        if (one.compares) { // whatever it has met with
            one.codes.insert(code);
        }
        for (const any_key &key : keys) {
            if (one.changed.contains(key)) {
                one.codes.insert(code);
                one.missed.insert(key);
            }
        }
    }

    void all_met(uint32_t code, const std::set<any_key> &keys) {
        for (auto &[id, one] : waiting_) {
            if (code != RIB_OK) {
                met(id, code, keys);
            }
        }
    }

    static std::set<any_key> keys_of(const played_update &update) {
        std::set<any_key> keys;
        for (const played_path &path : update.paths) {
            keys.insert(path.where);
        }
        return keys;
    }

    void trouble() {
        const uint32_t number = 1 + asking_.below(3);
        module_feed &feed = follower_.all().at(number);
        if (asking_.once_in(20)) {
            played_.at(number).restart();
            feed.restart(0);
            ways_[number].clear();
        } else if (asking_.once_in(8)) {
            const auto how =
                asking_.once_in(3) ? static_cast<module_condition>(asking_.below(5)) : module_condition::serving;
            for (auto &[id, one] : waiting_) {
                if (how != module_condition::serving) {
                    met(id, code_of(how), one.changed);
                }
            }
            feed.set_condition(how);
        }
    }

    void give_up(waiting::id id) {
        waiting_one &one = waiting_.at(id);
        met(id, RIB_TIMEOUT, one.changed);
        one.codes.insert(RIB_TIMEOUT);
        follower_.give_up(id);
    }

    bool send(uint32_t number) {
        module_feed &feed = follower_.all().at(number);
        if (feed.in_flight() >= 8 || !feed.has_work()) {
            return false;
        }
        played_sink sink(1 + asking_.below(5));
        if (!feed.write(sink)) {
            return false;
        }
        ways_[number].push_back({sink.now});
        return true;
    }

    void move(uint32_t number) {
        std::deque<on_its_way> &way = ways_[number];
        if (way.empty() || asking_.once_in(2)) {
            send(number);
            return;
        }
        const size_t which = asking_.once_in(6) ? asking_.below(static_cast<uint32_t>(way.size())) : 0;
        switch (asking_.below(24)) {
        case 0: // lost
            settle(number, which, {.what = verdict::fate::given_up}, true);
            break;
        case 1: // given up, but it will arrive
            settle(number, which, {.what = verdict::fate::given_up}, false);
            way[which].was_given_up = true;
            break;
        case 2: // only the answer is lost
            played_.at(number).take(way[which].update);
            settle(number, which, {.what = verdict::fate::given_up}, true);
            break;
        case 3: { // it arrives twice
            const played_update twice = way[which].update;
            deliver(number, which);
            EXPECT_EQ(played_.at(number).take(twice).result, twice.asks ? RIB_OK : RIB_INDEX_USED);
            break;
        }
        default:
            deliver(number, which);
        }
    }

    void deliver(uint32_t number, size_t which) {
        std::deque<on_its_way> &way = ways_[number];
        if (which < way.size()) {
            settle(number, which, played_.at(number).take(way[which].update), true);
        }
    }

    void settle(uint32_t number, size_t which, const verdict &said, bool is_over) {
        std::deque<on_its_way> &way = ways_[number];
        const on_its_way one = way[which];
        if (is_over) {
            way.erase(way.begin() + static_cast<std::ptrdiff_t>(which));
        }
        if (one.was_given_up) {
            return; // nobody waits for it
        }
        const uint32_t code = said.what == verdict::fate::given_up ? RIB_TIMEOUT : said.result;
        if (code != RIB_INDEX_USED && code != RIB_NO_ENTRY) {
            std::set<any_key> keys = keys_of(one.update);
            std::erase_if(keys, [&](any_key key) {
                key.second.to.mask = key.first == table_id::multicast ? 0 : key.second.to.mask;
                return !said.named.empty() && !said.named.contains(key);
            });
            all_met(code, keys);
        }
        follower_.all().at(number).settle(one.update.head.sequence, said);
    }

    /// What no damage was done to is found as it should be, whatever changes meanwhile; a full module misses some.
    void hear_findings(const waiting::done &done) {
        ASSERT_TRUE(done.found);
        compared_ += done.found->complete && done.found->named != 0 ? 1 : 0;
        for (const auto &[where, status] : done.found->keys) {
            EXPECT_TRUE(room_ != SIZE_MAX && status == FIB_VERF_NOT_IN_FIB) << status;
        }
    }

    void hear_answers() {
        while (const auto done = follower_.take_done()) {
            ASSERT_EQ(begun_.erase(done->request), 1U) << "answered twice";
            const waiting_one &one = waiting_.at(done->request);
            const uint32_t result = done->answer.result;
            results.insert(result);
            if (refused_.at(done->request)) {
                EXPECT_EQ(result, RIB_SW_BUG);
            } else {
                EXPECT_TRUE(one.codes.contains(result) || (one.compares && result == RIB_FAILED && room_ != SIZE_MAX))
                    << std::hex << result;
            }
            if (one.compares) {
                hear_findings(*done);
                waiting_.erase(done->request);
                continue;
            }
            EXPECT_LE(done->answer.accepted, one.accepted);
            EXPECT_GE(done->answer.accepted + one.missed.size(), one.accepted);
            waiting_.erase(done->request);
        }
    }

    bool is_done() {
        return std::all_of(follower_.all().begin(), follower_.all().end(),
                           [](const auto &one) { return one.second.is_done(); }) &&
               std::all_of(ways_.begin(), ways_.end(), [](const auto &one) { return one.second.empty(); });
    }

    asker asking_;
    size_t compared_ = 0;
    size_t found_ = 0;
    size_t room_;
    modules follower_{routes_};
    told_keys keys_{follower_};
    state routes_{{.spaces = {8, 4096, 65536}}, &keys_};
    std::map<uint32_t, played_module> played_;
    std::map<uint32_t, std::deque<on_its_way>> ways_;
    std::map<waiting::id, waiting_one> waiting_;
    std::map<waiting::id, bool> refused_;
    std::set<waiting::id> begun_;
};

uint32_t steps() {
    const uint32_t usual = RIBKIT_EMULATED ? 10000 : 300000;
    return std::getenv("RIBKIT_ALL") == nullptr ? usual : 100 * usual;
}

std::set<uint32_t> run(uint32_t seed, size_t room) {
    std::set<uint32_t> results;
    size_t compared = 0;
    for (uint32_t part = 0; part < 10 && !::testing::Test::HasFailure(); part++) {
        fabric_of_modules all(seed + part, room);
        for (uint32_t i = 0; i < steps() / 10 && !::testing::Test::HasFailure(); i++) {
            all.step();
        }
        all.settle_down();
        all.expect_all_there();
        if (room == SIZE_MAX) {
            all.damage_and_compare();
            EXPECT_GT(all.found(), 0U);
        }
        compared += all.compared();
        results.merge(all.results);
        EXPECT_FALSE(::testing::Test::HasFailure()) << "RIBKIT_SEED=" << seed + part;
    }
    if (std::getenv("RIBKIT_SEED") == nullptr) { // with others it is chance whether one ends while all changes
        EXPECT_TRUE(compared != 0 || room != SIZE_MAX);
    }
    return results;
}

uint32_t seed() {
    const char *text = std::getenv("RIBKIT_SEED");
    return text == nullptr ? 1 : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

TEST(modules_random, all_modules_have_the_active_routes_in_the_end) {
    const auto results = run(seed(), SIZE_MAX);
    for (const uint32_t code : {RIB_OK, RIB_TIMEOUT, RIB_MISSING_DEVICE, RIB_LC_UPGRADING}) {
        EXPECT_TRUE(results.contains(code)) << std::hex << code;
    }
}

TEST(modules_random, full_modules_have_as_many_as_they_can) { EXPECT_TRUE(run(seed(), 12).contains(RIB_HW_FULL)); }

} // namespace
} // namespace ribkit::rib
