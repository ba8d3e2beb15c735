// Peers that mean harm: after each of them an honest request is answered.
#include "platform/unix/unix_fixture.h"
#include "testing/capture.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <optional>
#include <sys/resource.h>

namespace ribkit::platform {

namespace {

class hostile_peers : public on_one_bus {
  protected:
    void TearDown() override {
        EXPECT_EQ(exchanged(client, server), "question!");
        on_one_bus::TearDown();
        yelk_hist_clear();
    }

    [[nodiscard]] raw_peer connected() const {
        raw_peer peer{home.file("bus") + "/fe000001.25"};
        EXPECT_EQ(peer.error(), 0);
        return peer;
    }
};

TEST_F(hostile_peers, who_sends_no_whole_head_is_cut_off) {
    for (size_t size = 1; size < packet_head_size; ++size) {
        const raw_peer peer = connected();
        head_bytes bytes = bytes_of({.kind = packet_kind::message});
        EXPECT_TRUE(peer.send(std::span{bytes}.first(size)));
        EXPECT_TRUE(peer.is_cut_off()) << size;
    }
}

TEST_F(hostile_peers, who_sends_what_is_no_message_is_cut_off) {
    for (uint32_t kind = 0; kind < 256; ++kind) {
        const bool may_come =
            kind == static_cast<uint32_t>(packet_kind::message) || kind == static_cast<uint32_t>(packet_kind::gap);
        if (!may_come) {
            const raw_peer peer = connected();
            EXPECT_TRUE(peer.send({.kind = static_cast<packet_kind>(kind)}));
            EXPECT_TRUE(peer.is_cut_off()) << kind;
        }
    }
    const packet_head heads[] = {
        {.kind = packet_kind::message, .room = 1},
        {.kind = packet_kind::message, .size = 1},
        {.kind = packet_kind::message, .size = largest_message + 1},
        {.kind = packet_kind::message, .size = 0xffffffff},
    };
    for (const packet_head &head : heads) {
        const raw_peer peer = connected();
        EXPECT_TRUE(peer.send(head));
        EXPECT_TRUE(peer.is_cut_off()) << head.size;
    }
    const raw_peer longer = connected();
    EXPECT_TRUE(longer.send({.kind = packet_kind::gap}, 1));
    EXPECT_TRUE(longer.is_cut_off());
    EXPECT_EQ(qip_reconnections(server), 0U);
}

// Whoever sends to such a listener is told that it is gone.
TEST_F(hostile_peers, listeners_that_break_the_rules_are_left) {
    const qip_addr other{2, 2};
    const std::string path = home.file("bus") + "/00000002.2";
    const std::pair<packet_head, size_t> rows[] = {{{.kind = packet_kind::message}, 0},
                                                   {{.kind = packet_kind::gap}, 0},
                                                   {{.kind = packet_kind::gap}, 1},
                                                   {{.kind = packet_kind::room, .room = 1}, 1},
                                                   {{.kind = packet_kind::refusal}, 1},
                                                   {{.kind = packet_kind::answer, .size = 5}, 1},
                                                   {{.kind = packet_kind::piece, .size = 1}, 1}};
    for (const auto &[head, payload] : rows) {
        const raw_listener there{path};
        qip_ref sent{};
        ASSERT_EQ(send_text(client, "?", &sent, other), 0);
        const uint32_t token = qip_rr_token_get(&sent);
        qip_drop(client, &sent);
        const raw_peer peer = there.accepted();
        EXPECT_EQ(peer.packet().size(), packet_head_size + 1);
        EXPECT_TRUE(peer.send(head, payload));
        EXPECT_EQ(taken(client, within(60000, QIP_RECV_BY_TOKEN, token)), refused(ECONNRESET));
        EXPECT_TRUE(peer.is_cut_off());
    }
}

TEST_F(hostile_peers, a_listener_says_why_it_refuses) {
    const qip_addr other{2, 2};
    const std::string path = home.file("bus") + "/00000002.2";
    for (const auto &[said, told] : {std::pair{EACCES, EACCES}, {ENOBUFS, ENOBUFS}, {EPERM, ENOBUFS}}) {
        const raw_listener there{path};
        qip_ref sent{};
        ASSERT_EQ(send_text(client, "?", &sent, other), 0);
        const uint32_t token = qip_rr_token_get(&sent);
        qip_drop(client, &sent);
        EXPECT_TRUE(there.accepted().send({.kind = packet_kind::refusal, .opcode = static_cast<uint32_t>(said)}));
        EXPECT_EQ(taken(client, within(60000, QIP_RECV_BY_TOKEN, token)), refused(told));
    }
}

// What a listener has room for stands in its lock file, where anything may stand.
TEST_F(hostile_peers, without_a_bound_there_is_room_for_one) {
    const qip_addr other{2, 2};
    const std::string path = home.file("bus") + "/00000002.2";
    for (const char *bound : {"", "many", "0", "-7"}) {
        const raw_listener there{path};
        std::ofstream{path + ".lock"} << bound;
        const uint32_t sending = opened(url);
        EXPECT_EQ(send_at_once(sending, "first", other), 0) << bound;
        EXPECT_EQ(send_at_once(sending, "second", other), EAGAIN) << bound;
        EXPECT_EQ(qip_close(sending), 0);
    }
    std::filesystem::remove(path + ".lock");
    const raw_listener there{path};
    EXPECT_EQ(send_at_once(client, "first", other), 0);
    EXPECT_EQ(send_at_once(client, "second", other), EAGAIN);
}

TEST_F(hostile_peers, who_cannot_connect_yet_waits_until_he_can) {
    const qip_addr other{2, 2};
    const std::string path = home.file("bus") + "/00000002.2";
    const raw_listener there{path, 0};
    const raw_peer first{path}; // nobody else may wait to be accepted
    ASSERT_EQ(first.error(), 0);
    EXPECT_EQ(send_at_once(client, "?", other), EAGAIN);
    std::thread sending{[&] { EXPECT_EQ(send_text(client, "?", nullptr, other), 0); }};
    std::this_thread::sleep_for(std::chrono::milliseconds(30)); // it is likely to have been refused then
    const raw_peer accepted = there.accepted();
    const raw_peer second = there.accepted();
    EXPECT_EQ(second.packet().size(), packet_head_size + 1);
    sending.join();
}

TEST_F(hostile_peers, a_listener_that_reads_nothing_keeps_nobody_after_its_end) {
    const qip_addr other{2, 2};
    const std::string path = home.file("bus") + "/00000002.2";
    const std::string large(5 << 20, 'x');
    std::optional<raw_listener> ends{path};
    std::thread sending{[&] { EXPECT_EQ(send_text(client, large, nullptr, other), ENOTCONN); }};
    const raw_peer peer = ends->accepted();
    EXPECT_EQ(peer.packet().size(), packet_size);
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // it is likely to wait for room then
    ends.reset();
    shutdown(peer.socket(), SHUT_RDWR);
    sending.join();
    const raw_listener there{path};
    uint32_t handle = 0;
    closed_while([&] { return send_text(handle, large, nullptr, other); }, [&] { handle = opened(url); },
                 [&] { qip_close(handle); }, ECANCELED);
}

TEST_F(hostile_peers, what_waits_to_be_sent_at_the_close_is_sent) {
    const raw_listener there{home.file("bus") + "/00000002.2"};
    constexpr size_t size = 5 << 20;
    const uint32_t sending = opened(url);
    ASSERT_EQ(send_at_once(sending, std::string(size, 'x'), {2, 2}), 0);
    std::thread closing{[sending] { EXPECT_EQ(qip_close(sending), 0); }};
    const raw_peer peer = there.accepted();
    size_t arrived = 0;
    for (size_t packet = peer.packet().size(); packet != 0; packet = peer.packet().size()) {
        arrived += packet - packet_head_size;
    }
    closing.join();
    EXPECT_EQ(arrived, size);
}

TEST_F(hostile_peers, who_breaks_a_message_into_wrong_pieces_is_cut_off) {
    const auto first = [](const raw_peer &peer) {
        return peer.send({.kind = packet_kind::message, .size = 2 * piece_size + 1}, piece_size);
    };
    const std::pair<packet_head, size_t> seconds[] = {
        {{.kind = packet_kind::piece, .size = piece_size}, piece_size - 1},
        {{.kind = packet_kind::piece, .size = piece_size - 1}, piece_size},
        {{.kind = packet_kind::piece, .size = 2 * piece_size}, 1},
        {{.kind = packet_kind::message, .size = 0}, 0},
    };
    for (const auto &[head, payload] : seconds) {
        const raw_peer peer = connected();
        EXPECT_TRUE(first(peer));
        EXPECT_TRUE(peer.send(head, payload));
        EXPECT_TRUE(peer.is_cut_off());
    }
    const raw_peer longer = connected();
    EXPECT_TRUE(longer.send(std::vector<uint8_t>(packet_size + 1, 1)));
    EXPECT_TRUE(longer.is_cut_off());
}

size_t address_space_pages() {
    size_t pages = 0;
    std::ifstream{"/proc/self/statm"} >> pages;
    return pages;
}

TEST_F(hostile_peers, what_is_announced_takes_no_memory_before_it_comes) {
    EXPECT_EQ(exchanged(client, server), "question!");
    const size_t before = address_space_pages();
    std::vector<raw_peer> peers;
    for (int count = 0; count < 60; ++count) { // 3.8 GB, announced
        peers.push_back(connected());
        EXPECT_TRUE(peers.back().send({.kind = packet_kind::message, .size = largest_message}, piece_size));
    }
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_LT(address_space_pages() - before, (size_t{256} << 20) / 4096);
}

TEST_F(hostile_peers, messages_that_are_never_finished_make_room_for_others) {
    constexpr size_t crowd = 5;
    const auto send_most = [](const raw_peer &peer) {
        bool sent = peer.send({.kind = packet_kind::message, .size = largest_message}, piece_size);
        for (uint32_t done = piece_size; sent && done + piece_size < largest_message; done += piece_size) {
            sent = peer.send({.kind = packet_kind::piece, .size = done}, piece_size);
        }
        return sent;
    };
    std::vector<raw_peer> peers;
    for (size_t count = 0; count < crowd; ++count) {
        peers.push_back(connected());
    }
    for (const size_t one : {2, 0, 1, 4, 3}) { // not in the order in which they came
        EXPECT_TRUE(send_most(peers[one])) << one;
    }
    EXPECT_TRUE(peers[2].is_cut_off()) << "it has waited longest";
    EXPECT_TRUE(peers[3].send({.kind = packet_kind::gap})) << "it is still there";
    std::thread sending{[this] { EXPECT_EQ(send_text(client, std::string(10 << 20, 'x')), 0); }};
    EXPECT_EQ(taken(server, within(60000)).size(), size_t{10 << 20});
    sending.join();
}

TEST_F(hostile_peers, descriptors_are_not_taken) {
    const raw_peer peer = connected();
    EXPECT_EQ(exchanged(client, server), "question!");
    const size_t before = entries("/proc/self/fd");
    for (int count = 0; count < 3; ++count) {
        head_bytes bytes = bytes_of({.kind = packet_kind::message});
        iovec part{bytes.data(), bytes.size()};
        std::array<uint8_t, CMSG_SPACE(sizeof(int))> control{};
        msghdr packet{};
        packet.msg_iov = &part;
        packet.msg_iovlen = 1;
        packet.msg_control = control.data();
        packet.msg_controllen = control.size();
        cmsghdr *passed = CMSG_FIRSTHDR(&packet);
        passed->cmsg_level = SOL_SOCKET;
        passed->cmsg_type = SCM_RIGHTS;
        passed->cmsg_len = CMSG_LEN(sizeof(int));
        const int own = peer.socket();
        std::memcpy(CMSG_DATA(passed), &own, sizeof own);
        EXPECT_GE(sendmsg(peer.socket(), &packet, MSG_NOSIGNAL), 0);
        EXPECT_EQ(taken(server, within(60000)), "");
    }
    EXPECT_EQ(entries("/proc/self/fd"), before);
}

TEST_F(hostile_peers, who_does_not_read_answers_is_cut_off_and_stops_nobody) {
    const raw_peer peer = connected();
    const std::string large(1 << 20, 'x');
    std::atomic<int> answered{0};
    std::thread asking{[&] {
        while (peer.send({.kind = packet_kind::message, .token = 1})) {
        }
    }};
    for (bool cut = false; !cut; ++answered) {
        qip_ref asked{};
        const qip_recv_opts soon = within(1000);
        cut = qip_recv(server, &asked, &soon) != 0;
        if (!cut) {
            EXPECT_EQ(answer_text(server, asked, large), 0);
            qip_drop(server, &asked);
        }
        ASSERT_LT(answered, 1000);
    }
    asking.join();
    EXPECT_GT(answered, 8);
}

TEST_F(hostile_peers, who_sends_more_than_there_is_room_for_waits) {
    const raw_peer peer = connected();
    int sent = 0;
    while (sent < 100000 && peer.send({.kind = packet_kind::message, .size = 100}, 100, MSG_DONTWAIT)) {
        ++sent;
    }
    EXPECT_LT(sent, 100000);
    EXPECT_EQ(send_at_once(client, "honest"), 0);
    std::string text;
    for (int left = sent; text != "honest" && left != 0; --left) {
        text = taken(server, within(60000));
    }
    EXPECT_EQ(text, "honest");
    for (std::string rest = "some"; rest != refused(EAGAIN);) {
        rest = taken(server, now(QIP_RECV_INCOMING));
    }
}

TEST_F(hostile_peers, connections_of_one_process_are_bounded) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const size_t most = std::min<size_t>(1024, limit.rlim_cur / 2) / 4;
    std::vector<raw_peer> peers;
    for (size_t count = 0; count < most; ++count) {
        peers.push_back(connected());
    }
    const raw_peer one_too_many = connected();
    const std::vector<uint8_t> said = one_too_many.packet();
    packet_head head;
    ASSERT_TRUE(parse_head(said, head));
    EXPECT_EQ(head.kind, packet_kind::refusal);
    EXPECT_EQ(head.opcode, static_cast<uint32_t>(ENOBUFS));
    EXPECT_TRUE(one_too_many.is_cut_off());
    qip_ref sent{};
    const int error = send_text(client, "question", &sent); // which may be faster than the refusal
    EXPECT_EQ(error == 0 ? taken(client, within(60000, QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent))) : refused(error),
              refused(ENOBUFS));
    qip_drop(client, &sent);
    peers.clear();
    for (std::string text; text != "again"; text = taken(server, within(20))) { // once they are seen to be gone
        send_text(client, "again");
    }
    while (taken(server, now(QIP_RECV_INCOMING)) == "again") {
    }
}

/// While it lives the process gets no more descriptors than so many; it keeps those that it has.
class few_descriptors {
  public:
    explicit few_descriptors(rlim_t spare) {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
        const int next = dup(STDERR_FILENO);
        close(next);
        const rlimit now{static_cast<rlim_t>(next) + spare, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &now), 0);
    }
    few_descriptors(const few_descriptors &) = delete;
    few_descriptors &operator=(const few_descriptors &) = delete;
    ~few_descriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

  private:
    rlimit before_{};
};

std::chrono::microseconds processor_time() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return std::chrono::seconds(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           std::chrono::microseconds(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

/// How often the history says it.
size_t said(const std::string &text) {
    const std::string history = ribkit::testing::printed_by(yelk_hist_print);
    size_t count = 0;
    for (size_t at = history.find(text); at != std::string::npos; at = history.find(text, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(hostile_peers, without_descriptors_those_who_are_there_are_served_and_others_wait) {
    using namespace std::chrono_literals;
    for (int round = 0; round < 8; ++round) { // whether we serve or wait when the shortage is found
        EXPECT_EQ(exchanged(client, server), "question!");
        std::vector<raw_peer> crowd(20);
        yelk_hist_clear();
        const auto start = std::chrono::steady_clock::now();
        {
            const few_descriptors none{0};
            for (raw_peer &peer : crowd) {
                peer.connect_to(home.file("bus") + "/fe000001.25");
                ASSERT_EQ(peer.error(), 0);
                ASSERT_TRUE(peer.send({.kind = packet_kind::message, .size = 100}, 100));
            }
            for (int count = 0; count < 50; ++count) {
                ASSERT_EQ(exchanged(client, server), "question!");
            }
            const auto busy = processor_time();
            std::this_thread::sleep_for(250ms);
            EXPECT_LT(processor_time() - busy, 200ms);
        }
        const auto passed = std::chrono::steady_clock::now() - start;
        EXPECT_LE(said("no descriptor for a connection"), static_cast<size_t>(passed / 1s) + 1);
        for (const raw_peer &peer : crowd) {
            EXPECT_EQ(taken(server, within(60000)).size(), 100U) << peer.socket();
        }
        while (taken(server, now(QIP_RECV_INCOMING)) != refused(EAGAIN)) {
        }
    }
}

// The file of users takes a descriptor, too.
TEST_F(hostile_peers, a_name_that_cannot_be_read_now_is_read_later) {
    raw_peer peer;
    {
        const few_descriptors one{1};
        peer.connect_to(home.file("bus") + "/fe000001.25");
        ASSERT_EQ(peer.error(), 0);
        EXPECT_TRUE(peer.is_cut_off());
    }
    ASSERT_EQ(send_text(client, "?"), 0);
    qip_ref asked{};
    const qip_recv_opts soon = within(60000);
    ASSERT_EQ(qip_recv(server, &asked, &soon), 0);
    EXPECT_EQ(qip_sender_name(&asked), own_name());
    EXPECT_EQ(qip_drop(server, &asked), 0);
}

TEST_F(hostile_peers, thousands_of_connections_one_after_the_other) {
    for (int count = 0; count < 10000; ++count) {
        const raw_peer peer = connected();
        if (count % 1000 == 0) {
            ASSERT_EQ(exchanged(client, server), "question!");
        }
    }
}

} // namespace

} // namespace ribkit::platform
