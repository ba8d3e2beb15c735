// Fault scripts in force: one that all handles of the process follow, and those of single handles. They are asked by
// every call of the service and about every message that arrives.
#pragma once

#include "platform/faults/fault_script.h"
#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace ribkit::platform {

using fault_script_ptr = std::shared_ptr<fault_script>;

/// A script's place, which other threads may look into meanwhile; a flag spares the lock where it is empty.
class fault_slot {
  public:
    void put(fault_script_ptr script);

    /// Null where it is empty. A script stays whole while it is asked, even where another one takes its place.
    [[nodiscard]] fault_script_ptr get() const;

  private:
    std::atomic<bool> taken_{false};
    mutable std::mutex lock_;
    fault_script_ptr script_;
};

/// What disturbs one handle.
class handle_faults {
  public:
    /// From now on the handle has this script, null: none, and follows the process's no more.
    void put(fault_script_ptr own);

    [[nodiscard]] fault_script_ptr get() const;

  private:
    std::atomic<bool> is_own_{false};
    fault_slot own_;
};

/// Puts a file's script in force for the handles that have none of their own; else says what is wrong, as it follows
/// "FILE:", and the one before stays.
std::string load_faults(const char *file);

void end_faults();

/// The script of the handles that have none of their own; null without one.
fault_script_ptr common_faults();

/// The same for one handle. The clock is the process's: a script that asks for a virtual one is refused.
std::string load_faults(const char *file, handle_faults &handle);

} // namespace ribkit::platform
