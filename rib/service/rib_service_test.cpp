// Client and RIB over the bus.
#include "rib/service/rib_service.h"

#include "base/input_error.h"
#include "clients/route_client.h"
#include "lab/files/fabric_file.h"
#include "lab/fspf.h"
#include "lab/generator/fabric_generator.h"
#include "protocol/fib/fib_messages.h"
#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "rib/service/answers.h"
#include "rib/service/rib_claim.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"
#include "testing/pipe.h"
#include "testing/temporary_directory.h"
#include "testing/wanted_routes.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace ribkit::rib {
namespace {

constexpr const char *bus = "local:rib_service_test";

lab::fabric generated(uint32_t switches, lab::fabric_shape shape) {
    return lab::parse_fabric(lab::generate_fabric({switches, 2, shape, 1, 4}), "generated");
}

void expect_same_routes(const state &tables, const lab::fabric &f) {
    const model::held_routes held = active_routes(tables);
    size_t expected = 0;
    for (const lab::fabric_vsan &vsan : f.vsans()) {
        for (const auto &[to, what] : lab::fspf_routes(f, vsan.id)) {
            const auto found = held.find({vsan.id, to});
            ASSERT_NE(found, held.end());
            EXPECT_EQ(found->second.what, what);
            expected++;
        }
    }
    EXPECT_EQ(held.size(), expected);
}

TEST(rib_service, the_rib_follows_the_fabric_through_all_its_events) {
    for (const lab::fabric_shape shape :
         {lab::fabric_shape::core_edge, lab::fabric_shape::ring, lab::fabric_shape::mesh}) {
        lab::fabric f = generated(20, shape);
        for (size_t events = 0; events <= f.events().size(); events++) {
            lab::fabric now = f;
            rib_service rib(bus);
            clients::unicast_client client(bus, RIB_CLIENT_FSPF, {.message_limit = protocol::smallest_message_limit});
            EXPECT_EQ(client.converge(testing::wanted_by(now)).added, 2U * 19U);
            for (size_t i = 0; i < events; i++) {
                now.apply(now.events()[i]);
                EXPECT_EQ(client.converge(testing::wanted_by(now)).refused, 0U);
            }
            rib.stop();
            expect_same_routes(rib.tables(), now);
        }
    }
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST(rib_service, only_what_changed_is_sent) {
    lab::fabric f = generated(20, lab::fabric_shape::ring);
    rib_service rib(bus);
    clients::unicast_client client(bus, RIB_CLIENT_FSPF, {});
    const clients::client_traffic first = client.converge(testing::wanted_by(f));
    EXPECT_EQ(first.messages, 2U);
    EXPECT_EQ(first.bytes_received, 40U);
    const clients::client_traffic again = client.converge(testing::wanted_by(f));
    EXPECT_EQ(again.sent(), 0U);
    EXPECT_EQ(again.messages, 0U);
    f.apply(f.events()[0]);
    const clients::client_traffic after = client.converge(testing::wanted_by(f));
    EXPECT_EQ(after.added + after.deleted, 0U);
    EXPECT_GT(after.changed, 0U);
    EXPECT_LT(after.changed, first.added);
}

TEST(rib_service, a_short_message_is_refused_and_reported_and_the_rib_goes_on) {
    const lab::fabric f = generated(5, lab::fabric_shape::ring);
    rib_service rib(bus);
    clients::unicast_client client(bus, RIB_CLIENT_FSPF, {});
    auto message = testing::literal_update(
        {RIB_CLIENT_FSPF, 2, RIB_OPER_UPDATE_RSP, model::changes_between({}, lab::fspf_routes(f, 2))});
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(client.exchange(std::span(message).first(message.size() - 1)),
              (protocol::fcurt_response{RIB_BAD_PARAMETERS, RIB_OPER_UPDATE_RSP, 2, 0, 0}));
    EXPECT_TRUE(::testing::internal::GetCapturedStderr().ends_with(
        ": bad parameters: rib_fcurt_update: n_hop at offset 1128 is 1, at most 0 allowed\n"));
    message.push_back(0);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(client.exchange(message).result, RIB_EXCESS_DATA);
    EXPECT_EQ(client.exchange({}).result, RIB_BAD_PARAMETERS);
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(client.converge(testing::wanted_by(f)).refused, 0U);
    rib.stop();
    expect_same_routes(rib.tables(), f);
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST(rib_service, what_does_not_fit_is_reported_and_the_rib_keeps_nothing_that_the_client_forgets) {
    lab::fabric f = generated(20, lab::fabric_shape::ring);
    rib_service rib(bus, {.spaces = {2, 16, 4096}});
    clients::unicast_client client(bus, RIB_CLIENT_FSPF, {});
    std::string reported;
    testing::printed_by([&] { // the allocator of segments says that it cannot grow
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(client.converge(testing::wanted_by(f)).refused, 2U * (19U - 8U));
        EXPECT_EQ(client.converge(testing::wanted_by(f)).refused, 2U * (19U - 8U));
        reported = ::testing::internal::GetCapturedStderr();
    });
    EXPECT_NE(reported.find("ribkit: the RIB's answer for vsan 1 is \"hw tcam/ssram full\": 16 routes accepted\n"),
              std::string::npos);
    EXPECT_NE(reported.find(": hw tcam/ssram full: vsan 1, 16 routes accepted\nribkit: the RIB's answer"),
              std::string::npos);
    for (size_t link = 0; link < f.links().size(); link++) {
        f.apply({{}, link, false, {}});
    }
    const clients::client_traffic last = client.converge(testing::wanted_by(f));
    EXPECT_EQ(last.deleted, 16U);
    EXPECT_EQ(last.refused, 0U);
    rib.stop();
    EXPECT_TRUE(active_routes(rib.tables()).empty());
}

TEST(rib_service, a_message_of_another_kind_is_answered_too) {
    rib_service rib(bus);
    const bus::service_handle handle(bus);
    uint8_t payload = 0;
    rib_wrap_msg request{};
    rib_wrap_msg answer{};
    request.opcode = 0x1ff;
    request.payload = &payload;
    request.payload_size = 1;
    ASSERT_EQ(rib_wrap_qip_req_rsp(handle.number(), &request, &answer), RIB_OK);
    ASSERT_EQ(answer.payload_size, wire::route_rsp.size);
    EXPECT_EQ(protocol::decode_fcurt_response(
                  std::span<const uint8_t, wire::route_rsp.size>(answer.payload, wire::route_rsp.size)),
              (protocol::fcurt_response{RIB_NOT_SUPPORTED, 0, 0, 0, 0}));
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_TEST, handle.number(), &answer.ref), 0);
}

/// What a handle is answered, as the five words.
protocol::fcurt_response answered(const bus::service_handle &handle, uint32_t opcode, std::span<uint8_t> payload) {
    rib_wrap_msg request{};
    rib_wrap_msg answer{};
    request.opcode = opcode;
    request.payload = payload.data();
    request.payload_size = static_cast<uint32_t>(payload.size());
    if (rib_wrap_qip_req_rsp(handle.number(), &request, &answer) != RIB_OK) {
        return {};
    }
    const std::vector<uint8_t> bytes(answer.payload, answer.payload + answer.payload_size);
    rib_wrap_qip_drop(RIB_CLIENT_TEST, handle.number(), &answer.ref);
    return bytes.size() == wire::route_rsp.size
               ? protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(bytes))
               : protocol::fcurt_response{};
}

TEST(rib_service, each_kind_of_refusal_from_each_sender_is_said_once_and_counted) {
    const testing::filled_pipe said(false);
    rib_service rib(bus, {.complaints_to = said.way_in()});
    const bus::service_handle first(bus);
    const bus::service_handle second(bus);
    uint8_t byte = 0;
    for (int i = 0; i < 5; i++) {
        EXPECT_EQ(answered(first, RIBKIT_OPCODE_FCURT_UPDATE, {&byte, 1}).result, RIB_BAD_PARAMETERS);
        EXPECT_EQ(answered(first, 0x1ff, {&byte, 1}).result, RIB_NOT_SUPPORTED);
        EXPECT_EQ(answered(second, 0x1ff, {&byte, 1}).result, RIB_NOT_SUPPORTED);
        EXPECT_EQ(answered(second, RIBKIT_OPCODE_PROBE, {}).result, RIB_NOT_SUPPORTED); // of which nothing is said
    }
    rib.stop();
    const std::string text = said.read_all();
    size_t whole = 0;
    for (size_t at = text.find("more\n"); at != std::string::npos; at = text.find("more\n", at + 1)) {
        whole++;
    }
    EXPECT_GE(whole, 3U) << text;
    EXPECT_EQ(text.find("opcode 0x0"), std::string::npos) << text;
    for (const char *end : {" bad parameters: rib_fcurt_update: ", " not supported: no such opcode\n"}) {
        EXPECT_NE(text.find(end), std::string::npos) << text;
    }
}

TEST(rib_service, nobody_has_to_read_what_it_refuses) {
    const testing::filled_pipe said;
    rib_service rib(bus, {.complaints_to = said.way_in()});
    const bus::service_handle client(bus);
    uint8_t byte = 0;
    for (uint32_t opcode = 0x200; opcode < 0x400; opcode++) {
        EXPECT_EQ(
            answered(client, opcode == RIB_CMI_OPCODE || opcode == RIBKIT_OPCODE_FIB_NODE ? 1 : opcode, {&byte, 1})
                .result,
            RIB_NOT_SUPPORTED);
    }
    rib.stop();
}

// The pauses grow, and the end does not wait for them.
TEST(rib_service, a_bus_from_which_nothing_can_be_received_is_said_once_and_left) {
    const testing::fault_script script("fail recv every 1 EIO\n");
    const testing::filled_pipe said(false);
    rib_service rib(bus, {.complaints_to = said.way_in()});
    EXPECT_EQ(said.read_some(), "ribkit: the RIB cannot receive: Input/output error\n");
    rib.stop();
}

TEST(rib_service, a_failure_that_looks_like_the_end_is_not_the_end) {
    const testing::fault_script script("clock virtual\nfail recv 1 ECANCELED\nfail recv 2 EBADF\n");
    rib_service rib(bus);
    qip_pause(1); // the RIB has its turn
    clients::unicast_client client(bus, RIB_CLIENT_FSPF, {});
    EXPECT_EQ(client.converge(testing::wanted_by(generated(5, lab::fabric_shape::ring))).refused, 0U);
}

TEST(rib_service, a_second_rib_on_the_bus_and_an_unknown_bus_are_errors) {
    rib_service rib(bus);
    EXPECT_THROW(rib_service{bus}, std::system_error);
    EXPECT_THROW(rib_service{"pigeon:"}, base::input_error);
}

/// The RIB's answer.
bytes asked_of_rib(const bus::service_handle &handle, uint32_t opcode, std::span<uint8_t> payload) {
    rib_wrap_msg request{};
    rib_wrap_msg answer{};
    request.opcode = opcode;
    request.payload = payload.data();
    request.payload_size = static_cast<uint32_t>(payload.size());
    EXPECT_EQ(rib_wrap_qip_req_rsp(handle.number(), &request, &answer), RIB_OK);
    const bytes said(answer.payload, answer.payload + answer.payload_size);
    rib_wrap_qip_drop(RIB_CLIENT_TEST, handle.number(), &answer.ref);
    return said;
}

uint32_t result_in(const bytes &said) {
    EXPECT_EQ(said.size(), wire::route_rsp.size);
    return protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(said)).result;
}

// Only who listens at its address makes it give way.
TEST(rib_service, answers_a_claim_with_its_own_however_often_and_refuses_damage) {
    rib_service rib(bus);
    const bus::service_handle handle(bus);
    constexpr int more_than_it_asks_back = 40;
    for (int i = 0; i < more_than_it_asks_back; i++) {
        auto earlier = encode(rib_claim{true, 1, static_cast<uint64_t>(i)});
        const auto mine = decode_claim(asked_of_rib(handle, RIBKIT_OPCODE_CLAIM, earlier));
        ASSERT_TRUE(mine);
        EXPECT_FALSE(mine->settled);
        EXPECT_GT(mine->started, 1U);
    }
    bytes damaged(RIBKIT_CLAIM_SIZE - 1);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(result_in(asked_of_rib(handle, RIBKIT_OPCODE_CLAIM, damaged)), RIB_BAD_PARAMETERS);
    EXPECT_TRUE(::testing::internal::GetCapturedStderr().ends_with(": bad parameters: a claim of another size\n"));
    EXPECT_FALSE(rib.has_given_way());
}

TEST(rib_service, believes_nobody_who_may_not_speak_for_a_module) {
    const testing::temporary_directory home;
    const std::string url = "unix:" + home.file("bus");
    rib_policy policy;
    const passwd *user = getpwuid(geteuid());
    policy.who[user == nullptr ? "" : user->pw_name] = {RIB_CLIENT_FSPF};
    rib_service rib(url, {.policy = policy});
    const bus::service_handle handle(url);
    bytes told = protocol::module_message({.number = 1, .state = model::fib_state::active, .instance = 1});
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(result_in(asked_of_rib(handle, RIBKIT_OPCODE_FIB_NODE, told)), RIB_BAD_PARAMETERS);
    EXPECT_TRUE(::testing::internal::GetCapturedStderr().ends_with(": it may not speak for a module\n"));
}

TEST(rib_service, that_cannot_answer_for_want_of_memory_says_so) {
    const testing::filled_pipe said(false);
    rib_service rib(bus, {.complaints_to = said.way_in()});
    const bus::service_handle handle(bus);
    EXPECT_EQ(qip_faults_load_for(handle.number(), nullptr, nullptr, 0), 0); // of its own: none
    const testing::fault_script script("fail send every 1 ENOMEM\n");
    EXPECT_EQ(
        qip_send(handle.number(), &ribkit_rib_address, RIBKIT_OPCODE_PROBE, nullptr, 0, nullptr, nullptr, nullptr), 0);
    std::string all;
    while (all.find("the RIB cannot answer: Cannot allocate memory\n") == std::string::npos) {
        all += said.read_some();
    }
}

} // namespace
} // namespace ribkit::rib
