// The RIB's state beside a model that shares nothing with it: random requests of all kinds, from few clients about few
// routes, so that they meet; answers and effects are compared after each, everything that is held every thousandth
// time. RIBKIT_ALL=1 asks a hundred times as often.
#include "rib/naive/naive_state.h"
#include "rib/naive/random_requests.h"
#include "rib/naive/state_seen.h"
#include "rib/state.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>

namespace ribkit::rib {
namespace {

const std::map<uint32_t, uint32_t> quotas{{RIB_CLIENT_MCAST, 6}, {500, 9}};

std::string shown(const words &numbers) {
    std::ostringstream text;
    text << std::hex;
    for (const uint32_t number : numbers) {
        text << ' ' << number;
    }
    return text.str();
}

std::string shown(const naive_request &asked) {
    std::ostringstream text;
    text << "table " << asked.table << ", client " << asked.uuid << ", vsan " << asked.vsan << ", operation 0x"
         << std::hex << asked.oper << std::dec << (asked.in_envelope ? ", in an envelope, " : ", ")
         << asked.versions.size() << " versions\n";
    for (const naive_record &one : asked.records) {
        text << "  action 0x" << std::hex << one.action << std::dec << ", key" << shown(one.key) << ", metric "
             << one.metric << ", flag " << one.flag << ", " << one.interfaces << " ways\n";
    }
    return text.str();
}

std::string shown(const std::vector<words> &lines) {
    std::string text;
    for (const words &line : lines) {
        text += "  " + shown(line) + "\n";
    }
    return text;
}

class both {
  public:
    explicit both(const rib_spaces &room, const std::map<uint32_t, uint32_t> &most = {})
        : real_({room, most}, &heard_), naive_(room.vsans, room.positions / position_block, room.path_units, most) {}

    void ask(const naive_request &request) {
        heard_.set_time(request.now);
        const words expected = naive_.update(request);
        const words answered = answer_of(real_, request);
        EXPECT_EQ(answered, expected) << shown(request) << "answered" << shown(answered) << "\nexpected"
                                      << shown(expected);
        expect_same_told(shown(request));
        results_.insert(answered.front());
    }

    /// Whether the requests have led to that, so that it was compared.
    [[nodiscard]] bool has_answered(uint32_t result) const { return results_.contains(result); }

    void set_distance(uint32_t uuid, std::optional<uint32_t> distance, uint32_t now) {
        heard_.set_time(now);
        naive_.set_distance(uuid, distance, now);
        real_.set_distance(uuid, distance, now);
        expect_same_told("a distance");
    }

    void expect_same_tables() const {
        const auto expected = naive_.all();
        const auto held = all_routes(real_);
        EXPECT_EQ(held, expected) << "held\n" << shown(held) << "expected\n" << shown(expected);
        EXPECT_EQ(vsans_of(real_), naive_.vsans());
        EXPECT_EQ(clients_of(real_), naive_.clients());
        EXPECT_EQ(versions_of(real_), naive_.versions());
        EXPECT_EQ(real_.suspended(), naive_.suspended());
        for (const uint32_t uuid : asker::clients) {
            EXPECT_EQ(real_.clients().distance(uuid), naive_.distance_of(uuid)) << uuid;
        }
        const rib_memory memory = real_.memory();
        EXPECT_EQ((words{memory.routes, memory.path_units, memory.positions}), naive_.in_use());
        expect_places();
        expect_labels();
        for (const size_t table : {naive_label, naive_multicast, naive_unicast}) {
            EXPECT_EQ(heard_.log(table), naive_.log(table)) << table;
        }
    }

  private:
    void expect_same_told(const std::string &request) {
        const auto expected = naive_.take_told();
        const auto told = std::exchange(heard_.told_since, {});
        EXPECT_EQ(told, expected) << request << "told\n" << shown(told) << "expected\n" << shown(expected);
    }

    void expect_places() const {
        std::set<uint32_t> places;
        add_places<label>(places);
        add_places<multicast>(places);
        add_places<unicast>(places);
        EXPECT_EQ(places.size(), real_.memory().positions);
    }

    /// Labels to push for a unicast destination are those of the label route of that destination without labels to
    /// match.
    void expect_labels() const {
        const auto &routes = real_.routes<label>();
        for (const auto &[key, active] : real_.routes<unicast>().all()) {
            const auto found = routes.all().find({key.vsan, RIB_ROUTE_FC_LABEL, 0, key.to, 0, {}});
            EXPECT_EQ(real_.labels_for(key), found == routes.all().end() ? nullptr : found->second);
        }
    }

    /// Each destination's route that is active stands in a place of its own, which belongs to its VSAN.
    template <class Kind> void add_places(std::set<uint32_t> &places) const {
        for (const auto &[key, active] : real_.routes<Kind>().all()) {
            EXPECT_TRUE(places.insert(active->position).second) << active->position;
            EXPECT_EQ(real_.behind().positions.owner(active->position), real_.vsans().at(key.vsan).segment);
            for (const auto *other = active->next; other != nullptr; other = other->next) {
                EXPECT_FALSE(other->is_active());
            }
        }
    }

    std::set<uint32_t> results_;
    listener heard_;
    state real_;
    naive_state naive_;
};

uint32_t number_from(const char *name, uint32_t otherwise) {
    const char *text = std::getenv(name);
    return text == nullptr ? otherwise : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

uint32_t requests() {
    const uint32_t usual = RIBKIT_EMULATED ? 1000 : 10000;
    return std::getenv("RIBKIT_ALL") == nullptr ? usual : 100 * usual;
}

void compare(both &tried) {
    const uint32_t seed = number_from("RIBKIT_SEED", 1);
    asker asking(seed);
    for (uint32_t i = 1; i <= requests() && !::testing::Test::HasFailure(); i++) {
        if (asking.once_in(40)) {
            tried.set_distance(asking.one_of(asker::clients),
                               asking.once_in(3) ? std::nullopt : std::optional(asking.below(3)), i);
        } else {
            tried.ask(asking.request());
        }
        if (i % 1000 == 0) {
            tried.expect_same_tables();
        }
        EXPECT_FALSE(::testing::Test::HasFailure()) << "request " << i << ", RIBKIT_SEED=" << seed;
    }
}

TEST(state_random, does_what_a_list_of_everything_does) {
    both tried({4, 4096, 65536}, quotas);
    compare(tried);
    for (const uint32_t result : {RIB_OK, RIB_BAD_PARAMETERS, RIB_NOT_SUPPORTED, RIB_HW_FULL, RIB_NO_ENTRY,
                                  RIB_VSAN_TCAM_FULL, RIB_OBJECT_OWNED}) {
        EXPECT_TRUE(tried.has_answered(result)) << std::hex << result;
    }
}

TEST(state_random, does_so_where_the_hardware_is_nearly_full) {
    both tried({4, 64, 65536});
    compare(tried);
    EXPECT_TRUE(tried.has_answered(RIB_HW_FULL));
}

TEST(state_random, does_so_where_there_are_few_path_units) {
    both tried({6, 4096, 64});
    compare(tried);
    EXPECT_TRUE(tried.has_answered(RIB_HW_FULL));
}

} // namespace
} // namespace ribkit::rib
