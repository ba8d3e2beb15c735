// Client and RIB over the bus.
#include "tools/rib_service.h"

#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/capture.h"
#include "tools/fabric_file.h"
#include "tools/fabric_generator.h"
#include "tools/fspf.h"
#include "tools/fspf_client.h"
#include "tools/input_error.h"

#include <gtest/gtest.h>

namespace ribkit {
namespace {

constexpr const char *bus = "local:rib_service_test";

fabric generated(uint32_t switches, fabric_shape shape) {
    return parse_fabric(generate_fabric({switches, 2, shape, 1, 4}), "generated");
}

void expect_same_routes(const rib_tables &tables, const fabric &f) {
    const held_routes held = tables.routes();
    size_t expected = 0;
    for (const fabric_vsan &vsan : f.vsans()) {
        for (const auto &[to, what] : fspf_routes(f, vsan.id)) {
            const auto found = held.find({vsan.id, to});
            ASSERT_NE(found, held.end());
            EXPECT_EQ(found->second.what, what);
            expected++;
        }
    }
    EXPECT_EQ(held.size(), expected);
}

TEST(rib_service, the_rib_follows_the_fabric_through_all_its_events) {
    for (const fabric_shape shape : {fabric_shape::core_edge, fabric_shape::ring, fabric_shape::mesh}) {
        fabric f = generated(20, shape);
        for (size_t events = 0; events <= f.events().size(); events++) {
            fabric now = f;
            rib_service rib(bus);
            fspf_client client(bus, {.message_limit = smallest_message_limit});
            EXPECT_EQ(client.converge(now).added, 2U * 19U);
            for (size_t i = 0; i < events; i++) {
                now.apply(now.events()[i]);
                EXPECT_EQ(client.converge(now).refused, 0U);
            }
            rib.stop();
            expect_same_routes(rib.tables(), now);
        }
    }
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST(rib_service, only_what_changed_is_sent) {
    fabric f = generated(20, fabric_shape::ring);
    rib_service rib(bus);
    fspf_client client(bus, {});
    const client_traffic first = client.converge(f);
    EXPECT_EQ(first.messages, 2U);
    EXPECT_EQ(first.bytes_received, 40U);
    const client_traffic again = client.converge(f);
    EXPECT_EQ(again.sent(), 0U);
    EXPECT_EQ(again.messages, 0U);
    f.apply(f.events()[0]);
    const client_traffic after = client.converge(f);
    EXPECT_EQ(after.added + after.deleted, 0U);
    EXPECT_GT(after.changed, 0U);
    EXPECT_LT(after.changed, first.added);
}

TEST(rib_service, a_short_message_is_refused_and_reported_and_the_rib_goes_on) {
    const fabric f = generated(5, fabric_shape::ring);
    rib_service rib(bus);
    fspf_client client(bus, {});
    auto message =
        encode(fcurt_update{RIB_CLIENT_FSPF, 2, RIB_OPER_UPDATE_RSP, changes_between({}, fspf_routes(f, 2))}, SIZE_MAX)
            .at(0)
            .bytes;
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(client.exchange(std::span(message).first(message.size() - 1)),
              (fcurt_response{RIB_BAD_PARAMETERS, RIB_OPER_UPDATE_RSP, 2, 0, 0}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ribkit: the RIB refuses a message: rib_fcurt_update: n_hop at offset 1128 is 1, at most 0 allowed\n");
    message.push_back(0);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(client.exchange(message).result, RIB_EXCESS_DATA);
    EXPECT_EQ(client.exchange({}).result, RIB_BAD_PARAMETERS);
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(client.converge(f).refused, 0U);
    rib.stop();
    expect_same_routes(rib.tables(), f);
    EXPECT_EQ(qip_refs_held(), 0U);
}

TEST(rib_service, what_does_not_fit_is_reported_and_the_rib_keeps_nothing_that_the_client_forgets) {
    fabric f = generated(20, fabric_shape::ring);
    rib_service rib(bus, {.spaces = {2, 16, 4096}});
    fspf_client client(bus, {});
    std::string reported;
    testing::printed_by([&] { // the allocator of segments says that it cannot grow
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(client.converge(f).refused, 2U * (19U - 8U));
        EXPECT_EQ(client.converge(f).refused, 2U * (19U - 8U));
        reported = ::testing::internal::GetCapturedStderr();
    });
    EXPECT_EQ(reported.substr(0, reported.find('\n')),
              "ribkit: the RIB's answer for vsan 1 is \"failed\": 16 routes accepted");
    for (size_t link = 0; link < f.links().size(); link++) {
        f.apply({{}, link, false, {}});
    }
    const client_traffic last = client.converge(f);
    EXPECT_EQ(last.deleted, 16U);
    EXPECT_EQ(last.refused, 0U);
    rib.stop();
    EXPECT_TRUE(rib.tables().routes().empty());
}

TEST(rib_service, a_message_of_another_kind_is_answered_too) {
    rib_service rib(bus);
    const service_handle handle(bus);
    uint8_t payload = 0;
    rib_wrap_msg request{};
    rib_wrap_msg answer{};
    request.opcode = 0x1ff;
    request.payload = &payload;
    request.payload_size = 1;
    ASSERT_EQ(rib_wrap_qip_req_rsp(handle.number(), &request, &answer), RIB_OK);
    ASSERT_EQ(answer.payload_size, RIBKIT_FCURT_RSP_SIZE);
    EXPECT_EQ(
        decode_fcurt_response(std::span<const uint8_t, RIBKIT_FCURT_RSP_SIZE>(answer.payload, RIBKIT_FCURT_RSP_SIZE)),
        (fcurt_response{RIB_NOT_SUPPORTED, 0, 0, 0, 0}));
    EXPECT_EQ(rib_wrap_qip_drop(RIB_CLIENT_TEST, handle.number(), &answer.ref), 0);
}

TEST(rib_service, a_second_rib_on_the_bus_and_an_unknown_bus_are_errors) {
    rib_service rib(bus);
    EXPECT_THROW(rib_service{bus}, std::system_error);
    EXPECT_THROW(rib_service{"pigeon:"}, input_error);
}

} // namespace
} // namespace ribkit
