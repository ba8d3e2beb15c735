// RIB, modules and client are destroyed and made again at random moments, on a bus that loses some of what it carries
// and delays some: in the end all have what the fabric demands. RIBKIT_SEED=N draws other moments.
#include "clients/route_client.h"
#include "lab/fabric_routes.h"
#include "lab/files/fabric_file.h"
#include "lab/generator/fabric_generator.h"
#include "lab/modules.h"
#include "rib/service/answers.h"
#include "rib/service/rib_service.h"
#include "testing/fault_script.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <unistd.h>

namespace ribkit::lab {
namespace {

constexpr const char *url = "local:chaos";
constexpr std::chrono::seconds generous{60};
constexpr int moments = 100;

uint32_t seed_drawn() {
    const char *text = std::getenv("RIBKIT_SEED");
    return text == nullptr ? 1 : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

/// All that stands on the bus, and the fabric that says what it should have.
class world {
  public:
    explicit world(uint32_t seed)
        : now_(parse_fabric(generate_fabric({.switches = 20, .vsans = 3, .shape = fabric_shape::mesh, .seed = seed}),
                            "chaos")),
          random_(seed) {
        make_rib();
        for (auto &module : modules_) {
            make_module(module);
        }
        make_client();
        bring();
    }
    world(const world &) = delete;
    world &operator=(const world &) = delete;
    ~world() { close(silent_); }

    void happen() {
        switch (below(6)) {
        case 0:
            return make_rib();
        case 1:
            return make_module(modules_[below(2)]);
        case 2:
            return make_client();
        default:
            change_link();
        }
        bring();
    }

    /// Brings the RIB up to date, as far as the bus lets it. @return whether all is said
    bool bring() {
        routes_.follow(now_, [](size_t, size_t) {});
        try {
            client_->converge(routes_.all());
            return true;
        } catch (const bus::no_answer &why) { // the next time
            last_failure_ = why.what();
            return false;
        }
    }

    void expect_that_all_is_there() {
        constexpr int most_tries = 20;
        int tries = 0;
        do {
            client_->start_over();
        } while (!bring() && ++tries < most_tries);
        EXPECT_LT(tries, most_tries) << last_failure_;
        const size_t wanted = routes_.size();
        const auto has_all = [&](const std::optional<fib::fib_service> &module) {
            return module->read([](const fib::module &of) { return of.fib.count(); }) == wanted;
        };
        EXPECT_TRUE(
            wait_until(generous, [&] { return rib_->has_settled() && has_all(modules_[0]) && has_all(modules_[1]); }));
        rib_->stop();
        expect_same_as_fabric();
        for (const auto &module : modules_) {
            module->read([&](const fib::module &of) {
                EXPECT_EQ(difference_between(rib_->tables(), of.fib), module_difference{});
            });
        }
    }

  private:
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }

    void make_rib() {
        rib_.reset();
        rib_.emplace(url, rib::rib_options{.spaces = now_.spaces(), .complaints_to = silent_});
    }
    void make_module(std::optional<fib::fib_service> &module) {
        module.reset();
        fib::fib_options options;
        options.number = &module == modules_.data() ? 1 : 2;
        module.emplace(url, options);
    }
    void make_client() {
        client_.reset();
        client_.emplace(url, RIB_CLIENT_FSPF, clients::client_options{});
        client_->start_over();
    }
    void change_link() {
        const fabric_event event{{}, below(static_cast<uint32_t>(now_.links().size())), below(3) != 0, {}};
        now_.apply(event);
    }
    void expect_same_as_fabric() {
        const auto held = rib::active_routes(rib_->tables());
        size_t same = 0;
        for (const auto &[key, route] : held) {
            const auto &wanted = *routes_.of(key.vsan);
            const auto found = wanted.find(key.to);
            same += found != wanted.end() && found->second.hops == route.what.hops &&
                            found->second.metric == route.what.metric
                        ? 1
                        : 0;
        }
        EXPECT_EQ(same, held.size());
        EXPECT_EQ(held.size(), routes_.size());
    }

    int silent_ = open("/dev/null", O_WRONLY | O_CLOEXEC);
    fabric now_;
    fabric_routes routes_;
    std::mt19937 random_;
    std::string last_failure_;
    std::optional<rib::rib_service> rib_;
    std::array<std::optional<fib::fib_service>, 2> modules_;
    std::optional<clients::unicast_client> client_;
};

TEST(chaos, whatever_is_destroyed_all_tables_are_right_in_the_end) {
    const uint32_t seed = seed_drawn();
    const testing::fault_script rough("clock virtual\nseed " + std::to_string(seed) +
                                      "\ndrop one-in 200\ndelay one-in 60 300\n");
    world all(seed);
    for (int moment = 0; moment < moments; moment++) {
        all.happen();
    }
    all.expect_that_all_is_there();
    EXPECT_FALSE(::testing::Test::HasFailure()) << "RIBKIT_SEED=" << seed;
}

} // namespace
} // namespace ribkit::lab
