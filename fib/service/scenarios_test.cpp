// A RIB, its modules and a client in five situations: what the client is answered, and what the modules have then. Each
// is a function that makes a transcript, the same one on every machine.
#include "fib/service/fib_service.h"

#include "base/text.h"
#include "bus/rib_link.h"
#include "protocol/route_messages.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "testing/golden.h"
#include "testing/literal_updates.h"

#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <iomanip>
#include <memory>
#include <thread>
#include <unistd.h>

namespace ribkit::fib {
namespace {

constexpr const char *url = "local:scenarios";
constexpr std::chrono::seconds generous{60};
constexpr uint32_t to_core = 0x01010001; // interfaces
constexpr uint32_t to_edge = 0x01010002;

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

bool becomes_so(const std::function<bool()> &is_so) {
    const auto end = std::chrono::steady_clock::now() + generous;
    while (!is_so() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return is_so();
}

std::string hex(uint32_t number) { return base::joined("0x", std::hex, std::setw(6), std::setfill('0'), number); }

/// A RIB with a client, and modules that come and go; what happens is written down.
class scene {
  public:
    void start(uint32_t module, const fib_options &as = {}) {
        fib_options options = as;
        options.number = module;
        modules_[module] = std::make_unique<fib_service>(url, options);
        say(base::joined("module ", module, " starts"));
        expect([&] { return state_of(module) != model::fib_state::offline; }, "the RIB knows the module");
        settle();
    }
    void stop(uint32_t module) {
        modules_.erase(module);
        say(base::joined("module ", module, " ends"));
    }

    /// Until a module has so many entries.
    void await(uint32_t module, uint32_t entries) {
        expect([&] { return modules_[module]->read([](const fib::module &of) { return of.fib.count(); }) == entries; },
               "the module has as many entries as it should");
        settle();
    }

    /// The client adds a route to a domain, or deletes it.
    void add(uint32_t vsan, uint32_t domain, uint32_t interface = to_core) {
        send(vsan, RIB_OPER_UPDATE_RSP, RIB_ACTION_ADD, domain, interface);
    }
    void remove(uint32_t vsan, uint32_t domain) { send(vsan, RIB_OPER_UPDATE_RSP, RIB_ACTION_DELETE, domain, to_core); }
    /// The VSAN manager suspends or resumes a VSAN.
    void set_suspended(uint32_t vsan, bool suspended) {
        const auto result = ask({RIB_CLIENT_VSAN_MANAGER, vsan, suspended ? RIB_OPER_SUSPEND : RIB_OPER_RESUME, {}});
        say(base::joined("vsan ", vsan,
                         suspended ? " is suspended: " : " is resumed: ", bus::result_text(result.result)));
        settle();
    }

    /// What each module has.
    void look() {
        for (const auto &[number, module] : modules_) {
            say(base::joined("module ", number, " has"));
            module->read([&](const fib::module &of) {
                for (const auto &[key, entry] : of.fib.entries<unicast>().all()) {
                    auto ways = table<unicast>::read(entry).ways;
                    say(base::joined("  vsan ", key.vsan, " ", hex(key.to.fcid), "/", hex(key.to.mask), " by ",
                                     hex(model::take_label_hop(ways)[1])));
                }
                if (of.fib.count() == 0) {
                    say("  nothing");
                }
            });
        }
    }

    void settle() {
        expect([&] { return rib_.has_settled(); }, "the modules have all that they are told");
    }
    [[nodiscard]] const std::string &transcript() const { return transcript_; }

  private:
    void say(const std::string &line) { transcript_ += line + "\n"; }
    static void expect(const std::function<bool()> &is_so, const char *what) { EXPECT_TRUE(becomes_so(is_so)) << what; }
    model::fib_state state_of(uint32_t module) {
        return modules_[module]->read([](const fib::module &of) { return of.fib.now(); });
    }

    protocol::fcurt_response ask(const testing::fcurt_update &update) {
        auto message = testing::literal_update(update);
        const auto answer = client_.ask(RIBKIT_OPCODE_FCURT_UPDATE, message);
        EXPECT_EQ(answer.size(), wire::route_rsp.size);
        return protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(answer));
    }
    void send(uint32_t vsan, uint32_t oper, uint32_t action, uint32_t domain, uint32_t interface) {
        const auto answer =
            ask({RIB_CLIENT_FSPF, vsan, oper, {{action, {domain << 16, 0xff0000}, {500, 0, {{interface, domain}}}}}});
        say(base::joined(action == RIB_ACTION_ADD ? "add" : "delete", " vsan ", vsan, " domain ", domain, ": ",
                         bus::result_text(answer.result), ", ", answer.accepted, " accepted, ", answer.held, " held"));
        settle();
    }

    nowhere silent_;
    rib::rib_service rib_{url, {.complaints_to = silent_.descriptor()}};
    bus::rib_link client_{url, RIB_CLIENT_FSPF};
    std::map<uint32_t, std::unique_ptr<fib_service>> modules_;
    std::string transcript_;
};

std::string a_module_comes_late() {
    scene of;
    of.add(1, 101);
    of.add(2, 102, to_edge);
    of.start(1);
    of.await(1, 2);
    of.look();
    of.remove(1, 101);
    of.look();
    return of.transcript();
}

std::string a_module_is_full() {
    scene of;
    fib_options small;
    small.sizes.unicast = 2;
    of.start(1);
    of.start(2, small);
    for (const uint32_t domain : {101, 102, 103}) {
        of.add(1, domain);
    }
    of.look();
    of.remove(1, 101); // what had no room is tried again
    of.await(2, 2);
    of.look();
    return of.transcript();
}

std::string a_module_restarts() {
    scene of;
    of.start(1);
    of.start(2);
    of.add(1, 101);
    of.stop(2);
    of.add(1, 102);
    of.remove(1, 101);
    of.start(2);
    of.await(2, 1);
    of.look();
    return of.transcript();
}

std::string a_module_is_slow() {
    scene of;
    fib_options slow;
    slow.slow = std::chrono::milliseconds(50);
    of.start(1);
    of.start(2, slow);
    for (const uint32_t domain : {101, 102, 103, 104}) {
        of.add(1, domain);
    }
    of.look();
    return of.transcript();
}

std::string a_vsan_is_suspended() {
    scene of;
    of.start(1);
    of.add(1, 101);
    of.add(2, 101, to_edge);
    of.set_suspended(2, true);
    of.await(1, 1);
    of.look();
    of.add(2, 102, to_edge);
    of.set_suspended(2, false);
    of.await(1, 3);
    of.look();
    return of.transcript();
}

TEST(scenarios, a_module_that_comes_late_has_everything) {
    testing::expect_golden("fib/golden/late_module.txt", a_module_comes_late());
}
TEST(scenarios, a_full_module_is_said_and_tried_again) {
    testing::expect_golden("fib/golden/full_module.txt", a_module_is_full());
}
TEST(scenarios, a_module_that_restarts_has_what_is_true_then) {
    testing::expect_golden("fib/golden/restarted_module.txt", a_module_restarts());
}
TEST(scenarios, a_slow_module_is_waited_for) {
    testing::expect_golden("fib/golden/slow_module.txt", a_module_is_slow());
}
TEST(scenarios, a_suspended_vsan_leaves_the_modules_and_comes_back) {
    testing::expect_golden("fib/golden/suspended_vsan.txt", a_vsan_is_suspended());
}

} // namespace
} // namespace ribkit::fib
