// RIB, modules and client are destroyed and made again at random moments, while they work, on a bus that loses some of
// what it carries and delays some: what was answered meanwhile is true, in the end all have what the fabric demands,
// and nothing is left behind. Time is virtual. RIBKIT_SEED=N draws other moments, RIBKIT_ALL=1 goes on with the nine
// seeds behind it.
#include "clients/route_client.h"
#include "fuzz/quiet.h"
#include "lab/chaos_witness_rig.h"
#include "lab/fabric_routes.h"
#include "lab/files/fabric_file.h"
#include "lab/generator/fabric_generator.h"
#include "lab/modules.h"
#include "rib/service/answers.h"
#include "testing/fault_script.h"

#include <cstdlib>
#include <filesystem>

namespace ribkit::lab {
namespace {

constexpr const char *url = "local:chaos";
constexpr int moments = RIBKIT_EMULATED ? 30 : 100;

/// What the client shall bring about, and what has become of that.
class shared_goal {
  public:
    void set(const model::wanted_routes &wanted) {
        const std::scoped_lock locked(lock_);
        wanted_ = wanted;
        number_++;
    }
    std::pair<uint32_t, model::wanted_routes> now() {
        const std::scoped_lock locked(lock_);
        return {number_, wanted_};
    }
    [[nodiscard]] uint32_t number() const { return number_; }
    void given_up(const std::string &why) {
        const std::scoped_lock locked(lock_);
        given_up_.push_back(why);
    }
    [[nodiscard]] const std::vector<std::string> &given_up() const { return given_up_; }

  private:
    std::mutex lock_;
    model::wanted_routes wanted_;
    std::vector<std::string> given_up_;
    std::atomic<uint32_t> number_{0};
};

/// A client on a thread of its own, that does what one does which stays: whenever the goal changes, or the RIB starts
/// anew, it brings the RIB there. Its patience is that of a client that is left alone.
class staying_client {
  public:
    staying_client(shared_goal &goal, clients::takeover how)
        : goal_(goal), client_(url, RIB_CLIENT_FSPF, {.link = {.patience = std::chrono::minutes(10)}}) {
        client_.start_over(how);
        thread_ = std::thread([this] { run(); });
    }
    staying_client(const staying_client &) = delete;
    staying_client &operator=(const staying_client &) = delete;
    ~staying_client() {
        client_.close();
        qip_step_aside();
        thread_.join();
    }

  private:
    void run() {
        try {
            for (;;) {
                const auto [number, wanted] = goal_.now();
                client_.converge(wanted);
                while (!client_.rib_started(std::chrono::milliseconds(50)) && goal_.number() == number) {
                }
            }
        } catch (const bus::link_closed &) {
            return;
        } catch (const std::exception &why) {
            goal_.given_up(why.what());
        }
    }

    shared_goal &goal_;
    clients::unicast_client client_;
    std::thread thread_;
};

/// While a thread is made or joined by one that has the virtual time, that would pass as far as others wait: this slows
/// it down.
class metronome {
  public:
    metronome() = default;
    metronome(const metronome &) = delete;
    metronome &operator=(const metronome &) = delete;
    ~metronome() {
        ends_ = true;
        qip_step_aside();
        thread_.join();
    }

  private:
    void run() {
        const qip_recv_opts tick{{QIP_RECV_INCOMING, 0, 0, 0, 25}};
        for (qip_ref ref{}; !ends_ && qip_recv(handle_.number(), &ref, &tick) != 0;) {
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    }

    bus::service_handle handle_{url};
    std::atomic<bool> ends_{false};
    std::thread thread_{[this] { run(); }};
};

/// All that stands on the bus, and the fabric that says what it should have.
class world {
  public:
    explicit world(uint32_t seed)
        : now_(parse_fabric(generate_fabric({.switches = 20, .vsans = 3, .shape = fabric_shape::mesh, .seed = seed}),
                            "chaos")),
          random_(seed) {
        want();
        make_rib();
        make_module(0);
        make_module(1);
        make_client();
        asking_.emplace(url, there_, seed);
    }

    void happen() {
        rest(below(2) == 0 ? below(20) : below(2000));
        switch (below(6)) {
        case 0:
            return make_rib();
        case 1:
            return make_module(below(2));
        case 2:
            return make_client();
        default:
            now_.apply({{}, below(static_cast<uint32_t>(now_.links().size())), below(3) != 0, {}});
            want();
        }
    }

    /// Once it has heard of all that has happened.
    void make_client() {
        client_.reset();
        client_.emplace(goal_, below(2) == 0 ? clients::takeover::reads : clients::takeover::merges);
    }

    void expect_that_all_is_there() {
        constexpr int longest = 600'000; // ms
        constexpr int each = 50;
        constexpr int until_all_is_told = 30'000; // modules tell the RIB of themselves every 10 s
        rest(until_all_is_told);
        int waited = 0;
        for (; waited < longest && !has_all(); waited += each) {
            rest(each);
        }
        EXPECT_LT(waited, longest);
        seen = asking_->stop();
        for (; waited < longest && !(there_.rib->has_settled() && has_all()); waited += each) {
            rest(each);
        }
        EXPECT_LT(waited, longest);
        client_.reset();
        EXPECT_EQ(goal_.given_up(), std::vector<std::string>());
        there_.rib->stop();
        expect_same_as_fabric();
        asking_->expect_known(there_.rib->tables());
        for (const auto &module : there_.modules) {
            module->read([&](const fib::module &of) {
                EXPECT_EQ(difference_between(there_.rib->tables(), of.fib), module_difference{});
            });
        }
    }

    witness::counts seen;

  private:
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }

    /// Lets time pass.
    void rest(uint32_t milliseconds) const {
        const qip_recv_opts nothing{{QIP_RECV_INCOMING, 0, 0, 0, milliseconds + 1}};
        qip_ref ref{};
        qip_recv(waiting_.number(), &ref, &nothing);
    }

    void want() {
        routes_.follow(now_, [](size_t, size_t) {});
        goal_.set(routes_.all());
    }
    void make_rib() {
        const std::scoped_lock locked(there_.lock);
        there_.rib_changes++;
        there_.rib.reset();
        there_.rib.emplace(url, rib::rib_options{.counts_at_end = true, .complaints_to = -1});
        there_.rib_changes++;
    }
    void make_module(uint32_t index) {
        const std::scoped_lock locked(there_.lock);
        there_.modules[index].reset();
        there_.modules[index].emplace(
            url, fib::fib_options{.number = index + 1, .ports = {{.status = 1, .if_index = ++starts_}}});
    }

    [[nodiscard]] bool has_all() const {
        return std::all_of(there_.modules.begin(), there_.modules.end(), [&](const auto &module) {
            return module->read([&](const fib::module &of) {
                const auto &all = of.fib.entries<fib::unicast>().all();
                const auto right = std::count_if(all.begin(), all.end(), [&](const auto &one) {
                    return one.first.vsan != witness::vsan &&
                           is_wanted(one.first, fib::table<fib::unicast>::read(one.second));
                });
                return static_cast<size_t>(right) == routes_.size();
            });
        });
    }
    [[nodiscard]] bool is_wanted(const model::route_key &key, const model::fib_unicast &what) const {
        const auto &wanted = *routes_.of(key.vsan);
        const auto found = wanted.find(key.to);
        if (found == wanted.end() || found->second.metric != what.metric) {
            return false;
        }
        auto ways = what.ways;
        return std::all_of(found->second.hops.begin(), found->second.hops.end(), [&](const model::next_hop &hop) {
            return !ways.empty() && model::take_label_hop(ways)[1] == hop.if_index;
        });
    }
    void expect_same_as_fabric() {
        size_t same = 0;
        size_t all = 0;
        for (const auto &[key, route] : rib::active_routes(there_.rib->tables())) {
            if (key.vsan == witness::vsan) {
                continue;
            }
            all++;
            const auto &wanted = *routes_.of(key.vsan);
            const auto found = wanted.find(key.to);
            same += found != wanted.end() && found->second.hops == route.what.hops &&
                            found->second.metric == route.what.metric
                        ? 1
                        : 0;
        }
        EXPECT_EQ(same, all);
        EXPECT_EQ(all, routes_.size());
    }

    fabric now_;
    fabric_routes routes_;
    std::mt19937 random_;
    metronome beat_;
    bus::service_handle waiting_{url};
    uint32_t starts_ = 0;
    shared_goal goal_;
    switch_parts there_;
    std::optional<staying_client> client_;
    std::optional<witness> asking_;
};

size_t entries_of(const char *directory) {
    using files = std::filesystem::directory_iterator;
    return static_cast<size_t>(std::distance(files(directory), files()));
}

uint32_t first_seed() {
    const char *text = std::getenv("RIBKIT_SEED");
    return text == nullptr ? 1 : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

/// What one run must not leave behind.
class held_things {
  public:
    ~held_things() {
        EXPECT_EQ(qip_refs_held(), 0U);
        EXPECT_EQ(entries_of("/proc/self/fd"), descriptors_);
        EXPECT_EQ(entries_of("/proc/self/task"), threads_);
    }
    held_things() = default;
    held_things(const held_things &) = delete;
    held_things &operator=(const held_things &) = delete;

  private:
    size_t descriptors_ = entries_of("/proc/self/fd");
    size_t threads_ = entries_of("/proc/self/task");
};

witness::counts run(uint32_t seed, const char *trouble, bool tells_client_in_the_end) {
    SCOPED_TRACE("RIBKIT_SEED=" + std::to_string(seed));
    const testing::fault_script script("clock virtual\nseed " + std::to_string(seed) + "\n" + trouble);
    const held_things nothing_more;
    world all(seed);
    {
        const fuzz::quiet output(stdout);
        const fuzz::quiet errors(stderr);
        for (int moment = 0; moment < moments; moment++) {
            all.happen();
        }
    }
    if (tells_client_in_the_end) {
        all.make_client();
    }
    all.expect_that_all_is_there();
    EXPECT_EQ(all.seen.wrong, std::vector<std::string>());
    return all.seen;
}

/// Calls with one seed after the other, until one fails.
template <class Run> void with_seeds(const Run &run_one) {
    const uint32_t first = first_seed();
    const uint32_t count = std::getenv("RIBKIT_ALL") != nullptr ? 10 : 1;
    for (uint32_t seed = first; seed < first + count && !::testing::Test::HasFailure(); seed++) {
        run_one(seed);
    }
}

// Nobody tells again that a RIB has started.
TEST(chaos, answers_are_true_and_all_tables_right_in_the_end_whatever_is_destroyed_or_lost) {
    with_seeds([](uint32_t seed) {
        const auto seen = run(seed, "drop one-in 200\ndelay one-in 60 300\n", true);
        EXPECT_GT(seen.looked_at, moments / 2U)
            << seen.asked << " asked, " << seen.answered << " answered, " << seen.ok;
    });
}

TEST(chaos, on_a_bus_that_loses_nothing_every_request_is_answered) {
    with_seeds([](uint32_t seed) {
        const auto seen = run(seed, "delay one-in 30 300\n", false);
        EXPECT_EQ(seen.unexplained, 0U);
        EXPECT_GT(seen.looked_at, moments / 2U)
            << seen.asked << " asked, " << seen.answered << " answered, " << seen.ok;
    });
}

} // namespace
} // namespace ribkit::lab
