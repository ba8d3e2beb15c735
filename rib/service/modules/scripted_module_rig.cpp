// What a module says is put together by the writers that modules use.
#include "rib/service/modules/scripted_module_rig.h"

#include "protocol/fib/fib_checks.h"
#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/queries.h"
#include "rib_codes.h"
#include "rib_wrap.h"

#include <gtest/gtest.h>

namespace ribkit::rib {

namespace {

template <const codec::layout &Path> std::vector<model::route_key> keys_of(const bytes &update, uint32_t vsan) {
    std::vector<model::route_key> keys;
    size_t at = wire::fib_update.size;
    while (at < update.size()) {
        const codec::view<Path> path(update.data() + at);
        if constexpr (protocol::is_same(Path, wire::fcu_path)) {
            protocol::way_words ways;
            keys.push_back({vsan, protocol::path_of(path, ways).to});
        } else {
            std::vector<uint32_t> members;
            keys.push_back({vsan, protocol::path_of(path, members).to});
        }
        at += path.size();
    }
    return keys;
}

} // namespace

scripted_module::scripted_module(const std::string &url, uint32_t number, uint32_t instance, uint32_t entries)
    : handle_(url), number_(number), instance_(instance), entries_(entries) {
    const qip_addr address = protocol::module_address(number);
    EXPECT_EQ(qip_listen(handle_.number(), &address, 64), 0);
    announce();
}

scripted_module::~scripted_module() {
    handle_.close();
    if (taking_.joinable()) {
        qip_step_aside();
        taking_.join();
    }
}

void scripted_module::announce(model::fib_state state, uint32_t sequence) {
    bytes told = protocol::module_message(
        {.number = number_, .state = state, .instance = instance_, .sequence = sequence, .entries = entries_});
    rib_wrap_msg request{};
    rib_wrap_msg answer{};
    request.opcode = RIBKIT_OPCODE_FIB_NODE;
    request.payload = told.data();
    request.payload_size = static_cast<uint32_t>(told.size());
    ASSERT_EQ(rib_wrap_qip_req_rsp(handle_.number(), &request, &answer), RIB_OK);
    EXPECT_EQ(answer.payload_size, wire::route_rsp.size);
    rib_wrap_qip_drop(RIB_CLIENT_LINE_CARD_MANAGER, handle_.number(), &answer.ref);
}

std::optional<received_update> scripted_module::next(uint32_t milliseconds) {
    qip_recv_opts opts{{QIP_RECV_INCOMING}};
    opts.word[4] = milliseconds;
    received_update update;
    if (qip_recv(handle_.number(), &update.ref, &opts) != 0) {
        return {};
    }
    update.opcode = qip_opcode_get(&update.ref);
    const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&update.ref));
    const bytes message(payload, payload + qip_payload_size(&update.ref));
    if (update.opcode == RIBKIT_OPCODE_FIB_VERF_QUERY) {
        EXPECT_EQ(rib_check_verf_query(message.data(), static_cast<uint32_t>(message.size()), nullptr), RIB_OK);
        update.from = protocol::read(codec::view<wire::verf_query>(message.data())).from;
        return update;
    }
    if (update.opcode == RIBKIT_OPCODE_FIB_VSAN_UPDATE) {
        const codec::view<wire::vsan_update> told(message.data());
        update.head.sequence = told.get<protocol::use<wire::vsan_update, "sequence">>();
        return update;
    }
    update.head = protocol::head_of(codec::view<wire::fib_update>(message.data()));
    if (update.opcode == RIBKIT_OPCODE_FIB_FCU_UPDATE) {
        EXPECT_EQ(protocol::check_unicast_fib_update(message, nullptr), RIB_OK);
        update.keys = keys_of<wire::fcu_path>(message, update.head.vsan);
    } else if (update.opcode == RIBKIT_OPCODE_FIB_FCM_UPDATE) {
        EXPECT_EQ(protocol::check_multicast_fib_update(message, nullptr), RIB_OK);
        update.keys = keys_of<wire::fcm_path>(message, update.head.vsan);
    } else {
        EXPECT_EQ(protocol::check_label_fib_update(message, nullptr), RIB_OK);
    }
    return update;
}

void scripted_module::answer(received_update &update, uint32_t result, const std::vector<model::route_key> &missed) {
    std::vector<model::fib_fault<model::route_key>> faults;
    for (const model::route_key &key : missed) {
        faults.push_back({FIB_VERF_NOT_IN_HW, key});
    }
    const auto accepted = static_cast<uint32_t>(update.keys.size() - missed.size());
    const model::fib_answer said{result, update.head.oper, update.head.vsan, accepted, update.head.sequence};
    answer_with(update, update.opcode == RIBKIT_OPCODE_FIB_FCM_UPDATE ? protocol::fib_multicast_answer(said, faults)
                                                                      : protocol::fib_answer(said, faults));
}

void scripted_module::answer_with(received_update &update, const bytes &payload) {
    EXPECT_EQ(rib_wrap_qip_rsp(handle_.number(), &update.ref, payload.data(), static_cast<uint32_t>(payload.size())),
              RIB_OK);
    drop(update);
}

void scripted_module::tell_differences(received_update &question,
                                       const std::vector<model::fib_fault<model::route_key>> &found) {
    bytes told = protocol::fib_answer({}, found);
    told.resize(found.empty() ? wire::fcu_rsp_path.size : told.size() - wire::fib_rsp.size);
    answer_with(question, told);
}

void scripted_module::drop(received_update &update) { qip_drop(0, &update.ref); }

std::vector<received_update> scripted_module::take_all() {
    std::vector<received_update> all;
    size_t ends = 0;
    while (ends < 3) {
        auto update = next();
        if (!update) {
            ADD_FAILURE() << "no update";
            return all;
        }
        ends += update->head.oper == FIB_OPER_END_MERGE ? 1 : 0;
        answer(*update);
        all.push_back(*update);
    }
    return all;
}

void scripted_module::take_for_ever() {
    taking_ = std::thread([this] {
        while (auto update = next(60'000)) {
            answer(*update);
        }
    });
}

} // namespace ribkit::rib
