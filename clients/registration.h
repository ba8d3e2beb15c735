// A client says to the RIB who it is and how near, and says it again before the RIB forgets.
#pragma once

#include "bus/rib_link.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace ribkit::clients {

class registration {
  public:
    /// How often it is said.
    static constexpr std::chrono::seconds interval{10};

    /// @param name under which it registers; empty: it does not
    /// @param distance none: what a client of its identity has
    /// The link has to last.
    registration(bus::rib_link &link, uint32_t uuid, std::string name, std::optional<uint32_t> distance)
        : link_(link), uuid_(uuid), name_(std::move(name)), distance_(distance) {}

    [[nodiscard]] bool is_wanted() const { return !name_.empty(); }

    void set_distance(std::optional<uint32_t> distance);

    /// The RIB knows nothing of it, or may not.
    void forget() { said_.reset(); }

    /// Registers where it is time. Throws no_answer and link_closed.
    void keep();
    /// The same for whoever waits: a RIB that does not answer hears it later. Throws link_closed.
    void stay();

  private:
    [[nodiscard]] bool is_due() const;
    void say();

    bus::rib_link &link_;
    uint32_t uuid_;
    std::string name_;
    std::optional<uint32_t> distance_;
    std::optional<std::chrono::steady_clock::time_point> said_; ///< when it registered last, with this RIB
};

} // namespace ribkit::clients
