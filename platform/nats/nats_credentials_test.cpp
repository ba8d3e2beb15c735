// An identity from a file; and that no secret, wherever it comes from, is ever printed.
#include "platform/nats/nats_fixture.h"
#include "testing/capture.h"

#include <fstream>
#include <functional>
#include <utility>

namespace ribkit::platform {

namespace {

using ribkit::testing::all_printed_by;

/// A server that knows one account, and the identity of its user in a file.
class nats_credentials : public ::testing::Test {
  protected:
    nats_server server{in_the_tree("platform/testdata/nats_operator.conf")};
    std::string credentials = in_the_tree("platform/testdata/nats_user.creds");
    testing::temporary_directory home;

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

// One signature in 256 begins with a zero.
TEST_F(nats_credentials, every_signature_is_taken) {
    const environment file{"RIBKIT_NATS_CREDENTIALS", saved(credentials)};
    for (int count = 0; count < 500; ++count) {
        uint32_t handle = 0;
        ASSERT_EQ(error_of(qip_open(server.url().c_str(), &handle)), 0) << count;
        qip_close(handle);
    }
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
