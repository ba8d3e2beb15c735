// Every message that clients and RIB exchange has travelled: requests, answers and notifications of one RIB are noted,
// with the records and entries that stand in them, and compared with the catalogue.
#include "bus/service_handle.h"
#include "codec/messages/forms.h"
#include "fib/service/fib_service.h"
#include "fuzz/notebook.h"
#include "fuzz/quiet.h"
#include "fuzz/sound_fib_requests.h"
#include "fuzz/sound_requests.h"
#include "protocol/fib/fib_checks.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/requests.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::fuzz {
namespace {

constexpr const char *url = "local:travel";

/// Of the RIB's protocol, and yet not exchanged.
constexpr std::string_view at_home[] = {
    "rib_node_info", // no module has told of itself
};

/// Of the protocol of RIB and modules, and yet exchanged with clients.
constexpr std::string_view guests[] = {"fib_vsan_update", "fib_vsan"};

bool is_exchanged(std::string_view name) {
    return name.starts_with("rib_") ? std::find(std::begin(at_home), std::end(at_home), name) == std::end(at_home)
                                    : std::find(std::begin(guests), std::end(guests), name) != std::end(guests);
}

/// Notes all that was told until now. @return its opcodes
std::set<uint32_t> note_news(uint32_t listening, notebook &notes) {
    std::set<uint32_t> heard;
    const qip_recv_opts at_once{{QIP_RECV_INCOMING, 1}};
    for (qip_ref ref{}; qip_recv(listening, &ref, &at_once) == 0; qip_drop(listening, &ref)) {
        const uint32_t opcode = qip_opcode_get(&ref);
        const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&ref));
        notes.note(protocol::find_request(opcode)->message, {bytes, bytes + qip_payload_size(&ref)});
        heard.insert(opcode);
    }
    return heard;
}

TEST(travel, every_message_between_clients_and_rib_has_travelled) {
    const quiet silence{stderr};
    const bus::service_handle listening(url);
    ASSERT_EQ(qip_listen(listening.number(), &ribkit_listeners_address, 1000), 0);
    rib::rib_service service(url);
    requester asking(url);
    notebook notes;
    for (const auto &[opcode, bytes] : sound_requests()) {
        const protocol::request_row &row = *protocol::find_request(opcode);
        const byte_vector answer = asking.ask(opcode, bytes);
        notes.note(row.message, bytes);
        if (const codec::message *kind = kind_of(answer, row.answer); kind != nullptr && !is_refusal(answer)) {
            notes.note(*kind, answer.data());
        }
    }
    service.stop();
    const std::set<uint32_t> heard = note_news(listening.number(), notes);
    for (const protocol::request_row &row : protocol::requests) {
        EXPECT_EQ(heard.contains(row.opcode), row.to != protocol::destination_of::rib) << row.name;
    }
    for (const codec::message &kind : codec::messages()) {
        EXPECT_EQ(notes.names().contains(kind.name), is_exchanged(kind.name)) << kind.name;
    }
}

/// What stood in one message, as the kinds of "a+b", and its bytes.
struct travelled {
    std::string run;
    byte_vector bytes;
};

/// Everything that a RIB and a module have to say to each other, and whoever asks the module.
std::vector<travelled> said_with_module() {
    const std::string there = "local:travel_of_modules";
    const bus::service_handle rib(there);
    EXPECT_EQ(qip_listen(rib.number(), &ribkit_rib_address, 64), 0);
    const fib::fib_service service(
        there, {.sizes = {.unicast = 1, .multicast = 1, .label = 1}, .ports = fib::usual_ports(1, 2)});
    std::vector<travelled> all;
    qip_ref record{};
    EXPECT_EQ(qip_recv(rib.number(), &record, nullptr), 0);
    const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&record));
    all.push_back(
        {protocol::find_fib_request(qip_opcode_get(&record))->message, {bytes, bytes + qip_payload_size(&record)}});
    qip_drop(rib.number(), &record);
    module_requester asking(there, 1);
    for (const auto &[opcode, request] : sound_fib_requests()) {
        const protocol::request_row &row = *protocol::find_fib_request(opcode);
        const byte_vector answer = asking.ask(opcode, request);
        EXPECT_NE(run_of(answer, row.answer), "") << row.name << ", " << answer.size() << " bytes";
        all.push_back({row.message, request});
        all.push_back({run_of(answer, row.answer), answer});
    }
    return all;
}

void expect_all_of_modules(const notebook &notes) {
    for (const codec::message &kind : codec::messages()) {
        const bool is_theirs = kind.name.starts_with("fib_") || kind.name.starts_with("rib_fib_");
        EXPECT_TRUE(!is_theirs || notes.names().contains(kind.name)) << kind.name;
    }
}

TEST(travel, every_message_between_rib_and_modules_has_travelled) {
    notebook notes;
    for (const auto &[run, bytes] : said_with_module()) {
        notes.note_run(run, bytes);
    }
    expect_all_of_modules(notes);
}

/// As whoever receives the message checks it.
bool is_sound(const std::string &run, std::span<const uint8_t> bytes) {
    static const std::map<std::string, protocol::whole_check *> of_several{
        {"fib_fcu_update+fib_fcu_path", protocol::check_unicast_fib_update},
        {"fib_fcm_update+fib_fcm_path", protocol::check_multicast_fib_update},
        {"fib_fcl_update+fib_fcl_path", protocol::check_label_fib_update},
        {"fib_vsan_rewrite_update+fib_vsan_rewrite_path", protocol::check_rewrite_update},
        {"fib_fcu_rsp_path+fib_fcu_rsp", protocol::check_unicast_fib_answer},
        {"fib_fcm_rsp_path+fib_fcm_rsp", protocol::check_multicast_fib_answer},
        {"fib_fcl_rsp_path+fib_fcl_rsp", protocol::check_label_fib_answer},
        {"fib_node+fib_sync+fib_port", protocol::check_module_message},
    };
    if (const auto found = of_several.find(run); found != of_several.end()) {
        return found->second(bytes, nullptr) == RIB_OK;
    }
    const codec::message *kind = codec::find_message(run);
    return kind != nullptr && kind->check(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr) == RIB_OK;
}

TEST(travel, every_message_between_rib_and_modules_is_refused_where_any_of_it_is_missing) {
    notebook notes;
    for (const auto &[run, bytes] : said_with_module()) {
        // A form is not of the catalogue; and of keys alone there are as many as there are: they stand in responses,
        // too.
        if (run == wire::vsan_query.name || run.ends_with("_rsp_path")) {
            continue;
        }
        ASSERT_TRUE(is_sound(run, bytes)) << run;
        for (size_t size = 0; size < bytes.size(); size++) {
            const bool is_answer_alone = run.find("_rsp_path+") != std::string::npos && size == wire::fib_rsp.size;
            if (!is_answer_alone) { // of which the RIB sees that it answers no update
                ASSERT_FALSE(is_sound(run, std::span(bytes).first(size))) << run << " at " << size;
            }
        }
        notes.note_run(run, bytes);
    }
    expect_all_of_modules(notes);
}

} // namespace
} // namespace ribkit::fuzz
