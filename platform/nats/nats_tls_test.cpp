// TLS to a server: whose certificates are believed, on both sides, and what is said where none comes about.
#include "platform/nats/certificates_fixture.h"
#include "platform/nats/nats_fixture.h"

#include <string>

namespace ribkit::platform {

namespace {

/// A certificate and its key from files, for the client.
struct client_certificate {
    client_certificate(const std::string &certificate, const std::string &key)
        : first{"RIBKIT_NATS_CERT", certificate}, second{"RIBKIT_NATS_KEY", key} {}

    environment first;
    environment second;
};

class nats_tls : public ::testing::Test {
  protected:
    nats_tls() {
        ours.issue("server");
        ours.issue("client");
    }

    [[nodiscard]] std::string with_certificate(const std::string &name, const std::string &more = "") const {
        return "tls { timeout: 60, cert_file: \"" + ours.certificate(name) + "\", key_file: \"" + ours.key(name) +
               "\"" + more + "}";
    }

    [[nodiscard]] std::string for_known_clients() const {
        return with_certificate("server", ", verify: true, ca_file: \"" + ours.authority() + "\"");
    }

    static std::string tls(const nats_server &server) { return server.url("", "tls"); }

    test_certificates ours;
    test_certificates theirs;
};

TEST_F(nats_tls, messages_pass) {
    const nats_server server{with_certificate("server")};
    const environment authority{"RIBKIT_NATS_CA", ours.authority()};
    EXPECT_EQ(exchanged(tls(server)), "question!");
    EXPECT_EQ(exchanged(server.url()), "question!"); // an authority asks for TLS as the scheme does
}

TEST_F(nats_tls, authorities_of_the_system_are_believed) {
    const nats_server server{with_certificate("server")};
    EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
    const environment system{"SSL_CERT_FILE", ours.authority()};
    EXPECT_EQ(error_of_opening(tls(server)), 0);
}

TEST_F(nats_tls, another_authority_is_not_believed) {
    const nats_server server{with_certificate("server")};
    const environment authority{"RIBKIT_NATS_CA", theirs.authority()};
    EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
    EXPECT_EQ(error_of_opening(server.url()), EPROTO);
}

TEST_F(nats_tls, the_certificate_has_to_name_the_host) {
    ours.issue("elsewhere", "DNS:elsewhere.test");
    const nats_server server{with_certificate("elsewhere")};
    const environment authority{"RIBKIT_NATS_CA", ours.authority()};
    EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
}

// The server closes the connection after the handshake, which may be seen before its reason.
bool is_hung_up(int error) { return error == EPROTO || error == ECONNREFUSED; }

TEST_F(nats_tls, a_server_may_demand_certificates) {
    const nats_server server{for_known_clients()};
    const environment authority{"RIBKIT_NATS_CA", ours.authority()};
    EXPECT_PRED1(is_hung_up, error_of_opening(tls(server)));
    theirs.issue("client");
    {
        const client_certificate other{theirs.certificate("client"), theirs.key("client")};
        EXPECT_PRED1(is_hung_up, error_of_opening(tls(server)));
    }
    const client_certificate known{ours.certificate("client"), ours.key("client")};
    EXPECT_EQ(exchanged(tls(server)), "question!");
    EXPECT_EQ(exchanged(server.url()), "question!");
}

TEST_F(nats_tls, a_certificate_asks_for_tls_by_itself) {
    const nats_server server{for_known_clients()};
    const environment system{"SSL_CERT_FILE", ours.authority()};
    const client_certificate known{ours.certificate("client"), ours.key("client")};
    EXPECT_EQ(exchanged(server.url()), "question!");
}

TEST_F(nats_tls, both_sides_have_to_want_it) {
    const nats_server with{with_certificate("server")};
    EXPECT_EQ(error_of_opening(with.url()), EPROTO);
    const nats_server without;
    EXPECT_EQ(error_of_opening(tls(without)), EPROTO);
    const environment authority{"RIBKIT_NATS_CA", ours.authority()};
    EXPECT_EQ(error_of_opening(without.url()), EPROTO);
}

TEST_F(nats_tls, files_that_are_no_certificates) {
    const nats_server server{for_known_clients()};
    {
        const environment authority{"RIBKIT_NATS_CA", ours.key("client")};
        EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
    }
    const environment authority{"RIBKIT_NATS_CA", ours.authority()};
    {
        const client_certificate exchanged_files{ours.key("client"), ours.certificate("client")};
        EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
    }
    {
        const client_certificate of_another_key{ours.certificate("client"), ours.key("server")};
        EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
    }
    const environment alone{"RIBKIT_NATS_CERT", ours.certificate("client")};
    EXPECT_EQ(error_of_opening(tls(server)), EPROTO);
}

} // namespace

} // namespace ribkit::platform
