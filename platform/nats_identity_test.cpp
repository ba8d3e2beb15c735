// Who we are to a server, and what it then lets us do; and that no secret is ever printed.
#include "platform/nats_fixture.h"
#include "rib_wrap.h"
#include "testing/capture.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <utility>

namespace ribkit::platform {

namespace {

using ribkit::testing::all_printed_by;

std::string content_of(const std::string &file) {
    std::ifstream stream{RIBKIT_SOURCE_DIR "/" + file};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

/// A server with the configuration that the documents name.
class nats_roles : public ::testing::Test {
  protected:
    environment first{"RIB_PASSWORD", "r1b"};
    environment second{"CLIENT_PASSWORD", "cl1ent"};
    environment third{"MODULE_PASSWORD", "m0dule"};
    nats_server server{content_of("examples/nats/roles.conf")};
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
    }
}

TEST_F(nats_roles, send_where_they_belong) {
    const std::pair<uint32_t, qip_addr> others[] = {{rib_handle, rib},  {client, local}, {client, modules},
                                                    {client, a_module}, {module, rib},   {module, modules}};
    for (const auto &[handle, address] : others) {
        EXPECT_EQ(send_text(handle, "?", nullptr, address), EACCES) << std::hex << address.node;
        EXPECT_EQ(answer_to(handle, "?", address), "not sent " + std::to_string(EACCES)) << std::hex << address.node;
    }
    ASSERT_EQ(error_of(qip_listen(client, &local, 10)), 0);
    ASSERT_EQ(error_of(qip_listen(module, &modules, 10)), 0);
    EXPECT_EQ(rib_wrap_qip_note(rib_handle, 78, "news", 4), 0);
    EXPECT_EQ(taken(client, within(60000)), "news");
    EXPECT_EQ(taken(module, within(60000)), "news");
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

struct user_variables {
    user_variables(const std::string &name, const std::string &password)
        : first{"RIBKIT_NATS_USER", name}, second{"RIBKIT_NATS_PASSWORD", password} {}

    environment first;
    environment second;
};

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
}

/// A server that knows one account, and the identity of its user in a file.
class nats_credentials : public ::testing::Test {
  protected:
    nats_server server{content_of("platform/testdata/nats_operator.conf")};
    std::string credentials = content_of("platform/testdata/nats_user.creds");
    temporary_directory home;

    [[nodiscard]] std::string saved(const std::string &text) const {
        std::string file = home.file("creds");
        std::ofstream{file} << text;
        return file;
    }

    [[nodiscard]] int error_with(const std::string &text) const {
        const environment file{"RIBKIT_NATS_CREDENTIALS", saved(text)};
        return error_of_opening(server.url());
    }

    [[nodiscard]] size_t seed_at() const { return credentials.find("\nSU") + 1; }
};

TEST_F(nats_credentials, messages_pass) {
    const environment file{"RIBKIT_NATS_CREDENTIALS", saved(credentials)};
    EXPECT_EQ(exchanged(server.url()), "question!");
}

TEST_F(nats_credentials, are_demanded) { EXPECT_EQ(error_of_opening(server.url()), EACCES); }

TEST_F(nats_credentials, may_be_damaged) {
    std::string other_name = credentials;
    ++other_name[other_name.find(".ey") + 20];
    std::string other_seed = credentials;
    other_seed[seed_at() + 20] = other_seed[seed_at() + 20] == 'A' ? 'B' : 'A';
    const std::pair<std::string, int> rows[] = {
        {"", EACCES}, // nothing is presented
        {"no credentials", EIO},
        {credentials.substr(0, credentials.find("-----BEGIN USER")), EIO},
        {credentials.substr(0, seed_at() + 20), EIO},
        {other_seed, EIO},
        {other_name, EACCES},
    };
    for (const auto &[text, error] : rows) {
        EXPECT_EQ(error_with(text), error) << text;
    }
}

/// Every way not to get a handle, and the secret that was at hand.
class nats_secrets : public nats_credentials {
  protected:
    static void expect_kept(const std::string &secret, const std::function<int()> &open) {
        int error = 0;
        const std::string said = all_printed_by([&] { error = open(); });
        EXPECT_NE(error, 0);
        EXPECT_EQ(said, "");
        EXPECT_EQ(all_printed_by(yelk_hist_print).find(secret), std::string::npos);
    }
};

TEST_F(nats_secrets, are_never_printed) {
    const std::string secret = "s3cretly";
    const nats_server users{"authorization {users: [{user: me, password: other}], timeout: 60}"};
    const nats_server tokens{"authorization {token: other, timeout: 60}"};
    nats_server gone;
    gone.stop();
    const auto opening = [](const std::string &url) { return [url] { return error_of_opening(url); }; };
    for (const std::string &identity : {"me:" + secret, secret}) {
        for (const nats_server *asked : {&users, &tokens, &std::as_const(server), &std::as_const(gone)}) {
            expect_kept(secret, opening(asked->url(identity)));
        }
        expect_kept(secret, opening(users.url(identity, "tls")));
        expect_kept(secret, opening("nats://" + identity + "@"));
        expect_kept(secret, opening("nats://" + identity + "@127.0.0.1/no.fabric"));
        expect_kept(secret, opening("nats://" + identity + "@127.0.0.1:port"));
        expect_kept(secret, opening("pigeon://" + identity + "@127.0.0.1"));
    }
    {
        const user_variables wrong{"me", secret};
        expect_kept(secret, opening(users.url()));
    }
    {
        const environment wrong{"RIBKIT_NATS_TOKEN", secret};
        expect_kept(secret, opening(tokens.url()));
    }
    std::string damaged = credentials;
    damaged[seed_at() + 57] = damaged[seed_at() + 57] == 'A' ? 'B' : 'A';
    const std::string seed = credentials.substr(seed_at(), 57);
    const environment file{"RIBKIT_NATS_CREDENTIALS", saved(damaged)};
    expect_kept(seed, opening(server.url()));
    expect_kept(seed, opening(gone.url()));
}

} // namespace

} // namespace ribkit::platform
