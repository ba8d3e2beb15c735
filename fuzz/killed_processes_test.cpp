// RIB, modules and clients as processes that are killed at random moments, and started again as a supervisor would: in
// the end every table is what the fabric demands, and who was left alive has not grown. RIBKIT_SEED=N draws another
// fabric and other moments; RIBKIT_ALL=1 kills 100 of them, on each bus.
#include "fuzz/hostile_bus.h"
#include "fuzz/killed_fabric.h"
#include "testing/background_command.h"

#include <array>
#include <nlohmann/json.hpp>

namespace ribkit::fuzz {
namespace {

using testing::background;
using testing::in_time;

uint32_t seed_drawn() {
    const char *text = std::getenv("RIBKIT_SEED");
    return text == nullptr ? 1 : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

enum part : uint8_t { the_rib, left, right, routes, others, parts };

/// One RIB, two modules and two clients of one fabric, each a process.
class fabric_processes {
  public:
    fabric_processes(std::string url, const std::string &file) : url_(std::move(url)) {
        const std::string client = "client --stay --wait 600";
        lines_ = {line("rib --wait 600 --tables none", file), line("module --wait 600 --number 1", "left"),
                  line("module --wait 600 --number 2", "right"), line(client + " --role fspf", file),
                  line(client + " --role static --role mcast --role label --role domain", file)};
        for (const part each : {the_rib, left, right}) {
            start(each);
        }
    }

    /// What the tables are when nobody is killed: clients bring all that has happened, and end.
    std::array<std::array<std::string, 3>, 3> undisturbed(const std::string &file) const {
        EXPECT_TRUE(in_time([&] {
            const auto known = nlohmann::json::parse(show("node"), nullptr, false);
            return known.is_array() && known.size() == 2;
        }));
        const auto brought = testing::run_command(line("client --wait 60", file) + " 2>&1");
        EXPECT_EQ(brought.exit_code, 0) << brought.output;
        return all_tables();
    }

    void start_clients() {
        start(routes);
        start(others);
    }

    void kill_and_start(part which) {
        running_.at(which)->stopped(SIGKILL);
        start(which);
    }

    /// Who has ended by itself is started again: somebody killed may seem to be there for a moment.
    void keep_up() {
        for (uint8_t each = 0; each < parts; each++) {
            if (running_.at(each)->has_ended()) {
                ended_by_themselves_ += running_.at(each)->so_far();
                started_again_++;
                start(static_cast<part>(each));
            }
        }
    }

    [[nodiscard]] const background &operator[](part which) const { return *running_.at(which); }
    [[nodiscard]] size_t started_again() const { return started_again_; }
    [[nodiscard]] const std::string &last_words() const { return ended_by_themselves_; }

    /// All three tables of the RIB, or of a module, as they are shown.
    [[nodiscard]] std::array<std::string, 3> tables(const std::string &of = "") const {
        std::array<std::string, 3> all;
        for (size_t i = 0; i < all.size(); i++) {
            const char *kinds[] = {"fcu", "fcm", "fcl"};
            all.at(i) =
                testing::run_command(line(std::string("show --json --wait 60 ") + kinds[i], of) + " 2>&1").output;
        }
        return all;
    }

    /// Of the RIB first, then of the modules.
    [[nodiscard]] std::array<std::array<std::string, 3>, 3> all_tables() const {
        return {tables(), tables("--module 1"), tables("--module 2")};
    }

  private:
    [[nodiscard]] std::string show(const std::string &kind, const std::string &of = "") const {
        return testing::run_command(line("show --json --wait 60 " + kind, of) + " 2>&1").output;
    }
    [[nodiscard]] std::string line(const std::string &command, const std::string &arguments) const {
        return command + " --bus " + url_ + ' ' + arguments;
    }
    void start(part which) { running_.at(which) = std::make_unique<background>(lines_.at(which)); }

    std::string url_;
    std::array<std::string, parts> lines_;
    std::array<std::unique_ptr<background>, parts> running_;
    size_t started_again_ = 0;
    std::string ended_by_themselves_;
};

/// The routes to domains that FSPF has brought, as the RIB shows them or, without owners, a module.
std::set<std::string> domain_routes(const std::string &shown) {
    std::set<std::string> lines;
    const auto all = nlohmann::json::parse(shown, nullptr, false);
    for (const auto &one : all) {
        const auto &route = one["fields"];
        if (route["mask"] != "0xff0000" || route["fcid"] == killed_fabric::fixed) {
            continue;
        }
        std::set<std::string> ways;
        for (const auto &hop : route["hop"]) {
            ways.insert(hop["intf_text"].get<std::string>());
        }
        lines.insert(route_line(route["vsan"], route["fcid"], route["cost"], ways));
    }
    return lines;
}

/// What a process holds.
struct holdings {
    explicit holdings(pid_t process) {
        const std::string where = "/proc/" + std::to_string(process);
        using files = std::filesystem::directory_iterator;
        descriptors = std::distance(files(where + "/fd"), files());
        std::ifstream status(where + "/status");
        for (std::string word; status >> word && word != "VmRSS:";) {
        }
        status >> kilobytes;
    }

    long descriptors = 0;
    long kilobytes = 0;
};

class killed_processes : public ::testing::TestWithParam<transport> {
  protected:
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }

    [[nodiscard]] bool has_all(fabric_processes &processes) const {
        return in_time([&] {
            processes.keep_up();
            return processes.all_tables() == wanted_;
        });
    }

    /// So many of the parts that may be killed are, one after the other.
    void kill_some(fabric_processes &processes, const std::vector<part> &mortal, uint32_t kills) {
        constexpr uint32_t longest_life = 60;
        for (; kills > 0; kills--) {
            std::this_thread::sleep_for(std::chrono::milliseconds(below(longest_life)));
            processes.keep_up();
            processes.kill_and_start(mortal[below(static_cast<uint32_t>(mortal.size()))]);
        }
    }

    /// The same, with somebody who survives it and has hardly more descriptors or memory then.
    void kill_around(fabric_processes &processes, part survivor, const std::vector<part> &mortal, uint32_t kills) {
        constexpr long more_kilobytes = 4 * 1024;
        constexpr long more_descriptors = 6; // connections are made when they are needed
        const pid_t process = processes[survivor].number();
        const holdings before(process);
        kill_some(processes, mortal, kills);
        EXPECT_TRUE(has_all(processes));
        ASSERT_EQ(processes[survivor].number(), process) << processes.last_words();
        EXPECT_TRUE(in_time([&] { return holdings(process).descriptors <= before.descriptors + more_descriptors; }))
            << before.descriptors << " descriptors before, " << holdings(process).descriptors << " now";
        if (memory_tells) {
            EXPECT_LE(holdings(process).kilobytes, before.kilobytes + more_kilobytes);
        }
    }

    uint32_t seed_ = seed_drawn();
    std::mt19937 random_{seed_};
    killed_fabric fabric_{seed_};
    testing::input_file file_{fabric_.text()};
    bus bus_{GetParam()};
    std::array<std::array<std::string, 3>, 3> wanted_;
};

TEST_P(killed_processes, leave_all_tables_as_the_fabric_demands) {
    SCOPED_TRACE("RIBKIT_SEED=" + std::to_string(seed_));
    const uint32_t kills = std::getenv("RIBKIT_ALL") != nullptr ? 100 : 12;
    fabric_processes processes(bus_.url(), file_.path());
    wanted_ = processes.undisturbed(file_.path());
    for (const auto &tables : wanted_) {
        ASSERT_EQ(domain_routes(tables[0]), fabric_.demanded());
    }
    processes.start_clients();
    ASSERT_TRUE(has_all(processes));
    kill_around(processes, the_rib, {left, right, routes, others}, kills / 3);
    kill_around(processes, left, {the_rib, right, routes, others}, kills / 3);
    kill_some(processes, {the_rib, left, right, routes, others}, kills - kills / 3 * 2);
    EXPECT_TRUE(has_all(processes)) << processes.last_words();
    EXPECT_EQ(processes.all_tables(), wanted_);
}

INSTANTIATE_TEST_SUITE_P(over, killed_processes, transports_between_processes(), transport_name);

} // namespace
} // namespace ribkit::fuzz
