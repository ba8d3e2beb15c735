// Certificates of a test's own, made when it runs, so that none in the tree ever expires.
#pragma once

#include "testing/temporary_directory.h"
#include <string>

namespace ribkit::platform {

/// An authority, and what it signs, as files of one directory.
class test_certificates {
  public:
    test_certificates();

    /// Makes NAME.pem with NAME.key for a host, said as "IP:127.0.0.1" or "DNS:name".
    void issue(const std::string &name, const std::string &host = "IP:127.0.0.1") const;

    [[nodiscard]] std::string authority() const { return file("authority.pem"); }
    [[nodiscard]] std::string certificate(const std::string &name) const { return file(name + ".pem"); }
    [[nodiscard]] std::string key(const std::string &name) const { return file(name + ".key"); }

  private:
    [[nodiscard]] std::string file(const std::string &name) const { return home_.file(name); }
    void request(const std::string &name, const std::string &extensions, const std::string &signer) const;

    testing::temporary_directory home_;
};

} // namespace ribkit::platform
