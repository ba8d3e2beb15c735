// Who talks to a module without being the RIB, or to the RIB as a module without being one: in a wrong order, with old
// numbers, too often, unasked, with answers that contradict themselves. All of it is answered or dropped, and whoever
// is honest is served meanwhile and afterwards.
#include "bus/service_handle.h"
#include "fib/service/fib_service.h"
#include "fuzz/quiet.h"
#include "fuzz/sound_fib_requests.h"
#include "protocol/fib/fib_messages.h"
#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "rib/service/modules/scripted_module_rig.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <list>
#include <set>
#include <thread>

namespace ribkit::fuzz {
namespace {

constexpr const char *url = "local:hostile_modules";
constexpr uint32_t vsan = 1;
constexpr uint32_t one_way[] = {0x40, 0x01010001};
constexpr model::route_key first{vsan, {0x020000, RIB_MASK_DOMAIN}};

/// A unicast update of one domain's route, or of none.
byte_vector unicast_update(uint32_t oper, uint32_t sequence, uint32_t domain = 0) {
    byte_vector room(4096);
    protocol::unicast_fib_update update(room, {oper, vsan, sequence});
    if (domain != 0) {
        add_path(update, {domain << 16, RIB_MASK_DOMAIN}, model::fib_unicast{.metric = 5, .ways = one_way});
    }
    room.resize(update.size());
    return room;
}

/// The result at the end of a module's answer.
uint32_t result_of(const byte_vector &answer) {
    EXPECT_GE(answer.size(), wire::fib_rsp.size);
    return protocol::answer_of(codec::view<wire::fib_rsp>(answer.data() + answer.size() - wire::fib_rsp.size)).result;
}

size_t lines_with(const std::string &text, const std::string &wanted) {
    size_t count = 0;
    for (size_t at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1)) {
        count++;
    }
    return count;
}

class attacked_module : public ::testing::Test {
  protected:
    [[nodiscard]] uint32_t entries() const {
        return service.read([](const fib::module &of) { return of.fib.count(); });
    }
    uint32_t tell(uint32_t oper, uint32_t sequence, uint32_t domain = 0) {
        return result_of(asking.ask(RIBKIT_OPCODE_FIB_FCU_UPDATE, unicast_update(oper, sequence, domain)));
    }

    fib::fib_service service{url, {.number = 1}};
    module_requester asking{url, 1};
};

TEST_F(attacked_module, refuses_what_comes_in_a_wrong_order) {
    EXPECT_EQ(tell(FIB_OPER_MERGE, 1, 2), RIB_NO_ENTRY) << "a merge that has not begun";
    EXPECT_EQ(tell(FIB_OPER_END_MERGE, 2), RIB_NO_ENTRY);
    EXPECT_EQ(tell(FIB_OPER_VERIFY, 3, 2), RIB_NO_ENTRY);
    EXPECT_EQ(tell(FIB_OPER_END_VERIFY, 4), RIB_NO_ENTRY);
    EXPECT_EQ(tell(FIB_OPER_UPDATE, 5, 2), RIB_OK);
    EXPECT_EQ(tell(FIB_OPER_BEGIN_MERGE, 6), RIB_OK);
    EXPECT_EQ(tell(FIB_OPER_BEGIN_MERGE, 7), RIB_OK) << "begins again";
    EXPECT_EQ(tell(FIB_OPER_MERGE, 8, 3), RIB_OK);
    EXPECT_EQ(tell(FIB_OPER_END_MERGE, 9), RIB_OK);
    EXPECT_EQ(tell(FIB_OPER_END_MERGE, 10), RIB_NO_ENTRY) << "ends twice";
    EXPECT_EQ(entries(), 1U);
    for (const uint32_t old : {10U, 9U, 1U, 0U, 0x8000000bU}) {
        EXPECT_EQ(tell(FIB_OPER_REMOVE_ALL, old), RIB_INDEX_USED) << old;
    }
    EXPECT_EQ(tell(FIB_OPER_UPDATE, 11, 0), RIB_OK) << "an update of nothing";
    EXPECT_EQ(tell(0, 12), RIB_NOT_SUPPORTED);
    EXPECT_EQ(entries(), 1U);
}

TEST_F(attacked_module, notes_each_refusal_in_a_line) {
    yelk_hist_clear();
    constexpr uint32_t damaged = 50;
    for (uint32_t i = 0; i < damaged; i++) {
        asking.ask(i % 2 == 0 ? RIBKIT_OPCODE_FIB_FCU_UPDATE : 0x3ff, byte_vector(i % 16));
    }
    EXPECT_EQ(lines_with(testing::printed_by(yelk_hist_print), "module 1 refuses opcode "), damaged);
}

/// Sends without waiting for anything, as fast as it may.
void flood(uint32_t seed) {
    const bus::service_handle handle(url);
    const qip_addr there = protocol::module_address(1);
    const auto sound = sound_fib_requests();
    constexpr uint32_t messages = 3000;
    for (uint32_t i = 0; i < messages; i++) {
        const auto &[opcode, bytes] = sound[(i + seed) % sound.size()];
        qip_ref ref{};
        const bool is_asked = i % 3 == 0;
        const auto size = static_cast<uint32_t>(i % 5 == 0 ? bytes.size() / 2 : bytes.size());
        if (qip_send(handle.number(), &there, i % 7 == 0 ? 0 : opcode, bytes.data(), size, is_asked ? &ref : nullptr,
                     nullptr, nullptr) == 0 &&
            is_asked) {
            qip_drop(handle.number(), &ref);
        }
    }
}

TEST_F(attacked_module, serves_others_while_it_is_flooded) {
    const auto question = encode(protocol::node_query{RIB_CLIENT_OPERATOR, 0, 0});
    std::list<std::thread> attackers;
    for (uint32_t seed = 0; seed < 3; seed++) {
        attackers.emplace_back(flood, seed);
    }
    for (uint32_t i = 0; i < 300; i++) { // each is answered, which asking.ask demands
        EXPECT_NE(run_of(asking.ask(RIBKIT_OPCODE_FIB_NODE_QUERY, {question.begin(), question.end()}), "rib_node_info"),
                  "");
    }
    for (std::thread &one : attackers) {
        one.join();
    }
    const uint32_t next = service.read([](const fib::module &of) { return of.fib.sequence(); }) + 1;
    EXPECT_EQ(tell(FIB_OPER_REMOVE_ALL, next), RIB_OK);
    EXPECT_EQ(tell(FIB_OPER_UPDATE, next + 1, 9), RIB_OK);
}

class attacked_rib : public ::testing::Test {
  protected:
    ~attacked_rib() override { service.stop(); }

    /// A client's change, whose answer waits for the modules. @return its token
    uint32_t send(uint32_t metric) {
        const byte_vector update =
            testing::literal_update({RIB_CLIENT_FSPF,
                                     vsan,
                                     RIB_OPER_UPDATE_RSP,
                                     {{RIB_ACTION_ADD, first.to, {metric, RIB_FLAG_ACTIVE, {{0x01010001, 2}}}}}});
        qip_ref ref{};
        EXPECT_EQ(qip_send(client.number(), &ribkit_rib_address, RIBKIT_OPCODE_FCURT_UPDATE, update.data(),
                           static_cast<uint32_t>(update.size()), &ref, nullptr, nullptr),
                  0);
        const uint32_t token = qip_rr_token_get(&ref);
        qip_drop(client.number(), &ref);
        return token;
    }
    /// @return the result that it is answered with
    uint32_t answer(uint32_t token) {
        const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 20, token}};
        qip_ref ref{};
        if (qip_recv(client.number(), &ref, &opts) != 0) {
            ADD_FAILURE() << "no answer";
            return RIB_SW_BUG;
        }
        EXPECT_EQ(qip_payload_size(&ref), wire::route_rsp.size);
        const uint32_t result = testing::word_at({static_cast<const uint8_t *>(qip_payload_get(&ref)), 4}, 0);
        qip_drop(client.number(), &ref);
        return result;
    }

    /// A module of its own sees what is true in the end.
    void expect_honest_service() {
        fib::fib_service honest(url, {.number = 9});
        EXPECT_NE(answer(send(77)), RIB_SW_BUG);
        uint32_t metric = 0;
        for (int rests = 0; metric != 77 && rests < 1000; rests++) {
            const qip_recv_opts nothing{{QIP_RECV_INCOMING, 0, 0, 0, 20}};
            qip_ref ref{};
            qip_recv(client.number(), &ref, &nothing);
            metric = honest.read([](const fib::module &of) {
                const auto &all = of.fib.entries<fib::unicast>().all();
                const auto found = all.find(first);
                return found == all.end() ? 0 : fib::table<fib::unicast>::read(found->second).metric;
            });
        }
        EXPECT_EQ(metric, 77U);
    }

    testing::fault_script time{"clock virtual\n"};
    quiet silence{stderr};
    rib::rib_service service{url, {.counts_at_end = true, .complaints_to = -1}};
    bus::service_handle client{url};
};

/// An answer that says something else than the right one, word by word, and each of its beginnings.
TEST_F(attacked_rib, takes_no_damaged_or_contradictory_answer_for_a_good_one) {
    rib::scripted_module module(url, 1);
    module.take_all();
    const auto right_answer = [](const model::fib_head &head) {
        return protocol::fib_answer(model::fib_answer{RIB_OK, head.oper, head.vsan, 1, head.sequence}, {});
    };
    const size_t size = right_answer({}).size();
    uint32_t metric = 0;
    const auto result_with = [&](const auto &damage) {
        const uint32_t token = send(++metric % 1000 + 1);
        auto update = module.next();
        if (!update) {
            ADD_FAILURE() << "no update";
            return RIB_SW_BUG;
        }
        module.answer_with(*update, damage(right_answer(update->head)));
        return answer(token);
    };
    EXPECT_EQ(result_with([](byte_vector all) { return all; }), RIB_OK);
    for (size_t cut = 0; cut < size; cut++) {
        EXPECT_EQ(result_with([cut](byte_vector all) {
                      all.resize(cut);
                      return all;
                  }),
                  RIB_MISSING_RESPONSE)
            << cut;
    }
    for (size_t at = 0; at < size; at += sizeof(uint32_t)) {
        for (const uint32_t number : {17U, 0x7fffffffU, UINT32_MAX}) {
            const uint32_t result = result_with([&](byte_vector all) {
                codec::store32<std::endian::big>(all.data() + at, number);
                return all;
            });
            EXPECT_NE(result, RIB_SW_BUG);
            if (at == 0) {
                EXPECT_NE(result, RIB_OK) << number;
            }
        }
    }
    const std::vector<model::fib_fault<model::route_key>> all_named{{FIB_VERF_NOT_IN_HW, first}};
    EXPECT_NE(result_with([&](const byte_vector &right) { // "ok", and yet it names what it did not take
                  const auto said = protocol::answer_of(codec::view<wire::fib_rsp>(right.data()));
                  return protocol::fib_answer(said, all_named);
              }),
              RIB_OK);
    expect_honest_service();
}

TEST_F(attacked_rib, takes_an_answer_once) {
    rib::scripted_module module(url, 1);
    module.take_all();
    for (uint32_t i = 1; i <= 100; i++) {
        const uint32_t token = send(i);
        auto update = module.next();
        ASSERT_TRUE(update);
        qip_ref again = update->ref;
        const auto said = [&](uint32_t result) {
            return protocol::fib_answer(model::fib_answer{result, update->head.oper, vsan, 1, update->head.sequence},
                                        {});
        };
        for (const uint32_t result : {RIB_OK, RIB_HW_FULL, RIB_LC_UPGRADING}) {
            const auto bytes = said(result);
            rib_wrap_qip_rsp(module.handle().number(), &again, bytes.data(), static_cast<uint32_t>(bytes.size()));
        }
        rib::scripted_module::drop(*update);
        EXPECT_EQ(answer(token), RIB_OK) << i;
    }
    expect_honest_service();
}

/// One who says that it is this module or another, again and again, each time a new one.
TEST_F(attacked_rib, outlives_a_thousand_modules_and_floods_of_records) {
    const bus::service_handle liar(url);
    uint32_t taken = 0;
    const auto claim = [&](uint32_t number, uint32_t instance) {
        byte_vector told = protocol::module_message(
            {.number = number, .state = model::fib_state::ready, .instance = instance, .sequence = instance});
        rib_wrap_msg request{};
        rib_wrap_msg said{};
        request.opcode = RIBKIT_OPCODE_FIB_NODE;
        request.payload = told.data();
        request.payload_size = static_cast<uint32_t>(told.size());
        ASSERT_EQ(rib_wrap_qip_req_rsp(liar.number(), &request, &said), RIB_OK);
        taken += testing::word_at({static_cast<const uint8_t *>(said.payload), 4}, 0) == RIB_OK ? 1 : 0;
        rib_wrap_qip_drop(RIB_CLIENT_TEST, liar.number(), &said.ref);
    };
    for (uint32_t number = 0; number < 1000; number++) {
        claim(number, 1);
    }
    EXPECT_EQ(taken, 1000U) << "the record has room for a byte, so that they are 256";
    EXPECT_EQ(answer(send(5)), RIB_MISSING_DEVICE);
    for (uint32_t instance = 2; instance < 2000; instance++) {
        claim(1 + instance % 3, instance);
        if (instance % 100 == 0) {
            EXPECT_EQ(answer(send(instance)), RIB_MISSING_DEVICE);
        }
    }
    expect_honest_service();
}

} // namespace
} // namespace ribkit::fuzz
