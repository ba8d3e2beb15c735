// What a module that runs shows of itself: as text, as JSON that makes the same text again, and chosen by filters.
#include "cli/rib/module_kinds.h"

#include "bus/module_link.h"
#include "cli/messages/displays.h"
#include "protocol/fib/fib_records.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/background_command.h"
#include "testing/golden.h"

namespace ribkit::cli {
namespace {

constexpr uint32_t one_way[] = {0x40, 0x01010001};
constexpr uint32_t pushing[] = {0x00010000, 0x01010002, 0x65100};
constexpr const char *nothing = "nothing to show\n";

class running_module : public ::testing::Test {
  protected:
    running_module() : module("module left --number 2 --ports 2 --unicast 2 --bus " + url), link(url, 2, patience) {
        const std::pair<uint32_t, model::vsan_attributes> vsans[] = {
            {20, {model::vsan_state::suspended, model::flow_balance::exchange, true, 500}}};
        link.ask(RIBKIT_OPCODE_FIB_VSAN_UPDATE, protocol::vsan_update(1, vsans));
        send<protocol::unicast_fib_update>(RIBKIT_OPCODE_FIB_FCU_UPDATE, FIB_OPER_UPDATE, 1, [](auto &update) {
            add_path(update, {0x650000, 0xff0000}, model::fib_unicast{.metric = 500, .flag = 1, .ways = one_way});
        });
        send<protocol::unicast_fib_update>(RIBKIT_OPCODE_FIB_FCU_UPDATE, FIB_OPER_UPDATE, 20, [](auto &update) {
            add_path(update, {0x660000, 0xff0000}, model::fib_unicast{.metric = 750, .ways = pushing});
        });
        send<protocol::multicast_fib_update>(RIBKIT_OPCODE_FIB_FCM_UPDATE, FIB_OPER_UPDATE, 1, [](auto &update) {
            add_path(update, {0, 0}, std::span<const uint32_t>(one_way).subspan(1));
        });
        send<protocol::label_fib_update>(RIBKIT_OPCODE_FIB_FCL_UPDATE, FIB_OPER_UPDATE, 1, [](auto &update) {
            add_path(update, {1, RIB_ROUTE_LABEL, 0, {0, 0}, 1, {0x64100}}, model::fib_label{pushing});
        });
        for (const uint32_t oper : {FIB_OPER_BEGIN_VERIFY, FIB_OPER_END_VERIFY}) {
            const auto no_path = [](auto & /*update*/) {};
            send<protocol::unicast_fib_update>(RIBKIT_OPCODE_FIB_FCU_UPDATE, oper, 0, no_path);
            send<protocol::multicast_fib_update>(RIBKIT_OPCODE_FIB_FCM_UPDATE, oper, 0, no_path);
            send<protocol::label_fib_update>(RIBKIT_OPCODE_FIB_FCL_UPDATE, oper, 0, no_path);
        }
    }

    template <class Update, class Fill> void send(uint32_t opcode, uint32_t oper, uint32_t vsan, const Fill &fill) {
        std::vector<uint8_t> room(2000);
        Update update(room, {oper, vsan, ++sequence});
        fill(update);
        link.ask(opcode, std::span(room).first(update.size()));
    }
    [[nodiscard]] testing::outcome show(const std::string &name, const std::string &arguments = "") const {
        return testing::run_command("show " + name + " --module 2 --bus " + url + " " + arguments + " 2>&1");
    }

    static constexpr std::chrono::seconds patience{30};
    testing::temporary_directory home;
    std::string url = "unix:" + home.file("bus");
    testing::background module;
    bus::module_link link;
    uint32_t sequence = 1;
};

TEST_F(running_module, shows_every_display_that_it_has) {
    size_t shown = 0;
    for (const display &kind : displays()) {
        const std::string name(kind.short_name());
        const testing::outcome text = show(name);
        if (find_module_kind(name) == nullptr) {
            EXPECT_EQ(text.output.substr(0, 9), "--module:") << name;
            continue;
        }
        shown++;
        testing::expect_golden("cli/golden/running/module_" + name + ".txt", text.output);
        const std::string file = home.file(name + ".json");
        std::ofstream(file) << show(name, "--json").output;
        EXPECT_EQ(testing::run_command("encode " + file + " | " RIBKIT_COMMAND " show " + name + " --raw -").output,
                  text.output)
            << name;
    }
    EXPECT_EQ(shown, 9U);
}

TEST_F(running_module, filters_choose) {
    EXPECT_EQ(show("fcu", "--vsan 2").output, nothing);
    EXPECT_EQ(show("fcu", "--fcid 0x670000").output, nothing);
    EXPECT_NE(show("fcu", "--vsan 20 --fcid 0x660101 --via fc1/2").output, nothing);
    EXPECT_EQ(show("fcl", "--vsan 20").output, nothing);
    EXPECT_EQ(show("fcm", "--vsan 20").output, nothing);
    EXPECT_EQ(show("vsan", "--vsan 21").output, nothing);
    EXPECT_EQ(show("vsan", "--fcid 1").output, "--fcid: the display vsan cannot be chosen by it\n");
}

TEST_F(running_module, says_at_its_end_what_it_had) {
    const testing::outcome ended = module.stopped(SIGTERM);
    EXPECT_EQ(ended.exit_code, 0);
    EXPECT_EQ(ended.output, "module 2, left, answers at " + url +
                                "\nleft had 2 unicast, 1 multicast and 1 label entries; it answered 11 messages\n");
}

TEST(modules, that_are_not_there_are_not_waited_for_beyond_patience) {
    const testing::temporary_directory home;
    const std::string url = "unix:" + home.file("bus");
    const testing::outcome ended = testing::run_command("show node --module 3 --wait 0 --bus " + url + " 2>&1");
    EXPECT_EQ(ended.exit_code, 1);
    EXPECT_EQ(ended.output, "ribkit: no answer from module 3 at " + url + ": nobody listens there\n");
}

} // namespace
} // namespace ribkit::cli
