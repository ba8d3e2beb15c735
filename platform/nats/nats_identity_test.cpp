// Who we are to a server, and what it then lets us do.
#include "platform/nats/nats_fixture.h"
#include "rib_wrap.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

namespace ribkit::platform {

namespace {

/// A server with the configuration that the documents name.
class nats_roles : public ::testing::Test {
  protected:
    environment first{"RIB_PASSWORD", "r1b"};
    environment second{"CLIENT_PASSWORD", "cl1ent"};
    environment third{"MODULE_PASSWORD", "m0dule"};
    nats_server server{in_the_tree("examples/nats/roles.conf")};
    uint32_t rib_handle = opened(server.url("rib:r1b"));
    uint32_t client = opened(server.url("client:cl1ent"));
    uint32_t module = opened(server.url("module:m0dule"));

    void TearDown() override {
        for (const uint32_t handle : {rib_handle, client, module}) {
            qip_close(handle);
        }
        EXPECT_EQ(qip_refs_held(), 0U);
    }

    static constexpr qip_addr partition{0xfe010001, 25};
    static constexpr qip_addr local{0xfe000000, 0};
    static constexpr qip_addr modules{0xff000001, 0};
    static constexpr qip_addr a_module{0xff000401, 26};
};

TEST_F(nats_roles, listen_where_they_belong) {
    const std::pair<uint32_t, qip_addr> allowed[] = {
        {rib_handle, rib}, {rib_handle, partition}, {client, local}, {module, modules}, {module, a_module}};
    for (const auto &[handle, address] : allowed) {
        EXPECT_EQ(error_of(qip_listen(handle, &address, 10)), 0) << std::hex << address.node;
    }
    const std::pair<uint32_t, qip_addr> others[] = {{rib_handle, local}, {rib_handle, a_module}, {client, rib},
                                                    {client, partition}, {client, modules},      {client, a_module},
                                                    {module, rib},       {module, local}};
    for (const auto &[handle, address] : others) {
        EXPECT_EQ(error_of(qip_listen(handle, &address, 10)), EACCES) << std::hex << address.node;
        EXPECT_EQ(error_of(qip_listen(handle, &address, 10)), EACCES) << std::hex << address.node; // no listener yet
    }
}

TEST_F(nats_roles, send_where_they_belong) {
    const std::pair<uint32_t, qip_addr> others[] = {
        {client, local}, {client, modules}, {client, a_module}, {module, local}, {module, modules}};
    for (const auto &[handle, address] : others) {
        EXPECT_EQ(send_text(handle, "?", nullptr, address), EACCES) << std::hex << address.node;
        EXPECT_EQ(answer_to(handle, "?", address), not_sent(EACCES)) << std::hex << address.node;
    }
    ASSERT_EQ(error_of(qip_listen(client, &local, 10)), 0);
    ASSERT_EQ(error_of(qip_listen(module, &modules, 10)), 0);
    EXPECT_EQ(rib_wrap_qip_note(rib_handle, 78, "news", 4), 0);
    EXPECT_EQ(taken(client, within(60000)), "news");
    EXPECT_EQ(taken(module, within(60000)), "news");
    ASSERT_EQ(error_of(qip_listen(rib_handle, &rib, 10)), 0);
    EXPECT_EQ(send_text(module, "its record"), 0);
    EXPECT_EQ(taken(rib_handle, within(60000)), "its record");
}

TEST_F(nats_roles, send_under_their_own_names) {
    ASSERT_EQ(error_of(qip_listen(rib_handle, &rib, 10)), 0);
    for (const char *name : {"rib", "module", "clients", "another"}) {
        const uint32_t impostor = opened(server.url("client:cl1ent") + "?name=" + name);
        EXPECT_EQ(send_text(impostor, "?"), EACCES) << name;
        qip_close(impostor);
    }
    ASSERT_EQ(send_text(client, "honest"), 0);
    qip_ref ref{};
    ASSERT_EQ(qip_recv(rib_handle, &ref, nullptr), 0);
    EXPECT_STREQ(qip_sender_name(&ref), "client");
    EXPECT_EQ(text_of(ref), "honest");
    qip_drop(rib_handle, &ref);
}

TEST_F(nats_roles, are_answered) {
    ASSERT_EQ(error_of(qip_listen(rib_handle, &rib, 10)), 0);
    ASSERT_EQ(error_of(qip_listen(module, &a_module, 10)), 0);
    {
        const answering serving{module};
        EXPECT_EQ(answer_to(rib_handle, "from the rib", a_module), "from the rib!");
    }
    const answering serving{rib_handle};
    EXPECT_EQ(answer_to(client, "from a client"), "from a client!");
}

TEST_F(nats_roles, a_refused_listener_may_still_send) {
    ASSERT_EQ(error_of(qip_listen(rib_handle, &rib, 10)), 0);
    EXPECT_EQ(error_of(qip_listen(client, &rib, 10)), EACCES);
    const answering serving{rib_handle};
    EXPECT_EQ(answer_to(client, "allowed"), "allowed!");
}

TEST_F(nats_roles, know_users) {
    EXPECT_EQ(error_of_opening(server.url()), EACCES);
    EXPECT_EQ(error_of_opening(server.url("client")), EACCES);
    EXPECT_EQ(error_of_opening(server.url("client:wrong")), EACCES);
    {
        const user_variables from_environment{"client", "cl1ent"};
        EXPECT_EQ(error_of_opening(server.url()), 0);
        EXPECT_EQ(error_of_opening(server.url("client:wrong")), EACCES); // the URL goes first
    }
    {
        const user_variables wrong{"client", "wrong"};
        EXPECT_EQ(error_of_opening(server.url()), EACCES);
        EXPECT_EQ(error_of_opening(server.url("client:cl1ent")), 0);
    }
    const environment no_password{"RIBKIT_NATS_USER", "client"};
    EXPECT_EQ(error_of_opening(server.url()), EACCES);
}

std::string may_publish(const std::string &subject) {
    return "authorization {timeout: 60, users: [{user: me, password: x, permissions: {subscribe: \">\", publish: "
           "[\"_INBOX.>\", \"" +
           subject + "\"]}}]}";
}

/// How the first send ends that ends otherwise than this one does.
int send_after(int error, uint32_t handle) {
    int next = error;
    for (int attempt = 0; next == error && attempt < 6000; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
        next = send_text(handle, "?");
    }
    return next;
}

TEST(nats_permissions, are_asked_for_anew_after_a_loss) {
    nats_server server{may_publish("rib.>")};
    const uint32_t handle = opened(server.url("me:x"));
    int before = send_text(handle, "?");
    EXPECT_EQ(before, 0);
    for (const auto &[subject, expected] : {std::pair{"other.>", EACCES}, std::pair{"rib.>", 0}}) {
        server.stop();
        EXPECT_EQ(send_after(before, handle), ENOTCONN);
        server.configure(may_publish(subject));
        server.start();
        before = send_after(ENOTCONN, handle);
        EXPECT_EQ(before, expected);
    }
    qip_close(handle);
}

TEST(nats_permissions, taken_away_end_the_wait_for_an_answer) {
    const nats_server server{may_publish("rib.>")};
    const uint32_t client = opened(server.url("me:x"));
    const uint32_t listening = opened(server.url("me:x"));
    ASSERT_EQ(error_of(qip_listen(listening, &rib, 10)), 0);
    const answering serving{listening};
    std::string answer = answer_to(client, "?");
    EXPECT_EQ(answer, "?!");
    server.configure(may_publish("other.>"));
    for (int attempt = 0; answer == "?!" && attempt < 6000; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
        answer = answer_to(client, "?");
    }
    EXPECT_EQ(answer, refused(EACCES));
    EXPECT_EQ(send_text(client, "?"), EACCES);
    qip_close(client);
}

// What was heard before is heard no longer: all of the names or none.
TEST(nats_permissions, one_name_that_may_not_be_heard_ends_listening_to_the_others) {
    const nats_server server{
        "authorization {timeout: 60, users: [{user: me, password: x, permissions: {publish: \">\", "
        "subscribe: {allow: \">\", deny: \"rib.*.*.static\"}}}]}"};
    const qip_addr other{2, 2};
    const uint32_t fspf = opened(server.url("me:x") + "?name=fspf");
    const uint32_t listening = opened(server.url("me:x"));
    std::atomic<bool> enough{false};
    std::thread sending{[&] {
        while (!enough) {
            EXPECT_EQ(send_text(fspf, "?", nullptr, other), 0);
        }
    }};
    const char *const names[] = {"fspf", "static"};
    for (int count = 0; count < 100; ++count) {
        EXPECT_EQ(error_of(qip_listen_to(listening, &other, 10, names, 2)), EACCES);
    }
    enough = true;
    sending.join();
    EXPECT_EQ(answer_to(fspf, "?", other), refused(ENOTCONN));
    EXPECT_EQ(error_of(qip_listen_to(listening, &other, 10, names, 1)), 0);
    EXPECT_EQ(send_text(fspf, "last", nullptr, other), 0);
    std::string text = "?"; // what came meanwhile is still there
    while (text == "?") {
        text = taken(listening, within(60000));
    }
    EXPECT_EQ(text, "last");
    qip_close(fspf);
    qip_close(listening);
}

TEST(nats_tokens, in_url_and_environment) {
    const nats_server server{"authorization {token: t0ken, timeout: 60}"};
    EXPECT_EQ(error_of_opening(server.url()), EACCES);
    EXPECT_EQ(error_of_opening(server.url("wrong")), EACCES);
    EXPECT_EQ(exchanged(server.url("t0ken")), "question!");
    {
        const environment token{"RIBKIT_NATS_TOKEN", "t0ken"};
        EXPECT_EQ(exchanged(server.url()), "question!");
    }
    const environment token{"RIBKIT_NATS_TOKEN", "wrong"};
    EXPECT_EQ(error_of_opening(server.url()), EACCES);
    EXPECT_EQ(error_of_opening(server.url("t0ken")), 0); // the URL goes first
}

} // namespace

} // namespace ribkit::platform
