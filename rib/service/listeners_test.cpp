// Over the bus: what is no request is refused; registrations and notifications come and go.
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "protocol/system_messages.h"
#include "rib/service/rib_service.h"
#include "rib/state.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <unistd.h>

namespace ribkit::rib {
namespace {

constexpr const char *url = "local:listeners_test";

/// Complaints are read by nobody.
class nowhere {
  public:
    nowhere() : descriptor_(open("/dev/null", O_WRONLY | O_CLOEXEC)) {}
    nowhere(const nowhere &) = delete;
    nowhere &operator=(const nowhere &) = delete;
    ~nowhere() { close(descriptor_); }
    [[nodiscard]] int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// A client that asks, and hears notifications.
class asker {
  public:
    asker() : handle_(url) { qip_listen(handle_.number(), &ribkit_listeners_address, 100); }

    [[nodiscard]] bytes ask(uint32_t opcode, std::span<const uint8_t> payload, bool in_envelope = false) const {
        bytes copy(payload.begin(), payload.end());
        rib_wrap_msg request{};
        rib_wrap_msg answer{};
        request.opcode = opcode;
        request.payload = copy.data();
        request.payload_size = static_cast<uint32_t>(copy.size());
        const auto wrapper = in_envelope ? rib_wrap_cmi_req_rsp : rib_wrap_qip_req_rsp;
        EXPECT_EQ(wrapper(handle_.number(), &request, &answer), RIB_OK) << std::hex << opcode << ' ' << payload.size();
        const bytes said(answer.payload, answer.payload + answer.payload_size);
        qip_drop(handle_.number(), &answer.ref);
        return said;
    }

    /// The next notification that is there within a second.
    [[nodiscard]] std::optional<std::pair<uint32_t, bytes>> hear() const {
        const qip_recv_opts within{{QIP_RECV_INCOMING, 0, 1}};
        qip_ref ref{};
        if (qip_recv(handle_.number(), &ref, &within) != 0) {
            return {};
        }
        const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&ref));
        std::pair<uint32_t, bytes> note{qip_opcode_get(&ref), {payload, payload + qip_payload_size(&ref)}};
        qip_drop(handle_.number(), &ref);
        return note;
    }

    [[nodiscard]] uint32_t handle() const { return handle_.number(); }

  private:
    bus::service_handle handle_;
};

uint32_t result_in(const bytes &answer) {
    EXPECT_EQ(answer.size(), wire::route_rsp.size);
    return protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(answer)).result;
}

TEST(requests, of_no_kind_are_refused) {
    const nowhere silent;
    rib_service rib(url, {.complaints_to = silent.descriptor()});
    const asker client;
    for (const uint32_t opcode : {1U, 0x105U, 0x13eU, 0x201U, 0x211U, UINT32_MAX}) {
        EXPECT_EQ(result_in(client.ask(opcode, bytes(20))), RIB_NOT_SUPPORTED) << opcode;
    }
    const auto beyond = protocol::encode<wire::db_query>({RIBKIT_LAST_CLIENT + 1, 1, 1, 0});
    EXPECT_EQ(result_in(client.ask(RIBKIT_OPCODE_DB_QUERY, beyond)), RIB_BAD_PARAMETERS);
}

bytes update_of(uint32_t client, uint32_t fcid, uint32_t action = RIB_ACTION_ADD, uint32_t oper = RIB_OPER_UPDATE) {
    return testing::literal_update({client, 1, oper, {{action, {fcid, 0xffffff}, {1, 0, {{0x01010001, 2}}}}}});
}

/// The first route of a unicast notification, and its action.
std::pair<uint32_t, uint32_t> told_by(const std::optional<std::pair<uint32_t, bytes>> &note) {
    if (!note || note->first != RIBKIT_OPCODE_FCURT_NOTE) {
        return {};
    }
    const auto said = testing::literal_contents(note->second);
    return said.changes.empty() ? std::pair(0U, 0U) : std::pair(said.changes[0].to.fcid, said.changes[0].action);
}

TEST(notifications, come_to_every_listener_while_anybody_is_registered) {
    const testing::fault_script script("clock virtual\n");
    rib_service rib(url);
    const asker one;
    const asker two;
    EXPECT_EQ(result_in(one.ask(RIBKIT_OPCODE_FCURT_UPDATE, update_of(12, 5))), RIB_OK);
    EXPECT_FALSE(one.hear());
    EXPECT_EQ(result_in(one.ask(RIBKIT_OPCODE_REGISTER, protocol::encode(model::registration{99, 7, "test"}))), RIB_OK);
    EXPECT_EQ(result_in(one.ask(RIBKIT_OPCODE_FCURT_UPDATE, update_of(12, 6))), RIB_OK);
    EXPECT_EQ(result_in(one.ask(RIBKIT_OPCODE_FCURT_UPDATE, update_of(12, 7, 1, RIB_OPER_RESTORE))), RIB_OK);
    EXPECT_EQ(result_in(one.ask(RIBKIT_OPCODE_FCURT_UPDATE, update_of(12, 6, RIB_ACTION_DELETE))), RIB_OK);
    for (const asker *listener : {&one, &two}) {
        EXPECT_EQ(told_by(listener->hear()), (std::pair(6U, RIB_ACTION_ADD)));
        EXPECT_EQ(told_by(listener->hear()), (std::pair(6U, RIB_ACTION_DELETE)));
        EXPECT_FALSE(listener->hear());
    }
}

TEST(every_request, vsans_of_the_fabric_are_known_without_routes) {
    model::vsan_attributes in_order{model::vsan_state::active, model::flow_balance::exchange, true, 250};
    rib_service rib(url, {.vsans = {{7, {}}, {9, in_order}}});
    const asker client;
    const bytes info = client.ask(RIBKIT_OPCODE_VSAN_QUERY, protocol::encode<wire::vsan_query>({12, 1, 10, 0}));
    const auto vsans = protocol::vsans_of(codec::view<wire::vsan_update>(info.data()));
    ASSERT_EQ(vsans.size(), 2U);
    EXPECT_EQ(vsans[0], (std::pair(7U, model::vsan_attributes{})));
    EXPECT_EQ(vsans[1], (std::pair(9U, in_order)));
}

TEST(every_request, a_vsan_that_begins_suspended_may_be_resumed) {
    rib_service rib(url, {.vsans = {{7, {.state = model::vsan_state::suspended}}}});
    const asker client;
    const auto state = [&] {
        const bytes info = client.ask(RIBKIT_OPCODE_VSAN_QUERY, protocol::encode<wire::vsan_query>({12, 1, 10, 0}));
        return protocol::vsans_of(codec::view<wire::vsan_update>(info.data())).at(0).second.state;
    };
    EXPECT_EQ(state(), model::vsan_state::suspended);
    const bytes resume = testing::literal_update({RIB_CLIENT_VSAN_MANAGER, 7, RIB_OPER_RESUME, {}});
    EXPECT_EQ(result_in(client.ask(RIBKIT_OPCODE_FCURT_UPDATE, resume)), RIB_OK);
    EXPECT_EQ(state(), model::vsan_state::active);
}

TEST(registrations, end_thirty_seconds_after_the_last_repetition) {
    const testing::fault_script script("clock virtual\n");
    rib_service rib(url);
    const asker client;
    const auto listed = [&] {
        const bytes info = client.ask(RIBKIT_OPCODE_REG_QUERY, protocol::encode<wire::reg_query>({12, 1, 10}));
        return protocol::registrations_of(codec::view<wire::reg_info>(info.data()));
    };
    const auto said = protocol::encode(model::registration{99, 7, "test"});
    for (int repetition = 0; repetition < 3; repetition++) {
        EXPECT_EQ(result_in(client.ask(RIBKIT_OPCODE_REGISTER, said)), RIB_OK);
        for (int second = 0; second < 20; second++) {
            EXPECT_FALSE(client.hear());
        }
        EXPECT_EQ(listed(), (std::vector<model::registration>{{99, 7, "test"}}));
    }
    for (int second = 0; second < 15; second++) {
        EXPECT_FALSE(client.hear());
    }
    EXPECT_TRUE(listed().empty());
    rib.stop();
    EXPECT_EQ(rib.tables().clients().distance(99), default_distance(99));
}

} // namespace
} // namespace ribkit::rib
