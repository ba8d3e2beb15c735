// A module as a listener on the message bus, on a thread of its own. It tells the RIB of itself until that answers, and
// again whenever its state changes, the RIB starts anew, the connection was cut, or some time has passed.
#pragma once

#include "bus/service_handle.h"
#include "bus/service_thread.h"
#include "fib/service/messages.h"
#include "qip.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ribkit::fib {

struct fib_options {
    uint32_t number = 1; ///< of the module, from 1
    fib_sizes sizes{};
    std::vector<model::module_port> ports{};
    uint32_t instance = 0;                 ///< 0: drawn
    std::chrono::milliseconds slow{0};     ///< how long each answer takes
    std::chrono::milliseconds patience{0}; ///< how long a server of the bus is waited for
    bool trace = false;                    ///< print a line for every message taken
    /// Told, on the service's thread, which messages between RIB and modules have another format in the RIB that was
    /// found: that is sent nothing. Where this is empty, no RIB is asked for its formats.
    std::function<void(const std::vector<std::string_view> &messages)> differs{};
};

/// Ports of a module, as many as wanted: fcN/1 and so on, up.
std::vector<model::module_port> usual_ports(uint32_t module, uint32_t count);

class fib_service {
  public:
    /// Listens at the module's address of this bus. Throws as service_handle does, std::bad_alloc, and
    /// std::system_error where it cannot listen or another module of this number is there.
    explicit fib_service(const std::string &url, const fib_options &options = {});
    fib_service(const fib_service &) = delete;
    fib_service &operator=(const fib_service &) = delete;
    ~fib_service() { stop(); }

    /// Tells the RIB that it leaves, and answers no more.
    void stop();

    /// While nothing is taken.
    template <class Read> auto read(Read what) const {
        const std::scoped_lock locked(lock_);
        return what(std::as_const(module_));
    }
    /// While it is upgrading it takes nothing of the RIB's. The RIB is told at once.
    void set_upgrading(bool upgrading);
    [[nodiscard]] size_t answered() const;

  private:
    void serve();
    bool take_one();
    [[nodiscard]] qip_recv_opts next_wait() const;
    void take(const qip_ref &ref);
    bytes respond(const qip_ref &ref);
    void answer(const qip_ref &ref, const bytes &payload);
    void note_refusal(const qip_ref &ref, uint32_t result, const std::string &why) const;
    void trace(uint32_t opcode, size_t size) const;
    bool be_slow();
    void rest_after(int error);

    void keep_in_touch();
    void announce(uint64_t now);
    bool send_node(qip_ref *ref);
    void tell_rib();
    [[nodiscard]] bool may_tell() const { return !options_.differs || agrees_; }
    void hear_formats(const qip_ref &ref, uint64_t now);
    void hear_rib(const qip_ref &ref);
    void lose_rib(uint64_t again);

    fib_options options_;
    bus::service_handle handle_;
    mutable std::mutex lock_; ///< of the module
    module module_;
    size_t answered_ = 0;
    std::atomic<model::fib_state> announced_{model::fib_state::offline};
    std::atomic<bool> agrees_{false}; ///< the RIB, in the formats of messages
    bool asks_formats_ = false;       ///< is what is awaited the answer to
    bool knows_rib_ = false;          ///< the RIB has answered
    uint32_t awaited_ = 0;            ///< token of its answer, 0 for none
    uint64_t asked_at_ = 0;           ///< microseconds
    uint64_t next_at_ = 0;            ///< ... when the RIB is told at the latest
    uint32_t reconnections_ = 0;
    uint32_t failures_ = 0; ///< of receiving, one after the other
    std::mutex stopping_lock_;
    std::condition_variable stopping_;
    bool stopped_ = false;
    bus::service_thread thread_;
};

} // namespace ribkit::fib
