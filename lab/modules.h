// The modules of the local switch: what the fabric file says of them, they themselves while a lab runs, and whether
// they have what the RIB wants them to have.
#pragma once

#include "bus/service_handle.h"
#include "fib/service/fib_service.h"
#include "lab/fabric.h"
#include "rib/service/rib_service.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ribkit::lab {

/// What a module has beside what it should have: the active routes of VSANs that are not suspended.
struct module_difference {
    size_t missing = 0, extra = 0, different = 0; ///< entries of all tables

    bool operator==(const module_difference &) const = default;
};
module_difference difference_between(const rib::state &wanted, const fib::state &has);

/// What a module has and does at a moment.
struct module_now {
    model::fib_state state = model::fib_state::exited; ///< of one that is gone, which has nothing
    uint32_t unicast = 0, multicast = 0, label = 0;    ///< entries
    size_t answered = 0;                               ///< messages

    [[nodiscard]] uint32_t entries() const { return unicast + multicast + label; }
};

/// What a module has of the routes that every module should have.
struct routes_in_hardware {
    size_t wanted = 0, right = 0;
    size_t extra = 0; ///< entries that it should not have
};

/// Modules on the bus of a run, beside its RIB.
class running_modules {
  public:
    /// Starts them, and waits until the RIB knows them. Throws as fib_service does.
    /// @param rib must last
    /// @param limit how long they may take each time they are waited for
    /// @param traces the first one prints a line for each message that it takes; the others are told the same
    running_modules(const std::vector<fabric_module> &modules, const rib::rib_service &rib, const std::string &url,
                    std::chrono::milliseconds limit, bool traces);

    /// Lets it happen to a module, and waits until RIB and modules have drawn their conclusions. Throws as fib_service
    /// does.
    /// @param about as it is from now on
    module_now happen(const fabric_module &about, const fabric_event &event);

    /// Waits until every module that is there has what there is for it.
    void settle() const;

    [[nodiscard]] size_t size() const { return modules_.size(); }
    [[nodiscard]] const fabric_module &about(size_t index) const { return modules_[index]; }
    [[nodiscard]] module_now now(size_t index) const;
    [[nodiscard]] std::vector<module_now> now() const; ///< of all

    /// Calls `read` with the FIB of a module that is there.
    void read(size_t index, const std::function<void(const fib::state &)> &read) const;

    /// What it has of what it should have, of a RIB that has stopped.
    [[nodiscard]] routes_in_hardware compare(size_t index, const rib::state &wanted) const;
    /// A line for each, of a RIB that has stopped: "module 1 (left) has 12 of 12 routes".
    [[nodiscard]] std::string hardware_text(const rib::state &wanted) const;

  private:
    void start(size_t index);

    std::vector<fabric_module> modules_;
    const rib::rib_service &rib_;
    std::string url_;
    std::chrono::milliseconds limit_;
    bool traces_;
    std::optional<bus::service_handle> probe_;               ///< from the first event on
    std::vector<std::unique_ptr<fib::fib_service>> running_; ///< null where one is gone
};

/// Looks again and again until something is so, or for so long. @return whether it is so
bool wait_until(std::chrono::milliseconds limit, const std::function<bool()> &is_so);

} // namespace ribkit::lab
