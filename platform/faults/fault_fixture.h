// A fault script in force, and a thread that serves under it.
#pragma once

#include "platform/service_fixture.h"
#include "testing/temporary_directory.h"
#include <atomic>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace ribkit::platform {

/// Puts a script's text in force, null: none, for all handles or for one; "", or what is said about it without the
/// file's path.
inline std::string load_script(const char *text, std::optional<uint32_t> handle = {}) {
    const testing::temporary_directory home;
    const std::string file = home.file("script");
    if (text != nullptr) {
        std::ofstream{file} << text;
    }
    char error[200] = "";
    const char *const path = text == nullptr ? nullptr : file.c_str();
    if ((handle ? qip_faults_load_for(*handle, path, error, sizeof error)
                : qip_faults_load(path, error, sizeof error)) == 0) {
        return "";
    }
    EXPECT_EQ(errno, EINVAL);
    const std::string said = error;
    return said.starts_with(file) ? said.substr(file.size()) : said;
}

/// A thread that serves until its handle is closed. Once constructed it is known to the virtual clock.
class server_thread {
  public:
    server_thread(uint32_t handle, const std::function<void(uint32_t)> &serve)
        : thread_{[handle, serve, this] {
              taken(handle, now(QIP_RECV_INCOMING));
              started_ = true;
              serve(handle);
          }} {
        qip_step_aside();
        while (!started_) {
            std::this_thread::yield();
        }
    }
    server_thread(const server_thread &) = delete;
    server_thread &operator=(const server_thread &) = delete;
    ~server_thread() {
        qip_step_aside();
        thread_.join();
    }

  private:
    std::atomic<bool> started_{false};
    std::thread thread_;
};

/// One bus under a fault script.
class faulty : public on_one_bus {
  protected:
    void TearDown() override {
        EXPECT_EQ(load_script(nullptr), "");
        on_one_bus::TearDown();
    }

    static void load(const std::string &text) { ASSERT_EQ(load_script(text.c_str()), ""); }

    [[nodiscard]] std::string incoming() const { return taken(server, now(QIP_RECV_INCOMING)); }
};

} // namespace ribkit::platform
