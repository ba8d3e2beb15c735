// Several updates on their way, and a RIB that answers them in any order, refuses some and says nothing to others: what
// it holds in the end is what was wanted, and no message was sent without need.
#include "clients/route_client.h"

#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <latch>
#include <map>
#include <random>
#include <set>
#include <thread>

namespace ribkit::clients {
namespace {

using namespace std::chrono_literals;

constexpr const char *bus = "local:update_pipeline_test";
constexpr uint32_t vsans = 40;

/// How often something happens to an update: one in so many; 0 is never.
struct habits {
    unsigned loses = 0;   ///< it is stored, and not answered
    unsigned ignores = 0; ///< it is not even stored
    unsigned refuses = 0; ///< for want of room, from some route on
    bool is_deaf = false; ///< for eight updates, behind the first one
};

/// A RIB as plain as can be, that collects updates until no more come, and answers them in an order of its own.
class plain_rib {
  public:
    plain_rib(uint32_t seed, habits has) : random_(seed), has_(has), handle_(bus) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
        thread_ = std::thread([this] { serve(); });
        qip_step_aside();
        serving_.wait(); // a virtual clock knows a thread from its first call on
    }
    plain_rib(const plain_rib &) = delete;
    plain_rib &operator=(const plain_rib &) = delete;
    ~plain_rib() { stop(); }

    void stop() {
        handle_.close();
        if (thread_.joinable()) {
            qip_step_aside();
            thread_.join();
        }
    }

    // Of one that has stopped:
    std::map<uint32_t, model::route_table> held;
    std::map<uint32_t, unsigned> updates, troubles; ///< by VSAN: messages, and those that did not go well
    size_t most_collected = 0;

  private:
    bool happens(unsigned one_in) { return one_in != 0 && random_() % one_in == 0; }

    void serve() {
        std::vector<qip_ref> collected;
        const qip_recv_opts soon{{QIP_RECV_INCOMING, 0, 0, 0, 1}};
        const qip_recv_opts whenever{{QIP_RECV_INCOMING}};
        qip_ref asked{};
        if (const qip_recv_opts at_once{{QIP_RECV_INCOMING, 1}}; qip_recv(handle_.number(), &asked, &at_once) == 0) {
            collected.push_back(asked);
        }
        serving_.count_down();
        for (;;) {
            if (qip_recv(handle_.number(), &asked, collected.empty() ? &whenever : &soon) == 0) {
                collected.push_back(asked);
            } else if (errno == ETIMEDOUT) {
                most_collected = std::max(most_collected, collected.size());
                std::shuffle(collected.begin(), collected.end(), random_);
                for (qip_ref &one : collected) {
                    answer(one);
                    qip_drop(handle_.number(), &one);
                }
                collected.clear();
            } else {
                return;
            }
        }
    }

    void answer(const qip_ref &asked) {
        const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&asked));
        const std::span<const uint8_t> message(bytes, qip_payload_size(&asked));
        if (qip_opcode_get(&asked) == RIBKIT_OPCODE_FCURT_UPDATE) {
            take(asked, testing::literal_contents(message));
        } else if (qip_opcode_get(&asked) == RIBKIT_OPCODE_FCURT_QUERY) {
            tell(asked,
                 {testing::word_at(message, 12), {testing::word_at(message, 16), testing::word_at(message, 20)}});
        } else {
            rib_wrap_qip_rsp(handle_.number(), &asked, nullptr, 0);
        }
    }

    void take(const qip_ref &asked, const testing::fcurt_update &update) {
        owner_ = update.uuid;
        updates[update.vsan]++;
        count_++;
        const bool ignored = happens(has_.ignores) || (has_.is_deaf && count_ > 1 && count_ <= 9);
        const bool lost = ignored || happens(has_.loses);
        const bool refused = !ignored && happens(has_.refuses);
        troubles[update.vsan] += lost || refused ? 1 : 0;
        const size_t taken = ignored ? 0 : refused ? random_() % update.changes.size() : update.changes.size();
        for (size_t i = 0; i < taken; i++) {
            model::apply_change(held[update.vsan], update.changes[i]);
        }
        if (!lost) {
            const auto said = encode(protocol::fcurt_response{refused ? RIB_HW_FULL : RIB_OK, update.oper, update.vsan,
                                                              static_cast<uint32_t>(taken), 0});
            rib_wrap_qip_rsp(handle_.number(), &asked, said.data(), said.size());
        }
    }

    /// The VSAN's routes, from a key on.
    void tell(const qip_ref &asked, const model::route_key &from) {
        model::route_table rest(held[from.vsan].lower_bound(from.to), held[from.vsan].end());
        const auto said =
            testing::literal_update({owner_, from.vsan, RIB_OPER_UPDATE, model::changes_between({}, rest)});
        rib_wrap_qip_rsp(handle_.number(), &asked, said.data(), static_cast<uint32_t>(said.size()));
    }

    std::mt19937 random_;
    habits has_;
    unsigned count_ = 0; ///< of updates
    uint32_t owner_ = 0; ///< of all routes
    std::latch serving_{1};
    bus::service_handle handle_;
    std::thread thread_;
};

wanted_tables<unicast_table> drawn(std::mt19937 &random) {
    wanted_tables<unicast_table> all;
    for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
        model::route_table routes;
        for (size_t count = random() % 30; count > 0; count--) {
            const model::destination to{static_cast<uint32_t>(1 + random() % 40) << 16, RIB_MASK_DOMAIN};
            routes[to] = {static_cast<uint32_t>(random() % 3), RIB_FLAG_ACTIVE, {{0x01000000, 1}}};
        }
        all[vsan] = std::make_shared<const model::route_table>(std::move(routes));
    }
    return all;
}

/// Brings it there, quietly. @return what it came to
/// @param said what it prints, where that is asked for
client_traffic brought(unicast_client &client, const wanted_tables<unicast_table> &wanted,
                       std::string *said = nullptr) {
    client_traffic traffic;
    ::testing::internal::CaptureStderr();
    const std::string printed = testing::printed_by([&] { traffic = client.converge(wanted); });
    if (said != nullptr) {
        *said = printed;
    }
    ::testing::internal::GetCapturedStderr();
    return traffic;
}

size_t differing(const plain_rib &rib, const wanted_tables<unicast_table> &wanted) {
    size_t changes = 0;
    for (const auto &[vsan, routes] : wanted) {
        const auto found = rib.held.find(vsan);
        changes +=
            model::changes_between(found == rib.held.end() ? model::route_table() : found->second, *routes).size();
    }
    return changes;
}

TEST(update_pipeline, eight_updates_are_on_their_way_and_are_answered_in_any_order) {
    const testing::fault_script script("clock virtual\n");
    std::mt19937 random(81);
    const auto wanted = drawn(random);
    plain_rib rib(1, {});
    unicast_client client(bus, RIB_CLIENT_FSPF, {});
    const client_traffic traffic = brought(client, wanted);
    rib.stop();
    EXPECT_EQ(rib.most_collected, 8U);
    EXPECT_EQ(differing(rib, wanted), 0U);
    EXPECT_EQ(traffic.messages, static_cast<size_t>(std::count_if(wanted.begin(), wanted.end(), [](const auto &one) {
                  return !one.second->empty();
              })));
}

TEST(update_pipeline, a_rib_that_has_no_room_gets_the_others_once_it_has) {
    const testing::fault_script script("clock virtual\nfail send 5 EAGAIN\n"); // of the updates the fourth
    std::mt19937 random(86);
    const auto wanted = drawn(random);
    plain_rib rib(1, {});
    unicast_client client(bus, RIB_CLIENT_FSPF, {});
    const client_traffic traffic = brought(client, wanted);
    rib.stop();
    EXPECT_EQ(differing(rib, wanted), 0U);
    for (const auto &[vsan, messages] : rib.updates) {
        EXPECT_EQ(messages, 1U);
    }
    EXPECT_EQ(traffic.refused, 0U);
}

TEST(update_pipeline, merges_are_traced_on_request) {
    const testing::fault_script script("clock virtual\n");
    plain_rib rib(1, {});
    unicast_client client(bus, RIB_CLIENT_FSPF, {.trace = true});
    client.start_over(takeover::merges);
    std::string said;
    brought(client, {{7, std::make_shared<const model::route_table>()}}, &said);
    EXPECT_NE(said.find(" FSPF sent RIB merge with response vsan 7 for 0 ucast "), std::string::npos) << said;
}

// A message more than one for each VSAN is one that was sent again because the one before it did not go well.
TEST(update_pipeline, what_is_lost_or_refused_leaves_the_others_alone) {
    std::mt19937 random(82);
    for (uint32_t round = 0; round < 40; round++) {
        SCOPED_TRACE(round);
        const testing::fault_script script("clock virtual\n");
        const auto first = drawn(random);
        const auto second = drawn(random);
        const auto some = [&] { return static_cast<unsigned>(random() % 3 == 0 ? 0 : 3 + random() % 20); };
        plain_rib rib(round, {some(), some(), some()});
        unicast_client client(bus, RIB_CLIENT_FSPF,
                              {.message_limit = protocol::smallest_message_limit + random() % 1000,
                               .link = {.envelopes = false, .patience = 24h}});
        brought(client, first);
        const client_traffic traffic = brought(client, second);
        rib.stop();
        EXPECT_EQ(differing(rib, second), traffic.refused);
        EXPECT_EQ(qip_refs_held(), 0U);
    }
}

TEST(update_pipeline, only_what_did_not_go_well_is_sent_again) {
    std::mt19937 random(83);
    for (uint32_t round = 0; round < 20; round++) {
        SCOPED_TRACE(round);
        const testing::fault_script script("clock virtual\n");
        const auto wanted = drawn(random);
        plain_rib rib(round, {.loses = 7, .ignores = 9});
        unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.patience = 24h}});
        const client_traffic traffic = brought(client, wanted);
        rib.stop();
        EXPECT_EQ(differing(rib, wanted), 0U);
        EXPECT_EQ(traffic.refused, 0U);
        for (const auto &[vsan, messages] : rib.updates) {
            EXPECT_LE(messages, 1 + rib.troubles[vsan]);
        }
    }
}

TEST(update_pipeline, several_that_are_lost_together_cost_no_longer_than_one) {
    const testing::fault_script script("clock virtual\n");
    std::mt19937 random(84);
    const auto wanted = drawn(random);
    plain_rib rib(1, {.is_deaf = true});
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.patience = 30s}});
    EXPECT_EQ(brought(client, wanted).refused, 0U);
    rib.stop();
    EXPECT_EQ(differing(rib, wanted), 0U);
    EXPECT_LT(qip_now(), 21'000'000U);
}

TEST(update_pipeline, clients_that_face_an_operator_say_what_is_lost_in_short_sentences) {
    const testing::fault_script script("clock virtual\n");
    std::mt19937 random(85);
    plain_rib rib(1, {.is_deaf = true});
    unicast_client client(bus, RIB_CLIENT_CONFIG, {.link = {.patience = 30s}});
    std::string said;
    brought(client, drawn(random), &said);
    std::string eight;
    for (int lost = 0; lost < 8; lost++) {
        eight += "No response from RIB!\n";
    }
    EXPECT_EQ(said, eight);
}

} // namespace
} // namespace ribkit::clients
