// A client that believes nothing: it asks for one change after the other, of routes that nobody else changes, and looks
// into the modules itself when the RIB has said what became of one.
#pragma once

#include "base/text.h"
#include "bus/rib_link.h"
#include "clients/question.h"
#include "clients/state_reader.h"
#include "fib/service/fib_service.h"
#include "protocol/fib/fib_records.h"
#include "protocol/route_messages.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "testing/literal_updates.h"

#include <array>
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace ribkit::lab {

/// RIB and modules while they are destroyed and made again.
struct switch_parts {
    /// Odd while one is made, with `lock` held: another RIB than before where it has changed.
    std::atomic<uint32_t> rib_changes{0};
    std::mutex lock;
    std::optional<rib::rib_service> rib;
    std::array<std::optional<fib::fib_service>, 2> modules;
};

class witness {
  public:
    static constexpr uint32_t vsan = 100;
    static constexpr uint32_t uuid = RIB_CLIENT_OPERATOR;

    struct counts {
        size_t asked = 0, answered = 0, ok = 0;
        size_t looked_at = 0;             ///< modules that had to have what was answered with "ok"
        size_t unexplained = 0;           ///< requests without an answer, though the RIB was the same all the time
        std::vector<std::string> wrong{}; ///< what was answered and is not true
    };

    witness(const char *url, switch_parts &there, uint32_t seed)
        : there_(there), random_(seed), link_(url, uuid, {.patience = longest_wait}), thread_([this] { run(); }) {}
    witness(const witness &) = delete;
    witness &operator=(const witness &) = delete;
    ~witness() { stop(); }

    /// @return what it has seen
    counts stop() {
        link_.close();
        if (thread_.joinable()) {
            qip_step_aside();
            thread_.join();
        }
        return seen_;
    }

    /// Whether a RIB has what this client knows it to have.
    void expect_known(const rib::state &tables) const {
        const auto &all = tables.routes<rib::unicast>();
        for (const auto &[domain, what] : known_) {
            if (what.rib == there_.rib_changes) {
                const auto found = all.all().find({vsan, {domain << 16, RIB_MASK_DOMAIN}});
                const uint32_t cost = found == all.all().end() ? 0 : all.read(*found->second).metric;
                EXPECT_EQ(cost, what.cost) << "domain " << domain;
            }
        }
    }

  private:
    /// An answer is due within 5 s; either way may be delayed, a question asked again.
    static constexpr std::chrono::milliseconds longest_wait{7000};
    static constexpr uint64_t latest_answer = 5'700'000; // microseconds
    static constexpr uint32_t domains = 40;

    struct asked_for {
        uint32_t domain, cost; ///< cost 0: no route
    };
    struct known_route {
        uint32_t cost = 0;
        uint32_t rib = 1; ///< none has an odd number
    };

    void run() {
        for (;;) {
            try {
                link_.heard_of_start(std::chrono::milliseconds(1 + below(100)));
                ask_one();
            } catch (const bus::link_closed &) {
                return;
            } catch (const bus::no_answer &) { // to what nothing depends on
            } catch (const clients::refused_question &why) {
                seen_.wrong.emplace_back(why.what());
            }
        }
    }

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }

    /// The modules that the RIB knows, and which ones: each has a first port of its own.
    std::map<uint32_t, uint32_t> ports_known() {
        link_.renew_patience();
        const auto answer = clients::read_modules(link_, uuid);
        std::map<uint32_t, uint32_t> known;
        for (const auto &node : protocol::modules_of(codec::view<wire::sys_info>(answer.data()))) {
            known[node.number] = node.ports.at(0).if_index;
        }
        return known;
    }

    void ask_one() {
        const uint32_t rib = there_.rib_changes;
        const auto ports = ports_known();
        const asked_for change{1 + below(domains), below(3) == 0 ? 0 : 1 + below(1000)};
        const auto before = known_.extract(change.domain); // nothing is known until it is answered
        const known_route had = before ? before.mapped() : known_route{};
        seen_.asked++;
        const uint64_t start = qip_now();
        try {
            const auto answer = send(change);
            seen_.answered++;
            expect(qip_now() - start <= latest_answer, "answered late", change);
            qip_step_aside();
            const std::scoped_lock locked(there_.lock);
            judge(change, answer, had, rib, ports);
        } catch (const bus::no_answer &) {
            seen_.unexplained += rib == there_.rib_changes && rib % 2 == 0 ? 1 : 0;
        }
    }

    void expect(bool is_so, const std::string &otherwise, const asked_for &change) {
        if (!is_so) {
            seen_.wrong.push_back(base::joined("request ", seen_.asked, " (domain ", change.domain, ", cost ",
                                               change.cost, "): ", otherwise));
        }
    }

    protocol::fcurt_response send(const asked_for &change) {
        model::route what{change.cost, 0, {{0x01010001, change.domain}}};
        auto bytes = testing::literal_update(
            {uuid,
             vsan,
             RIB_OPER_UPDATE_RSP,
             {{change.cost == 0 ? RIB_ACTION_DELETE : RIB_ACTION_ADD, {change.domain << 16, RIB_MASK_DOMAIN}, what}}});
        link_.renew_patience();
        const auto answer = link_.ask(RIBKIT_OPCODE_FCURT_UPDATE, bytes);
        expect(answer.size() == wire::route_rsp.size, "answer of another size", change);
        return protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(answer));
    }

    void judge(const asked_for &change, const protocol::fcurt_response &said, const known_route &had, uint32_t rib,
               const std::map<uint32_t, uint32_t> &ports) {
        const bool same_rib = rib == there_.rib_changes && rib % 2 == 0;
        switch (said.result) {
        case RIB_OK:
            seen_.ok++;
            if (same_rib) {
                expect_in_modules(change, ports);
            }
            break;
        case RIB_NO_ENTRY:
            expect(change.cost == 0 && (!same_rib || had.rib != rib || had.cost == 0), "no such entry", change);
            break;
        case RIB_TIMEOUT:
        case RIB_MISSING_DEVICE:
            break;
        default:
            expect(false, bus::result_text(said.result), change);
        }
        if (same_rib) {
            known_[change.domain] = {change.cost, rib};
        }
    }

    /// Those that the RIB knew when it was asked, and that are the same ones still.
    void expect_in_modules(const asked_for &change, const std::map<uint32_t, uint32_t> &ports) {
        for (uint32_t number = 1; number <= there_.modules.size(); number++) {
            const auto &module = there_.modules[number - 1];
            const auto port = ports.find(number);
            if (!module || port == ports.end()) {
                continue;
            }
            module->read([&](const fib::module &of) {
                if (of.self.ports.at(0).if_index != port->second) {
                    return;
                }
                seen_.looked_at++;
                const auto &all = of.fib.entries<fib::unicast>().all();
                const auto found = all.find({vsan, {change.domain << 16, RIB_MASK_DOMAIN}});
                const uint32_t cost = found == all.end() ? 0 : fib::table<fib::unicast>::read(found->second).metric;
                expect(cost == change.cost, base::joined("ok, and module ", number, " has cost ", cost), change);
            });
        }
    }

    switch_parts &there_;
    std::mt19937 random_;
    std::map<uint32_t, known_route> known_; ///< by domain: what the RIB has, as it has said
    counts seen_;
    bus::rib_link link_;
    std::thread thread_;
};

} // namespace ribkit::lab
