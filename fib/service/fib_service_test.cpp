// A module on the bus: what a RIB that is played here sends it and hears of it.
#include "fib/service/fib_service.h"
#include "fib/update.h"

#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "protocol/wire_digests.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/temporary_directory.h"

#include <algorithm>
#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <string_view>

namespace ribkit::fib {
namespace {

using codec::view;
using model::fib_state;

constexpr uint32_t generous = 20; // seconds
constexpr uint32_t vsan = 7;
constexpr uint32_t one_way[] = {0x40, 0x01010001};

/// What a RIB does, by hand.
class played_rib {
  public:
    explicit played_rib(const std::string &url, bool says_so = true) : handle_(url) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
        if (says_so) {
            rib_wrap_qip_note(handle_.number(), RIBKIT_OPCODE_STARTED, nullptr, 0);
        }
    }

    /// The module's next record, answered.
    model::module_node hear(uint32_t result = RIB_OK) {
        const qip_recv_opts opts{{QIP_RECV_INCOMING, 0, generous}};
        qip_ref ref{};
        if (qip_recv(handle_.number(), &ref, &opts) != 0) {
            ADD_FAILURE() << "no record";
            return {};
        }
        const std::span<const uint8_t> message(static_cast<const uint8_t *>(qip_payload_get(&ref)),
                                               qip_payload_size(&ref));
        EXPECT_EQ(qip_opcode_get(&ref), RIBKIT_OPCODE_FIB_NODE);
        EXPECT_EQ(protocol::check_module_message(message, nullptr), RIB_OK);
        const model::module_node heard = protocol::module_of(message);
        const auto said = protocol::encode(protocol::fcurt_response{result, 0, 0, 0, 0});
        rib_wrap_qip_rsp(handle_.number(), &ref, said.data(), said.size());
        qip_drop(handle_.number(), &ref);
        return heard;
    }
    /// ... of which it has this state.
    model::module_node hear_until(fib_state wanted) {
        model::module_node heard = hear();
        while (heard.state != wanted && !::testing::Test::HasFailure()) {
            heard = hear();
        }
        return heard;
    }

    /// The module's next record is not answered. @return when it came, in microseconds
    uint64_t ignore() {
        const qip_recv_opts opts{{QIP_RECV_INCOMING, 0, generous}};
        qip_ref ref{};
        EXPECT_EQ(qip_recv(handle_.number(), &ref, &opts), 0);
        qip_drop(handle_.number(), &ref);
        return qip_now();
    }

    bytes ask(uint32_t opcode, std::span<const uint8_t> message, uint32_t number = 1) {
        const qip_addr there = protocol::module_address(number);
        qip_ref ref{};
        if (qip_send(handle_.number(), &there, opcode, message.data(), static_cast<uint32_t>(message.size()), &ref,
                     nullptr, nullptr) != 0) {
            ADD_FAILURE() << "cannot send";
            return {};
        }
        const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, generous, qip_rr_token_get(&ref)}};
        qip_drop(handle_.number(), &ref);
        qip_ref answer{};
        if (qip_recv(handle_.number(), &answer, &opts) != 0) {
            ADD_FAILURE() << "no answer to opcode " << opcode;
            return {};
        }
        const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&answer));
        bytes said(payload, payload + qip_payload_size(&answer));
        qip_drop(handle_.number(), &answer);
        return said;
    }

    /// Sends an update of domains' routes. @return what the module answers
    model::fib_answer update(uint32_t oper, std::initializer_list<uint32_t> domains = {}, uint32_t in = vsan) {
        bytes room(RIBKIT_ANSWER_LIMIT);
        protocol::unicast_fib_update update(room, {oper, in, ++sequence_});
        for (const uint32_t domain : domains) {
            add_path(update, {domain << 16, RIB_MASK_DOMAIN}, model::fib_unicast{.metric = 5, .ways = one_way});
        }
        said_ = ask(RIBKIT_OPCODE_FIB_FCU_UPDATE, std::span(room).first(update.size()));
        EXPECT_EQ(protocol::check_unicast_fib_answer(said_, nullptr), RIB_OK);
        return protocol::answer_of(view<wire::fib_rsp>(said_.data() + said_.size() - wire::fib_rsp.size));
    }
    [[nodiscard]] const bytes &said() const { return said_; }

  private:
    bus::service_handle handle_;
    uint32_t sequence_ = 0;
    bytes said_;
};

std::string fresh_url() {
    static int count = 0;
    return "local:fib_service_" + std::to_string(count++);
}

uint32_t result_in(const bytes &answer) {
    return answer.size() == wire::fib_rsp.size ? protocol::answer_of(view<wire::fib_rsp>(answer.data())).result
                                               : RIB_OK;
}

class a_module : public ::testing::Test {
  protected:
    std::string url = fresh_url();
    std::optional<played_rib> rib{url};
    std::optional<fib_service> service{std::in_place, url,
                                       fib_options{.sizes = {.unicast = 2}, .ports = usual_ports(1, 3), .instance = 9}};
};

TEST_F(a_module, tells_the_rib_of_itself_and_of_its_states) {
    const model::module_node first = rib->hear();
    EXPECT_EQ(first.number, 1U);
    EXPECT_EQ(first.state, fib_state::offline);
    EXPECT_EQ(first.instance, 9U);
    EXPECT_EQ(first.ports, usual_ports(1, 3));
    EXPECT_EQ(rib->hear().state, fib_state::ready);
    rib->update(FIB_OPER_BEGIN_MERGE, {}, 0);
    EXPECT_EQ(rib->hear().state, fib_state::loading);
    rib->update(FIB_OPER_MERGE, {1});
    rib->update(FIB_OPER_END_MERGE, {}, 0);
    const model::module_node active = rib->hear();
    EXPECT_EQ(active.state, fib_state::active);
    EXPECT_EQ(active.entries, 1U);
    EXPECT_EQ(active.sequence, 3U);
    service.reset();
    EXPECT_EQ(rib->hear().state, fib_state::exited);
}

TEST_F(a_module, answers_updates_and_names_what_it_has_no_room_for) {
    EXPECT_EQ(rib->update(FIB_OPER_UPDATE, {1, 2, 3}), (model::fib_answer{RIB_HW_FULL, FIB_OPER_UPDATE, vsan, 2, 1}));
    const auto faults = protocol::faults_of(view<wire::fcu_rsp_path>(rib->said().data()));
    EXPECT_EQ(faults, (std::vector<model::fib_fault<model::route_key>>{
                          {FIB_VERF_NOT_IN_HW, {vsan, {0x030000, RIB_MASK_DOMAIN}}}}));
    EXPECT_EQ(rib->update(FIB_OPER_REMOVE, {1}), (model::fib_answer{RIB_OK, FIB_OPER_REMOVE, vsan, 1, 2}));
    EXPECT_EQ(rib->said().size(), wire::fib_rsp.size) << "all took effect";
    EXPECT_EQ(service->read([](const module &of) { return of.fib.count(); }), 1U);
}

TEST_F(a_module, tells_a_rib_that_starts_again) {
    rib->hear_until(fib_state::ready);
    rib->update(FIB_OPER_UPDATE, {1});
    rib->hear_until(fib_state::active);
    rib.reset();
    rib.emplace(url);
    const model::module_node told = rib->hear();
    EXPECT_EQ(told.state, fib_state::isolated);
    EXPECT_EQ(told.entries, 1U) << "what it has it keeps";
    EXPECT_EQ(rib->hear().state, fib_state::active);
}

TEST_F(a_module, tries_until_the_rib_takes_its_record) {
    rib->hear(RIB_OUT_OF_MEMORY);
    rib->hear_until(fib_state::ready);
}

TEST_F(a_module, takes_nothing_while_it_is_upgrading) {
    rib->hear_until(fib_state::ready);
    service->set_upgrading(true);
    EXPECT_EQ(rib->update(FIB_OPER_UPDATE, {1}).result, RIB_LC_UPGRADING);
    rib->hear_until(fib_state::upgrading);
    service->set_upgrading(false);
    EXPECT_EQ(rib->update(FIB_OPER_UPDATE, {1}).result, RIB_OK);
    rib->hear_until(fib_state::active);
}

TEST_F(a_module, answers_whatever_it_cannot_use) {
    EXPECT_EQ(result_in(rib->ask(RIBKIT_OPCODE_FCURT_UPDATE, {})), RIB_NOT_SUPPORTED);
    for (const message_handler &row : message_handlers()) {
        EXPECT_EQ(result_in(rib->ask(row.opcode, {})), RIB_BAD_PARAMETERS) << row.opcode;
    }
}

TEST_F(a_module, answers_queries_of_its_entries) {
    rib->update(FIB_OPER_UPDATE, {1, 2});
    const auto entries_from = [&](uint32_t type, const model::route_key &from) {
        const bytes said =
            rib->ask(RIBKIT_OPCODE_FIB_FCU_QUERY, protocol::encode(protocol::unicast_query{66, type, 100, from}));
        EXPECT_EQ(protocol::check_unicast_fib_update(said, nullptr), RIB_OK);
        return protocol::paths_of(view<wire::fib_update>(said.data()));
    };
    EXPECT_EQ(entries_from(1, {0, {0, 0}}), 2U);
    EXPECT_EQ(entries_from(1, {vsan, {0x010001, 0}}), 1U);
    EXPECT_EQ(entries_from(0x100, {vsan + 1, {0, 0}}), 0U);
    EXPECT_EQ(entries_from(0x800, {vsan, {0x020000, RIB_MASK_DOMAIN}}), 1U);
    const protocol::unicast_query vault{66, 0x40, 100, {0, {0, 0}}};
    EXPECT_EQ(result_in(rib->ask(RIBKIT_OPCODE_FIB_FCU_QUERY, protocol::encode(vault))), RIB_NOT_SUPPORTED);
}

/// A module's tables, and its answers without a bus.
class fib_queries : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const uint32_t in : {vsan, vsan + 1}) {
            for (const uint32_t to : {0x010000U, 0x020000U}) {
                const model::destination there{to, RIB_MASK_DOMAIN};
                put<unicast>({in, there}, {.ways = one_way});
                put<multicast>({in, there}, {});
                put<label>({in, RIB_ROUTE_FC_LABEL, 0, there}, {.ways = one_way});
            }
        }
    }
    template <class Kind> void put(const typename Kind::key &key, const typename Kind::values &what) {
        const std::vector<std::pair<typename Kind::key, typename Kind::values>> paths{{key, what}};
        EXPECT_EQ(take_update<Kind>(of.fib, {FIB_OPER_UPDATE, key.vsan, ++sequence}, paths).said.result, RIB_OK);
    }

    /// How many entries, of which VSAN; or the refusal's code.
    template <class Message> std::pair<uint32_t, uint32_t> found(uint32_t opcode, const Message &asked) {
        const message_handler *row = find_handler(opcode);
        EXPECT_EQ(row->check(asked, nullptr), RIB_OK);
        const bytes said = row->answer(of, asked);
        if (said.size() == wire::fib_rsp.size) {
            return {result_in(said), 0};
        }
        const view<wire::fib_update> update(said.data());
        return {protocol::paths_of(update), protocol::head_of(update).vsan};
    }
    auto unicast_found(uint32_t type, const model::route_key &from, uint32_t most = 100) {
        return found(RIBKIT_OPCODE_FIB_FCU_QUERY, protocol::encode(protocol::unicast_query{66, type, most, from}));
    }
    auto multicast_found(uint32_t type, const model::route_key &from) {
        return found(RIBKIT_OPCODE_FIB_FCM_QUERY, protocol::encode(protocol::multicast_query{66, type, 100, from}));
    }
    auto labels_found(uint32_t type, const model::label_key &from) {
        return found(RIBKIT_OPCODE_FIB_FCL_QUERY, protocol::encode(protocol::label_query{66, type, 100, from}));
    }

    using entries = std::pair<uint32_t, uint32_t>; ///< how many, of which VSAN
    const entries refused{RIB_NOT_SUPPORTED, 0};
    module of{{.unicast = 1000, .multicast = 1000, .label = 1000}, {.number = 1, .address = 1}};
    uint32_t sequence = 0;
};

TEST_F(fib_queries, are_of_a_key_of_a_vsan_or_of_all_from_a_key_on) {
    const model::destination second{0x020000, RIB_MASK_DOMAIN};
    const model::destination third{0x030000, RIB_MASK_DOMAIN};
    EXPECT_EQ(unicast_found(0x1, {0, {0, 0}}), entries(2, vsan)) << "one VSAN an answer";
    EXPECT_EQ(unicast_found(0x1, {0, {0, 0}}, 1), entries(1, vsan));
    EXPECT_EQ(unicast_found(0x1, {vsan, third}), entries(2, vsan + 1));
    EXPECT_EQ(unicast_found(0x100, {vsan, second}), entries(1, vsan));
    EXPECT_EQ(unicast_found(0x100, {vsan, third}).first, 0U);
    EXPECT_EQ(unicast_found(0x800, {vsan, second}), entries(1, vsan));
    EXPECT_EQ(unicast_found(0x800, {vsan, third}).first, 0U);
    EXPECT_EQ(multicast_found(0x1, {0, {0, 0}}), entries(2, vsan));
    EXPECT_EQ(multicast_found(0x2, {vsan, third}).first, 0U);
    EXPECT_EQ(multicast_found(0x4, {vsan, second}), entries(1, vsan));
    EXPECT_EQ(multicast_found(0x4, {vsan, third}).first, 0U);
    EXPECT_EQ(labels_found(0x1f, {vsan, 0, 0, {0, 0}}), entries(2, vsan));
    EXPECT_EQ(labels_found(0x2f, {vsan, RIB_ROUTE_FC_LABEL, 0, third}).first, 0U);
    EXPECT_EQ(labels_found(0x48, {vsan, RIB_ROUTE_FC_LABEL, 0, second}), entries(1, vsan));
    EXPECT_EQ(labels_found(0x48, {vsan, RIB_ROUTE_FC_LABEL, 0, third}).first, 0U);
}

TEST_F(fib_queries, that_mean_nothing_to_a_module_are_refused) {
    for (const uint32_t type : {0x2U, 0x3U, 0x4U, 0x8U, 0x40U, 0x200U, 0x400U, 0x1000U}) {
        EXPECT_EQ(unicast_found(type, {vsan, {0, 0}}), refused) << type;
    }
    for (const uint32_t type : {0x18U, 0x28U, 0x10fU, 0x3fU, 0x0U}) {
        EXPECT_EQ(labels_found(type, {vsan, RIB_ROUTE_FC_LABEL, 0, {0, 0}}), refused) << type;
    }
}

TEST_F(fib_queries, go_on_behind_what_an_answer_has_room_for) {
    constexpr uint32_t count = 600;
    constexpr uint32_t in = 20;
    for (uint32_t number = 1; number <= count; number++) {
        put<unicast>({in, {number << 8, 0xffff00}}, {.ways = one_way});
    }
    const auto first = unicast_found(0x100, {in, {0, 0}}, count);
    EXPECT_GT(first.first, 0U);
    EXPECT_LT(first.first, count);
    EXPECT_GT(unicast_found(0x100, {in, {(first.first + 1) << 8, 0xffff00}}, count).first, 0U);
}

TEST_F(a_module, that_cannot_receive_says_so_and_goes_on) {
    rib->hear_until(fib_state::ready);
    const auto is_told = [] {
        return testing::printed_by(yelk_hist_print).find("module 1 cannot receive: ") != std::string::npos;
    };
    yelk_hist_clear();
    {
        const testing::fault_script failing("fail recv every 1 EIO\n");
        const bus::service_handle asking(url); // wakes it
        const qip_addr there = protocol::module_address(1);
        EXPECT_EQ(
            qip_send(asking.number(), &there, RIBKIT_OPCODE_FIB_NODE_QUERY, nullptr, 0, nullptr, nullptr, nullptr), 0);
        while (!is_told()) {
            std::this_thread::yield();
        }
    }
    yelk_hist_clear();
    EXPECT_EQ(rib->update(FIB_OPER_UPDATE, {1}).result, RIB_OK);
}

TEST_F(a_module, tells_what_a_comparison_has_found) {
    rib->update(FIB_OPER_UPDATE, {1});
    rib->update(FIB_OPER_BEGIN_VERIFY);
    EXPECT_EQ(rib->update(FIB_OPER_VERIFY, {2}).accepted, 0U);
    rib->update(FIB_OPER_END_VERIFY);
    const auto found = [&](uint32_t type) {
        return rib->ask(RIBKIT_OPCODE_FIB_VERF_QUERY, protocol::encode(protocol::verify_query{66, 1, type, 100}));
    };
    EXPECT_EQ(
        protocol::faults_of(view<wire::fcu_rsp_path>(found(0x400).data())),
        (std::vector<model::fib_fault<model::route_key>>{{FIB_VERF_NOT_IN_RIB, {vsan, {0x010000, RIB_MASK_DOMAIN}}},
                                                         {FIB_VERF_NOT_IN_FIB, {vsan, {0x020000, RIB_MASK_DOMAIN}}}}));
    EXPECT_TRUE(protocol::faults_of(view<wire::fcl_rsp_path>(found(0x100).data())).empty());
}

TEST_F(a_module, knows_its_vsans_rewrites_and_ways) {
    const std::pair<uint32_t, model::vsan_attributes> vsans[] = {
        {vsan, {model::vsan_state::suspended, model::flow_balance::exchange, true, 500}}};
    EXPECT_EQ(result_in(rib->ask(RIBKIT_OPCODE_FIB_VSAN_UPDATE, protocol::vsan_update(1, vsans))), RIB_OK);
    const bytes known =
        rib->ask(RIBKIT_OPCODE_FIB_VSAN_QUERY, protocol::encode<wire::vsan_query>(protocol::list_query{66, 1, 10, 0}));
    ASSERT_EQ(fib_check_vsan_update(known.data(), static_cast<uint32_t>(known.size()), nullptr), RIB_OK);
    EXPECT_EQ(protocol::vsans_of(view<wire::vsan_update>(known.data())),
              (std::vector<std::pair<uint32_t, model::vsan_attributes>>{vsans[0]}));
    const protocol::rewrite_path path{{vsan, 0, {0x0a0000, 0xff0000}, {0, 0}}, {8, 0x0c0101, 0}};
    const bytes rewrites = rib->ask(RIBKIT_OPCODE_FIB_REWRITE_UPDATE,
                                    protocol::rewrite_update({FIB_OPER_UPDATE, vsan, 2}, std::span(&path, 1)));
    EXPECT_EQ(protocol::answer_of(view<wire::vsan_rewrite_rsp>(rewrites.data())).accepted, 1U);
    bytes room(1000);
    protocol::unicast_fib_update update(room, {FIB_OPER_UPDATE, vsan, 3});
    add_path(update, {0x010000, RIB_MASK_DOMAIN}, model::fib_unicast{.ways = one_way});
    rib->ask(RIBKIT_OPCODE_FIB_FCU_UPDATE, std::span(room).first(update.size()));
    const bytes way =
        rib->ask(RIBKIT_OPCODE_FIB_LB_QUERY, protocol::encode(protocol::flow_query{66, {vsan, 1, 0x010203, 4}}));
    ASSERT_EQ(way.size(), wire::fcu_lb_rsp.size);
    EXPECT_EQ((view<wire::fcu_lb_rsp>(way.data()).get<protocol::use<wire::fcu_lb_rsp, "intf">>()), one_way[1]);
}

/// A RIB of another version, or of before its formats could be asked for.
class asked_rib {
  public:
    explicit asked_rib(const std::string &url) : handle_(url) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
    }
    void say_that_it_started() { rib_wrap_qip_note(handle_.number(), RIBKIT_OPCODE_STARTED, nullptr, 0); }
    /// Answers the next message so. @return its opcode
    uint32_t answer(std::span<const uint8_t> said) {
        const qip_recv_opts opts{{QIP_RECV_INCOMING, 0, generous}};
        qip_ref ref{};
        EXPECT_EQ(qip_recv(handle_.number(), &ref, &opts), 0);
        const uint32_t opcode = qip_opcode_get(&ref);
        rib_wrap_qip_rsp(handle_.number(), &ref, said.data(), said.size());
        qip_drop(handle_.number(), &ref);
        return opcode;
    }

  private:
    bus::service_handle handle_;
};

/// A module that compares, and what it was told.
class comparing_module {
  public:
    explicit comparing_module(const std::string &url)
        : service_(url, {.differs = [this](const auto &messages) { told_.set_value(messages); }}) {}
    /// The messages that differ, once it has found that out.
    std::vector<std::string_view> told() {
        auto all = told_.get_future();
        EXPECT_EQ(all.wait_for(std::chrono::seconds(generous)), std::future_status::ready);
        return all.get();
    }

  private:
    std::promise<std::vector<std::string_view>> told_;
    fib_service service_;
};

bytes other_formats() {
    bytes theirs = protocol::own_wire_digests();
    const std::string from = "fib_fcu_path";
    *std::search(theirs.begin(), theirs.end(), from.begin(), from.end()) = 'x';
    return theirs;
}

bytes plain_answer(uint32_t result) {
    const auto said = protocol::encode(protocol::fcurt_response{result, 0, 0, 0, 0});
    return {said.begin(), said.end()};
}

TEST(fib_formats, of_a_rib_that_comes_later_are_compared_before_it_is_told) {
    const std::string url = "local:fib_formats_later";
    comparing_module module(url);
    asked_rib rib(url);
    EXPECT_EQ(rib.answer(other_formats()), RIBKIT_OPCODE_WIRE_DIGESTS);
    EXPECT_EQ(module.told(), std::vector<std::string_view>{"fib_fcu_path"});
}

TEST(fib_formats, that_are_ours_let_the_module_tell_of_itself) {
    const std::string url = "local:fib_formats_ours";
    asked_rib rib(url);
    comparing_module module(url);
    EXPECT_EQ(rib.answer(protocol::own_wire_digests()), RIBKIT_OPCODE_WIRE_DIGESTS);
    EXPECT_EQ(rib.answer(plain_answer(RIB_OK)), RIBKIT_OPCODE_FIB_NODE);
}

TEST(fib_formats, of_a_rib_that_does_not_know_the_question_are_taken_for_ours) {
    const std::string url = "local:fib_formats_unknown";
    asked_rib rib(url);
    comparing_module module(url);
    EXPECT_EQ(rib.answer(plain_answer(RIB_NOT_SUPPORTED)), RIBKIT_OPCODE_WIRE_DIGESTS);
    EXPECT_EQ(rib.answer(plain_answer(RIB_OK)), RIBKIT_OPCODE_FIB_NODE);
}

TEST(fib_formats, are_asked_for_again_where_the_answer_is_damaged) {
    const std::string url = "local:fib_formats_damaged";
    asked_rib rib(url);
    comparing_module module(url);
    EXPECT_EQ(rib.answer(bytes(7)), RIBKIT_OPCODE_WIRE_DIGESTS);
    EXPECT_EQ(rib.answer(protocol::own_wire_digests()), RIBKIT_OPCODE_WIRE_DIGESTS);
    EXPECT_EQ(rib.answer(plain_answer(RIB_OK)), RIBKIT_OPCODE_FIB_NODE);
}

TEST(fib_formats, of_a_rib_that_starts_anew_are_compared_again) {
    const std::string url = "local:fib_formats_anew";
    comparing_module module(url);
    {
        asked_rib rib(url);
        EXPECT_EQ(rib.answer(protocol::own_wire_digests()), RIBKIT_OPCODE_WIRE_DIGESTS);
        EXPECT_EQ(rib.answer(plain_answer(RIB_OK)), RIBKIT_OPCODE_FIB_NODE);
        EXPECT_EQ(rib.answer(plain_answer(RIB_OK)), RIBKIT_OPCODE_FIB_NODE); // of its state, now that there is a RIB
    }
    asked_rib rib(url);
    rib.say_that_it_started();
    EXPECT_EQ(rib.answer(other_formats()), RIBKIT_OPCODE_WIRE_DIGESTS);
    EXPECT_EQ(module.told(), std::vector<std::string_view>{"fib_fcu_path"});
}

TEST(modules, listen_each_at_an_address_of_its_own) {
    const std::string url = fresh_url();
    const fib_service first(url, {.number = 1});
    const fib_service second(url, {.number = 2});
    EXPECT_THROW(fib_service(url, {.number = 2}), std::system_error);
}

TEST(modules, wait_for_a_rib_that_comes_later) {
    const std::string url = fresh_url();
    const fib_service service(url, {.instance = 9});
    played_rib rib(url);
    EXPECT_EQ(rib.hear().instance, 9U);
    rib.hear_until(fib_state::ready);
}

TEST(modules, that_are_not_answered_tell_the_rib_again) {
    const testing::fault_script script("clock virtual\n");
    const std::string url = fresh_url();
    played_rib rib(url);
    const fib_service service(url, {});
    rib.hear_until(fib_state::ready); // behind records that came while nobody listened
    const uint64_t known = qip_now();
    const uint64_t again = rib.ignore();
    EXPECT_GE(again - known, 9'900'000U) << "now and then, since the RIB may have forgotten";
    EXPECT_EQ(rib.hear().state, fib_state::isolated);
    EXPECT_GE(qip_now() - again, 6'000'000U) << "5 s for the answer, and a pause";
    EXPECT_LT(qip_now() - again, 7'000'000U);
    EXPECT_EQ(rib.hear().state, fib_state::ready);
}

// As over a server: the RIB is another one, which has not said that it starts.
TEST(modules, whose_connection_was_cut_tell_the_rib_again) {
    const testing::temporary_directory home;
    const std::string url = "unix:" + home.file("bus");
    std::optional<played_rib> rib(url);
    fib_service service(url, {.instance = 9});
    rib->hear_until(fib_state::ready);
    rib.reset();
    rib.emplace(url, false);
    service.set_upgrading(true); // is told at once, over a new connection
    EXPECT_EQ(rib->hear().state, fib_state::upgrading);
    yelk_hist_clear();
    EXPECT_EQ(result_in(rib->ask(RIBKIT_OPCODE_FCURT_UPDATE, {})), RIB_NOT_SUPPORTED); // wakes it
    EXPECT_EQ(rib->hear().instance, 9U) << "without waiting for the time when it is due";
    const std::string history = testing::printed_by(yelk_hist_print);
    EXPECT_NE(history.find("module 1: the RIB is gone, or has begun anew"), std::string::npos);
    EXPECT_EQ(history.find("from sender "), std::string::npos) << "here senders have names";
    yelk_hist_clear();
}

TEST(modules, that_are_slow_stop_at_once) {
    const std::string url = fresh_url();
    std::optional<fib_service> service(std::in_place, url, fib_options{.slow = std::chrono::hours(1)});
    const bus::service_handle asking(url);
    const qip_addr there = protocol::module_address(1);
    ASSERT_EQ(qip_send(asking.number(), &there, RIBKIT_OPCODE_FIB_NODE_QUERY, nullptr, 0, nullptr, nullptr, nullptr),
              0);
    while (service->answered() == 0) {
        std::this_thread::yield();
    }
    service.reset();
}

} // namespace
} // namespace ribkit::fib
