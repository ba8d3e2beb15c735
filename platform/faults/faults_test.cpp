// What a fault script does to calls and messages, and that a run goes the same way twice.
#include "platform/clock.h"
#include "platform/faults/fault_fixture.h"
#include "testing/capture.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <vector>

namespace ribkit::platform {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST_F(faulty, files_that_cannot_be_read_or_parsed) {
    char error[100] = "";
    EXPECT_EQ(error_of(qip_faults_load("/no/such/file", error, sizeof error)), EINVAL);
    EXPECT_STREQ(error, "/no/such/file: cannot be read: No such file or directory");
    EXPECT_EQ(error_of(qip_faults_load("/tmp", error, sizeof error)), EINVAL);
    EXPECT_STREQ(error, "/tmp: cannot be read: Is a directory");
    char cut[4] = "";
    EXPECT_EQ(error_of(qip_faults_load("/no/such/file", cut, sizeof cut)), EINVAL);
    EXPECT_STREQ(cut, "/no");
    EXPECT_EQ(load_script("seed 1\nfly\n"), ":2: no such event: fly");
}

TEST_F(faulty, a_script_that_is_refused_leaves_the_one_before) {
    load("fail send 1 EIO");
    EXPECT_EQ(load_script("fail send 1 EAGAIN\nfly\n"), ":2: no such event: fly");
    EXPECT_EQ(send_text(client, "first"), EIO);
}

TEST_F(faulty, a_script_takes_the_place_of_the_one_before) {
    load("fail send every 1 EIO\nclock virtual");
    EXPECT_EQ(send_text(client, "first"), EIO);
    load("fail send 2 EAGAIN");
    EXPECT_EQ(send_text(client, "first again"), 0);
    EXPECT_EQ(send_text(client, "second"), EAGAIN);
    EXPECT_GT(clock_now().time_since_epoch(), seconds{0}); // and not virtual any more
    EXPECT_GT(qip_now(), 0U);
}

TEST_F(faulty, a_script_is_replaced_while_it_is_asked) {
    std::atomic<bool> ended{false};
    std::atomic<int> failed{0};
    std::thread busy{[&] {
        while (!ended) {
            const int error = send_text(client, "?", nullptr, {3, 3});
            EXPECT_TRUE(error == EIO || error == EAGAIN || error == ENOTCONN) << error;
            failed += error == EIO ? 1 : 0;
        }
    }};
    for (int turn = 0; turn < 100 || failed == 0; ++turn) {
        load("fail send every 1 EIO");
        load("fail send every 1 EAGAIN");
        EXPECT_EQ(load_script(nullptr), "");
    }
    ended = true;
    busy.join();
}

TEST_F(faulty, what_is_done_to_messages_is_in_the_history) {
    yelk_hist_clear();
    load("drop 1\nduplicate 2\nreorder 3\ndelay 4 1\ntruncate 5 1\nclock virtual");
    for (int count = 0; count < 5; ++count) {
        ASSERT_EQ(send_at_once(client, "text"), 0);
        static_cast<void>(incoming());
    }
    const std::string history = ribkit::testing::printed_by(yelk_hist_print);
    for (const char *done : {"lost", "twice", "behind the next", "late", "truncated"}) {
        EXPECT_NE(history.find(std::string{"fault: message "} + done + "\n"), std::string::npos) << done;
    }
    yelk_hist_clear();
}

TEST_F(faulty, a_virtual_clock_needs_no_time) {
    load("clock virtual\n");
    const qip_recv_opts hour{{QIP_RECV_BY_TOKEN, 0, 3600, ask("never answered")}};
    const time_point before = clock_now();
    EXPECT_EQ(taken(client, hour), refused(ETIMEDOUT));
    EXPECT_EQ(clock_now() - before, seconds{3600});
    EXPECT_EQ(taken(client, within(7)), refused(ETIMEDOUT));
    EXPECT_EQ(clock_now() - before, seconds{3600} + milliseconds{7});
    EXPECT_EQ(qip_now(), 3600'007'000U);
}

TEST_F(faulty, who_steps_aside_under_a_virtual_clock_lets_the_others_on) {
    load("clock virtual\n");
    EXPECT_EQ(incoming(), refused(EAGAIN)); // from here on it is this thread's turn
    std::atomic<bool> called{false};
    std::thread other{[&] {
        EXPECT_EQ(taken(client, now(QIP_RECV_INCOMING)), refused(EAGAIN));
        called = true;
    }};
    qip_step_aside();
    const auto limit = std::chrono::steady_clock::now() + seconds{20};
    while (!called && std::chrono::steady_clock::now() < limit) { // awake all the time: its turn would not be lost
    }
    EXPECT_TRUE(called);
    other.join();
    EXPECT_EQ(incoming(), refused(EAGAIN));
}

TEST_F(faulty, a_pause_takes_its_time_by_the_virtual_clock) {
    load("clock virtual\n");
    ASSERT_EQ(send_text(client, "there"), 0);
    const time_point before = clock_now();
    qip_pause(3'600'000);
    EXPECT_EQ(clock_now() - before, seconds{3600});
    EXPECT_EQ(incoming(), "there");
}

TEST_F(faulty, a_pause_takes_its_time_by_the_real_clock) {
    const uint64_t before = qip_now();
    qip_pause(5);
    EXPECT_GE(qip_now() - before, 5000U);
}

TEST_F(faulty, no_time_passes_without_a_thread_that_takes_part) {
    load("clock virtual\n");
    EXPECT_EQ(incoming(), refused(EAGAIN)); // from here on it is this thread's turn
    std::atomic<bool> takes_part{false};
    std::string taken_first;
    std::thread other{[&] {
        qip_take_part();
        takes_part = true;
        taken_first = taken(server, within(10)); // only with its turn, before any time has passed
    }};
    while (!takes_part) {
        std::this_thread::yield();
    }
    ASSERT_EQ(send_text(client, "early"), 0);
    const time_point before = clock_now();
    while (taken_first.empty()) { // it is written by who has the turn
        qip_pause(1);
    }
    EXPECT_EQ(taken_first, "early");
    EXPECT_EQ(clock_now() - before, milliseconds{1});
    other.join();
}

TEST_F(faulty, a_late_message_arrives_in_its_turn) {
    load("clock virtual\ndelay 1 250\ndelay 2 100\n");
    const time_point before = clock_now();
    for (const char *text : {"latest", "late", "at once"}) {
        ASSERT_EQ(send_text(client, text), 0);
    }
    EXPECT_EQ(incoming(), "at once");
    EXPECT_EQ(incoming(), refused(EAGAIN));
    EXPECT_EQ(taken(server, within(99)), refused(ETIMEDOUT));
    EXPECT_EQ(taken(server, within(99)), "late");
    EXPECT_EQ(clock_now() - before, milliseconds{100});
    EXPECT_EQ(taken(server, within(1000)), "latest");
    EXPECT_EQ(clock_now() - before, milliseconds{250});
}

TEST_F(faulty, what_is_late_goes_with_its_clock) {
    load("clock virtual\ndelay 1 20");
    ASSERT_EQ(send_text(client, "late"), 0);
    load("clock virtual");
    EXPECT_EQ(taken(server, within(100)), refused(ETIMEDOUT));
}

TEST_F(faulty, who_is_at_work_keeps_its_turn) {
    load("clock virtual");
    const time_point end = std::chrono::steady_clock::now() + milliseconds{400};
    ASSERT_EQ(send_text(client, "first"), 0);
    std::thread other{[this] { EXPECT_EQ(send_text(client, "other's"), 0); }};
    while (std::chrono::steady_clock::now() < end) {
    }
    ASSERT_EQ(send_text(client, "second"), 0);
    other.join();
    for (const char *text : {"first", "second", "other's"}) {
        EXPECT_EQ(incoming(), text);
    }
}

TEST_F(faulty, turns_are_taken_in_the_order_in_which_waits_ended) {
    load("clock virtual");
    const qip_addr addresses[] = {{1, 1}, {2, 2}, {3, 3}};
    std::vector<uint32_t> handles;
    std::string order; // one thread at a time
    const auto note_one = [&order](uint32_t handle) { order += taken(handle, within(0)); };
    {
        std::list<server_thread> threads;
        for (const qip_addr &address : addresses) {
            uint32_t handle = 0;
            ASSERT_EQ(qip_open(url.c_str(), &handle), 0);
            ASSERT_EQ(qip_listen(handle, &address, 1), 0);
            threads.emplace_back(handle, note_one);
            handles.push_back(handle);
        }
        EXPECT_EQ(taken(client, within(1)), refused(ETIMEDOUT)); // once all of them wait
        for (const int next : {1, 2, 0}) {
            ASSERT_EQ(send_text(client, std::to_string(next), nullptr, addresses[next]), 0);
        }
    }
    EXPECT_EQ(order, "120");
    std::for_each(handles.begin(), handles.end(), qip_close);
}

TEST_F(faulty, who_waits_for_something_else_stops_nobody) {
    load("clock virtual");
    ASSERT_EQ(send_text(client, "first"), 0);
    std::thread other{[this] { EXPECT_EQ(send_text(client, "other's"), 0); }};
    other.join();
    EXPECT_EQ(incoming(), "first");
    EXPECT_EQ(incoming(), "other's");
}

TEST_F(faulty, a_late_message_for_a_closed_handle_is_thrown_away) {
    load("clock virtual\ndelay every 1 20\n");
    ASSERT_EQ(send_text(client, "late"), 0);
    qip_close(server);
    EXPECT_EQ(taken(client, within(100)), refused(ETIMEDOUT));
}

/// A client and a server under a script: when each request ended, and how.
class transcripts : public faulty {
  protected:
    std::string run(int requests) {
        SetUp();
        load("seed 9\nclock virtual\ndrop one-in 10\ndelay one-in 7 300\nduplicate one-in 9\nreorder one-in 12\n"
             "truncate one-in 8 3\nfail send one-in 20 EAGAIN\nfail recv one-in 30 EIO\nfail drop one-in 15 EBADF\n");
        std::string text;
        {
            const server_thread serving{server, serve_all};
            for (int number = 0; number < requests; ++number) {
                text += one_request(std::to_string(number));
            }
            qip_faults_load(nullptr, nullptr, 0);
            qip_close(server);
        }
        TearDown();
        return text;
    }

    static void serve_all(uint32_t handle) {
        qip_ref asked{};
        for (;;) {
            if (qip_recv(handle, &asked, nullptr) == 0) {
                answer_text(handle, asked, text_of(asked) + "!");
                qip_drop(handle, &asked);
            } else if (errno == ECANCELED || errno == EBADF) {
                return;
            }
        }
    }

    [[nodiscard]] std::string one_request(const std::string &question) const {
        qip_ref sent{};
        std::string result;
        if (const int error = send_text(client, question, &sent); error != 0) {
            result = "not sent " + std::to_string(error);
        } else {
            const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 1, qip_rr_token_get(&sent)}};
            qip_drop(client, &sent);
            qip_ref answer{};
            const int missing = error_of(qip_recv(client, &answer, &opts));
            result = missing != 0 ? refused(missing) : text_of(answer);
            qip_drop(client, &answer);
        }
        const auto at = std::chrono::duration_cast<milliseconds>(clock_now().time_since_epoch()).count();
        return std::to_string(at) + " " + question + ": " + result + "\n";
    }
};

TEST_F(transcripts, are_the_same_twice) {
    TearDown();
    const std::string first = run(300);
    EXPECT_EQ(run(300), first);
    for (const char *part : {": not sent 11\n", ": errno 110\n", ": errno 5\n", " 7: 7!\n"}) {
        EXPECT_NE(first.find(part), std::string::npos) << part << "\n" << first;
    }
    SetUp();
}

} // namespace

} // namespace ribkit::platform
