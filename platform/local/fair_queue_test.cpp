// Senders take turns at an address: whom a flood keeps waiting, and for how long, counted in messages.
#include "platform/faults/fault_fixture.h"
#include "platform/local/fair_queue.h"

#include <algorithm>
#include <deque>
#include <list>
#include <map>
#include <random>
#include <vector>

namespace ribkit::platform {

namespace {

/// Handles that send to the bus of the test.
class crowd {
  public:
    explicit crowd(size_t size) : handles_(size) {
        for (uint32_t &one : handles_) {
            EXPECT_EQ(qip_open("local:test", &one), 0);
        }
    }
    crowd(const crowd &) = delete;
    crowd &operator=(const crowd &) = delete;
    ~crowd() {
        for (const uint32_t one : handles_) {
            qip_close(one);
        }
    }

    uint32_t operator[](size_t index) const { return handles_[index]; }
    [[nodiscard]] size_t size() const { return handles_.size(); }

    /// Each sends until its queue is full.
    void flood() const {
        for (size_t index = 0; index < size(); ++index) {
            while (send_at_once(handles_[index], "flood " + std::to_string(index)) == 0) {
            }
        }
    }

  private:
    std::vector<uint32_t> handles_;
};

class fair : public on_one_bus {
  protected:
    [[nodiscard]] std::string incoming() const { return taken(server, now(QIP_RECV_INCOMING)); }
};

TEST_F(fair, an_honest_message_waits_for_one_of_each_other_sender) {
    const crowd attackers{20};
    attackers.flood();
    ASSERT_EQ(send_at_once(client, "honest"), 0);
    for (size_t index = 0; index < attackers.size(); ++index) {
        EXPECT_EQ(incoming(), "flood " + std::to_string(index));
        EXPECT_EQ(send_at_once(attackers[index], "more"), 0);
    }
    EXPECT_EQ(incoming(), "honest");
}

TEST_F(fair, the_bound_is_one_senders) {
    const crowd others{3};
    others.flood();
    for (size_t index = 0; index < others.size(); ++index) {
        EXPECT_EQ(send_at_once(others[index], "no room"), EAGAIN);
    }
    for (uint32_t count = 0; count < rib_bound; ++count) {
        EXPECT_EQ(send_at_once(client, std::to_string(count)), 0);
    }
    EXPECT_EQ(send_at_once(client, "no room"), EAGAIN);
    EXPECT_EQ(incoming(), "flood 0");
    EXPECT_EQ(send_at_once(client, "still none"), EAGAIN);
    EXPECT_EQ(send_at_once(others[0], "room"), 0);
}

TEST_F(fair, one_senders_messages_stay_in_order_over_its_addresses) {
    const qip_addr other{2, 2};
    ASSERT_EQ(qip_listen(server, &other, rib_bound), 0);
    ASSERT_EQ(send_at_once(client, "0"), 0);
    ASSERT_EQ(send_at_once(client, "1"), 0);
    ASSERT_EQ(send_at_once(client, "2", other), 0);
    ASSERT_EQ(send_at_once(client, "3"), 0);
    ASSERT_EQ(send_at_once(server, "another's", other), 0);
    for (const char *text : {"0", "another's", "1", "2", "3"}) {
        EXPECT_EQ(incoming(), text);
    }
}

TEST_F(fair, two_addresses_are_no_two_turns) {
    const qip_addr other{2, 2};
    ASSERT_EQ(qip_listen(server, &other, rib_bound), 0);
    for (const char *text : {"0", "1", "2"}) {
        ASSERT_EQ(send_at_once(client, text), 0);
        ASSERT_EQ(send_at_once(client, text, other), 0);
    }
    ASSERT_EQ(send_at_once(server, "honest"), 0);
    EXPECT_EQ(incoming(), "0");
    EXPECT_EQ(incoming(), "honest");
}

TEST_F(fair, a_group_is_full_for_one_sender_only) {
    const qip_addr group{0xfe000000, 0};
    ASSERT_EQ(qip_listen(server, &group, 2), 0);
    ASSERT_EQ(qip_listen(client, &group, 1), 0);
    EXPECT_EQ(send_at_once(client, "news", group), 0);
    EXPECT_EQ(send_at_once(client, "client is full", group), EAGAIN);
    EXPECT_EQ(send_at_once(server, "other news", group), 0);
    for (const uint32_t handle : {client, server}) {
        for (const char *text : {"news", "other news"}) {
            EXPECT_EQ(taken(handle, now(QIP_RECV_INCOMING)), text);
        }
        EXPECT_EQ(taken(handle, now(QIP_RECV_INCOMING)), refused(EAGAIN));
    }
}

TEST_F(fair, so_many_senders_may_have_something_waiting) {
    const crowd many{fair_queue::most_lanes};
    for (size_t index = 0; index < many.size(); ++index) {
        ASSERT_EQ(send_at_once(many[index], std::to_string(index)), 0);
    }
    EXPECT_EQ(send_at_once(client, "one too many"), EAGAIN);
    EXPECT_EQ(send_at_once(many[0], "known already"), 0);
    EXPECT_EQ(incoming(), "0");
    EXPECT_EQ(send_at_once(client, "still too many"), EAGAIN);
    EXPECT_EQ(incoming(), "1");
    EXPECT_EQ(send_at_once(client, "a place"), 0);
}

/// Under the virtual clock: each thread runs until it waits, so that turns can be counted.
class fair_in_turns : public faulty {};

TEST_F(fair_in_turns, a_flood_that_waits_for_room_keeps_nobody_waiting) {
    load("clock virtual");
    constexpr int requests = 50;
    constexpr size_t others = 4;
    const crowd attackers{others};
    size_t received = 0;
    size_t before = 0; // of them, when the honest request was sent
    size_t longest = 0;
    server_thread serving{server, [&](uint32_t handle) {
                              for (int honest = 0; honest < requests; ++received) {
                                  taken(handle, within(1, QIP_RECV_ANY_ANSWER)); // as long as it takes to serve one
                                  qip_ref asked{};
                                  ASSERT_EQ(qip_recv(handle, &asked, nullptr), 0);
                                  if (text_of(asked) == "honest") {
                                      longest = std::max(longest, received - before);
                                      ++honest;
                                  }
                                  answer_text(handle, asked, "!");
                                  qip_drop(handle, &asked);
                              }
                              qip_close(handle);
                          }};
    std::list<server_thread> flooding;
    for (size_t index = 0; index < others; ++index) {
        flooding.emplace_back(attackers[index], [](uint32_t handle) {
            while (send_text(handle, "flood") == 0) {
            }
        });
    }
    for (int count = 0; count < requests; ++count) {
        const uint32_t token = ask("honest");
        before = received;
        EXPECT_EQ(taken(client, {{QIP_RECV_BY_TOKEN, 0, 1000, token}}), "!");
    }
    EXPECT_EQ(longest, others);
}

TEST_F(fair_in_turns, closing_ends_the_wait_of_each_sender) {
    load("clock virtual");
    const crowd senders{3};
    std::list<server_thread> sending;
    for (size_t index = 0; index < senders.size(); ++index) {
        sending.emplace_back(senders[index], [](uint32_t handle) {
            int error = 0;
            while (error == 0) {
                error = send_text(handle, "flood");
            }
            EXPECT_EQ(error, ENOTCONN);
        });
    }
    taken(client, within(10)); // until all of them wait
    qip_close(server);
}

/// The same by a map of queues and a list of names.
class model {
  public:
    explicit model(uint32_t bound) : bound_(bound) {}

    bool put(uint32_t sender, uint32_t number) {
        std::deque<uint32_t> &own = lanes_[sender];
        if (own.size() == bound_) {
            return false;
        }
        if (own.empty()) {
            turns_.push_back(sender);
        }
        own.push_back(number);
        return true;
    }

    std::string take() {
        if (turns_.empty()) {
            return refused(EAGAIN);
        }
        const uint32_t sender = turns_.front();
        turns_.pop_front();
        std::deque<uint32_t> &own = lanes_[sender];
        const uint32_t number = own.front();
        own.pop_front();
        if (!own.empty()) {
            turns_.push_back(sender);
        }
        return std::to_string(sender) + "/" + std::to_string(number);
    }

  private:
    uint32_t bound_;
    std::map<uint32_t, std::deque<uint32_t>> lanes_;
    std::deque<uint32_t> turns_;
};

TEST_F(fair, like_a_map_of_queues) {
    const crowd senders{7};
    model expected{rib_bound};
    std::mt19937 random{20};
    for (uint32_t step = 0; step < 20000; ++step) {
        const uint32_t sender = random() % 7;
        if (random() % 16 < (step / 1000 % 2 == 0 ? 9 : 6)) {
            const std::string text = std::to_string(sender) + "/" + std::to_string(step);
            ASSERT_EQ(send_at_once(senders[sender], text), expected.put(sender, step) ? 0 : EAGAIN) << step;
        } else {
            ASSERT_EQ(incoming(), expected.take()) << step;
        }
    }
}

} // namespace

} // namespace ribkit::platform
