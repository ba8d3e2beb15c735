// A module of the tests on the bus: it says what it is told to say, and nothing by itself.
#pragma once

#include "bus/service_handle.h"
#include "model/fib.h"
#include "protocol/fib/fib_messages.h"
#include "rib/service/reply.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace ribkit::rib {

/// An update as it came, with the keys that it names.
struct received_update {
    qip_ref ref{};
    uint32_t opcode = 0;
    model::fib_head head{};
    std::vector<model::route_key> keys{}; ///< of unicast and multicast updates
    model::label_key from{};              ///< of questions about differences
};

class scripted_module {
  public:
    /// Listens as module `number`, and tells of itself.
    scripted_module(const std::string &url, uint32_t number, uint32_t instance = 1, uint32_t entries = 0);
    scripted_module(const scripted_module &) = delete;
    scripted_module &operator=(const scripted_module &) = delete;
    ~scripted_module();

    void announce(model::fib_state state = model::fib_state::active, uint32_t sequence = 0);
    void start_again(uint32_t instance) { instance_ = instance; }

    /// The next update, waited for so long.
    std::optional<received_update> next(uint32_t milliseconds = 20'000);
    /// Answers an update, and drops it. @param missed keys that took no effect
    void answer(received_update &update, uint32_t result = RIB_OK, const std::vector<model::route_key> &missed = {});
    void answer_with(received_update &update, const bytes &payload);
    /// Answers a question about differences of the unicast table.
    void tell_differences(received_update &question, const std::vector<model::fib_fault<model::route_key>> &found);
    static void drop(received_update &update);

    /// Answers everything with success until an update names no more routes of a merge, so that the module has what
    /// the RIB has. @return what came
    std::vector<received_update> take_all();
    /// From now on everything is taken, on a thread of its own.
    void take_for_ever();

    [[nodiscard]] const bus::service_handle &handle() const { return handle_; }

  private:
    bus::service_handle handle_;
    uint32_t number_;
    uint32_t instance_;
    uint32_t entries_; ///< that it says it has
    std::thread taking_;
};

} // namespace ribkit::rib
