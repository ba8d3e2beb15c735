// Notifications that come damaged or not at all, and RIBs that come back: a monitor says so, reads, and goes on.
#include "bus/service_handle.h"
#include "clients/route_update.h"
#include "codec/messages/route.h"
#include "codec/view.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/running_rib.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <vector>

namespace ribkit::cli {
namespace {

using bytes = std::vector<uint8_t>;

/// The changes in what a monitor has said: lines of text, or of JSON without what is no message.
std::vector<std::string> changes_in(const std::string &output) {
    std::vector<std::string> changes;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const bool is_change = line.front() == '{' ? nlohmann::json::parse(line).contains("message")
                                                   : line.starts_with("add ") || line.starts_with("delete ");
        if (is_change) {
            changes.push_back(line);
        }
    }
    return changes;
}

size_t count_of(const std::string &what, const std::string &text) {
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        count++;
    }
    return count;
}

/// One that prints text and one that prints JSON.
class two_monitors : public testing::running_rib {
  protected:
    void SetUp() override { ASSERT_TRUE(both_say("the RIB holds 0 unicast", "{\"read\":{\"unicast\":0,")); }

    bool both_say(const std::string &as_text, const std::string &as_json, size_t times = 1) const {
        return testing::in_time(
            [&] { return count_of(as_text, text.so_far()) >= times && count_of(as_json, json.so_far()) >= times; });
    }
    bool both_have_shown(size_t changes) const {
        return testing::in_time([&] {
            return changes_in(whole_lines(text)).size() >= changes && changes_in(whole_lines(json)).size() >= changes;
        });
    }
    /// Of a line that is being written there is nothing yet.
    static std::string whole_lines(const testing::background &monitor) {
        const std::string said = monitor.so_far();
        return said.substr(0, said.rfind('\n') + 1);
    }

    testing::background text{command("monitor")};
    testing::background json{command("monitor", "--json")};
};

/// Cut, of a count that is too large, and with nothing at all: none passes its check.
template <const codec::layout &Message> std::vector<bytes> damaged(const bytes &sound) {
    const bytes cut(sound.begin(), sound.end() - 1);
    bytes grown = sound;
    codec::writable_view<Message>(grown.data()).template set<"n_route">(UINT32_MAX);
    return {cut, grown, {}};
}

struct table_notes {
    const char *table;
    uint32_t opcode;
    std::vector<bytes> bad;
};

std::vector<table_notes> damaged_notes() {
    const model::destination to{0x650000, RIB_MASK_DOMAIN};
    model::label_key label{.vsan = 1, .type = RIB_ROUTE_FC_LABEL};
    label.to = to;
    const auto route = [](const auto &key, const auto &what) {
        return clients::update_with(RIB_CLIENT_FSPF, RIB_ACTION_ADD, key, what);
    };
    return {{"unicast", RIBKIT_OPCODE_FCURT_NOTE,
             damaged<wire::fcurt_update>(route(model::route_key{1, to}, model::route_values(model::route{})))},
            {"multicast", RIBKIT_OPCODE_FCMRT_NOTE,
             damaged<wire::fcmrt_update>(route(model::multicast_key{1, to}, model::multicast_values{}))},
            {"label", RIBKIT_OPCODE_FCLRT_NOTE, damaged<wire::fclrt_update>(route(label, model::label_values{}))}};
}

bytes without_routes(uint32_t opcode) {
    return bytes(opcode == RIBKIT_OPCODE_FCURT_NOTE   ? wire::fcurt_update.size
                 : opcode == RIBKIT_OPCODE_FCMRT_NOTE ? wire::fcmrt_update.size
                                                      : wire::fclrt_update.size);
}

void notify(const bus::service_handle &from, uint32_t opcode, const bytes &payload) {
    ASSERT_EQ(qip_send(from.number(), &ribkit_listeners_address, opcode, payload.data(),
                       static_cast<uint32_t>(payload.size()), nullptr, nullptr, nullptr),
              0);
}

TEST_F(two_monitors, drop_what_is_damaged_with_a_line_and_go_on) {
    const bus::service_handle by_hand(url);
    const std::string read_text = "the RIB holds 0 unicast, 0 multicast and 0 label routes\n";
    const std::string read_json = "{\"read\":{\"unicast\":0,\"multicast\":0,\"label\":0}}\n";
    std::string text_said = read_text;
    std::string json_said = read_json;
    for (const auto &[table, opcode, bad] : damaged_notes()) {
        const std::string why = std::string("a notification of ") + table + " routes came damaged";
        for (const bytes &one : bad) {
            notify(by_hand, opcode, one);
            text_said += "something may have been missed: " + why + "; reading again\n" + read_text;
            json_said += "{\"missed\":\"" + why + "\"}\n" + read_json;
            testing::in_time([&] { return text.so_far() == text_said && json.so_far() == json_said; });
            ASSERT_EQ(text.so_far(), text_said) << one.size();
            ASSERT_EQ(json.so_far(), json_said) << one.size();
        }
    }
    add_routes();
    EXPECT_TRUE(both_have_shown(7));
}

TEST_F(two_monitors, read_again_when_a_notification_tells_nothing) {
    const bus::service_handle by_hand(url);
    size_t times = 0;
    for (const auto &[table, opcode, bad] : damaged_notes()) {
        notify(by_hand, opcode, without_routes(opcode));
        times++;
        ASSERT_TRUE(both_say("\nthe RIB holds ", "\n{\"read\":", times)) << table;
    }
    const std::string why = "the RIB had more to tell than it could keep";
    EXPECT_EQ(count_of("something may have been missed: " + why, text.so_far()), 3U) << text.so_far();
    EXPECT_EQ(count_of("{\"missed\":\"" + why, json.so_far()), 3U) << json.so_far();
    add_routes();
    EXPECT_TRUE(both_have_shown(7));
}

TEST_F(two_monitors, show_every_change_once_when_a_rib_that_was_killed_comes_back) {
    add_routes();
    ASSERT_TRUE(both_have_shown(7));
    EXPECT_EQ(rib.stopped(SIGKILL).exit_code, -1);
    const testing::background other(command("rib"));
    ASSERT_TRUE(both_have_shown(14)); // what is lost
    ASSERT_TRUE(both_say("\nsomething may have been missed: ", "\n{\"missed\":"));
    add_routes();
    ASSERT_TRUE(both_have_shown(21));
    for (const testing::background *monitor : {&text, &json}) {
        kill(monitor->number(), SIGTERM);
    }
    const auto changes = changes_in(text.ended().output);
    EXPECT_EQ(changes_in(json.ended().output).size(), 21U);
    ASSERT_EQ(changes.size(), 21U);
    EXPECT_TRUE(std::all_of(changes.begin() + 7, changes.begin() + 14,
                            [](const std::string &line) { return line.starts_with("delete "); }));
    EXPECT_TRUE(std::equal(changes.begin(), changes.begin() + 7, changes.begin() + 14)); // the same again
}

TEST_F(two_monitors, that_were_held_up_find_out_and_miss_nothing) {
    constexpr size_t routes = 400; // more than wait for a listener, and than the log of changes has
    text.suspend();
    json.suspend();
    std::string file;
    for (size_t i = 0; i < routes; i++) {
        file += "add --vsan 1 --mcast 0xff" + std::to_string(1000 + i) + " --via fc1/1\n";
    }
    const testing::input_file all(file);
    EXPECT_EQ(run("route load", all.path()).exit_code, 0);
    kill(text.number(), SIGCONT);
    kill(json.number(), SIGCONT);
    EXPECT_TRUE(both_have_shown(routes));
    EXPECT_TRUE(both_say("the RIB holds 0 unicast, 400 multicast", "{\"read\":{\"unicast\":0,\"multicast\":400,"));
    EXPECT_TRUE(both_say("\nsomething may have been missed: ", "\n{\"missed\":"));
    EXPECT_EQ(run("route del", "--vsan 1 --mcast 0xff1000").exit_code, 0);
    EXPECT_TRUE(both_have_shown(routes + 1));
    for (const testing::background *monitor : {&text, &json}) {
        const auto changes = changes_in(whole_lines(*monitor));
        EXPECT_EQ(changes.size(), routes + 1);
        EXPECT_EQ(std::set<std::string>(changes.begin(), changes.end()).size(), routes + 1);
    }
}

} // namespace
} // namespace ribkit::cli
