// Senders over a server: the NAME at the end of a subject, whose messages are heard, and turns between them.
#include "platform/nats/nats_fixture.h"
#include "platform/nats/nats_stranger_peer.h"
#include "testing/capture.h"

#include <chrono>
#include <set>
#include <thread>
#include <vector>

namespace ribkit::platform {

namespace {

const qip_addr group{0xfe000000, 0};

/// Takes the next message: "NAME: text".
std::string taken_from(uint32_t handle, uint32_t *number = nullptr) {
    qip_ref ref = dirty_ref();
    const qip_recv_opts opts = within(60000);
    if (const int error = error_of(qip_recv(handle, &ref, &opts)); error != 0) {
        return refused(error);
    }
    if (number != nullptr) {
        *number = qip_sender_get(&ref);
    }
    std::string text = std::string{qip_sender_name(&ref)} + ": " + text_of(ref);
    EXPECT_EQ(qip_drop(handle, &ref), 0);
    return text;
}

void wait_for_event(const std::string &text) {
    const auto is_told = [&] { return testing::printed_by(yelk_hist_print).find(text) != std::string::npos; };
    for (int attempt = 0; !is_told() && attempt < 6000; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    EXPECT_TRUE(is_told()) << text;
}

class nats_senders : public over_nats {
  protected:
    void SetUp() override {
        over_nats::SetUp();
        for (const char *name : {"fspf", "static", "fspf"}) {
            handles.push_back(opened(server.url() + "?name=" + name));
        }
    }

    void TearDown() override {
        for (const uint32_t handle : handles) {
            qip_close(handle);
        }
        over_nats::TearDown();
    }

    std::vector<uint32_t> handles; // two of one NAME, another in between
};

TEST_F(nats_senders, are_known_by_their_names) {
    std::vector<uint32_t> numbers;
    for (const uint32_t handle : handles) {
        ASSERT_EQ(send_text(handle, "?"), 0);
        EXPECT_EQ(taken_from(rib_handle, &numbers.emplace_back()), handle == handles[1] ? "static: ?" : "fspf: ?");
    }
    EXPECT_NE(numbers[0], 0U);
    EXPECT_EQ(numbers[0], numbers[2]);
    EXPECT_NE(numbers[0], numbers[1]);
}

TEST_F(nats_senders, without_a_name_have_one_each) {
    const uint32_t another = opened(server.url());
    std::set<std::string> names;
    for (const uint32_t handle : {client, another, client}) {
        ASSERT_EQ(send_text(handle, "?"), 0);
        names.insert(taken_from(rib_handle));
    }
    EXPECT_EQ(names.size(), 2U);
    EXPECT_TRUE(names.begin()->starts_with("anonymous-")) << *names.begin();
    qip_close(another);
}

TEST_F(nats_senders, that_are_not_listened_to_reach_nobody) {
    const qip_addr other{2, 2};
    const char *const names[] = {"fspf", "bgp", "fspf"};
    ASSERT_EQ(error_of(qip_listen_to(rib_handle, &other, 1, names, 3)), 0);
    EXPECT_EQ(answer_to(handles[1], "?", other), refused(ENOTCONN));
    EXPECT_EQ(answer_to(client, "?", other), refused(ENOTCONN));
    for (int number = 0; number < 5; ++number) {
        ASSERT_EQ(send_text(handles[0], std::to_string(number), nullptr, other), 0);
    }
    for (int number = 0; number < 5; ++number) { // held back, and each once
        EXPECT_EQ(taken_from(rib_handle), "fspf: " + std::to_string(number));
    }
    ASSERT_EQ(send_text(handles[2], "last", nullptr, other), 0);
    EXPECT_EQ(taken_from(rib_handle), "fspf: last");
}

TEST_F(nats_senders, are_chosen_in_groups_too) {
    const char *const names[] = {"static"};
    ASSERT_EQ(error_of(qip_listen_to(rib_handle, &group, 1, names, 1)), 0);
    ASSERT_EQ(error_of(qip_listen(client, &group, 1)), 0);
    ASSERT_EQ(send_text(handles[0], "unheard", nullptr, group), 0);
    ASSERT_EQ(send_text(handles[1], "heard", nullptr, group), 0);
    EXPECT_EQ(taken_from(rib_handle), "static: heard");
    EXPECT_EQ(taken_from(client), "fspf: unheard");
    EXPECT_EQ(taken_from(client), "static: heard");
}

TEST_F(nats_senders, of_one_queue_share_the_work_of_each_name) {
    const std::string url = server.url() + "/blue?queue=ribs";
    const uint32_t ribs[] = {opened(url + "&name=first"), opened(url + "&name=second")};
    const char *const names[] = {"fspf", "static"};
    for (const uint32_t one : ribs) {
        ASSERT_EQ(error_of(qip_listen_to(one, &rib, 100, names, 2)), 0);
    }
    const uint32_t asking = opened(server.url() + "/blue?name=fspf");
    for (int number = 0; number < 20; ++number) {
        ASSERT_EQ(send_text(asking, std::to_string(number)), 0);
    }
    std::set<std::string> seen;
    for (int attempt = 0; seen.size() < 20 && attempt < 5000; ++attempt) {
        std::string text = taken(ribs[attempt % 2], within(10));
        EXPECT_TRUE(text == refused(ETIMEDOUT) || seen.insert(std::move(text)).second);
    }
    EXPECT_EQ(seen.size(), 20U);
    for (const uint32_t one : {ribs[0], ribs[1], asking}) {
        qip_close(one);
    }
}

TEST_F(nats_senders, with_hostile_subjects_are_ignored) {
    yelk_hist_clear();
    stranger other{server.url()};
    for (const char *end : {"", ".a.b", ".a.", ".\xc3\xa4", ".a\x01", ".a*b", ".>x"}) {
        other.say((std::string{"rib.fe000001.25"} + end).c_str(), "8 bytes.hostile");
    }
    other.say("rib.fe000001.25.honest", "8 bytes.last");
    EXPECT_EQ(taken_from(rib_handle), "honest: last");
    wait_for_event("nats: a message of nobody who has a name was thrown away");
}

// The stranger's message follows the honest one through the same subscription: when it is in the history, both are
// here.
TEST_F(nats_senders, take_turns) {
    for (int number = 0; number < 100; ++number) {
        ASSERT_EQ(send_text(handles[0], "flood"), 0);
    }
    ASSERT_EQ(send_text(handles[1], "honest"), 0);
    yelk_hist_clear();
    stranger other{server.url()};
    other.say("rib.fe000001.25.\x01", "8 bytes.");
    wait_for_event("nats: a message of nobody");
    EXPECT_EQ(taken_from(rib_handle), "fspf: flood");
    EXPECT_EQ(taken_from(rib_handle), "static: honest");
    EXPECT_EQ(taken_from(rib_handle), "fspf: flood");
}

TEST_F(nats_senders, may_be_forgotten_but_not_while_something_is_theirs) {
    ASSERT_EQ(send_text(handles[0], "kept"), 0);
    qip_ref kept{};
    ASSERT_EQ(qip_recv(rib_handle, &kept, nullptr), 0);
    stranger other{server.url()};
    for (int number = 0; number < 3000; ++number) {
        std::string name{"n"};
        name.append(std::to_string(number));
        other.say(("rib.fe000001.25." + name).c_str(), "8 bytes.");
        EXPECT_EQ(taken_from(rib_handle), name + ": ");
    }
    ASSERT_EQ(send_text(handles[2], "again"), 0);
    uint32_t again = 0;
    EXPECT_EQ(taken_from(rib_handle, &again), "fspf: again");
    EXPECT_EQ(again, qip_sender_get(&kept));
    EXPECT_STREQ(qip_sender_name(&kept), "fspf");
    qip_drop(rib_handle, &kept);
}

} // namespace

} // namespace ribkit::platform
