// The openssl command makes them, an authority first that signs the others.
#include "platform/nats/certificates_fixture.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace ribkit::platform {

test_certificates::test_certificates() { request("authority", "basicConstraints = critical, CA:true", ""); }

void test_certificates::issue(const std::string &name, const std::string &host) const {
    request(name, "basicConstraints = CA:false\nsubjectAltName = " + host,
            " -CA " + authority() + " -CAkey " + key("authority"));
}

void test_certificates::request(const std::string &name, const std::string &extensions,
                                const std::string &signer) const {
    std::ofstream{file(name + ".conf")} << "[req]\ndistinguished_name = name\nx509_extensions = extensions\n[name]\n"
                                        << "[extensions]\n"
                                        << extensions << "\n";
    const std::string command = RIBKIT_OPENSSL " req -x509 -config " + file(name + ".conf") + " -subj /CN=ribkit-" +
                                name + " -days 30 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -keyout " +
                                key(name) + " -out " + certificate(name) + signer + " 2>" + file("log");
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "openssl makes no certificate: %s\n", command.c_str());
        std::abort();
    }
}

} // namespace ribkit::platform
