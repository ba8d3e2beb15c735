// The modules of the local switch: what the fabric file says of them, they themselves while a lab runs, and whether
// they have what the RIB wants them to have.
#pragma once

#include "fib/service/fib_service.h"
#include "lab/fabric_module.h"
#include "rib/state.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ribkit::lab {

/// "module 1 (left)"
std::string module_title(const fabric_module &module);

/// What a module has beside what it should have: the active routes of VSANs that are not suspended.
struct module_difference {
    size_t missing = 0, extra = 0, different = 0; ///< entries of all tables

    bool operator==(const module_difference &) const = default;
};
module_difference difference_between(const rib::state &wanted, const fib::state &has);

/// Modules on the bus of a run.
class running_modules {
  public:
    /// Starts them. Throws as fib_service does.
    /// @param traces the first one prints a line for each message that it takes; the others are told the same
    running_modules(std::vector<fabric_module> modules, const std::string &url, bool traces);

    /// Until the RIB knows all of them, or for so long.
    void await_rib(std::chrono::milliseconds limit) const;
    /// They answer no more.
    void stop();

    [[nodiscard]] size_t size() const { return modules_.size(); }
    [[nodiscard]] const fabric_module &about(size_t index) const { return modules_[index]; }
    [[nodiscard]] fib::fib_service &operator[](size_t index) { return *running_[index]; }
    [[nodiscard]] const fib::fib_service &operator[](size_t index) const { return *running_[index]; }

    /// A line for each, of a RIB that has stopped: "module 1 (left) has 12 of 12 routes".
    [[nodiscard]] std::string hardware_text(const rib::state &wanted) const;

  private:
    std::vector<fabric_module> modules_;
    std::vector<std::unique_ptr<fib::fib_service>> running_;
};

/// Looks again and again until something is so, or for so long. @return whether it is so
bool wait_until(std::chrono::milliseconds limit, const std::function<bool()> &is_so);

} // namespace ribkit::lab
