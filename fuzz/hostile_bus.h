// Where attackers and the attacked meet: a bus of each transport, and a RIB that serves there as a process of its own,
// or in this process where the transport leads no further.
#pragma once

#include "fuzz/child.h"
#include "rib/service/rib_service.h"
#include "testing/temporary_directory.h"
#ifdef RIBKIT_NATS_SERVER
#include "platform/nats/nats_server_fixture.h"
#endif

#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>

namespace ribkit::fuzz {

enum class transport : unsigned char { local, sockets, server };

inline std::string transport_name(const ::testing::TestParamInfo<transport> &info) {
    return info.param == transport::local ? "local" : info.param == transport::sockets ? "unix" : "nats";
}

/// The transports that lead to other processes.
inline auto transports_between_processes() {
#ifdef RIBKIT_NATS_SERVER
    return ::testing::Values(transport::sockets, transport::server);
#else
    return ::testing::Values(transport::sockets);
#endif
}

/// The transports that can be had here.
inline auto all_transports() {
#ifdef RIBKIT_NATS_SERVER
    return ::testing::Values(transport::local, transport::sockets, transport::server);
#else
    return ::testing::Values(transport::local, transport::sockets);
#endif
}

class bus {
  public:
    explicit bus(transport kind) {
        if (kind == transport::local) {
            url_ = "local:hostile";
        } else if (kind == transport::sockets) {
            url_ = "unix:" + directory();
        }
#ifdef RIBKIT_NATS_SERVER
        else {
            url_ = server_.emplace().url();
        }
#endif
    }

    [[nodiscard]] const std::string &url() const { return url_; }
    /// Of the sockets, where it is they.
    [[nodiscard]] std::string directory() const { return home_.file("bus"); }

  private:
    testing::temporary_directory home_;
#ifdef RIBKIT_NATS_SERVER
    std::optional<platform::nats_server> server_;
#endif
    std::string url_;
};

/// A RIB that serves on a bus.
class rib {
  public:
    rib(transport kind, const std::string &url) {
        if (kind == transport::local) {
            service_ = std::make_unique<ribkit::rib::rib_service>(
                url, ribkit::rib::rib_options{ribkit::rib::rib_spaces::for_vsans(64)});
        } else {
            process_ = std::make_unique<child>(
                std::vector<std::string>{RIBKIT_COMMAND, "rib", "--tables", "none", "--bus", url});
            EXPECT_TRUE(process_->prints("the RIB answers at"));
        }
    }

    /// A signal ends it, whatever else is sent to it meanwhile, and it has not needed more memory than that.
    void stop() {
        service_.reset();
        if (process_ == nullptr) {
            return;
        }
        process_->signal(SIGTERM);
        const ending end = process_->end();
        EXPECT_TRUE(end.in_time && end.exit_code == 0) << shown(end);
        EXPECT_TRUE(!memory_tells || end.most_memory < most_kilobytes) << end.most_memory;
        process_.reset();
    }

  private:
    static constexpr long most_kilobytes = 400 * 1024;

    std::unique_ptr<ribkit::rib::rib_service> service_;
    std::unique_ptr<child> process_;
};

} // namespace ribkit::fuzz
