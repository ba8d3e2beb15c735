// A hostile peer over each transport, and an honest client beside it: all its answers come and are right, the RIB goes
// on, in bounded memory, and a signal ends it. RIBKIT_ALL=1 lets the attack go on for long.
#include "bus/rib_link.h"
#include "clients/table_reader.h"
#include "fuzz/attacks.h"
#include "fuzz/hostile_bus.h"
#include "fuzz/quiet.h"
#include "protocol/route_messages.h"
#include "rib_codes.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "testing/literal_updates.h"

#include <arpa/inet.h>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace ribkit::fuzz {
namespace {

size_t times(size_t usual) { return std::getenv("RIBKIT_ALL") == nullptr ? usual : 10 * usual; }

/// Keeps five routes of VSAN 1, whose metric changes with every round, and reads them back.
class honest_client {
  public:
    explicit honest_client(const std::string &url) : link_(url, RIB_CLIENT_FSPF) {}

    void work() {
        metric_++;
        auto message = testing::literal_update({RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE_RSP, changes()});
        const auto answer = link_.ask(RIBKIT_OPCODE_FCURT_UPDATE, message);
        ASSERT_EQ(answer.size(), wire::route_rsp.size);
        const protocol::fcurt_response response =
            protocol::decode_fcurt_response(std::span(answer).first<wire::route_rsp.size>());
        ASSERT_EQ(response.result, RIB_OK);
        ASSERT_EQ(response.accepted, routes);
        uint32_t held = 0;
        clients::read_table<clients::unicast_table>(link_, {RIB_CLIENT_FSPF, vsan},
                                                    [&](uint32_t owner, const auto & /*key*/, const auto &what) {
                                                        if (owner == RIB_CLIENT_FSPF) {
                                                            EXPECT_EQ(what.metric, metric_);
                                                            held++;
                                                        }
                                                    });
        ASSERT_EQ(held, routes);
    }

  private:
    static constexpr uint32_t vsan = 1;
    static constexpr uint32_t routes = 5;

    [[nodiscard]] std::vector<model::route_change> changes() const {
        std::vector<model::route_change> all;
        for (uint32_t domain = 1; domain <= routes; domain++) {
            all.push_back({RIB_ACTION_ADD, {domain << 16, 0xff0000}, {metric_, 0, {{0x01010001, domain}}}});
        }
        return all;
    }

    ribkit::bus::rib_link link_;
    uint32_t metric_ = 0;
};

/// The attack, and the honest client's rounds until it is over, ten at least.
void withstand(const std::string &url, const std::function<void()> &attack) {
    honest_client honest(url);
    honest.work();
    std::atomic<bool> over{false};
    std::thread attacking([&] {
        attack();
        over = true;
    });
    for (int rounds = 0; (rounds < 10 || !over) && !::testing::Test::HasFatalFailure(); rounds++) {
        honest.work();
    }
    attacking.join();
    honest.work();
}

class hostile_peer : public ::testing::TestWithParam<transport> {
  protected:
    void run(const std::function<void(attacker &one)> &attack) {
        attacker one(meeting.url(), 1);
        withstand(meeting.url(), [&] { attack(one); });
        attacked.stop();
        EXPECT_EQ(qip_refs_held(), 0U);
    }

    quiet silence{stderr};
    bus meeting{GetParam()};
    rib attacked{GetParam(), meeting.url()};
};

TEST_P(hostile_peer, sends_anything) {
    run([](attacker &one) { one.send_anything(times(3000)); });
}

TEST_P(hostile_peer, truncates_messages) {
    run([](attacker &one) { one.truncate(); });
}

TEST_P(hostile_peer, announces_more_than_it_sends) {
    run([](attacker &one) { one.announce_too_much(); });
}

TEST_P(hostile_peer, floods) {
    run([](attacker &one) { one.flood(times(GetParam() == transport::local ? 100000 : 10000)); });
}

TEST_P(hostile_peer, comes_and_goes) {
    run([](attacker &one) { one.come_and_go(times(GetParam() == transport::server ? 20 : 100)); });
}

TEST_P(hostile_peer, opens_many_handles) {
    run([](attacker &one) { one.open_many(times(GetParam() == transport::server ? 20 : 100)); });
}

INSTANTIATE_TEST_SUITE_P(over, hostile_peer, all_transports(), transport_name);

int connected(int domain, int type, const sockaddr *address, socklen_t size) {
    const int socket = ::socket(domain, type | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(socket, address, size), 0);
    return socket;
}

std::string noise(std::mt19937 &random, size_t most) {
    std::string bytes(random() % most, ' ');
    for (char &byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

/// Random packets into each socket of the directory; nothing is read.
void talk_nonsense_to(const std::string &directory, size_t packets, std::mt19937 &random) {
    for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (!entry.is_socket()) {
            continue;
        }
        sockaddr_un address{AF_UNIX, {}};
        entry.path().string().copy(address.sun_path, sizeof address.sun_path - 1);
        for (size_t left = packets; left > 0; left--) {
            const int socket =
                connected(AF_UNIX, SOCK_SEQPACKET, reinterpret_cast<const sockaddr *>(&address), sizeof address);
            for (uint32_t more = random() % 5; more > 0; more--) {
                std::string packet = noise(random, 200);
                if (!packet.empty()) {
                    packet[0] = static_cast<char>(random() % 7);
                }
                send(socket, packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            }
            close(socket);
        }
    }
}

TEST(hostile_socket, talks_nonsense) {
    const quiet silence{stderr};
    const bus meeting(transport::sockets);
    rib attacked(transport::sockets, meeting.url());
    std::mt19937 random(1);
    withstand(meeting.url(), [&] { talk_nonsense_to(meeting.directory(), times(300), random); });
    attacked.stop();
}

/// Connections to the first socket of the directory, as many as are taken and more that wait; nothing is said on them.
std::vector<int> crowd_at(const std::string &directory, size_t count) {
    std::vector<int> all;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (!entry.is_socket()) {
            continue;
        }
        sockaddr_un address{AF_UNIX, {}};
        entry.path().string().copy(address.sun_path, sizeof address.sun_path - 1);
        while (all.size() < count) {
            const int one = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            all.push_back(one);
            if (connect(one, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
                break; // as many as may wait do so
            }
        }
        break;
    }
    return all;
}

TEST(hostile_socket, takes_all_descriptors_of_a_rib) {
    const quiet silence{stderr};
    const bus meeting(transport::sockets);
    child attacked({RIBKIT_COMMAND, "rib", "--tables", "none", "--bus", meeting.url()});
    ASSERT_TRUE(attacked.prints("the RIB answers at"));
    honest_client earlier(meeting.url());
    earlier.work();
    constexpr rlim_t few = 24;
    const rlimit limit{few, few};
    ASSERT_EQ(prlimit(attacked.number(), RLIMIT_NOFILE, &limit, nullptr), 0);
    std::vector<int> crowd = crowd_at(meeting.directory(), 4 * few);
    EXPECT_GT(crowd.size(), few);
    for (int rounds = 0; rounds < 10; rounds++) {
        earlier.work();
    }
    for (const int one : crowd) {
        close(one);
    }
    honest_client later(meeting.url());
    later.work();
    earlier.work();
    attacked.signal(SIGTERM);
    const ending end = attacked.end();
    EXPECT_TRUE(end.in_time && end.exit_code == 0) << shown(end);
}

#ifdef RIBKIT_NATS_SERVER
/// Publishes what no handle would: payloads without their head, answers' subjects that are nobody's. Reads nothing.
void publish_nonsense(const std::string &url, size_t messages, std::mt19937 &random) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(std::stoul(url.substr(url.rfind(':') + 1))));
    const int socket = connected(AF_INET, SOCK_STREAM, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    std::string text = "CONNECT {\"verbose\":false}\r\n";
    for (; messages > 0; messages--) {
        const std::string payload = noise(random, random() % 2 == 0 ? 13 : 2000);
        const char *subject = random() % 2 == 0 ? "rib.fe000001.25 " : "rib.fe000001.25.x ";
        const char *reply = random() % 2 == 0 ? "" : random() % 2 == 0 ? "no.body.99999999999 " : "rib.fe000001.25 ";
        text += std::string("PUB ") + subject + reply + std::to_string(payload.size()) + "\r\n" + payload + "\r\n";
    }
    for (size_t sent = 0; sent < text.size();) {
        const ssize_t part = send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        ASSERT_GT(part, 0);
        sent += static_cast<size_t>(part);
    }
    close(socket);
}

TEST(hostile_publisher, talks_nonsense) {
    const quiet silence{stderr};
    const bus meeting(transport::server);
    rib attacked(transport::server, meeting.url());
    std::mt19937 random(1);
    withstand(meeting.url(), [&] { publish_nonsense(meeting.url(), times(3000), random); });
    attacked.stop();
}
#endif

} // namespace
} // namespace ribkit::fuzz
