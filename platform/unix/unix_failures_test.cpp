// System calls and memory that fail among processes of one machine: the caller hears which error it was, nothing stays
// behind in the directory or in the process, and the next try succeeds.
#include "platform/unix/unix_fixture.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include "testing/intercepted_call.h"

#include <cstdio>

namespace ribkit::platform {

namespace {

using testing::failing_allocation;
using testing::intercepted_call;

constexpr qip_addr group{0xfe000000, 0};

struct failure {
    const char *call;
    int error;
};

class unix_failures : public ::testing::Test {
  protected:
    void TearDown() override {
        yelk_hist_clear();
        EXPECT_EQ(qip_refs_held(), 0U);
    }

    /// What is left when nothing is open.
    [[nodiscard]] size_t descriptors() const { return entries("/proc/self/fd"); }

    testing::temporary_directory home;
    std::string directory = home.file("bus");
    std::string url = "unix:" + directory;
};

TEST_F(unix_failures, of_an_opening_are_told) {
    const size_t before = descriptors();
    for (const auto &[call, error] :
         {failure{"epoll_create1", EMFILE}, {"timerfd_create", ENFILE}, {"eventfd", ENOMEM}, {"epoll_ctl", ENOSPC}}) {
        uint32_t handle = 0;
        {
            const intercepted_call failing{call, error};
            EXPECT_EQ(error_of(qip_open(url.c_str(), &handle)), error) << call;
        }
        EXPECT_EQ(handle, 0U) << call;
        EXPECT_EQ(descriptors(), before) << call;
    }
    EXPECT_EQ(qip_close(opened(url)), 0);
}

TEST_F(unix_failures, of_a_listen_are_told_and_leave_the_address_free) {
    const uint32_t server = opened(url);
    const uint32_t client = opened(url);
    for (const auto &[call, error] : {failure{"mkdir", EROFS},
                                      {"flock", ENOLCK},
                                      {"fstat64", EIO},
                                      {"ftruncate64", EIO},
                                      {"pwrite64", ENOSPC},
                                      {"socket", EMFILE},
                                      {"bind", ENOSPC},
                                      {"listen", ENOBUFS},
                                      {"renameat", EIO},
                                      {"epoll_ctl", ENOSPC}}) {
        const size_t before = descriptors();
        {
            const intercepted_call failing{call, error};
            EXPECT_EQ(error_of(qip_listen(server, &rib, rib_bound)), error) << call;
        }
        EXPECT_EQ(descriptors(), before) << call;
        EXPECT_EQ(send_text(client, "?"), ENOTCONN) << call;
    }
    EXPECT_EQ(error_of(qip_listen(server, &rib, rib_bound)), 0);
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
    EXPECT_EQ(entries(directory), 0U);
}

// The one who held the name before removes it while we lock its file, and another takes it.
TEST_F(unix_failures, a_lock_on_a_file_that_is_gone_is_none) {
    const uint32_t server = opened(url);
    const std::string lock = directory + "/fe000001.25.lock";
    int turn = 0;
    {
        const intercepted_call racing{"flock", [&] {
                                          turn++;
                                          if (turn < 3) {
                                              std::filesystem::remove(lock);
                                          }
                                          if (turn == 2) {
                                              std::fclose(std::fopen(lock.c_str(), "w"));
                                          }
                                          return 0;
                                      }};
        EXPECT_EQ(error_of(qip_listen(server, &rib, rib_bound)), 0);
    }
    EXPECT_EQ(turn, 3);
    const uint32_t client = opened(url);
    EXPECT_EQ(error_of(qip_listen(client, &rib, rib_bound)), EADDRINUSE) << "it is locked";
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_failures, of_a_send_are_told_and_the_next_one_arrives) {
    const uint32_t server = listening(url);
    EXPECT_EQ(error_of(qip_listen(server, &group, rib_bound)), 0);
    for (const auto &[call, error] : {failure{"socket", EMFILE}, {"connect", EPERM}, {"sendmsg", EIO}}) {
        const uint32_t client = opened(url);
        {
            const intercepted_call failing{call, error};
            EXPECT_EQ(send_text(client, "?"), error) << call;
        }
        EXPECT_EQ(exchanged(client, server), "question!") << call;
        EXPECT_EQ(qip_close(client), 0);
    }
    const uint32_t client = opened(url);
    {
        const intercepted_call failing{"opendir", EMFILE};
        EXPECT_EQ(send_text(client, "?", nullptr, group), EMFILE);
    }
    EXPECT_EQ(send_text(client, "news", nullptr, group), 0);
    EXPECT_EQ(taken(server, within(60000)), "news");
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_failures, a_listener_that_is_gone_again_and_again_is_not_there) {
    const uint32_t server = listening(url);
    const uint32_t client = opened(url);
    {
        const intercepted_call failing{"sendmsg", EPIPE, 3};
        EXPECT_EQ(send_text(client, "?"), ENOTCONN);
        EXPECT_EQ(intercepted_call::calls(), 3);
    }
    {
        const intercepted_call failing{"sendmsg", ECONNRESET, 2};
        EXPECT_EQ(send_text(client, "third time"), 0);
    }
    EXPECT_EQ(taken(server, within(60000)), "third time");
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_failures, a_member_that_cannot_be_reached_keeps_no_other_waiting) {
    const uint32_t members[] = {listening(url, rib_bound, group), listening(url, rib_bound, group)};
    const uint32_t client = opened(url);
    yelk_hist_clear();
    {
        const intercepted_call failing{"connect", EPERM};
        EXPECT_EQ(send_text(client, "news", nullptr, group), 0);
    }
    EXPECT_NE(testing::printed_by(yelk_hist_print).find("unix: a listener of a group cannot be reached"),
              std::string::npos);
    EXPECT_EQ(send_text(client, "more", nullptr, group), 0);
    std::string heard;
    for (const uint32_t one : members) {
        for (std::string text = taken(one, within(60000)); text != refused(EAGAIN);
             text = taken(one, now(QIP_RECV_INCOMING))) {
            heard.append(text).append(" ");
        }
        EXPECT_EQ(qip_close(one), 0);
    }
    EXPECT_TRUE(heard == "news more more " || heard == "more news more ") << heard;
    EXPECT_EQ(qip_close(client), 0);
}

TEST_F(unix_failures, what_a_signal_interrupts_goes_on) {
    const uint32_t server = listening(url);
    for (const char *call : {"sendmsg", "recv", "accept4"}) {
        const uint32_t client = opened(url);
        const intercepted_call interrupted{call, EINTR};
        EXPECT_EQ(exchanged(client, server), "question!") << call;
        EXPECT_GT(intercepted_call::calls(), 1) << call;
        EXPECT_EQ(qip_close(client), 0);
    }
    const uint32_t client = opened(url);
    const intercepted_call hung_up{"accept4", ECONNABORTED}; // before it was accepted
    EXPECT_EQ(exchanged(client, server), "question!");
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
}

TEST_F(unix_failures, who_cannot_be_accepted_now_is_accepted_later) {
    const uint32_t server = listening(url);
    for (const int error : {EMFILE, ENFILE, ENOMEM}) {
        const uint32_t client = opened(url);
        const intercepted_call failing{"accept4", error};
        EXPECT_EQ(exchanged(client, server), "question!") << error;
        EXPECT_EQ(qip_close(client), 0);
    }
    EXPECT_EQ(qip_close(server), 0);
}

// Nobody is served whose name is not known; its next connection is.
TEST_F(unix_failures, who_is_not_known_is_cut_off) {
    for (const auto &[call, error] :
         {failure{"getsockopt", ENOBUFS}, {"fopen64", ENFILE}, {"fopen64", ENOMEM}, {"fopen64", EMFILE}}) {
        const uint32_t server = listening(url);
        {
            const intercepted_call failing{call, error};
            const raw_peer peer{directory + "/fe000001.25"};
            ASSERT_EQ(peer.error(), 0);
            EXPECT_TRUE(peer.is_cut_off()) << call;
        }
        const uint32_t client = opened(url);
        EXPECT_EQ(exchanged(client, server), "question!") << call;
        EXPECT_EQ(qip_close(client), 0);
        EXPECT_EQ(qip_close(server), 0);
    }
}

// The endpoints' own threads are met, too: whose message it was is told, or hears nothing more.
TEST_F(unix_failures, each_allocation_in_turn) {
    const uint32_t server = listening(url);
    EXPECT_EQ(error_of(qip_listen(server, &group, rib_bound)), 0);
    const uint32_t client = opened(url);
    const std::string large(100000, 'x');
    bool happened = true;
    int tries = 0;
    for (; happened && tries < 1000; ++tries) {
        int error = 0;
        int told = 0;
        {
            const failing_allocation failing{static_cast<size_t>(tries) + 1};
            qip_ref sent{};
            error = error_of(
                qip_send(client, &rib, 7, large.data(), static_cast<uint32_t>(large.size()), &sent, nullptr, nullptr));
            qip_ref asked{};
            const qip_recv_opts soon = now(QIP_RECV_INCOMING);
            while (error_of(qip_recv(server, &asked, &soon)) == 0) {
                qip_send(server, &rib, 0, "!", 1, nullptr, &asked, nullptr);
                qip_drop(server, &asked);
            }
            const qip_recv_opts at_once = now(QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent));
            if (error == 0 && qip_recv(client, &asked, &at_once) == 0) {
                qip_drop(client, &asked);
            }
            if (error == 0) {
                qip_drop(client, &sent);
            }
            told = error_of(qip_send(client, &group, 7, "?", 1, nullptr, nullptr, nullptr));
            happened = failing.happened();
        }
        EXPECT_TRUE(error == 0 || error == ENOMEM || error == ENOTCONN) << error;
        EXPECT_TRUE(told == 0 || told == ENOMEM) << told;
        while (taken(server, now(QIP_RECV_INCOMING)) != refused(EAGAIN)) {
        }
        while (taken(client, now(QIP_RECV_ANY_ANSWER)) != refused(EAGAIN)) {
        }
        ASSERT_EQ(qip_refs_held(), 0U);
        std::string answer;
        for (int attempt = 0; answer != "question!" && attempt < 3; ++attempt) { // what was cut off is found first
            answer = exchanged(client, server);
        }
        ASSERT_EQ(answer, "question!") << tries;
    }
    EXPECT_GT(tries, 10);
    EXPECT_LT(tries, 1000);
    EXPECT_EQ(qip_close(client), 0);
    EXPECT_EQ(qip_close(server), 0);
}

} // namespace

} // namespace ribkit::platform
