// A hostile RIB: whatever it answers, the command ends in time with a word about it, or goes on right.
#include "bus/rib_link.h"
#include "fuzz/hostile_bus.h"
#include "fuzz/quiet.h"
#include "platform/service_fixture.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/literal_updates.h"

#include <algorithm>
#include <functional>
#include <random>
#include <sstream>
#include <thread>

namespace ribkit::fuzz {
namespace {

using byte_vector = std::vector<uint8_t>;
using answers = std::vector<byte_vector>;

constexpr const char *fabric = RIBKIT_SOURCE_DIR "/fuzz/allocations/tiny.toml";

/// What the RIB makes of a right answer to a request; nothing: it does not answer.
using malice = std::function<answers(uint32_t opcode, const byte_vector &request, byte_vector answer)>;

/// A RIB that asks a right one for its answers, and gives others.
class hostile_rib {
  public:
    hostile_rib(const std::string &url, malice what) : handle_(url), what_(std::move(what)) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 1000), 0);
        thread_ = std::thread([this] { serve(); });
    }
    hostile_rib(const hostile_rib &) = delete;
    hostile_rib &operator=(const hostile_rib &) = delete;
    ~hostile_rib() {
        handle_.close();
        thread_.join();
    }

    [[nodiscard]] uint32_t handle() const { return handle_.number(); }

  private:
    void serve() {
        qip_ref ref{};
        while (qip_recv(handle_.number(), &ref, nullptr) == 0) {
            const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&ref));
            byte_vector request(bytes, bytes + qip_payload_size(&ref));
            const uint32_t opcode = qip_opcode_get(&ref);
            byte_vector right = right_link_.ask(opcode, request);
            for (const byte_vector &answer : what_(opcode, request, right)) {
                qip_send(handle_.number(), nullptr, 0, answer.data(), static_cast<uint32_t>(answer.size()), nullptr,
                         &ref, nullptr);
            }
            qip_drop(handle_.number(), &ref);
        }
    }

    ribkit::rib::rib_service right_{"local:right", {ribkit::rib::rib_spaces::for_vsans(4)}};
    ribkit::bus::rib_link right_link_{"local:right", RIB_CLIENT_FSPF};
    ribkit::bus::service_handle handle_;
    malice what_;
    std::thread thread_;
};

/// In time, and every line says something; and where it fails, the last one says why.
void expect_orderly(const ending &end) {
    constexpr long most_kilobytes = 200 * 1024;
    EXPECT_TRUE(end.in_time && end.signal == 0) << shown(end);
    EXPECT_TRUE(!memory_tells || end.most_memory < most_kilobytes) << end.most_memory;
    EXPECT_TRUE(end.exit_code == 0 || end.exit_code == 1) << shown(end);
    std::istringstream lines(end.errors);
    std::string last;
    for (std::string line; std::getline(lines, line); last = line) {
        EXPECT_GT(line.size(), 10U) << shown(end);
    }
    EXPECT_EQ(last.starts_with("ribkit: "), end.exit_code != 0 || !end.errors.empty()) << shown(end);
}

class hostile_server : public ::testing::TestWithParam<transport> {
  protected:
    [[nodiscard]] ending client(const char *wait = "30") const {
        return child({RIBKIT_COMMAND, "client", "--bus", meeting.url(), "--wait", wait, fabric}).end();
    }
    [[nodiscard]] ending routes(const char *wait = "30") const {
        return child({RIBKIT_COMMAND, "routes", "--bus", meeting.url(), "--wait", wait}).end();
    }

    /// Nobody believes it: both commands fail.
    void expect_refused(const malice &what) {
        const hostile_rib rib(meeting.url(), what);
        for (const ending &end : {client("1"), routes("1")}) {
            expect_orderly(end);
            EXPECT_EQ(end.exit_code, 1) << shown(end);
        }
    }

    quiet silence{stderr};
    bus meeting{GetParam()};
};

TEST_P(hostile_server, answers_noise) {
    std::mt19937 random(1);
    expect_refused([&](uint32_t, const byte_vector &, byte_vector) {
        byte_vector noise(random() % 3000);
        std::generate(noise.begin(), noise.end(), [&] { return static_cast<uint8_t>(random()); });
        return answers{noise};
    });
}

TEST_P(hostile_server, answers_nothing_in_the_answer) {
    expect_refused([](uint32_t, const byte_vector &, const byte_vector &) { return answers{byte_vector{}}; });
}

TEST_P(hostile_server, truncates_its_answers) {
    expect_refused([](uint32_t, const byte_vector &, byte_vector answer) {
        answer.pop_back();
        return answers{answer};
    });
}

TEST_P(hostile_server, announces_more_than_it_answers) {
    expect_refused([](uint32_t, const byte_vector &, byte_vector answer) {
        std::fill_n(answer.begin() + 16, 4, uint8_t{0xff});
        return answers{answer};
    });
}

TEST_P(hostile_server, never_answers) {
    expect_refused([](uint32_t, const byte_vector &, const byte_vector &) { return answers{}; });
}

/// There is always one more route.
answers one_more(uint32_t opcode, const byte_vector &request, const byte_vector &answer) {
    if (opcode != RIBKIT_OPCODE_FCURT_QUERY || request.size() != wire::fcurt_query.size) {
        return {answer};
    }
    const model::route_key from = protocol::read(codec::view<wire::fcurt_query>(request.data())).from;
    const model::route_change next{RIB_ACTION_ADD, from.to, {1, 0, {{0x01010001, 1}}}};
    return {testing::literal_update({RIB_CLIENT_FSPF, from.vsan, RIB_OPER_UPDATE_RSP, {next}})};
}

TEST_P(hostile_server, has_one_more_route_for_ever) { expect_refused(one_more); }

TEST_P(hostile_server, answers_twice) {
    const hostile_rib rib(meeting.url(), [](uint32_t, const byte_vector &, const byte_vector &right) {
        return answers{right, right};
    });
    for (const ending &end : {client(), routes()}) {
        expect_orderly(end);
        EXPECT_EQ(end.exit_code, 0) << shown(end);
    }
}

TEST_P(hostile_server, tells_all_the_time_that_it_has_started) {
    std::atomic<bool> over{false};
    const hostile_rib rib(meeting.url(),
                          [](uint32_t, const byte_vector &, const byte_vector &right) { return answers{right}; });
    std::thread telling([&] {
        const qip_send_opts at_once{{1}};
        while (!over) {
            qip_send(rib.handle(), &ribkit_listeners_address, RIBKIT_OPCODE_STARTED, nullptr, 0, nullptr, nullptr,
                     &at_once);
        }
    });
    expect_orderly(client());
    const ending shown_routes = routes();
    over = true;
    telling.join();
    expect_orderly(shown_routes);
    EXPECT_EQ(shown_routes.exit_code, 0) << shown(shown_routes);
}

INSTANTIATE_TEST_SUITE_P(over, hostile_server, transports_between_processes(), transport_name);

} // namespace
} // namespace ribkit::fuzz
