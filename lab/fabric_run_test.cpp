// What a run does while it waits, and how it tells what modules have: clients that say what they are told to say, and
// tables that differ from a module's in every way.
#include "lab/fabric_run.h"

#include "bus/rib_link.h"
#include "lab/files/fabric_file.h"
#include "lab/modules.h"
#include "rib/service/rib_service.h"
#include "testing/capture.h"

#include <gtest/gtest.h>
#include <memory>

namespace ribkit::lab {
namespace {

using std::chrono::milliseconds;

const std::string two_switches = R"(
local = "a"
roles = ["static"]
vsan = [{id = 1}, {id = 2}]
switch = [{name = "a", domain = 1}, {name = "b", domain = 2}]
link = [{ends = ["a fc1/1", "b fc1/1"]}]
)";

/// A client that hears what is laid down, and then that it is closed.
class scripted_role : public route_role {
  public:
    explicit scripted_role(std::vector<bool> hears) : hears_(std::move(hears)) {}

    [[nodiscard]] std::string_view name() const override { return "scripted"; }
    void compute(const fabric &, const fabric_routes &) override {}
    [[nodiscard]] size_t wanted() const override { return 0; }
    clients::client_traffic converge() override {
        converged++;
        return {};
    }
    [[nodiscard]] const clients::client_traffic &traffic() const override { return traffic_; }
    void start_over() override {}
    void find_rib() override {}
    bool rib_started(milliseconds limit) override {
        limits.push_back(limit);
        if (limits.size() > hears_.size()) {
            throw bus::link_closed();
        }
        return hears_[limits.size() - 1];
    }
    void suppose_start() override { supposed++; }
    void keep_registered() override {}
    void stay_registered() override { stayed++; }
    void close() override {}

    std::vector<milliseconds> limits;
    int converged = 0, supposed = 0, stayed = 0;

  private:
    std::vector<bool> hears_;
    clients::client_traffic traffic_;
};

/// Two clients of a run, and what it says.
struct scripted_run {
    scripted_run(const std::string &more, std::vector<bool> one_hears, std::vector<bool> other_hears, bool real_time) {
        auto first = std::make_unique<scripted_role>(std::move(one_hears));
        auto second = std::make_unique<scripted_role>(std::move(other_hears));
        one = first.get();
        other = second.get();
        clients.push_back(std::move(first));
        clients.push_back(std::move(second));
        run.emplace(parse_fabric(two_switches + more, "f"), clients, progress, real_time,
                    [this](const std::string &line) { said += line + '\n'; });
    }

    std::string said;
    scripted_role *one = nullptr, *other = nullptr;
    route_roles clients;
    base::progress_line progress;
    std::optional<fabric_run> run;
};

const std::string tomorrow = "[[event]]\nat = \"1440m\"\nlink = \"a fc1/1\"\nstate = \"down\"\n";

TEST(fabric_run, a_rib_that_starts_anew_while_an_event_is_awaited_is_brought_up_to_date) {
    scripted_run of(tomorrow, {false, false, false}, {false, true, false}, true);
    EXPECT_THROW(of.run->play(), bus::link_closed);
    EXPECT_EQ(of.said.substr(0, of.said.find(" ms")).find("goes down"), std::string::npos) << "tomorrow";
    EXPECT_NE(of.said.find(": the RIB is there again\n"), std::string::npos) << of.said;
    EXPECT_EQ(of.run->record().steps.size(), 2U);
    for (const scripted_role *client : {of.one, of.other}) {
        EXPECT_EQ(client->converged, 2);
        EXPECT_EQ(client->supposed, 1) << "one of them heard it";
        EXPECT_EQ(client->stayed, 3);
    }
    for (const milliseconds limit : of.one->limits) {
        EXPECT_EQ(limit, std::chrono::seconds(10));
    }
    EXPECT_EQ(of.other->limits, std::vector<milliseconds>(3)) << "it does not wait as well";
}

TEST(fabric_run, who_stays_brings_each_rib_up_to_date) {
    scripted_run of("", {false, true, true, false}, {false, false, false, false}, false);
    of.run->play();
    EXPECT_EQ(of.one->converged, 1);
    EXPECT_THROW(of.run->stay(), bus::link_closed);
    EXPECT_EQ(of.one->converged, 3);
    EXPECT_EQ(of.other->converged, 3);
    EXPECT_EQ(of.other->supposed, 2);
}

TEST(fabric_run, without_modules_nothing_happens_to_one) {
    const std::string module = "[[module]]\nnumber = 3\n[[event]]\nat = \"1s\"\nmodule = 3\nstate = \"restarting\"\n";
    scripted_run of(module, {}, {}, false);
    of.run->play();
    EXPECT_NE(of.said.find("at 1s: module 3 starts again\n"), std::string::npos) << of.said;
    EXPECT_TRUE(of.run->record().steps.at(1).modules.empty());
}

/// A route of the client for static routes.
void add(rib::state &to, uint32_t vsan, uint32_t fcid, const model::next_hop &hop) {
    const std::vector<model::unicast_change> one{{RIB_ACTION_ADD, {fcid, RIB_MASK_DOMAIN}, {10, 0, {&hop, 1}}}};
    EXPECT_EQ(to.update<rib::unicast>({RIB_CLIENT_CONFIG, vsan, RIB_OPER_UPDATE, {}, false, 1}, one).result, RIB_OK);
}

TEST(running_modules, what_they_have_is_compared_with_what_they_should_have) {
    constexpr const char *url = "local:fabric_run_test";
    const auto through = [](const std::string &fcid) {
        return "[[static]]\nfcid = " + fcid + "\nvsan = 1\nvia = \"a fc1/1\"\n";
    };
    const fabric f = parse_fabric(two_switches + through("0x020000") + through("0x030000") + through("0x050000") +
                                      "[[module]]\nnumber = 1\nname = \"left\"\n[[module]]\nnumber = 2\n",
                                  "f");
    rib::rib_service rib(url, {.spaces = f.spaces()});
    running_modules modules(f.modules, rib, url, std::chrono::minutes(1), false);
    route_roles clients = make_roles(roles_of(f), f, url, {});
    clients[0]->compute(f, {});
    EXPECT_EQ(clients[0]->converge().added, 3U);
    modules.settle();
    rib.stop();
    EXPECT_EQ(modules.hardware_text(rib.tables()),
              "  hardware  module 1 (left) has 3 of 3 routes\n            module 2 has 3 of 3 routes");

    const uint32_t leaves_by = f.declared.statics()[0].row.if_index;
    rib::state wanted;
    add(wanted, 1, 0x020000, {leaves_by, 2});
    EXPECT_EQ(modules.compare(0, wanted).extra, 2U);
    EXPECT_EQ(
        modules.hardware_text(wanted).find("  hardware  module 1 (left) has 1 of 1 route, and 2 that it should not "
                                           "have\n"),
        0U);
    add(wanted, 1, 0x030000, {leaves_by + 1, 2}); // another interface
    add(wanted, 1, 0x040000, {leaves_by, 2});     // missing
    add(wanted, 2, 0x020000, {leaves_by, 2});
    const std::vector<model::unicast_change> none;
    EXPECT_EQ(wanted.update<rib::unicast>({RIB_CLIENT_VSAN_MANAGER, 2, RIB_OPER_SUSPEND, {}, false, 1}, none).result,
              RIB_OK);
    modules.read(1, [&](const fib::state &has) {
        EXPECT_EQ(difference_between(wanted, has), (module_difference{.missing = 1, .extra = 1, .different = 1}));
    });
    const routes_in_hardware found = modules.compare(1, wanted);
    EXPECT_EQ(found.wanted, 3U) << "but those of the VSAN that is suspended";
    EXPECT_EQ(found.right, 1U);
    EXPECT_EQ(found.extra, 1U);
}

} // namespace
} // namespace ribkit::lab
