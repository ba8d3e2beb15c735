// What a module that runs shows of itself: as text, as JSON that makes the same text again, and chosen by filters.
#include "cli/rib/module_kinds.h"

#include "bus/module_link.h"
#include "cli/messages/displays.h"
#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/background_command.h"
#include "testing/golden.h"

#include <nlohmann/json.hpp>
#include <thread>

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

TEST_F(running_module, shows_what_it_has_of_a_vsan_or_interface_that_is_there) {
    EXPECT_NE(show("vsan", "--vsan 20").output, nothing);
    EXPECT_EQ(show("vsan", "--vsan 19").output, nothing) << "the next one is another";
    EXPECT_NE(show("fcm", "--vsan 1").output, nothing);
    EXPECT_NE(show("fcl", "--vsan 1").output, nothing);
    EXPECT_NE(show("port").output, nothing);
}

TEST(modules, say_in_json_what_they_had) {
    const testing::temporary_directory home;
    const std::string bus = " --bus unix:" + home.file("bus");
    testing::background module("module left --number 2 --json" + bus);
    EXPECT_EQ(testing::run_command("show node --module 2" + bus + " 2>/dev/null").exit_code, 0);
    const testing::outcome ended = module.stopped(SIGTERM);
    EXPECT_EQ(ended.exit_code, 0);
    const std::string document = ended.output.substr(std::min(ended.output.find('{'), ended.output.size()));
    EXPECT_EQ(nlohmann::json::parse(document, nullptr, false),
              nlohmann::json(
                  {{"name", "left"}, {"module", 2}, {"unicast", 0}, {"multicast", 0}, {"label", 0}, {"answered", 1}}));
}

TEST_F(running_module, says_at_its_end_what_it_had) {
    const testing::outcome ended = module.stopped(SIGTERM);
    EXPECT_EQ(ended.exit_code, 0);
    EXPECT_EQ(ended.output, "module 2, left, answers at " + url +
                                "\nleft had 2 unicast, 1 multicast and 1 label entries; it answered 11 messages\n");
}

/// Answers every question with the same bytes.
class stubborn_module {
  public:
    stubborn_module(const std::string &url, std::vector<uint8_t> answer) : answer_(std::move(answer)), handle_(url) {
        const qip_addr address = protocol::module_address(2);
        EXPECT_EQ(qip_listen(handle_.number(), &address, 64), 0);
        thread_ = std::thread([this] { serve(); });
    }
    stubborn_module(const stubborn_module &) = delete;
    stubborn_module &operator=(const stubborn_module &) = delete;
    ~stubborn_module() {
        handle_.close();
        thread_.join();
    }

  private:
    void serve() {
        for (qip_ref ref{}; qip_recv(handle_.number(), &ref, nullptr) == 0; qip_drop(handle_.number(), &ref)) {
            qip_send(handle_.number(), nullptr, 0, answer_.data(), static_cast<uint32_t>(answer_.size()), nullptr, &ref,
                     nullptr);
        }
    }

    const std::vector<uint8_t> answer_;
    bus::service_handle handle_;
    std::thread thread_;
};

TEST(modules, that_refuse_or_answer_damage_are_told_of) {
    const testing::temporary_directory home;
    const std::string url = "unix:" + home.file("bus");
    const auto shown = [&](const std::vector<uint8_t> &answer, const std::string &kind) {
        const stubborn_module module(url, answer);
        const testing::outcome ended = testing::run_command("show " + kind + " --module 2 --bus " + url + " 2>&1");
        EXPECT_EQ(ended.exit_code, 1) << kind;
        return ended.output;
    };
    const std::vector<uint8_t> refusal = protocol::fib_answer({RIB_NOT_SUPPORTED, 0, 0, 0, 0}, {});
    const std::vector<uint8_t> damage(refusal.size() - 1);
    for (const std::string kind : {"fcu", "fcm", "fcl", "verf_fcu", "vsan", "port", "node"}) {
        EXPECT_EQ(shown(refusal, kind), "ribkit: the module refuses: not supported\n");
        EXPECT_EQ(shown(damage, kind), "ribkit: the module's answer is damaged\n");
    }
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
