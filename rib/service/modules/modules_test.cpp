// Client, RIB and modules over the bus: who is told what, and when.
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "rib/service/modules/scripted_module_rig.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"

#include <gtest/gtest.h>
#include <map>
#include <utility>

namespace ribkit::rib {
namespace {

constexpr const char *bus_url = "local:modules_test";
constexpr model::route_key first{1, {0x020000, RIB_MASK_DOMAIN}};
constexpr model::route_key second{1, {0x030000, RIB_MASK_DOMAIN}};

/// A client that sends updates, and hears their answers some time.
class asking_client {
  public:
    uint32_t send(const std::vector<model::route_key> &keys, uint32_t oper = RIB_OPER_UPDATE_RSP,
                  uint32_t action = RIB_ACTION_ADD) {
        std::vector<model::route_change> changes;
        for (const model::route_key &key : keys) {
            changes.push_back({action, key.to, {++metric_, RIB_FLAG_ACTIVE, {{0x01010001, 2}}}});
        }
        const bytes update = testing::literal_update({RIB_CLIENT_FSPF, 1, oper, changes});
        qip_ref ref{};
        EXPECT_EQ(qip_send(handle_.number(), &ribkit_rib_address, RIBKIT_OPCODE_FCURT_UPDATE, update.data(),
                           static_cast<uint32_t>(update.size()), &ref, nullptr, nullptr),
                  0);
        const uint32_t token = qip_rr_token_get(&ref);
        qip_drop(handle_.number(), &ref);
        return token;
    }

    /// The answer to what was sent; none where there is none in so many milliseconds.
    std::optional<protocol::fcurt_response> answer(uint32_t token, uint32_t milliseconds = 20'000) {
        qip_recv_opts opts{{QIP_RECV_BY_TOKEN, milliseconds == 0 ? 1U : 0U}};
        opts.word[3] = token;
        opts.word[4] = milliseconds;
        qip_ref ref{};
        if (qip_recv(handle_.number(), &ref, &opts) != 0) {
            return {};
        }
        const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&ref));
        const auto said = protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(payload, 20));
        qip_drop(handle_.number(), &ref);
        return said;
    }

    protocol::fcurt_response ask(const std::vector<model::route_key> &keys, uint32_t oper = RIB_OPER_UPDATE_RSP,
                                 uint32_t action = RIB_ACTION_ADD) {
        return answer(send(keys, oper, action)).value_or(protocol::fcurt_response{RIB_SW_BUG, 0, 0, 0, 0});
    }

  private:
    bus::service_handle handle_{bus_url};
    uint32_t metric_ = 0;
};

constexpr protocol::fcurt_response answered(uint32_t result, uint32_t accepted, uint32_t held) {
    return {result, RIB_OPER_UPDATE_RSP, 1, accepted, held};
}

class modules_on_the_bus : public ::testing::Test {
  protected:
    ~modules_on_the_bus() override { rib.stop(); }

    rib_service rib{bus_url};
    asking_client client;
};

TEST_F(modules_on_the_bus, without_modules_the_answer_comes_at_once) {
    EXPECT_EQ(client.ask({first}), answered(RIB_OK, 1, 1));
}

TEST_F(modules_on_the_bus, the_answer_comes_when_all_modules_have_answered) {
    scripted_module one(bus_url, 1);
    scripted_module other(bus_url, 2);
    one.take_all();
    other.take_all();
    const uint32_t token = client.send({first, second});
    auto update = one.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(update->head.oper, FIB_OPER_UPDATE);
    EXPECT_EQ(update->keys, (std::vector{first, second}));
    one.answer(*update);
    auto later = other.next();
    ASSERT_TRUE(later);
    EXPECT_EQ(asking_client().ask({}, RIB_OPER_UPDATE).result, RIB_OK); // somebody else does not wait
    EXPECT_FALSE(client.answer(token, 0));
    other.answer(*later);
    EXPECT_EQ(client.answer(token), answered(RIB_OK, 2, 2));
}

TEST_F(modules_on_the_bus, answers_come_in_any_order) {
    scripted_module module(bus_url, 1);
    module.take_all();
    const uint32_t early = client.send({first});
    auto earlier = module.next();
    const uint32_t late = client.send({second});
    auto later = module.next();
    ASSERT_TRUE(earlier && later);
    module.answer(*later);
    EXPECT_EQ(client.answer(late), answered(RIB_OK, 1, 2));
    EXPECT_FALSE(client.answer(early, 0));
    module.answer(*earlier);
    EXPECT_EQ(client.answer(early), answered(RIB_OK, 1, 1));
}

TEST_F(modules_on_the_bus, a_new_module_is_given_everything_in_the_fewest_messages) {
    EXPECT_EQ(client.ask({first, second}).result, RIB_OK);
    scripted_module module(bus_url, 1);
    const auto all = module.take_all();
    std::vector<uint32_t> unicast;
    for (const received_update &one : all) {
        if (one.opcode == RIBKIT_OPCODE_FIB_FCU_UPDATE) {
            unicast.push_back(one.head.oper);
        }
    }
    EXPECT_EQ(unicast, (std::vector{FIB_OPER_BEGIN_MERGE, FIB_OPER_MERGE, FIB_OPER_END_MERGE}));
    EXPECT_EQ(all.size(), 1U + 3 + 2 + 2); // a word about VSANs, and two tables without routes
    module.announce();
    EXPECT_FALSE(module.next(50)); // it has not started again
    module.start_again(2);
    module.announce();
    EXPECT_EQ(module.take_all().size(), all.size());
}

TEST_F(modules_on_the_bus, what_a_module_has_no_room_for_is_named_and_tried_again_when_there_is_room) {
    scripted_module module(bus_url, 1);
    module.take_all();
    const uint32_t token = client.send({first, second});
    auto update = module.next();
    ASSERT_TRUE(update);
    module.answer(*update, RIB_HW_FULL, {second});
    EXPECT_EQ(client.answer(token), answered(RIB_HW_FULL, 1, 2));
    const uint32_t removal = client.send({first}, RIB_OPER_UPDATE_RSP, RIB_ACTION_DELETE);
    update = module.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(update->head.oper, FIB_OPER_REMOVE);
    module.answer(*update);
    EXPECT_EQ(client.answer(removal), answered(RIB_OK, 1, 1));
    update = module.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(update->keys, (std::vector{second}));
    module.answer(*update);
}

TEST_F(modules_on_the_bus, a_damaged_answer_is_a_missing_one) {
    scripted_module module(bus_url, 1);
    module.take_all();
    for (const bytes &damaged : {bytes{}, bytes(19), bytes(20, 0xff), bytes(21)}) {
        const uint32_t token = client.send({first});
        auto update = module.next();
        ASSERT_TRUE(update);
        module.answer_with(*update, damaged);
        EXPECT_EQ(client.answer(token), answered(RIB_MISSING_RESPONSE, 0, 1));
    }
}

TEST_F(modules_on_the_bus, an_upgrading_module_says_so_and_is_given_the_changes_later) {
    scripted_module module(bus_url, 1);
    module.take_all();
    module.announce(model::fib_state::upgrading);
    EXPECT_EQ(client.ask({first}), answered(RIB_LC_UPGRADING, 0, 1));
    module.announce(model::fib_state::active);
    auto update = module.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(update->keys, (std::vector{first}));
    module.answer(*update);
}

TEST_F(modules_on_the_bus, what_a_module_was_before_is_no_news_when_it_comes_late) {
    scripted_module module(bus_url, 1);
    module.take_all();
    const auto expect_served = [&] {
        const uint32_t token = client.send({first});
        auto update = module.next();
        ASSERT_TRUE(update);
        module.answer(*update);
        EXPECT_EQ(client.answer(token), answered(RIB_OK, 1, 1));
    };
    module.announce(model::fib_state::offline); // it was active already
    expect_served();
    module.announce(model::fib_state::active, 9);
    module.announce(model::fib_state::upgrading, 8);
    expect_served();
    module.start_again(2);
    module.announce();
    module.take_all();
    module.start_again(1);
    module.announce(model::fib_state::exited, 9);
    expect_served();
}

TEST_F(modules_on_the_bus, a_module_that_says_that_it_leaves_is_missing) {
    scripted_module module(bus_url, 1);
    module.take_all();
    module.announce(model::fib_state::exited);
    EXPECT_EQ(client.ask({first}), answered(RIB_MISSING_DEVICE, 0, 1));
    module.start_again(2);
    module.announce(model::fib_state::offline); // it has just begun
    EXPECT_EQ(client.ask({second}), answered(RIB_MISSING_DEVICE, 0, 2));
    module.announce();
    EXPECT_FALSE(module.take_all().empty());
}

TEST_F(modules_on_the_bus, a_module_that_upgrades_before_it_says_so_is_sent_everything_again) {
    scripted_module module(bus_url, 1);
    module.take_all();
    const uint32_t token = client.send({first});
    auto update = module.next();
    ASSERT_TRUE(update);
    module.answer(*update, RIB_LC_UPGRADING);
    EXPECT_EQ(client.answer(token), answered(RIB_LC_UPGRADING, 0, 1));
    EXPECT_FALSE(module.next(50));
    module.announce();
    update = module.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(update->keys, (std::vector{first}));
    module.answer(*update);
}

TEST_F(modules_on_the_bus, a_module_that_is_not_there_any_more_is_missing) {
    {
        scripted_module module(bus_url, 1);
        module.take_all();
    }
    EXPECT_EQ(client.ask({first}), answered(RIB_MISSING_DEVICE, 0, 1));
    EXPECT_EQ(client.ask({second}), answered(RIB_MISSING_DEVICE, 0, 2));
    scripted_module back(bus_url, 1, 2);
    EXPECT_FALSE(back.take_all().empty());
    const uint32_t token = client.send({first});
    auto update = back.next();
    ASSERT_TRUE(update);
    back.answer(*update);
    EXPECT_EQ(client.answer(token), answered(RIB_OK, 1, 2));
}

TEST_F(modules_on_the_bus, a_suspended_vsan_leaves_the_modules_and_comes_back) {
    scripted_module module(bus_url, 1);
    module.take_all();
    EXPECT_EQ(client.ask({first}, RIB_OPER_UPDATE).result, RIB_OK);
    auto update = module.next();
    ASSERT_TRUE(update);
    module.answer(*update);
    const auto tell = [&](uint32_t oper) {
        const bus::service_handle manager(bus_url);
        bytes message = testing::literal_update({RIB_CLIENT_VSAN_MANAGER, 1, oper, {}});
        rib_wrap_msg request{};
        rib_wrap_msg answer{};
        request.opcode = RIBKIT_OPCODE_FCURT_UPDATE;
        request.payload = message.data();
        request.payload_size = static_cast<uint32_t>(message.size());
        ASSERT_EQ(rib_wrap_qip_req_rsp(manager.number(), &request, &answer), RIB_OK);
        rib_wrap_qip_drop(RIB_CLIENT_VSAN_MANAGER, manager.number(), &answer.ref);
    };
    tell(RIB_OPER_SUSPEND);
    std::multiset<uint32_t> said;
    for (int i = 0; i < 4; i++) { // VSAN states, and three tables
        update = module.next();
        ASSERT_TRUE(update);
        said.insert(update->head.oper);
        module.answer(*update);
    }
    EXPECT_EQ(said.count(FIB_OPER_REMOVE_ALL), 3U);
    EXPECT_EQ(client.ask({second}), answered(RIB_OK, 1, 2)); // of which modules are told nothing
    tell(RIB_OPER_RESUME);
    for (const received_update &one : module.take_all()) {
        if (one.head.oper == FIB_OPER_MERGE) {
            EXPECT_EQ(one.keys, (std::vector{first, second}));
        }
    }
}

TEST_F(modules_on_the_bus, too_many_requests_of_one_sender_may_not_wait) {
    scripted_module module(bus_url, 1);
    module.take_all();
    std::vector<uint32_t> tokens;
    for (size_t i = 0; i < held_answers::most_of_one; i++) {
        tokens.push_back(client.send({first}));
    }
    EXPECT_EQ(client.ask({second}).result, RIB_OUT_OF_MEMORY);
    EXPECT_EQ(asking_client().ask({}, RIB_OPER_UPDATE).result, RIB_OK);
    module.take_for_ever();
    for (const uint32_t token : tokens) {
        EXPECT_EQ(client.answer(token), answered(RIB_OK, 1, 1));
    }
}

/// A module with two routes, which are compared until it is asked what differs.
class compared_module : public modules_on_the_bus {
  protected:
    void SetUp() override {
        module.take_all();
        const uint32_t adding = client.send({first, second});
        answer_next(FIB_OPER_UPDATE);
        EXPECT_EQ(client.answer(adding), answered(RIB_OK, 2, 2));
        token = client.send({}, RIB_OPER_VERIFY);
    }

    void answer_next(uint32_t oper) {
        auto update = module.next();
        ASSERT_TRUE(update);
        EXPECT_EQ(update->head.oper, oper);
        EXPECT_TRUE(update->keys.empty() || update->keys == (std::vector{first, second}));
        module.answer(*update);
    }
    void answer_comparison() {
        for (const uint32_t oper : {FIB_OPER_BEGIN_VERIFY, FIB_OPER_VERIFY, FIB_OPER_END_VERIFY}) {
            answer_next(oper);
        }
    }

    static constexpr protocol::fcurt_response verified(uint32_t result, uint32_t accepted) {
        return {result, RIB_OPER_VERIFY, 1, accepted, 2};
    }

    std::pair<uint32_t, std::map<uint32_t, uint32_t>> report() {
        const bus::service_handle asking(bus_url);
        auto query = protocol::encode(protocol::verify_query{RIB_CLIENT_OPERATOR, 1, protocol::compared_unicast, 9});
        rib_wrap_msg request{};
        rib_wrap_msg said{};
        request.opcode = RIBKIT_OPCODE_VERF_QUERY;
        request.payload = query.data();
        request.payload_size = static_cast<uint32_t>(query.size());
        EXPECT_EQ(rib_wrap_qip_req_rsp(asking.number(), &request, &said), RIB_OK);
        const codec::view<wire::verf_info> info(said.payload);
        std::map<uint32_t, uint32_t> found;
        for (uint32_t i = 0; i < info.get<"n_key">(); i++) {
            const codec::view<wire::verf_fcu> key(said.payload + wire::verf_info.size + i * wire::verf_fcu.size);
            found[key.get<"fcid">()] = key.get<"status">();
        }
        const uint32_t completed = info.get<"completed">();
        rib_wrap_qip_drop(RIB_CLIENT_OPERATOR, asking.number(), &said.ref);
        return {completed, found};
    }

    scripted_module module{bus_url, 1};
    uint32_t token = 0;
};

TEST_F(compared_module, that_has_all_as_it_shall_be_is_found_so) {
    answer_comparison();
    auto question = module.next();
    ASSERT_TRUE(question);
    EXPECT_FALSE(client.answer(token, 0));
    module.tell_differences(*question, {});
    EXPECT_EQ(client.answer(token), verified(RIB_OK, 2));
    EXPECT_NE(report().first, 0U);
    EXPECT_TRUE(report().second.empty());
}

TEST_F(compared_module, is_asked_again_until_it_names_nothing_more) {
    constexpr model::route_key extra{1, {0x040000, RIB_MASK_DOMAIN}};
    answer_comparison();
    for (const auto &[key, status] : {std::pair(second, FIB_VERF_NOT_IN_FIB), {extra, FIB_VERF_NOT_IN_RIB}}) {
        auto question = module.next();
        ASSERT_TRUE(question);
        EXPECT_LE(question->from.to.fcid, key.to.fcid);
        module.tell_differences(*question, {{status, key}});
    }
    auto last = module.next();
    ASSERT_TRUE(last);
    const model::label_key behind{.vsan = 1, .to = {0x040000, RIB_MASK_DOMAIN + 1}};
    EXPECT_EQ(last->from, behind);
    module.tell_differences(*last, {{FIB_VERF_NOT_IN_RIB, {2, extra.to}}}); // another VSAN's
    EXPECT_EQ(client.answer(token), verified(RIB_FAILED, 1));
    EXPECT_EQ(report().second,
              (std::map<uint32_t, uint32_t>{{0x030000, FIB_VERF_NOT_IN_FIB}, {0x040000, FIB_VERF_NOT_IN_RIB}}));
}

TEST_F(compared_module, has_no_difference_in_what_changes_meanwhile) {
    answer_next(FIB_OPER_BEGIN_VERIFY);
    answer_next(FIB_OPER_VERIFY);
    answer_next(FIB_OPER_END_VERIFY);
    auto question = module.next();
    ASSERT_TRUE(question);
    const uint32_t changing = client.send({first});
    auto update = module.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(update->keys, (std::vector{first}));
    module.answer(*update);
    module.tell_differences(*question, {{FIB_VERF_BAD_IN_FIB, first}});
    question = module.next();
    ASSERT_TRUE(question);
    module.tell_differences(*question, {});
    EXPECT_EQ(client.answer(changing).value_or(protocol::fcurt_response{}).result, RIB_OK);
    EXPECT_EQ(client.answer(token), verified(RIB_OK, 2));
}

TEST_F(compared_module, that_answers_nonsense_is_a_missing_response) {
    answer_comparison();
    auto question = module.next();
    ASSERT_TRUE(question);
    module.answer_with(*question, bytes(21));
    EXPECT_EQ(client.answer(token), verified(RIB_MISSING_RESPONSE, 0));
    EXPECT_EQ(report().first, 0U); // not all was said
}

TEST_F(compared_module, that_names_the_same_again_and_again_is_not_asked_for_ever) {
    answer_comparison();
    for (int twice = 0; twice < 2; twice++) {
        auto question = module.next();
        ASSERT_TRUE(question);
        module.tell_differences(*question, {{FIB_VERF_BAD_IN_FIB, first}});
    }
    EXPECT_EQ(client.answer(token), verified(RIB_MISSING_RESPONSE, 0));
}

TEST_F(modules_on_the_bus, without_modules_there_is_nothing_to_compare_with) {
    EXPECT_EQ(client.answer(client.send({}, RIB_OPER_VERIFY)).value_or(protocol::fcurt_response{}).result,
              RIB_MISSING_DEVICE);
}

TEST_F(modules_on_the_bus, a_module_that_answers_nonsense_is_sent_nothing_until_it_tells_of_itself_again) {
    scripted_module module(bus_url, 1);
    size_t asked = 0;
    while (auto update = module.next(asked < module_feed::most_damaged ? 20'000 : 50)) {
        module.answer_with(*update, bytes(3));
        asked++;
    }
    EXPECT_GE(asked, size_t{module_feed::most_damaged});
    EXPECT_LE(asked, module_feed::most_damaged + module_exchange::most_in_flight);
    EXPECT_EQ(client.ask({first}), answered(RIB_MISSING_RESPONSE, 0, 1));
    module.announce();
    module.take_all();
    const uint32_t token = client.send({first});
    auto update = module.next();
    ASSERT_TRUE(update);
    module.answer(*update);
    EXPECT_EQ(client.answer(token), answered(RIB_OK, 1, 1));
}

TEST(modules_in_time, a_module_keeps_what_it_has_until_clients_have_brought_their_routes_back) {
    const testing::fault_script script("clock virtual\n");
    asking_client client; // whom the clock waits for
    const uint64_t start = qip_now();
    rib_service rib(bus_url, {.hold = std::chrono::seconds(3)});
    scripted_module module(bus_url, 1, 1, 2);
    EXPECT_EQ(client.ask({first}, RIB_OPER_UPDATE).result, RIB_OK);
    EXPECT_EQ(client.ask({second}, RIB_OPER_UPDATE).result, RIB_OK);
    std::set<uint32_t> given;
    bool has_begun = false;
    for (int left = 20; left > 0 && given.size() < 2; left--) {
        auto update = module.next();
        ASSERT_TRUE(update);
        if (update->head.oper == FIB_OPER_BEGIN_MERGE && !std::exchange(has_begun, true)) {
            EXPECT_GE(qip_now() - start, 500'000U);
            EXPECT_LE(qip_now() - start, 3'100'000U);
        }
        EXPECT_NE(update->head.oper, FIB_OPER_REMOVE);
        for (const model::route_key &key : update->keys) {
            given.insert(key.to.fcid);
        }
        module.answer(*update);
    }
    EXPECT_TRUE(has_begun);
    EXPECT_EQ(given.size(), 2U);
    rib.stop();
}

TEST(modules_in_time, who_is_not_answered_is_told_so_and_a_late_answer_changes_nothing) {
    const testing::fault_script script("clock virtual\n");
    rib_service rib(bus_url);
    asking_client client;
    scripted_module module(bus_url, 1);
    module.take_all();
    const uint64_t asked = qip_now();
    const uint32_t token = client.send({first});
    auto update = module.next();
    ASSERT_TRUE(update);
    EXPECT_EQ(client.answer(token), answered(RIB_TIMEOUT, 0, 1));
    EXPECT_LE(qip_now() - asked, 5'100'000U);
    const uint64_t again = qip_now();
    EXPECT_EQ(client.ask({second}), answered(RIB_TIMEOUT, 0, 2)); // the module is known to be silent
    EXPECT_LE(qip_now() - again, 100'000U);
    module.answer(*update); // late
    std::set<uint32_t> given;
    while (given.size() < 2) {
        auto repeated = module.next();
        ASSERT_TRUE(repeated);
        for (const model::route_key &key : repeated->keys) {
            given.insert(key.to.fcid);
        }
        module.answer(*repeated);
    }
    const uint32_t last = client.send({first});
    auto now = module.next();
    ASSERT_TRUE(now);
    module.answer(*now);
    EXPECT_EQ(client.answer(last), answered(RIB_OK, 1, 2));
    rib.stop();
}

// 64 answers may be owed: eight updates every five seconds.
TEST(modules_in_time, a_module_that_never_answers_gets_no_more_and_stops_nobody) {
    const testing::fault_script script("clock virtual\n");
    rib_service rib(bus_url);
    asking_client client;
    scripted_module dead(bus_url, 1);
    scripted_module alive(bus_url, 2);
    alive.take_for_ever();
    size_t came = 0;
    while (auto update = dead.next(60'000)) {
        came++;
        scripted_module::drop(*update);
        EXPECT_EQ(client.ask({first}, RIB_OPER_UPDATE).result, RIB_OK);
    }
    EXPECT_EQ(came, module_exchange::most_owed);
    EXPECT_EQ(client.ask({first}).result, RIB_TIMEOUT);
    rib.stop();
}

} // namespace
} // namespace ribkit::rib
