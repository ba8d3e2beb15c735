// Conversations in which each allocation in turn fails: a call then fails with ENOMEM and has done nothing, nothing
// that ended is remembered, every reference comes back, and the bus works afterwards.
#include "platform/faults/fault_fixture.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <thread>

namespace ribkit::platform {

namespace {

using testing::failing_allocation;

constexpr qip_addr group{0xfe000000, 0};
constexpr qip_addr third_party{9, 9};
constexpr uint32_t last_opcode = 99;

bool is_outcome(int error) { return error == 0 || error == ENOMEM; }

// While memory fails nothing of the test's own may allocate.

int receive(uint32_t handle, const qip_recv_opts &opts, qip_ref &ref) {
    return error_of(qip_recv(handle, &ref, &opts));
}

int send(uint32_t handle, const qip_addr &to, qip_ref *ref_out = nullptr) {
    return error_of(qip_send(handle, &to, 7, "?", 1, ref_out, nullptr, nullptr));
}

int send_now(uint32_t handle) {
    static constexpr qip_send_opts at_once{{1, 1}};
    return error_of(qip_send(handle, &rib, 7, "?", 1, nullptr, nullptr, &at_once));
}

int answer(uint32_t handle, const qip_ref &asked) {
    qip_ref answered{};
    const int error = error_of(qip_send(handle, &rib, 0, "!", 1, &answered, &asked, nullptr));
    qip_drop(handle, &answered);
    return error;
}

/// Receives without waiting until nothing is left; how many.
size_t drained(uint32_t handle) {
    size_t count = 0;
    for (qip_ref ref{}; receive(handle, now(QIP_RECV_INCOMING), ref) == 0; ++count) {
        qip_drop(handle, &ref);
    }
    return count;
}

/// Parties of a bus of their own, which has to work when they have been through something.
class parties {
  public:
    parties() {
        for (uint32_t *handle : {&client, &server, &third}) {
            EXPECT_EQ(qip_open("local:memory", handle), 0);
        }
        EXPECT_EQ(qip_listen(server, &rib, rib_bound), 0);
        EXPECT_EQ(qip_listen(third, &third_party, 1), 0);
    }
    parties(const parties &) = delete;
    parties &operator=(const parties &) = delete;
    ~parties() {
        qip_ref sent{};
        EXPECT_EQ(send(client, third_party, &sent), 0);
        const qip_recv_opts opts = now(QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent));
        EXPECT_EQ(qip_drop(client, &sent), 0);
        qip_ref ref{};
        EXPECT_EQ(receive(third, now(QIP_RECV_INCOMING), ref), 0);
        EXPECT_EQ(answer(third, ref), 0);
        EXPECT_EQ(qip_drop(third, &ref), 0);
        EXPECT_EQ(receive(client, opts, ref), 0);
        EXPECT_EQ(qip_drop(client, &ref), 0);
        EXPECT_EQ(qip_refs_held(), 0U);
        for (const uint32_t handle : {client, server, third}) {
            qip_close(handle);
        }
    }

    uint32_t client = 0;
    uint32_t server = 0;
    uint32_t third = 0;
};

/// Has memory fail at the first allocation of `talk`, then at the second, until it needs no more. `prepare` runs before
/// it, `check` afterwards.
template <typename Prepare, typename Talk, typename Check>
void with_each_failing(const Prepare &prepare, const Talk &talk, const Check &check) {
    bool happened = true;
    size_t times = 0;
    for (; happened && times < 1000; ++times) {
        const parties all;
        prepare(all);
        {
            const failing_allocation failing{times + 1};
            talk(all);
            happened = failing.happened();
        }
        check(all);
    }
    EXPECT_GT(times, 1U);
    EXPECT_LT(times, 1000U);
}

template <typename Talk, typename Check> void with_each_failing(const Talk &talk, const Check &check) {
    with_each_failing([](const parties & /*all*/) {}, talk, check);
}

class no_memory : public faulty {};

TEST_F(no_memory, a_request_and_its_answer) {
    std::array<int, 4> errors{};
    with_each_failing(
        [&](const parties &all) {
            errors = {};
            qip_ref sent{};
            errors[0] = send(all.client, rib, &sent);
            const qip_recv_opts opts = within(1, QIP_RECV_BY_TOKEN, qip_rr_token_get(&sent));
            qip_drop(all.client, &sent);
            qip_ref asked{};
            if (errors[0] != 0) {
                return;
            }
            errors[1] = receive(all.server, now(QIP_RECV_INCOMING), asked);
            errors[2] = answer(all.server, asked);
            qip_drop(all.server, &asked);
            errors[3] = receive(all.client, opts, asked);
            qip_drop(all.client, &asked);
        },
        [&](const parties &all) {
            EXPECT_TRUE(is_outcome(errors[0]));
            EXPECT_EQ(errors[1], 0); // room for it was there before
            EXPECT_TRUE(is_outcome(errors[2]));
            EXPECT_EQ(errors[3], errors[2] == 0 ? 0 : ETIMEDOUT);
            EXPECT_EQ(drained(all.server), 0U);
        });
}

TEST_F(no_memory, handles_and_addresses) {
    int open = 0;
    int listen = 0;
    int close = 0;
    with_each_failing(
        [&](const parties & /*all*/) {
            uint32_t handle = 0;
            listen = close = 0;
            open = error_of(qip_open("local:a bus with a name of some length", &handle));
            if (open == 0) {
                listen = error_of(qip_listen(handle, &rib, 1));
                close = error_of(qip_close(handle));
            }
        },
        [&](const parties & /*all*/) {
            EXPECT_TRUE(is_outcome(open));
            EXPECT_TRUE(is_outcome(listen));
            EXPECT_EQ(close, 0);
        });
}

TEST_F(no_memory, all_of_a_group_are_told_or_nobody) {
    int sent = 0;
    with_each_failing(
        [&](const parties &all) {
            for (const uint32_t handle : {all.client, all.server, all.third}) {
                if (qip_listen(handle, &group, 2) != 0) {
                    return;
                }
            }
            sent = send(all.client, group);
            sent = sent == 0 ? send(all.client, group) : sent;
        },
        [&](const parties &all) {
            EXPECT_TRUE(is_outcome(sent));
            const size_t told = drained(all.client);
            EXPECT_EQ(drained(all.server), told);
            EXPECT_EQ(drained(all.third), told);
        });
}

TEST_F(no_memory, a_full_queue) {
    std::array<int, rib_bound + 1> errors{};
    with_each_failing(
        [&](const parties &all) {
            for (int &error : errors) {
                error = send_now(all.client);
            }
        },
        [&](const parties &all) {
            size_t put = 0;
            for (const int error : errors) {
                EXPECT_TRUE(is_outcome(error) || error == EAGAIN);
                put += error == 0 ? 1 : 0;
            }
            EXPECT_EQ(drained(all.server), put);
        });
}

TEST_F(no_memory, messages_that_a_script_disturbs) {
    for (const char *script : {"delay every 1 5", "duplicate every 1", "reorder every 2", "truncate every 1 0",
                               "drop every 3", "delay every 2 5\nduplicate every 2\nreorder every 3"}) {
        for (const char *clock : {"\nclock virtual", ""}) {
            std::array<int, 3> errors{};
            with_each_failing([&](const parties & /*all*/) { load(std::string{script} + clock); },
                              [&](const parties &all) {
                                  for (int &error : errors) {
                                      error = send_now(all.client);
                                  }
                                  qip_ref ref{};
                                  while (receive(all.server, within(10), ref) == 0) {
                                      qip_drop(all.server, &ref);
                                  }
                              },
                              [&](const parties & /*all*/) {
                                  for (const int error : errors) {
                                      EXPECT_TRUE(is_outcome(error) || error == EAGAIN); // doubled, they need more room
                                  }
                                  EXPECT_EQ(load_script(nullptr), "");
                              });
        }
    }
}

/// A thread answers, and waits in between.
void ask_with_a_server_waiting() {
    std::array<int, 3> errors{};
    std::optional<server_thread> serving;
    const auto serve = [](uint32_t handle) {
        uint32_t opcode = 0;
        for (qip_ref asked{}; opcode != last_opcode; qip_drop(handle, &asked)) {
            opcode = qip_recv(handle, &asked, nullptr) == 0 ? qip_opcode_get(&asked) : 0;
            answer(handle, asked);
        }
    };
    with_each_failing([&](const parties &all) { serving.emplace(all.server, serve); },
                      [&](const parties &all) {
                          for (int &error : errors) {
                              qip_ref ref{};
                              error = send(all.client, rib, &ref);
                              const qip_recv_opts opts = within(50, QIP_RECV_BY_TOKEN, qip_rr_token_get(&ref));
                              qip_drop(all.client, &ref);
                              if (error == 0) {
                                  error = receive(all.client, opts, ref);
                                  qip_drop(all.client, &ref);
                              }
                          }
                      },
                      [&](const parties &all) {
                          for (const int error : errors) {
                              EXPECT_TRUE(is_outcome(error) || error == ETIMEDOUT); // it may be the answer that failed
                          }
                          EXPECT_EQ(qip_send(all.client, &rib, last_opcode, "", 0, nullptr, nullptr, nullptr), 0);
                          serving.reset();
                      });
}

TEST_F(no_memory, a_server_that_waits) { ask_with_a_server_waiting(); }

TEST_F(no_memory, a_server_that_waits_in_virtual_time) {
    load("clock virtual");
    ask_with_a_server_waiting();
}

/// A thread sends more than there is room for, and its wait is ended by a close.
void wait_for_room_until_it_is_closed() {
    std::optional<server_thread> sending;
    int last = 0;
    std::atomic<bool> begun{false};
    with_each_failing(
        [&](const parties &all) {
            begun = false;
            sending.emplace(all.client, [&](uint32_t handle) {
                while (!begun) {
                    std::this_thread::yield();
                }
                do {
                    last = send(handle, rib);
                } while (is_outcome(last));
            });
        },
        [&](const parties &all) {
            begun = true;
            for (uint32_t count = 0; count < 2 * rib_bound; ++count) {
                qip_ref ref{};
                receive(all.server, within(50), ref);
                qip_drop(all.server, &ref);
            }
            qip_close(all.server);
            sending.reset(); // in virtual time it runs only now
        },
        [&](const parties & /*all*/) { EXPECT_EQ(last, ENOTCONN); });
}

TEST_F(no_memory, a_sender_that_waits_for_room) { wait_for_room_until_it_is_closed(); }

TEST_F(no_memory, a_sender_that_waits_for_room_in_virtual_time) {
    load("clock virtual");
    wait_for_room_until_it_is_closed();
}

TEST_F(no_memory, what_is_recorded_is_cut) {
    yelk_hist_clear();
    const std::string text(200, 'x');
    {
        const failing_allocation failing{1, failing_allocation::how::onwards};
        yelk_hist_event(7, static_cast<uint32_t>(text.size()), text.data());
        EXPECT_TRUE(failing.happened());
    }
    EXPECT_NE(ribkit::testing::printed_by(yelk_hist_print).find(" event 0x7 "), std::string::npos);
    yelk_hist_clear();
}

} // namespace

} // namespace ribkit::platform
